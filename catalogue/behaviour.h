// What input processing does with particular signals, by name: which inputs the writer keeps
// re-asserting, which keys a replay leaves out, and the dead band and conversion of each analog
// input. catalogue/behaviour.cpp turns the names into ids at compile time; a name that is no
// signal's stops the build.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "catalogue/signal_lists.h"

namespace fenixA320 {

// Inputs whose last value the aircraft must keep seeing: engine masters, speedbrake arming, gear
// and parking brake; throttles, speedbrake, flap lever and the lighting knobs; and the selectors
// that a flight reload would otherwise reset: engine mode, console/floor lights and dome light.
// Push/pull knobs are not held: re-sending their position would keep pushing them.
inline constexpr std::string_view kHeldDigitIns[] = {
    "S_MIP_PARKING_BRAKE", "S_FC_SPEEDBRAKE_ARMED", "S_ENG_MASTER_1", "S_ENG_MASTER_2",
    "S_MIP_GEAR",
};
inline constexpr std::string_view kHeldSwitches[] = {
    "S_ENG_MODE",
    "S_MIP_LIGHT_CONSOLEFLOOR_CAPT",
    "S_MIP_LIGHT_CONSOLEFLOOR_FO",
    "S_OH_INT_LT_DOME",
};
inline constexpr std::string_view kHeldAnalogIns[] = {
    "A_FC_SPEEDBRAKE",
    "FLAP",
    "A_FC_THROTTLE_LEFT_INPUT",
    "A_FC_THROTTLE_RIGHT_INPUT",
    "A_PED_LIGHTING_PEDESTAL",
    "A_MIP_LIGHTING_FLOOD_MAIN",
    "A_MIP_LIGHTING_FLOOD_PEDESTAL",
    "A_FCU_LIGHTING",
    "A_FCU_LIGHTING_TEXT",
    "A_OH_LIGHTING_READING_CAPT",
    "A_OH_LIGHTING_READING_FO",
    "A_OH_LIGHTING_OVD",
};

// Momentary action keys that a replay would press again: never remembered for replay.
inline constexpr std::string_view kReplayExcluded[] = {
    "S_ASP_RESET",
    "S_ASP2_RESET",
    "S_ASP3_RESET",
    "S_ASP4_RESET",
    "S_ECAM_CLR_LEFT",
    "S_ECAM_CLR_RIGHT",
    "S_ECAM_RCL",
    "S_FC_RUDDER_TRIM_RESET",
    "S_MIP_CHRONO_CAPT",
    "S_MIP_CHRONO_FO",
    "S_MIP_MASTER_CAUTION_CAPT",
    "S_MIP_MASTER_CAUTION_FO",
    "S_MIP_MASTER_WARNING_CAPT",
    "S_MIP_MASTER_WARNING_FO",
    "S_OH_ADIRS_KEY_CLR",
    "S_OH_APU_AUTOEXTING_RESET",
    "S_OH_ELEC_APU_START",
    "S_OH_FIRE_APU_AGENT",
    "S_OH_FIRE_APU_TEST",
    "S_OH_FIRE_ENG1_AGENT1",
    "S_OH_FIRE_ENG1_AGENT2",
    "S_OH_FIRE_ENG1_TEST",
    "S_OH_FIRE_ENG2_AGENT1",
    "S_OH_FIRE_ENG2_AGENT2",
    "S_OH_FIRE_ENG2_TEST",
    "S_OH_OXYGEN_TMR_RESET",
    "S_PED_ATC_CLR",
    "S_PURSER_EVAC_RESET",
    "S_XPDR_IDENT",
};

// How the raw value of an analog input becomes the value written.
enum class AnalogRule : int8_t {
    Raw,         // the value as reported
    Throttle,    // detent curve with snap; outside [-1, 1] rejected
    TrimWheel,   // thousandths, whole numbers; only while the trim motor is unpowered
    Axis,        // [-1, 1] onto [-1000, 1000]
    Speedbrake,  // depends on the armed switch
    FlapLever,   // turned into the five positions of the flap switch
    CargoTemp,   // 5..26 onto 0..1
    CabinTemp,   // 18..30 onto 0..1
};

// The dead-band records. An input is dropped when it is the one that passed its record last and
// moved less than the record's dead band since, so inputs that share a record (the throttle
// levers, the lighting knobs) never hold each other back. Spare serves no input.
enum class DeadBand : int8_t {
    None = -1,
    LandingElevation,
    Spare,
    CduBrightness,
    Lighting,
    LowerEcam,
    UpperEcam,
    AftCargoTemperature,
    FwdCabinTemperature,
    CockpitTemperature,
    AftCabinTemperature,
    Throttles,
    RadarTilt,
};
// clang-format off
inline constexpr double kDeadBands[] = {
    1.0,    // LandingElevation
    0.05,   // Spare
    0.05,   // CduBrightness
    0.01,   // Lighting: display brightness and lighting knobs
    0.01,   // LowerEcam
    0.01,   // UpperEcam
    0.5,    // AftCargoTemperature
    0.5,    // FwdCabinTemperature
    0.5,    // CockpitTemperature
    0.5,    // AftCabinTemperature
    0.005,  // Throttles
    0.5,    // RadarTilt
};
// clang-format on
inline constexpr std::size_t kDeadBandCount = std::size(kDeadBands);
static_assert(static_cast<std::size_t>(DeadBand::RadarTilt) + 1 == kDeadBandCount);

// The analog inputs that are not written raw or have a dead band, by the name analogIdOf takes
// (for the few written through the placeholder, the variable their label names, or their whole
// label). Every other analog input is written raw, without a dead band.
struct AnalogBehaviour {
    std::string_view name;
    AnalogRule rule;
    DeadBand deadBand;
};
// clang-format off
// analog input                        rule                     dead band
inline constexpr AnalogBehaviour kAnalogBehaviour[] = {
    {"A_CDU1_BRIGHTNESS",              AnalogRule::Raw,         DeadBand::CduBrightness},
    {"A_CDU2_BRIGHTNESS",              AnalogRule::Raw,         DeadBand::CduBrightness},
    {"A_DISPLAY_BRIGHTNESS_CI",        AnalogRule::Raw,         DeadBand::Lighting},
    {"A_DISPLAY_BRIGHTNESS_CI_OUTER",  AnalogRule::Raw,         DeadBand::Lighting},
    {"A_DISPLAY_BRIGHTNESS_CO",        AnalogRule::Raw,         DeadBand::Lighting},
    {"A_DISPLAY_BRIGHTNESS_ECAM_L",    AnalogRule::Raw,         DeadBand::LowerEcam},
    {"A_DISPLAY_BRIGHTNESS_ECAM_U",    AnalogRule::Raw,         DeadBand::UpperEcam},
    {"A_DISPLAY_BRIGHTNESS_FI",        AnalogRule::Raw,         DeadBand::Lighting},
    {"A_DISPLAY_BRIGHTNESS_FI_OUTER",  AnalogRule::Raw,         DeadBand::Lighting},
    {"A_DISPLAY_BRIGHTNESS_FO",        AnalogRule::Raw,         DeadBand::Lighting},
    {"N_FC_SIDESTICK_CAPT_PITCH",      AnalogRule::Axis,        DeadBand::None},
    {"N_FC_SIDESTICK_CAPT_BANK",       AnalogRule::Axis,        DeadBand::None},
    {"N_FC_RUDDER",                    AnalogRule::Axis,        DeadBand::None},
    {"N_FC_CAPT_TILLER",               AnalogRule::Axis,        DeadBand::None},
    {"A_FC_ELEVATOR_TRIM",             AnalogRule::TrimWheel,   DeadBand::None},
    {"N_FC_SIDESTICK_FO_PITCH",        AnalogRule::Axis,        DeadBand::None},
    {"N_FC_SIDESTICK_FO_BANK",         AnalogRule::Axis,        DeadBand::None},
    {"no use,bind N_FC_RUDDER",        AnalogRule::Axis,        DeadBand::None},
    {"N_FC_FO_TILLER",                 AnalogRule::Axis,        DeadBand::None},
    {"A_FC_SPEEDBRAKE",                AnalogRule::Speedbrake,  DeadBand::None},
    {"A_FC_THROTTLE_LEFT_INPUT",       AnalogRule::Throttle,    DeadBand::Throttles},
    {"A_FC_THROTTLE_RIGHT_INPUT",      AnalogRule::Throttle,    DeadBand::Throttles},
    {"A_FCU_LIGHTING",                 AnalogRule::Raw,         DeadBand::Lighting},
    {"A_FCU_LIGHTING_TEXT",            AnalogRule::Raw,         DeadBand::Lighting},
    {"A_MIP_LIGHTING_FLOOD_MAIN",      AnalogRule::Raw,         DeadBand::Lighting},
    {"A_MIP_LIGHTING_FLOOD_PEDESTAL",  AnalogRule::Raw,         DeadBand::Lighting},
    {"A_MIP_LIGHTING_MAP_L",           AnalogRule::Raw,         DeadBand::Lighting},
    {"A_MIP_LIGHTING_MAP_R",           AnalogRule::Raw,         DeadBand::Lighting},
    {"A_MIP_LOUDSPEAKER_CAPT",         AnalogRule::Raw,         DeadBand::Lighting},
    {"A_MIP_LOUDSPEAKER_FO",           AnalogRule::Raw,         DeadBand::Lighting},
    {"A_OH_LIGHTING_OVD",              AnalogRule::Raw,         DeadBand::Lighting},
    {"A_OH_LIGHTING_READING_CAPT",     AnalogRule::Raw,         DeadBand::Lighting},
    {"A_OH_LIGHTING_READING_FO",       AnalogRule::Raw,         DeadBand::Lighting},
    {"A_OH_PNEUMATIC_AFT_TEMP",        AnalogRule::CabinTemp,   DeadBand::AftCabinTemperature},
    {"A_OH_PNEUMATIC_CARGO_AFT_TEMP",  AnalogRule::CargoTemp,   DeadBand::AftCargoTemperature},
    {"A_OH_PNEUMATIC_COCKPIT_TEMP",    AnalogRule::CabinTemp,   DeadBand::CockpitTemperature},
    {"A_OH_PNEUMATIC_FWD_TEMP",        AnalogRule::CabinTemp,   DeadBand::FwdCabinTemperature},
    {"A_OH_PNEUMATIC_LDG_ELEV",        AnalogRule::Raw,         DeadBand::LandingElevation},
    {"A_PED_LIGHTING_PEDESTAL",        AnalogRule::Raw,         DeadBand::Lighting},
    {"A_WR_TILT",                      AnalogRule::Raw,         DeadBand::RadarTilt},
    {"FLAP",                           AnalogRule::FlapLever,   DeadBand::None},
};
// clang-format on

// The same facts by id, resolved at compile time in catalogue/behaviour.cpp.
extern const std::array<int32_t, std::size(kHeldDigitIns)> kHeldDigitInIds;
extern const std::array<int32_t, std::size(kHeldSwitches)> kHeldSwitchNumbers;
extern const std::array<int32_t, std::size(kHeldAnalogIns)> kHeldAnalogInIds;
extern const std::array<int32_t, std::size(kReplayExcluded)> kReplayExcludedIds;
extern const std::array<AnalogRule, kAnalogCount> kAnalogRuleOfId;
extern const std::array<DeadBand, kAnalogCount> kDeadBandOfId;

}  // namespace fenixA320
