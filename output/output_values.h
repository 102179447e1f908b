// Read-only view of the received value arrays, and the signal ids the output side reads, looked
// up by name in the catalogue.
#pragma once

#include <atomic>
#include <cmath>
#include <cstdint>
#include <string_view>

#include "catalogue/digital_outputs.h"
#include "catalogue/displays.h"

namespace fenixA320 {

// Digital outputs whose values steer other outputs. For ids up to 494 the slot equals the id.
namespace digitOutId {
consteval uint32_t named(std::string_view variable) {
    return static_cast<uint32_t>(digitOutIdOf(variable));
}
inline constexpr uint32_t kTrackFpaMode = named("I_FCU_TRACK_FPA_MODE");
inline constexpr uint32_t kRmp1Adf = named("I_PED_RMP1_ADF");
inline constexpr uint32_t kRmp1Ils = named("I_PED_RMP1_ILS");
inline constexpr uint32_t kRmp1Vor = named("I_PED_RMP1_VOR");
inline constexpr uint32_t kRmp2Adf = named("I_PED_RMP2_ADF");
inline constexpr uint32_t kRmp2Ils = named("I_PED_RMP2_ILS");
inline constexpr uint32_t kRmp2Vor = named("I_PED_RMP2_VOR");
inline constexpr uint32_t kTrimMotorPower = named("B_FC_ELEVATOR_TRIM_MOTOR_POWER");
inline constexpr uint32_t kEfis1BaroInch = named("B_FCU_EFIS1_BARO_INCH");
inline constexpr uint32_t kEfis1BaroStd = named("B_FCU_EFIS1_BARO_STD");
inline constexpr uint32_t kEfis2BaroInch = named("B_FCU_EFIS2_BARO_INCH");
inline constexpr uint32_t kEfis2BaroStd = named("B_FCU_EFIS2_BARO_STD");
inline constexpr uint32_t kHeadingDashed = named("B_FCU_HEADING_DASHED");
inline constexpr uint32_t kFcuPower = named("B_FCU_POWER");
inline constexpr uint32_t kSpeedDashed = named("B_FCU_SPEED_DASHED");
inline constexpr uint32_t kSpeedMach = named("B_FCU_SPEED_MACH");
inline constexpr uint32_t kVerticalSpeedDashed = named("B_FCU_VERTICALSPEED_DASHED");
inline constexpr uint32_t kRmp1DataActive = named("B_PED_RMP1_DATA_DISPLAYED_ACT");
inline constexpr uint32_t kRmp1DataStandby = named("B_PED_RMP1_DATA_DISPLAYED_STDBY");
inline constexpr uint32_t kRmp2DataActive = named("B_PED_RMP2_DATA_DISPLAYED_ACT");
inline constexpr uint32_t kRmp2DataStandby = named("B_PED_RMP2_DATA_DISPLAYED_STDBY");
inline constexpr uint32_t kAnnLight = named("S_OH_IN_LT_ANN_LT");
}  // namespace digitOutId

// Displays; the slot of a display value equals its id.
namespace displayId {
consteval uint32_t named(std::string_view variable) {
    return static_cast<uint32_t>(displayIdOf(variable));
}
inline constexpr uint32_t kBattery1Volts = named("N_ELEC_VOLT_BAT_1");
inline constexpr uint32_t kBattery2Volts = named("N_ELEC_VOLT_BAT_2");
inline constexpr uint32_t kElevatorTrim = named("N_FC_ELEVATOR_TRIM");
inline constexpr uint32_t kRudderTrim = named("N_FC_RUDDER_TRIM_DECIMAL");
inline constexpr uint32_t kAltitude = named("N_FCU_ALTITUDE");
inline constexpr uint32_t kEfis1BaroHpa = named("N_FCU_EFIS1_BARO_HPA");
inline constexpr uint32_t kEfis1BaroInch = named("N_FCU_EFIS1_BARO_INCH");
inline constexpr uint32_t kEfis2BaroHpa = named("N_FCU_EFIS2_BARO_HPA");
inline constexpr uint32_t kEfis2BaroInch = named("N_FCU_EFIS2_BARO_INCH");
inline constexpr uint32_t kHeading = named("N_FCU_HEADING");
inline constexpr uint32_t kFcuLighting = named("N_FCU_LIGHTING");
inline constexpr uint32_t kFcuLightingText = named("N_FCU_LIGHTING_TEXT");
inline constexpr uint32_t kSpeed = named("N_FCU_SPEED");
inline constexpr uint32_t kVerticalSpeed = named("N_FCU_VS");
inline constexpr uint32_t kXpdrStandby = named("N_FREQ_STANDBY_XPDR_SELECTED");
inline constexpr uint32_t kXpdr = named("N_FREQ_XPDR_SELECTED");
inline constexpr uint32_t kBrakeAccuPressure = named("N_HYD_PRESSURE_BRAKE_ACCU");
inline constexpr uint32_t kBrakeLeftPressure = named("N_HYD_PRESSURE_BRAKE_LEFT");
inline constexpr uint32_t kBrakeRightPressure = named("N_HYD_PRESSURE_BRAKE_RIGHT");
inline constexpr uint32_t kChrono = named("N_MIP_CLOCK_CHRONO");
inline constexpr uint32_t kElapsed = named("N_MIP_CLOCK_ELAPSED");
inline constexpr uint32_t kClockMode = named("N_MIP_CLOCK_MODE");
inline constexpr uint32_t kClock = named("N_MIP_CLOCK_UTC");
inline constexpr uint32_t kFloodMain = named("A_MIP_LIGHTING_FLOOD_MAIN");
inline constexpr uint32_t kFloodPedestal = named("A_MIP_LIGHTING_FLOOD_PEDESTAL");
inline constexpr uint32_t kMapLeft = named("A_MIP_LIGHTING_MAP_L");
inline constexpr uint32_t kMapRight = named("A_MIP_LIGHTING_MAP_R");
inline constexpr uint32_t kOverheadLighting = named("N_OH_LIGHTING_OVD");
inline constexpr uint32_t kReadingCapt = named("A_OH_LIGHTING_READING_CAPT");
inline constexpr uint32_t kReadingFo = named("A_OH_LIGHTING_READING_FO");
inline constexpr uint32_t kPedestalLighting = named("N_PED_LIGHTING_PEDESTAL");
inline constexpr uint32_t kRmp1Active = named("N_PED_RMP1_ACTIVE");
inline constexpr uint32_t kRmp1Standby = named("N_PED_RMP1_STDBY");
inline constexpr uint32_t kRmp2Active = named("N_PED_RMP2_ACTIVE");
inline constexpr uint32_t kRmp2Standby = named("N_PED_RMP2_STDBY");
inline constexpr uint32_t kXpdrDigits = named("N_PED_XPDR_CHAR_DISPLAYED");
inline constexpr uint32_t kConsoleFloorCapt = named("S_MIP_LIGHT_CONSOLEFLOOR_CAPT");
inline constexpr uint32_t kConsoleFloorFo = named("S_MIP_LIGHT_CONSOLEFLOOR_FO");
}  // namespace displayId

// A display value that is not finite or beyond 1e9 in magnitude is shown as 0.0.
inline double displayRange(double v) { return std::isfinite(v) && std::fabs(v) <= 1e9 ? v : 0.0; }

// The received arrays as the output side reads them: one relaxed load per value, because the
// dispatch thread writes them while a cycle runs.
struct OutputValues {
    const std::atomic<double>* digitOut;  // slot = id for ids 0..494
    const std::atomic<double>* display;   // slot = id

    double digit(uint32_t id) const { return digitOut[id].load(std::memory_order_relaxed); }
    double displayValue(uint32_t id) const { return display[id].load(std::memory_order_relaxed); }
    bool isSet(uint32_t id) const { return digit(id) != 0.0; }  // NaN counts as set

    // The cockpit has power.
    bool fcuPowered() const { return isSet(digitOutId::kFcuPower); }
    // The ANN LT switch is in TEST.
    bool annTest() const { return digit(digitOutId::kAnnLight) == 2.0; }
};

}  // namespace fenixA320
