// Servo positions and speed of the pitch-trim wheel, and the backlight PWM levels.
#pragma once

#include <array>
#include <cstdint>

#include "output/output_state.h"
#include "output/output_values.h"
#include "platform/clock.h"

namespace fenixA320 {

inline constexpr uint32_t kAccuPressureServo = 1;
inline constexpr uint32_t kBrakeLeftServo = 2;
inline constexpr uint32_t kBrakeRightServo = 3;
inline constexpr uint32_t kPitchTrimServo = 4;

inline constexpr uint32_t kPwmChannels = 15;
// Levels below this are sent as 0: the backlight drivers cannot show them.
inline constexpr double kPwmFloor = 50.0;

// Speed of the pitch-trim servo for a pass at `now`, from the distance between the aircraft's
// trim and the wheel's reported position. Feeds the filter and the settle count.
double trimServoSpeed(ServoState& state, TimePoint now, double trim, double wheel);

struct TrimServoPosition {
    bool send;
    double position;
};

// Position for the pitch-trim servo in one pass while the trim motor has power: the trim,
// except that every 22nd pass nudges a wheel that lags behind, or sends nothing.
TrimServoPosition trimServoPosition(ServoState& state, double trim, double wheel);

// Levels of the backlight channels, indexed by channel (index 0 unused), after the floor.
using PwmLevels = std::array<double, kPwmChannels + 1>;
PwmLevels pwmLevels(const OutputValues& values, double domeSwitch);

}  // namespace fenixA320
