#!/usr/bin/env bash
# Makes the Debian package of a build folder and checks it: its name carries the project's
# version, it holds what a desktop needs (both programs, the fall-back transport's layer, the
# language files, desktop entry, icon, AppStream metadata), its Depends name the linked
# libraries as dpkg-shlibdeps found them, and its Recommends what the program uses unlinked.
set -euo pipefail
build=$(realpath "$1")

version=$(sed -n 's/^set(CPACK_PACKAGE_VERSION "\(.*\)")$/\1/p' "$build/CPackConfig.cmake")
deb="$build/plattmix_${version}_$(dpkg --print-architecture).deb"
rm -f "$deb"
if ! log=$(cd "$build" && cpack -G DEB 2>&1); then
    echo "$log"
    exit 1
fi

status=0
fail() {
    echo "package $(basename "$deb"): $1"
    status=1
}
[ -f "$deb" ] || {
    fail "not made"
    exit 1
}

files=$(dpkg-deb -c "$deb" | awk '{print $6}')
for file in usr/bin/plattmix usr/bin/plattmix-cli usr/share/plattmix/Languages/English.lng \
    usr/share/applications/de.trovalis.plattmix.desktop \
    usr/share/icons/hicolor/scalable/apps/de.trovalis.plattmix.svg \
    usr/share/metainfo/de.trovalis.plattmix.metainfo.xml; do
    grep -qx "\./$file" <<<"$files" || fail "missing $file"
done
grep -qE '^\./usr/lib/([^/]+/)?plattmix/libplattmix_aspi\.so$' <<<"$files" ||
    fail "missing usr/lib/plattmix/libplattmix_aspi.so"

[ "$(dpkg-deb -f "$deb" Version)" = "$version" ] || fail "version is not $version"
depends=$(dpkg-deb -f "$deb" Depends)
for library in libqt6widgets6 libavcodec59 libavformat59 libswresample4 libburn4 libisofs6 \
    libisoburn1 libasound2 libsystemd0; do
    grep -qE "(^|, )$library( |,|$)" <<<"$depends" || fail "Depends lacks $library: $depends"
done
recommends=$(dpkg-deb -f "$deb" Recommends)
for package in qt6-translations-l10n udisks2; do
    grep -q "$package" <<<"$recommends" || fail "Recommends lacks $package: $recommends"
done
exit $status
