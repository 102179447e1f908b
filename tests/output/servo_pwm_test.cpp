// The servo pass (gauges, pitch-trim position and speed) and the backlight levels, driven with
// synthetic time.
#include "output/servo_pwm.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <utility>
#include <vector>

#include "core/core.h"
#include "tests/output/value_tables.h"

namespace fenixA320 {
namespace {

using std::chrono::milliseconds;

TimePoint at(int64_t ms) { return TimePoint{} + std::chrono::seconds(5000) + milliseconds(ms); }

struct ServoCall {
    char kind;  // 'S' position, 'V' speed
    uint32_t id;
    double value;
};

class ServoPass : public ::testing::Test {
  protected:
    void SetUp() override {
        core.BuildInputLogic();
        core.SetServoProc([this](unsigned id, double v) {
            calls.push_back({'S', id, v});
            return true;
        });
        core.SetServoSpeedProc([this](unsigned id, double v) {
            calls.push_back({'V', id, v});
            return true;
        });
    }

    // Pitch trim and wheel position; the motor is powered unless told otherwise.
    void trim(double aircraft, double wheel, bool motorPowered = true) {
        core.displayValues[displayId::kElevatorTrim].store(aircraft);
        core.output.elevatorTrimInput.store(wheel);
        core.digitOutValues[digitOutId::kTrimMotorPower].store(motorPowered ? 1.0 : 0.0);
    }
    std::vector<ServoCall> pass(int64_t ms) {
        calls.clear();
        core.servoPass(at(ms));
        return calls;
    }
    // Trim positions sent in one pass.
    std::vector<double> trimPositions(int64_t ms) {
        std::vector<double> positions;
        for (const ServoCall& call : pass(ms))
            if (call.kind == 'S' && call.id == kPitchTrimServo) positions.push_back(call.value);
        return positions;
    }
    double speed(int64_t ms) {
        for (const ServoCall& call : pass(ms))
            if (call.kind == 'V') return call.value;
        ADD_FAILURE() << "no speed sent";
        return -1.0;
    }

    FenixA320Core core;
    std::vector<ServoCall> calls;
};

TEST_F(ServoPass, SendsSpeedThenTrimThenScaledGauges) {
    trim(0.3, 0.3);
    core.displayValues[displayId::kBrakeAccuPressure].store(3000.0);
    core.displayValues[displayId::kBrakeLeftPressure].store(300.0);
    core.displayValues[displayId::kBrakeRightPressure].store(-6.0);
    const std::vector<ServoCall> sent = pass(0);
    ASSERT_EQ(sent.size(), 5u);
    const std::pair<char, uint32_t> order[] = {{'V', 4}, {'S', 4}, {'S', 1}, {'S', 2}, {'S', 3}};
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(sent[i].kind, order[i].first) << i;
        EXPECT_EQ(sent[i].id, order[i].second) << i;
    }
    EXPECT_EQ(sent[2].value, 750.0);
    EXPECT_EQ(sent[3].value, 100.0);
    EXPECT_EQ(sent[4].value, -2.0);
}

TEST_F(ServoPass, UnpoweredMotorLeavesTheWheelAloneAndGaugesStillRun) {
    trim(0.3, 0.0, false);
    core.digitOutValues[digitOutId::kFcuPower].store(0.0);
    const std::vector<ServoCall> sent = pass(0);
    ASSERT_EQ(sent.size(), 4u);
    EXPECT_EQ(sent[0].kind, 'V');
    EXPECT_EQ(sent[1].id, 1u);
}

TEST_F(ServoPass, EveryTwentySecondPassNudgesALaggingWheel) {
    trim(1.0, 0.0);
    for (int i = 0; i < 21; ++i) EXPECT_EQ(trimPositions(50 * i), std::vector<double>{1.0}) << i;
    const std::vector<double> nudged = trimPositions(1050);
    ASSERT_EQ(nudged.size(), 1u);
    EXPECT_DOUBLE_EQ(nudged[0], 1.05);
    EXPECT_EQ(trimPositions(1100), std::vector<double>{1.0});
    trim(1.0, 0.96);  // close enough: the check sends nothing
    for (int i = 0; i < 20; ++i) EXPECT_EQ(trimPositions(1150 + 50 * i).size(), 1u);
    EXPECT_TRUE(trimPositions(2150).empty());
    EXPECT_EQ(trimPositions(2200), std::vector<double>{1.0});
}

TEST_F(ServoPass, SteadyDistanceGivesSpeedFromTheFilter) {
    const std::pair<double, double> cases[] = {{0.05, 600.0}, {0.5, 3000.0}, {0.03, 360.0}};
    for (const auto& [distance, expected] : cases) {
        ServoState fresh;
        core.output.servo = fresh;
        trim(distance, 0.0);
        EXPECT_EQ(speed(0), 250.0) << distance;  // first pass: no sample yet
        for (int i = 1; i <= 8; ++i) EXPECT_NEAR(speed(50 * i), expected, 1e-9) << distance;
    }
}

TEST_F(ServoPass, SettledWheelGetsFixedSpeedFromTheTwentiethPass) {
    trim(0.01, 0.0);
    for (int i = 0; i < 19; ++i) EXPECT_EQ(speed(50 * i), 250.0) << i;  // 120 raised to 250
    EXPECT_EQ(speed(950), 1000.0);
    EXPECT_EQ(speed(1000), 1000.0);
    trim(0.02, 0.0);  // one pass at 0.02 restarts the count
    EXPECT_EQ(speed(1050), 250.0);
    trim(0.0, 0.0);
    EXPECT_EQ(speed(1100), 250.0);
}

TEST_F(ServoPass, PassASecondOrMoreLaterLeavesTheFilterAlone) {
    trim(0.5, 0.0);
    for (int i = 0; i <= 2; ++i) speed(50 * i);  // two samples of 10.0
    ASSERT_EQ(core.output.servo.trimSpeedFilter.size(), 2u);
    EXPECT_EQ(speed(1100), 250.0);  // 1000 ms on: the filter's 3000 is not used either
    EXPECT_EQ(core.output.servo.trimSpeedFilter.size(), 2u);
    trim(0.0, 0.0);
    EXPECT_EQ(speed(2099), 3000.0);  // 999 ms on: a zero sample, (10 + 20 + 0) / 6 * 600
    EXPECT_EQ(core.output.servo.trimSpeedFilter.size(), 3u);
}

TEST_F(ServoPass, MissingSpeedCallbackSkipsOnlyTheSpeedStep) {
    core.SetServoSpeedProc({});
    trim(0.01, 0.0);
    EXPECT_EQ(pass(0).size(), 4u);
    EXPECT_EQ(core.output.servo.lastServoTime, TimePoint{});
    EXPECT_EQ(core.output.servo.trimSettleCount, 0);
    core.SetServoProc({});
    EXPECT_TRUE(pass(50).empty());
}

TEST_F(ServoPass, TrimThatIsNotANumberKeepsTheSpeedInRange) {
    trim(0.5, 0.0);
    speed(0);
    trim(std::nan(""), 0.0);
    EXPECT_EQ(speed(50), 250.0);
    EXPECT_EQ(core.output.servo.trimSpeedFilter.size(), 0u);
}

TEST(TrimSpeedFilter, WeighsTheLastFiveSamplesNewestMost) {
    TrimSpeedFilter filter;
    EXPECT_EQ(filter.add(3.0), 3.0);
    EXPECT_EQ(filter.add(6.0), 5.0);  // (3 + 12) / 3
    for (const double x : {0.0, 0.0, 0.0}) filter.add(x);
    EXPECT_DOUBLE_EQ(filter.add(15.0), 81.0 / 15.0);  // 3.0 dropped: (1 * 6 + 5 * 15) / 15
}

class PwmChannels : public ::testing::Test {
  protected:
    void SetUp() override { tables.setDigit(digitOutId::kFcuPower, 1.0); }
    ValueTables tables;
};

TEST_F(PwmChannels, KnobsScaleToFullLevelWithTheFloor) {
    const struct {
        uint32_t display;
        std::size_t channel;
        double knob;
        double level;
    } cases[] = {{122, 4, 0.01, 0.0},   {122, 4, 0.02, 50.0},  {122, 4, 1.0, 2500.0},
                 {121, 1, 2.0, 2500.0}, {121, 1, 0.03, 0.0},   {52, 2, 1.0, 1250.0},
                 {126, 3, 0.5, 625.0},  {123, 5, 0.5, 1250.0}, {104, 6, 0.1, 250.0},
                 {105, 7, 0.2, 500.0},  {99, 10, 0.3, 750.0},  {101, 11, 0.4, 1000.0},
                 {53, 14, 0.6, 1500.0}};
    for (const auto& c : cases) {
        tables.setDisplay(c.display, c.knob);
        EXPECT_DOUBLE_EQ(pwmLevels(tables.view(), 0.0)[c.channel], c.level) << c.channel;
    }
    tables.setDisplay(53, std::nan(""));
    EXPECT_TRUE(std::isnan(pwmLevels(tables.view(), 0.0)[14]));
}

TEST_F(PwmChannels, SwitchesGiveDimBrightOrDark) {
    const std::pair<double, double> cases[] = {
        {1.0, 1250.0}, {2.0, 2500.0}, {1.5, 0.0}, {0.0, 0.0}, {std::nan(""), 0.0}};
    for (const auto& [position, level] : cases) {
        tables.setDisplay(141, position);
        tables.setDisplay(142, position);
        const PwmLevels levels = pwmLevels(tables.view(), position);
        for (const std::size_t channel : {8u, 9u, 12u, 13u})
            EXPECT_EQ(levels[channel], level) << position;
    }
    EXPECT_EQ(pwmLevels(tables.view(), 0.0)[15], 2500.0);
}

}  // namespace
}  // namespace fenixA320
