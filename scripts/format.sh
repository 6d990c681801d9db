#!/usr/bin/env bash
# Formats the sources; --check only says whether they are formatted.
set -euo pipefail
cd "$(dirname "$0")/.."
mapfile -t files < <(git ls-files '*.cpp' '*.h')
[ ${#files[@]} -gt 0 ] || exit 0
if [ "${1:-}" = "--check" ]; then
    clang-format-14 --dry-run --Werror "${files[@]}"
else
    clang-format-14 -i "${files[@]}"
fi
