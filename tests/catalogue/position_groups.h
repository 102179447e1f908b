// The multi-position switches of the digital-input list, typed out apart from the catalogue code,
// for the list and binding tests.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace fenixA320::catalogue_test {

inline bool startsWith(std::string_view s, std::string_view prefix) {
    return s.substr(0, prefix.size()) == prefix;
}

// One switch in the slot order of switchVarBindings: its data-definition id (which the input
// side's switch table uses as key), the variable its binding writes, and its position ids.
struct SwitchRow {
    int32_t defineId;
    const char* variable;
    int32_t first;
    int32_t last;
};

inline const std::vector<SwitchRow>& switchRows() {
    static const std::vector<SwitchRow> rows{
        {22, "S_ASP_INTRAD", 22, 24},
        {33, "S_ASP_SEND_CHANNEL", 35, 43},
        {68, "S_ASP2_INTRAD", 78, 80},
        {79, "S_ASP2_SEND_CHANNEL", 91, 99},
        {114, "S_ASP3_INTRAD", 134, 136},
        {125, "S_ASP3_SEND_CHANNEL", 147, 155},
        {160, "S_ASP4_INTRAD", 190, 192},
        {171, "S_ASP4_SEND_CHANNEL", 203, 211},
        {187, "S_AUDIO_SWITCHING", 227, 229},
        {342, "S_DCDU1_DIM_BRT", 384, 386},
        {354, "S_DCDU2_DIM_BRT", 398, 400},
        {364, "S_DISPLAY_AIR_DATA", 410, 412},
        {365, "S_DISPLAY_ATT_HDG", 413, 415},
        {366, "S_DISPLAY_ECAM_ND_XFR", 416, 418},
        {367, "S_DISPLAY_EIS_DMC", 419, 421},
        {397, "S_ENG_MODE", 451, 453},
        {404, "S_FC_FLAPS", 460, 464},
        {408, "S_FC_RUDDER_TRIM", 468, 470},
        {429, "S_FCU_EFIS1_ND_MODE", 499, 503},
        {430, "S_FCU_EFIS1_ND_ZOOM", 504, 509},
        {442, "S_FCU_EFIS2_ND_MODE", 527, 531},
        {443, "S_FCU_EFIS2_ND_ZOOM", 532, 537},
        {427, "S_FCU_EFIS1_NAV1", 493, 495},
        {428, "S_FCU_EFIS1_NAV2", 496, 498},
        {440, "S_FCU_EFIS2_NAV1", 521, 523},
        {441, "S_FCU_EFIS2_NAV2", 524, 526},
        {423, "S_FCU_EFIS1_BARO_STD", 487, 489},
        {436, "S_FCU_EFIS2_BARO_STD", 515, 517},
        {415, "S_FCU_ALTITUDE", 477, 479},
        {449, "S_FCU_HEADING", 543, 545},
        {453, "S_FCU_SPEED", 549, 551},
        {454, "S_FCU_VERTICAL_SPEED", 552, 554},
        {474, "S_MIP_CLOCK_ET", 574, 576},
        {477, "S_MIP_CLOCK_UTC", 579, 581},
        {490, "S_MIP_LIGHT_CONSOLEFLOOR_CAPT", 594, 596},
        {491, "S_MIP_LIGHT_CONSOLEFLOOR_FO", 597, 599},
        {500, "S_MIP_TRAFFIC_CAPT", 608, 610},
        {501, "S_MIP_TRAFFIC_FO", 611, 613},
        {508, "S_MISC_WIPER_CAPT", 620, 622},
        {509, "S_MISC_WIPER_FO", 623, 625},
        {532, "S_OH_CARGO_DISC_1_OLD_LAYOUT", 648, 650},
        {533, "S_OH_CARGO_DISC_2_OLD_LAYOUT", 651, 653},
        {560, "S_OH_EXT_LT_LANDING_L", 680, 682},
        {561, "S_OH_EXT_LT_LANDING_R", 683, 685},
        {562, "S_OH_EXT_LT_NAV_LOGO", 686, 688},
        {563, "S_OH_EXT_LT_NOSE", 689, 691},
        {565, "S_OH_EXT_LT_STROBE", 693, 695},
        {609, "S_OH_IN_LT_ANN_LT", 739, 741},
        {611, "S_OH_INT_LT_DOME", 743, 745},
        {612, "S_OH_INT_LT_EMER", 746, 748},
        {617, "S_OH_NAV_DATA_DISP", 753, 758},
        {618, "S_OH_NAV_IR1_MODE", 759, 761},
        {620, "S_OH_NAV_IR2_MODE", 763, 765},
        {622, "S_OH_NAV_IR3_MODE", 767, 769},
        {624, "S_OH_NAV_SYS_DISP", 771, 774},
        {645, "S_OH_PNEUMATIC_PACK_FLOW", 795, 797},
        {646, "S_OH_PNEUMATIC_PRESS_MAN", 798, 800},
        {650, "S_OH_PNEUMATIC_XBLEED_SELECTOR", 804, 806},
        {655, "S_OH_SIGNS", 811, 813},
        {656, "S_OH_SIGNS_SMOKING", 814, 816},
        {671, "S_PED_COCKPIT_DOOR", 831, 833},
        {719, "S_REFUEL_DECINC", 881, 883},
        {725, "S_TCAS_HORIZONTAL_RANGE", 889, 892},
        {726, "S_TCAS_RANGE", 893, 896},
        {747, "A_WR_GAIN", 917, 926},  // the gain switch drives the analog gain variable
        {748, "S_WR_MODE", 927, 930},
        {751, "S_WR_SYS", 933, 935},
        {762, "S_WR_GCS", 960, 962},
        {752, "S_WR2_CAP_DISPLAY", 936, 940},
        {753, "S_WR2_FO_DISPLAY", 941, 945},
        {756, "S_WR2_WXR_PWS", 948, 950},
        {760, "S_XPDR_MODE", 954, 956},
        {761, "S_XPDR_OPERATION", 957, 959},
    };
    return rows;
}

// Number of positions of the switch holding digital input `id`; 0 outside the switches.
inline int32_t groupSizeOf(int32_t id) {
    for (const SwitchRow& r : switchRows()) {
        if (id >= r.first && id <= r.last) return r.last - r.first + 1;
    }
    return 0;
}

}  // namespace fenixA320::catalogue_test
