// The values received from the simulator: the digital-output and display blocks of every frame.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstring>
#include <memory>

namespace fenixA320 {

// Written by the dispatch thread and read by the output side and the analog input path without
// a lock, one relaxed 8-byte value at a time. Absent until the first Start allocates them.
class ReceivedValues {
  public:
    static constexpr std::size_t kDigitOutSlots = 502;  // one spare: slots are positions, not ids
    static constexpr std::size_t kDisplaySlots = 143;

    // Once, before any worker runs: the arrays then stay for the life of the core.
    void allocate() {
        digitOut_ = zeroed(kDigitOutSlots);
        display_ = zeroed(kDisplaySlots);
    }
    bool allocated() const { return digitOut_ != nullptr && display_ != nullptr; }

    // The value in a slot; 0.0 before allocation or outside the array.
    double digitOut(std::size_t slot) const { return load(digitOut_, kDigitOutSlots, slot); }
    double display(std::size_t slot) const { return load(display_, kDisplaySlots, slot); }
    // The arrays themselves for readers that walk them every cycle; null before allocation.
    const std::atomic<double>* digitOutArray() const { return digitOut_.get(); }
    const std::atomic<double>* displayArray() const { return display_.get(); }

    // Copies `count` 8-byte values (unaligned) into the first slots; nothing before allocation.
    void storeDigitOut(const unsigned char* payload, std::size_t count) {
        store(digitOut_, kDigitOutSlots, payload, count);
    }
    void storeDisplay(const unsigned char* payload, std::size_t count) {
        store(display_, kDisplaySlots, payload, count);
    }

  private:
    using Array = std::unique_ptr<std::atomic<double>[]>;

    static Array zeroed(std::size_t slots) {
        Array values = std::make_unique<std::atomic<double>[]>(slots);
        for (std::size_t i = 0; i < slots; ++i) values[i].store(0.0);
        return values;
    }
    static double load(const Array& values, std::size_t slots, std::size_t slot) {
        if (!values || slot >= slots) return 0.0;
        return values[slot].load(std::memory_order_relaxed);
    }
    static void store(const Array& values, std::size_t slots, const unsigned char* payload,
                      std::size_t count) {
        if (!values) return;
        for (std::size_t slot = 0; slot < count && slot < slots; ++slot) {
            double value = 0.0;
            std::memcpy(&value, payload + 8 * slot, sizeof(value));
            values[slot].store(value, std::memory_order_relaxed);
        }
    }

    Array digitOut_;
    Array display_;
};

}  // namespace fenixA320
