// The seven signal lists: numbering, shared names, name order, label forms and the entries the
// output side reads by id. The exact text of every entry is pinned by golden_test.cpp.
#include "catalogue/signal_lists.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "output/output_values.h"
#include "tests/catalogue/position_groups.h"

namespace fenixA320 {
namespace {

using catalogue_test::groupSizeOf;
using catalogue_test::startsWith;
using catalogue_test::switchRows;

struct ListCase {
    const char* name;
    const SigList& (*list)();
    std::span<const SignalEntry> (*entries)();
    std::size_t count;
    const char* entry0Variable;
    const char* entry0Label;
};

const ListCase kLists[] = {
    {"digitIn", &digitInSigList, &digitInEntries, kDigitInCount, "Fenix NONE", "NO SIGNAL"},
    {"encoder", &encoderSigList, &encoderEntries, kEncoderCount, "Fenix NONE", "NO SIGNAL"},
    {"analog", &analogSigList, &analogEntries, kAnalogCount, "Fenix NONE", "NO SIGNAL"},
    {"digitOut", &digitOutSigList, &digitOutEntries, kDigitOutCount, "NULL", ""},
    {"display", &displaySigList, &displayEntries, kDisplayCount, "Fenix NONE", "NO SIGNAL"},
    {"servo", &servoSigList, &servoEntries, kServoCount, "NULL", ""},
    {"pwm", &pwmSigList, &pwmEntries, kPwmCount, "Fenix NONE", "NO SIGNAL"},
};

const std::string& nameOf(int32_t id) { return digitInSigList().at(id).first; }
const std::string& labelOf(int32_t id) { return digitInSigList().at(id).second; }

bool endsWith(const std::string& s, const std::string& suffix) {
    return s.size() >= suffix.size() &&
           s.compare(s.size() - suffix.size(), suffix.size(), suffix) == 0;
}

// The catalogue's name order: character by character, underscore below digits below letters; a
// name sorts before every longer name it begins.
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

// The XBLEED positions 804..806 carry their position name in front of the label.
bool isXbleed(int32_t id) { return id >= 804 && id <= 806; }

// Switch variable of a digital input of the sorted body or of 960..962, read from its label.
std::string switchVariableOf(int32_t id) {
    return isXbleed(id) ? "S_OH_PNEUMATIC_XBLEED_SELECTOR" : labelVariable(labelOf(id));
}

TEST(SignalLists, IdsRunDenselyFromTheUnboundEntryZero) {
    for (const ListCase& c : kLists) {
        const SigList& list = c.list();
        EXPECT_EQ(list.size(), c.count) << c.name;
        // A repeated id would silently collapse into one map entry.
        EXPECT_EQ(c.entries().size(), list.size()) << c.name;
        int32_t expected = 0;
        for (const auto& [id, entry] : list) {
            if (c.list == &digitOutSigList && expected == 495) ++expected;  // 495 does not exist
            EXPECT_EQ(id, expected++) << c.name;
        }
        EXPECT_EQ(list.at(0),
                  std::make_pair(std::string(c.entry0Variable), std::string(c.entry0Label)))
            << c.name;
    }
    // The binding tables index the digital-input rows by id.
    for (std::size_t i = 0; i < digitInEntries().size(); ++i) {
        EXPECT_EQ(digitInEntries()[i].id, static_cast<int32_t>(i));
    }
}

TEST(SignalLists, OnlyTheseVariableNamesAreSharedByEntries) {
    struct Shared {
        const SigList& (*list)();
        std::string name;
        std::set<int32_t> ids;
    };
    const std::vector<Shared> shared{
        // The real DCDU key and the two synthesized contacts.
        {&digitInSigList, std::string(kPlaceholderVariable), {387, 963, 964}},
        {&digitInSigList, "S_WR2_FO_DISPLAY", {941, 942, 943, 944, 945}},
        // The real FCU power flag (485) fills the slots the output side synthesizes.
        {&digitOutSigList, "B_FCU_POWER", {485, 496, 497, 498, 499, 500, 501}},
        // Analog inputs driven through the placeholder, or with no variable at all.
        {&analogSigList,
         std::string(kPlaceholderVariable),
         {61, 62, 81, 85, 87, 91, 92, 93, 94, 95, 96, 99, 100, 101, 113, 118, 119, 120, 123, 124}},
    };
    for (const ListCase& c : kLists) {
        std::map<std::string, std::set<int32_t>> idsOf;
        for (const auto& [id, entry] : c.list()) {
            if (id != 0) idsOf[entry.first].insert(id);
        }
        for (const Shared& s : shared) {
            if (s.list != c.list) continue;
            EXPECT_EQ(idsOf[s.name], s.ids) << c.name << ": " << s.name;
            idsOf.erase(s.name);
        }
        for (const auto& [name, ids] : idsOf) EXPECT_EQ(ids.size(), 1u) << c.name << ": " << name;
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

TEST(DigitalInputList, SortedBodyRunsInCatalogueOrderOfItsSwitchVariables) {
    // The comparison itself, so the order checks can fail.
    EXPECT_TRUE(catalogueLess("S_ASP_INT_SEND", "S_ASP_INTRAD"));
    EXPECT_TRUE(catalogueLess("S_USER_19", "S_USER_2"));
    EXPECT_TRUE(catalogueLess("S_CDU1_KEY_9", "S_CDU1_KEY_A"));
    EXPECT_TRUE(catalogueLess("S_OH_SIGNS", "S_OH_SIGNS_SMOKING"));
    EXPECT_FALSE(catalogueLess("S_ASP_INTRAD", "S_ASP_INT_SEND"));
    EXPECT_FALSE(catalogueLess("S_USER_2", "S_USER_2"));

    // 960..962 are appended after the sorted body.
    for (int32_t id = 2; id <= 959; ++id) {
        const std::string previous = switchVariableOf(id - 1);
        const std::string current = switchVariableOf(id);
        if (previous == current) {
            // Only positions of one switch stand side by side with the same variable.
            EXPECT_GT(groupSizeOf(id), 0) << id;
            EXPECT_EQ(groupSizeOf(id - 1), groupSizeOf(id)) << id;
        } else {
            EXPECT_TRUE(catalogueLess(previous, current))
                << id << ": " << previous << " before " << current;
        }
    }
}

TEST(DigitalInputList, PositionsOfASwitchShareOneLabelAndNoOtherLabelRepeats) {
    int positions = 0;
    for (const auto& r : switchRows()) {
        positions += r.last - r.first + 1;
        for (int32_t id = r.first + 1; id <= r.last; ++id) {
            if (isXbleed(id)) continue;
            EXPECT_EQ(labelOf(id), labelOf(r.first)) << id;
        }
    }
    EXPECT_EQ(positions, 273);

    std::set<std::string> seen;
    for (const auto& [id, entry] : digitInSigList()) {
        if (id == 0 || groupSizeOf(id) > 0) continue;
        EXPECT_TRUE(seen.insert(entry.second).second) << id << ": " << entry.second;
    }
    EXPECT_EQ(seen.size(), 689u + 2u);  // one-variable signals and the two synthesized contacts
}

// Splits "[0:a, 1:b, ...]" into its items; empty when the text is no legend of that form.
std::vector<std::string> legendItems(const std::string& legend) {
    std::vector<std::string> items;
    if (legend.size() < 2 || legend.front() != '[' || legend.back() != ']') return {};
    const std::string body = legend.substr(1, legend.size() - 2);
    std::size_t start = 0;
    for (int value = 0;; ++value) {
        const std::size_t end = body.find(", ", start);
        const std::string item = body.substr(start, end - start);
        const std::string number = std::to_string(value) + ":";
        if (!startsWith(item, number) || item.size() == number.size()) return {};
        items.push_back(item.substr(number.size()));
        if (end == std::string::npos) break;
        start = end + 2;
    }
    return items;
}

TEST(DigitalInputList, NamesAndLabelsFollowTheirSwitchVariable) {
    for (int32_t id = 1; id <= 962; ++id) {  // 963, 964: synthesized contacts of no form
        const auto& [name, label] = digitInSigList().at(id);
        const std::string var = switchVariableOf(id);
        ASSERT_TRUE(startsWith(var, "S_")) << id << ": " << label;
        // The name: the switch variable, or for a position the switch variable, an underscore
        // and the position token (941..945 are the variable itself).
        if (groupSizeOf(id) == 0 || (id >= 941 && id <= 945)) {
            EXPECT_EQ(name, var) << id;
        } else {
            EXPECT_TRUE(startsWith(name, var + "_")) << id << ": " << name;
            EXPECT_GT(name.size(), var.size() + 1) << id;
        }
        // Only the transponder modes TA and TARA are padded, to the length of Stdby (954).
        EXPECT_EQ(name.find(' ') != std::string::npos, id == 955 || id == 956) << id;

        // The label: its variable (for XBLEED the position name), a full stop, a description, a
        // blank and a legend with one item per position (two for a one-variable signal).
        const std::string head = isXbleed(id) ? name : var;
        ASSERT_TRUE(startsWith(label, head + ".")) << id << ": " << label;
        std::string rest = label.substr(head.size() + 1);
        // The console/floor selectors carry a remark after their legend.
        const std::string remark = " (measured)";
        if (id >= 594 && id <= 599) {
            ASSERT_TRUE(endsWith(rest, remark)) << id;
            rest.resize(rest.size() - remark.size());
        }
        const std::size_t open = rest.rfind(" [");
        ASSERT_NE(open, std::string::npos) << id << ": " << label;
        const std::string description = rest.substr(0, open);
        EXPECT_FALSE(description.empty()) << id;
        EXPECT_NE(description.front(), ' ') << id;
        EXPECT_NE(description.back(), ' ') << id;
        const int32_t groupSize = groupSizeOf(id);
        EXPECT_EQ(legendItems(rest.substr(open + 1)).size(),
                  static_cast<std::size_t>(groupSize > 0 ? groupSize : 2))
            << id << ": " << label;
    }
    EXPECT_EQ(nameOf(955).size(), nameOf(954).size());
    EXPECT_EQ(nameOf(956).size(), nameOf(954).size());
}

TEST(EncoderList, LabelsArePlainDescriptionsOfEVariables) {
    for (const auto& [id, entry] : encoderSigList()) {
        if (id == 0) continue;
        EXPECT_TRUE(startsWith(entry.first, "E_")) << id;
        EXPECT_EQ(entry.second.find('.'), std::string::npos) << id;
        EXPECT_EQ(entry.second.find("E_"), std::string::npos) << id;
    }
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

TEST(DigitalOutputList, IndicatorsWithVariableLabelsThenFlagsWithPlainLabels) {
    int leds = 0;
    for (const auto& [id, entry] : digitOutSigList()) {
        const auto& [var, label] = entry;
        if (id == 0) continue;
        if (id >= 470) {
            EXPECT_EQ(label.find(var + "."), std::string::npos) << id;
            EXPECT_TRUE(id < 471 || id > 493 || startsWith(var, "B_")) << id;
            continue;
        }
        EXPECT_TRUE(startsWith(var, "I_")) << id;
        EXPECT_EQ(labelVariable(label), var) << id;
        EXPECT_GT(label.size(), var.size() + 1) << id << ": empty description";
        const bool lower = endsWith(label, " lower led");
        const bool upper = endsWith(label, " upper led");
        leds += (lower || upper) ? 1 : 0;
        EXPECT_TRUE(!lower || endsWith(var, "_L")) << id;
        EXPECT_TRUE(!upper || endsWith(var, "_U")) << id;
    }
    EXPECT_EQ(leds, 170);
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

TEST(ServoAndPwmLists, ChannelNamesAndLabels) {
    for (const auto& [id, entry] : servoSigList()) {
        if (id == 0) continue;
        EXPECT_TRUE(startsWith(entry.first, "FENIX_")) << id;
        EXPECT_EQ(entry.second, entry.first) << id;
    }
    for (const auto& [id, entry] : pwmSigList()) {
        if (id == 0) continue;
        EXPECT_TRUE(startsWith(entry.first, "FENIX ")) << id;
        // 15, the backlight enable, explains itself in its label.
        EXPECT_EQ(entry.second == "[0~2500]", id != 15) << id;
    }
}

TEST(SignalLists, EntriesTheOutputSideReadsByIdCarryTheirVariables) {
    const std::vector<std::pair<uint32_t, const char*>> digitOut{
        {digitOutId::kTrackFpaMode, "I_FCU_TRACK_FPA_MODE"},
        {digitOutId::kTrimMotorPower, "B_FC_ELEVATOR_TRIM_MOTOR_POWER"},
        {digitOutId::kFcuPower, "B_FCU_POWER"},
        {digitOutId::kRmp2DataStandby, "B_PED_RMP2_DATA_DISPLAYED_STDBY"},
        {digitOutId::kAnnLight, "S_OH_IN_LT_ANN_LT"},
    };
    for (const auto& [id, var] : digitOut) {
        EXPECT_EQ(digitOutSigList().at(static_cast<int32_t>(id)).first, var) << id;
    }
    const std::vector<std::pair<uint32_t, const char*>> display{
        {displayId::kBattery1Volts, "N_ELEC_VOLT_BAT_1"},
        {displayId::kElevatorTrim, "N_FC_ELEVATOR_TRIM"},
        {displayId::kRudderTrim, "N_FC_RUDDER_TRIM_DECIMAL"},
        {displayId::kAltitude, "N_FCU_ALTITUDE"},
        {displayId::kEfis2BaroInch, "N_FCU_EFIS2_BARO_INCH"},
        {displayId::kFcuLighting, "N_FCU_LIGHTING"},
        {displayId::kFcuLightingText, "N_FCU_LIGHTING_TEXT"},
        {displayId::kSpeed, "N_FCU_SPEED"},
        {displayId::kVerticalSpeed, "N_FCU_VS"},
        {displayId::kXpdrStandby, "N_FREQ_STANDBY_XPDR_SELECTED"},
        {displayId::kXpdr, "N_FREQ_XPDR_SELECTED"},
        {displayId::kBrakeAccuPressure, "N_HYD_PRESSURE_BRAKE_ACCU"},
        {displayId::kBrakeRightPressure, "N_HYD_PRESSURE_BRAKE_RIGHT"},
        {displayId::kClockMode, "N_MIP_CLOCK_MODE"},
        {displayId::kClock, "N_MIP_CLOCK_UTC"},
        {displayId::kOverheadLighting, "N_OH_LIGHTING_OVD"},
        {displayId::kPedestalLighting, "N_PED_LIGHTING_PEDESTAL"},
        {displayId::kRmp2Standby, "N_PED_RMP2_STDBY"},
        {displayId::kXpdrDigits, "N_PED_XPDR_CHAR_DISPLAYED"},
        {displayId::kConsoleFloorCapt, "S_MIP_LIGHT_CONSOLEFLOOR_CAPT"},
        {displayId::kConsoleFloorFo, "S_MIP_LIGHT_CONSOLEFLOOR_FO"},
    };
    for (const auto& [id, var] : display) {
        EXPECT_EQ(displaySigList().at(static_cast<int32_t>(id)).first, var) << id;
    }
}

}  // namespace
}  // namespace fenixA320
