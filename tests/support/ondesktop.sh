#!/usr/bin/env bash
# ondesktop.sh COMMAND...: runs a command on a virtual screen of its own, under a window manager, and ends with its
# result. DISPLAY tells the command where it is.
set -euo pipefail
folder="$(mktemp -d)"
started=()
end() {
    [ ${#started[@]} -eq 0 ] || kill "${started[@]}" 2>/dev/null || true
    wait || true
    rm -rf "$folder"
}
trap end EXIT

# The server takes a free number by itself: who looks for one first may lose it to a neighbour.
Xvfb -displayfd 3 -screen 0 1600x1200x24 -nolisten tcp 3>"$folder/number" 2>"$folder/server.log" &
server=$!
started+=("$server")
until [ -s "$folder/number" ]; do
    kill -0 "$server" || { cat "$folder/server.log" >&2; exit 1; }
    sleep 0.05
done
DISPLAY=":$(cat "$folder/number")"
export DISPLAY

# A home of its own, so that nobody's settings count.
HOME="$folder" openbox --sm-disable 2>"$folder/manager.log" &
manager=$!
started+=("$manager")
# Fails until a manager has told what it can do.
until xdotool get_num_desktops >/dev/null 2>&1; do
    kill -0 "$manager" || { cat "$folder/manager.log" >&2; exit 1; }
    sleep 0.05
done
"$@"
