// Aircraft variant from the title, and the one debugger line per change.
#include "core/variant.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace fenixA320 {
namespace {

std::vector<std::string> lines;
void capture(const char* line) { lines.emplace_back(line); }

TEST(VariantDetector, ClassifiesByMarkerWithPrecedenceAndIgnoringCase) {
    EXPECT_EQ(classifyTitle("FenixSim A320 CEO IAE Air Example"), kA320);
    EXPECT_EQ(classifyTitle("fenix a321neo livery"), kA321);
    EXPECT_EQ(classifyTitle("Fenix A319 CFM"), kA319);
    EXPECT_EQ(classifyTitle("A320 family shown as A321"), kA321);
    EXPECT_EQ(classifyTitle("A319 with A320 wing"), kA320);
    EXPECT_EQ(classifyTitle("Cessna 172"), kUnknown);
    EXPECT_EQ(classifyTitle("A32"), kUnknown);
}

TEST(VariantDetector, LooksAtMostAtTheFirst256Characters) {
    std::string title(256, 'x');
    title += "A320";
    EXPECT_EQ(classifyTitle(title.c_str()), kUnknown);
    title.replace(252, 4, "A319");
    EXPECT_EQ(classifyTitle(title.c_str()), kA319);
}

TEST(VariantDetector, PrintsOneLinePerChange) {
    lines.clear();
    std::atomic<int32_t> variant{kUnknown};
    DetectVariant(&variant, "Airliner without marker", capture);
    EXPECT_TRUE(lines.empty());
    DetectVariant(&variant, "Fenix A320 Test", capture);
    DetectVariant(&variant, "Fenix A320 Test", capture);
    DetectVariant(&variant, "", capture);
    DetectVariant(&variant, nullptr, capture);
    EXPECT_EQ(variant.load(), kA320);
    DetectVariant(&variant, "fenix a321", capture);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "[VariantDetector] variant=A320 title=\"Fenix A320 Test\"\n");
    EXPECT_EQ(lines[1], "[VariantDetector] variant=A321 title=\"fenix a321\"\n");
}

TEST(VariantDetector, LongTitleIsCutOffAtTheLineBudget) {
    lines.clear();
    std::atomic<int32_t> variant{kUnknown};
    const std::string title = "A321" + std::string(400, 'T');
    DetectVariant(&variant, title.c_str(), capture);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].size(), 319u);
    EXPECT_EQ(lines[0].rfind("[VariantDetector] variant=A321 title=\"A321TTT", 0), 0u);
    EXPECT_EQ(lines[0].find('\n'), std::string::npos);
}

}  // namespace
}  // namespace fenixA320
