// The multi-position switch table.
#include "input/switch_table.h"

namespace fenixA320 {

namespace {

constexpr bool kRest = true;
constexpr bool kNone = false;

// clang-format off
// key  first  n   positions of the contacts in id order              rest
constexpr std::array<SwitchRow, kSwitchCount> kRows{{
    {22,   22,  3, {0, 1, 2},                                        kNone},  // S_ASP_INTRAD
    {33,   36,  8, {0, 1, 2, 3, 4, 5, 6, 7},                         kNone},  // S_ASP_SEND_CHANNEL
    {68,   78,  3, {0, 1, 2},                                        kNone},  // S_ASP2_INTRAD
    {79,   92,  8, {0, 1, 2, 3, 4, 5, 6, 7},                         kNone},  // S_ASP2_SEND_CHANNEL
    {114, 134,  3, {0, 1, 2},                                        kNone},  // S_ASP3_INTRAD
    {125, 148,  8, {0, 1, 2, 3, 4, 5, 6, 7},                         kNone},  // S_ASP3_SEND_CHANNEL
    {160, 190,  3, {0, 1, 2},                                        kNone},  // S_ASP4_INTRAD
    {171, 204,  8, {0, 1, 2, 3, 4, 5, 6, 7},                         kNone},  // S_ASP4_SEND_CHANNEL
    {187, 227,  3, {0, 1, 2},                                        kNone},  // S_AUDIO_SWITCHING
    {342, 384,  3, {0, 1, 2},                                        kNone},  // S_DCDU1_DIM_BRT
    {354, 398,  3, {0, 1, 2},                                        kNone},  // S_DCDU2_DIM_BRT
    {364, 410,  3, {0, 1, 2},                                        kNone},  // S_DISPLAY_AIR_DATA
    {365, 413,  3, {0, 1, 2},                                        kNone},  // S_DISPLAY_ATT_HDG
    {366, 416,  3, {0, 1, 2},                                        kNone},  // S_DISPLAY_ECAM_ND_XFR
    {367, 419,  3, {0, 1, 2},                                        kNone},  // S_DISPLAY_EIS_DMC
    {397, 451,  3, {0, 1, 2},                                        kNone},  // S_ENG_MODE
    {404, 460,  5, {0, 1, 2, 3, 4},                                  kNone},  // S_FC_FLAPS
    {408, 468,  3, {1, 0, 2},                                        kNone},  // S_FC_RUDDER_TRIM
    {429, 499,  5, {0, 1, 2, 3, 4},                                  kNone},  // S_FCU_EFIS1_ND_MODE
    {442, 527,  5, {0, 1, 2, 3, 4},                                  kNone},  // S_FCU_EFIS2_ND_MODE
    {430, 504,  6, {0, 1, 2, 3, 4, 5},                               kNone},  // S_FCU_EFIS1_ND_ZOOM
    {443, 532,  6, {0, 1, 2, 3, 4, 5},                               kNone},  // S_FCU_EFIS2_ND_ZOOM
    {427, 493,  3, {1, 0, 2},                                        kRest},  // S_FCU_EFIS1_NAV1
    {428, 496,  3, {1, 0, 2},                                        kRest},  // S_FCU_EFIS1_NAV2
    {440, 521,  3, {1, 0, 2},                                        kRest},  // S_FCU_EFIS2_NAV1
    {441, 524,  3, {1, 0, 2},                                        kRest},  // S_FCU_EFIS2_NAV2
    {423, 487,  3, {0, -1, 1},                                       kNone},  // S_FCU_EFIS1_BARO_STD
    {436, 515,  3, {0, -1, 1},                                       kNone},  // S_FCU_EFIS2_BARO_STD
    {415, 477,  3, {0, -1, 1},                                       kNone},  // S_FCU_ALTITUDE
    {449, 543,  3, {0, -1, 1},                                       kNone},  // S_FCU_HEADING
    {453, 549,  3, {0, -1, 1},                                       kNone},  // S_FCU_SPEED
    {454, 552,  3, {0, -1, 1},                                       kNone},  // S_FCU_VERTICAL_SPEED
    {474, 574,  3, {0, 1, 2},                                        kNone},  // S_MIP_CLOCK_ET
    {477, 579,  3, {0, 1, 2},                                        kNone},  // S_MIP_CLOCK_UTC
    {490, 594,  3, {0, 2, 1},                                        kRest},  // S_MIP_LIGHT_CONSOLEFLOOR_CAPT
    {491, 597,  3, {0, 2, 1},                                        kRest},  // S_MIP_LIGHT_CONSOLEFLOOR_FO
    {500, 608,  3, {0, 1, 2},                                        kNone},  // S_MIP_TRAFFIC_CAPT
    {501, 611,  3, {0, 1, 2},                                        kNone},  // S_MIP_TRAFFIC_FO
    {508, 620,  3, {0, 1, 2},                                        kNone},  // S_MISC_WIPER_CAPT
    {509, 623,  3, {0, 1, 2},                                        kNone},  // S_MISC_WIPER_FO
    {532, 648,  3, {1, 2, 0},                                        kRest},  // S_OH_CARGO_DISC_1_OLD_LAYOUT
    {533, 651,  3, {1, 2, 0},                                        kRest},  // S_OH_CARGO_DISC_2_OLD_LAYOUT
    {560, 680,  3, {1, 2, 0},                                        kRest},  // S_OH_EXT_LT_LANDING_L
    {561, 683,  3, {1, 2, 0},                                        kRest},  // S_OH_EXT_LT_LANDING_R
    {562, 686,  3, {0, 1, 2},                                        kRest},  // S_OH_EXT_LT_NAV_LOGO
    {563, 689,  3, {0, 1, 2},                                        kRest},  // S_OH_EXT_LT_NOSE
    {565, 693,  3, {1, 2, 0},                                        kRest},  // S_OH_EXT_LT_STROBE
    {609, 739,  3, {1, 2, 0},                                        kRest},  // S_OH_IN_LT_ANN_LT
    {611, 743,  3, {2, 1, 0},                                        kRest},  // S_OH_INT_LT_DOME
    {612, 746,  3, {2, 1, 0},                                        kRest},  // S_OH_INT_LT_EMER
    {617, 753,  6, {0, 1, 2, 3, 4, 5},                               kNone},  // S_OH_NAV_DATA_DISP
    {618, 759,  3, {0, 1, 2},                                        kNone},  // S_OH_NAV_IR1_MODE
    {620, 763,  3, {0, 1, 2},                                        kNone},  // S_OH_NAV_IR2_MODE
    {622, 767,  3, {0, 1, 2},                                        kNone},  // S_OH_NAV_IR3_MODE
    {624, 771,  4, {0, 1, 2, 3},                                     kNone},  // S_OH_NAV_SYS_DISP
    {645, 795,  3, {0, 1, 2},                                        kNone},  // S_OH_PNEUMATIC_PACK_FLOW
    {646, 798,  3, {1, 2, 0},                                        kRest},  // S_OH_PNEUMATIC_PRESS_MAN
    {650, 804,  3, {0, 1, 2},                                        kNone},  // S_OH_PNEUMATIC_XBLEED_SELECTOR
    {655, 811,  3, {1, 2, 0},                                        kRest},  // S_OH_SIGNS
    {656, 814,  3, {1, 2, 0},                                        kRest},  // S_OH_SIGNS_SMOKING
    {671, 831,  3, {1, 2, 0},                                        kNone},  // S_PED_COCKPIT_DOOR
    {719, 881,  3, {0, 1, 2},                                        kNone},  // S_REFUEL_DECINC
    {725, 889,  4, {0, 1, 2, 3},                                     kNone},  // S_TCAS_HORIZONTAL_RANGE
    {726, 893,  4, {1, 2, 3, 0},                                     kNone},  // S_TCAS_RANGE
    {747, 917, 10, {-5, -4, -3, -2, -1, 0, 1, 2, 3, 4},              kNone},  // A_WR_GAIN
    {748, 927,  4, {1, 0, 3, 2},                                     kNone},  // S_WR_MODE
    {751, 933,  3, {1, 0, 2},                                        kNone},  // S_WR_SYS
    {762, 960,  3, {1, 0, 2},                                        kNone},  // S_WR_GCS
    {752, 936,  5, {0, 1, 2, 3, 4},                                  kNone},  // S_WR2_CAP_DISPLAY
    {753, 941,  5, {0, 1, 2, 3, 4},                                  kNone},  // S_WR2_FO_DISPLAY
    {756, 948,  3, {0, 1, 2},                                        kNone},  // S_WR2_WXR_PWS
    {760, 954,  3, {0, 1, 2},                                        kNone},  // S_XPDR_MODE
    {761, 957,  3, {1, 0, 2},                                        kNone},  // S_XPDR_OPERATION
}};
// clang-format on

constexpr bool rowsAreWellFormed() {
    for (const SwitchRow& row : kRows) {
        if (row.contactCount < 2 || row.contactCount > 10) return false;
        bool hasZero = false;
        for (int32_t i = 0; i < row.contactCount; ++i) hasZero = hasZero || row.positions[i] == 0;
        if (!hasZero) return false;
    }
    return true;
}
static_assert(rowsAreWellFormed(), "every switch needs two to ten contacts and a position 0");
static_assert(kRows[17].key == kRudderTrimSwitchKey && kRows[16].key == kFlapSwitchKey &&
              kRows[16].firstContact == kFlapFirstContact);

}  // namespace

const std::array<SwitchRow, kSwitchCount>& switchRows() { return kRows; }

}  // namespace fenixA320
