// Runtime functions that Wine 8's msvcp140 lacks or only stubs: they are left out of the
// generated import library (MsvcRuntime.cmake) and defined here.
#include <windows.h>
#include <xtimec.h>

#include <functional>

namespace std {
[[noreturn]] void __cdecl _Xbad_function_call() { throw bad_function_call(); }
}  // namespace std

// The system time with the resolution the STL's timed waits use; newer msvcp140s keep it
// internal, so the STL's mutex and condition-variable sources built here need their own.
extern "C" void _Timespec64_get_sys(_timespec64* time) noexcept {
    constexpr unsigned long long kUnixEpochIn100ns = 0x19DB1DED53E8000ULL;
    constexpr unsigned long long kTicksPerSecond = 10'000'000;
    FILETIME now{};
    GetSystemTimePreciseAsFileTime(&now);
    const unsigned long long ticks =
        ((static_cast<unsigned long long>(now.dwHighDateTime) << 32) | now.dwLowDateTime) -
        kUnixEpochIn100ns;
    time->tv_sec = static_cast<__time64_t>(ticks / kTicksPerSecond);
    time->tv_nsec = static_cast<long>(ticks % kTicksPerSecond) * 100;
}
