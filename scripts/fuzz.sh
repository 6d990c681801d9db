#!/usr/bin/env bash
# fuzz.sh [seconds]: builds the fuzz targets with clang and runs each for so long (default 60). Inputs found on the
# way are kept in build/fuzz/corpus and used again; a finding ends the run and lies in build/fuzz/findings.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-60}"
targets=(fuzz_rawheader fuzz_evtreader fuzz_rawfile)

scripts/setup.sh --developer
cmake --preset fuzz
cmake --build --preset fuzz --target "${targets[@]}"
mkdir -p build/fuzz/findings
for target in "${targets[@]}"; do
    name="${target#fuzz_}"
    mkdir -p "build/fuzz/corpus/$name"
    echo "== $target, $seconds s"
    "build/fuzz/tests/fuzz/$target" -max_total_time="$seconds" -max_len=8192 -timeout=20 -print_final_stats=1 \
        -artifact_prefix="build/fuzz/findings/$name-" "build/fuzz/corpus/$name" "tests/fuzz/corpus/$name"
done
