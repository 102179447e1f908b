// The per-key debounce gate of the panel push buttons.
#include "input/debounced_key.h"

namespace fenixA320 {

bool DebouncedKey::OnKey(int32_t eventId, bool eventState, TimePoint now) {
    if (eventId != id) return false;
    if (now - lastAccepted < keyGate) return false;
    if (eventState != state) {
        state = eventState;
        *slot = state ? 1.0 : 0.0;
    }
    lastAccepted = now;
    return true;
}

}  // namespace fenixA320
