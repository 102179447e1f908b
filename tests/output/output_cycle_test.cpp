// The output cycle and the servo pass of the output side: gating, order and counts of the host
// calls, lamp states, the display value text and missing or failing callbacks.
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "catalogue/signal_lists.h"
#include "output/digital_outputs.h"
#include "output/output_side.h"
#include "output/output_values.h"
#include "output/servo_pwm.h"

namespace fenixA320 {
namespace {

namespace out = digitOutId;

struct HostCall {
    char kind;  // 'L' lamp, 'D' display, 'P' PWM, 'S' servo position, 'V' servo speed
    uint32_t id;
    std::string text;
    double level;

    bool operator==(const HostCall&) const = default;
};

class OutputCycle : public ::testing::Test {
  protected:
    void SetUp() override {
        received.allocate();
        digit(out::kFcuPower, 1.0);
        output.SetDigitOutProc([this](unsigned id, bool on) {
            calls.push_back({'L', id, on ? "on" : "off", 0.0});
            return true;
        });
        output.SetDisplayProc([this](unsigned id, std::string text) {
            calls.push_back({'D', id, std::move(text), 0.0});
            return true;
        });
        const auto record = [this](char kind) {
            return [this, kind](unsigned id, double level) {
                calls.push_back({kind, id, "", level});
                return true;
            };
        };
        output.SetPwmProc(record('P'));
        output.SetServoProc(record('S'));
        output.SetServoSpeedProc(record('V'));
    }

    // A frame that changes one value and keeps the others.
    void digit(uint32_t slot, double v) {
        digits[slot] = v;
        received.storeDigitOut(reinterpret_cast<const unsigned char*>(digits), 502);
    }
    void display(uint32_t id, double v) {
        displays[id] = v;
        received.storeDisplay(reinterpret_cast<const unsigned char*>(displays), 143);
    }

    std::vector<HostCall> cycle() {
        calls.clear();
        output.updateOutput(dome);
        return calls;
    }
    std::vector<HostCall> servoPass(int64_t ms) {
        calls.clear();
        output.servoPass(TimePoint{} + std::chrono::milliseconds(ms + 5'000'000), wheel);
        return calls;
    }
    std::vector<HostCall> callsOf(char kind) {
        std::vector<HostCall> result;
        for (const HostCall& call : cycle())
            if (call.kind == kind) result.push_back(call);
        return result;
    }
    std::map<uint32_t, bool> lamps() {
        std::map<uint32_t, bool> states;
        for (const HostCall& call : callsOf('L')) states[call.id] = call.text == "on";
        return states;
    }

    double digits[502] = {};
    double displays[143] = {};
    double dome = 0.0;   // the dome light switch position
    double wheel = 0.0;  // the trim wheel position the hardware reports
    ReceivedValues received;
    OutputSide output{received};
    std::vector<HostCall> calls;
};

TEST_F(OutputCycle, CallsNothingBeforeAnyValueAndAFailingCallbackCostsOnlyItsOwnCalls) {
    ReceivedValues none;
    OutputSide early{none};
    early.SetDigitOutProc([this](unsigned, bool) {
        calls.push_back({'L', 0, "", 0.0});
        return true;
    });
    early.updateOutput(0.0);
    early.servoPass(TimePoint{}, 0.0);
    EXPECT_TRUE(calls.empty());
    // A missing or throwing callback costs only its own calls.
    int lampAttempts = 0;
    output.SetDigitOutProc([&lampAttempts](unsigned, bool) -> bool {
        ++lampAttempts;
        throw std::runtime_error("host failure");
    });
    output.SetPwmProc({});            // the floor wrapper around an empty host function
    EXPECT_EQ(cycle().size(), 143u);  // the displays
    EXPECT_EQ(lampAttempts, 501);
}

// Every output every cycle, changed or not: the host keeps no state of its own.
TEST_F(OutputCycle, SendsLampsThenDisplaysThenChannelsInAscendingIdsEveryCycle) {
    digit(7, 1.0);
    display(54, 250.0);
    display(121, 0.6);
    const std::vector<HostCall> sequence = cycle();
    std::vector<std::pair<char, uint32_t>> expected, sent;
    for (uint32_t id = 0; id <= 501; ++id)
        if (id != 495) expected.emplace_back('L', id);
    for (uint32_t id = 0; id <= 142; ++id) expected.emplace_back('D', id);
    for (uint32_t id = 1; id <= 15; ++id) expected.emplace_back('P', id);
    for (const HostCall& call : sequence) sent.emplace_back(call.kind, call.id);
    EXPECT_EQ(sent, expected);
    EXPECT_EQ(cycle(), sequence);
}

// Knobs scale to full level (the integral lighting at half scale) and switches give dim,
// bright or dark; levels below the floor go dark; channel 15 is always on; no power: all dark.
TEST_F(OutputCycle, ChannelsCarryKnobAndSwitchLevelsOnlyWithPower) {
    const struct {
        uint32_t display;
        std::size_t channel;
        double knob;
        double level;
    } knobs[] = {{122, 4, 0.02, 50.0},   {121, 1, 2.0, 2500.0}, {121, 1, 0.03, 0.0},
                 {52, 2, 1.0, 1250.0},   {126, 3, 0.5, 625.0},  {123, 5, 0.5, 1250.0},
                 {104, 6, 0.1, 250.0},   {105, 7, 0.2, 500.0},  {99, 10, 0.3, 750.0},
                 {101, 11, 0.4, 1000.0}, {53, 14, 0.6, 1500.0}};
    for (const auto& c : knobs) {
        display(c.display, c.knob);
        EXPECT_DOUBLE_EQ(callsOf('P').at(c.channel - 1).level, c.level) << c.channel;
    }
    display(53, std::nan(""));
    EXPECT_TRUE(std::isnan(callsOf('P').at(13).level));
    const std::pair<double, double> switches[] = {
        {1.0, 1250.0}, {2.0, 2500.0}, {1.5, 0.0}, {0.0, 0.0}, {std::nan(""), 0.0}};
    for (std::size_t i = 0; i < 5; ++i) {  // the dome switch one row ahead of the floor ones
        const auto& [position, level] = switches[i];
        const auto& [domePosition, domeLevel] = switches[(i + 1) % 5];
        display(141, position);
        display(142, position);
        dome = domePosition;
        const std::vector<HostCall> channels = callsOf('P');
        for (const std::size_t channel : {8u, 9u, 12u, 13u}) {
            EXPECT_EQ(channels.at(channel - 1).level, channel < 12 ? domeLevel : level)
                << channel << " at " << position;
        }
        EXPECT_EQ(channels.at(14).level, 2500.0);
    }
    digit(out::kFcuPower, 0.0);
    for (const HostCall& channel : callsOf('P')) EXPECT_EQ(channel.level, 0.0) << channel.id;
}

// The light test (exactly 2) lights every lamp, even without power. Otherwise any value but zero
// lights a lamp; of the synthesized ones, 496 and 497 show the power and 498 to 501 stay off.
TEST_F(OutputCycle, LampsFollowTheLightTestTheirValuesAndThePower) {
    const double values[] = {0.5, -1.0, std::nan(""), 1e300, 0.0, -0.0};
    for (uint32_t i = 0; i < 6; ++i) digit(200 + i, values[i]);
    for (uint32_t slot = 495; slot <= 500; ++slot) digit(slot, 1.0);  // ids 496..501
    for (const double power : {0.0, 1.0, std::nan("")}) {
        digit(out::kFcuPower, power);
        digit(out::kAnnLight, 2.0);
        std::map<uint32_t, bool> states = lamps();
        ASSERT_EQ(states.size(), 501u);
        for (const auto& [id, on] : states) EXPECT_TRUE(on) << id;
        digit(out::kAnnLight, power == 0.0 ? 1.0 : 2.0000001);  // not the test
        states = lamps();
        for (uint32_t i = 0; i < 6; ++i) EXPECT_EQ(states.at(200 + i), i < 4) << values[i];
        EXPECT_TRUE(states[494]) << power;  // its own lamp follows the switch value
        for (uint32_t id = 496; id <= 501; ++id)
            EXPECT_EQ(states[id], id <= 497 && power != 0.0) << id << " at " << power;
    }
}

// Without motor power the wheel drives the trim: no trim position, the gauges still move.
TEST_F(OutputCycle, ServoPassSendsSpeedThenTrimThenScaledGaugesAndSkipsMissingCallbacks) {
    display(displayId::kElevatorTrim, 0.3);
    wheel = 0.3;
    digit(digitOutId::kTrimMotorPower, 1.0);
    display(displayId::kBrakeAccuPressure, 3000.0);
    display(displayId::kBrakeLeftPressure, 300.0);
    display(displayId::kBrakeRightPressure, -6.0);
    const std::vector<HostCall> gauges{
        {'S', 1, "", 750.0}, {'S', 2, "", 100.0}, {'S', 3, "", -2.0}};
    std::vector<HostCall> expected{{'V', 4, "", 250.0}, {'S', 4, "", 0.3}};
    expected.insert(expected.end(), gauges.begin(), gauges.end());
    EXPECT_EQ(servoPass(0), expected);
    digit(digitOutId::kTrimMotorPower, 0.0);
    expected.erase(expected.begin() + 1);
    EXPECT_EQ(servoPass(50), expected);
    output.SetServoSpeedProc({});  // the speed step is skipped whole: its clock stays
    EXPECT_EQ(servoPass(100), gauges);
}

}  // namespace
}  // namespace fenixA320
