// Lamp and annunciator states: the light test, the synthesized outputs and the plain copies.
#include "output/digital_outputs.h"

namespace fenixA320 {

bool digitOutState(uint32_t id, double value, bool annTest, bool fcuPowered) {
    // The light test lights everything, the constant-off outputs included.
    if (annTest) return true;
    if (id == 496 || id == 497) return fcuPowered;
    // No QFE mode and no separate test outputs on this aircraft.
    if (id >= 498 && id <= 501) return false;
    return value != 0.0;  // NaN and negative values light the lamp
}

}  // namespace fenixA320
