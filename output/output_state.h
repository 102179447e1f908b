// Run-time state of the output side, owned by the core.
#pragma once

namespace fenixA320 {

struct OutputState {};

}  // namespace fenixA320
