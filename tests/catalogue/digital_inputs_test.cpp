// The digital-input list: ids, names, numbering order and label form.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "catalogue/signal_lists.h"

namespace fenixA320 {
namespace {

const std::string& nameOf(int32_t id) { return digitInSigList().at(id).first; }
const std::string& labelOf(int32_t id) { return digitInSigList().at(id).second; }

bool startsWith(const std::string& s, const std::string& prefix) {
    return s.compare(0, prefix.size(), prefix) == 0;
}

// The catalogue order: character by character, underscore below digits below
// letters; a name sorts before every longer name it begins.
int rank(char c) {
    if (c == '_') return 0;
    if (c >= '0' && c <= '9') return 1;
    return 2;
}

bool catalogueLess(const std::string& a, const std::string& b) {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        return rank(x) != rank(y) ? rank(x) < rank(y) : x < y;
    });
}

// The XBLEED positions 804..806 carry their position name in front of the label.
constexpr int32_t kXbleedFirst = 804;
constexpr int32_t kXbleedLast = 806;
bool isXbleed(int32_t id) { return id >= kXbleedFirst && id <= kXbleedLast; }
const std::string kXbleedVariable = "S_OH_PNEUMATIC_XBLEED_SELECTOR";

// Switch variable of an entry of the sorted body or of 960..962, read from its label.
std::string switchVariableOf(int32_t id) {
    if (isXbleed(id)) return kXbleedVariable;
    const std::string& label = labelOf(id);
    return label.substr(0, label.find('.'));
}

// The position groups (ids first..last), the only runs of equal labels.
const std::vector<std::pair<int32_t, int32_t>>& positionGroups() {
    static const std::vector<std::pair<int32_t, int32_t>> groups{
        {22, 24},   {35, 43},   {78, 80},   {91, 99},   {134, 136}, {147, 155}, {190, 192},
        {203, 211}, {227, 229}, {384, 386}, {398, 400}, {410, 412}, {413, 415}, {416, 418},
        {419, 421}, {451, 453}, {460, 464}, {468, 470}, {477, 479}, {487, 489}, {493, 495},
        {496, 498}, {499, 503}, {504, 509}, {515, 517}, {521, 523}, {524, 526}, {527, 531},
        {532, 537}, {543, 545}, {549, 551}, {552, 554}, {574, 576}, {579, 581}, {594, 596},
        {597, 599}, {608, 610}, {611, 613}, {620, 622}, {623, 625}, {648, 650}, {651, 653},
        {680, 682}, {683, 685}, {686, 688}, {689, 691}, {693, 695}, {739, 741}, {743, 745},
        {746, 748}, {753, 758}, {759, 761}, {763, 765}, {767, 769}, {771, 774}, {795, 797},
        {798, 800}, {804, 806}, {811, 813}, {814, 816}, {831, 833}, {881, 883}, {889, 892},
        {893, 896}, {917, 926}, {927, 930}, {933, 935}, {936, 940}, {941, 945}, {948, 950},
        {954, 956}, {957, 959}, {960, 962},
    };
    return groups;
}

int32_t groupSizeOf(int32_t id) {
    for (const auto& [first, last] : positionGroups()) {
        if (id >= first && id <= last) return last - first + 1;
    }
    return 0;
}

TEST(DigitalInputList, HoldsIds0To964WithoutGaps) {
    const SigList& list = digitInSigList();
    EXPECT_EQ(list.size(), 965u);
    EXPECT_EQ(digitInEntries().size(), 965u);
    int32_t expected = 0;
    for (const auto& [id, entry] : list) EXPECT_EQ(id, expected++);
    EXPECT_EQ(list.rbegin()->first, 964);
    // The rows are written in id order, so row i is entry i.
    for (std::size_t i = 0; i < digitInEntries().size(); ++i) {
        EXPECT_EQ(digitInEntries()[i].id, static_cast<int32_t>(i));
    }
}

TEST(DigitalInputList, EntryZeroIsTheUnboundChannel) {
    EXPECT_EQ(digitInSigList().at(0),
              std::make_pair(std::string("Fenix NONE"), std::string("NO SIGNAL")));
}

TEST(DigitalInputList, FirstEntriesFollowThePartsExamples) {
    EXPECT_EQ(nameOf(1), "S_ADF1_TFC");
    EXPECT_EQ(labelOf(1), "S_ADF1_TFC.Radio TFR ADF1 [0:Normal, 1:Pushed]");
    for (int32_t id = 22; id <= 24; ++id) {
        EXPECT_EQ(labelOf(id), "S_ASP_INTRAD.ASP INT/RAD Switch [0:INT, 1:Off, 2:RAD]") << id;
    }
    EXPECT_EQ(nameOf(22), "S_ASP_INTRAD_INT");
    EXPECT_EQ(nameOf(23), "S_ASP_INTRAD_Off");
    EXPECT_EQ(nameOf(24), "S_ASP_INTRAD_RAD");
    EXPECT_EQ(labelOf(35),
              "S_ASP_SEND_CHANNEL.ASP  Channel Selection [0:None, 1:VHF 1, 2:VHF 2, 3:VHF 3, "
              "4:HF 1, 5:HF 2, 6:INT, 7:CAB, 8:PA]");
    EXPECT_EQ(labelOf(203),
              "S_ASP4_SEND_CHANNEL.ASP OBS 2  Channel Selection [0:None, 1:VHF 1, 2:VHF 2, "
              "3:VHF 3, 4:HF 1, 5:HF 2, 6:INT, 7:CAB, 8:PA]");
    EXPECT_EQ(labelOf(74), "S_ASP2_INT.ASP2 IC Selected [0:Off, 1:On]");
    EXPECT_EQ(labelOf(201), "S_ASP4_RAD.ASP4 RT Selected [0:Off, 1:On]");
    EXPECT_EQ(labelOf(381), "S_COM3_TFC.Radio TFR COM3 [0:Normal, 1:Pushed]");
    EXPECT_EQ(labelOf(408), "S_DCDU2_PGUP.DCDU F/O PGE- [0:Normal, 1:Pushed]");
    EXPECT_EQ(labelOf(638), "S_OH_ADIRS_KEY_CLR.Adirs keypad CLR [0:Normal, 1:Pushed]");
    EXPECT_EQ(labelOf(875), "S_PED_RMP3_XFER.RMP OBS transfer [0:Normal, 1:Pushed]");
    EXPECT_EQ(labelOf(905), "S_USER_17.User 17 in [0:Off, 1:On]");
}

TEST(DigitalInputList, Cdu2HasTheClbKeyAndCdu1HasNone) {
    EXPECT_EQ(nameOf(324), "S_CDU2_KEY_CLB");
    EXPECT_EQ(labelOf(324), "S_CDU2_KEY_CLB.CDU 2 KEY_CLB [0:Normal, 1:Pushed]");
    EXPECT_EQ(nameOf(323), "S_CDU2_KEY_C");
    EXPECT_EQ(nameOf(325), "S_CDU2_KEY_CLEAR");
    int cdu1 = 0;
    int cdu2 = 0;
    for (const auto& [id, entry] : digitInSigList()) {
        EXPECT_NE(entry.first, "S_CDU1_KEY_CLB") << id;
        if (startsWith(entry.first, "S_CDU1_")) ++cdu1;
        if (startsWith(entry.first, "S_CDU2_")) ++cdu2;
    }
    EXPECT_EQ(cdu1, 73);
    EXPECT_EQ(cdu2, 74);
}

TEST(DigitalInputList, RealDcduKeyAndSynthesizedContactsShareThePlaceholderName) {
    EXPECT_EQ(nameOf(387), kPlaceholderVariable);
    EXPECT_EQ(labelOf(387), "S_DCDU1_LSK1L.DCDU captain LSK1L [0:Normal, 1:Pushed]");
    EXPECT_EQ(nameOf(963), kPlaceholderVariable);
    EXPECT_EQ(labelOf(963), "LDG ELEV AUTO (synthesized, no direct Fenix LVar)");
    EXPECT_EQ(nameOf(964), kPlaceholderVariable);
    EXPECT_EQ(labelOf(964), "PARK BRK OFF microswitch (synthesized)");
    std::set<int32_t> withPlaceholder;
    for (const auto& [id, entry] : digitInSigList()) {
        if (entry.first == kPlaceholderVariable) withPlaceholder.insert(id);
    }
    EXPECT_EQ(withPlaceholder, (std::set<int32_t>{387, 963, 964}));
}

TEST(DigitalInputList, AppendedEntriesSitAtTheirIds) {
    EXPECT_EQ(nameOf(959), "S_XPDR_OPERATION_On");
    EXPECT_EQ(nameOf(960), "S_WR_GCS_Off");
    EXPECT_EQ(nameOf(961), "S_WR_GCS_NORMAL");
    EXPECT_EQ(nameOf(962), "S_WR_GCS_AUTO");
    for (int32_t id = 960; id <= 962; ++id) {
        EXPECT_EQ(labelOf(id), "S_WR_GCS.Weather Radar GCS [0:NORMAL, 1:Off, 2:AUTO]") << id;
    }
    // Appended, so out of the name order of the sorted body.
    EXPECT_TRUE(catalogueLess("S_WR_GCS", switchVariableOf(959)));
}

TEST(DigitalInputList, PositionsOfAGroupShareOneLabel) {
    int positions = 0;
    for (const auto& [first, last] : positionGroups()) {
        positions += last - first + 1;
        for (int32_t id = first + 1; id <= last; ++id) {
            if (isXbleed(id)) continue;
            EXPECT_EQ(labelOf(id), labelOf(first)) << id;
        }
    }
    EXPECT_EQ(positionGroups().size(), 73u);
    EXPECT_EQ(positions, 273);

    // Outside the groups no two entries share a label: a run of equal labels is a group.
    std::set<std::string> seen;
    for (const auto& [id, entry] : digitInSigList()) {
        if (id == 0 || groupSizeOf(id) > 0) continue;
        EXPECT_TRUE(seen.insert(entry.second).second) << id << ": " << entry.second;
    }
    EXPECT_EQ(seen.size(), 689u + 2u);  // one-variable signals and the two synthesized contacts
}

TEST(DigitalInputList, XbleedLabelsBeginWithThePositionName) {
    EXPECT_EQ(labelOf(804),
              "S_OH_PNEUMATIC_XBLEED_SELECTOR_Shut.X Bleed selector [0:Shut, 1:Auto, 2:Open]");
    EXPECT_EQ(labelOf(805),
              "S_OH_PNEUMATIC_XBLEED_SELECTOR_Auto.X Bleed selector [0:Shut, 1:Auto, 2:Open]");
    EXPECT_EQ(labelOf(806),
              "S_OH_PNEUMATIC_XBLEED_SELECTOR_Open.X Bleed selector [0:Shut, 1:Auto, 2:Open]");
    for (int32_t id = kXbleedFirst; id <= kXbleedLast; ++id) {
        EXPECT_TRUE(startsWith(labelOf(id), nameOf(id) + ".")) << id;
    }
}

TEST(DigitalInputList, FoDisplayPositionsShareNameAndLabel) {
    for (int32_t id = 941; id <= 945; ++id) {
        EXPECT_EQ(nameOf(id), "S_WR2_FO_DISPLAY") << id;
        EXPECT_EQ(labelOf(id),
                  "S_WR2_FO_DISPLAY.Weather Radar P2 F/O Display [0:OFF, 1:ALL WX, 2:PATH WX, "
                  "3:ELEV, 4:MAP]")
            << id;
    }
    EXPECT_EQ(nameOf(940), "S_WR2_CAP_DISPLAY_MAP");
    EXPECT_EQ(nameOf(946), "S_WR2_HZD");
}

TEST(DigitalInputList, TransponderModeNamesArePaddedToOneLength) {
    EXPECT_EQ(nameOf(954), "S_XPDR_MODE_Stdby");
    EXPECT_EQ(nameOf(955), "S_XPDR_MODE_TA   ");
    EXPECT_EQ(nameOf(956), "S_XPDR_MODE_TARA ");
    EXPECT_EQ(nameOf(955).size(), nameOf(954).size());
    EXPECT_EQ(nameOf(956).size(), nameOf(954).size());
    for (int32_t id = 954; id <= 956; ++id) {
        EXPECT_EQ(labelOf(id), "S_XPDR_MODE.TCAS [0:Stdby, 1:TA, 2:TA/RA]") << id;
    }
    // No other name carries a blank.
    for (const auto& [id, entry] : digitInSigList()) {
        if (id == 0 || id == 955 || id == 956) continue;
        EXPECT_EQ(entry.first.find(' '), std::string::npos) << id;
    }
}

TEST(DigitalInputList, TheComparisonRanksUnderscoreBeforeDigitsBeforeLetters) {
    EXPECT_TRUE(catalogueLess("S_ASP_INT_SEND", "S_ASP_INTRAD"));
    EXPECT_TRUE(catalogueLess("S_ASP_VOR_2_REC_LATCH", "S_ASP2_ADF_1_REC"));
    EXPECT_TRUE(catalogueLess("S_CDU1_KEY_9", "S_CDU1_KEY_A"));
    EXPECT_TRUE(catalogueLess("S_USER_19", "S_USER_2"));
    EXPECT_TRUE(catalogueLess("S_OH_SIGNS", "S_OH_SIGNS_SMOKING"));
    EXPECT_FALSE(catalogueLess("S_ASP_INTRAD", "S_ASP_INT_SEND"));
    EXPECT_FALSE(catalogueLess("S_USER_2", "S_USER_2"));
}

TEST(DigitalInputList, SortedBodyRunsInCatalogueOrderOfItsSwitchVariables) {
    for (int32_t id = 2; id <= 959; ++id) {
        const std::string previous = switchVariableOf(id - 1);
        const std::string current = switchVariableOf(id);
        if (previous == current) {
            // Only positions of one group stand side by side with the same variable.
            EXPECT_GT(groupSizeOf(id), 0) << id;
            EXPECT_EQ(groupSizeOf(id - 1), groupSizeOf(id)) << id;
        } else {
            EXPECT_TRUE(catalogueLess(previous, current))
                << id << ": " << previous << " before " << current;
        }
    }
}

TEST(DigitalInputList, NamesAreTheSwitchVariableOrItsPositions) {
    for (const auto& [id, entry] : digitInSigList()) {
        if (id == 0 || id >= 963) continue;
        const std::string var = switchVariableOf(id);
        ASSERT_FALSE(var.empty()) << id;
        EXPECT_TRUE(startsWith(var, "S_")) << id;
        if (groupSizeOf(id) == 0 || (id >= 941 && id <= 945)) {
            EXPECT_EQ(entry.first, var) << id;
        } else {
            // Switch variable, underscore, position token (the padded tokens keep their blanks).
            EXPECT_TRUE(startsWith(entry.first, var + "_")) << id << ": " << entry.first;
            EXPECT_GT(entry.first.size(), var.size() + 1) << id;
        }
    }
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

TEST(DigitalInputList, LabelsAreVariableFullStopDescriptionBlankLegend) {
    for (const auto& [id, entry] : digitInSigList()) {
        if (id == 0 || id >= 963) continue;  // entry 0 and the synthesized contacts: no form
        const std::string& label = entry.second;
        // The label's variable: the switch variable, or for XBLEED the position name.
        const std::string head = isXbleed(id) ? entry.first : switchVariableOf(id);
        ASSERT_TRUE(startsWith(label, head + ".")) << id << ": " << label;
        std::string rest = label.substr(head.size() + 1);

        // The console/floor selectors carry a remark after their legend.
        const std::string remark = " (measured)";
        const bool consoleFloor = (id >= 594 && id <= 599);
        if (consoleFloor) {
            ASSERT_GE(rest.size(), remark.size()) << id;
            EXPECT_EQ(rest.substr(rest.size() - remark.size()), remark) << id;
            rest.resize(rest.size() - remark.size());
        }
        const std::size_t open = rest.rfind(" [");
        ASSERT_NE(open, std::string::npos) << id << ": " << label;
        const std::string description = rest.substr(0, open);
        const std::vector<std::string> items = legendItems(rest.substr(open + 1));
        EXPECT_FALSE(description.empty()) << id;
        EXPECT_NE(description.front(), ' ') << id;
        EXPECT_NE(description.back(), ' ') << id;
        const int32_t groupSize = groupSizeOf(id);
        EXPECT_EQ(items.size(), static_cast<std::size_t>(groupSize > 0 ? groupSize : 2))
            << id << ": " << label;
    }
}

TEST(DigitalInputList, LegendsOfOneVariableSignals) {
    EXPECT_EQ(labelOf(3), "S_ASP_ADF_1_REC.ASP ADF 1 [0:Off, 1:Pushed]");
    EXPECT_EQ(labelOf(4), "S_ASP_ADF_1_REC_LATCH.ASP ADF 1 latch [0:Off, 1:On]");
    EXPECT_EQ(labelOf(9), "S_ASP_CAB_SEND.ASP CAB send [0:Normal, 1:Pushed]");
    EXPECT_EQ(labelOf(424), "S_DISPLAY_POWER_CI.Display power capt inboard [0:On, 1:Off]");
    EXPECT_EQ(labelOf(430), "S_DOORS_COCKPIT.Cockpit door position [0:Closed, 1:Open]");
    EXPECT_EQ(labelOf(486), "S_FCU_EFIS1_BARO_MODE.EFIS Capt baro mode [0:inHg, 1:hPa]");
    EXPECT_EQ(labelOf(562), "S_IOS_ELEC_EXTERN_POWER.External power control [0:Off, 1:On]");
    EXPECT_EQ(labelOf(583), "S_MIP_GEAR.Landing gear lever [0:Down, 1:Up]");
    EXPECT_EQ(labelOf(605), "S_MIP_PARKING_BRAKE.Parking brake [0:Off, 1:On]");
    EXPECT_EQ(labelOf(676), "S_OH_EVAC_CAPT_PURSER.Evac capt & purser [0:Capt & Purser, 1:Capt]");
    EXPECT_EQ(labelOf(842), "S_PED_RMP1_POWER.RMP capt power [0:Off, 1:On]");
    EXPECT_EQ(labelOf(888), "S_STANDBY_ATTITUDE_CAGE.Standby attitude cage [0:Normal, 1:Pull]");
    EXPECT_EQ(labelOf(932), "S_WR_PRED_WS.Weather Radar PRED W/S [0:Auto, 1:Off]");
    EXPECT_EQ(labelOf(952), "S_XPDR_ATC.XPDR ATC sys [0:1, 1:2]");
    EXPECT_EQ(labelOf(594),
              "S_MIP_LIGHT_CONSOLEFLOOR_CAPT.Console/floor captain "
              "[0:Off, 1:Dim, 2:Bright] (measured)");
}

}  // namespace
}  // namespace fenixA320
