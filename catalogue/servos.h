// Servo channels: gauge needles and the pitch-trim wheel.
#pragma once

#include "catalogue/signal_lists.h"

namespace fenixA320 {

// clang-format off
inline constexpr SignalEntry kServoRows[] = {
    SignalEntry{0, "NULL", ""},
    SignalEntry{1, "FENIX_A320_SERVO_ACCU_PRESS", "FENIX_A320_SERVO_ACCU_PRESS"},
    SignalEntry{2, "FENIX_A320_SERVO_BRAKE_L_PRESS", "FENIX_A320_SERVO_BRAKE_L_PRESS"},
    SignalEntry{3, "FENIX_A320_SERVO_BRAKE_R_PRESS", "FENIX_A320_SERVO_BRAKE_R_PRESS"},
    SignalEntry{4, "FENIX_TQ_PITCH_TRIM_WHEEL", "FENIX_TQ_PITCH_TRIM_WHEEL"},
};
// clang-format on

static_assert(std::size(kServoRows) == kServoCount && idsAreDense(kServoRows));

// The id of the servo channel whose variable is `variable`; no build for a name that no entry or
// several entries carry.
consteval int32_t servoIdOf(std::string_view variable) { return idOf(kServoRows, variable); }

}  // namespace fenixA320
