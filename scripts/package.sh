#!/usr/bin/env bash
# Builds the Debian package and prints its path.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh >&2
cmake --preset package >/dev/null
cmake --build --preset package >&2
# Directories of a package are open to all, whatever the umask of whoever builds it.
umask 022
rm -f build/package/*.deb
cpack --config build/package/CPackConfig.cmake -B build/package >&2
rm -rf build/package/_CPack_Packages
realpath build/package/*.deb
