// The behaviour tables by id: every name resolved, and checked, at compile time.
#include "catalogue/behaviour.h"

#include "catalogue/analog_inputs.h"
#include "catalogue/digital_inputs.h"
#include "catalogue/position_switches.h"

namespace fenixA320 {
namespace {

template <std::size_t N>
consteval std::array<int32_t, N> digitInIds(const std::string_view (&names)[N]) {
    std::array<int32_t, N> ids{};
    for (std::size_t i = 0; i < N; ++i) ids[i] = digitInIdOf(names[i]);
    return ids;
}

template <std::size_t N>
consteval std::array<int32_t, N> switchNumbers(const std::string_view (&names)[N]) {
    std::array<int32_t, N> numbers{};
    for (std::size_t i = 0; i < N; ++i) {
        numbers[i] = variableNumberOf(names[i]);
        bool isSwitch = false;
        for (const PositionSwitchRow& row : kPositionSwitches) isSwitch |= row.variable == names[i];
        if (!isSwitch) signalNameIsUnknownOrShared();
    }
    return numbers;
}

template <std::size_t N>
consteval std::array<int32_t, N> analogIds(const std::string_view (&names)[N]) {
    std::array<int32_t, N> ids{};
    for (std::size_t i = 0; i < N; ++i) ids[i] = analogIdOf(names[i]);
    return ids;
}

consteval std::array<AnalogRule, kAnalogCount> analogRules() {
    std::array<AnalogRule, kAnalogCount> rules{};
    rules.fill(AnalogRule::Raw);
    for (const AnalogBehaviour& b : kAnalogBehaviour) rules[analogIdOf(b.name)] = b.rule;
    return rules;
}

consteval std::array<DeadBand, kAnalogCount> deadBands() {
    std::array<DeadBand, kAnalogCount> bands{};
    bands.fill(DeadBand::None);
    for (const AnalogBehaviour& b : kAnalogBehaviour) bands[analogIdOf(b.name)] = b.deadBand;
    return bands;
}

}  // namespace

constinit const std::array<int32_t, std::size(kHeldDigitIns)> kHeldDigitInIds =
    digitInIds(kHeldDigitIns);
constinit const std::array<int32_t, std::size(kHeldSwitches)> kHeldSwitchNumbers =
    switchNumbers(kHeldSwitches);
constinit const std::array<int32_t, std::size(kHeldAnalogIns)> kHeldAnalogInIds =
    analogIds(kHeldAnalogIns);
constinit const std::array<int32_t, std::size(kReplayExcluded)> kReplayExcludedIds =
    digitInIds(kReplayExcluded);
constinit const std::array<AnalogRule, kAnalogCount> kAnalogRuleOfId = analogRules();
constinit const std::array<DeadBand, kAnalogCount> kDeadBandOfId = deadBands();

}  // namespace fenixA320
