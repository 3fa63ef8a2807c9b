#!/usr/bin/env bash
# Set-up, build, and the program's main job: the window, with the machine's optical drives or,
# where there is none, the built-in demo disc in its drive list. Without a display the same is
# shown through plattmix-cli, which also rips the first drive's disc to WAV files.
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/setup.sh
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF >/dev/null
cmake --build build/release
cli=build/release/cli/plattmix-cli

# The window offers the images of its settings when no drive works: the demo disc among them.
"$cli" image add --demo >/dev/null

if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
    exec build/release/app/window/plattmix
fi
echo "Kein Bildschirm gefunden (DISPLAY und WAYLAND_DISPLAY sind leer)."
echo "Statt des Fensters: Laufwerksliste, Trackliste und ein Rip als WAV über plattmix-cli."
echo
"$cli" drives
"$cli" toc
"$cli" rip --out build/demo-rip
echo "Die WAV-Dateien liegen in build/demo-rip/."
