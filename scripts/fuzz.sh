#!/usr/bin/env bash
# fuzz.sh [seconds]: builds the fuzz targets with clang and runs each for so long (default 60). Inputs found on the
# way are kept in build/fuzz/corpus and used again; a finding ends the run and lies in build/fuzz/findings. A single
# allocation of more than 256 MiB is one, a process of more than 2 GiB, an input that takes 20 s; one that takes a
# second is kept there as slow.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-60}"
# fuzz.sh seconds target...: only those, as in: fuzz.sh 600 config
shift $(($# > 0 ? 1 : 0))
names=(rawheader evtreader rawfile apsvideo config rangetimes)
[ $# -eq 0 ] || names=("$@")
targets=("${names[@]/#/fuzz_}")

scripts/setup.sh --developer
cmake --preset fuzz
cmake --build --preset fuzz --target "${targets[@]}"
mkdir -p build/fuzz/findings
for target in "${targets[@]}"; do
    name="${target#fuzz_}"
    mkdir -p "build/fuzz/corpus/$name"
    echo "== $target, $seconds s"
    "build/fuzz/tests/fuzz/$target" -max_total_time="$seconds" -max_len=16384 -timeout=20 -print_final_stats=1 \
        -report_slow_units=1 -malloc_limit_mb=256 -rss_limit_mb=2048 -artifact_prefix="build/fuzz/findings/$name-" "build/fuzz/corpus/$name" "tests/fuzz/corpus/$name"
done
