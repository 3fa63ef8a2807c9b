#!/usr/bin/env bash
# Builds the parsers' fuzz targets (clang, libFuzzer, AddressSanitizer and
# UndefinedBehaviorSanitizer) and runs each for SECONDS (default 60) from its seeds in
# fuzz/corpus/<name>/. Exits non-zero when any target finds a crash, a sanitizer report, a leak or
# an input that runs longer than 10 s; the input is kept in build/fuzz/findings/. The inputs a run
# adds go to build/fuzz/corpus/<name>/, the seeds stay as they are.
#   bash tools/fuzz.sh [SECONDS] [NAME...]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
shift || true
build=build/fuzz

launcher=()
if command -v ccache >/dev/null; then
    launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
    -DPLATTMIX_FUZZ=ON -DBUILD_TESTING=OFF "${launcher[@]}" >/dev/null
cmake --build "$build" --target fuzzers

names=("$@")
if ((${#names[@]} == 0)); then
    mapfile -t names <"$build/fuzz-targets.txt"
fi
mkdir -p "$build/findings" "$build/logs"
failed=()
printf '%-18s %8s %12s  %s\n' target seconds executions result
for name in "${names[@]}"; do
    mkdir -p "$build/corpus/$name"
    log="$build/logs/$name.log"
    result=ok
    ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
        "$build/fuzz/fuzz_$name" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
        -print_final_stats=1 -artifact_prefix="$build/findings/$name-" \
        "$build/corpus/$name" "fuzz/corpus/$name" >"$log" 2>&1 || result="FINDING (see $log)"
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
    printf '%-18s %8s %12s  %s\n' "$name" "$seconds" "${runs:-?}" "$result"
    [ "$result" = ok ] || failed+=("$name")
done
if ((${#failed[@]})); then
    echo "findings in: ${failed[*]}" >&2
    exit 1
fi
