// Servo positions and speed of the pitch-trim wheel, and the backlight PWM levels.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "catalogue/servos.h"
#include "output/output_state.h"
#include "output/output_values.h"
#include "platform/clock.h"

namespace fenixA320 {

consteval uint32_t servoNamed(std::string_view channel) {
    return static_cast<uint32_t>(servoIdOf(channel));
}
inline constexpr uint32_t kAccuPressureServo = servoNamed("FENIX_A320_SERVO_ACCU_PRESS");
inline constexpr uint32_t kBrakeLeftServo = servoNamed("FENIX_A320_SERVO_BRAKE_L_PRESS");
inline constexpr uint32_t kBrakeRightServo = servoNamed("FENIX_A320_SERVO_BRAKE_R_PRESS");
inline constexpr uint32_t kPitchTrimServo = servoNamed("FENIX_TQ_PITCH_TRIM_WHEEL");

inline constexpr uint32_t kPwmChannels = kPwmCount - 1;  // channels 1..15; 0 is the unbound entry
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
