#!/usr/bin/env bash
# Builds the benchmarks (RelWithDebInfo, as the module ships) in build/bench and runs them in one
# go: the per-call costs with their floors, then latency, idle cost and the encoder burst.
# Arguments pass on to the per-call benchmark (e.g. --benchmark_filter=SetAnalog).
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/lib.sh

ensure_packages build bench
build=build/bench

step "configure and build: benchmarks"
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=g++ \
    -DHELMBRIDGE_TESTS=OFF -DHELMBRIDGE_BENCH=ON >/dev/null
cmake --build "$build" -j "$(jobs)" --target helmbridge_bench helmbridge_bench_system

step "machine"
lscpu | grep -E 'Model name|^CPU\(s\)|Thread|MHz' || true
uname -srm

step "per-call costs"
"$build/bin/helmbridge_bench" --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
    --benchmark_counters_tabular=true "$@"

step "latency, idle cost, encoder burst"
"$build/bin/helmbridge_bench_system"
