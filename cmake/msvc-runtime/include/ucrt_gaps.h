// Included before every source file: declarations that the UCRT's headers have and Wine's lack,
// all of them exported by Wine's ucrtbase or vcruntime140.
#pragma once
#include <eh.h>
#include <errno.h>
#include <float.h>
#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>
#include <wchar.h>

extern "C" {
int __cdecl vfscanf(FILE*, const char*, va_list);
int __cdecl vscanf(const char*, va_list);
int __cdecl vsscanf(const char*, const char*, va_list);
int __cdecl vfwscanf(FILE*, const wchar_t*, va_list);
int __cdecl vswscanf(const wchar_t*, const wchar_t*, va_list);
int __cdecl vwscanf(const wchar_t*, va_list);
int __cdecl fwide(FILE*, int);
__declspec(dllimport) errno_t __cdecl _get_stream_buffer_pointers(FILE*, char***, char***, int**);
int __cdecl mbsinit(const mbstate_t*);
long double __cdecl wcstold(const wchar_t*, wchar_t**);
__declspec(noreturn) void __cdecl quick_exit(int);
int __cdecl at_quick_exit(void(__cdecl*)(void));
__declspec(noreturn) void __cdecl _invoke_watson(const wchar_t*, const wchar_t*, const wchar_t*,
                                                 unsigned int, uintptr_t);
__declspec(dllimport) terminate_function __cdecl _get_terminate(void);
unexpected_handler __cdecl _get_unexpected(void);
}

#ifndef FLT_TRUE_MIN
#define FLT_TRUE_MIN 1.401298464e-45F
#define DBL_TRUE_MIN 4.9406564584124654e-324
#define LDBL_TRUE_MIN DBL_TRUE_MIN
#endif
