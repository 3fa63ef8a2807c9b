#!/usr/bin/env bash
# Set-up, build and the whole test suite: the normal build (with the real-kernel drive test
# bed), the AddressSanitizer + UndefinedBehaviorSanitizer build, a short run of every fuzz
# target, and the optimised build with the Debian package.
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/setup.sh

# Every C++ file as clang-format leaves it.
folders=(app scsi audiocd encode authoring vdrive cli tests tools bench)
[ ! -d fuzz ] || folders+=(fuzz)
find "${folders[@]}" \( -name '*.cpp' -o -name '*.h' \) -print0 |
    xargs -0 -r clang-format --dry-run --Werror

jobs=$(nproc)
cmake -S . -B build/debug -G Ninja -DCMAKE_BUILD_TYPE=Debug >/dev/null
cmake --build build/debug
ctest --test-dir build/debug --output-on-failure -j "$jobs"

cmake -S . -B build/sanitize -G Ninja -DCMAKE_BUILD_TYPE=Debug -DPLATTMIX_SANITIZE=ON \
    -DPLATTMIX_TESTBED=OFF -DPLATTMIX_BENCH=OFF >/dev/null
cmake --build build/sanitize
ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
    ctest --test-dir build/sanitize --output-on-failure -j "$jobs"

# Every parser fuzzed briefly (the seeds and what a few seconds find); any finding fails.
bash tools/fuzz.sh 10

# The optimised build of the programs (its warnings differ from the normal build's) and the Debian
# package made from it. The tests and benchmarks ran and were built above.
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF >/dev/null
cmake --build build/release
bash tests/install/check_package.sh build/release
