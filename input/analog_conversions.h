// Dead bands and value conversions of the analog inputs, free of core state.
#pragma once

#include <array>
#include <cstdint>

#include "catalogue/behaviour.h"

namespace fenixA320 {

// Drops a value that moved less than the dead band since the last value it let through, as
// long as no other id of the same record passed in between.
struct AnalogFilter {
    int32_t lastId = -1;
    double threshold = 0.05;  // the dead band
    double lastValue = 0.0;

    // True when (id, value) goes on; the record then remembers it.
    bool admit(int32_t id, double value);
};

inline constexpr std::size_t kAnalogFilterCount = kDeadBandCount;

// The records with the catalogue's dead bands, one per DeadBand value.
std::array<AnalogFilter, kAnalogFilterCount> makeAnalogFilters();

// Index of the record that filters analog input `id`, or -1 when it has no dead band.
int analogFilterFor(int32_t id);

// How the raw value of an analog input becomes the value written (catalogue/behaviour.h).
AnalogRule analogRule(int32_t id);

// Lever value in [-1, 1] onto 0..5 with the idle band held at 2 and near-whole values snapped;
// std::out_of_range "Value must be in range [-1.0, 1.0]" for anything else, NaN included.
double throttleDetent(double v);
double axisValue(double v);
double trimWheelValue(double v);
double speedbrakeValue(double v, bool armed);
double cargoTemperature(double v);
double cabinTemperature(double v);

// The flap detent for lever value v: the nearest of 0..4 (ties to the lower one) when within
// 0.25 of it, otherwise `held`, the detent last captured.
int32_t flapDetent(double v, int32_t held);

}  // namespace fenixA320
