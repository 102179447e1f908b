// Wine's <excpt.h> plus the intrinsics that Visual C++'s header names for __except filters;
// clang provides them as builtins.
#pragma once
#include_next <excpt.h>
#ifndef GetExceptionCode
#define GetExceptionCode _exception_code
#define GetExceptionInformation (struct _EXCEPTION_POINTERS*)_exception_info
#define AbnormalTermination _abnormal_termination
#endif
