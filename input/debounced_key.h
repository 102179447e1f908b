// A panel push button behind a 100 ms gate, writing its state into the panel's block.
#pragma once

#include <chrono>
#include <cstdint>

#include "platform/clock.h"

namespace fenixA320 {

inline constexpr Nanos keyGate = std::chrono::milliseconds(100);

class DebouncedKey {
  public:
    // `slot` is the key's element of the panel block; the gate starts closed at `now`.
    DebouncedKey(double* slot, int32_t id, TimePoint now) : id(id), lastAccepted(now), slot(slot) {}

    // An event of key `eventId` at `now` (other ids are ignored). Within keyGate of the last
    // accepted event of this key the event is dropped; otherwise it is accepted, sets the block
    // element if the state changed, and restarts the gate. Returns whether it was accepted.
    bool OnKey(int32_t eventId, bool eventState, TimePoint now);

    bool pressed() const { return state; }

  private:
    int32_t id;
    bool state = false;
    TimePoint lastAccepted;
    double* slot;
};

}  // namespace fenixA320
