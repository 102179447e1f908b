// The multi-position switch table.
#include "input/switch_table.h"

namespace fenixA320 {

namespace {

constexpr std::array<SwitchRow, kSwitchCount> buildRows() {
    std::array<SwitchRow, kSwitchCount> rows{};
    for (std::size_t i = 0; i < kSwitchCount; ++i) {
        const std::size_t slot = kPositionSwitchFeedOrder[i];
        const PositionSwitchRow& s = kPositionSwitches[slot];
        const PositionGroup& g = kPositionGroups[slot];
        SwitchRow& row = rows[i];
        row.key = g.number;
        row.firstContact = g.first;
        row.restsAtOne = s.restsAtOne;
        for (int32_t p = 0; p < g.count; ++p) {
            const int8_t value = s.values[static_cast<std::size_t>(p)];
            if (value == kNoContact) {
                ++row.firstContact;
            } else {
                row.positions[static_cast<std::size_t>(row.contactCount++)] = value;
            }
        }
    }
    return rows;
}

constexpr std::array<SwitchRow, kSwitchCount> kRows = buildRows();

constexpr bool rowsAreWellFormed() {
    for (const SwitchRow& row : kRows) {
        if (row.contactCount < 2 || row.contactCount > 10) return false;
        bool hasZero = false;
        for (int32_t i = 0; i < row.contactCount; ++i) hasZero = hasZero || row.positions[i] == 0;
        if (!hasZero) return false;
    }
    return true;
}
static_assert(rowsAreWellFormed(), "every switch needs two to ten contacts and a position 0");
static_assert(kRows[17].key == kRudderTrimSwitchKey && kRows[16].key == kFlapSwitchKey &&
              kRows[16].firstContact == kFlapFirstContact);

}  // namespace

const std::array<SwitchRow, kSwitchCount>& switchRows() { return kRows; }

}  // namespace fenixA320
