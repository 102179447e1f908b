// The output cycle: lamps, displays and backlight levels handed to the host's callbacks, and
// the servo pass.
#include <string_view>
#include <utility>
#include <vector>

#include "catalogue/signal_lists.h"
#include "output/digital_outputs.h"
#include "output/display_format.h"
#include "output/output_side.h"
#include "output/output_values.h"
#include "output/servo_pwm.h"

namespace fenixA320 {
namespace {

// A list entry and the slot its received value lands in: the entry's position in the list.
struct CycleEntry {
    uint32_t id;
    std::size_t slot;
};

std::vector<CycleEntry> cycleEntries(const SigList& list, std::size_t slots) {
    std::vector<CycleEntry> entries;
    std::size_t slot = 0;
    for (const auto& item : list) {
        if (slot >= slots) break;
        entries.push_back({static_cast<uint32_t>(item.first), slot++});
    }
    return entries;
}

// The lists never change after load: walk them once, not on every cycle.
const std::vector<CycleEntry>& digitOutCycle() {
    static const std::vector<CycleEntry> entries =
        cycleEntries(digitOutSigList(), ReceivedValues::kDigitOutSlots);
    return entries;
}
const std::vector<CycleEntry>& displayCycle() {
    static const std::vector<CycleEntry> entries =
        cycleEntries(displaySigList(), ReceivedValues::kDisplaySlots);
    return entries;
}

// A host callback that is missing or throws costs its own call only: the pass goes on, and
// nothing escapes to the host or ends the servo thread.
template <class Proc, class... Args>
void callHost(const Proc& proc, Args&&... args) noexcept {
    if (!proc) return;
    try {
        proc(std::forward<Args>(args)...);
    } catch (...) {
    }
}

OutputValues valuesOf(const ReceivedValues& received) {
    return {received.digitOutArray(), received.displayArray()};
}

}  // namespace

void OutputSide::SetPwmProc(PwmProc proc) {
    pwmProc_ = [host = std::move(proc)](unsigned int channel, double level) {
        if (!host) return false;
        return host(channel, level < kPwmFloor ? 0.0 : level);
    };
}

void OutputSide::updateOutput(double domeSwitch) {
    if (!received_.allocated()) return;
    updateDigitOut();
    updateDisplayOut();
    updatePwmOut(domeSwitch);
}

void OutputSide::updateDigitOut() {
    if (!digitOutProc_ || !received_.allocated()) return;
    const OutputValues values = valuesOf(received_);
    const bool annTest = values.annTest();
    const bool fcuPowered = values.fcuPowered();
    for (const CycleEntry& entry : digitOutCycle()) {
        const double value = received_.digitOut(entry.slot);
        callHost(digitOutProc_, entry.id, digitOutState(entry.id, value, annTest, fcuPowered));
    }
}

void OutputSide::updateDisplayOut() {
    if (!displayProc_ || !received_.allocated()) return;
    const OutputValues values = valuesOf(received_);
    for (const CycleEntry& entry : displayCycle()) {
        ValueTextBuffer buffer;
        const std::string_view text = displayValueText(received_.display(entry.slot), buffer);
        try {
            callHost(displayProc_, entry.id, formatDisplay(entry.id, text, values));
        } catch (...) {  // out of memory for the text: skip this display
        }
    }
}

void OutputSide::updatePwmOut(double domeSwitch) {
    if (!pwmProc_ || !received_.allocated()) return;
    const PwmLevels levels = pwmLevels(valuesOf(received_), domeSwitch);
    for (uint32_t channel = 1; channel <= kPwmChannels; ++channel) {
        callHost(pwmProc_, channel, levels[channel]);
    }
}

void OutputSide::servoPass(TimePoint now, double wheel) {
    if (!received_.allocated()) return;  // nothing received before the first Start
    const OutputValues values = valuesOf(received_);
    const double trim = values.displayValue(displayId::kElevatorTrim);

    if (servoSpeedProc_) {
        const double speed = trimServoSpeed(servo_, now, trim, wheel);
        callHost(servoSpeedProc_, kPitchTrimServo, speed);
    }
    // Without motor power the wheel drives the trim, not the other way round.
    if (values.isSet(digitOutId::kTrimMotorPower)) {
        const TrimServoPosition position = trimServoPosition(servo_, trim, wheel);
        if (position.send) callHost(servoProc_, kPitchTrimServo, position.position);
    }
    callHost(servoProc_, kAccuPressureServo,
             values.displayValue(displayId::kBrakeAccuPressure) * 0.25);
    callHost(servoProc_, kBrakeLeftServo, values.displayValue(displayId::kBrakeLeftPressure) / 3.0);
    callHost(servoProc_, kBrakeRightServo,
             values.displayValue(displayId::kBrakeRightPressure) / 3.0);
}

}  // namespace fenixA320
