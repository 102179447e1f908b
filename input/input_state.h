// Run-time state of the input side, owned by the core.
#pragma once

namespace fenixA320 {

struct InputState {};

}  // namespace fenixA320
