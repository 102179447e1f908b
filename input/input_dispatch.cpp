// Hardware events from the host turned into aircraft-variable writes.
#include <cmath>
#include <functional>
#include <map>

#include "catalogue/analog_inputs.h"
#include "catalogue/bindings.h"
#include "catalogue/digital_inputs.h"
#include "catalogue/digital_outputs.h"
#include "catalogue/signal_lists.h"
#include "input/input_side.h"
#include "input/switch_table.h"

namespace fenixA320 {
namespace {

constexpr int32_t kLandingElevationAuto = kLandingElevationAutoContact;  // sets the elevation AUTO
constexpr int32_t kParkingBrake = digitInIdOf("S_MIP_PARKING_BRAKE");
constexpr int32_t kParkingBrakeOff = kParkingBrakeOffContact;  // the lever's OFF microswitch
constexpr int32_t kSpeedbrakeArmedInput = digitInIdOf("S_FC_SPEEDBRAKE_ARMED");
constexpr int32_t kRudderTrimLeft = digitInIdOf("S_FC_RUDDER_TRIM_Left");
constexpr int32_t kRudderTrimRight = digitInIdOf("S_FC_RUDDER_TRIM_Right");

constexpr int32_t kSpeedbrakeLever = analogIdOf("A_FC_SPEEDBRAKE");
constexpr int32_t kLandingElevation = analogIdOf("A_OH_PNEUMATIC_LDG_ELEV");
constexpr double kLandingElevationAutoValue = -3.0;
constexpr std::size_t kTrimMotorPowerSlot = digitOutIdOf("B_FC_ELEVATOR_TRIM_MOTOR_POWER");

constexpr uint32_t kValueSize = sizeof(double);

bool isPlaceholder(const VarBinding& row) { return row.variable == kPlaceholderVariable; }

// Slot of `id` in a dense id -> slot lookup, or -1.
int16_t slotOf(const std::vector<int16_t>& slots, int32_t id) {
    if (id < 0 || static_cast<std::size_t>(id) >= slots.size()) return -1;
    return slots[static_cast<std::size_t>(id)];
}

std::vector<int16_t> denseSlots(const std::vector<VarBinding>& table, std::size_t size) {
    std::vector<int16_t> slots(size, -1);
    for (const VarBinding& row : table)
        slots.at(static_cast<std::size_t>(row.key)) = static_cast<int16_t>(row.slot);
    return slots;
}

}  // namespace

InputSide::InputSide(const helmbridge::platform::Platform& seam, WriteTarget writes,
                     const ReceivedValues& received, std::function<bool()> connected)
    : seam_(seam), writes_(writes), received_(received), connected_(std::move(connected)) {
    initReplayMemories();
}

void InputSide::writeBlock(const KeyBlock& block) {
    writes_.SetLatestWrite(block.defineId, block.values.data(),
                           static_cast<uint32_t>(block.values.size() * kValueSize));
}

void InputSide::writeSwitchVariable(int16_t slot, double value) {
    const VarBinding& row = switchVarBindings()[static_cast<std::size_t>(slot)];
    writes_.SetLatestWrite(static_cast<uint32_t>(row.defineId), &value, kValueSize);
}

// Closes the flap switch contact of `detent`, as the flap lever's detents do.
void InputSide::moveFlapSwitch(int32_t detent) {
    SwitchEntry& flaps = state_.switches[static_cast<std::size_t>(state_.flapSwitch)];
    flaps.reported = true;
    flaps.logic->OnContact(kFlapFirstContact + detent, true);
    const double value = state_.switchVarValues[static_cast<std::size_t>(flaps.varSlot)].load(
        std::memory_order_relaxed);
    writeSwitchVariable(flaps.varSlot, value);
}

void InputSide::recordDigital(int32_t id, bool state) {
    const auto memory = lastDigitIn_.find(id);
    if (memory == lastDigitIn_.end()) return;
    memory->second.seen = true;
    memory->second.state = state;
}

void InputSide::BuildInputLogic(TimePoint now) {
    if (built()) return;
    InputState& in = state_;

    const auto indexPanel = [&in](KeyPanel panel, const std::vector<GroupKey>& group) {
        for (const GroupKey& row : group) {
            DigitalRoute& route = in.digitalRoutes.at(static_cast<std::size_t>(row.signalId));
            route.panel = panel;
            route.panelIndex = static_cast<int16_t>(row.index);
        }
    };
    indexPanel(KeyPanel::Cdu, cduKeyGroup());
    indexPanel(KeyPanel::Fcu, fcuKeyGroup());
    indexPanel(KeyPanel::Asp, aspKeyGroup());
    indexPanel(KeyPanel::Rmp, rmpKeyGroup());
    indexPanel(KeyPanel::Atc, atcKeyGroup());

    for (const VarBinding& row : digitInBindings()) {
        in.digitalRoutes.at(static_cast<std::size_t>(row.key)).bindingSlot =
            static_cast<int16_t>(row.slot);
    }
    in.switchVarSlots = denseSlots(switchVarBindings(), kVariableNumbers);
    in.encoderSlots = denseSlots(encoderBindings(), kEncoderCount);
    in.analogSlots = denseSlots(analogBindings(), kAnalogCount);

    in.digitInValues.assign(digitInBindings().size(), 0.0);
    in.switchVarCount = switchVarBindings().size();
    in.switchVarValues = std::make_unique<std::atomic<double>[]>(in.switchVarCount);
    for (std::size_t i = 0; i < in.switchVarCount; ++i) in.switchVarValues[i].store(0.0);

    const std::function<void(int, int)> onChange = [this](int key, int position) {
        onSwitchPosition(key, position);
    };
    in.switches.clear();
    in.switches.reserve(kSwitchCount);
    for (const SwitchRow& row : switchRows()) {
        std::map<int32_t, int32_t> positions;
        for (int32_t i = 0; i < row.contactCount; ++i) {
            const int32_t contact = row.firstContact + i;
            positions.emplace(contact, row.positions[static_cast<std::size_t>(i)]);
            in.digitalRoutes.at(static_cast<std::size_t>(contact)).switchIndex =
                static_cast<int8_t>(in.switches.size());
        }
        SwitchEntry entry;
        entry.logic = std::make_unique<PositionSwitch>(row.key, positions);
        if (row.restsAtOne) entry.logic->setRestPosition(1);
        entry.varSlot = slotOf(in.switchVarSlots, row.key);
        if (row.key == kRudderTrimSwitchKey)
            in.rudderTrimSwitch = static_cast<int>(in.switches.size());
        if (row.key == kFlapSwitchKey) in.flapSwitch = static_cast<int>(in.switches.size());
        in.switches.push_back(std::move(entry));
    }
    for (SwitchEntry& entry : in.switches) entry.logic->bind(onChange);

    in.analogValues.assign(analogBindings().size(), 0.0);
    in.encoderValues.assign(encoderBindings().size(), 0.0);
    const auto buildPanel = [&in, now](KeyPanel panel, const std::vector<GroupKey>& group,
                                       uint32_t defineId, bool gated) {
        KeyBlock& block = in.panels[static_cast<std::size_t>(panel)];
        block.defineId = defineId;
        block.values.assign(group.size(), 0.0);
        block.keys.clear();
        if (!gated) return;
        block.keys.reserve(group.size());
        for (const GroupKey& row : group) {
            block.keys.emplace_back(&block.values.at(static_cast<std::size_t>(row.index)),
                                    row.signalId, now);
        }
    };
    buildPanel(KeyPanel::Cdu, cduKeyGroup(), DEF_CDU_KEYS, true);
    buildPanel(KeyPanel::Fcu, fcuKeyGroup(), DEF_FCU_KEYS, true);
    buildPanel(KeyPanel::Asp, aspKeyGroup(), DEF_ASP_KEYS, false);
    buildPanel(KeyPanel::Rmp, rmpKeyGroup(), DEF_RMP_KEYS, true);
    buildPanel(KeyPanel::Atc, atcKeyGroup(), DEF_ATC_KEYS, true);

    in.builtAt = now;
    in.built.store(true, std::memory_order_release);
}

bool InputSide::SetDigitIn(int32_t id, bool state, TimePoint now) {
    if (!built()) return false;
    std::lock_guard lock(state_.lock);
    return digitInEvent(id, state, now);
}

bool InputSide::digitInEvent(int32_t id, bool state, TimePoint now) {
    InputState& in = state_;
    if (id == kLandingElevationAuto && state) {
        analogEvent(kLandingElevation, kLandingElevationAutoValue);
        return true;
    }
    if (id == kParkingBrake || id == kParkingBrakeOff) {
        // A release writes nothing: the lever stays where it was between its two microswitches.
        const int16_t slot = in.digitalRoutes[kParkingBrake].bindingSlot;
        if (state && slot >= 0) {
            double& value = in.digitInValues[static_cast<std::size_t>(slot)];
            value = id == kParkingBrake ? 1.0 : 0.0;
            writes_.QueueWrite(
                static_cast<uint32_t>(digitInBindings()[static_cast<std::size_t>(slot)].defineId),
                &value);
        }
        recordDigital(id, state);
        return true;
    }
    if (id < 0 || id >= kDigitInIds) return false;
    const DigitalRoute& route = in.digitalRoutes[static_cast<std::size_t>(id)];

    if (route.bindingSlot >= 0) {
        if (id == kSpeedbrakeArmedInput && in.speedbrakeArmed != state) {
            in.speedbrakeArmed = state;
            analogEvent(kSpeedbrakeLever, in.speedbrakeLever);
        }
        const auto slot = static_cast<std::size_t>(route.bindingSlot);
        in.digitInValues[slot] = state ? 1.0 : 0.0;
        writes_.QueueWrite(static_cast<uint32_t>(digitInBindings()[slot].defineId),
                           &in.digitInValues[slot]);
    }

    feedSwitches(id, state);

    if (route.panel != KeyPanel::None) {
        KeyBlock& block = in.panels[static_cast<std::size_t>(route.panel)];
        if (route.panel == KeyPanel::Asp) {
            block.values[static_cast<std::size_t>(route.panelIndex)] = state ? 1.0 : 0.0;
        } else {
            block.keys[static_cast<std::size_t>(route.panelIndex)].OnKey(id, state, now);
        }
        // Also after a gated-out event: the block carries every key of the panel.
        writeBlock(block);
    }

    recordDigital(id, state);
    return false;
}

void InputSide::feedSwitches(int32_t id, bool state) {
    // The rudder-trim switch is spring-loaded: the refresher writes its position while held.
    if (id == kRudderTrimLeft) {
        state_.rudderTrimPosition.store(state ? 0.0 : 1.0, std::memory_order_relaxed);
        return;
    }
    if (id == kRudderTrimRight) {
        state_.rudderTrimPosition.store(state ? 2.0 : 1.0, std::memory_order_relaxed);
        return;
    }
    if (id < 0 || id >= kDigitInIds) return;
    const int8_t index = state_.digitalRoutes[static_cast<std::size_t>(id)].switchIndex;
    if (index < 0 || index == state_.rudderTrimSwitch) return;
    SwitchEntry& entry = state_.switches[static_cast<std::size_t>(index)];
    entry.reported = true;
    entry.logic->OnContact(id, state);
}

void InputSide::onSwitchPosition(int32_t key, int32_t position) {
    const int16_t slot = slotOf(state_.switchVarSlots, key);
    if (slot < 0) return;
    const auto value = static_cast<double>(position);
    state_.switchVarValues[static_cast<std::size_t>(slot)].store(value, std::memory_order_relaxed);
    writeSwitchVariable(slot, value);
}

double InputSide::switchVarValue(int32_t key) const {
    if (!built()) return 0.0;
    const int16_t slot = slotOf(state_.switchVarSlots, key);
    if (slot < 0) return 0.0;
    return state_.switchVarValues[static_cast<std::size_t>(slot)].load(std::memory_order_relaxed);
}

void InputSide::SetEncoder(int32_t id, int32_t direction) {
    if (!built()) return;
    std::lock_guard lock(state_.lock);
    // Detents the simulator never saw must not move the count.
    if (!connected_()) return;
    const int16_t slot = slotOf(state_.encoderSlots, id);
    if (slot < 0) return;
    const VarBinding& row = encoderBindings()[static_cast<std::size_t>(slot)];
    if (isPlaceholder(row)) return;  // the host's "no signal" entry
    double& count = state_.encoderValues[static_cast<std::size_t>(slot)];
    count += direction == 1 ? 1.0 : -1.0;
    writes_.QueueWrite(static_cast<uint32_t>(row.defineId), &count);
}

void InputSide::SetAnalog(int32_t id, double value) {
    if (!built()) return;
    std::lock_guard lock(state_.lock);
    analogEvent(id, value);
}

bool InputSide::analogEvent(int32_t id, double v) {
    InputState& in = state_;
    const int16_t slotIndex = slotOf(in.analogSlots, id);
    if (slotIndex < 0) return false;
    const auto slot = static_cast<std::size_t>(slotIndex);
    const AnalogRule rule = analogRule(id);
    // A non-finite value never reaches the aircraft; the throttle rejects it by its range check.
    if (rule != AnalogRule::Throttle && !std::isfinite(v)) return false;

    const int filter = analogFilterFor(id);
    if (filter >= 0 && !in.analogFilters[static_cast<std::size_t>(filter)].admit(id, v)) {
        return false;
    }

    double& stored = in.analogValues[slot];
    switch (rule) {
        case AnalogRule::Throttle:
            stored = throttleDetent(v);
            break;
        case AnalogRule::TrimWheel: {
            if (received_.digitOut(kTrimMotorPowerSlot) != 0.0) {
                // The motor drives the wheel: the servo loop follows the hardware instead.
                elevatorTrimInput_.store(v, std::memory_order_relaxed);
                return true;
            }
            stored = trimWheelValue(v);
            break;
        }
        case AnalogRule::Axis:
            stored = axisValue(v);
            break;
        case AnalogRule::Speedbrake:
            in.speedbrakeLever = v;
            stored = speedbrakeValue(v, in.speedbrakeArmed);
            break;
        case AnalogRule::FlapLever: {
            const int32_t detent = flapDetent(v, in.flapDetent);
            in.flapDetent = detent;
            if (detent == in.flapDetentSent) return false;
            in.flapDetentSent = detent;
            moveFlapSwitch(detent);
            break;
        }
        case AnalogRule::CargoTemp:
            stored = cargoTemperature(v);
            break;
        case AnalogRule::CabinTemp:
            stored = cabinTemperature(v);
            break;
        case AnalogRule::Raw:
            stored = v;
            break;
    }

    const VarBinding& row = analogBindings()[slot];
    // A signal without a variable of its own must not write the placeholder, a real key.
    if (!isPlaceholder(row))
        writes_.SetLatestWrite(static_cast<uint32_t>(row.defineId), &stored, sizeof stored);

    const auto memory = lastAnalog_.find(id);
    if (memory != lastAnalog_.end()) {
        memory->second.seen = true;
        memory->second.value = v;
    }
    return false;
}

}  // namespace fenixA320
