// Digital, encoder and analog events through the core, down to the writes they leave behind.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "catalogue/bindings.h"
#include "tests/input/input_harness.h"

namespace fenixA320::testing {
namespace {

using Values = std::vector<double>;

constexpr uint32_t kEngMaster1 = 395;  // definitions of the variables written
constexpr uint32_t kSpeedbrakeArmed = 410;
constexpr uint32_t kParkingBrake = 497;
constexpr uint32_t kFlaps = 404;
constexpr uint32_t kAltitudeKnob = 415;
constexpr uint32_t kDome = 611;
constexpr uint32_t kWrGain = 747;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

class InputDispatch : public InputHarness {};

TEST_F(InputDispatch, OneVariableInputQueuesEveryEventInOrder) {
    digital(449, true);
    digital(449, false);
    digital(449, true);
    EXPECT_EQ(drain().queuedTo(kEngMaster1), (Values{1.0, 0.0, 1.0}));
}

TEST_F(InputDispatch, AdfTransferKeysTakeTheBindingAndTheAudioPanelBlock) {
    digital(2, true);
    const Writes writes = drain();
    EXPECT_EQ(writes.queuedTo(2), Values{1.0});
    const Values& block = writes.latest.at(DEF_ASP_KEYS);
    ASSERT_EQ(block.size(), 178u);
    EXPECT_EQ(block[1], 1.0);
    EXPECT_EQ(block[0], 0.0);
}

TEST_F(InputDispatch, InputsNoRouteTakesWriteNothing) {
    std::vector<int32_t> ids{0,
                             35,
                             91,
                             147,
                             203,
                             324,
                             382,
                             383,
                             963,
                             -1,
                             965,
                             std::numeric_limits<int32_t>::min(),
                             std::numeric_limits<int32_t>::max()};
    for (int32_t id = 387; id <= 397; ++id) ids.push_back(id);
    for (int32_t id = 401; id <= 409; ++id) ids.push_back(id);
    for (int32_t id = 628; id <= 639; ++id) ids.push_back(id);
    for (int32_t id = 897; id <= 916; ++id) ids.push_back(id);
    for (const int32_t id : ids) {
        EXPECT_FALSE(core.setDigitIn(id, id != 963, t0)) << id;  // 963 only acts when pressed
        EXPECT_TRUE(drain().none()) << id;
    }
}

TEST_F(InputDispatch, ParkingBrakeMicroswitchesWriteOnClosingOnly) {
    EXPECT_TRUE(core.setDigitIn(605, true, t0));
    EXPECT_TRUE(core.setDigitIn(605, false, t0));
    EXPECT_TRUE(core.setDigitIn(964, true, t0));
    EXPECT_TRUE(core.setDigitIn(964, false, t0));
    EXPECT_EQ(drain().queuedTo(kParkingBrake), (Values{1.0, 0.0}));
    EXPECT_TRUE(core.lastDigitIn.at(605).seen);
    EXPECT_TRUE(core.lastDigitIn.at(964).seen);
}

TEST_F(InputDispatch, LandingElevationAutoPassesTheDeadBand) {
    core.SetAnalog(116, -2.5);
    EXPECT_EQ(latestValue(drain(), 2116), -2.5);
    EXPECT_TRUE(core.setDigitIn(963, true, t0));  // within 1.0 of the last accepted value
    EXPECT_TRUE(drain().none());
    core.SetAnalog(116, 0.0);
    drain();
    EXPECT_TRUE(core.setDigitIn(963, true, t0));
    EXPECT_EQ(latestValue(drain(), 2116), -3.0);
    EXPECT_FALSE(core.setDigitIn(963, false, t0));
    EXPECT_TRUE(drain().none());
}

TEST_F(InputDispatch, SpeedbrakeLeverFollowsTheArmedSwitch) {
    core.SetAnalog(88, 0.5);
    EXPECT_EQ(latestValue(drain(), 2088), 2.0);
    digital(472, true);
    Writes writes = drain();
    EXPECT_EQ(writes.queuedTo(kSpeedbrakeArmed), Values{1.0});
    EXPECT_EQ(latestValue(writes, 2088), 0.0);
    digital(472, true);  // unchanged: the lever is not recomputed
    writes = drain();
    EXPECT_EQ(writes.queuedTo(kSpeedbrakeArmed), Values{1.0});
    EXPECT_EQ(writes.latest.count(2088), 0u);
    digital(472, false);
    EXPECT_EQ(latestValue(drain(), 2088), 2.0);
}

TEST_F(InputDispatch, RudderTrimContactsOnlyMoveTheTrimPosition) {
    const auto trim = [this] { return core.input.rudderTrimPosition.load(); };
    digital(469, true);
    EXPECT_EQ(trim(), 0.0);
    digital(468, true);
    digital(469, false);
    EXPECT_EQ(trim(), 1.0);
    digital(470, true);
    EXPECT_EQ(trim(), 2.0);
    EXPECT_TRUE(drain().none());
}

TEST_F(InputDispatch, PositionContactsWriteTheirSwitchVariable) {
    digital(460, true);  // flaps start at 0: nothing to report
    EXPECT_TRUE(drain().none());
    digital(478, true);
    EXPECT_EQ(latestValue(drain(), kAltitudeKnob), -1.0);
    digital(478, false);  // no rest position: unknown until the next contact
    digital(477, true);
    EXPECT_EQ(latestValue(drain(), kAltitudeKnob), 0.0);
    digital(917, true);
    EXPECT_EQ(latestValue(drain(), kWrGain), -5.0);
    digital(743, true);
    EXPECT_EQ(latestValue(drain(), kDome), 2.0);
    EXPECT_EQ(core.switchVarValue(kDome), 2.0);
    EXPECT_EQ(core.output.domeLightValue.load(), 2.0);
    digital(743, false);  // back to rest: dim
    EXPECT_EQ(core.switchVarValue(kDome), 1.0);
    EXPECT_EQ(core.switchVarValue(-3), 0.0);
}

TEST_F(InputDispatch, GatedPanelBlockIsWrittenAfterEveryMemberEvent) {
    digital(230, true, t0);
    digital(230, false, t0 + milliseconds(50));  // inside the gate: dropped
    Values block = drain().latest.at(DEF_CDU_KEYS);
    ASSERT_EQ(block.size(), 146u);
    EXPECT_EQ(block[0], 1.0);
    digital(231, true, t0 + milliseconds(60));  // another key, its own gate
    block = drain().latest.at(DEF_CDU_KEYS);
    EXPECT_EQ(block[0], 1.0);
    EXPECT_EQ(block[1], 1.0);
    digital(230, false, t0 + milliseconds(100));
    EXPECT_EQ(drain().latest.at(DEF_CDU_KEYS)[0], 0.0);
}

TEST_F(InputDispatch, KeyPressedRightAfterBuildIsDropped) {
    digital(481, true, core.input.builtAt + milliseconds(50));
    EXPECT_EQ(drain().latest.at(DEF_FCU_KEYS), Values(23, 0.0));
    digital(481, true, core.input.builtAt + milliseconds(100));
    EXPECT_EQ(drain().latest.at(DEF_FCU_KEYS)[0], 1.0);
}

TEST_F(InputDispatch, EncodersCountDetentsUpOnlyForDirectionOne) {
    for (const int32_t direction : {1, 1, 1, 0, -1, 2}) core.SetEncoder(1, direction);
    EXPECT_EQ(drain().queuedTo(1001), (Values{1.0, 2.0, 3.0, 2.0, 1.0, 0.0}));
    for (const int32_t id : {0, 44, -5, std::numeric_limits<int32_t>::max()})
        core.SetEncoder(id, 1);
    EXPECT_TRUE(drain().none());
    core.connected = false;
    core.SetEncoder(1, 1);
    core.connected = true;
    core.SetEncoder(1, 1);
    EXPECT_EQ(drain().queuedTo(1001), Values{1.0});
}

TEST_F(InputDispatch, ThrottleLeversShareOneDeadBandRecord) {
    core.SetAnalog(89, 0.5);
    EXPECT_NEAR(latestValue(drain(), 2089), 2.7246, 1e-4);
    core.SetAnalog(89, 0.503);
    EXPECT_TRUE(drain().none());
    core.SetAnalog(90, 0.501);
    core.SetAnalog(89, 0.502);
    const Writes writes = drain();
    EXPECT_EQ(writes.latest.count(2089), 1u);
    EXPECT_EQ(writes.latest.count(2090), 1u);
}

TEST_F(InputDispatch, ThrottleOutsideTheRangeThrowsAndLeavesNoTrace) {
    try {
        core.SetAnalog(90, 1.2);
        ADD_FAILURE() << "1.2 accepted";
    } catch (const std::out_of_range& error) {
        EXPECT_EQ(std::string(error.what()), "Value must be in range [-1.0, 1.0]");
    }
    EXPECT_THROW(core.SetAnalog(90, kNaN), std::out_of_range);
    EXPECT_TRUE(drain().none());
    EXPECT_FALSE(core.lastAnalog.at(90).seen);
}

TEST_F(InputDispatch, FlapLeverCapturesDetentsAndHoldsBetweenThem) {
    core.SetAnalog(124, 2.1);
    Writes writes = drain();
    EXPECT_EQ(latestValue(writes, kFlaps), 2.0);
    EXPECT_EQ(writes.latest.count(2124), 0u);  // the lever has no variable of its own
    core.SetAnalog(124, 2.6);
    EXPECT_TRUE(drain().none());
    core.SetAnalog(124, 0.1);
    EXPECT_EQ(latestValue(drain(), kFlaps), 0.0);
    EXPECT_TRUE(core.lastAnalog.at(124).seen);
}

TEST_F(InputDispatch, TrimWheelIsWrittenOnlyWhileTheTrimMotorIsUnpowered) {
    core.SetAnalog(82, 1.2345);
    EXPECT_EQ(latestValue(drain(), 2082), 1235.0);
    core.digitOutValues[471].store(1.0);
    core.SetAnalog(82, 2.5);
    EXPECT_TRUE(drain().none());
    EXPECT_EQ(core.output.elevatorTrimInput.load(), 2.5);
    EXPECT_EQ(core.lastAnalog.at(82).value, 1.2345);
}

TEST_F(InputDispatch, TemperatureSelectorsConvertAfterTheirDeadBand) {
    core.SetAnalog(114, 24.0);
    EXPECT_EQ(latestValue(drain(), 2114), 0.5);
    core.SetAnalog(114, 24.3);
    EXPECT_TRUE(drain().none());
    core.SetAnalog(112, 26.0);
    EXPECT_DOUBLE_EQ(latestValue(drain(), 2112), 1.0);
}

TEST_F(InputDispatch, SignalsWithoutAVariableOfTheirOwnWriteNothing) {
    core.SetAnalog(61, 0.7);
    core.SetAnalog(100, 0.7);
    EXPECT_TRUE(drain().none());
    EXPECT_TRUE(core.lastAnalog.at(61).seen);
    core.SetAnalog(1, 0.42);  // a volume knob: raw value
    EXPECT_EQ(latestValue(drain(), 2001), 0.42);
}

TEST_F(InputDispatch, NonFiniteAnalogValuesNeverReachTheAircraft) {
    for (int32_t id = -1; id <= 125; ++id) {
        for (const double bad : {kNaN, kInf, -kInf}) {
            try {
                core.SetAnalog(id, bad);
            } catch (const std::out_of_range&) {
                EXPECT_TRUE(id == 89 || id == 90) << id;
            }
        }
    }
    EXPECT_TRUE(drain().none());
}

}  // namespace
}  // namespace fenixA320::testing
