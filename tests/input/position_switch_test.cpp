// Position switches: contacts to position numbers, rest positions, and the switch table.
#include "input/position_switch.h"

#include <gtest/gtest.h>

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

// A switch whose reports land in `reports`.
PositionSwitch recording(int32_t key, const std::map<int32_t, int32_t>& positions,
                         Reports& reports) {
    PositionSwitch logic(key, positions);
    logic.bind([&reports](int k, int p) { reports.emplace_back(k, p); });
    return logic;
}

TEST(PositionSwitch, NeedsAPositionZeroAndTracksEvenWhenUnbound) {
    EXPECT_THROW(PositionSwitch(1, {{10, 1}, {11, 2}}), std::invalid_argument);
    EXPECT_THROW(PositionSwitch(1, {}), std::invalid_argument);
    PositionSwitch altitude(415, {{477, 0}, {478, -1}, {479, 1}});
    altitude.OnContact(478, true);
    EXPECT_EQ(altitude.position(), -1);
}

TEST(PositionSwitch, ReportsChangesOfTheClosedContactOnly) {
    Reports reports;
    PositionSwitch intrad = recording(22, {{22, 0}, {23, 1}, {24, 2}}, reports);
    EXPECT_EQ(intrad.position(), 0);
    intrad.OnContact(22, true);  // starts at 0 already: no report
    intrad.OnContact(23, true);
    intrad.OnContact(22, false);  // not the contact that set the position
    intrad.OnContact(99, true);   // not a contact of this switch
    EXPECT_EQ(intrad.position(), 1);
    intrad.OnContact(24, true);
    intrad.OnContact(24, false);  // no rest position: unknown until the next contact
    EXPECT_EQ(intrad.position(), PositionSwitch::kUnknown);
    intrad.OnContact(24, true);  // known again: reported again
    EXPECT_EQ(reports, (Reports{{22, 1}, {22, 2}, {22, 2}}));
}

TEST(PositionSwitch, RestPositionIsReportedWhenTheLastContactOpens) {
    Reports reports;
    PositionSwitch nav1 = recording(427, {{493, 1}, {494, 0}, {495, 2}}, reports);
    nav1.setRestPosition(1);
    nav1.OnContact(494, true);  // the switch starts at 0 already: no report
    nav1.OnContact(495, true);
    nav1.OnContact(495, false);
    nav1.OnContact(493, true);  // already at rest
    nav1.OnContact(493, false);
    EXPECT_EQ(reports, (Reports{{427, 2}, {427, 1}}));
}

// The table against the catalogue: every contact carries the name of the variable it moves.
TEST(SwitchTable, EveryContactBelongsToTheVariableOfItsRow) {
    std::set<int32_t> contacts;
    std::set<int32_t> keys;
    int rests = 0;
    for (const SwitchRow& row : switchRows()) {
        const VarBinding* binding = nullptr;
        for (const VarBinding& candidate : switchVarBindings()) {
            if (candidate.key == row.key) binding = &candidate;
        }
        ASSERT_NE(binding, nullptr) << row.key;
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
