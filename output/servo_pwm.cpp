// Servo positions and speed of the pitch-trim wheel, and the backlight PWM levels.
#include "output/servo_pwm.h"

#include <chrono>
#include <cmath>
#include <string_view>

#include "catalogue/pwm.h"

namespace fenixA320 {

namespace {
constexpr double kSettleDistance = 0.02;
constexpr int32_t kSettlePasses = 20;
constexpr double kSettledSpeed = 1000.0;
constexpr double kMinSpeed = 250.0;
constexpr double kMaxSpeed = 3000.0;
constexpr double kSpeedPerSample = 600.0;
constexpr int32_t kPlainPositionPasses = 21;  // then one nudge check
constexpr double kNudge = 0.05;
constexpr double kFullLevel = 2500.0;

consteval std::size_t channel(std::string_view name) {
    return static_cast<std::size_t>(pwmIdOf(name));
}
}  // namespace

double TrimSpeedFilter::add(double sample) {
    if (count == kDepth) {
        for (std::size_t i = 1; i < kDepth; ++i) samples[i - 1] = samples[i];
        --count;
    }
    samples[count++] = sample;
    double weighted = 0.0;
    double weights = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        const auto weight = static_cast<double>(i + 1);
        weighted += weight * samples[i];
        weights += weight;
    }
    return weighted / weights;
}

double trimServoSpeed(ServoState& state, TimePoint now, double trim, double wheel) {
    const bool first = state.lastServoTime == TimePoint{};
    const auto elapsedMicros =
        std::chrono::duration_cast<std::chrono::microseconds>(now - state.lastServoTime).count();
    state.lastServoTime = now;
    const double dtMs = static_cast<double>(elapsedMicros) / 1000.0;
    const double distance = std::fabs(trim - wheel);

    // The first pass, and a pass after a stall of a second or more, say nothing about speed.
    double average = 0.0;
    if (!first && dtMs > 1e-9 && dtMs < 1000.0) {
        const double sample = distance / (dtMs / 1000.0);
        // A value that is not a number would spoil five passes of the filter.
        if (std::isfinite(sample)) average = state.trimSpeedFilter.add(sample);
    }
    double speed = average * kSpeedPerSample;
    if (speed < kMinSpeed) {
        speed = kMinSpeed;
    } else if (speed > kMaxSpeed) {
        speed = kMaxSpeed;
    }

    // A wheel that has sat on the trim for a while gets a fixed, moderate speed.
    if (distance < kSettleDistance) {
        if (state.trimSettleCount < kSettlePasses) ++state.trimSettleCount;
        if (state.trimSettleCount >= kSettlePasses) speed = kSettledSpeed;
    } else {
        state.trimSettleCount = 0;
    }
    return speed;
}

TrimServoPosition trimServoPosition(ServoState& state, double trim, double wheel) {
    const int32_t count = state.trimNudgeCount;
    state.trimNudgeCount = count + 1;
    if (count < kPlainPositionPasses) return {true, trim};
    state.trimNudgeCount = 0;
    // A wheel stuck short of the trim gets a push past it.
    if (std::fabs(trim - wheel) > kNudge) return {true, trim + kNudge};
    return {false, 0.0};
}

PwmLevels pwmLevels(const OutputValues& values, double domeSwitch) {
    PwmLevels levels{};
    if (!values.fcuPowered()) return levels;

    const auto integral = [&values](uint32_t id) {
        return values.displayValue(id) * 0.5 * kFullLevel;
    };
    const auto knob = [&values](uint32_t id) { return values.displayValue(id) * kFullLevel; };
    // Off, dim, bright: any other position is dark.
    const auto switched = [](double position) {
        if (position == 1.0) return kFullLevel / 2.0;
        if (position == 2.0) return kFullLevel;
        return 0.0;
    };

    levels[channel("FENIX INTEG LT OVHD")] = integral(displayId::kOverheadLighting);
    levels[channel("FENIX INTEG LT GLARE")] = integral(displayId::kFcuLighting);
    levels[channel("FENIX INTEG LT MIP PED")] = integral(displayId::kPedestalLighting);
    levels[channel("FENIX READING LT OVHD L")] = knob(displayId::kReadingCapt);
    levels[channel("FENIX READING LT OVHD R")] = knob(displayId::kReadingFo);
    levels[channel("FENIX READING LT GLARE L")] = knob(displayId::kMapLeft);
    levels[channel("FENIX READING LT GLARE R")] = knob(displayId::kMapRight);
    levels[channel("FENIX OVHD DOME L")] = switched(domeSwitch);
    levels[channel("FENIX OVHD DOME R")] = switched(domeSwitch);
    levels[channel("FENIX FLOOD LT MIP")] = knob(displayId::kFloodMain);
    levels[channel("FENIX FLOOD LT PED")] = knob(displayId::kFloodPedestal);
    levels[channel("FENIX CONSOLE FLOOR LT L")] =
        switched(values.displayValue(displayId::kConsoleFloorCapt));
    levels[channel("FENIX CONSOLE FLOOR LT R")] =
        switched(values.displayValue(displayId::kConsoleFloorFo));
    levels[channel("FENIX GLARE DISPLAY BRIGHT")] = knob(displayId::kFcuLightingText);
    levels[channel("FENIX RMP ACP BK ENABLE")] = kFullLevel;  // RMP and ACP backlight enable

    for (double& level : levels) {
        if (level < kPwmFloor) level = 0.0;  // NaN passes
    }
    return levels;
}

}  // namespace fenixA320
