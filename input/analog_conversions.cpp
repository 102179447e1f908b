// Dead bands and value conversions of the analog inputs.
#include "input/analog_conversions.h"

#include <cmath>
#include <stdexcept>

namespace fenixA320 {

bool AnalogFilter::admit(int32_t id, double value) {
    if (id == lastId && std::fabs(value - lastValue) < threshold) return false;
    lastId = id;
    lastValue = value;
    return true;
}

std::array<AnalogFilter, kAnalogFilterCount> makeAnalogFilters() {
    std::array<AnalogFilter, kAnalogFilterCount> filters{};
    for (std::size_t i = 0; i < kAnalogFilterCount; ++i) filters[i].threshold = kDeadBands[i];
    return filters;
}

namespace {

// The entry of analog input `id` in a table by id, or `outside`; a negative id, converted, lies
// beyond the table too.
template <typename T>
T byId(const std::array<T, kAnalogCount>& table, int32_t id, T outside) {
    const auto index = static_cast<std::size_t>(id);
    return index < table.size() ? table[index] : outside;
}

}  // namespace

int analogFilterFor(int32_t id) {
    return static_cast<int>(byId(kDeadBandOfId, id, DeadBand::None));
}

AnalogRule analogRule(int32_t id) { return byId(kAnalogRuleOfId, id, AnalogRule::Raw); }

double throttleDetent(double v) {
    if (!(v >= -1.0 && v <= 1.0)) throw std::out_of_range("Value must be in range [-1.0, 1.0]");
    double x = 0.0;
    if (v < -0.1) {
        x = (v + 1.0) / 0.9;
    } else if (v < -0.04) {
        x = (v + 0.1) / 0.1 + 1.0;
    } else if (v < 0.05) {
        x = 2.0;  // idle band
    } else if (v < 0.69) {
        x = v / 0.69 + 2.0;
    } else if (v < 0.86) {
        x = (v - 0.69) / 0.17 + 3.0;
    } else {
        x = (v - 0.86) / 0.14 + 4.0;
    }
    const double fraction = std::fabs(x - std::trunc(x));
    if (fraction < 0.1 || fraction > 0.9) x = std::round(x);
    return x;
}

double axisValue(double v) { return (v + 1.0) * 2000.0 * 0.5 - 1000.0; }

double trimWheelValue(double v) { return std::round((v + 4.0) * 17500.0 / 17.5 - 4000.0); }

double speedbrakeValue(double v, bool armed) {
    if (armed) return 0.0;
    if (v < 0.05) return 1.0;
    return 2.0 * v + 1.0;
}

double cargoTemperature(double v) { return (v - 5.0) / 21.0; }
double cabinTemperature(double v) { return (v - 18.0) / 12.0; }

int32_t flapDetent(double v, int32_t held) {
    int32_t nearest = 0;
    double distance = std::fabs(v);
    for (int32_t d = 1; d <= 4; ++d) {
        const double to = std::fabs(v - d);
        if (to < distance) {
            nearest = d;
            distance = to;
        }
    }
    return distance < 0.25 ? nearest : held;
}

}  // namespace fenixA320
