// The output cycle through the core: gating, order and counts of the host calls, lamp states,
// the display value text and missing or failing callbacks.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "catalogue/signal_lists.h"
#include "core/core.h"
#include "output/digital_outputs.h"
#include "output/output_values.h"

namespace fenixA320 {
namespace {

namespace out = digitOutId;

struct HostCall {
    char kind;  // 'L' lamp, 'D' display, 'P' PWM
    uint32_t id;
    std::string text;
    double level;

    bool operator==(const HostCall&) const = default;
};

class OutputCycle : public ::testing::Test {
  protected:
    void SetUp() override {
        core.BuildInputLogic();
        core.connected = true;
        core.running = true;
        digit(out::kFcuPower, 1.0);
        core.SetDigitOutProc([this](unsigned id, bool on) {
            calls.push_back({'L', id, on ? "on" : "off", 0.0});
            return true;
        });
        core.SetDisplayProc([this](unsigned id, std::string text) {
            calls.push_back({'D', id, std::move(text), 0.0});
            return true;
        });
        core.SetPwmProc([this](unsigned id, double level) {
            calls.push_back({'P', id, "", level});
            return true;
        });
    }

    void digit(uint32_t slot, double v) { core.digitOutValues[slot].store(v); }
    void display(uint32_t id, double v) { core.displayValues[id].store(v); }

    std::vector<HostCall> cycle() {
        calls.clear();
        EXPECT_TRUE(core.UpdateOutput());
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

    FenixA320Core core;
    std::vector<HostCall> calls;
};
using DigitalOutputs = OutputCycle;
using DisplayCycle = OutputCycle;

TEST_F(OutputCycle, CallsNothingWhileDisconnectedOrStopped) {
    core.connected = false;
    EXPECT_FALSE(core.UpdateOutput());
    core.connected = true;
    core.running = false;
    EXPECT_TRUE(core.UpdateOutput());
    EXPECT_TRUE(calls.empty());
}

TEST_F(OutputCycle, SendsLampsThenDisplaysThenChannelsInAscendingIds) {
    const std::vector<HostCall> sequence = cycle();
    ASSERT_EQ(sequence.size(), 501u + 143u + 15u);
    std::vector<uint32_t> expected;
    for (uint32_t id = 0; id <= 501; ++id)
        if (id != 495) expected.push_back(id);
    for (uint32_t id = 0; id <= 142; ++id) expected.push_back(id);
    for (uint32_t id = 1; id <= 15; ++id) expected.push_back(id);
    for (std::size_t i = 0; i < sequence.size(); ++i) {
        EXPECT_EQ(sequence[i].kind, i < 501 ? 'L' : i < 644 ? 'D' : 'P') << i;
        EXPECT_EQ(sequence[i].id, expected[i]) << i;
    }
}

TEST_F(OutputCycle, UnchangedValuesGiveTheSameSequenceTwice) {
    digit(7, 1.0);
    display(54, 250.0);
    display(121, 0.6);
    EXPECT_EQ(cycle(), cycle());
}

TEST_F(OutputCycle, MissingCallbackSkipsOnlyItsOwnCalls) {
    core.SetDigitOutProc({});
    core.pwmProc = nullptr;
    EXPECT_EQ(callsOf('D').size(), 143u);
    core.SetDisplayProc({});
    core.SetPwmProc({});  // the floor wrapper around an empty host function
    EXPECT_TRUE(cycle().empty());
}

TEST_F(OutputCycle, ThrowingCallbackDoesNotEndTheCycle) {
    int lampAttempts = 0;
    core.SetDigitOutProc([&lampAttempts](unsigned, bool) -> bool {
        ++lampAttempts;
        throw std::runtime_error("host failure");
    });
    EXPECT_EQ(callsOf('P').size(), 15u);
    EXPECT_EQ(lampAttempts, 501);
}

TEST_F(OutputCycle, ChannelsFollowPowerThroughTheFloor) {
    display(122, 0.019);  // 47.5: below the floor
    display(123, 0.02);
    std::vector<HostCall> channels = callsOf('P');
    EXPECT_EQ(channels[3].level, 0.0);
    EXPECT_EQ(channels[4].level, 50.0);
    EXPECT_EQ(channels[14].level, 2500.0);
    digit(out::kFcuPower, 0.0);
    display(121, 1.0);
    channels = callsOf('P');
    for (const HostCall& channel : channels) EXPECT_EQ(channel.level, 0.0) << channel.id;
}

TEST_F(DisplayCycle, OutOfRangeValuesShowAsZero) {
    const double inf = std::numeric_limits<double>::infinity();
    for (const double bad : {std::nan(""), inf, -inf, 2e9, -1.5e9, 1e9 + 1.0}) {
        display(140, bad);
        EXPECT_EQ(callsOf('D')[140].text, "0.000000") << bad;
    }
    display(140, 1e9);
    EXPECT_EQ(callsOf('D')[140].text, "1000000000.000000");
    display(140, -1e9);
    EXPECT_EQ(callsOf('D')[140].text, "-1000000000.000000");
    display(46, std::nan(""));
    EXPECT_EQ(callsOf('D')[46].text, "00000");
}

TEST_F(DigitalOutputs, LightTestLightsEveryOutputEvenWithoutPower) {
    digit(out::kFcuPower, 0.0);
    digit(out::kAnnLight, 2.0);
    const std::map<uint32_t, bool> states = lamps();
    ASSERT_EQ(states.size(), 501u);
    for (const auto& [id, on] : states) EXPECT_TRUE(on) << id;
}

TEST_F(DigitalOutputs, OnlyExactlyTwoIsTheLightTest) {
    digit(out::kAnnLight, 2.0000001);
    std::map<uint32_t, bool> states = lamps();
    EXPECT_FALSE(states[0] || states[1] || states[470] || states[498] || states[501]);
    EXPECT_TRUE(states[494]);
    digit(out::kAnnLight, 1.0);
    EXPECT_TRUE(lamps()[494]);
}

TEST_F(DigitalOutputs, SynthesizedOutputsFollowPowerOrStayOff) {
    for (uint32_t slot = 495; slot <= 500; ++slot) digit(slot, 1.0);  // ids 496..501
    digit(out::kFcuPower, 0.0);
    std::map<uint32_t, bool> states = lamps();
    for (uint32_t id = 496; id <= 501; ++id) EXPECT_FALSE(states[id]) << id;
    for (const double power : {1.0, std::nan("")}) {
        digit(out::kFcuPower, power);
        states = lamps();
        EXPECT_TRUE(states[496] && states[497]) << power;
        EXPECT_FALSE(states[498] || states[499] || states[500] || states[501]) << power;
    }
}

TEST_F(DigitalOutputs, AnyValueButZeroLightsALamp) {
    for (const double v : {0.5, -1.0, std::nan(""), 1e300})
        EXPECT_TRUE(digitOutState(1, v, false, true)) << v;
    EXPECT_FALSE(digitOutState(1, 0.0, false, true));
    EXPECT_FALSE(digitOutState(1, -0.0, false, true));
    digit(200, -1.0);
    digit(494, 0.5);
    const std::map<uint32_t, bool> states = lamps();
    EXPECT_TRUE(states.at(200) && states.at(494));
    EXPECT_FALSE(states.at(201));
}

}  // namespace
}  // namespace fenixA320
