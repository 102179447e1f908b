#!/usr/bin/env bash
# Builds the release module with the Visual C++ ABI (preset clang-msvc) and packs the release ZIP:
# HelmBridgeA320.dll with its debug information in HelmBridgeA320.pdb beside it, the public
# header, README, the signal reference and the licence; never the simulator stand-in. Checks that
# the DLL exports exactly the nineteen functions, keeps no debug information inside, and imports
# only what a Visual C++ 2015-2022 /MD build imports.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/lib.sh

if ! have_msvc_stl; then
    echo "FAILED: the release needs Microsoft's STL, not found in $MSVC_STL_DIR (set HELMBRIDGE_MSVC_STL_DIR)"
    exit 1
fi
ensure_packages build windows msvc

step "configure and build: clang-msvc"
configure_preset clang-msvc
cmake --build --preset clang-msvc -j "$(jobs)" --target HelmBridgeA320
dll=build/clang-msvc/bin/HelmBridgeA320.dll
check_exports_pe "$dll"

step "import table and debug information"
headers=$(llvm-objdump-19 -p -h "$dll")
imports=$(awk '/DLL Name:/{print $3}' <<<"$headers" | sort -u)
echo "imports: $(tr '\n' ' ' <<<"$imports")"
allowed='^(kernel32|ucrtbase|api-ms-win-crt-[a-z0-9-]+|vcruntime140|vcruntime140_1|msvcp140(_[0-9a-z_]+)?)\.dll$'
foreign=$(tr 'A-Z' 'a-z' <<<"$imports" | grep -Ev "$allowed" || true)
if [[ -n "$foreign" ]]; then
    echo "FAILED: $dll imports from $(tr '\n' ' ' <<<"$foreign")(only KERNEL32, the UCRT," \
        "VCRUNTIME140 and MSVCP140 are allowed)"
    exit 1
fi
if grep -q '\.debug_' <<<"$headers"; then
    echo "FAILED: $dll carries debug sections; they belong in the .pdb"
    exit 1
fi
[[ -f build/clang-msvc/bin/HelmBridgeA320.pdb ]] || { echo "FAILED: HelmBridgeA320.pdb missing"; exit 1; }
echo "only KERNEL32, the UCRT and the Visual C++ runtime; debug information in HelmBridgeA320.pdb"

step "package"
(cd build/clang-msvc && cpack -G ZIP -C RelWithDebInfo >/dev/null)
zip=$(ls -t build/clang-msvc/HelmBridgeA320-*.zip | head -n 1)
contents=$(cmake -E tar tf "$zip")
echo "$contents"
for file in HelmBridgeA320.dll HelmBridgeA320.pdb include/helmbridge_a320.h README.md LICENSE \
    docs/signals.md; do
    grep -q "/$file\$" <<<"$contents" || { echo "FAILED: $file missing from $zip"; exit 1; }
done
if grep -qi simconnect <<<"$contents"; then echo "FAILED: $zip holds the simulator stand-in"; exit 1; fi
echo "package: $zip"
