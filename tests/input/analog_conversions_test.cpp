// Conversions and dead bands of the analog inputs.
#include "input/analog_conversions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <vector>

namespace fenixA320 {
namespace {

TEST(AnalogConversions, ThrottleDetentsRangeEndsAndFlapDetents) {
    // Just below -0.04 is the last step (1.6) before the idle band; 0.05 gives 2.072, which
    // snaps to the detent; -0.19 gives exactly 0.9, which does not.
    const struct {
        double lever, expected;
    } cases[] = {{-1.0, 0.0},  {-0.5, 0.5 / 0.9},       {-0.1, 1.0},  {-0.19, 0.9},
                 {-0.05, 1.5}, {-0.04 - 1e-9, 1.6},     {-0.04, 2.0}, {0.0, 2.0},
                 {0.05, 2.0},  {0.5, 0.5 / 0.69 + 2.0}, {0.69, 3.0},  {0.86, 4.0},
                 {1.0, 5.0}};
    for (const auto& c : cases) EXPECT_NEAR(throttleDetent(c.lever), c.expected, 1e-6) << c.lever;
    // The text of the exception goes nowhere: the exported SetAnalog swallows it.
    for (const double bad : {1.2, -1.0000001, std::nan(""), HUGE_VAL})
        EXPECT_THROW(throttleDetent(bad), std::out_of_range) << bad;
    // The other conversions at their range ends.
    EXPECT_EQ(
        (std::vector{trimWheelValue(-4.0), trimWheelValue(13.5), speedbrakeValue(0.049, false),
                     speedbrakeValue(1.0, false), axisValue(-1.0)}),
        (std::vector{-4000.0, 13500.0, 1.0, 3.0, -1000.0}));
    EXPECT_DOUBLE_EQ(speedbrakeValue(0.05, false), 1.1);
    // Captured within 0.25 of a detent, exactly 0.25 is not close enough; between detents the
    // last one holds; every detent up to FULL (4) can be captured.
    EXPECT_EQ((std::vector{flapDetent(2.76, 2), flapDetent(-0.2, 3), flapDetent(2.25, 1),
                           flapDetent(4.1, 1), flapDetent(4.9, 2)}),
              (std::vector{3, 0, 1, 4, 2}));
}

TEST(AnalogFilter, EachSignalHasItsDeadBand) {
    const struct {
        int32_t id;
        double band;
    } cases[] = {{116, 1.0},  {61, 0.05}, {62, 0.05},  {65, 0.01}, {106, 0.01},
                 {117, 0.01}, {68, 0.01}, {69, 0.01},  {112, 0.5}, {115, 0.5},
                 {114, 0.5},  {111, 0.5}, {89, 0.005}, {122, 0.5}};
    auto filters = makeAnalogFilters();
    for (const auto& c : cases) {
        const int record = analogFilterFor(c.id);
        ASSERT_GE(record, 0) << c.id;
        AnalogFilter& filter = filters[static_cast<std::size_t>(record)];
        EXPECT_TRUE(filter.admit(c.id, c.band));
        EXPECT_FALSE(filter.admit(c.id, c.band * 1.9)) << c.id;
        EXPECT_TRUE(filter.admit(c.id, c.band * 2)) << c.id;  // exactly the band away: passes
    }
    // Past the list, and below it, every input is written raw, without a dead band.
    for (const int32_t unfiltered : {0, 60, 73, 77, 82, 88, 124, 125, 500, -1})
        EXPECT_EQ(analogFilterFor(unfiltered), -1) << unfiltered;
    for (const int32_t outside : {125, 500, -1}) EXPECT_EQ(analogRule(outside), AnalogRule::Raw);
}

}  // namespace
}  // namespace fenixA320
