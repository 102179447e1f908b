#!/usr/bin/env bash
# Fault soak: the built module against the stand-in in real time for the given minutes (default
# 10), with host traffic and simulator faults; prints what it checked. A second argument picks
# the preset (default linux; linux-asan and linux-tsan run it under the sanitizers).
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/lib.sh

minutes=${1:-10}
preset=${2:-linux}

ensure_packages build
step "build: $preset"
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset" -j "$(jobs)" --target helmbridge_soak HelmBridgeA320 helmbridge_standin

step "soak: $minutes minutes ($preset)"
# The run begins with the client library missing: nothing may find it on a search path.
env -u LD_LIBRARY_PATH \
    ASAN_OPTIONS="halt_on_error=1:detect_leaks=1" UBSAN_OPTIONS="halt_on_error=1:print_stacktrace=1" \
    TSAN_OPTIONS="halt_on_error=1:second_deadlock_stack=1" \
    "build/$preset/bin/helmbridge_soak" --minutes "$minutes"
