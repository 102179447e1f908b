// Digital outputs: lamps and annunciators.
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

std::span<const SignalEntry> digitOutEntries() { return kRows; }

}  // namespace fenixA320
