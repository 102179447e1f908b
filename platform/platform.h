// The narrow seam through which the core reaches the operating system and the client library.
#pragma once

#include <string>
#include <string_view>

#include "platform/clock.h"
#include "platform/simconnect_binding.h"

namespace helmbridge::platform {

// Outcome of one look for a running simulator process.
enum class ProbeResult {
    kFound,
    kNotFound,
    kSnapshotFailed,  // the process list could not be read; the caller opens regardless
};

// Everything the core needs from the platform, as plain function pointers so a test can hand
// the core its own table. All of them may be called from any thread.
struct Platform {
    // See bindSimConnect(): null while the client library cannot be bound.
    const SimConnectApi* (*bindSimConnect)() = nullptr;
    // Walks the running processes for "FlightSimulator.exe" / "FlightSimulator2024.exe".
    ProbeResult (*probeSimulatorProcess)() = nullptr;
    // True when a file "SimConnect.cfg" exists in the process's current directory.
    bool (*simConnectCfgPresent)() = nullptr;
    // One line for a debugger (Windows) or standard error (elsewhere); text is NUL-terminated.
    void (*debugOutput)(const char* text) = nullptr;
    // See simConnectSearchReport(): why the client library could not be bound. May be null.
    std::string (*simConnectSearchReport)() = nullptr;
    // The steady clock, and sleeping on it until a time point: the worker loops, the pause of
    // Stop and the spacing of analog replays. Tests hand in a clock whose sleeps return at once.
    TimePoint (*now)() = &steadyNow;
    void (*sleepUntil)(TimePoint wakeAt) = &steadySleepUntil;
};

// The table of the system the module runs on.
const Platform& systemPlatform();

// True when the file name part of `executable` (after the last '/' or '\\') is one of the two
// simulator executables, compared without regard to ASCII letter case.
bool isSimulatorProcessName(std::string_view executable);
bool isSimulatorProcessName(std::wstring_view executable);

#if !defined(_WIN32)
// The Linux process walk over a /proc-style directory: each numeric entry's "cmdline" holds the
// process's argv[0] up to the first NUL. kSnapshotFailed when the directory cannot be read.
ProbeResult probeProcessDirectory(const char* procRoot);
#endif

}  // namespace helmbridge::platform
