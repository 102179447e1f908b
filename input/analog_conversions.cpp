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
    // clang-format off
    constexpr std::array<double, kAnalogFilterCount> kBands{
        1.0,   // landing elevation
        0.05,  // unused
        0.05,  // CDU brightness
        0.01,  // display brightness and lighting knobs
        0.01,  // lower ECAM
        0.01,  // upper ECAM
        0.5,   // aft cargo temperature
        0.5,   // forward cabin temperature
        0.5,   // cockpit temperature
        0.5,   // aft cabin temperature
        0.005, // throttle levers
        0.5,   // weather radar tilt
    };
    // clang-format on
    std::array<AnalogFilter, kAnalogFilterCount> filters{};
    for (std::size_t i = 0; i < kAnalogFilterCount; ++i) filters[i].threshold = kBands[i];
    return filters;
}

int analogFilterFor(int32_t id) {
    switch (id) {
        case 116:
            return 0;
        case 61:
        case 62:
            return 2;
        case 65:
        case 66:
        case 67:
        case 70:
        case 71:
        case 72:
        case 97:
        case 98:
        case 117:
            return 3;
        case 68:
            return 4;
        case 69:
            return 5;
        case 112:
            return 6;
        case 115:
            return 7;
        case 114:
            return 8;
        case 111:
            return 9;
        case 89:
        case 90:
            return 10;
        case 122:
            return 11;
        default:
            return id >= 102 && id <= 110 ? 3 : -1;
    }
}

AnalogRule analogRule(int32_t id) {
    switch (id) {
        case 89:
        case 90:
            return AnalogRule::Throttle;
        case 82:
            return AnalogRule::TrimWheel;
        case 77:
        case 78:
        case 79:
        case 80:
        case 83:
        case 84:
        case 85:
        case 86:
            return AnalogRule::Axis;
        case 88:
            return AnalogRule::Speedbrake;
        case 124:
            return AnalogRule::FlapLever;
        case 112:
            return AnalogRule::CargoTemp;
        case 111:
        case 114:
        case 115:
            return AnalogRule::CabinTemp;
        default:
            return AnalogRule::Raw;
    }
}

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
