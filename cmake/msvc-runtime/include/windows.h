// Wine's Windows headers in a Visual C++-ABI build: wchar_t is native and 16 bits wide, and
// Wine's inline InterlockedCompareExchange128 must not take the name of clang's builtin.
#pragma once
#ifndef WINE_UNICODE_NATIVE
#define WINE_UNICODE_NATIVE
#endif
#define _InterlockedCompareExchange128 wine_InterlockedCompareExchange128
#include_next <windows.h>
#undef _InterlockedCompareExchange128
// Visual C++'s <windows.h> always brings the __except helpers.
#include <excpt.h>

// Declared by the Windows SDK, exported by Wine's kernel32, missing from Wine's headers.
extern "C" __declspec(dllimport) BOOL WINAPI GetProcessHandleCount(HANDLE process, PDWORD count);
// windef.h turns the C++ keyword into a macro when it sees no C99 compiler.
#ifdef __cplusplus
#undef inline
#endif
