// Aircraft variant from the title, and the one debugger line per change.
#include "core/variant.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace fenixA320 {
namespace {

std::vector<std::string> lines;
void capture(const char* line) { lines.emplace_back(line); }

// Markers in any letter case within the first 256 characters; A321 before A320 before A319.
TEST(VariantDetector, ClassifiesByMarkerWithPrecedenceAndIgnoringCase) {
    const std::string far = std::string(256, 'x') + "A320";
    const std::pair<std::string, int32_t> cases[] = {
        {"fenix a321neo livery", kA321},
        {"A320 family shown as A321", kA321},
        {"A319 with A320 wing", kA320},
        {"A32", kUnknown},
        {far, kUnknown},
        {std::string(far).replace(252, 4, "A319"), kA319}};
    for (const auto& [title, variant] : cases)
        EXPECT_EQ(classifyTitle(title.c_str()), variant) << title;
}

// One line per change, none for titles without a marker, and a long title cut to the line budget.
TEST(VariantDetector, PrintsOneLinePerChange) {
    lines.clear();
    std::atomic<int32_t> variant{kUnknown};
    DetectVariant(&variant, "Airliner without marker", capture);
    DetectVariant(&variant, "Fenix A320 Test", capture);
    DetectVariant(&variant, "Fenix A320 Test", capture);
    DetectVariant(&variant, "", capture);
    DetectVariant(&variant, nullptr, capture);
    EXPECT_EQ(variant.load(), kA320);
    DetectVariant(&variant, ("A321" + std::string(400, 'T')).c_str(), capture);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "[VariantDetector] variant=A320 title=\"Fenix A320 Test\"\n");
    EXPECT_EQ(lines[1].size(), 319u);
    EXPECT_EQ(lines[1].rfind("[VariantDetector] variant=A321 title=\"A321TTT", 0), 0u);
    EXPECT_EQ(lines[1].find('\n'), std::string::npos);
}

}  // namespace
}  // namespace fenixA320
