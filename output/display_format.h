// Display texts: blanking, light-test patterns, FCU, EFIS baro, clock, rudder trim, RMP and
// transponder formats.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "output/output_values.h"

namespace fenixA320 {

// Room for the value text of any display value: at most 18 characters after the range guard.
using ValueTextBuffer = std::array<char, 32>;

// The value text of a received display value: the range guard, then fixed notation with six
// decimals, character for character what "%f" gives, at a fraction of printf's cost.
std::string_view displayValueText(double value, ValueTextBuffer& buffer);

// `value` as "%0*d" prints it with `width` (1 to 16): the sign, then zeros up to the width.
std::string zeroPadded(int value, int width);

// `value` as "%W.Pf" (pad ' ') or "%0W.Pf" (pad '0') prints it, with `prefix` in front; empty
// when the number would not fit in 48 characters (never within the display range).
std::string fixedText(double value, int precision, int width, char pad,
                      std::string_view prefix = {});

// Text shown on display `id`, given its value text (the "%f" rendering of its value after the
// range guard) and the received values that steer the formats. No state, no side effects.
std::string formatDisplay(uint32_t id, std::string_view text, const OutputValues& values);

}  // namespace fenixA320
