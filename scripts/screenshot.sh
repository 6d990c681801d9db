#!/usr/bin/env bash
# screenshot.sh FILE COMMAND...: runs a command on the current display, waits until events are on the screen, saves a
# picture of it to FILE and ends the command. Fails when no events appear within a minute.
set -euo pipefail
file="$1"
shift
"$@" &
application=$!
trap 'kill "$application" 2>/dev/null || true; wait "$application" 2>/dev/null || true' EXIT

# Events are painted in these two colours, and hardly anything else in the window is.
painted() {
    import -window root "$file"
    convert "$file" -fill white -opaque '#BFBCB4' -opaque '#403D33' -fill black +opaque white \
        -format '%[fx:int(mean*w*h)]' info:
}
for _ in $(seq 120); do
    kill -0 "$application" || { echo "The application has ended by itself." >&2; exit 1; }
    if [ "$(painted)" -gt 200 ]; then
        sleep 1
        import -window root "$file"
        echo "A screenshot with live pictures is at $file"
        exit 0
    fi
    sleep 0.5
done
rm -f "$file"
echo "No events appeared on the screen." >&2
exit 1
