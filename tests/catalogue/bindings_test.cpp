// The binding and key-group tables, checked against independently typed tables and the lists.
#include "catalogue/bindings.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "catalogue/signal_lists.h"

namespace fenixA320 {
namespace {

const std::string& nameOf(int32_t id) { return digitInSigList().at(id).first; }

bool startsWith(std::string_view s, std::string_view prefix) {
    return s.substr(0, prefix.size()) == prefix;
}

std::vector<int32_t> idsOf(std::initializer_list<std::pair<int32_t, int32_t>> ranges) {
    std::vector<int32_t> ids;
    for (const auto& [first, last] : ranges) {
        for (int32_t id = first; id <= last; ++id) ids.push_back(id);
    }
    return ids;
}

template <typename Row>
std::vector<int32_t> keysOf(const std::vector<Row>& rows) {
    std::vector<int32_t> keys;
    for (const Row& r : rows) {
        if constexpr (std::is_same_v<Row, GroupKey>) {
            keys.push_back(r.signalId);
        } else {
            keys.push_back(r.key);
        }
    }
    return keys;
}

// `switchVarBindings` typed out: slot, defineId (= key), variable, positions.
struct SwitchRow {
    int32_t slot;
    int32_t defineId;
    const char* variable;
    int32_t first;
    int32_t last;
};

const std::vector<SwitchRow>& expectedSwitchRows() {
    static const std::vector<SwitchRow> rows{
        {0, 22, "S_ASP_INTRAD", 22, 24},
        {1, 33, "S_ASP_SEND_CHANNEL", 35, 43},
        {2, 68, "S_ASP2_INTRAD", 78, 80},
        {3, 79, "S_ASP2_SEND_CHANNEL", 91, 99},
        {4, 114, "S_ASP3_INTRAD", 134, 136},
        {5, 125, "S_ASP3_SEND_CHANNEL", 147, 155},
        {6, 160, "S_ASP4_INTRAD", 190, 192},
        {7, 171, "S_ASP4_SEND_CHANNEL", 203, 211},
        {8, 187, "S_AUDIO_SWITCHING", 227, 229},
        {9, 342, "S_DCDU1_DIM_BRT", 384, 386},
        {10, 354, "S_DCDU2_DIM_BRT", 398, 400},
        {11, 364, "S_DISPLAY_AIR_DATA", 410, 412},
        {12, 365, "S_DISPLAY_ATT_HDG", 413, 415},
        {13, 366, "S_DISPLAY_ECAM_ND_XFR", 416, 418},
        {14, 367, "S_DISPLAY_EIS_DMC", 419, 421},
        {15, 397, "S_ENG_MODE", 451, 453},
        {16, 404, "S_FC_FLAPS", 460, 464},
        {17, 408, "S_FC_RUDDER_TRIM", 468, 470},
        {18, 429, "S_FCU_EFIS1_ND_MODE", 499, 503},
        {19, 430, "S_FCU_EFIS1_ND_ZOOM", 504, 509},
        {20, 442, "S_FCU_EFIS2_ND_MODE", 527, 531},
        {21, 443, "S_FCU_EFIS2_ND_ZOOM", 532, 537},
        {22, 427, "S_FCU_EFIS1_NAV1", 493, 495},
        {23, 428, "S_FCU_EFIS1_NAV2", 496, 498},
        {24, 440, "S_FCU_EFIS2_NAV1", 521, 523},
        {25, 441, "S_FCU_EFIS2_NAV2", 524, 526},
        {26, 423, "S_FCU_EFIS1_BARO_STD", 487, 489},
        {27, 436, "S_FCU_EFIS2_BARO_STD", 515, 517},
        {28, 415, "S_FCU_ALTITUDE", 477, 479},
        {29, 449, "S_FCU_HEADING", 543, 545},
        {30, 453, "S_FCU_SPEED", 549, 551},
        {31, 454, "S_FCU_VERTICAL_SPEED", 552, 554},
        {32, 474, "S_MIP_CLOCK_ET", 574, 576},
        {33, 477, "S_MIP_CLOCK_UTC", 579, 581},
        {34, 490, "S_MIP_LIGHT_CONSOLEFLOOR_CAPT", 594, 596},
        {35, 491, "S_MIP_LIGHT_CONSOLEFLOOR_FO", 597, 599},
        {36, 500, "S_MIP_TRAFFIC_CAPT", 608, 610},
        {37, 501, "S_MIP_TRAFFIC_FO", 611, 613},
        {38, 508, "S_MISC_WIPER_CAPT", 620, 622},
        {39, 509, "S_MISC_WIPER_FO", 623, 625},
        {40, 532, "S_OH_CARGO_DISC_1_OLD_LAYOUT", 648, 650},
        {41, 533, "S_OH_CARGO_DISC_2_OLD_LAYOUT", 651, 653},
        {42, 560, "S_OH_EXT_LT_LANDING_L", 680, 682},
        {43, 561, "S_OH_EXT_LT_LANDING_R", 683, 685},
        {44, 562, "S_OH_EXT_LT_NAV_LOGO", 686, 688},
        {45, 563, "S_OH_EXT_LT_NOSE", 689, 691},
        {46, 565, "S_OH_EXT_LT_STROBE", 693, 695},
        {47, 609, "S_OH_IN_LT_ANN_LT", 739, 741},
        {48, 611, "S_OH_INT_LT_DOME", 743, 745},
        {49, 612, "S_OH_INT_LT_EMER", 746, 748},
        {50, 617, "S_OH_NAV_DATA_DISP", 753, 758},
        {51, 618, "S_OH_NAV_IR1_MODE", 759, 761},
        {52, 620, "S_OH_NAV_IR2_MODE", 763, 765},
        {53, 622, "S_OH_NAV_IR3_MODE", 767, 769},
        {54, 624, "S_OH_NAV_SYS_DISP", 771, 774},
        {55, 645, "S_OH_PNEUMATIC_PACK_FLOW", 795, 797},
        {56, 646, "S_OH_PNEUMATIC_PRESS_MAN", 798, 800},
        {57, 650, "S_OH_PNEUMATIC_XBLEED_SELECTOR", 804, 806},
        {58, 655, "S_OH_SIGNS", 811, 813},
        {59, 656, "S_OH_SIGNS_SMOKING", 814, 816},
        {60, 671, "S_PED_COCKPIT_DOOR", 831, 833},
        {61, 719, "S_REFUEL_DECINC", 881, 883},
        {62, 725, "S_TCAS_HORIZONTAL_RANGE", 889, 892},
        {63, 726, "S_TCAS_RANGE", 893, 896},
        {64, 747, "A_WR_GAIN", 917, 926},
        {65, 748, "S_WR_MODE", 927, 930},
        {66, 751, "S_WR_SYS", 933, 935},
        {67, 762, "S_WR_GCS", 960, 962},
        {68, 752, "S_WR2_CAP_DISPLAY", 936, 940},
        {69, 753, "S_WR2_FO_DISPLAY", 941, 945},
        {70, 756, "S_WR2_WXR_PWS", 948, 950},
        {71, 760, "S_XPDR_MODE", 954, 956},
        {72, 761, "S_XPDR_OPERATION", 957, 959},
    };
    return rows;
}

TEST(VariableNumbers, FollowTheFirstAppearanceInTheDigitalInputList) {
    EXPECT_EQ(variableNumber("S_ADF1_TFC"), 1);
    EXPECT_EQ(variableNumber("S_ADF2_TFC"), 2);
    EXPECT_EQ(variableNumber("S_ASP_INTRAD"), 22);
    EXPECT_EQ(variableNumber("S_ASP_SEND_CHANNEL"), 33);
    EXPECT_EQ(variableNumber("S_XPDR_OPERATION"), 761);
    EXPECT_EQ(variableNumber("S_WR_GCS"), 762);
    EXPECT_EQ(variableNumber("S_OH_PNEUMATIC_XBLEED_SELECTOR"), 650);
    EXPECT_EQ(variableNumber("S_IOS_ELEC_EXTERN_POWER"), 462);
    EXPECT_EQ(variableNumber("S_DCDU1_LSK1L"), 343);  // right after S_DCDU1_DIM_BRT (342)
}

TEST(VariableNumbers, AreZeroForNamesThatAreNoSwitchVariable) {
    for (const char* name : {"S_ASP_INTRAD_INT", "S_OH_PNEUMATIC_XBLEED_SELECTOR_Shut",
                             "S_XPDR_MODE_TA   ", "S_WR_GCS_Off", "Fenix NONE", "A_WR_GAIN",
                             "S_IOS_ELEC_EXTERN_FORCE", "", "S_XPDR_MODE_TA"}) {
        EXPECT_EQ(variableNumber(name), 0) << name;
    }
}

TEST(VariableNumbers, NumberEverySwitchVariableOnceFrom1To762) {
    // Walking the list, a new variable number appears exactly where a new switch variable does.
    std::set<int32_t> numbers;
    int32_t highest = 0;
    for (const auto& [id, entry] : digitInSigList()) {
        if (id == 0 || id >= 963) continue;
        std::string label = entry.second;
        std::string var = label.substr(0, label.find('.'));
        if (id >= 804 && id <= 806) var = "S_OH_PNEUMATIC_XBLEED_SELECTOR";
        const int32_t n = variableNumber(var);
        ASSERT_GT(n, 0) << id << ": " << var;
        if (numbers.insert(n).second) {
            EXPECT_EQ(n, highest + 1) << id << ": " << var;
            highest = n;
        } else {
            EXPECT_EQ(n, highest) << id << ": " << var << " seen before";
        }
    }
    EXPECT_EQ(highest, 762);
    EXPECT_EQ(numbers.size(), 762u);
}

TEST(VariableNumbers, ReproduceTheHeldDefinitions) {
    const std::map<int32_t, int32_t> heldByInput{
        {449, 395}, {450, 396}, {472, 410}, {583, 479}, {605, 497}};
    std::map<int32_t, int32_t> found;
    for (const VarBinding& row : digitInBindings()) {
        if (heldByInput.count(row.key) != 0) found[row.key] = row.defineId;
    }
    EXPECT_EQ(found, heldByInput);
    EXPECT_EQ(variableNumber("S_ENG_MASTER_1"), 395);
    EXPECT_EQ(variableNumber("S_ENG_MASTER_2"), 396);
    EXPECT_EQ(variableNumber("S_FC_SPEEDBRAKE_ARMED"), 410);
    EXPECT_EQ(variableNumber("S_MIP_GEAR"), 479);
    EXPECT_EQ(variableNumber("S_MIP_PARKING_BRAKE"), 497);
}

TEST(SwitchVarBindings, MatchThePartsTableRowByRow) {
    const std::vector<VarBinding>& rows = switchVarBindings();
    ASSERT_EQ(rows.size(), 73u);
    for (const SwitchRow& e : expectedSwitchRows()) {
        const VarBinding& row = rows.at(static_cast<std::size_t>(e.slot));
        EXPECT_EQ(row.slot, e.slot);
        EXPECT_EQ(row.defineId, e.defineId) << e.variable;
        EXPECT_EQ(row.key, e.defineId) << e.variable;
        EXPECT_EQ(row.variable, e.variable) << e.slot;
    }
}

TEST(SwitchVarBindings, DefineIdsAreTheNumbersOfThePositionGroupsSwitchVariables) {
    for (const SwitchRow& e : expectedSwitchRows()) {
        // The switch variable as the list's label of the group's first position names it.
        const std::string& label = digitInSigList().at(e.first).second;
        std::string var = label.substr(0, label.find('.'));
        if (e.first == 804) var = "S_OH_PNEUMATIC_XBLEED_SELECTOR";
        EXPECT_EQ(variableNumber(var), e.defineId) << var;
        if (e.slot == 64) {
            EXPECT_EQ(var, "S_WR_GAIN");
        } else {
            EXPECT_EQ(var, e.variable);
        }
        // Every position of the group is named after the switch variable.
        for (int32_t id = e.first; id <= e.last; ++id) {
            EXPECT_TRUE(startsWith(nameOf(id), var)) << id;
        }
    }
}

TEST(DigitInBindings, RowsFollowThePartsIdRangesInSlotOrder) {
    const std::vector<int32_t> expected = idsOf({
        {1, 2},     {377, 381}, {422, 450}, {454, 459}, {465, 467}, {471, 476},
        {480, 480}, {486, 486}, {514, 514}, {555, 573}, {577, 578}, {582, 593},
        {600, 607}, {614, 619}, {626, 627}, {640, 647}, {654, 679}, {692, 692},
        {696, 738}, {742, 742}, {749, 752}, {762, 762}, {766, 766}, {770, 770},
        {775, 794}, {801, 803}, {807, 810}, {817, 821}, {876, 880}, {884, 888},
        {931, 932}, {946, 947}, {951, 952}, {842, 842}, {856, 856}, {870, 870},
    });
    const std::vector<VarBinding>& rows = digitInBindings();
    ASSERT_EQ(rows.size(), 240u);
    EXPECT_EQ(keysOf(rows), expected);
    for (std::size_t i = 0; i < rows.size(); ++i) EXPECT_EQ(rows[i].slot, static_cast<int32_t>(i));
    EXPECT_EQ(rows[237].key, 842);
    EXPECT_EQ(rows[238].key, 856);
    EXPECT_EQ(rows[239].key, 870);
}

TEST(DigitInBindings, EachRowWritesItsSignalsOwnVariableUnderItsNumber) {
    for (const VarBinding& row : digitInBindings()) {
        const std::string& name = nameOf(row.key);
        EXPECT_EQ(row.defineId, variableNumber(name)) << row.key;
        if (row.key == 562) continue;
        EXPECT_EQ(row.variable, name) << row.key;
    }
}

TEST(DigitInBindings, ExternalPowerControlWritesTheForcingVariable) {
    const VarBinding* extern562 = nullptr;
    for (const VarBinding& row : digitInBindings()) {
        if (row.key == 562) extern562 = &row;
    }
    ASSERT_NE(extern562, nullptr);
    EXPECT_EQ(nameOf(562), "S_IOS_ELEC_EXTERN_POWER");
    EXPECT_EQ(extern562->variable, "S_IOS_ELEC_EXTERN_FORCE");
    EXPECT_EQ(extern562->defineId, 462);
}

TEST(KeyGroups, MembersFollowThePartsIdRanges) {
    EXPECT_EQ(keysOf(cduKeyGroup()), idsOf({{230, 323}, {325, 376}}));
    EXPECT_EQ(keysOf(fcuKeyGroup()),
              idsOf({{481, 485}, {490, 492}, {510, 513}, {518, 520}, {538, 542}, {546, 548}}));
    EXPECT_EQ(keysOf(aspKeyGroup()), idsOf({{1, 21},
                                            {25, 34},
                                            {44, 77},
                                            {81, 90},
                                            {100, 133},
                                            {137, 146},
                                            {156, 189},
                                            {193, 202},
                                            {212, 226}}));
    EXPECT_EQ(keysOf(rmpKeyGroup()), idsOf({{834, 841}, {843, 855}, {857, 869}, {871, 875}}));
    EXPECT_EQ(keysOf(atcKeyGroup()), idsOf({{822, 830}, {953, 953}}));
}

// The groups as the panels define them, selected by name from the list.
TEST(KeyGroups, MembersAreThePanelsKeysByName) {
    std::vector<int32_t> cdu;
    std::vector<int32_t> asp;
    std::vector<int32_t> rmp;
    std::vector<int32_t> atc;
    std::vector<int32_t> fcu;
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
        const std::string label = entry.second;
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
    EXPECT_EQ(keysOf(cduKeyGroup()), cdu);
    EXPECT_EQ(keysOf(aspKeyGroup()), asp);
    EXPECT_EQ(keysOf(rmpKeyGroup()), rmp);
    EXPECT_EQ(keysOf(atcKeyGroup()), atc);
    EXPECT_EQ(keysOf(fcuKeyGroup()), fcu);
    EXPECT_EQ(fcu.size(), 23u);
}

TEST(KeyGroups, RowsCarryTheirSignalsVariableAndPosition) {
    for (const auto* group :
         {&cduKeyGroup(), &fcuKeyGroup(), &aspKeyGroup(), &rmpKeyGroup(), &atcKeyGroup()}) {
        for (std::size_t i = 0; i < group->size(); ++i) {
            const GroupKey& row = (*group)[i];
            EXPECT_EQ(row.index, static_cast<int32_t>(i));
            EXPECT_EQ(row.variable, nameOf(row.signalId)) << row.signalId;
        }
    }
}

TEST(KeyGroups, SizesAndBlockBytes) {
    EXPECT_EQ(cduKeyGroup().size(), 146u);
    EXPECT_EQ(fcuKeyGroup().size(), 23u);
    EXPECT_EQ(aspKeyGroup().size(), 178u);
    EXPECT_EQ(rmpKeyGroup().size(), 39u);
    EXPECT_EQ(atcKeyGroup().size(), 10u);
    EXPECT_EQ(aspKeyGroup().size() * sizeof(double), 1424u);
    EXPECT_EQ(cduKeyGroup().size() * sizeof(double), 1168u);
}

TEST(Tables, EveryDigitalInputIsBoundOnceOrListedAsUnbound) {
    std::map<int32_t, int> uses;
    for (const VarBinding& row : digitInBindings()) ++uses[row.key];
    for (const SwitchRow& e : expectedSwitchRows()) {
        for (int32_t id = e.first; id <= e.last; ++id) ++uses[id];
    }
    for (const auto* group :
         {&cduKeyGroup(), &fcuKeyGroup(), &aspKeyGroup(), &rmpKeyGroup(), &atcKeyGroup()}) {
        for (const GroupKey& row : *group) ++uses[row.signalId];
    }
    // The digital inputs that no table holds.
    std::set<int32_t> unbound{324, 382, 383, 963, 964};
    for (int32_t id : idsOf({{387, 397}, {401, 409}, {628, 639}, {897, 916}})) unbound.insert(id);
    for (int32_t id = 1; id <= 964; ++id) {
        const int expected = unbound.count(id) != 0 ? 0 : (id == 1 || id == 2 ? 2 : 1);
        EXPECT_EQ(uses[id], expected) << id;
    }
}

TEST(Tables, NoDataDefinitionIdTwiceAndNoneInTheReservedRanges) {
    std::map<int32_t, int> uses;
    for (const VarBinding& row : digitInBindings()) {
        ++uses[row.defineId];
        EXPECT_GE(row.defineId, 1);
        EXPECT_LE(row.defineId, 762);
    }
    for (const VarBinding& row : switchVarBindings()) {
        ++uses[row.defineId];
        EXPECT_GE(row.defineId, 1);
        EXPECT_LE(row.defineId, 762);
    }
    EXPECT_EQ(uses.size(), 313u);
    for (const VarBinding& row : encoderBindings()) ++uses[row.defineId];
    for (const VarBinding& row : analogBindings()) ++uses[row.defineId];
    for (uint32_t def : {DEF_CDU_KEYS, DEF_FCU_KEYS, DEF_ASP_KEYS, DEF_RMP_KEYS, DEF_ATC_KEYS,
                         DEF_DIGIT_OUT, DEF_DISPLAY, DEF_TITLE, DEF_CLOCK}) {
        ++uses[static_cast<int32_t>(def)];
    }
    for (const auto& [def, n] : uses) EXPECT_EQ(n, 1) << "definition " << def;
    EXPECT_EQ(uses.size(), 313u + 44u + 125u + 9u);
    // No per-variable number falls among the encoder, analog and fixed definitions.
    for (const auto* table : {&digitInBindings(), &switchVarBindings()}) {
        for (const VarBinding& row : *table) {
            EXPECT_FALSE(row.defineId >= 1000 && row.defineId <= 1043) << row.defineId;
            EXPECT_FALSE(row.defineId >= 2000 && row.defineId <= 2124) << row.defineId;
            EXPECT_FALSE(row.defineId >= 3000 && row.defineId <= 3009) << row.defineId;
        }
    }
}

TEST(EncoderBindings, OneRowPerEncoderWithThePlaceholderInRow0) {
    const std::vector<VarBinding>& rows = encoderBindings();
    ASSERT_EQ(rows.size(), kEncoderCount);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const auto id = static_cast<int32_t>(i);
        EXPECT_EQ(rows[i].defineId, 1000 + id);
        EXPECT_EQ(rows[i].key, id);
        EXPECT_EQ(rows[i].slot, id);
        if (id == 0) {
            EXPECT_EQ(rows[i].variable, kPlaceholderVariable);
        } else {
            EXPECT_EQ(rows[i].variable, encoderSigList().at(id).first) << id;
            EXPECT_TRUE(startsWith(rows[i].variable, "E_")) << id;
        }
    }
}

TEST(AnalogBindings, OneRowPerAnalogInputWithThePlaceholderWhereTheModuleDrivesNothing) {
    const std::vector<VarBinding>& rows = analogBindings();
    ASSERT_EQ(rows.size(), kAnalogCount);
    std::set<int32_t> placeholder;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const auto id = static_cast<int32_t>(i);
        EXPECT_EQ(rows[i].defineId, 2000 + id);
        EXPECT_EQ(rows[i].key, id);
        EXPECT_EQ(rows[i].slot, id);
        if (rows[i].variable == kPlaceholderVariable) {
            placeholder.insert(id);
        } else {
            EXPECT_EQ(rows[i].variable, analogSigList().at(id).first) << id;
        }
    }
    std::set<int32_t> expected{0, 61, 62, 81, 85, 87, 113, 123, 124};
    for (int32_t id : idsOf({{91, 96}, {99, 101}, {118, 120}})) expected.insert(id);
    EXPECT_EQ(placeholder, expected);
    EXPECT_EQ(rows[121].variable, "A_WR_GAIN");
    EXPECT_EQ(rows[79].variable, "N_FC_RUDDER");
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
