// Wine's <time.h> plus the UCRT's localtime_s and gmtime_s, and C11's timespec and
// timespec_get, which the STL's clocks use.
#pragma once
#include_next <time.h>

extern "C" {
__declspec(dllimport) errno_t __cdecl _gmtime64_s(struct tm*, const __time64_t*);
}
extern "C++" {
inline errno_t localtime_s(struct tm* local, const time_t* time) {
    return _localtime64_s(local, time);
}
inline errno_t gmtime_s(struct tm* utc, const time_t* time) { return _gmtime64_s(utc, time); }
}

#ifndef _TIMESPEC_DEFINED
#define _TIMESPEC_DEFINED
extern "C" {
struct timespec {
    time_t tv_sec;
    long tv_nsec;
};
struct _timespec64 {
    __time64_t tv_sec;
    long tv_nsec;
};
__declspec(dllimport) int __cdecl _timespec64_get(struct _timespec64*, int);
}
extern "C++" inline int timespec_get(struct timespec* ts, int base) {
    return _timespec64_get(reinterpret_cast<struct _timespec64*>(ts), base);
}
#ifndef TIME_UTC
#define TIME_UTC 1
#endif
#endif
