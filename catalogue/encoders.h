// Rotary encoders the host can report.
#pragma once

#include "catalogue/signal_lists.h"

namespace fenixA320 {

// clang-format off
inline constexpr SignalEntry kEncoderRows[] = {
    SignalEntry{0, "Fenix NONE", "NO SIGNAL"},
    SignalEntry{1, "E_FCU_ALTITUDE", "FCU Altitude encoder"},
    SignalEntry{2, "E_FCU_EFIS1_BARO", "EFIS Capt baro"},
    SignalEntry{3, "E_FCU_EFIS2_BARO", "EFIS F/O baro"},
    SignalEntry{4, "E_FCU_HEADING", "FCU Heading encoder"},
    SignalEntry{5, "E_FCU_SPEED", "FCU Speed encoder"},
    SignalEntry{6, "E_FCU_VS", "FCU Vertical speed encoder"},
    SignalEntry{7, "E_MIP_CLOCK_SET", "Clock set encoder"},
    SignalEntry{8, "E_MIP_ISFD_BARO", "ISFD baro encoder"},
    SignalEntry{9, "E_MIP_TRAFFIC_CAPT", "Traffic Capt"},
    SignalEntry{10, "E_MIP_TRAFFIC_FO", "Traffic F/O"},
    SignalEntry{11, "E_PED_RMP1_INNER", "RMP capt inner shaft"},
    SignalEntry{12, "E_PED_RMP1_OUTER", "RMP capt outer shaft"},
    SignalEntry{13, "E_PED_RMP2_INNER", "RMP F/O inner shaft"},
    SignalEntry{14, "E_PED_RMP2_OUTER", "RMP F/O outer shaft"},
    SignalEntry{15, "E_PED_RMP3_INNER", "RMP OBS inner shaft"},
    SignalEntry{16, "E_PED_RMP3_OUTER", "RMP OBS outer shaft"},
    SignalEntry{17, "E_RADIO_ADF1_INNER", "Radio ADF1 inner shaft"},
    SignalEntry{18, "E_RADIO_ADF1_INNER_ACTIVE", "Radio ADF1 inner shafta ctive"},
    SignalEntry{19, "E_RADIO_ADF1_OUTER", "Radio ADF1 outer shaft"},
    SignalEntry{20, "E_RADIO_ADF1_OUTER_ACTIVE", "Radio ADF1 outer shaft active"},
    SignalEntry{21, "E_RADIO_ADF2_INNER", "RadioADF2innershaft"},
    SignalEntry{22, "E_RADIO_ADF2_INNER_ACTIVE", "Radio ADF2 inner shaft active"},
    SignalEntry{23, "E_RADIO_ADF2_OUTER", "Radio ADF2 outer shaft"},
    SignalEntry{24, "E_RADIO_ADF2_OUTER_ACTIVE", "Radio ADF2 outer shaft active"},
    SignalEntry{25, "E_RADIO_COM1_INNER", "Radio COM1 inner shaft"},
    SignalEntry{26, "E_RADIO_COM1_OUTER", "Radio COM1 outer shaft"},
    SignalEntry{27, "E_RADIO_COM2_INNER", "Radio COM2 inner shaft"},
    SignalEntry{28, "E_RADIO_COM2_OUTER", "Radio COM2 outer shaft"},
    SignalEntry{29, "E_RADIO_COM3_INNER", "Radio COM3 inner shaft"},
    SignalEntry{30, "E_RADIO_COM3_OUTER", "Radio COM3 outer shaft"},
    SignalEntry{31, "E_RADIO_ILS1_INNER", "Radio ILS1 inner shaft"},
    SignalEntry{32, "E_RADIO_ILS1_OUTER", "Radio ILS1 outer shaft"},
    SignalEntry{33, "E_RADIO_ILS2_INNER", "Radio ILS2 inner shaft"},
    SignalEntry{34, "E_RADIO_ILS2_OUTER", "Radio ILS2 outer shaft"},
    SignalEntry{35, "E_RADIO_NAV1_INNER", "Radio NAV1 inner shaft"},
    SignalEntry{36, "E_RADIO_NAV1_OUTER", "Radio NAV1 outer shaft"},
    SignalEntry{37, "E_RADIO_NAV2_INNER", "Radio NAV2 inner shaft"},
    SignalEntry{38, "E_RADIO_NAV2_OUTER", "Radio NAV2 outer shaft"},
    SignalEntry{39, "E_RADIO_XPDR_INNER_LEFT", "Radio XPDR inner  shaft left"},
    SignalEntry{40, "E_RADIO_XPDR_INNER_RIGHT", "Radio XPDR inner  shaft right"},
    SignalEntry{41, "E_RADIO_XPDR_OUTER_LEFT", "Radio XPDR outer  shaft left"},
    SignalEntry{42, "E_RADIO_XPDR_OUTER_RIGHT", "Radio XPDR outer  shaft right"},
    SignalEntry{43, "E_WR2_CAP_ELEV", "Weather Radar P2 Cap Elev"},
};
// clang-format on

static_assert(std::size(kEncoderRows) == kEncoderCount && idsAreDense(kEncoderRows));

// The id of the encoder whose variable is `variable`; no build for a name that no entry or
// several entries carry.
consteval int32_t encoderIdOf(std::string_view variable) { return idOf(kEncoderRows, variable); }

}  // namespace fenixA320
