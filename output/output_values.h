// Read-only view of the received value arrays, and the signal ids the output side reads.
#pragma once

#include <atomic>
#include <cmath>
#include <cstdint>

namespace fenixA320 {

// Digital outputs whose values steer other outputs. For ids up to 494 the slot equals the id.
namespace digitOutId {
inline constexpr uint32_t kTrackFpaMode = 194;    // I_FCU_TRACK_FPA_MODE
inline constexpr uint32_t kRmp1Adf = 417;         // I_PED_RMP1_ADF
inline constexpr uint32_t kRmp1Ils = 422;         // I_PED_RMP1_ILS
inline constexpr uint32_t kRmp1Vor = 429;         // I_PED_RMP1_VOR
inline constexpr uint32_t kRmp2Adf = 430;         // I_PED_RMP2_ADF
inline constexpr uint32_t kRmp2Ils = 435;         // I_PED_RMP2_ILS
inline constexpr uint32_t kRmp2Vor = 442;         // I_PED_RMP2_VOR
inline constexpr uint32_t kTrimMotorPower = 471;  // B_FC_ELEVATOR_TRIM_MOTOR_POWER
inline constexpr uint32_t kEfis1BaroInch = 480;
inline constexpr uint32_t kEfis1BaroStd = 481;
inline constexpr uint32_t kEfis2BaroInch = 482;
inline constexpr uint32_t kEfis2BaroStd = 483;
inline constexpr uint32_t kHeadingDashed = 484;
inline constexpr uint32_t kFcuPower = 485;  // B_FCU_POWER
inline constexpr uint32_t kSpeedDashed = 486;
inline constexpr uint32_t kSpeedMach = 487;
inline constexpr uint32_t kVerticalSpeedDashed = 489;
inline constexpr uint32_t kRmp1DataActive = 490;   // B_PED_RMP1_DATA_DISPLAYED_ACT
inline constexpr uint32_t kRmp1DataStandby = 491;  // B_PED_RMP1_DATA_DISPLAYED_STDBY
inline constexpr uint32_t kRmp2DataActive = 492;
inline constexpr uint32_t kRmp2DataStandby = 493;
inline constexpr uint32_t kAnnLight = 494;  // S_OH_IN_LT_ANN_LT
}  // namespace digitOutId

// Displays; the slot of a display value equals its id.
namespace displayId {
inline constexpr uint32_t kBattery1Volts = 16;
inline constexpr uint32_t kBattery2Volts = 17;
inline constexpr uint32_t kElevatorTrim = 31;  // N_FC_ELEVATOR_TRIM
inline constexpr uint32_t kRudderTrim = 36;    // N_FC_RUDDER_TRIM_DECIMAL
inline constexpr uint32_t kAltitude = 46;
inline constexpr uint32_t kEfis1BaroHpa = 47;
inline constexpr uint32_t kEfis1BaroInch = 48;
inline constexpr uint32_t kEfis2BaroHpa = 49;
inline constexpr uint32_t kEfis2BaroInch = 50;
inline constexpr uint32_t kHeading = 51;
inline constexpr uint32_t kFcuLighting = 52;
inline constexpr uint32_t kFcuLightingText = 53;
inline constexpr uint32_t kSpeed = 54;
inline constexpr uint32_t kVerticalSpeed = 55;
inline constexpr uint32_t kXpdrStandby = 79;  // N_FREQ_STANDBY_XPDR_SELECTED
inline constexpr uint32_t kXpdr = 82;         // N_FREQ_XPDR_SELECTED
inline constexpr uint32_t kBrakeAccuPressure = 86;
inline constexpr uint32_t kBrakeLeftPressure = 87;
inline constexpr uint32_t kBrakeRightPressure = 88;
inline constexpr uint32_t kChrono = 92;
inline constexpr uint32_t kElapsed = 93;
inline constexpr uint32_t kClockMode = 94;
inline constexpr uint32_t kClock = 95;
inline constexpr uint32_t kFloodMain = 99;
inline constexpr uint32_t kFloodPedestal = 101;
inline constexpr uint32_t kMapLeft = 104;
inline constexpr uint32_t kMapRight = 105;
inline constexpr uint32_t kOverheadLighting = 121;
inline constexpr uint32_t kReadingCapt = 122;
inline constexpr uint32_t kReadingFo = 123;
inline constexpr uint32_t kPedestalLighting = 126;
inline constexpr uint32_t kRmp1Active = 127;
inline constexpr uint32_t kRmp1Standby = 128;
inline constexpr uint32_t kRmp2Active = 129;
inline constexpr uint32_t kRmp2Standby = 130;
inline constexpr uint32_t kXpdrDigits = 133;  // N_PED_XPDR_CHAR_DISPLAYED
inline constexpr uint32_t kConsoleFloorCapt = 141;
inline constexpr uint32_t kConsoleFloorFo = 142;
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
