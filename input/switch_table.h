// The multi-position switches as the input side holds them: their contacts, position numbers and
// rest positions, derived from the catalogue's position switches.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "catalogue/position_switches.h"

namespace fenixA320 {

// One switch: consecutive contact ids from `firstContact`, contact i writing positions[i].
struct SwitchRow {
    int32_t key;           // number of the switch variable (its switchVarBindings key)
    int32_t firstContact;  // digital-input id of the first contact
    int32_t contactCount;
    std::array<int8_t, 10> positions;
    bool restsAtOne;  // reports position 1 when every contact is open
};

inline constexpr std::size_t kSwitchCount = kPositionSwitchCount;
inline constexpr int32_t kRudderTrimSwitchKey = variableNumberOf("S_FC_RUDDER_TRIM");
inline constexpr int32_t kFlapSwitchKey = variableNumberOf("S_FC_FLAPS");
inline constexpr int32_t kFlapFirstContact = digitInIdOf("S_FC_FLAPS_0");

// In the order in which the core holds and feeds them.
const std::array<SwitchRow, kSwitchCount>& switchRows();

}  // namespace fenixA320
