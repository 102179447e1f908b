# Shared helpers of the project scripts.

step() { printf '\n== %s ==\n' "$*"; }

jobs() { nproc 2>/dev/null || echo 2; }

as_root() {
    if [[ $(id -u) -eq 0 ]]; then "$@"; else sudo "$@"; fi
}

# Installs the Debian packages of the named groups that are missing, with one apt-get update.
ensure_packages() {
    local missing=() group
    for group in "$@"; do
        case "$group" in
            build)
                command -v cmake >/dev/null || missing+=(cmake)
                command -v ninja >/dev/null || missing+=(ninja-build)
                command -v g++ >/dev/null || missing+=(g++)
                command -v clang-format >/dev/null || missing+=(clang-format)
                [[ -f /usr/src/googletest/CMakeLists.txt ]] || missing+=(googletest)
                ;;
            tidy)
                command -v clang-tidy >/dev/null || missing+=(clang-tidy)
                ;;
            windows)
                command -v x86_64-w64-mingw32-g++-posix >/dev/null || missing+=(g++-mingw-w64-x86-64-posix)
                command -v x86_64-w64-mingw32-objdump >/dev/null || missing+=(binutils-mingw-w64-x86-64)
                [[ -x /usr/lib/wine/wine64 ]] || missing+=(wine64)
                ;;
            msvc)
                command -v clang++-19 >/dev/null || missing+=(clang-19)
                command -v lld-link-19 >/dev/null || missing+=(lld-19)
                command -v llvm-dlltool-19 >/dev/null || missing+=(llvm-19)
                [[ -f /usr/include/wine/wine/msvcrt/corecrt.h ]] || missing+=(libwine-dev)
                [[ -x /usr/lib/wine/wine64 ]] || missing+=(wine64)
                ;;
            bench)
                [[ -f /usr/include/benchmark/benchmark.h ]] || missing+=(libbenchmark-dev)
                ;;
            fuzz)
                command -v clang++-14 >/dev/null || missing+=(clang-14)
                [[ -n $(ls /usr/lib/llvm-14/lib/clang/*/lib/linux/libclang_rt.fuzzer-x86_64.a 2>/dev/null) ]] \
                    || missing+=(libclang-rt-14-dev)
                ;;
        esac
    done
    if [[ ${#missing[@]} -gt 0 ]]; then
        step "installing: ${missing[*]}"
        as_root apt-get update -qq
        as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
            "${missing[@]}" >/dev/null
    fi
}

# Microsoft's STL for the Visual C++-ABI build (preset clang-msvc): a dependency the project refers
# to and never copies. HELMBRIDGE_MSVC_STL_DIR overrides where it is.
MSVC_STL_DIR=${HELMBRIDGE_MSVC_STL_DIR:-$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)/shared/third_party/microsoft-stl}
have_msvc_stl() { [[ -f "$MSVC_STL_DIR/stl/inc/yvals_core.h" ]]; }

# Configures a preset; clang-msvc learns where the STL is.
configure_preset() {
    local preset=$1
    if [[ "$preset" == clang-msvc ]]; then
        cmake --preset "$preset" -DHELMBRIDGE_MSVC_STL_DIR="$MSVC_STL_DIR" >/dev/null
    else
        cmake --preset "$preset" >/dev/null
    fi
}

WINE=/usr/lib/wine/wine64
export WINEDEBUG=-all

# The first start of Wine creates its prefix (about 30 s); do it once, outside any test timeout.
prepare_wine() {
    "$WINE" cmd /c exit >/dev/null 2>&1 || true
}

EXPORTS="Start Stop UpdateOutput GetConnectStatus SetDigitIn SetEncoder SetAnalog SetDigitOutProc
SetDisplayProc SetServoProc SetServoSpeedProc SetPwmProc GetDigitInSigList GetEncoderSigList
GetAnalogSigList GetDigitOutSigList GetDisplaySigList GetServoSigList GetPwmSigList"

compare_exports() {
    local what=$1 actual=$2 expected
    expected=$(tr ' ' '\n' <<<"$EXPORTS" | tr -s '\n' | sort)
    if [[ "$actual" != "$expected" ]]; then
        echo "FAILED: $what does not export exactly the 19 functions:"
        diff <(echo "$expected") <(echo "$actual") || true
        return 1
    fi
    echo "$what exports exactly the 19 functions"
}

check_exports_elf() {
    compare_exports "$1" "$(nm -D --defined-only "$1" | awk '{print $3}' | sort)"
}

check_exports_pe() {
    compare_exports "$1" "$(x86_64-w64-mingw32-objdump -p "$1" \
        | awk '/\[Ordinal\/Name Pointer\] Table/{t=1; next} t && /^[ \t]*\[/{print $NF} t && /^$/{t=0}' | sort)"
}
