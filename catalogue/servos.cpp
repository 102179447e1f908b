// Servo channels: gauge needles and the pitch-trim wheel.
#include <array>

#include "catalogue/signal_lists.h"

namespace fenixA320 {
namespace {

// clang-format off
constexpr std::array kRows{
    SignalEntry{0, "NULL", ""},
    SignalEntry{1, "FENIX_A320_SERVO_ACCU_PRESS", "FENIX_A320_SERVO_ACCU_PRESS"},
    SignalEntry{2, "FENIX_A320_SERVO_BRAKE_L_PRESS", "FENIX_A320_SERVO_BRAKE_L_PRESS"},
    SignalEntry{3, "FENIX_A320_SERVO_BRAKE_R_PRESS", "FENIX_A320_SERVO_BRAKE_R_PRESS"},
    SignalEntry{4, "FENIX_TQ_PITCH_TRIM_WHEEL", "FENIX_TQ_PITCH_TRIM_WHEEL"},
};
// clang-format on

static_assert(kRows.size() == kServoCount);

}  // namespace

std::span<const SignalEntry> servoEntries() { return kRows; }

}  // namespace fenixA320
