#!/usr/bin/env bash
# Installs the build into a scratch prefix and checks that a desktop finds what it needs: both
# programs, the language files, a valid desktop entry, the icon and valid AppStream metadata.
set -euo pipefail
build=$1
prefix=$2
rm -rf "$prefix"
cmake --install "$build" --prefix "$prefix" >/dev/null

status=0
need() {
    if [ ! -e "$prefix/$1" ]; then
        echo "missing after install: $1"
        status=1
    fi
}
need bin/plattmix
need bin/plattmix-cli
need share/plattmix/Languages/English.lng
need share/applications/de.trovalis.plattmix.desktop
need share/icons/hicolor/scalable/apps/de.trovalis.plattmix.svg
need share/metainfo/de.trovalis.plattmix.metainfo.xml
# The fall-back transport's layer, in the program's own library folder.
if ! compgen -G "$prefix/lib*/plattmix/libplattmix_aspi.so" >/dev/null; then
    echo "missing after install: lib/plattmix/libplattmix_aspi.so"
    status=1
fi

desktop-file-validate "$prefix/share/applications/de.trovalis.plattmix.desktop" || status=1
appstreamcli validate --no-net "$prefix/share/metainfo/de.trovalis.plattmix.metainfo.xml" || status=1
exit $status
