// Display texts: blanking, light-test patterns, FCU, EFIS baro, clock, rudder trim, RMP and
// transponder formats.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "output/output_values.h"

namespace fenixA320 {

// Text shown on display `id`, given its value text (the "%f" rendering of its value after the
// range guard) and the received values that steer the formats. No state, no side effects.
std::string formatDisplay(uint32_t id, std::string_view text, const OutputValues& values);

}  // namespace fenixA320
