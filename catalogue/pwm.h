// PWM channels: backlight levels.
#pragma once

#include "catalogue/signal_lists.h"

namespace fenixA320 {

// clang-format off
inline constexpr SignalEntry kPwmRows[] = {
    SignalEntry{0, "Fenix NONE", "NO SIGNAL"},
    SignalEntry{1, "FENIX INTEG LT OVHD", "[0~2500]"},
    SignalEntry{2, "FENIX INTEG LT GLARE", "[0~2500]"},
    SignalEntry{3, "FENIX INTEG LT MIP PED", "[0~2500]"},
    SignalEntry{4, "FENIX READING LT OVHD L", "[0~2500]"},
    SignalEntry{5, "FENIX READING LT OVHD R", "[0~2500]"},
    SignalEntry{6, "FENIX READING LT GLARE L", "[0~2500]"},
    SignalEntry{7, "FENIX READING LT GLARE R", "[0~2500]"},
    SignalEntry{8, "FENIX OVHD DOME L", "[0~2500]"},
    SignalEntry{9, "FENIX OVHD DOME R", "[0~2500]"},
    SignalEntry{10, "FENIX FLOOD LT MIP", "[0~2500]"},
    SignalEntry{11, "FENIX FLOOD LT PED", "[0~2500]"},
    SignalEntry{12, "FENIX CONSOLE FLOOR LT L", "[0~2500]"},
    SignalEntry{13, "FENIX CONSOLE FLOOR LT R", "[0~2500]"},
    SignalEntry{14, "FENIX GLARE DISPLAY BRIGHT", "[0~2500]"},
    SignalEntry{15, "FENIX RMP ACP BK ENABLE", "[default 2500] RMP/ACP backlight enable, follows MIP&PED INTEG LT knob in IO TEST"},
};
// clang-format on

static_assert(std::size(kPwmRows) == kPwmCount && idsAreDense(kPwmRows));

// The id of the PWM channel whose variable is `variable`; no build for a name that no entry or
// several entries carry.
consteval int32_t pwmIdOf(std::string_view variable) { return idOf(kPwmRows, variable); }

}  // namespace fenixA320
