// The multi-position switch table.
#include "input/switch_table.h"

#include <algorithm>
#include <string_view>

namespace fenixA320 {

namespace {

// The core holds the switches in the catalogue's order, except that both ND mode selectors come
// before both ND zoom selectors: the order in which a replay writes them.
constexpr std::string_view kFedLater = "S_FCU_EFIS1_ND_ZOOM";
constexpr std::string_view kFedEarlier = "S_FCU_EFIS2_ND_MODE";

constexpr std::array<SwitchRow, kSwitchCount> buildRows() {
    std::array<SwitchRow, kSwitchCount> rows{};
    for (std::size_t i = 0; i < kSwitchCount; ++i) {
        const PositionSwitchRow& s = kPositionSwitches[i];
        const PositionGroup& g = kPositionGroups[i];
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
    const auto at = [&rows](std::string_view variable) {
        for (std::size_t i = 0; i < kSwitchCount; ++i) {
            if (kPositionSwitches[i].variable == variable) return rows.begin() + i;
        }
        return rows.end();
    };
    std::iter_swap(at(kFedLater), at(kFedEarlier));
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
