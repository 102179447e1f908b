// Wine's <stdlib.h> plus the C++ overloads that the UCRT's header declares itself.
#pragma once
#include_next <stdlib.h>

extern "C" {
long long __cdecl llabs(long long);
__declspec(dllimport) unsigned int __cdecl _set_abort_behavior(unsigned int flags,
                                                               unsigned int mask);
}
extern "C++" {
inline long abs(long _X) noexcept { return labs(_X); }
inline long long abs(long long _X) noexcept { return llabs(_X); }
inline ldiv_t div(long _A1, long _A2) noexcept { return ldiv(_A1, _A2); }
}
