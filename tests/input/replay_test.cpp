// Replay of remembered inputs and the rudder-trim refresher, on synthetic time and on threads.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

#include "catalogue/bindings.h"
#include "tests/input/input_harness.h"

namespace fenixA320::testing {
namespace {

constexpr uint32_t kEngMaster1 = 395;
constexpr uint32_t kIntRad = 22;
constexpr uint32_t kAltitudeKnob = 415;
constexpr uint32_t kRudderTrim = 408;

uint32_t definitionOf(int32_t digitalId) {
    for (const VarBinding& row : digitInBindings()) {
        if (row.key == digitalId) return static_cast<uint32_t>(row.defineId);
    }
    return 0;
}

std::atomic<int> pauses{0};
void countPause() { pauses.fetch_add(1); }

class InputReplay : public InputHarness {
  protected:
    void SetUp() override {
        InputHarness::SetUp();
        core.running = true;
        core.clockAdvancing = true;
        pauses = 0;
    }

    // Replay passes every `step` for `length` after `from`; returns the writes of all of them.
    Writes passes(TimePoint from, Nanos step, Nanos length) {
        Writes all;
        for (TimePoint t = from; t <= from + length; t += step) {
            core.inputReplayPass(t, &countPause);
            Writes one = drain();
            all.queued.insert(all.queued.end(), one.queued.begin(), one.queued.end());
            for (auto& [id, values] : one.latest) all.latest[id] = values;
            latestCount += static_cast<int>(one.latest.size());
        }
        return all;
    }
    // A new run: the replay clock starts again at the next pass.
    void restart(TimePoint at) {
        core.running = false;
        core.inputReplayPass(at, &countPause);
        core.running = true;
    }

    int latestCount = 0;
};

TEST_F(InputReplay, MemoriesHoldTheBoundInputsAndTheParkingBrakeOffContact) {
    std::size_t excludedBound = 0;
    for (const VarBinding& row : digitInBindings()) {
        const bool excluded = std::find(replayExcluded.begin(), replayExcluded.end(), row.key) !=
                              replayExcluded.end();
        excludedBound += excluded ? 1 : 0;
        EXPECT_EQ(core.lastDigitIn.count(row.key), excluded ? 0u : 1u) << row.key;
    }
    EXPECT_EQ(core.lastDigitIn.size(), digitInBindings().size() - excludedBound + 1);
    EXPECT_EQ(core.lastDigitIn.count(964), 1u);
    EXPECT_EQ(core.lastDigitIn.count(342), 0u);  // a switch number read as an id: not an input
    EXPECT_EQ(core.lastAnalog.size(), 125u);
}

TEST_F(InputReplay, SeenInputIsQueuedAgainEverySecondWhileTheClockRuns) {
    digital(449, true);
    drain();
    TimePoint t = t0;
    for (const auto step : {milliseconds(10), milliseconds(50), milliseconds(125),
                            milliseconds(250), milliseconds(500)}) {
        restart(t);
        EXPECT_EQ(passes(t, step, seconds(5)).queuedTo(kEngMaster1), std::vector<double>(5, 1.0))
            << step.count();
        t += seconds(5) + step;
        core.clockAdvancing = false;  // paused: a long quiet tail
        EXPECT_TRUE(passes(t, step, seconds(20)).none()) << step.count();
        core.clockAdvancing = true;
        t += seconds(20) + step;
        EXPECT_EQ(passes(t, step, Nanos(0)).queuedTo(kEngMaster1), std::vector<double>{1.0});
        t += step;
    }
}

TEST_F(InputReplay, MomentaryActionKeysAndForgottenInputsAreNotReplayed) {
    digital(600, true);
    digital(600, false);
    digital(230, true);  // a CDU key: no memory
    digital(449, true);
    drain();
    Writes writes = passes(t0, milliseconds(50), seconds(3));
    ASSERT_NE(definitionOf(600), 0u);
    EXPECT_TRUE(writes.queuedTo(definitionOf(600)).empty());
    EXPECT_EQ(writes.latest.count(DEF_CDU_KEYS), 0u);
    EXPECT_EQ(writes.queuedTo(kEngMaster1).size(), 3u);

    for (auto& [id, memory] : core.lastDigitIn) memory.seen = false;  // as Stop leaves them
    EXPECT_TRUE(passes(t0 + seconds(4), milliseconds(50), seconds(5)).none());
    digital(449, false);
    drain();
    EXPECT_EQ(passes(t0 + seconds(10), milliseconds(50), milliseconds(1500)).queuedTo(kEngMaster1),
              (std::vector<double>{0.0, 0.0}));
}

TEST_F(InputReplay, ReportedSelectorPositionsAreReasserted) {
    digital(24, true);   // INT/RAD to RAD
    digital(478, true);  // altitude knob pushed and released: position unknown
    digital(478, false);
    core.SetAnalog(124, 3.0);  // flap lever to 3
    drain();
    Writes writes = passes(t0, milliseconds(50), seconds(1));
    EXPECT_EQ(latestValue(writes, kIntRad), 2.0);
    EXPECT_EQ(latestValue(writes, 404), 3.0);
    EXPECT_EQ(writes.latest.count(kAltitudeKnob), 0u);
    EXPECT_EQ(writes.latest.count(33), 0u);  // never reported
    EXPECT_EQ(writes.latest.count(kRudderTrim), 0u);

    restart(t0 + seconds(2));  // a new run: nothing reported yet
    EXPECT_TRUE(passes(t0 + seconds(2), milliseconds(50), seconds(3)).none());
}

TEST_F(InputReplay, AnalogValuesComeBackEveryTwoSecondsThroughTheirDeadBands) {
    core.SetAnalog(77, 0.5);    // sidestick: no dead band
    core.SetAnalog(114, 24.0);  // cockpit temperature: its record still holds the value
    drain();
    passes(t0, milliseconds(50), seconds(4));
    EXPECT_EQ(latestCount, 2);  // 2077 at 2 s and at 4 s
    EXPECT_EQ(pauses.load(), 4);
}

TEST_F(InputReplay, RudderTrimRefresherWritesThePositionEveryPass) {
    digital(469, true);
    core.clockAdvancing = false;  // the refresher does not wait for the clock
    for (int pass = 0; pass < 10; ++pass) {
        core.rudderTrimPass(t0 + milliseconds(30 * pass));
        EXPECT_EQ(latestValue(drain(), kRudderTrim), 0.0) << pass;
    }
    digital(469, false);
    core.rudderTrimPass(t0 + milliseconds(300));
    EXPECT_EQ(latestValue(drain(), kRudderTrim), 1.0);
    EXPECT_EQ(core.switchVarValue(kRudderTrim), 1.0);
}

// Two host threads and the replay and refresher on a third: every detent is counted once.
TEST_F(InputReplay, HostThreadsAndReplayShareTheInputPath) {
    digital(449, true);
    core.SetAnalog(77, 0.1);
    std::atomic<bool> stop{false};
    std::atomic<int> replayPasses{0};
    std::thread replay([&] {
        TimePoint t = t0;
        while (!stop.load()) {
            t += seconds(1);
            core.inputReplayPass(t, [] {});
            core.rudderTrimPass(t);
            replayPasses.fetch_add(1);
            std::this_thread::yield();
        }
    });
    const auto host = [&](int32_t encoder, int32_t direction, int32_t contact, int32_t axis) {
        int detents = 0;
        const auto deadline = SteadyClock::now() + seconds(60);
        while ((detents < 2000 || replayPasses.load() < 50) && SteadyClock::now() < deadline) {
            core.SetEncoder(encoder, direction);
            core.SetDigitIn(contact, detents % 2 == 0);
            core.SetDigitIn(469, detents % 3 == 0);
            core.SetAnalog(axis, (detents % 200) / 100.0 - 1.0);
            core.switchVarValue(611);
            ++detents;
        }
        return detents;
    };
    int up = 0;
    int down = 0;
    std::thread hostA([&] { up = host(1, 1, 743, 78); });
    std::thread hostB([&] { down = host(2, -1, 450, 79); });
    hostA.join();
    hostB.join();
    stop = true;
    replay.join();
    EXPECT_GE(replayPasses.load(), 50);
    EXPECT_EQ(core.input.encoderValues[1], static_cast<double>(up));
    EXPECT_EQ(core.input.encoderValues[2], -static_cast<double>(down));
}

}  // namespace
}  // namespace fenixA320::testing
