// The binding and key-group tables, checked against the lists and the typed switch table.
#include "catalogue/bindings.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "catalogue/signal_lists.h"
#include "tests/catalogue/position_groups.h"

namespace fenixA320 {
namespace {

using catalogue_test::startsWith;
using catalogue_test::SwitchRow;
using catalogue_test::switchRows;

const std::string& nameOf(int32_t id) { return digitInSigList().at(id).first; }

// The switch variable of a digital input of 1..962 as its label names it.
std::string labelSwitchVariable(int32_t id) {
    if (id >= 804 && id <= 806) return "S_OH_PNEUMATIC_XBLEED_SELECTOR";  // position names
    const std::string& label = digitInSigList().at(id).second;
    return label.substr(0, label.find('.'));
}

TEST(VariableNumbers, NumberEachSwitchVariableFrom1To762AtItsFirstAppearance) {
    // Walking the list, the next number appears exactly where a new switch variable does.
    int32_t highest = 0;
    for (int32_t id = 1; id <= 962; ++id) {
        const std::string var = labelSwitchVariable(id);
        const int32_t n = variableNumber(var);
        if (n == highest + 1) {
            highest = n;
        } else {
            EXPECT_EQ(n, highest) << id << ": " << var;
        }
    }
    EXPECT_EQ(highest, 762);

    for (const char* name : {"S_ASP_INTRAD_INT", "S_OH_PNEUMATIC_XBLEED_SELECTOR_Shut",
                             "S_XPDR_MODE_TA   ", "S_WR_GCS_Off", "Fenix NONE", "A_WR_GAIN",
                             "S_IOS_ELEC_EXTERN_FORCE", "", "S_XPDR_MODE_TA"}) {
        EXPECT_EQ(variableNumber(name), 0) << name;
    }
}

TEST(SwitchVarBindings, MatchTheTypedTableAndTheNumbersOfTheSwitchVariables) {
    const std::vector<VarBinding>& rows = switchVarBindings();
    ASSERT_EQ(rows.size(), switchRows().size());
    for (std::size_t slot = 0; slot < rows.size(); ++slot) {
        const SwitchRow& e = switchRows()[slot];
        EXPECT_EQ(rows[slot].slot, static_cast<int32_t>(slot));
        EXPECT_EQ(rows[slot].defineId, e.defineId) << e.variable;
        EXPECT_EQ(rows[slot].key, e.defineId) << e.variable;
        EXPECT_EQ(rows[slot].variable, e.variable) << slot;
        // The gain switch writes A_WR_GAIN under the number of its own variable.
        const std::string var = labelSwitchVariable(e.first);
        EXPECT_EQ(var, e.first == 917 ? "S_WR_GAIN" : e.variable);
        EXPECT_EQ(variableNumber(var), e.defineId) << var;
    }
}

TEST(DigitInBindings, RowsWriteTheirSignalsVariableUnderItsNumberInIdOrder) {
    const std::vector<VarBinding>& rows = digitInBindings();
    ASSERT_EQ(rows.size(), 240u);
    const int32_t rmpPower[] = {842, 856, 870};  // appended after the ascending rows
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const VarBinding& row = rows[i];
        EXPECT_EQ(row.slot, static_cast<int32_t>(i));
        if (i >= 237) {
            EXPECT_EQ(row.key, rmpPower[i - 237]);
        } else if (i > 0) {
            EXPECT_LT(rows[i - 1].key, row.key) << i;
        }
        const std::string& name = nameOf(row.key);
        EXPECT_EQ(row.defineId, variableNumber(name)) << row.key;
        // External power control writes the forcing variable.
        EXPECT_EQ(std::string(row.variable), row.key == 562 ? "S_IOS_ELEC_EXTERN_FORCE" : name)
            << row.key;
    }
}

// The groups as the panels define them, selected by name from the list.
TEST(KeyGroups, HoldThePanelsKeysByNameWithTheirVariablesInBlockOrder) {
    std::vector<int32_t> cdu, asp, rmp, atc, fcu;
    const std::set<std::string> fcuButtons{
        "S_FCU_AP1",        "S_FCU_AP2",        "S_FCU_APPR",      "S_FCU_ATHR",
        "S_FCU_EFIS1_ARPT", "S_FCU_EFIS1_CSTR", "S_FCU_EFIS1_FD",  "S_FCU_EFIS1_LS",
        "S_FCU_EFIS1_NDB",  "S_FCU_EFIS1_VORD", "S_FCU_EFIS1_WPT", "S_FCU_EFIS2_ARPT",
        "S_FCU_EFIS2_CSTR", "S_FCU_EFIS2_FD",   "S_FCU_EFIS2_LS",  "S_FCU_EFIS2_NDB",
        "S_FCU_EFIS2_VORD", "S_FCU_EFIS2_WPT",  "S_FCU_EXPED",     "S_FCU_HDGVS_TRKFPA",
        "S_FCU_LOC",        "S_FCU_METRIC_ALT", "S_FCU_SPD_MACH"};
    for (const auto& [id, entry] : digitInSigList()) {
        const std::string& n = entry.first;
        if ((startsWith(n, "S_CDU1_") || startsWith(n, "S_CDU2_")) && n != "S_CDU2_KEY_CLB") {
            cdu.push_back(id);
        }
        const bool audioPanel = startsWith(n, "S_ASP_") || startsWith(n, "S_ASP2_") ||
                                startsWith(n, "S_ASP3_") || startsWith(n, "S_ASP4_");
        const std::string& label = entry.second;
        const bool audioSwitchPosition = label.find("INTRAD.") != std::string::npos ||
                                         label.find("SEND_CHANNEL.") != std::string::npos;
        if (n == "S_ADF1_TFC" || n == "S_ADF2_TFC" || (audioPanel && !audioSwitchPosition)) {
            asp.push_back(id);
        }
        if (startsWith(n, "S_PED_RMP") && n.find("_POWER") == std::string::npos) {
            rmp.push_back(id);
        }
        if (startsWith(n, "S_PED_ATC_") || n == "S_XPDR_IDENT") atc.push_back(id);
        if (fcuButtons.count(n) != 0) fcu.push_back(id);
    }
    EXPECT_EQ(fcu.size(), fcuButtons.size());
    const std::pair<const std::vector<GroupKey>&, const std::vector<int32_t>&> groups[] = {
        {cduKeyGroup(), cdu}, {aspKeyGroup(), asp}, {rmpKeyGroup(), rmp},
        {atcKeyGroup(), atc}, {fcuKeyGroup(), fcu},
    };
    for (const auto& [rows, expected] : groups) {
        ASSERT_EQ(rows.size(), expected.size());
        for (std::size_t i = 0; i < rows.size(); ++i) {
            EXPECT_EQ(rows[i].signalId, expected[i]) << i;
            EXPECT_EQ(rows[i].index, static_cast<int32_t>(i));
            EXPECT_EQ(rows[i].variable, nameOf(rows[i].signalId)) << rows[i].signalId;
        }
    }
}

TEST(Tables, EveryDigitalInputIsBoundOnceOrListedAsUnbound) {
    std::map<int32_t, int> uses;
    for (const VarBinding& row : digitInBindings()) ++uses[row.key];
    for (const SwitchRow& e : switchRows()) {
        for (int32_t id = e.first; id <= e.last; ++id) ++uses[id];
    }
    for (const auto* group :
         {&cduKeyGroup(), &fcuKeyGroup(), &aspKeyGroup(), &rmpKeyGroup(), &atcKeyGroup()}) {
        for (const GroupKey& row : *group) ++uses[row.signalId];
    }
    // The digital inputs that no table holds.
    std::set<int32_t> unbound{324, 382, 383, 963, 964};
    for (const auto& [first, last] :
         {std::pair{387, 397}, std::pair{401, 409}, std::pair{628, 639}, std::pair{897, 916}}) {
        for (int32_t id = first; id <= last; ++id) unbound.insert(id);
    }
    for (int32_t id = 1; id <= 964; ++id) {
        // 1 and 2, the ADF transfer keys, are both a one-variable binding and an ASP key.
        const int expected = unbound.count(id) != 0 ? 0 : (id == 1 || id == 2 ? 2 : 1);
        EXPECT_EQ(uses[id], expected) << id;
    }
}

TEST(Tables, NoDataDefinitionIdTwiceAndPerVariableNumbersBelowTheFixedRanges) {
    std::map<int32_t, int> uses;
    for (const auto* table : {&digitInBindings(), &switchVarBindings()}) {
        for (const VarBinding& row : *table) {
            ++uses[row.defineId];
            EXPECT_GE(row.defineId, 1);
            EXPECT_LE(row.defineId, 762);
        }
    }
    for (const VarBinding& row : encoderBindings()) ++uses[row.defineId];
    for (const VarBinding& row : analogBindings()) ++uses[row.defineId];
    for (uint32_t def : {DEF_CDU_KEYS, DEF_FCU_KEYS, DEF_ASP_KEYS, DEF_RMP_KEYS, DEF_ATC_KEYS,
                         DEF_DIGIT_OUT, DEF_DISPLAY, DEF_TITLE, DEF_CLOCK}) {
        ++uses[static_cast<int32_t>(def)];
    }
    for (const auto& [def, n] : uses) EXPECT_EQ(n, 1) << "definition " << def;
    EXPECT_EQ(uses.size(), 240u + 73u + 44u + 125u + 9u);
}

TEST(ListBindings, OneRowPerEncoderAndAnalogInputWithThePlaceholderInRow0) {
    struct Case {
        const std::vector<VarBinding>& rows;
        const SigList& list;
        int32_t base;
    };
    for (const Case& c : {Case{encoderBindings(), encoderSigList(), 1000},
                          Case{analogBindings(), analogSigList(), 2000}}) {
        ASSERT_EQ(c.rows.size(), c.list.size());
        for (std::size_t i = 0; i < c.rows.size(); ++i) {
            const auto id = static_cast<int32_t>(i);
            EXPECT_EQ(c.rows[i].defineId, c.base + id);
            EXPECT_EQ(c.rows[i].key, id);
            EXPECT_EQ(c.rows[i].slot, id);
            EXPECT_EQ(std::string(c.rows[i].variable),
                      id == 0 ? std::string(kPlaceholderVariable) : c.list.at(id).first)
                << c.base + id;
        }
    }
}

TEST(Tables, FirstUseFromManyThreadsSeesOneConsistentTable) {
    std::vector<std::thread> threads;
    std::vector<std::size_t> sizes(8);
    for (std::size_t t = 0; t < sizes.size(); ++t) {
        threads.emplace_back([&sizes, t] {
            sizes[t] = digitInBindings().size() + switchVarBindings().size() +
                       encoderBindings().size() + analogBindings().size() + cduKeyGroup().size() +
                       fcuKeyGroup().size() + aspKeyGroup().size() + rmpKeyGroup().size() +
                       atcKeyGroup().size() + static_cast<std::size_t>(variableNumber("S_WR_GCS"));
        });
    }
    for (std::thread& t : threads) t.join();
    for (std::size_t size : sizes) {
        EXPECT_EQ(size, 240u + 73u + 44u + 125u + 146u + 23u + 178u + 39u + 10u + 762u);
    }
}

}  // namespace
}  // namespace fenixA320
