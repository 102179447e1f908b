// Lamp and annunciator states: the light test, the synthesized outputs and the plain copies.
#include "output/digital_outputs.h"

#include "catalogue/digital_outputs.h"

namespace fenixA320 {

bool digitOutState(uint32_t id, double value, bool annTest, bool fcuPowered) {
    // The light test lights everything, the constant-off outputs included.
    if (annTest) return true;
    // Of the synthesized outputs two show the FCU power; the others stay dark: no QFE mode and
    // no separate test outputs on this aircraft.
    if (id >= kFirstSynthesizedDigitOut && id <= kLastDigitOut) {
        return id < kFirstDarkSynthesizedDigitOut && fcuPowered;
    }
    return value != 0.0;  // NaN and negative values light the lamp
}

}  // namespace fenixA320
