// Speed and position of the pitch-trim servo, on synthetic time.
#include "output/servo_pwm.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <utility>

namespace fenixA320 {
namespace {

// One speed pass per call, `distance` between the trim and the wheel, `ms` on a synthetic clock.
class TrimServo : public ::testing::Test {
  protected:
    double speed(int64_t ms, double distance) {
        return trimServoSpeed(state, TimePoint{} + std::chrono::milliseconds(ms + 5'000'000),
                              distance, 0.0);
    }
    ServoState state;
};

TEST_F(TrimServo, SteadyDistanceGivesSpeedFromTheFilterWithinItsLimits) {
    const std::pair<double, double> cases[] = {{0.05, 600.0}, {0.5, 3000.0}, {0.03, 360.0}};
    for (const auto& [distance, expected] : cases) {
        state = ServoState{};
        EXPECT_EQ(speed(0, distance), 250.0) << distance;  // first pass: no sample yet
        for (int i = 1; i <= 8; ++i) EXPECT_NEAR(speed(50 * i, distance), expected, 1e-9) << i;
    }
}

TEST_F(TrimServo, SettledWheelGetsFixedSpeedFromTheTwentiethPassAndStaleOrNaNPassesSkipTheFilter) {
    for (int i = 0; i < 19; ++i) EXPECT_EQ(speed(50 * i, 0.01), 250.0) << i;  // 120 raised
    EXPECT_EQ(speed(950, 0.01), 1000.0);
    EXPECT_EQ(speed(1000, 0.01), 1000.0);
    EXPECT_EQ(speed(1050, 0.02), 250.0);  // one pass at 0.02 restarts the count from zero
    for (int i = 1; i < 20; ++i) EXPECT_EQ(speed(1050 + 50 * i, 0.0), 250.0) << i;
    EXPECT_EQ(speed(2050, 0.0), 1000.0);
    // A pass a second or more later, or not a number, leaves the filter alone.
    state = ServoState{};
    for (int i = 0; i <= 2; ++i) speed(50 * i, 0.5);  // two samples of 10.0
    ASSERT_EQ(state.trimSpeedFilter.size(), 2u);
    EXPECT_EQ(speed(1100, 0.5), 250.0);  // 1000 ms on: the filter's 3000 is not used either
    EXPECT_EQ(speed(1150, std::nan("")), 250.0);
    EXPECT_EQ(state.trimSpeedFilter.size(), 2u);
    EXPECT_EQ(speed(2149, 0.0), 3000.0);  // 999 ms on: a zero sample, (10 + 20 + 0) / 6 * 600
    EXPECT_EQ(state.trimSpeedFilter.size(), 3u);
}

TEST(TrimSpeedFilter, WeighsTheLastFiveSamplesNewestMost) {
    TrimSpeedFilter filter;
    EXPECT_EQ(filter.add(3.0), 3.0);
    EXPECT_EQ(filter.add(6.0), 5.0);  // (3 + 12) / 3
    for (const double x : {0.0, 0.0, 0.0}) filter.add(x);
    EXPECT_DOUBLE_EQ(filter.add(15.0), 81.0 / 15.0);  // 3.0 dropped: (1 * 6 + 5 * 15) / 15
}

TEST(TrimServoPosition, EveryTwentySecondPassNudgesALaggingWheel) {
    ServoState state;
    const auto sent = [&state](double wheel) {  // -1: nothing sent
        const TrimServoPosition p = trimServoPosition(state, 1.0, wheel);
        return p.send ? p.position : -1.0;
    };
    for (int i = 0; i < 21; ++i) EXPECT_EQ(sent(0.0), 1.0) << i;
    EXPECT_DOUBLE_EQ(sent(0.0), 1.05);
    EXPECT_EQ(sent(0.0), 1.0);
    for (int i = 0; i < 20; ++i) EXPECT_EQ(sent(0.96), 1.0) << i;
    EXPECT_EQ(sent(0.96), -1.0);  // close enough: the check sends nothing
    EXPECT_EQ(sent(0.96), 1.0);
}

}  // namespace
}  // namespace fenixA320
