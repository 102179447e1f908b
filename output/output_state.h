// Run-time state of the output side, owned by the core.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

#include "core/periodic_worker.h"

namespace fenixA320 {

// Linearly weighted moving average of the last five pitch-trim speed samples, newest heaviest.
class TrimSpeedFilter {
  public:
    static constexpr std::size_t kDepth = 5;

    // Takes a sample and returns the new average.
    double add(double sample);
    std::size_t size() const { return count; }

  private:
    std::array<double, kDepth> samples{};  // oldest first
    std::size_t count = 0;
};

// The pitch-trim servo's memory; touched only by the servo loop, kept across Stop and Start.
struct ServoState {
    TimePoint lastServoTime{};  // previous speed computation
    TrimSpeedFilter trimSpeedFilter;
    int32_t trimSettleCount = 0;  // consecutive passes with the wheel within 0.02 of the trim
    int32_t trimNudgeCount = 0;   // passes since the last nudge check
};

struct OutputState {
    ServoState servo;

    // Hardware trim wheel position as last reported while the trim motor was powered. The
    // analog input path stores it (relaxed); the servo loop reads it.
    std::atomic<double> elevatorTrimInput{0.0};

    // The value the switch logic last wrote for S_OH_INT_LT_DOME (0 off, 1 dim, 2 bright). The
    // input side stores it (relaxed) each time it writes that switch variable, unless it
    // provides domeLightSwitchValue() from its own table instead.
    std::atomic<double> domeLightValue{0.0};
};

}  // namespace fenixA320
