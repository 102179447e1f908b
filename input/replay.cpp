// Replay of remembered inputs after the simulator lost them, and the rudder-trim refresher.
#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <thread>

#include "catalogue/bindings.h"
#include "core/core.h"
#include "input/input_events.h"
#include "input/switch_table.h"

namespace fenixA320 {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr Nanos kDigitalReplayInterval = seconds(1);
constexpr Nanos kAnalogReplayInterval = seconds(2);
constexpr int32_t kParkingBrakeOff = 964;

// Spreads an analog replay so it never floods the latest-value path.
void pauseBetweenAnalogReplays() { std::this_thread::sleep_for(milliseconds(2)); }

bool isExcluded(int32_t id) {
    return std::find(replayExcluded.begin(), replayExcluded.end(), id) != replayExcluded.end();
}

}  // namespace

void FenixA320Core::initReplayMemories() {
    lastDigitIn.clear();
    lastAnalog.clear();
    for (const VarBinding& row : digitInBindings()) {
        if (!isExcluded(row.key)) lastDigitIn.emplace(row.key, DigitInMemory{});
    }
    lastDigitIn.emplace(kParkingBrakeOff, DigitInMemory{});
    for (const VarBinding& row : analogBindings()) lastAnalog.emplace(row.key, AnalogMemory{});
}

void FenixA320Core::inputReplayPass(TimePoint now) {
    inputReplayPass(now, &pauseBetweenAnalogReplays);
}

void FenixA320Core::inputReplayPass(TimePoint now, void (*pause)()) {
    InputState& in = input;
    if (!in.built.load(std::memory_order_acquire)) return;
    if (!running.load()) {
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
    if (!connected.load() || !clockAdvancing.load()) return;

    if (now - in.lastDigitalReplay >= kDigitalReplayInterval) {
        // The lock is taken per event, so a host event waits for one replayed event at most.
        for (auto& [id, memory] : lastDigitIn) {
            std::lock_guard lock(in.lock);
            if (memory.seen) digitInEvent(*this, id, memory.state, now);
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
            SetLatestWrite(static_cast<uint32_t>(row.defineId), &value, sizeof value);
        }
        in.lastDigitalReplay = now;
    }

    if (now - in.lastAnalogReplay >= kAnalogReplayInterval) {
        for (auto& [id, memory] : lastAnalog) {
            {
                std::lock_guard lock(in.lock);
                if (!memory.seen) continue;
                try {
                    analogEvent(*this, id, memory.value);
                } catch (const std::out_of_range&) {
                    // Only accepted values are remembered; a rejected one cannot come back.
                }
            }
            pause();
        }
        in.lastAnalogReplay = now;
    }
}

void FenixA320Core::rudderTrimPass(TimePoint) {
    InputState& in = input;
    if (!in.built.load(std::memory_order_acquire)) return;
    const int16_t slot = in.switches[static_cast<std::size_t>(in.rudderTrimSwitch)].varSlot;
    const double position = in.rudderTrimPosition.load(std::memory_order_relaxed);
    in.switchVarValues[static_cast<std::size_t>(slot)].store(position, std::memory_order_relaxed);
    const VarBinding& row = switchVarBindings()[static_cast<std::size_t>(slot)];
    SetLatestWrite(static_cast<uint32_t>(row.defineId), &position, sizeof position);
}

}  // namespace fenixA320
