#!/usr/bin/env bash
# launcher.sh LAUNCHER: starts it with a stand-in for the program that tells where it runs and what it was given.
set -euo pipefail
tree=$(realpath "$(mktemp -d)")
trap 'rm -rf "$tree"' EXIT
mkdir -p "$tree/usr/bin" "$tree/usr/libexec/korvaneinsight" "$tree/home" "$tree/here/sub dir"
cp "$1" "$tree/usr/bin/korvaneinsight"
cat >"$tree/usr/libexec/korvaneinsight/korvaneinsight" <<'PROGRAM'
#!/bin/sh
pwd
[ -z "${KORVANE_REPLAY:-}" ] || echo "replay $KORVANE_REPLAY"
[ -z "${KORVANE_BACKENDS:-}" ] || echo "backends $KORVANE_BACKENDS"
for argument in "$@"; do printf '<%s>\n' "$argument"; done
exit 7
PROGRAM
chmod 755 "$tree/usr/libexec/korvaneinsight/korvaneinsight"
unset KORVANE_REPLAY KORVANE_BACKENDS XDG_CONFIG_HOME
export HOME="$tree/home"
cd "$tree/here"

failed=0
# expect NAME WANTED [VARIABLE=VALUE...] -- ARGUMENTS...
expect() {
    local name=$1 wanted=$2 settings=() found status=0
    shift 2
    while [ "$1" != -- ]; do settings+=("$1"); shift; done
    shift
    found=$(env "${settings[@]}" "$tree/usr/bin/korvaneinsight" "$@" 2>"$tree/errors") || status=$?
    if [ "$found" != "$wanted" ] || [ "$status" -ne 7 ]; then
        printf '%s: status %s, found\n%s\nin place of\n%s\n' "$name" "$status" "$found" "$wanted"
        failed=1
    fi
}

here="$tree/here"
own="$tree/home/.config/korvaneinsight"
expect "without settings the folder is under .config" "$own" --
[ -d "$own" ]
expect "XDG_CONFIG_HOME is used" "$tree/xdg/korvaneinsight" XDG_CONFIG_HOME="$tree/xdg" --
expect "a relative XDG_CONFIG_HOME is ignored" "$own" XDG_CONFIG_HOME=xdg --
expect "a relative file becomes absolute" "$own
<$here/take.raw>" -- take.raw
expect "an absolute file stays" "$own
</data/take.raw>" -- /data/take.raw
expect "spaces, quotes and line ends stay" "$own
<$here/sub dir/it's \"one\"
.raw>" -- "sub dir/it's \"one\"
.raw"
expect "serials are no files" "$own
<--camera>
<HAL-000001>
<--no-splash>
<$here/take.raw>" -- --camera HAL-000001 --no-splash take.raw
expect "options with their values in one stay" "$own
<--camera=HAL-000001>" -- --camera=HAL-000001
expect "values of Qt's options are no files" "$own
<-platform>
<offscreen>
<$here/take.raw>" -- -platform offscreen take.raw
expect "behind -- all are files" "$own
<-->
<$here/-take.raw>" -- -- -take.raw
expect "empty arguments stay" "$own
<>" -- ""
expect "the variables' paths become absolute" "$own
replay $here/recordings
backends $here/a.so:/opt/b.so::$here/c.so" KORVANE_REPLAY=recordings KORVANE_BACKENDS=a.so:/opt/b.so::c.so --

# A link to the launcher finds the program too.
ln -s "$tree/usr/bin/korvaneinsight" "$tree/link"
[ "$("$tree/link" || true)" = "$own" ] || { echo "through a link nothing is started"; failed=1; }

# Where no folder can be made the program starts all the same, elsewhere, and says so.
touch "$tree/file"
found=$(XDG_CONFIG_HOME="$tree/file" TMPDIR="$tree" "$tree/usr/bin/korvaneinsight" x.raw 2>"$tree/errors" || true)
case $found in
"$tree"/tmp.*"
<$here/x.raw>") ;;
*) printf 'without a folder: found\n%s\n' "$found"; failed=1 ;;
esac
grep -q "^korvaneinsight: $tree/file/korvaneinsight cannot be used; settings will not be kept.$" "$tree/errors" \
    || { cat "$tree/errors"; failed=1; }
exit $failed
