// The multi-position switches: one digital input per position, one variable per switch. This is
// their only description: the switch-variable bindings, the input side's switch objects and the
// catalogue's checks all derive from it.
#pragma once

#include <array>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "catalogue/digital_inputs.h"

namespace fenixA320 {

// A position whose digital input no contact of the switch listens to (the "None" of the channel
// selectors): it has its id and its place in the legend, but closing it changes nothing.
inline constexpr int8_t kNoContact = INT8_MIN;
inline constexpr bool kRestsAtOne = true;  // reports position 1 when every contact is open
inline constexpr bool kNoRestPosition = false;

struct PositionSwitchRow {
    // The switch variable. Its positions are the digital inputs that follow each other from the
    // first one named after it (the variable itself, or the variable, '_' and a position token).
    std::string_view variable;
    int32_t positionCount;
    std::array<int8_t, 10> values;  // what each position writes into the variable, in id order
    bool restsAtOne;
    std::string_view writes = {};  // the variable written when it is not `variable`
};

// In the slot order of switchVarBindings.
// clang-format off
// switch variable                     n   value of each position, in id order   rest
inline constexpr PositionSwitchRow kPositionSwitches[] = {
    {"S_ASP_INTRAD",                   3,  {0, 1, 2},                            kNoRestPosition},
    {"S_ASP_SEND_CHANNEL",             9,  {kNoContact, 0, 1, 2, 3, 4, 5, 6, 7}, kNoRestPosition},
    {"S_ASP2_INTRAD",                  3,  {0, 1, 2},                            kNoRestPosition},
    {"S_ASP2_SEND_CHANNEL",            9,  {kNoContact, 0, 1, 2, 3, 4, 5, 6, 7}, kNoRestPosition},
    {"S_ASP3_INTRAD",                  3,  {0, 1, 2},                            kNoRestPosition},
    {"S_ASP3_SEND_CHANNEL",            9,  {kNoContact, 0, 1, 2, 3, 4, 5, 6, 7}, kNoRestPosition},
    {"S_ASP4_INTRAD",                  3,  {0, 1, 2},                            kNoRestPosition},
    {"S_ASP4_SEND_CHANNEL",            9,  {kNoContact, 0, 1, 2, 3, 4, 5, 6, 7}, kNoRestPosition},
    {"S_AUDIO_SWITCHING",              3,  {0, 1, 2},                            kNoRestPosition},
    {"S_DCDU1_DIM_BRT",                3,  {0, 1, 2},                            kNoRestPosition},
    {"S_DCDU2_DIM_BRT",                3,  {0, 1, 2},                            kNoRestPosition},
    {"S_DISPLAY_AIR_DATA",             3,  {0, 1, 2},                            kNoRestPosition},
    {"S_DISPLAY_ATT_HDG",              3,  {0, 1, 2},                            kNoRestPosition},
    {"S_DISPLAY_ECAM_ND_XFR",          3,  {0, 1, 2},                            kNoRestPosition},
    {"S_DISPLAY_EIS_DMC",              3,  {0, 1, 2},                            kNoRestPosition},
    {"S_ENG_MODE",                     3,  {0, 1, 2},                            kNoRestPosition},
    {"S_FC_FLAPS",                     5,  {0, 1, 2, 3, 4},                      kNoRestPosition},
    {"S_FC_RUDDER_TRIM",               3,  {1, 0, 2},                            kNoRestPosition},
    {"S_FCU_EFIS1_ND_MODE",            5,  {0, 1, 2, 3, 4},                      kNoRestPosition},
    {"S_FCU_EFIS1_ND_ZOOM",            6,  {0, 1, 2, 3, 4, 5},                   kNoRestPosition},
    {"S_FCU_EFIS2_ND_MODE",            5,  {0, 1, 2, 3, 4},                      kNoRestPosition},
    {"S_FCU_EFIS2_ND_ZOOM",            6,  {0, 1, 2, 3, 4, 5},                   kNoRestPosition},
    {"S_FCU_EFIS1_NAV1",               3,  {1, 0, 2},                            kRestsAtOne},
    {"S_FCU_EFIS1_NAV2",               3,  {1, 0, 2},                            kRestsAtOne},
    {"S_FCU_EFIS2_NAV1",               3,  {1, 0, 2},                            kRestsAtOne},
    {"S_FCU_EFIS2_NAV2",               3,  {1, 0, 2},                            kRestsAtOne},
    {"S_FCU_EFIS1_BARO_STD",           3,  {0, -1, 1},                           kNoRestPosition},
    {"S_FCU_EFIS2_BARO_STD",           3,  {0, -1, 1},                           kNoRestPosition},
    {"S_FCU_ALTITUDE",                 3,  {0, -1, 1},                           kNoRestPosition},
    {"S_FCU_HEADING",                  3,  {0, -1, 1},                           kNoRestPosition},
    {"S_FCU_SPEED",                    3,  {0, -1, 1},                           kNoRestPosition},
    {"S_FCU_VERTICAL_SPEED",           3,  {0, -1, 1},                           kNoRestPosition},
    {"S_MIP_CLOCK_ET",                 3,  {0, 1, 2},                            kNoRestPosition},
    {"S_MIP_CLOCK_UTC",                3,  {0, 1, 2},                            kNoRestPosition},
    {"S_MIP_LIGHT_CONSOLEFLOOR_CAPT",  3,  {0, 2, 1},                            kRestsAtOne},
    {"S_MIP_LIGHT_CONSOLEFLOOR_FO",    3,  {0, 2, 1},                            kRestsAtOne},
    {"S_MIP_TRAFFIC_CAPT",             3,  {0, 1, 2},                            kNoRestPosition},
    {"S_MIP_TRAFFIC_FO",               3,  {0, 1, 2},                            kNoRestPosition},
    {"S_MISC_WIPER_CAPT",              3,  {0, 1, 2},                            kNoRestPosition},
    {"S_MISC_WIPER_FO",                3,  {0, 1, 2},                            kNoRestPosition},
    {"S_OH_CARGO_DISC_1_OLD_LAYOUT",   3,  {1, 2, 0},                            kRestsAtOne},
    {"S_OH_CARGO_DISC_2_OLD_LAYOUT",   3,  {1, 2, 0},                            kRestsAtOne},
    {"S_OH_EXT_LT_LANDING_L",          3,  {1, 2, 0},                            kRestsAtOne},
    {"S_OH_EXT_LT_LANDING_R",          3,  {1, 2, 0},                            kRestsAtOne},
    {"S_OH_EXT_LT_NAV_LOGO",           3,  {0, 1, 2},                            kRestsAtOne},
    {"S_OH_EXT_LT_NOSE",               3,  {0, 1, 2},                            kRestsAtOne},
    {"S_OH_EXT_LT_STROBE",             3,  {1, 2, 0},                            kRestsAtOne},
    {"S_OH_IN_LT_ANN_LT",              3,  {1, 2, 0},                            kRestsAtOne},
    {"S_OH_INT_LT_DOME",               3,  {2, 1, 0},                            kRestsAtOne},
    {"S_OH_INT_LT_EMER",               3,  {2, 1, 0},                            kRestsAtOne},
    {"S_OH_NAV_DATA_DISP",             6,  {0, 1, 2, 3, 4, 5},                   kNoRestPosition},
    {"S_OH_NAV_IR1_MODE",              3,  {0, 1, 2},                            kNoRestPosition},
    {"S_OH_NAV_IR2_MODE",              3,  {0, 1, 2},                            kNoRestPosition},
    {"S_OH_NAV_IR3_MODE",              3,  {0, 1, 2},                            kNoRestPosition},
    {"S_OH_NAV_SYS_DISP",              4,  {0, 1, 2, 3},                         kNoRestPosition},
    {"S_OH_PNEUMATIC_PACK_FLOW",       3,  {0, 1, 2},                            kNoRestPosition},
    {"S_OH_PNEUMATIC_PRESS_MAN",       3,  {1, 2, 0},                            kRestsAtOne},
    {"S_OH_PNEUMATIC_XBLEED_SELECTOR", 3,  {0, 1, 2},                            kNoRestPosition},
    {"S_OH_SIGNS",                     3,  {1, 2, 0},                            kRestsAtOne},
    {"S_OH_SIGNS_SMOKING",             3,  {1, 2, 0},                            kRestsAtOne},
    {"S_PED_COCKPIT_DOOR",             3,  {1, 2, 0},                            kNoRestPosition},
    {"S_REFUEL_DECINC",                3,  {0, 1, 2},                            kNoRestPosition},
    {"S_TCAS_HORIZONTAL_RANGE",        4,  {0, 1, 2, 3},                         kNoRestPosition},
    {"S_TCAS_RANGE",                   4,  {1, 2, 3, 0},                         kNoRestPosition},
    {"S_WR_GAIN",                      10, {-5, -4, -3, -2, -1, 0, 1, 2, 3, 4},  kNoRestPosition, "A_WR_GAIN"},
    {"S_WR_MODE",                      4,  {1, 0, 3, 2},                         kNoRestPosition},
    {"S_WR_SYS",                       3,  {1, 0, 2},                            kNoRestPosition},
    {"S_WR_GCS",                       3,  {1, 0, 2},                            kNoRestPosition},
    {"S_WR2_CAP_DISPLAY",              5,  {0, 1, 2, 3, 4},                      kNoRestPosition},
    {"S_WR2_FO_DISPLAY",               5,  {0, 1, 2, 3, 4},                      kNoRestPosition},
    {"S_WR2_WXR_PWS",                  3,  {0, 1, 2},                            kNoRestPosition},
    {"S_XPDR_MODE",                    3,  {0, 1, 2},                            kNoRestPosition},
    {"S_XPDR_OPERATION",               3,  {1, 0, 2},                            kNoRestPosition},
};
// clang-format on

inline constexpr std::size_t kPositionSwitchCount = std::size(kPositionSwitches);
static_assert(kPositionSwitchCount == 73);

// Where a switch's positions stand in the digital-input list, and the number of its variable.
struct PositionGroup {
    int32_t first;   // id of the first position
    int32_t count;   // positions, consecutive ids from `first`
    int32_t number;  // variable number: the switch's data-definition id and its key
};

// The name of a position of `switchVariable`. Compared by hand: this runs for every switch over
// the whole list at compile time, where the library's comparisons cost many times the steps.
constexpr bool namesPositionOf(std::string_view name, std::string_view switchVariable) {
    if (name.size() < switchVariable.size()) return false;
    for (std::size_t i = 0; i < switchVariable.size(); ++i) {
        if (name[i] != switchVariable[i]) return false;
    }
    return name.size() == switchVariable.size() || name[switchVariable.size()] == '_';
}

// Variable numbers count the distinct switch variables of the digital-input list in id order,
// all positions of a switch counting once: an id's number is the id less the positions of
// earlier switches beyond their first.
template <std::size_t N>
constexpr int32_t numberAt(int32_t id, const std::array<PositionGroup, N>& groups) {
    int32_t number = id;
    for (const PositionGroup& g : groups) {
        if (g.first < id) number -= g.count - 1;
    }
    return number;
}

// The id of the first position of `switchVariable` (constexpr, not consteval: clang 14 rejects
// an immediate call in a variable template).
constexpr int32_t firstPositionOf(std::string_view switchVariable) {
    for (const SignalEntry& e : kDigitInRows) {
        if (e.id > 0 && namesPositionOf(e.variable, switchVariable)) return e.id;
    }
    signalNameIsUnknownOrShared();
    return 0;
}

// One constant per switch, so that each search is a constant evaluation of its own and stays
// within the compilers' step limits.
template <std::size_t I>
inline constexpr int32_t kFirstPosition = firstPositionOf(kPositionSwitches[I].variable);

template <std::size_t... I>
consteval std::array<PositionGroup, kPositionSwitchCount> locatePositionGroups(
    std::index_sequence<I...> /*switches*/) {
    std::array<PositionGroup, kPositionSwitchCount> groups{
        PositionGroup{kFirstPosition<I>, kPositionSwitches[I].positionCount, 0}...};
    for (PositionGroup& g : groups) g.number = numberAt(g.first, groups);
    return groups;
}

// Row i describes the switch of kPositionSwitches[i].
inline constexpr std::array<PositionGroup, kPositionSwitchCount> kPositionGroups =
    locatePositionGroups(std::make_index_sequence<kPositionSwitchCount>{});

// The order in which the input side holds and feeds the switches, and so the order in which a
// replay writes them: the rows above, except that both ND mode selectors come before both ND
// zoom selectors.
consteval std::array<std::size_t, kPositionSwitchCount> feedOrder() {
    std::array<std::size_t, kPositionSwitchCount> order{};
    std::size_t efis1Zoom = 0;
    std::size_t efis2Mode = 0;
    for (std::size_t i = 0; i < kPositionSwitchCount; ++i) {
        order[i] = i;
        if (kPositionSwitches[i].variable == "S_FCU_EFIS1_ND_ZOOM") efis1Zoom = i;
        if (kPositionSwitches[i].variable == "S_FCU_EFIS2_ND_MODE") efis2Mode = i;
    }
    order[efis1Zoom] = efis2Mode;
    order[efis2Mode] = efis1Zoom;
    return order;
}
inline constexpr std::array<std::size_t, kPositionSwitchCount> kPositionSwitchFeedOrder =
    feedOrder();

// The position group that holds digital input `id`, or nullptr.
constexpr const PositionGroup* positionGroupOf(int32_t id) {
    for (const PositionGroup& g : kPositionGroups) {
        if (id >= g.first && id < g.first + g.count) return &g;
    }
    return nullptr;
}

// The number of a switch variable, or of the variable of a one-variable digital input; no build
// for any other name (a position's, a shared one's).
consteval int32_t variableNumberOf(std::string_view variable) {
    for (std::size_t i = 0; i < kPositionSwitchCount; ++i) {
        if (kPositionSwitches[i].variable == variable) return kPositionGroups[i].number;
    }
    const int32_t id = digitInIdOf(variable);
    if (id == 0 || positionGroupOf(id) != nullptr) signalNameIsUnknownOrShared();
    return numberAt(id, kPositionGroups);
}

}  // namespace fenixA320
