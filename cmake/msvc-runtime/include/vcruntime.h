// The part of Visual C++'s <vcruntime.h> that Microsoft's STL and the UCRT headers rely on:
// calling conventions, import markers, language-level switches and small helper macros.
#pragma once
#define _VCRUNTIME_H

#include <corecrt.h>
#include <sal.h>
#include <stddef.h>
#include <vadefs.h>

#define _CRT_BEGIN_C_HEADER extern "C" {
#define _CRT_END_C_HEADER }
#define _CRT_PACKING 8
#define _HAS_EXCEPTIONS 1

// Every runtime function comes from a DLL: vcruntime140, msvcp140 or the UCRT. The few that the
// static runtime defines itself are compiled with _CRTIMP2 empty, so no module exports them.
#define _VCRTIMP __declspec(dllimport)
#ifndef _CRTIMP2
#define _CRTIMP2 __declspec(dllimport)
#endif
#define _CRTIMP2_IMPORT __declspec(dllimport)
#define _MRTIMP2 __declspec(dllimport)
#define _CRT_SATELLITE_1 __declspec(dllimport)
#define _CRT_SATELLITE_2 __declspec(dllimport)
#define _CRT_SATELLITE_CODECVT_IDS __declspec(dllimport)
#define _CRT_SATELLITE_CODECVT_IDS_NOIMPORT
#define _PGLOBAL

// Calling conventions; there is no managed code here.
#define __CRTDECL __cdecl
#define __CLR_OR_THIS_CALL
#define __CLRCALL_OR_CDECL __cdecl
#define __CLRCALL_PURE_OR_CDECL __cdecl
#define __CLRCALL_PURE_OR_STDCALL __stdcall

#define _CRT_STRINGIZE_(x) #x
#define _CRT_STRINGIZE(x) _CRT_STRINGIZE_(x)
#define _CRT_WIDE_(s) L##s
#define _CRT_WIDE(s) _CRT_WIDE_(s)
#define _CRT_APPEND(a, b) a##b
#define _CRT_UNUSED(x) (void)x
#define __crt_countof(a) (sizeof(a) / sizeof(a[0]))

#define _CRT_ALIGN(x) __declspec(align(x))
#define _CRT_DEPRECATE_TEXT(x) __declspec(deprecated(x))
#define _CRT_INSECURE_DEPRECATE(x)
#define _CRT_NODISCARD [[nodiscard]]
#define _NODISCARD [[nodiscard]]
#define _CRT_SECURE_CPP_NOTHROW throw()
#define _CRT_HAS_CXX17 1
#define _CRT_INTERNAL_NONSTDC_NAMES 1
#define _CRT_GUARDOVERFLOW
#define _CRTRESTRICT
#define _CRT_HYBRIDPATCHABLE
#define _VCRT_ALLOCATOR
#define _VCRT_NOALIAS __declspec(noalias)
#define _VCRT_RESTRICT __declspec(restrict)
#define _VCRT_NOALIAS_IMPL
#define _VCRUNTIME_DISABLED_WARNINGS
#define _VCRUNTIME_DISABLE_WARNINGS
#define _VCRUNTIME_RESTORE_WARNINGS
#define _MSVC_CONSTEXPR

#ifndef _HAS_CXX17
#define _HAS_CXX17 1
#define _HAS_CXX20 1
#define _HAS_CXX23 0
#endif
