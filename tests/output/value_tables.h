// Received value arrays for tests of the output side, zero-filled like the core's.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "core/core.h"
#include "output/output_values.h"

namespace fenixA320 {

struct ValueTables {
    std::unique_ptr<std::atomic<double>[]> digit =
        std::make_unique<std::atomic<double>[]>(kDigitOutSlots);
    std::unique_ptr<std::atomic<double>[]> display =
        std::make_unique<std::atomic<double>[]>(kDisplaySlots);

    ValueTables() {
        for (std::size_t i = 0; i < kDigitOutSlots; ++i) digit[i].store(0.0);
        for (std::size_t i = 0; i < kDisplaySlots; ++i) display[i].store(0.0);
    }
    void setDigit(uint32_t id, double v) { digit[id].store(v); }
    void setDisplay(uint32_t id, double v) { display[id].store(v); }
    OutputValues view() const { return {digit.get(), display.get()}; }
};

}  // namespace fenixA320
