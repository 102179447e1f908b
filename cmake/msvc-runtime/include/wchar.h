// Wine's <wchar.h> with the UCRT's mbstate_t: an 8-byte struct named _Mbstatet, not an int. The
// STL's codecvt and streampos carry it, and msvcp140 exports them under names that spell it.
#pragma once
#define mbstate_t helmbridge_wine_mbstate_t
#include_next <wchar.h>
#undef mbstate_t

extern "C" {
typedef struct _Mbstatet {
    unsigned long _Wchar;
    unsigned short _Byte;
    unsigned short _State;
} _Mbstatet;
typedef _Mbstatet mbstate_t;
}

// Wine declared the restartable conversions with its int state, which the runtime keeps in the
// first four bytes; these overloads take the UCRT's state.
extern "C++" {
inline size_t mbrlen(const char* s, size_t n, mbstate_t* state) {
    return mbrlen(s, n, reinterpret_cast<helmbridge_wine_mbstate_t*>(state));
}
inline size_t mbrtowc(wchar_t* out, const char* s, size_t n, mbstate_t* state) {
    return mbrtowc(out, s, n, reinterpret_cast<helmbridge_wine_mbstate_t*>(state));
}
inline size_t mbsrtowcs(wchar_t* out, const char** s, size_t n, mbstate_t* state) {
    return mbsrtowcs(out, s, n, reinterpret_cast<helmbridge_wine_mbstate_t*>(state));
}
inline size_t wcrtomb(char* out, wchar_t c, mbstate_t* state) {
    return wcrtomb(out, c, reinterpret_cast<helmbridge_wine_mbstate_t*>(state));
}
inline size_t wcsrtombs(char* out, const wchar_t** s, size_t n, mbstate_t* state) {
    return wcsrtombs(out, s, n, reinterpret_cast<helmbridge_wine_mbstate_t*>(state));
}
}
