// Numbering, entry 0 and label conventions of the encoder, analog and output lists.
#include "catalogue/signal_lists.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace fenixA320 {
namespace {

struct ListCase {
    const char* name;
    const SigList& (*list)();
    std::span<const SignalEntry> (*entries)();
    std::size_t count;
    const char* entry0Variable;
    const char* entry0Label;
};

const std::vector<ListCase>& listCases() {
    static const std::vector<ListCase> cases{
        {"encoder", &encoderSigList, &encoderEntries, kEncoderCount, "Fenix NONE", "NO SIGNAL"},
        {"analog", &analogSigList, &analogEntries, kAnalogCount, "Fenix NONE", "NO SIGNAL"},
        {"digitOut", &digitOutSigList, &digitOutEntries, kDigitOutCount, "NULL", ""},
        {"display", &displaySigList, &displayEntries, kDisplayCount, "Fenix NONE", "NO SIGNAL"},
        {"servo", &servoSigList, &servoEntries, kServoCount, "NULL", ""},
        {"pwm", &pwmSigList, &pwmEntries, kPwmCount, "Fenix NONE", "NO SIGNAL"},
    };
    return cases;
}

bool startsWith(const std::string& s, const std::string& prefix) {
    return s.compare(0, prefix.size(), prefix) == 0;
}

bool endsWith(const std::string& s, const std::string& suffix) {
    return s.size() >= suffix.size() &&
           s.compare(s.size() - suffix.size(), suffix.size(), suffix) == 0;
}

// The catalogue's name order: underscore before digits before letters.
int collationRank(char c) {
    if (c == '_') return 0;
    if (c >= '0' && c <= '9') return 1;
    return 2;
}

bool catalogueLess(const std::string& a, const std::string& b) {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        const int rx = collationRank(x);
        const int ry = collationRank(y);
        return rx != ry ? rx < ry : x < y;
    });
}

// Expects names (given in id order) to ascend in catalogue order.
void expectCatalogueOrder(const std::vector<std::string>& names, const char* what) {
    for (std::size_t i = 1; i < names.size(); ++i) {
        EXPECT_TRUE(catalogueLess(names[i - 1], names[i]))
            << what << ": " << names[i - 1] << " before " << names[i];
    }
}

// "VARIABLE.description" -> VARIABLE, or empty when the label carries no variable.
std::string labelVariable(const std::string& label) {
    const auto dot = label.find('.');
    return dot == std::string::npos ? std::string() : label.substr(0, dot);
}

TEST(SignalLists, EachListHoldsItsCountWithoutDuplicateIds) {
    for (const ListCase& c : listCases()) {
        const SigList& list = c.list();
        EXPECT_EQ(list.size(), c.count) << c.name;
        // A repeated id would silently collapse into one map entry.
        EXPECT_EQ(c.entries().size(), list.size()) << c.name;
    }
}

TEST(SignalLists, IdsAreDenseExceptTheMissingDigitalOutput495) {
    for (const ListCase& c : listCases()) {
        int32_t expected = 0;
        for (const auto& [id, entry] : c.list()) {
            if (c.list == &digitOutSigList && expected == 495) ++expected;
            EXPECT_EQ(id, expected) << c.name;
            ++expected;
        }
    }
    const SigList& out = digitOutSigList();
    EXPECT_EQ(out.count(495), 0u);
    EXPECT_EQ(out.rbegin()->first, 501);
}

TEST(SignalLists, EntryZeroIsTheUnboundChannel) {
    for (const ListCase& c : listCases()) {
        const auto& entry0 = c.list().at(0);
        EXPECT_EQ(entry0.first, c.entry0Variable) << c.name;
        EXPECT_EQ(entry0.second, c.entry0Label) << c.name;
    }
}

TEST(SignalLists, HostMapThatAlreadyHoldsEntriesReceivesExactlyTheList) {
    for (const ListCase& c : listCases()) {
        SigList host{{0, {"stale", "stale"}}, {3, {"x", "y"}}, {9999, {"left", "over"}}};
        host = c.list();
        EXPECT_EQ(host, c.list()) << c.name;
        EXPECT_EQ(host.count(9999), 0u) << c.name;
    }
}

TEST(SignalLists, SortedBodiesFollowTheCatalogueNameOrder) {
    std::vector<std::string> names;
    for (int32_t id = 1; id <= 43; ++id) names.push_back(encoderSigList().at(id).first);
    expectCatalogueOrder(names, "encoder");

    names.clear();
    for (int32_t id = 1; id <= 123; ++id) {
        const std::string var = labelVariable(analogSigList().at(id).second);
        if (!var.empty()) names.push_back(var);
    }
    expectCatalogueOrder(names, "analog");

    names.clear();
    for (int32_t id = 1; id <= 469; ++id) names.push_back(digitOutSigList().at(id).first);
    expectCatalogueOrder(names, "digitOut");

    // The knob read-backs (A_ names) sit among the N_ outputs of their lights.
    names.clear();
    for (int32_t id = 1; id <= 140; ++id) {
        const std::string& var = displaySigList().at(id).first;
        if (!startsWith(var, "A_")) names.push_back(var);
    }
    expectCatalogueOrder(names, "display");
}

TEST(SignalLists, VariableNamesAreUniqueApartFromPlaceholderAndSharedPowerFlag) {
    for (const ListCase& c : listCases()) {
        std::map<std::string, int> uses;
        for (const auto& [id, entry] : c.list()) {
            if (id != 0 && entry.first != kPlaceholderVariable) ++uses[entry.first];
        }
        for (const auto& [var, n] : uses) {
            // B_FCU_POWER is the real FCU power flag (485) and fills the slot of 496..501.
            const int expected = (c.list == &digitOutSigList && var == "B_FCU_POWER") ? 7 : 1;
            EXPECT_EQ(n, expected) << c.name << ": " << var;
        }
    }
}

TEST(EncoderList, LabelsArePlainDescriptionsOfEVariables) {
    for (const auto& [id, entry] : encoderSigList()) {
        if (id == 0) continue;
        EXPECT_TRUE(startsWith(entry.first, "E_")) << id;
        EXPECT_EQ(entry.second.find('.'), std::string::npos) << id;
        EXPECT_EQ(entry.second.find("E_"), std::string::npos) << id;
    }
}

TEST(EncoderList, OddLabelsKeepTheirExactCharacters) {
    const SigList& list = encoderSigList();
    EXPECT_EQ(list.at(18).second, "Radio ADF1 inner shafta ctive");
    EXPECT_EQ(list.at(21).second, "RadioADF2innershaft");
    EXPECT_EQ(list.at(39).second, "Radio XPDR inner  shaft left");
    EXPECT_EQ(list.at(40).second, "Radio XPDR inner  shaft right");
    EXPECT_EQ(list.at(41).second, "Radio XPDR outer  shaft left");
    EXPECT_EQ(list.at(42).second, "Radio XPDR outer  shaft right");
    EXPECT_EQ(list.at(43).first, "E_WR2_CAP_ELEV");
}

TEST(AnalogList, LabelsNameAnAVariableExceptThreeWithoutOne) {
    std::set<int32_t> withoutVariable;
    int differing = 0;
    for (const auto& [id, entry] : analogSigList()) {
        if (id == 0) continue;
        const std::string labelVar = labelVariable(entry.second);
        if (labelVar.empty()) {
            withoutVariable.insert(id);
            EXPECT_EQ(entry.first, kPlaceholderVariable) << id;
            continue;
        }
        EXPECT_TRUE(startsWith(labelVar, "A_")) << id;
        EXPECT_GT(entry.second.size(), labelVar.size() + 1) << id << ": empty description";
        if (entry.first != labelVar) {
            ++differing;
            // Driven through the placeholder or through the aircraft's N_ input variable.
            EXPECT_TRUE(entry.first == kPlaceholderVariable || startsWith(entry.first, "N_"))
                << id << ": " << entry.first;
        }
    }
    EXPECT_EQ(withoutVariable, (std::set<int32_t>{81, 85, 124}));
    EXPECT_EQ(differing, 28);  // 31 entries differ; 81, 85 and 124 are counted above.
}

TEST(AnalogList, RudderAndFlapEntriesCarryTheirDrivenVariables) {
    const SigList& list = analogSigList();
    EXPECT_EQ(list.at(79), std::make_pair(std::string("N_FC_RUDDER"),
                                          std::string("A_FC_CAPT_RUDDER.Rudder input")));
    EXPECT_EQ(list.at(85), std::make_pair(std::string(kPlaceholderVariable),
                                          std::string("no use,bind N_FC_RUDDER")));
    EXPECT_EQ(list.at(124).second, "FLAP");
    EXPECT_EQ(list.at(60).second, "A_ASP4_VOR_2_VOLUME.ASP OBS 2 NAV 2 volume");
}

TEST(DigitalOutputList, IndicatorLabelsAreVariableFullStopDescription) {
    for (int32_t id = 1; id <= 469; ++id) {
        const auto& [var, label] = digitOutSigList().at(id);
        EXPECT_TRUE(startsWith(var, "I_")) << id;
        EXPECT_EQ(labelVariable(label), var) << id;
        EXPECT_GT(label.size(), var.size() + 1) << id << ": empty description";
    }
}

TEST(DigitalOutputList, LowerAndUpperLedLabelsMatchTheirLampSuffix) {
    int leds = 0;
    for (int32_t id = 1; id <= 469; ++id) {
        const auto& [var, label] = digitOutSigList().at(id);
        const bool lower = endsWith(label, " lower led");
        const bool upper = endsWith(label, " upper led");
        if (lower || upper) ++leds;
        if (lower) {
            EXPECT_TRUE(endsWith(var, "_L")) << id;
        }
        if (upper) {
            EXPECT_TRUE(endsWith(var, "_U")) << id;
        }
    }
    EXPECT_EQ(leds, 170);
}

TEST(DigitalOutputList, AppendedEntriesSitAtTheirIdsWithPlainLabels) {
    const SigList& list = digitOutSigList();
    for (int32_t id = 470; id <= 501; ++id) {
        if (id == 495) continue;
        const auto& [var, label] = list.at(id);
        EXPECT_EQ(label.find(var + "."), std::string::npos) << id;
        if (id >= 471 && id <= 493) {
            EXPECT_TRUE(startsWith(var, "B_")) << id;
        }
    }
    EXPECT_EQ(list.at(470), std::make_pair(std::string(kPlaceholderVariable), std::string()));
    EXPECT_EQ(list.at(471).first, "B_FC_ELEVATOR_TRIM_MOTOR_POWER");
    EXPECT_EQ(list.at(474).second, "B_FC_RUDDER_TRIM_RESETTING");
    EXPECT_EQ(list.at(485), std::make_pair(std::string("B_FCU_POWER"), std::string("FCU Power")));
    EXPECT_EQ(list.at(493).first, "B_PED_RMP2_DATA_DISPLAYED_STDBY");
    EXPECT_EQ(list.at(494),
              std::make_pair(std::string("S_OH_IN_LT_ANN_LT"), std::string("ANN LT")));

    const std::vector<std::string> synthesized{
        "synthesized: FCU powered -> 1 (overridden in updateDigitOut)",
        "synthesized: const 0 (overridden in updateDigitOut; A320 has no QFE mode)",
        "synthesized: annTest -> 1 (overridden in updateDigitOut)",
    };
    for (int32_t id = 496; id <= 501; ++id) {
        EXPECT_EQ(list.at(id).first, "B_FCU_POWER") << id;
        EXPECT_EQ(list.at(id).second, synthesized[(id - 496) / 2]) << id;
    }
}

TEST(DisplayList, LabelsAreVariableFullStopDescription) {
    const std::set<int32_t> knobs{99, 101, 104, 105, 122, 123};
    for (const auto& [id, entry] : displaySigList()) {
        if (id == 0) continue;
        const auto& [var, label] = entry;
        EXPECT_EQ(labelVariable(label), var) << id;
        EXPECT_GT(label.size(), var.size() + 1) << id << ": empty description";
        const char* prefix = knobs.count(id) ? "A_" : (id >= 141 ? "S_" : "N_");
        EXPECT_TRUE(startsWith(var, prefix)) << id << ": " << var;
    }
}

TEST(DisplayList, EntriesReadByTheOutputSideSitAtTheirIds) {
    const SigList& list = displaySigList();
    const std::map<int32_t, std::string> addressed{
        {16, "N_ELEC_VOLT_BAT_1"},
        {31, "N_FC_ELEVATOR_TRIM"},
        {36, "N_FC_RUDDER_TRIM_DECIMAL"},
        {46, "N_FCU_ALTITUDE"},
        {50, "N_FCU_EFIS2_BARO_INCH"},
        {52, "N_FCU_LIGHTING"},
        {53, "N_FCU_LIGHTING_TEXT"},
        {55, "N_FCU_VS"},
        {79, "N_FREQ_STANDBY_XPDR_SELECTED"},
        {82, "N_FREQ_XPDR_SELECTED"},
        {86, "N_HYD_PRESSURE_BRAKE_ACCU"},
        {88, "N_HYD_PRESSURE_BRAKE_RIGHT"},
        {94, "N_MIP_CLOCK_MODE"},
        {95, "N_MIP_CLOCK_UTC"},
        {121, "N_OH_LIGHTING_OVD"},
        {126, "N_PED_LIGHTING_PEDESTAL"},
        {130, "N_PED_RMP2_STDBY"},
        {133, "N_PED_XPDR_CHAR_DISPLAYED"},
        {142, "S_MIP_LIGHT_CONSOLEFLOOR_FO"},
    };
    for (const auto& [id, var] : addressed) EXPECT_EQ(list.at(id).first, var) << id;
    EXPECT_EQ(list.at(79).second, "N_FREQ_STANDBY_XPDR_SELECTED.Radio standby freq XPDR Panel");
    EXPECT_EQ(list.at(141).second,
              "S_MIP_LIGHT_CONSOLEFLOOR_CAPT.Console/floor capt [0:Off, 1:Dim, 2:Bright]");
}

TEST(ServoAndPwmLists, ChannelNamesAndLabels) {
    for (const auto& [id, entry] : servoSigList()) {
        if (id == 0) continue;
        EXPECT_TRUE(startsWith(entry.first, "FENIX_")) << id;
        EXPECT_EQ(entry.second, entry.first) << id;
    }
    EXPECT_EQ(servoSigList().at(4).first, "FENIX_TQ_PITCH_TRIM_WHEEL");

    for (const auto& [id, entry] : pwmSigList()) {
        if (id == 0) continue;
        EXPECT_TRUE(startsWith(entry.first, "FENIX ")) << id;
        if (id != 15) {
            EXPECT_EQ(entry.second, "[0~2500]") << id;
        }
    }
    EXPECT_EQ(pwmSigList().at(12).first, "FENIX CONSOLE FLOOR LT L");
    EXPECT_EQ(pwmSigList().at(15),
              std::make_pair(std::string("FENIX RMP ACP BK ENABLE"),
                             std::string("[default 2500] RMP/ACP backlight enable, follows MIP&PED "
                                         "INTEG LT knob in IO TEST")));
}

}  // namespace
}  // namespace fenixA320
