// The pitch-trim servo's memory, kept by the output side.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/clock.h"

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

}  // namespace fenixA320
