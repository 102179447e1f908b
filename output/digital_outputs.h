// Lamp and annunciator states: the light test, the synthesized outputs and the plain copies.
#pragma once

#include <cstdint>

namespace fenixA320 {

// State of digital output `id` whose received value is `value` (ignored by the synthesized
// outputs).
bool digitOutState(uint32_t id, double value, bool annTest, bool fcuPowered);

}  // namespace fenixA320
