#!/usr/bin/env bash
# Formats the sources; --check only says whether they are formatted.
set -euo pipefail
cd "$(dirname "$0")/.."
mapfile -t files < <(git ls-files -co --exclude-standard '*.cpp' '*.h')
[ ${#files[@]} -gt 0 ] || { echo "No sources found: is this a git checkout?" >&2; exit 1; }
if [ "${1:-}" = "--check" ]; then
    clang-format-14 --dry-run --Werror "${files[@]}"
else
    clang-format-14 -i "${files[@]}"
fi
