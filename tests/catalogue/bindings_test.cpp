// The binding tables' numbers: the run-time numbering agrees with the tables. The rows, with
// every data-definition id, are pinned by golden_test.cpp, and the fixed definitions of the
// outputs, title and clock by the registration test in tests/core/connection_test.cpp.
#include "catalogue/bindings.h"

#include <gtest/gtest.h>

#include <string>

#include "catalogue/signal_lists.h"

namespace fenixA320 {
namespace {

TEST(Bindings, VariableNumbersOfTheirNames) {
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
}

}  // namespace
}  // namespace fenixA320
