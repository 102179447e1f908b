// Displays: the numeric values shown on the cockpit's displays.
#include <array>

#include "catalogue/signal_lists.h"

namespace fenixA320 {
namespace {

// clang-format off
constexpr std::array kRows{
    SignalEntry{0, "Fenix NONE", "NO SIGNAL"},
};
// clang-format on

}  // namespace

std::span<const SignalEntry> displayEntries() { return kRows; }

}  // namespace fenixA320
