// Display texts: every rule of formatDisplay, with the widths, signs, padding and rounding the
// host's segment mapping depends on.
#include "output/display_format.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <initializer_list>
#include <random>
#include <string>
#include <vector>

#include "tests/output/value_tables.h"

namespace fenixA320 {
namespace {

namespace out = digitOutId;

struct Case {
    uint32_t id;
    double value;
    const char* text;
};

class DisplayFormat : public ::testing::Test {
  protected:
    void SetUp() override { tables.setDigit(out::kFcuPower, 1.0); }

    // Each display receives its value, turned into the value text as the cycle does it.
    void expectTexts(std::initializer_list<Case> cases) {
        for (const Case& c : cases) {
            tables.setDisplay(c.id, c.value);
            EXPECT_EQ(formatDisplay(c.id, std::to_string(c.value), tables.view()), c.text)
                << "display " << c.id << ", value " << c.value;
        }
    }

    ValueTables tables;
};
using DisplayFcu = DisplayFormat;
using DisplayBaro = DisplayFormat;
using DisplayClock = DisplayFormat;
using DisplayRmp = DisplayFormat;
using DisplayTransponder = DisplayFormat;

TEST_F(DisplayFormat, NoPowerBlanksEveryDisplayEvenInLightTest) {
    tables.setDigit(out::kFcuPower, 0.0);
    for (const double annLight : {0.0, 2.0}) {
        tables.setDigit(out::kAnnLight, annLight);
        for (uint32_t id = 0; id < kDisplaySlots; ++id) expectTexts({{id, 250.0, ""}});
    }
    tables.setDigit(out::kAnnLight, 0.0);
    tables.setDigit(out::kFcuPower, std::nan(""));  // NaN counts as powered
    expectTexts({{0, 250.0, "250.000000"}});
}

TEST_F(DisplayFormat, LightTestShowsEachDisplaysPatternBeforeAnyOtherRule) {
    tables.setDigit(out::kAnnLight, 2.0);
    tables.setDigit(out::kSpeedDashed, 1.0);
    expectTexts({{51, -1, "8.8.8"},
                 {54, -1, "8.8.8"},
                 {55, -1, "8.888"},
                 {46, -1, "88888"},
                 {47, -1, "88.88"},
                 {50, -1, "88.88"},
                 {16, -1, "88.8"},
                 {17, -1, "88.8"},
                 {92, -1, "88.88"},
                 {93, -1, "88.88"},
                 {95, -1, "8888888"},
                 {36, -1, "888.8"},
                 {127, -1, "8.8.8.8.8.8"},
                 {130, -1, "8.8.8.8.8.8"},
                 {5, -1, "8888"},
                 {0, -1, "8888"},
                 {131, -1, "8888"},
                 {82, -1, "8888"},
                 {142, -1, "8888"}});
    for (const double annLight : {1.0, 2.0000001}) {
        tables.setDigit(out::kAnnLight, annLight);
        expectTexts({{46, 100, "00100"}});
    }
}

TEST(DisplayValueText, MatchesPrintfFixedNotation) {
    std::vector<double> values = {
        0.0,       -0.0,      -1e-9,    250.0,   -1.5, 0.0078125, 2.5e-7,
        0.0000005, 1.0000005, 123.4565, 1.0 / 3, 1e9,  -1e9,      999999999.9999995};
    std::mt19937_64 rng(20240611);
    for (int i = 0; i < 2000; ++i) {
        const auto micro =
            static_cast<int64_t>(rng() % 2'000'000'000'000'000) - 1'000'000'000'000'000;
        values.push_back(static_cast<double>(micro) / 1e6);
        values.push_back(static_cast<double>(micro % 100'000'000) / 128.0);  // exact ties
    }
    for (const double v : values) {
        char expected[32];
        std::snprintf(expected, sizeof expected, "%f", v);
        ValueTextBuffer buffer;
        ASSERT_EQ(displayValueText(v, buffer), expected) << v;
    }
}

TEST_F(DisplayFormat, PlainDisplaysAndBatteriesShowTheNumber) {
    expectTexts({{5, 250, "250.000000"},
                 {0, -1.5, "-1.500000"},
                 {131, 118000, "118000.000000"},  // observer RMP has no rule
                 {140, 1e9, "1000000000.000000"},
                 {16, 28, "28.0"},
                 {17, 27.96, "28.0"}});
}

TEST_F(DisplayFormat, RudderTrimShowsSideLetterAndMagnitude) {
    expectTexts({{36, 0, "L 0.0"}, {36, -0.0, "L 0.0"}, {36, 25, "R 2.5"}, {36, -123, "L12.3"}});
}

TEST_F(DisplayFcu, SpeedRoundsHalvesAwayFromZeroOrShowsMach) {
    expectTexts({{54, 250, "250"},
                 {54, 250.5, "251"},
                 {54, 99.4, "099"},
                 {54, -0.5, "-01"},
                 {54, 1000, "1000"}});
    EXPECT_EQ(formatDisplay(54, "1e300", tables.view()), "000");  // beyond the display range: 0
    tables.setDigit(out::kSpeedMach, 1.0);
    expectTexts({{54, 78, "0.78"}, {54, 100, "1.00"}});
}

TEST_F(DisplayFcu, DashedFlagsDashOnlyTheirOwnDisplay) {
    tables.setDigit(out::kSpeedDashed, 1.0);
    expectTexts({{54, 250, "---"}, {51, 90, "090"}, {55, 1500, "015oo"}});
    tables.setDigit(out::kSpeedMach, 1.0);
    tables.setDigit(out::kHeadingDashed, -1.0);
    tables.setDigit(out::kVerticalSpeedDashed, 1.0);
    expectTexts({{54, 78, "---"}, {51, 90, "---"}, {55, 1500, "---"}});
}

TEST_F(DisplayFcu, HeadingKeepsTheWholePartInThreeZeroFilledPlaces) {
    expectTexts({{51, 360, "360"},
                 {51, 7, "007"},
                 {51, 0, "000"},
                 {51, 359.9, "359"},        // cut, not rounded
                 {51, 359.9999999, "360"},  // the value text already rounds
                 {51, -5, "0-5"},
                 {51, 1000, ""}});
    EXPECT_EQ(formatDisplay(51, "  .5", tables.view()), "000");
}

TEST_F(DisplayFcu, VerticalSpeedInHundredsOrFlightPathAngle) {
    expectTexts({{55, 1500, "015oo"},
                 {55, -700, "-07oo"},
                 {55, -750, "-07oo"},
                 {55, -50, "000oo"},
                 {55, 49, "000oo"}});
    tables.setDigit(out::kTrackFpaMode, 1.0);
    expectTexts({{55, -750, "-0.8"},
                 {55, -1500, "-1.5"},
                 {55, 2000, " 2.0"},
                 {55, 2050.9, " 2.0"}});  // the whole part only: 2.0509 would round up
}

TEST_F(DisplayFcu, AltitudeIsFiveZeroFilledPlaces) {
    expectTexts(
        {{46, 35000, "35000"}, {46, 100, "00100"}, {46, 99.9, "00099"}, {46, -500, "-0500"}});
}

TEST_F(DisplayBaro, EachSideFollowsItsOwnFlagsAndValues) {
    tables.setDigit(out::kEfis1BaroStd, 1.0);
    tables.setDisplay(49, 1013.25);
    expectTexts({{47, 1013, "std"},
                 {48, 2992, "std"},
                 {50, 2992, "1013"},
                 {49, 998, "0998"},
                 {49, std::nan(""), "0000"}});  // read beside the text, with the same guard
    tables.setDigit(out::kEfis2BaroInch, 1.0);
    expectTexts({{49, 998, "29.92"}});
    tables.setDigit(out::kEfis2BaroStd, 1.0);
    expectTexts({{49, 998, "std"}});
}

TEST_F(DisplayClock, ChronometerDividesInSinglePrecision) {
    expectTexts({{92, -1, ""},
                 {92, 1234, "12.34"},
                 {92, 0, "00.00"},
                 {93, 5, "00.05"},
                 {93, 16777217, "167772.16"}});  // double precision would give .17
}

TEST_F(DisplayClock, MainDisplayFollowsTheClockMode) {
    tables.setDisplay(94, -1.0);
    expectTexts({{95, 123456, "12.3456"}, {95, 1234, "00.1234"}, {95, 16777217, "1677.7216"}});
    tables.setDisplay(94, -2.0);
    expectTexts({{95, 93456, "093456"}, {95, -1, ""}});
    tables.setDisplay(94, 0.0);
    expectTexts({{95, 93456, ""}});
}

TEST_F(DisplayRmp, ModeIndicatorsOfTheOwnPanelChooseTheFormat) {
    expectTexts({{127, 118000, "118.000"}, {128, 8330, "  8.330"}, {128, -1, ""}});
    tables.setDigit(out::kRmp1Vor, 1.0);
    tables.setDigit(out::kRmp2Ils, 0.99);
    expectTexts(
        {{128, 85, " C-085"}, {128, 84.5, " C-085"}, {127, 85, "  0.085"}, {130, 85, "  0.085"}});
    tables.setDigit(out::kRmp2Ils, 1.0);
    tables.setDigit(out::kRmp1Adf, 1.0);
    expectTexts({{130, 85, " C-085"}, {127, 20500, "  205.0"}, {128, 20500, "  205.0"}});
}

TEST_F(DisplayRmp, DataModeNeedsTheFlagAtExactlyOne) {
    tables.setDigit(out::kRmp2DataActive, 1.0);
    expectTexts({{129, 118000, " dAtA"}, {129, -1, ""}, {130, 118000, "118.000"}});
    tables.setDigit(out::kRmp2DataActive, 2.0);
    expectTexts({{129, 118000, "118.000"}});
}

TEST_F(DisplayTransponder, DigitCountChoosesCodeAndWidth) {
    const struct {
        double digits, standby;
        const char* text;
    } standbyCases[] = {{2, 7, "07"}, {8, 7, "00000007"}, {2, 12345, "12345"},
                        {0, 7, ""},   {9, 7, ""},         {3, -7, ""}};
    for (const auto& c : standbyCases) {
        tables.setDisplay(133, c.digits);
        tables.setDisplay(79, c.standby);
        expectTexts({{82, 1200, c.text}});
    }
    tables.setDisplay(133, 4.0);
    expectTexts({{82, 1200, "1200"}, {82, 7, "0007"}, {82, -1, ""}});
}

}  // namespace
}  // namespace fenixA320
