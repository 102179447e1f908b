// Aircraft variant detection from the title.
#include "core/variant.h"

#include <cctype>
#include <cstdio>
#include <string_view>

namespace fenixA320 {
namespace {

constexpr std::size_t kTitleChars = 256;
constexpr std::size_t kLineBytes = 320;

}  // namespace

const char* variantName(int32_t variant) {
    switch (variant) {
        case kA319:
            return "A319";
        case kA320:
            return "A320";
        case kA321:
            return "A321";
        default:
            return "Unknown";
    }
}

int32_t classifyTitle(const char* title) {
    if (title == nullptr) return kUnknown;
    char upper[kTitleChars];
    std::size_t length = 0;
    while (length < kTitleChars && title[length] != '\0') {
        upper[length] = static_cast<char>(std::toupper(static_cast<unsigned char>(title[length])));
        ++length;
    }
    const std::string_view text(upper, length);
    if (text.find("A321") != std::string_view::npos) return kA321;
    if (text.find("A320") != std::string_view::npos) return kA320;
    if (text.find("A319") != std::string_view::npos) return kA319;
    return kUnknown;
}

void DetectVariant(std::atomic<int32_t>* variant, const char* title,
                   void (*output)(const char* line)) {
    if (variant == nullptr || title == nullptr || title[0] == '\0') return;
    const int32_t detected = classifyTitle(title);
    const int32_t previous = variant->exchange(detected);
    if (previous == detected || output == nullptr) return;
    char line[kLineBytes];  // a longer line is cut off, always terminated
    std::snprintf(line, sizeof(line), "[VariantDetector] variant=%s title=\"%s\"\n",
                  variantName(detected), title);
    output(line);
}

}  // namespace fenixA320
