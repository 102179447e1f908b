// The output cycle: lamps, displays and backlight levels handed to the host's callbacks, and
// the servo pass.
#include <string_view>
#include <utility>
#include <vector>

#include "catalogue/signal_lists.h"
#include "core/core.h"
#include "output/digital_outputs.h"
#include "output/display_format.h"
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
    static const std::vector<CycleEntry> entries = cycleEntries(digitOutSigList(), kDigitOutSlots);
    return entries;
}
const std::vector<CycleEntry>& displayCycle() {
    static const std::vector<CycleEntry> entries = cycleEntries(displaySigList(), kDisplaySlots);
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

OutputValues valuesOf(const FenixA320Core& core) {
    return {core.digitOutValues.get(), core.displayValues.get()};
}

}  // namespace

bool FenixA320Core::UpdateOutput() {
    if (!connected.load()) return false;
    if (!running.load() || !digitOutValues || !displayValues) return true;
    updateDigitOut();
    updateDisplayOut();
    updatePwmOut();
    return true;
}

void FenixA320Core::updateDigitOut() {
    if (!digitOutProc) return;
    const OutputValues values = valuesOf(*this);
    const bool annTest = values.annTest();
    const bool fcuPowered = values.fcuPowered();
    for (const CycleEntry& entry : digitOutCycle()) {
        const double value = digitOutValues[entry.slot].load(std::memory_order_relaxed);
        callHost(digitOutProc, entry.id, digitOutState(entry.id, value, annTest, fcuPowered));
    }
}

void FenixA320Core::updateDisplayOut() {
    if (!displayProc) return;
    const OutputValues values = valuesOf(*this);
    for (const CycleEntry& entry : displayCycle()) {
        ValueTextBuffer buffer;
        const std::string_view text =
            displayValueText(displayValues[entry.slot].load(std::memory_order_relaxed), buffer);
        try {
            callHost(displayProc, entry.id, formatDisplay(entry.id, text, values));
        } catch (...) {  // out of memory for the text: skip this display
        }
    }
}

void FenixA320Core::updatePwmOut() {
    if (!pwmProc) return;
    const PwmLevels levels = pwmLevels(valuesOf(*this), domeLightSwitchValue());
    for (uint32_t channel = 1; channel <= kPwmChannels; ++channel) {
        callHost(pwmProc, channel, levels[channel]);
    }
}

void FenixA320Core::servoPass(TimePoint now) {
    if (!digitOutValues || !displayValues) return;  // nothing received before the first Start
    const OutputValues values = valuesOf(*this);
    const double trim = values.displayValue(displayId::kElevatorTrim);
    const double wheel = output.elevatorTrimInput.load(std::memory_order_relaxed);

    if (servoSpeedProc) {
        const double speed = trimServoSpeed(output.servo, now, trim, wheel);
        callHost(servoSpeedProc, kPitchTrimServo, speed);
    }
    // Without motor power the wheel drives the trim, not the other way round.
    if (values.isSet(digitOutId::kTrimMotorPower)) {
        const TrimServoPosition position = trimServoPosition(output.servo, trim, wheel);
        if (position.send) callHost(servoProc, kPitchTrimServo, position.position);
    }
    callHost(servoProc, kAccuPressureServo,
             values.displayValue(displayId::kBrakeAccuPressure) * 0.25);
    callHost(servoProc, kBrakeLeftServo, values.displayValue(displayId::kBrakeLeftPressure) / 3.0);
    callHost(servoProc, kBrakeRightServo,
             values.displayValue(displayId::kBrakeRightPressure) / 3.0);
}

}  // namespace fenixA320
