// The fuzz targets' entry points, shared by libFuzzer and the regression test.
#pragma once

#include <cstddef>
#include <cstdint>

namespace helmbridge::fuzz {

// The simulator message handler fed a decoded sequence of messages.
int simMessageOneInput(const uint8_t* data, std::size_t size);

// The export surface driven by a decoded sequence of host calls, against the stand-in.
int exportSurfaceOneInput(const uint8_t* data, std::size_t size);

// Under libFuzzer a real Start/Stop with the six workers runs at most once every few seconds;
// set, every one an input asks for runs (the regression test).
inline bool alwaysRunWorkers = false;

}  // namespace helmbridge::fuzz
