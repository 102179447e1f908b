// Run-time state of the input side, owned by the core.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "catalogue/behaviour.h"
#include "catalogue/bindings.h"
#include "catalogue/signal_lists.h"
#include "input/analog_conversions.h"
#include "input/debounced_key.h"
#include "input/position_switch.h"
#include "platform/clock.h"

namespace fenixA320 {

inline constexpr int32_t kDigitInIds = static_cast<int32_t>(kDigitInCount);  // ids 0..964
inline constexpr int32_t kVariableNumbers = kVariableNumberCount + 1;

// Momentary action keys that a replay would press again: never remembered for replay.
inline constexpr auto& replayExcluded = kReplayExcludedIds;

// The five panels whose keys are written as one block each.
enum class KeyPanel : int8_t { None = -1, Cdu, Fcu, Asp, Rmp, Atc };
inline constexpr std::size_t kKeyPanels = 5;

// Everything one digital-input id reaches; -1 where it reaches nothing of that kind.
struct DigitalRoute {
    int16_t bindingSlot = -1;  // row of digitInBindings
    KeyPanel panel = KeyPanel::None;
    int16_t panelIndex = -1;  // row of the panel's key group
    int8_t switchIndex = -1;  // position switch that owns the contact
};

// One panel block: the values of all its keys and, for the gated panels, their gates.
struct KeyBlock {
    uint32_t defineId = 0;
    std::vector<double> values;
    std::vector<DebouncedKey> keys;  // empty for the ungated audio panel
};

// A position switch with the bookkeeping of the replay.
struct SwitchEntry {
    std::unique_ptr<PositionSwitch> logic;
    int16_t varSlot = -1;   // row of switchVarBindings
    bool reported = false;  // the host has reported one of its contacts in this run
};

struct InputState {
    // Serialises the input path between the host's threads and the replay loop. Taken once
    // per event, before the write-path mutexes; never held across a pause.
    std::mutex lock;
    std::atomic<bool> built{false};
    TimePoint builtAt{};  // the key gates start closed from here

    // Lookups by id, built once by BuildInputLogic and only read afterwards.
    std::array<DigitalRoute, kDigitInIds> digitalRoutes{};
    std::vector<int16_t> switchVarSlots;  // variable number -> switchVarBindings row, or -1
    std::vector<int16_t> encoderSlots;    // encoder id -> encoderBindings row, or -1
    std::vector<int16_t> analogSlots;     // analog id -> analogBindings row, or -1

    // Value arrays, one element per table row. switchVarValues is read by the output side.
    std::vector<double> digitInValues;
    std::unique_ptr<std::atomic<double>[]> switchVarValues;
    std::size_t switchVarCount = 0;
    std::vector<double> encoderValues;
    std::vector<double> analogValues;
    std::array<KeyBlock, kKeyPanels> panels;

    std::vector<SwitchEntry> switches;  // in feeding order
    int rudderTrimSwitch = -1;
    int flapSwitch = -1;

    // Analog input state.
    std::array<AnalogFilter, kAnalogFilterCount> analogFilters = makeAnalogFilters();
    bool speedbrakeArmed = false;
    double speedbrakeLever = 0.0;
    int32_t flapDetent = 0;
    int32_t flapDetentSent = -1;

    // 0.0 left, 1.0 centre, 2.0 right; the refresher writes it every 30 ms.
    std::atomic<double> rudderTrimPosition{1.0};

    // Replay loop only.
    TimePoint lastDigitalReplay{};
    TimePoint lastAnalogReplay{};
    bool replayClockSet = false;
};

}  // namespace fenixA320
