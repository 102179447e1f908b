// The binding tables' numbers: the run-time numbering agrees with the tables, and no
// data-definition id is declared twice. The rows themselves are pinned by golden_test.cpp.
#include "catalogue/bindings.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "catalogue/signal_lists.h"

namespace fenixA320 {
namespace {

TEST(Bindings, VariableNumbersOfTheirNamesAndNoDataDefinitionIdTwice) {
    for (const VarBinding& row : digitInBindings()) {
        const std::string& name = digitInSigList().at(row.key).first;
        // External power control writes another variable under its own one's number.
        EXPECT_EQ(variableNumber(name), row.defineId) << name;
    }
    for (const VarBinding& row : switchVarBindings()) {
        const std::string var =
            row.variable == "A_WR_GAIN" ? "S_WR_GAIN" : std::string(row.variable);
        EXPECT_EQ(variableNumber(var), row.defineId) << var;
    }
    EXPECT_EQ(variableNumber("S_DCDU1_LSK1L"), 343);  // a key without a table has its number too
    // Positions, the gain switch's analog variable, the forced variable, entry 0 and the padded
    // names without their blanks are no variables of the list.
    for (const char* name : {"S_ASP_INTRAD_INT", "S_OH_PNEUMATIC_XBLEED_SELECTOR_Shut",
                             "S_XPDR_MODE_TA   ", "S_WR_GCS_Off", "Fenix NONE", "A_WR_GAIN",
                             "S_IOS_ELEC_EXTERN_FORCE", "", "S_XPDR_MODE_TA"}) {
        EXPECT_EQ(variableNumber(name), 0) << name;
    }
    // No data-definition id twice, and the per-variable numbers below the fixed ranges.
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

}  // namespace
}  // namespace fenixA320
