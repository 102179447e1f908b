// Wine's <math.h> with what the Visual C++ UCRT header has and it lacks: classification as
// functions rather than macros (the STL declares std:: overloads of them), float_t/double_t, a
// few C99 functions, and the long double functions (long double is double in this ABI, so they
// forward to the double ones, as the UCRT's own header does inline).
#pragma once
#include_next <math.h>

#undef isfinite
#undef isinf
#undef isnan
#undef isnormal
#undef signbit
#undef fpclassify
#undef isgreater
#undef isgreaterequal
#undef isless
#undef islessequal
#undef islessgreater
#undef isunordered

#ifndef FP_NAN
#define FP_INFINITE 1
#define FP_NAN 2
#define FP_NORMAL (-1)
#define FP_SUBNORMAL (-2)
#define FP_ZERO 0
#endif

typedef float float_t;
typedef double double_t;

extern "C" {
double __cdecl fma(double, double, double);
float __cdecl fmaf(float, float, float);
double __cdecl erfc(double);
float __cdecl erfcf(float);
double __cdecl nan(const char*);
float __cdecl nanf(const char*);
double __cdecl nexttoward(double, long double);
float __cdecl nexttowardf(float, long double);
}

extern "C++" {
template <class _Ty>
inline int fpclassify(_Ty _X) noexcept {
    return __builtin_fpclassify(FP_NAN, FP_INFINITE, FP_NORMAL, FP_SUBNORMAL, FP_ZERO,
                                static_cast<double>(_X));
}
template <class _Ty>
inline bool signbit(_Ty _X) noexcept {
    return __builtin_signbit(static_cast<double>(_X));
}
}

#define HELMBRIDGE_LONG_DOUBLE_1(name) \
    inline long double name##l(long double x) { return name(static_cast<double>(x)); }
#define HELMBRIDGE_LONG_DOUBLE_2(name)                               \
    inline long double name##l(long double x, long double y) {       \
        return name(static_cast<double>(x), static_cast<double>(y)); \
    }
extern "C" {
HELMBRIDGE_LONG_DOUBLE_1(acos)
HELMBRIDGE_LONG_DOUBLE_1(asin)
HELMBRIDGE_LONG_DOUBLE_1(atan)
HELMBRIDGE_LONG_DOUBLE_1(cos)
HELMBRIDGE_LONG_DOUBLE_1(sin)
HELMBRIDGE_LONG_DOUBLE_1(tan)
HELMBRIDGE_LONG_DOUBLE_1(acosh)
HELMBRIDGE_LONG_DOUBLE_1(asinh)
HELMBRIDGE_LONG_DOUBLE_1(atanh)
HELMBRIDGE_LONG_DOUBLE_1(cosh)
HELMBRIDGE_LONG_DOUBLE_1(sinh)
HELMBRIDGE_LONG_DOUBLE_1(tanh)
HELMBRIDGE_LONG_DOUBLE_1(exp)
HELMBRIDGE_LONG_DOUBLE_1(exp2)
HELMBRIDGE_LONG_DOUBLE_1(expm1)
HELMBRIDGE_LONG_DOUBLE_1(log)
HELMBRIDGE_LONG_DOUBLE_1(log10)
HELMBRIDGE_LONG_DOUBLE_1(log1p)
HELMBRIDGE_LONG_DOUBLE_1(log2)
HELMBRIDGE_LONG_DOUBLE_1(logb)
HELMBRIDGE_LONG_DOUBLE_1(cbrt)
HELMBRIDGE_LONG_DOUBLE_1(sqrt)
HELMBRIDGE_LONG_DOUBLE_1(erf)
HELMBRIDGE_LONG_DOUBLE_1(erfc)
HELMBRIDGE_LONG_DOUBLE_1(tgamma)
HELMBRIDGE_LONG_DOUBLE_1(lgamma)
HELMBRIDGE_LONG_DOUBLE_1(ceil)
HELMBRIDGE_LONG_DOUBLE_1(floor)
HELMBRIDGE_LONG_DOUBLE_1(trunc)
HELMBRIDGE_LONG_DOUBLE_1(round)
HELMBRIDGE_LONG_DOUBLE_1(nearbyint)
HELMBRIDGE_LONG_DOUBLE_1(rint)
HELMBRIDGE_LONG_DOUBLE_1(fabs)
HELMBRIDGE_LONG_DOUBLE_2(atan2)
HELMBRIDGE_LONG_DOUBLE_2(pow)
HELMBRIDGE_LONG_DOUBLE_2(fmod)
HELMBRIDGE_LONG_DOUBLE_2(remainder)
HELMBRIDGE_LONG_DOUBLE_2(hypot)
HELMBRIDGE_LONG_DOUBLE_2(fdim)
HELMBRIDGE_LONG_DOUBLE_2(fmax)
HELMBRIDGE_LONG_DOUBLE_2(fmin)
HELMBRIDGE_LONG_DOUBLE_2(nextafter)
HELMBRIDGE_LONG_DOUBLE_2(copysign)
inline long double nanl(const char* tag) { return nan(tag); }
inline long double nexttowardl(long double x, long double y) {
    return nextafter(static_cast<double>(x), static_cast<double>(y));
}
inline long double fmal(long double x, long double y, long double z) {
    return fma(static_cast<double>(x), static_cast<double>(y), static_cast<double>(z));
}
inline long double remquol(long double x, long double y, int* q) {
    return remquo(static_cast<double>(x), static_cast<double>(y), q);
}
inline long double scalbnl(long double x, int n) { return scalbn(static_cast<double>(x), n); }
inline long double scalblnl(long double x, long n) { return scalbln(static_cast<double>(x), n); }
inline long double ldexpl(long double x, int n) { return ldexp(static_cast<double>(x), n); }
inline long double frexpl(long double x, int* n) { return frexp(static_cast<double>(x), n); }
inline long double modfl(long double x, long double* i) {
    double whole = 0;
    const double fraction = modf(static_cast<double>(x), &whole);
    *i = whole;
    return fraction;
}
inline int ilogbl(long double x) { return ilogb(static_cast<double>(x)); }
inline long lroundl(long double x) { return lround(static_cast<double>(x)); }
inline long long llroundl(long double x) { return llround(static_cast<double>(x)); }
inline long lrintl(long double x) { return lrint(static_cast<double>(x)); }
inline long long llrintl(long double x) { return llrint(static_cast<double>(x)); }
}
#undef HELMBRIDGE_LONG_DOUBLE_1
#undef HELMBRIDGE_LONG_DOUBLE_2
