// Input-side values the output side reads, until the input side serves them from its own tables.
#include "core/core.h"

namespace fenixA320 {

// The dome light switch position feeds the two dome backlight channels.
double FenixA320Core::domeLightSwitchValue() const {
    return output.domeLightValue.load(std::memory_order_relaxed);
}

}  // namespace fenixA320
