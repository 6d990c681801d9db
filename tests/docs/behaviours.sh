#!/usr/bin/env bash
# behaviours.sh ROOT [PAGE]: every test that docs/behaviours.md names exists, and every row names one.
set -euo pipefail
root=$1
page=${2:-$root/docs/behaviours.md}
known=$(mktemp)
trap 'rm -f "$known"' EXIT
# Suite.Test of all tests, whose macros may be broken over two lines, and the tests of ctest itself.
find "$root/tests" -name '*_test.cpp' -o -path '*/conformance/*.cpp' | xargs cat | tr '\n' ' ' \
    | grep -oE '\b(TEST|TEST_F|TEST_P|TYPED_TEST)\( *[A-Za-z0-9_]+, *[A-Za-z0-9_]+' \
    | sed -E 's/^[A-Z_]+\( *//; s/, */./' > "$known"
find "$root/tests" -name CMakeLists.txt -o -name '*.cmake' | xargs sed -nE 's/.*add_test\(NAME ([a-z_]+).*/\1/p' >> "$known"
find "$root/tests" -name '*.cmake' | xargs sed -nE 's/^korvane_add_fuzz_replay\(([a-z]+).*/fuzz_\1_replay/p' >> "$known"

status=0
rows=0
while IFS= read -r row; do
    rows=$((rows + 1))
    tests=$(sed -E 's/^.*\| ([^|]*) \|$/\1/' <<<"$row" | grep -oE '`[A-Za-z0-9_.]+`' | tr -d '`' || true)
    [ -n "$tests" ] || { echo "no test is named: $row"; status=1; }
    for test in $tests; do
        grep -qxF "$test" "$known" || { echo "there is no test $test"; status=1; }
    done
done < <(grep -E '^\| ' "$page" | grep -vE '^\| what happens ')
echo "$rows behaviours"
[ "$rows" -gt 0 ] || status=1
exit $status
