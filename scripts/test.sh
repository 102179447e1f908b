#!/usr/bin/env bash
# The one test command: installs what is missing, then builds and tests every configuration
# (native, ASan/UBSan, TSan, the Visual C++-ABI Windows build and the MinGW one under Wine) and
# checks every module's export table.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/lib.sh

presets=(linux linux-asan linux-tsan clang-msvc mingw)
if [[ $# -gt 0 ]]; then presets=("$@"); fi

groups=(build tidy windows)
if [[ " ${presets[*]} " == *" clang-msvc "* ]]; then
    if have_msvc_stl; then
        groups+=(msvc)
    else
        echo "skipping clang-msvc: Microsoft's STL not found in $MSVC_STL_DIR (set HELMBRIDGE_MSVC_STL_DIR)"
        kept=()
        for preset in "${presets[@]}"; do [[ "$preset" == clang-msvc ]] || kept+=("$preset"); done
        presets=("${kept[@]}")
    fi
fi
ensure_packages "${groups[@]}"

for preset in "${presets[@]}"; do
    step "configure and build: $preset"
    configure_preset "$preset"
    cmake --build --preset "$preset" -j "$(jobs)"
    case "$preset" in
        linux) check_exports_elf "build/linux/bin/libHelmBridgeA320.so" ;;
        mingw | clang-msvc) check_exports_pe "build/$preset/bin/HelmBridgeA320.dll" ;;
    esac
done

status=0
for preset in "${presets[@]}"; do
    step "test: $preset"
    [[ "$preset" == mingw || "$preset" == clang-msvc ]] && prepare_wine
    ctest --preset "$preset" -j "$(jobs)" 2>&1 | tee "build/$preset/ctest.log" | tail -n 25 \
        || true
    grep -q '100% tests passed' "build/$preset/ctest.log" || { echo "FAILED: $preset"; status=1; }
    if [[ "$preset" == linux ]]; then
        step "soak: 1 minute (linux)"
        if env -u LD_LIBRARY_PATH build/linux/bin/helmbridge_soak --minutes 1 >build/linux/soak.log 2>&1; then
            sed -n '/== soak summary/,$p' build/linux/soak.log
        else
            tail -n 40 build/linux/soak.log
            echo "FAILED: soak"
            status=1
        fi
    fi
done

# Runs the demo (plain log lines, a short session) and shows its summary, or its failed checks.
demo_smoke_test() {
    local preset=$1
    shift
    if "$@" demo --plain --seconds 4 >"build/$preset/demo.log" 2>&1; then
        tail -n 1 "build/$preset/demo.log"
    else
        grep -E 'FAILED|^demo:' "build/$preset/demo.log" || tail -n 20 "build/$preset/demo.log"
        echo "FAILED: demo ($preset)"
        status=1
    fi
}

# The host tool against the built module: the demo as a smoke test (the Windows build under
# Wine) and the signal reference in docs/ compared with the module's lists.
for preset in "${presets[@]}"; do
    case "$preset" in
        linux)
            step "host tool: linux"
            demo_smoke_test linux build/linux/bin/helmbridge-host
            if build/linux/bin/helmbridge-host signals --format md \
                | diff -u docs/signals.md - >build/linux/signals.diff; then
                echo "docs/signals.md is current"
            else
                head -n 40 build/linux/signals.diff
                echo "FAILED: docs/signals.md is out of date" \
                    "(build/linux/bin/helmbridge-host signals --format md >docs/signals.md)"
                status=1
            fi
            ;;
        mingw | clang-msvc)
            step "host tool: $preset"
            demo_smoke_test "$preset" "$WINE" "build/$preset/bin/helmbridge-host.exe"
            ;;
    esac
done

# Every C++ file the project tracks is laid out as .clang-format says.
step "format"
if git ls-files -z '*.cpp' '*.h' | xargs -0 clang-format --dry-run --Werror >build/format.log 2>&1; then
    echo "every C++ file is clang-format clean"
else
    grep -E 'error:' build/format.log | cut -d: -f1 | sort -u | sed 's/^/needs clang-format: /'
    echo "FAILED: clang-format (clang-format -i FILE)"
    status=1
fi

# clang-tidy (.clang-tidy says which checks) over every translation unit of the module, the
# stand-in and the host tool, with the linux preset's compile commands, two files at a time. Any
# finding fails.
step "clang-tidy"
configure_preset linux
tidy_started=$SECONDS
grep -o '"file": "[^"]*"' build/linux/compile_commands.json | cut -d'"' -f4 \
    | grep -E "^$(pwd -P)/(plugin|core|store|platform|catalogue|input|output|simulator|host)/" \
    | sort -u >build/tidy.files
if xargs -P 2 -n 1 clang-tidy -p build/linux --quiet <build/tidy.files >build/tidy.log 2>&1; then
    echo "clang-tidy: $(wc -l <build/tidy.files) files clean in $((SECONDS - tidy_started)) s"
else
    grep -E '(error|warning):' build/tidy.log | cut -c 1-300 | sort -u | head -n 60
    echo "FAILED: clang-tidy (build/tidy.log)"
    status=1
fi

step "summary"
for preset in "${presets[@]}"; do
    printf '%-11s %s\n' "$preset" "$(grep -E 'tests passed|tests failed' "build/$preset/ctest.log" | tail -n 1)"
done
exit "$status"
