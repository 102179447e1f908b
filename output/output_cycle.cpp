// The output cycle: lamps, displays and backlight levels handed to the host's callbacks.
#include "core/core.h"

namespace fenixA320 {

bool FenixA320Core::UpdateOutput() {
    if (!connected.load()) return false;
    return true;
}

void FenixA320Core::servoPass(TimePoint) {}

}  // namespace fenixA320
