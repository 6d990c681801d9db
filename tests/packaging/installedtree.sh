#!/usr/bin/env bash
# installedtree.sh BUILD_FOLDER: installs into a temporary folder and looks at what is there.
set -euo pipefail
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
cmake --install "$1" --prefix "$tree" >/dev/null

diff -u - <(cd "$tree" && find . -type f | LC_ALL=C sort) <<'LIST'
./bin/korvaneinsight
./libexec/korvaneinsight/korvaneinsight
./share/applications/korvaneinsight.desktop
./share/doc/korvaneinsight/OFL.txt
./share/doc/korvaneinsight/THIRD_PARTY_NOTICES.md
./share/doc/korvaneinsight/changelog.Debian.gz
./share/doc/korvaneinsight/changelog.gz
./share/doc/korvaneinsight/copyright
./share/icons/hicolor/128x128/apps/korvaneinsight.png
./share/icons/hicolor/16x16/apps/korvaneinsight.png
./share/icons/hicolor/24x24/apps/korvaneinsight.png
./share/icons/hicolor/256x256/apps/korvaneinsight.png
./share/icons/hicolor/32x32/apps/korvaneinsight.png
./share/icons/hicolor/48x48/apps/korvaneinsight.png
./share/icons/hicolor/64x64/apps/korvaneinsight.png
./share/icons/hicolor/scalable/apps/korvaneinsight.svg
./share/man/man1/korvaneinsight.1.gz
./share/metainfo/example.korvane.korvaneinsight.metainfo.xml
./share/mime/packages/korvaneinsight.xml
LIST

desktop-file-validate "$tree/share/applications/korvaneinsight.desktop"
appstreamcli validate --no-net --no-color "$tree/share/metainfo/example.korvane.korvaneinsight.metainfo.xml"
for size in 16 24 32 48 64 128 256; do
    # Width and height stand at a fixed place of a PNG file.
    icon="$tree/share/icons/hicolor/${size}x$size/apps/korvaneinsight.png"
    read -r width height < <(od -A n -t u4 --endian=big -j 16 -N 8 "$icon")
    [ "$width $height" = "$size $size" ] || { echo "$icon is $width x $height" >&2; exit 1; }
done

# One version everywhere, and the launcher starts the program that it was installed with.
export QT_QPA_PLATFORM=offscreen HOME="$tree/home" XDG_CONFIG_HOME="$tree/config"
said=$("$tree/bin/korvaneinsight" --version)
version=${said#KorvaneInsight }
echo "version $version"
[[ "$version" =~ ^[0-9]+\.[0-9]+\.[0-9]+$ ]]
[ -d "$tree/config/korvaneinsight" ]
zgrep -q "KorvaneInsight $version\"" "$tree/share/man/man1/korvaneinsight.1.gz"
zgrep -q "^korvaneinsight ($version-1)" "$tree/share/doc/korvaneinsight/changelog.Debian.gz"
zgrep -q "^## $version" "$tree/share/doc/korvaneinsight/changelog.gz"
grep -q "<release version=\"$version\"" "$tree/share/metainfo/example.korvane.korvaneinsight.metainfo.xml"
# What the desktop file starts, and the type that it opens, are what is installed.
grep -qx 'Exec=korvaneinsight %f' "$tree/share/applications/korvaneinsight.desktop"
grep -qx 'MimeType=application/x-korvane-recording;' "$tree/share/applications/korvaneinsight.desktop"
grep -q 'type="application/x-korvane-recording"' "$tree/share/mime/packages/korvaneinsight.xml"
# Every option of the program stands in the manual.
manual=$(zcat "$tree/share/man/man1/korvaneinsight.1.gz" | tr -d '\\')
for option in $("$tree/bin/korvaneinsight" --help | grep -o -- '--[a-z-]*' | sort -u); do
    grep -q -- "$option" <<<"$manual" || { echo "the manual lacks $option" >&2; exit 1; }
done
