// The input events without the input lock, for the entry points and the replay that hold it.
#pragma once

#include <cstdint>

#include "core/periodic_worker.h"

namespace fenixA320 {

class FenixA320Core;

// Both require the input lock to be held and BuildInputLogic to have run.
bool digitInEvent(FenixA320Core& core, int32_t id, bool state, TimePoint now);
bool analogEvent(FenixA320Core& core, int32_t id, double value);

}  // namespace fenixA320
