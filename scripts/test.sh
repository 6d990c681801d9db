#!/usr/bin/env bash
# Installs what is missing, builds and runs all tests: the release build, then everything under the address and
# undefined behaviour sanitizers, then the thread logic under the thread sanitizer. --quick leaves the sanitizers out.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
scripts/format.sh --check

jobs=$(nproc)
# build_and_test PRESET TARGET [CTEST ARGUMENTS...]
build_and_test() {
    preset="$1"
    target="$2"
    shift 2
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset" --target "$target"
    # Windows and threads on a machine that others share: a test that fails gets a second chance, and the log shows it.
    ctest --preset "$preset" --output-on-failure -j "$jobs" --no-tests=error --repeat until-pass:2 "$@"
}
build_and_test release all
if [ "${1:-}" != "--quick" ]; then
    build_and_test asan all -LE release_only
    # Qt is not built for the thread sanitizer: only what runs without its event loop.
    build_and_test tsan korvane_thread_tests -L threads
fi
