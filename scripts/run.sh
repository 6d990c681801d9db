#!/usr/bin/env bash
# Installs what is missing, builds the release preset and starts KorvaneInsight. Arguments go to the application:
#   scripts/run.sh [--camera SERIAL] [recording.raw]
# Without a display it starts on a virtual one, opens a simulated camera, waits for pictures and saves a screenshot.
set -euo pipefail
here="$(pwd)"
root="$(cd "$(dirname "$0")/.." && pwd)"
arguments=()
for argument in "$@"; do
    # The application runs in a folder of its own, where its config.ini lies.
    [ -e "$here/$argument" ] && argument="$here/$argument"
    arguments+=("$argument")
done
if [ -n "${KORVANE_REPLAY:-}" ]; then
    KORVANE_REPLAY="$(realpath -m -- "$KORVANE_REPLAY")"
    export KORVANE_REPLAY
fi
if [ -n "${KORVANE_BACKENDS:-}" ]; then
    KORVANE_BACKENDS="$(tr ':' '\n' <<<"$KORVANE_BACKENDS" | sed '/^$/d' | xargs -d '\n' realpath -m -- | paste -sd :)"
    export KORVANE_BACKENDS
fi

"$root/scripts/setup.sh"
cd "$root"
cmake --preset release >/dev/null
cmake --build --preset release --target korvaneinsight
application="$root/build/release/bin/korvaneinsight"
mkdir -p build/run
cd build/run

if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
    exec "$application" "${arguments[@]}"
fi

screenshot="$root/build/screenshot.png"
rm -f "$screenshot"
[ ${#arguments[@]} -gt 0 ] || arguments=(--camera HAL-000001)
exec xvfb-run --auto-servernum --server-args="-screen 0 1440x960x24" \
    "$root/scripts/screenshot.sh" "$screenshot" "$application" --no-splash "${arguments[@]}"
