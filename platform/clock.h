// The steady clock every interval and gate is measured on, reached through the platform seam so
// tests can drive time themselves.
#pragma once

#include <chrono>
#include <thread>

namespace helmbridge::platform {

using SteadyClock = std::chrono::steady_clock;
using TimePoint = SteadyClock::time_point;
using Nanos = std::chrono::nanoseconds;

inline TimePoint steadyNow() { return SteadyClock::now(); }
// A time point already passed means no sleep.
inline void steadySleepUntil(TimePoint wakeAt) { std::this_thread::sleep_until(wakeAt); }

}  // namespace helmbridge::platform

// The module's own code names the clock types without qualification.
namespace fenixA320 {
using helmbridge::platform::Nanos;
using helmbridge::platform::SteadyClock;
using helmbridge::platform::TimePoint;
}  // namespace fenixA320
