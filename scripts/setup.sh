#!/usr/bin/env bash
# Installs what the build, the tests and the headless run need, where it is missing; with --developer also what
# linting and fuzzing need. For Debian 12.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
lists=("$here/packages.txt")
[ "${1:-}" = "--developer" ] && lists+=("$here/packages-developer.txt")
missing=()
while read -r package; do
    [ -n "$package" ] || continue
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
done < <(cat "${lists[@]}")
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=""
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
        echo "These packages are missing and there is no sudo to install them: ${missing[*]}" >&2
        exit 1
    fi
    sudo=sudo
fi
echo "Installing: ${missing[*]}"
$sudo apt-get update -qq
$sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
