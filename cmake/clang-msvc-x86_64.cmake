# Cross-compiling to 64-bit Windows with the Visual C++ binary interface: clang and lld-link for
# x86_64-pc-windows-msvc, Microsoft's STL headers, Wine's UCRT and Windows headers, and the
# project's own minimal Visual C++ runtime (cmake/msvc-runtime, wired up by MsvcRuntime.cmake).
# What it builds has the layouts and the heap of a Visual C++ 2015-2022 /MD build.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(HELMBRIDGE_MSVC_ABI ON)

set(HELMBRIDGE_MSVC_STL_DIR "${CMAKE_CURRENT_LIST_DIR}/../../shared/third_party/microsoft-stl"
    CACHE PATH "Microsoft's STL (the folder that holds stl/inc and stl/src)")
set(HELMBRIDGE_WINE_INCLUDE_DIR /usr/include/wine/wine CACHE PATH
    "Wine's headers (msvcrt/ holds the UCRT's, windows/ the Windows API's)")
set(HELMBRIDGE_WINE_DLL_DIR /usr/lib/x86_64-linux-gnu/wine/x86_64-windows CACHE PATH
    "Wine's 64-bit runtime DLLs, whose export tables become the import libraries")
get_filename_component(HELMBRIDGE_MSVC_STL_DIR "${HELMBRIDGE_MSVC_STL_DIR}" ABSOLUTE)

set(CMAKE_C_COMPILER clang-19)
set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_C_COMPILER_TARGET x86_64-pc-windows-msvc)
set(CMAKE_CXX_COMPILER_TARGET x86_64-pc-windows-msvc)
set(CMAKE_AR llvm-ar-19)
set(CMAKE_RANLIB llvm-ranlib-19)
set(CMAKE_RC_COMPILER llvm-rc-19)
set(CMAKE_MT llvm-mt-19)
# Detection compiles only: linking needs the runtime that this project builds first.
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
# Threads are Windows threads. Detection only compiles, so without these it would find a pthread
# library that no link could use.
foreach(check CMAKE_HAVE_LIBC_PTHREAD CMAKE_HAVE_PTHREADS_CREATE CMAKE_HAVE_PTHREAD_CREATE
              THREADS_HAVE_PTHREAD_ARG)
    set(${check} "" CACHE INTERNAL "")
endforeach()
# The dynamic runtime (/MD) in every configuration: there is no debug runtime here.
set(CMAKE_MSVC_RUNTIME_LIBRARY MultiThreadedDLL)

execute_process(COMMAND clang++-19 -print-resource-dir OUTPUT_VARIABLE helmbridge_clang_resources
                OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
set(helmbridge_runtime_include "${CMAKE_CURRENT_LIST_DIR}/msvc-runtime/include")
# Order matters: the runtime's headers wrap some of Wine's, and clang's intrinsics headers must
# come before Wine's <intrin.h>. The STL's vectorised algorithms (which live in a library Wine
# lacks) stay off.
string(JOIN " " CMAKE_CXX_FLAGS_INIT
    -fms-compatibility -fms-extensions -fms-compatibility-version=19.44
    -nostdinc++ -nostdlibinc
    "-isystem ${helmbridge_runtime_include}"
    "-isystem ${HELMBRIDGE_MSVC_STL_DIR}/stl/inc"
    "-isystem ${helmbridge_clang_resources}/include"
    "-isystem ${HELMBRIDGE_WINE_INCLUDE_DIR}/msvcrt"
    "-isystem ${HELMBRIDGE_WINE_INCLUDE_DIR}/windows"
    "-include ucrt_gaps.h"
    -D_USE_STD_VECTOR_ALGORITHMS=0
    -D_CRT_SECURE_NO_WARNINGS)
# The runtime libraries are named on each link (MsvcRuntime.cmake), never taken by default.
set(CMAKE_CXX_STANDARD_LIBRARIES "" CACHE STRING "Set by MsvcRuntime.cmake per target")
set(CMAKE_C_STANDARD_LIBRARIES "" CACHE STRING "Set by MsvcRuntime.cmake per target")
foreach(kind EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT "-fuse-ld=lld -nostdlib -Wl,/nodefaultlib")
endforeach()

# Tests and tools run under Wine.
find_program(HELMBRIDGE_WINE NAMES wine64 wine PATHS /usr/lib/wine NO_DEFAULT_PATH)
if(HELMBRIDGE_WINE)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${HELMBRIDGE_WINE})
endif()
