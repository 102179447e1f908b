#!/usr/bin/env bash
# Builds the Windows module with MinGW and packs the release ZIP: HelmBridgeA320.dll, the public
# header, README, the signal reference and the licence; never the simulator stand-in.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/lib.sh

ensure_packages build windows

step "configure and build: mingw"
cmake --preset mingw >/dev/null
cmake --build --preset mingw -j "$(jobs)" --target HelmBridgeA320
check_exports_pe build/mingw/bin/HelmBridgeA320.dll

step "package"
(cd build/mingw && cpack -G ZIP -C RelWithDebInfo >/dev/null)
zip=$(ls -t build/mingw/HelmBridgeA320-*.zip | head -n 1)
contents=$(cmake -E tar tf "$zip")
echo "$contents"
for file in HelmBridgeA320.dll include/helmbridge_a320.h README.md LICENSE docs/signals.md; do
    grep -q "/$file\$" <<<"$contents" || { echo "FAILED: $file missing from $zip"; exit 1; }
done
if grep -qi simconnect <<<"$contents"; then echo "FAILED: $zip holds the simulator stand-in"; exit 1; fi
echo "package: $zip"
