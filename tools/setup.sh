#!/usr/bin/env bash
# Installs what Plattmix needs to build, run and test on Debian 12. Safe to run again: it only
# calls apt-get when a package is missing.
set -euo pipefail

packages=(
    # build
    g++ cmake ninja-build pkg-config
    # encoding: FFmpeg's libraries (the ffmpeg program is the encode benchmark's yardstick)
    libavformat-dev libavcodec-dev libswresample-dev libavutil-dev ffmpeg
    # ISO images, disc state, burning and multisession: libisofs, libburn, libisoburn
    libisofs-dev libburn-dev libisoburn-dev
    # virtual drives: udisks2 over D-Bus through sd-bus
    libsystemd-dev
    # the CD player's audio output
    libasound2-dev
    # the online look-ups (AccurateRip, MusicBrainz): HTTP and JSON
    libcurl4-openssl-dev nlohmann-json3-dev
    # the window: Qt 6 Widgets, Tahoma (Wine's metric-compatible one) and Arial's stand-in
    qt6-base-dev fonts-wine fonts-liberation2
    # the window's tests on a real X display, and checks of the installed desktop files
    xvfb xauth appstream desktop-file-utils
    # German number formats in the size texts are tested in a real de_DE locale; the C library's
    # and Qt's own texts in German
    locales libc-l10n qt6-translations-l10n
    # tests and benchmarks
    libgtest-dev libgmock-dev libbenchmark-dev clang-format
    # the parsers' fuzz targets: clang with libFuzzer and the sanitizers' run-time
    clang libclang-rt-14-dev
    # the udisks2 tests' private message bus; udisks2 and udev are carried into the test bed's
    # guest, where a real udisksd attaches images
    dbus-daemon udisks2 udev
    # the ISO benchmark's yardstick
    xorriso
    # the Debian package: cpack's DEB generator finds the programs with file and their
    # libraries' packages with dpkg-shlibdeps
    dpkg-dev file
)
# the real-kernel drive test bed
mapfile -t testbed < <(grep -vE '^\s*(#|$)' "$(dirname "$0")/testbed/packages.txt" 2>/dev/null || true)
packages+=("${testbed[@]}")

missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
# The test bed looks its kernel up in the package lists, so they must exist even when every
# package is already installed.
if ((${#missing[@]})) || ! compgen -G '/var/lib/apt/lists/*_Packages' >/dev/null; then
    $sudo apt-get update -qq
fi
if ((${#missing[@]})); then
    $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

# The German locale for the size texts' tests.
if ! locale -a 2>/dev/null | grep -qi '^de_DE\.utf-\?8$'; then
    $sudo sed -i 's/^# *\(de_DE\.UTF-8 UTF-8\)/\1/' /etc/locale.gen
    grep -q '^de_DE.UTF-8 UTF-8' /etc/locale.gen || echo 'de_DE.UTF-8 UTF-8' | $sudo tee -a /etc/locale.gen >/dev/null
    $sudo locale-gen >/dev/null
fi
