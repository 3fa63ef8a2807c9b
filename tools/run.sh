#!/usr/bin/env bash
# Set-up, build, and the program's main job: the drive list and the track list of the first
# drive (the built-in demo disc where the machine has no optical drive).
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/setup.sh
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF >/dev/null
cmake --build build/release
build/release/cli/plattmix-cli drives
build/release/cli/plattmix-cli toc
