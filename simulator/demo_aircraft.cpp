// The demo aircraft's systems model and its real-time frame loop on the simulator stand-in.
#include "simulator/demo_aircraft.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace helmbridge::demo {
namespace {

constexpr int kMinSpeed = 100;
constexpr int kMaxSpeed = 399;
constexpr int kMinAltitude = 100;
constexpr int kMaxAltitude = 49000;
constexpr int kMaxVerticalSpeed = 6000;
constexpr double kMinTrim = -4.0;
constexpr double kMaxTrim = 13.5;

// Moves `value` towards `target` by at most `step`.
double approach(double value, double target, double step) {
    if (value < target) return std::min(value + step, target);
    return std::max(value - step, target);
}

}  // namespace

DemoAircraft::DemoAircraft(const StandinApi& api) : api_(api) {}

double DemoAircraft::read(const char* name) const {
    double value = 0.0;
    api_.getLVar(name, &value);  // a variable nobody wrote yet reads 0
    return value;
}

void DemoAircraft::write(const char* name, double value) const { api_.setLVar(name, value); }

bool DemoAircraft::pushed(const char* name, bool& previous) const {
    const bool now = read(name) != 0.0;
    const bool edge = now && !previous;
    previous = now;
    return edge;
}

int DemoAircraft::detents(const char* name, double& previous) const {
    // The module writes each encoder as a running count of detents.
    const double count = read(name);
    const double steps = count - previous;
    previous = count;
    return static_cast<int>(std::lround(steps));
}

void DemoAircraft::coldAndDark() {
    std::lock_guard lock(mutex_);
    state_ = AircraftState{};
    lastBattery1_ = lastBattery2_ = false;
    lastAp1_ = lastAp2_ = lastAthr_ = lastLoc_ = lastAppr_ = false;
    lastSpeedCount_ = read("E_FCU_SPEED");
    lastHeadingCount_ = read("E_FCU_HEADING");
    lastAltitudeCount_ = read("E_FCU_ALTITUDE");
    lastVerticalSpeedCount_ = read("E_FCU_VS");
    lastTrimWheel_ = read("A_FC_ELEVATOR_TRIM");
    // The panel knobs rest where the last crew left them.
    integralOverhead_ = integralGlareshield_ = integralPedestal_ = glareshieldText_ = 0.5;
    write("A_OH_LIGHTING_OVD", integralOverhead_);
    write("A_FCU_LIGHTING", integralGlareshield_);
    write("A_PED_LIGHTING_PEDESTAL", integralPedestal_);
    write("A_FCU_LIGHTING_TEXT", glareshieldText_);
    write("S_OH_IN_LT_ANN_LT", 1.0);  // the annunciator switch rests in BRT
    publish();
}

void DemoAircraft::frame(double seconds) {
    std::lock_guard lock(mutex_);
    AircraftState& s = state_;

    // Electrics: each battery push button toggles its battery; either one powers the FCU bus.
    if (pushed("S_OH_ELEC_BAT1", lastBattery1_)) s.battery1 = !s.battery1;
    if (pushed("S_OH_ELEC_BAT2", lastBattery2_)) s.battery2 = !s.battery2;
    s.powered = s.battery1 || s.battery2;

    // FCU: the push buttons toggle their modes while powered; LOC and APPR exclude each other.
    const bool ap1 = pushed("S_FCU_AP1", lastAp1_);
    const bool ap2 = pushed("S_FCU_AP2", lastAp2_);
    const bool athr = pushed("S_FCU_ATHR", lastAthr_);
    const bool loc = pushed("S_FCU_LOC", lastLoc_);
    const bool appr = pushed("S_FCU_APPR", lastAppr_);
    const int speedSteps = detents("E_FCU_SPEED", lastSpeedCount_);
    const int headingSteps = detents("E_FCU_HEADING", lastHeadingCount_);
    const int altitudeSteps = detents("E_FCU_ALTITUDE", lastAltitudeCount_);
    const int verticalSpeedSteps = detents("E_FCU_VS", lastVerticalSpeedCount_);
    if (s.powered) {
        if (ap1) s.ap1 = !s.ap1;
        if (ap2) s.ap2 = !s.ap2;
        if (athr) s.athr = !s.athr;
        if (loc) {
            s.loc = !s.loc;
            s.appr = false;
        }
        if (appr) {
            s.appr = !s.appr;
            s.loc = false;
        }
        s.speed = std::clamp(s.speed + speedSteps, kMinSpeed, kMaxSpeed);
        s.heading = ((s.heading + headingSteps) % 360 + 360) % 360;
        const int altitudeStep = read("S_FCU_ALTITUDE_SCALE") != 0.0 ? 1000 : 100;
        s.altitude =
            std::clamp(s.altitude + altitudeSteps * altitudeStep, kMinAltitude, kMaxAltitude);
        if (verticalSpeedSteps != 0) {
            s.verticalSpeedDashed = false;
            s.verticalSpeed = std::clamp(s.verticalSpeed + verticalSpeedSteps * 100,
                                         -kMaxVerticalSpeed, kMaxVerticalSpeed);
        }
    } else {
        s.ap1 = s.ap2 = s.athr = s.loc = s.appr = false;
    }

    // Brakes: the parking brake lever sets both brakes from the accumulator.
    s.parkingBrake = read("S_MIP_PARKING_BRAKE") != 0.0;
    const double brakeTarget = s.parkingBrake ? kParkingBrakePressure : 0.0;
    s.brakeLeft = approach(s.brakeLeft, brakeTarget, kBrakePressureRate * seconds);
    s.brakeRight = approach(s.brakeRight, brakeTarget, kBrakePressureRate * seconds);

    // Pitch trim: the electric trim switches drive the motor while powered; a hand on the wheel
    // moves the trim when the motor is off.
    if (s.powered) {
        const double direction = (read("S_FC_ELEVATOR_TRIM_UP") != 0.0 ? 1.0 : 0.0) -
                                 (read("S_FC_ELEVATOR_TRIM_DOWN") != 0.0 ? 1.0 : 0.0);
        s.pitchTrim = std::clamp(s.pitchTrim + direction * kTrimRate * seconds, kMinTrim, kMaxTrim);
    }
    const double wheel = read("A_FC_ELEVATOR_TRIM");
    if (wheel != lastTrimWheel_) {
        lastTrimWheel_ = wheel;
        if (!s.powered) s.pitchTrim = std::clamp(wheel / 1000.0, kMinTrim, kMaxTrim);
    }

    // Integral lighting follows its knobs.
    integralOverhead_ = read("A_OH_LIGHTING_OVD");
    integralGlareshield_ = read("A_FCU_LIGHTING");
    integralPedestal_ = read("A_PED_LIGHTING_PEDESTAL");
    glareshieldText_ = read("A_FCU_LIGHTING_TEXT");

    publish();
}

void DemoAircraft::publish() const {
    const AircraftState& s = state_;
    const double power = s.powered ? 1.0 : 0.0;
    write("B_FCU_POWER", power);
    write("N_ELEC_VOLT_BAT_1", kBatteryVolts);
    write("N_ELEC_VOLT_BAT_2", kBatteryVolts);
    // The OFF lights of the battery buttons sit on the hot bus: lit while the battery is off.
    write("I_OH_ELEC_BAT1_L", s.battery1 ? 0.0 : 1.0);
    write("I_OH_ELEC_BAT2_L", s.battery2 ? 0.0 : 1.0);

    write("N_FCU_SPEED", s.speed);
    write("N_FCU_HEADING", s.heading);
    write("N_FCU_ALTITUDE", s.altitude);
    write("N_FCU_VS", s.verticalSpeed);
    write("B_FCU_VERTICALSPEED_DASHED", s.verticalSpeedDashed ? 1.0 : 0.0);
    write("N_FCU_EFIS1_BARO_HPA", kBaroHpa);
    write("N_FCU_EFIS2_BARO_HPA", kBaroHpa);
    write("I_FCU_AP1", s.ap1 ? 1.0 : 0.0);
    write("I_FCU_AP2", s.ap2 ? 1.0 : 0.0);
    write("I_FCU_ATHR", s.athr ? 1.0 : 0.0);
    write("I_FCU_LOC", s.loc ? 1.0 : 0.0);
    write("I_FCU_APPR", s.appr ? 1.0 : 0.0);

    // Gear down and locked: three green lamps while there is power to light them.
    write("I_MIP_GEAR_1_L", power);
    write("I_MIP_GEAR_2_L", power);
    write("I_MIP_GEAR_3_L", power);

    write("N_HYD_PRESSURE_BRAKE_ACCU", kAccumulatorPressure);
    write("N_HYD_PRESSURE_BRAKE_LEFT", s.brakeLeft);
    write("N_HYD_PRESSURE_BRAKE_RIGHT", s.brakeRight);

    write("B_FC_ELEVATOR_TRIM_MOTOR_POWER", power);
    write("N_FC_ELEVATOR_TRIM", s.pitchTrim);

    // Integral lighting reads 0..2 (the dimmer's full range) and needs power; the glareshield
    // display brightness reads 0..1.
    write("N_OH_LIGHTING_OVD", power * 2.0 * integralOverhead_);
    write("N_FCU_LIGHTING", power * 2.0 * integralGlareshield_);
    write("N_PED_LIGHTING_PEDESTAL", power * 2.0 * integralPedestal_);
    write("N_FCU_LIGHTING_TEXT", power * glareshieldText_);
}

AircraftState DemoAircraft::state() const {
    std::lock_guard lock(mutex_);
    return state_;
}

// ---- Real-time frames --------------------------------------------------------------------------

DemoSimulator::DemoSimulator(const StandinApi& api, Options options)
    : api_(api), options_(options), aircraft_(api) {}

DemoSimulator::~DemoSimulator() { stop(); }

void DemoSimulator::start() {
    if (thread_.joinable()) return;
    api_.reset();
    api_.setFramesPerSecond(options_.framesPerSecond);
    aircraft_.coldAndDark();
    nextCall_ = 0;
    stopping_ = false;
    thread_ = std::thread([this] { run(); });
}

void DemoSimulator::stop() {
    stopping_ = true;
    if (thread_.joinable()) thread_.join();
}

void DemoSimulator::run() {
    using Clock = std::chrono::steady_clock;
    const auto period = std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double>(1.0 / options_.framesPerSecond));
    const double seconds = 1.0 / options_.framesPerSecond;
    auto deadline = Clock::now();
    while (!stopping_) {
        aircraft_.frame(seconds);
        api_.runFrames(1);
        ++frames_;
        tallyCalls();
        deadline += period;
        std::this_thread::sleep_until(deadline);
    }
    tallyCalls();
}

void DemoSimulator::tallyCalls() {
    if (!options_.countWrites) {
        if (frames_ % options_.framesPerSecond == 0) api_.clearCalls();
        return;
    }
    const uint64_t count = api_.callCount();
    for (; nextCall_ < count; ++nextCall_) {
        StandinCall call{};
        if (!api_.call(nextCall_, &call)) break;
        // A refused write returns S_OK too; only the exception tells it apart.
        if (call.function == kStandinSetDataOnSimObject && call.result == 0 &&
            call.exception == 0) {
            ++writes_;
        }
    }
}

}  // namespace helmbridge::demo
