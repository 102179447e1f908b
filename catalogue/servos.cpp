// Servo channels: gauge needles and the pitch-trim wheel.
#include <array>

#include "catalogue/signal_lists.h"

namespace fenixA320 {
namespace {

// clang-format off
constexpr std::array kRows{
    SignalEntry{0, "NULL", ""},
};
// clang-format on

}  // namespace

std::span<const SignalEntry> servoEntries() { return kRows; }

}  // namespace fenixA320
