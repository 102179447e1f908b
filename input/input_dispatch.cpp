// Hardware events from the host turned into aircraft-variable writes.
#include "core/core.h"

namespace fenixA320 {

void FenixA320Core::initReplayMemories() {}
void FenixA320Core::buildInputSide() {}
void FenixA320Core::SetDigitIn(int32_t, bool) {}
void FenixA320Core::SetEncoder(int32_t, int32_t) {}
void FenixA320Core::SetAnalog(int32_t, double) {}
void FenixA320Core::rudderTrimPass(TimePoint) {}
void FenixA320Core::inputReplayPass(TimePoint) {}

}  // namespace fenixA320
