#!/usr/bin/env bash
# Builds the benchmarks (RelWithDebInfo, as the module ships) and runs them in one go.
#   scripts/bench.sh [ARGS]      Linux, in build/bench: per-call costs with their floors (ARGS pass
#                                on, e.g. --benchmark_filter=SetAnalog), the output cycle through
#                                the exports, then latency, idle cost and the encoder burst
#   scripts/bench.sh clang-msvc  the release build, in build/bench-clang-msvc: the output cycle
#                                through the exports, under Wine
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/lib.sh

if [[ "${1:-}" == clang-msvc ]]; then
    have_msvc_stl || { echo "Microsoft's STL not found in $MSVC_STL_DIR"; exit 1; }
    ensure_packages build windows msvc
    build=build/bench-clang-msvc
    step "configure and build: benchmarks, clang-msvc"
    cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DCMAKE_TOOLCHAIN_FILE=cmake/clang-msvc-x86_64.cmake -DHELMBRIDGE_MSVC_STL_DIR="$MSVC_STL_DIR" \
        -DHELMBRIDGE_TESTS=OFF -DHELMBRIDGE_BENCH=ON >/dev/null
    cmake --build "$build" -j "$(jobs)" --target helmbridge_bench_output
    prepare_wine
    step "machine"
    lscpu | grep -E 'Model name|^CPU\(s\)|Thread|MHz' || true
    "$WINE" --version
    step "output cycle (Windows build under Wine)"
    "$WINE" "$build/bin/helmbridge_bench_output.exe"
    exit 0
fi

ensure_packages build bench
build=build/bench

step "configure and build: benchmarks"
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=g++ \
    -DHELMBRIDGE_TESTS=OFF -DHELMBRIDGE_BENCH=ON >/dev/null
cmake --build "$build" -j "$(jobs)" --target helmbridge_bench helmbridge_bench_system \
    helmbridge_bench_output

step "machine"
lscpu | grep -E 'Model name|^CPU\(s\)|Thread|MHz' || true
uname -srm

step "per-call costs"
"$build/bin/helmbridge_bench" --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
    --benchmark_counters_tabular=true "$@"

step "output cycle through the exports"
env -u LD_LIBRARY_PATH "$build/bin/helmbridge_bench_output"

step "latency, idle cost, encoder burst"
"$build/bin/helmbridge_bench_system"
