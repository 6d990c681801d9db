#!/usr/bin/env bash
# fuzz.sh [SECONDS [TARGET...]]: builds the fuzz targets with clang and runs each for so long (default 60), two at a
# time. Inputs found on the way are kept in build/fuzz/corpus and used again; real recordings below KORVANE_RECORDINGS
# are cut into seeds first. A finding fails the run and lies in build/fuzz/findings: a crash, a sanitizer's report, a
# single allocation of more than 256 MiB, a process of more than 2 GiB, an input that takes a minute. One that takes a
# second under the sanitizers is kept there as slow; without them none of the saved ones may, which the tests see.
# Each target's log is build/fuzz/TARGET.log. FFmpeg's tables grow by reallocation, which only the address sanitizer makes
# slow: whether an input of apsvideo that took too long is a finding, its replay tells.
#
# fuzz.sh --minimise [TARGET...]: takes what build/fuzz/corpus covers beyond tests/fuzz/corpus over into it.
# fuzz.sh --coverage: which lines of the files that read recordings and settings tests/fuzz/corpus reaches.
set -euo pipefail
cd "$(dirname "$0")/.."
mode=fuzz
case "${1:-}" in
    --minimise | --coverage) mode="${1#--}" && shift ;;
esac
seconds=60
if [ "$mode" = fuzz ] && [ $# -gt 0 ]; then
    seconds="$1"
    shift
fi
names=(rawheader config evtreader rawfile apsvideo rangetimes)
[ $# -eq 0 ] || names=("$@")
targets=("${names[@]/#/fuzz_}")

preset=fuzz
[ "$mode" != coverage ] || preset=fuzzcoverage
scripts/setup.sh --developer
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset" --target "${targets[@]}"
export QT_QPA_PLATFORM=offscreen
# What targets write is small and gone with them: it need not reach a disk.
[ -d /dev/shm ] && export TMPDIR=/dev/shm
export LSAN_OPTIONS="suppressions=$PWD/tests/fuzz/lsan.supp"
mkdir -p build/fuzz/findings

fuzz() {
    name="$1"
    seeds="build/fuzz/seeds/$name"
    mkdir -p "build/fuzz/corpus/$name" "$seeds"
    build/fuzz/tests/fuzz/fuzz_"$name" -max_total_time="$2" -max_len=16384 -timeout=60 -print_final_stats=1 \
        -report_slow_units=1 -malloc_limit_mb=256 -rss_limit_mb=2048 -artifact_prefix="build/fuzz/findings/$name-" \
        "build/fuzz/corpus/$name" "tests/fuzz/corpus/$name" "$seeds" >"build/fuzz/$name.log" 2>&1
}

case "$mode" in
    fuzz)
        if [ -n "${KORVANE_RECORDINGS:-}" ]; then
            tests/fuzz/seedrecordings.py "$KORVANE_RECORDINGS" build/fuzz/seeds
        fi
        export -f fuzz
        failed=0
        printf '%s\n' "${names[@]}" | xargs -P 2 -I NAME bash -c "fuzz NAME $seconds" || failed=1
        for name in "${names[@]}"; do
            echo "== $name"
            grep -E "^(#[0-9]+\s+DONE|stat::number_of_executed_units|stat::peak_rss_mb|SUMMARY|.*does not hold)" \
                "build/fuzz/$name.log" || true
        done
        exit $failed
        ;;
    minimise)
        for name in "${names[@]}"; do
            build/fuzz/tests/fuzz/fuzz_"$name" -set_cover_merge=1 -use_counters=0 -max_len=16384 -timeout=60 -rss_limit_mb=2048 \
                "tests/fuzz/corpus/$name" "build/fuzz/corpus/$name" >"build/fuzz/$name.merge.log" 2>&1
            echo "$name: $(find "tests/fuzz/corpus/$name" -type f | wc -l) inputs"
        done
        ;;
    coverage)
        profiles=()
        objects=()
        for name in "${names[@]}"; do
            program="build/fuzzcoverage/tests/fuzz/fuzz_$name"
            LLVM_PROFILE_FILE="build/fuzzcoverage/$name.profraw" "$program" -runs=0 "tests/fuzz/corpus/$name" \
                >"build/fuzzcoverage/$name.log" 2>&1
            profiles+=("build/fuzzcoverage/$name.profraw")
            objects+=(-object "$program")
        done
        llvm-profdata-14 merge -o build/fuzzcoverage/all.profdata "${profiles[@]}"
        printf '%-48s %6s %7s %8s\n' file lines missed reached
        llvm-cov-14 report "${objects[@]:1}" -instr-profile=build/fuzzcoverage/all.profdata \
            | sed 's|^\.\./\.\./||' | grep -E '^(camera/recording|app/config)' \
            | awk '{ printf "%-48s %6d %7d %8s\n", $1, $8, $9, $10 }'
        ;;
esac
