#!/bin/sh
# Starts KorvaneInsight in a folder of its own, since it keeps config.ini in its working directory. What the user
# named relative to the folder he is in is made absolute first.
set -u

# Prints $1 as an absolute path; addresses and empty texts stay as they are.
absolute() {
    case $1 in
    '' | /* | *://*) printf '%s' "$1" ;;
    *) printf '%s/%s' "$PWD" "$1" ;;
    esac
}

program=$(dirname "$(readlink -f "$0")")/../libexec/korvaneinsight/korvaneinsight

# Round once through the arguments: each is taken from the front and put back at the end.
value_follows=no
only_files=no
remaining=$#
while [ "$remaining" -gt 0 ]; do
    argument=$1
    shift
    if [ "$value_follows" = yes ]; then
        value_follows=no
    elif [ "$only_files" = yes ]; then
        argument=$(absolute "$argument"; printf x)
        argument=${argument%x}
    else
        case $argument in
        --) only_files=yes ;;
        # Options whose value is no file, those of Qt among them.
        --camera | -platform | --platform | -platformtheme | --platformtheme | -plugin | --plugin | \
            -style | --style | -display | --display | -geometry | --geometry | -qwindowgeometry | \
            --qwindowgeometry | -qwindowtitle | --qwindowtitle | -title | --title | -session | --session | \
            -name | --name)
            value_follows=yes ;;
        -*) ;;
        *)
            argument=$(absolute "$argument"; printf x)
            argument=${argument%x}
            ;;
        esac
    fi
    set -- "$@" "$argument"
    remaining=$((remaining - 1))
done

if [ -n "${KORVANE_REPLAY:-}" ]; then
    KORVANE_REPLAY=$(absolute "$KORVANE_REPLAY")
    export KORVANE_REPLAY
fi
if [ -n "${KORVANE_BACKENDS:-}" ]; then
    list=$KORVANE_BACKENDS:
    KORVANE_BACKENDS=
    while [ -n "$list" ]; do
        KORVANE_BACKENDS=$KORVANE_BACKENDS${KORVANE_BACKENDS:+:}$(absolute "${list%%:*}")
        list=${list#*:}
    done
    export KORVANE_BACKENDS
fi

# XDG_CONFIG_HOME counts only as an absolute path: a relative one would mean another folder with every start.
case ${XDG_CONFIG_HOME:-} in
/*) folder=$XDG_CONFIG_HOME/korvaneinsight ;;
*) folder=${HOME:-}/.config/korvaneinsight ;;
esac
if ! { mkdir -p -- "$folder" && cd -- "$folder"; }; then
    echo "korvaneinsight: $folder cannot be used; settings will not be kept." >&2
    folder=$(mktemp -d) && cd -- "$folder" || exit 1
fi
exec "$program" "$@"
