#!/usr/bin/env bash
# Builds the fuzz targets with clang, libFuzzer, ASan and UBSan in build/fuzz, runs each for the
# given number of seconds (default 60) from its checked-in seed corpus, and prints executions and
# crashes. Crashing inputs land in build/fuzz/artifacts/<target>/; keep each one as a regression
# in fuzz/regressions/<target>/ once fixed.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/lib.sh

seconds=${1:-60}
targets=(sim_message export_surface)
build=build/fuzz

ensure_packages build fuzz

step "configure and build: fuzz targets"
cmake -S . -B "$build" -G Ninja \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_CXX_COMPILER=clang++-14 \
    -DCMAKE_CXX_FLAGS="-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer" \
    -DCMAKE_EXE_LINKER_FLAGS="-fsanitize=address,undefined" \
    -DCMAKE_SHARED_LINKER_FLAGS="-fsanitize=address,undefined" \
    -DHELMBRIDGE_TESTS=OFF -DHELMBRIDGE_FUZZ=ON >/dev/null
cmake --build "$build" -j "$(jobs)" --target $(printf 'helmbridge_fuzz_%s ' "${targets[@]}")

status=0
results=()
for target in "${targets[@]}"; do
    step "fuzz: $target for ${seconds}s"
    corpus="$build/corpus/$target"
    artifacts="$build/artifacts/$target"
    # Crashes of earlier runs are gone from here: keep them in fuzz/regressions/ first.
    rm -rf "$artifacts"
    mkdir -p "$corpus" "$artifacts"
    log="$build/$target.log"
    # Every input of export_surface opens a stand-in connection, and the stand-in keeps what it
    # issued, so libFuzzer would run a leak scan after every input: leaks are checked once, at
    # exit, instead.
    per_input_leaks=1
    [[ $target == export_surface ]] && per_input_leaks=0
    # New inputs go to the working corpus; the checked-in seeds are only read.
    if ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
        "$build/bin/helmbridge_fuzz_$target" -max_total_time="$seconds" -print_final_stats=1 \
        -timeout=30 -max_len=8192 -rss_limit_mb=4096 -detect_leaks="$per_input_leaks" -artifact_prefix="$artifacts/" \
        "$corpus" "fuzz/corpus/$target" >"$log" 2>&1; then
        :
    else
        status=1
    fi
    executions=$(grep -o 'stat::number_of_executed_units: *[0-9]*' "$log" | grep -o '[0-9]*$' || echo "?")
    crashes=$(find "$artifacts" -type f | wc -l)
    [[ $crashes -gt 0 ]] && status=1
    tail -n 4 "$log"
    results+=("$(printf '%-15s executions %-10s crashes %s' "$target" "$executions" "$crashes")")
done

step "summary"
printf '%s\n' "${results[@]}"
[[ $status -eq 0 ]] || echo "FAILED: see $build/*.log and $build/artifacts/"
exit "$status"
