// Recognises the loaded airliner variant from the aircraft title.
#pragma once

#include <atomic>
#include <cstdint>

namespace fenixA320 {

enum AircraftVariant : int32_t { kUnknown = 0, kA319 = 1, kA320 = 2, kA321 = 3 };

const char* variantName(int32_t variant);

// Classifies a title; the A321 marker wins over A320, which wins over A319. Reads at most 256
// characters.
int32_t classifyTitle(const char* title);

// Stores the variant of `title` (NUL-terminated) in `variant` and, when it changed, writes one
// line to `output`. A null or empty title changes nothing.
void DetectVariant(std::atomic<int32_t>* variant, const char* title,
                   void (*output)(const char* line));

}  // namespace fenixA320
