// The input side: hardware events turned into aircraft-variable writes, the switch objects and
// key gates, the replay of remembered inputs and the rudder-trim refresher.
#pragma once

#include <cstdint>
#include <functional>
#include <unordered_map>

#include "input/input_state.h"
#include "platform/clock.h"
#include "platform/platform.h"
#include "store/received_values.h"

namespace fenixA320 {

// A remembered digital input, replayed after a flight reload.
struct DigitInMemory {
    bool seen = false;
    bool state = false;
};

// A remembered analog input.
struct AnalogMemory {
    bool seen = false;
    double value = 0.0;
};

// Where the input side's writes go: the ordered queue and the latest-value table.
struct WriteTarget {
    void* context = nullptr;
    void (*queue)(void* context, uint32_t defineId, const double* value) = nullptr;
    void (*latest)(void* context, uint32_t defineId, const void* data, uint32_t size) = nullptr;

    void QueueWrite(uint32_t defineId, const double* value) const {
        queue(context, defineId, value);
    }
    void SetLatestWrite(uint32_t defineId, const void* data, uint32_t size) const {
        latest(context, defineId, data, size);
    }
};

// What the replay pass needs to know of the rest of the module, read once per pass.
struct ReplayGate {
    bool running = false;         // Start has completed
    bool connected = false;       // the connection is open
    bool clockAdvancing = false;  // the cockpit clock moves: the simulation runs
};

class InputSide {
  public:
    // `connected` tells whether the connection is open; encoder detents are dropped otherwise.
    InputSide(const helmbridge::platform::Platform& seam, WriteTarget writes,
              const ReceivedValues& received, std::function<bool()> connected);
    InputSide(const InputSide&) = delete;
    InputSide& operator=(const InputSide&) = delete;

    // Builds the lookups, value arrays, switch objects and key gates; the gates start closed
    // from `now`. Once per core: a second call changes nothing.
    void BuildInputLogic(TimePoint now);
    bool built() const { return state_.built.load(std::memory_order_acquire); }

    // The host's events. Before BuildInputLogic they are ignored. SetDigitIn returns true when
    // one of the rules of the synthesized contacts or the parking brake took the event.
    bool SetDigitIn(int32_t id, bool state, TimePoint now);
    void SetEncoder(int32_t id, int32_t direction);
    void SetAnalog(int32_t id, double value);

    // One replay pass at `now`: every second the remembered digital inputs and selector
    // positions, every two seconds the analog inputs with a short pause after each.
    void inputReplayPass(TimePoint now, const ReplayGate& gate);
    // One refresher pass: writes the rudder-trim switch position.
    void rudderTrimPass(TimePoint now);
    // Stop: every remembered input and selector counts as not yet reported in the next run.
    void forgetReported();

    // The position last written for switch variable number `key`; 0.0 before BuildInputLogic
    // or for a number that is no switch variable. Any thread.
    double switchVarValue(int32_t key) const;
    // The trim wheel position last reported while the trim motor had power. Any thread.
    double trimWheelInput() const { return elevatorTrimInput_.load(std::memory_order_relaxed); }

  private:
    // Both require the input lock to be held and BuildInputLogic to have run.
    bool digitInEvent(int32_t id, bool state, TimePoint now);
    bool analogEvent(int32_t id, double value);

    void initReplayMemories();
    void feedSwitches(int32_t id, bool state);
    void onSwitchPosition(int32_t key, int32_t position);
    void writeBlock(const KeyBlock& block);
    void writeSwitchVariable(int16_t slot, double value);
    void moveFlapSwitch(int32_t detent);
    void recordDigital(int32_t id, bool state);

    const helmbridge::platform::Platform& seam_;
    WriteTarget writes_;
    const ReceivedValues& received_;
    std::function<bool()> connected_;
    InputState state_;
    std::unordered_map<int32_t, DigitInMemory> lastDigitIn_;
    std::unordered_map<int32_t, AnalogMemory> lastAnalog_;
    // Stored by the analog path while the trim motor drives the wheel; read by the servo pass.
    std::atomic<double> elevatorTrimInput_{0.0};
};

}  // namespace fenixA320
