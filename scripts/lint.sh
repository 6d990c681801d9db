#!/usr/bin/env bash
# Runs clang-tidy over the sources, or over the files given.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh --developer
cmake --preset release >/dev/null
files=("$@")
[ ${#files[@]} -gt 0 ] || mapfile -t files < <(git ls-files 'app/*.cpp' 'camera/*.cpp' 'display/*.cpp' 'mainwindow/*.cpp' \
    'playback/*.cpp' 'settings/*.cpp' 'widgets/*.cpp')
printf '%s\n' "${files[@]}" | xargs -P "$(nproc)" -n 4 clang-tidy-14 -p build/release --quiet
