// Position switches: contacts to position numbers, rest positions, and the switch table.
#include "input/position_switch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "catalogue/bindings.h"
#include "catalogue/signal_lists.h"
#include "input/switch_table.h"

namespace fenixA320 {
namespace {

using Reports = std::vector<std::pair<int, int>>;

// A switch needs a position 0. A closing contact reports its position when it changes; the opening
// of the contact that set the position leaves it unknown, or reports the rest position of a switch
// that has one.
TEST(PositionSwitch, NeedsAPositionZeroAndReportsChangesOfTheClosedContactAndTheRestPosition) {
    EXPECT_THROW(PositionSwitch(1, {{10, 1}, {11, 2}}), std::invalid_argument);  // no position 0
    PositionSwitch altitude(415, {{477, 0}, {478, -1}, {479, 1}});  // unbound, still tracking
    altitude.OnContact(478, true);
    EXPECT_EQ(altitude.position(), -1);
    Reports reports;
    PositionSwitch intrad(22, {{22, 0}, {23, 1}, {24, 2}});
    PositionSwitch nav1(427, {{493, 1}, {494, 0}, {495, 2}});
    nav1.setRestPosition(1);
    for (PositionSwitch* logic : {&intrad, &nav1})
        logic->bind([&reports](int k, int p) { reports.emplace_back(k, p); });
    constexpr int32_t kUnknown = PositionSwitch::kUnknown;
    const struct {
        PositionSwitch& logic;
        int32_t contact;
        bool closed;
        int32_t position;
    } script[] = {
        // clang-format off
        {intrad, 22, true, 0},   // starts at 0 already: no report
        {intrad, 23, true, 1}, {intrad, 22, false, 1},  // not the contact that set the position
        {intrad, 99, true, 1},   // not a contact of this switch
        {intrad, 24, true, 2}, {intrad, 24, false, kUnknown}, {intrad, 24, true, 2},
        {nav1, 494, true, 0}, {nav1, 495, true, 2}, {nav1, 495, false, 1},
        {nav1, 493, true, 1}, {nav1, 493, false, 1}};  // already at rest: no report
    // clang-format on
    for (const auto& step : script) {
        step.logic.OnContact(step.contact, step.closed);
        EXPECT_EQ(step.logic.position(), step.position) << step.contact << " " << step.closed;
    }
    EXPECT_EQ(reports, (Reports{{22, 1}, {22, 2}, {22, 2}, {427, 2}, {427, 1}}));
}

// The table against the catalogue: every contact carries the name of the variable it moves.
TEST(SwitchTable, EveryContactBelongsToTheVariableOfItsRow) {
    std::set<int32_t> contacts;
    std::set<int32_t> keys;
    int rests = 0;
    for (const SwitchRow& row : switchRows()) {
        const auto binding = std::ranges::find(switchVarBindings(), row.key, &VarBinding::key);
        ASSERT_NE(binding, switchVarBindings().end()) << row.key;
        const std::string variable =
            binding->variable == "A_WR_GAIN" ? "S_WR_GAIN" : std::string(binding->variable);
        for (int32_t id = row.firstContact; id < row.firstContact + row.contactCount; ++id) {
            EXPECT_TRUE(contacts.insert(id).second) << "contact in two switches: " << id;
            const std::string& label = digitInSigList().at(id).second;
            const bool named = label.starts_with(variable) &&
                               (label[variable.size()] == '.' || label[variable.size()] == '_');
            EXPECT_TRUE(named) << id << " " << label;
        }
        keys.insert(row.key);
        rests += row.restsAtOne ? 1 : 0;
    }
    EXPECT_EQ(keys.size(), switchVarBindings().size());
    EXPECT_EQ(rests, 19);
}

}  // namespace
}  // namespace fenixA320
