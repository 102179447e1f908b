// One fake of the platform seam for every test: the simulator stand-in as the client library,
// probes and the debugger output under the test's control, and a clock that either runs on
// synthetic time (sleeps return at once) or is the steady clock. Waiting for real threads is
// tests/support/eventually.h.
#pragma once

#include <atomic>
#include <chrono>
#include <mutex>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/platform.h"

namespace helmbridge::testing {

struct FakeSystem {
    static inline std::atomic<platform::ProbeResult> probe{platform::ProbeResult::kNotFound};
    static inline std::atomic<bool> configFile{false};
    static inline std::atomic<bool> libraryMissing{false};
    // Synthetic: now() is `time` and sleeps return at once. Otherwise the steady clock.
    static inline std::atomic<bool> synthetic{true};
    static inline std::atomic<platform::TimePoint> time{platform::TimePoint{}};
    // Time asked to sleep since the reset, in synthetic time.
    static inline std::atomic<platform::Nanos> slept{platform::Nanos{0}};

    static void reset(platform::ProbeResult found = platform::ProbeResult::kNotFound) {
        probe = found;
        configFile = false;
        libraryMissing = false;
        synthetic = true;
        time = platform::TimePoint{} + std::chrono::seconds(1000);
        slept = platform::Nanos{0};
        std::lock_guard lock(linesMutex);
        lines.clear();
    }
    static std::vector<std::string> debugLines() {
        std::lock_guard lock(linesMutex);
        return lines;
    }

    static inline std::mutex linesMutex;
    static inline std::vector<std::string> lines;
};

// The synthetic time `seconds` after the fake clock's start.
inline platform::TimePoint at(double seconds) {
    return platform::TimePoint{} + std::chrono::seconds(1000) +
           std::chrono::duration_cast<platform::Nanos>(std::chrono::duration<double>(seconds));
}

inline const platform::Platform& fakePlatform() {
    static const platform::Platform fake{
        []() -> const platform::SimConnectApi* {
            return FakeSystem::libraryMissing ? nullptr : platform::bindSimConnect();
        },
        [] { return FakeSystem::probe.load(); },
        [] { return FakeSystem::configFile.load(); },
        [](const char* text) {
            std::lock_guard lock(FakeSystem::linesMutex);
            FakeSystem::lines.emplace_back(text);
        },
        [] { return std::string("SimConnect.dll not loaded; tried: here (missing)"); },
        [] { return FakeSystem::synthetic ? FakeSystem::time.load() : platform::steadyNow(); },
        [](platform::TimePoint wakeAt) {
            if (!FakeSystem::synthetic) {
                platform::steadySleepUntil(wakeAt);
                return;
            }
            FakeSystem::slept = FakeSystem::slept.load() + (wakeAt - FakeSystem::time.load());
        },
    };
    return fake;
}

}  // namespace helmbridge::testing
