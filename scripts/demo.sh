#!/usr/bin/env bash
# The first command to try: installs what is missing, builds the module, the simulator stand-in
# and the host tool (linux preset), and runs the demo; log lines instead of the live panel when
# the output is not a terminal. Arguments go to the demo (for example --seconds 40).
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/lib.sh

ensure_packages build

step "configure and build: linux (module, simulator stand-in, host tool)"
cmake --preset linux >/dev/null
cmake --build --preset linux -j "$(jobs)" --target helmbridge-host

step "demo"
plain=()
[[ -t 1 ]] || plain=(--plain)
exec build/linux/bin/helmbridge-host demo "${plain[@]}" "$@"
