// Thread-safe initialisation of function-local statics, and the TLS directory that the per-thread
// epoch (and any other __declspec(thread) variable of the module) needs. Visual C++ takes both
// from its static runtime; the protocol is the one clang emits code for: a guard is 0 before,
// -1 during and the global epoch after initialisation.
#include <windows.h>

#include <climits>

extern "C" {

ULONG _tls_index = 0;

#pragma section(".tls", read, write)
#pragma section(".tls$ZZZ", read, write)
#pragma section(".CRT$XLA", long, read)
#pragma section(".CRT$XLZ", long, read)
__declspec(allocate(".tls")) char _tls_start = 0;
__declspec(allocate(".tls$ZZZ")) char _tls_end = 0;
__declspec(allocate(".CRT$XLA")) PIMAGE_TLS_CALLBACK __xl_a = nullptr;
__declspec(allocate(".CRT$XLZ")) PIMAGE_TLS_CALLBACK __xl_z = nullptr;

// The linker points the image's TLS directory at this record.
extern const IMAGE_TLS_DIRECTORY64 _tls_used = {reinterpret_cast<ULONGLONG>(&_tls_start),
                                                reinterpret_cast<ULONGLONG>(&_tls_end),
                                                reinterpret_cast<ULONGLONG>(&_tls_index),
                                                reinterpret_cast<ULONGLONG>(&__xl_a + 1),
                                                0,
                                                0};

int _Init_global_epoch = INT_MIN;
__declspec(thread) int _Init_thread_epoch = INT_MIN;

}  // extern "C"

namespace {

constexpr int kUninitialised = 0;
constexpr int kBeingInitialised = -1;

SRWLOCK guardLock = SRWLOCK_INIT;
CONDITION_VARIABLE guardChanged = CONDITION_VARIABLE_INIT;

}  // namespace

extern "C" {

// Returns with *guard == -1 when the caller must initialise, or with the thread's epoch updated
// when another thread finished first.
void __cdecl _Init_thread_header(int* guard) noexcept {
    AcquireSRWLockExclusive(&guardLock);
    for (;;) {
        if (*guard == kUninitialised) {
            *guard = kBeingInitialised;
            break;
        }
        if (*guard != kBeingInitialised) {
            _Init_thread_epoch = _Init_global_epoch;
            break;
        }
        SleepConditionVariableSRW(&guardChanged, &guardLock, INFINITE, 0);
    }
    ReleaseSRWLockExclusive(&guardLock);
}

void __cdecl _Init_thread_footer(int* guard) noexcept {
    AcquireSRWLockExclusive(&guardLock);
    ++_Init_global_epoch;
    *guard = _Init_global_epoch;
    _Init_thread_epoch = _Init_global_epoch;
    ReleaseSRWLockExclusive(&guardLock);
    WakeAllConditionVariable(&guardChanged);
}

// The initialiser threw: the next caller tries again.
void __cdecl _Init_thread_abort(int* guard) noexcept {
    AcquireSRWLockExclusive(&guardLock);
    *guard = kUninitialised;
    ReleaseSRWLockExclusive(&guardLock);
    WakeAllConditionVariable(&guardChanged);
}

}  // extern "C"
