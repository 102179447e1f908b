// Replay of remembered inputs after the simulator lost them, and the rudder-trim refresher.
#include <algorithm>
#include <chrono>
#include <stdexcept>

#include "catalogue/bindings.h"
#include "catalogue/digital_inputs.h"
#include "input/input_side.h"
#include "input/switch_table.h"

namespace fenixA320 {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr Nanos kDigitalReplayInterval = seconds(1);
constexpr Nanos kAnalogReplayInterval = seconds(2);
constexpr int32_t kParkingBrakeOff = kParkingBrakeOffContact;

// Spreads an analog replay so it never floods the latest-value path.
constexpr Nanos kAnalogReplayPause = milliseconds(2);

bool isExcluded(int32_t id) {
    return std::find(replayExcluded.begin(), replayExcluded.end(), id) != replayExcluded.end();
}

}  // namespace

void InputSide::initReplayMemories() {
    lastDigitIn_.clear();
    lastAnalog_.clear();
    for (const VarBinding& row : digitInBindings()) {
        if (!isExcluded(row.key)) lastDigitIn_.emplace(row.key, DigitInMemory{});
    }
    lastDigitIn_.emplace(kParkingBrakeOff, DigitInMemory{});
    for (const VarBinding& row : analogBindings()) lastAnalog_.emplace(row.key, AnalogMemory{});
}

void InputSide::forgetReported() {
    for (auto& [id, memory] : lastDigitIn_) memory.seen = false;
    for (auto& [id, memory] : lastAnalog_) memory.seen = false;
    // Selectors, like inputs, are re-asserted only once the host reports them in the next run.
    std::lock_guard lock(state_.lock);
    for (SwitchEntry& entry : state_.switches) entry.reported = false;
}

void InputSide::inputReplayPass(TimePoint now, const ReplayGate& gate) {
    InputState& in = state_;
    if (!built()) return;
    if (!gate.running) {
        // Between runs: a new run re-asserts only the selectors the host reports again, and
        // times its replays from its own start.
        std::lock_guard lock(in.lock);
        for (SwitchEntry& entry : in.switches) entry.reported = false;
        in.replayClockSet = false;
        return;
    }
    if (!in.replayClockSet) {
        in.lastDigitalReplay = in.lastAnalogReplay = now;
        in.replayClockSet = true;
    }
    if (!gate.connected || !gate.clockAdvancing) return;

    if (now - in.lastDigitalReplay >= kDigitalReplayInterval) {
        // The lock is taken per event, so a host event waits for one replayed event at most.
        for (auto& [id, memory] : lastDigitIn_) {
            std::lock_guard lock(in.lock);
            if (memory.seen) digitInEvent(id, memory.state, now);
        }
        // Selector positions too, so a reloaded flight takes the hardware's selectors.
        for (std::size_t i = 0; i < in.switches.size(); ++i) {
            if (static_cast<int>(i) == in.rudderTrimSwitch) continue;
            std::lock_guard lock(in.lock);
            const SwitchEntry& entry = in.switches[i];
            const int32_t position = entry.logic->position();
            if (!entry.reported || position == PositionSwitch::kUnknown) continue;
            const auto value = static_cast<double>(position);
            in.switchVarValues[static_cast<std::size_t>(entry.varSlot)].store(
                value, std::memory_order_relaxed);
            const VarBinding& row = switchVarBindings()[static_cast<std::size_t>(entry.varSlot)];
            writes_.SetLatestWrite(static_cast<uint32_t>(row.defineId), &value, sizeof value);
        }
        in.lastDigitalReplay = now;
    }

    if (now - in.lastAnalogReplay >= kAnalogReplayInterval) {
        for (auto& [id, memory] : lastAnalog_) {
            {
                std::lock_guard lock(in.lock);
                if (!memory.seen) continue;
                try {
                    analogEvent(id, memory.value);
                } catch (const std::out_of_range&) {
                    // Only accepted values are remembered; a rejected one cannot come back.
                }
            }
            seam_.sleepUntil(seam_.now() + kAnalogReplayPause);
        }
        in.lastAnalogReplay = now;
    }
}

void InputSide::rudderTrimPass(TimePoint /*now*/) {
    InputState& in = state_;
    if (!built()) return;
    const int16_t slot = in.switches[static_cast<std::size_t>(in.rudderTrimSwitch)].varSlot;
    const double position = in.rudderTrimPosition.load(std::memory_order_relaxed);
    in.switchVarValues[static_cast<std::size_t>(slot)].store(position, std::memory_order_relaxed);
    const VarBinding& row = switchVarBindings()[static_cast<std::size_t>(slot)];
    writes_.SetLatestWrite(static_cast<uint32_t>(row.defineId), &position, sizeof position);
}

}  // namespace fenixA320
