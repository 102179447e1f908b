// Digital, encoder and analog events through the input side, down to the writes they leave behind,
// and their replay and the rudder-trim refresher, on synthetic time and on threads.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "catalogue/bindings.h"
#include "input/input_side.h"
#include "tests/support/fake_platform.h"

namespace fenixA320::testing {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using Values = std::vector<double>;
using Latest = std::map<uint32_t, Values>;  // latest-value writes by definition
using Queued = std::vector<std::pair<uint32_t, double>>;

constexpr uint32_t kEngMaster1 = 395;  // definitions of the variables written
constexpr uint32_t kRudderTrim = 408;
constexpr uint32_t kSpeedbrakeArmed = 410;
constexpr int32_t kAuto = 963;  // synthesized: landing elevation AUTO
constexpr double kPress = 1.0;
constexpr double kRelease = 0.0;

// Values written since the last drain: queued records in order, and the dirty latest-value
// blocks by definition.
struct Writes {
    Queued queued;
    Latest latest;

    std::vector<double> queuedTo(uint32_t defineId) const {
        std::vector<double> values;
        for (const auto& [id, value] : queued) {
            if (id == defineId) values.push_back(value);
        }
        return values;
    }
    bool none() const { return queued.empty() && latest.empty(); }
    bool operator==(const Writes&) const = default;
    friend void PrintTo(const Writes& w, std::ostream* os) {
        *os << ::testing::PrintToString(w.queued) << " " << ::testing::PrintToString(w.latest);
    }
};

// A built input side with an open connection, and what it wrote since the last drain.
class InputDispatch : public ::testing::Test {
  protected:
    void SetUp() override {
        helmbridge::testing::FakeSystem::reset();
        received.allocate();
        input.BuildInputLogic(built);
    }

    Writes drain() {
        std::lock_guard lock(mutex);
        return std::exchange(written, Writes{});
    }

    void digital(int32_t id, bool state) { input.SetDigitIn(id, state, t0); }

    static void queue(void* self, uint32_t id, const double* value) {
        auto& test = *static_cast<InputDispatch*>(self);
        std::lock_guard lock(test.mutex);
        test.written.queued.emplace_back(id, *value);
    }
    static void latest(void* self, uint32_t id, const void* data, uint32_t size) {
        auto& test = *static_cast<InputDispatch*>(self);
        std::vector<double> values(size / sizeof(double));
        std::memcpy(values.data(), data, values.size() * sizeof(double));
        std::lock_guard lock(test.mutex);
        test.written.latest[id] = std::move(values);
    }

    std::mutex mutex;
    Writes written;
    std::atomic<bool> connected{true};
    ReceivedValues received;
    InputSide input{helmbridge::testing::fakePlatform(), WriteTarget{this, &queue, &latest},
                    received, [this] { return connected.load(); }};
    const TimePoint built = helmbridge::testing::at(0);
    const TimePoint t0 = built + seconds(1);  // past the key gates that start at build
};

TEST_F(InputDispatch, BoundInputsQueueEveryEventInOrderAndAudioKeysAlsoFillTheirBlock) {
    digital(449, true);
    digital(449, false);
    digital(449, true);
    digital(2, true);  // ADF transfer: ungated audio-panel key with a binding of its own
    digital(digitInBindings().front().key, true);  // the first row of the table
    digital(834, true);  // RMP1 ADF and ATC 0: the first keys of their gated panels' blocks
    digital(822, true);
    // The parking brake's two microswitches write on closing only.
    for (const int32_t id : {605, 964})
        EXPECT_TRUE(input.SetDigitIn(id, true, t0) && input.SetDigitIn(id, false, t0)) << id;
    const Writes writes = drain();
    const auto first = static_cast<uint32_t>(digitInBindings().front().defineId);
    EXPECT_EQ(writes.queued, (Queued{{kEngMaster1, 1.0},
                                     {kEngMaster1, 0.0},
                                     {kEngMaster1, 1.0},
                                     {2, 1.0},
                                     {first, 1.0},
                                     {497, 1.0},
                                     {497, 0.0}}));
    const Values& block = writes.latest.at(DEF_ASP_KEYS);
    ASSERT_EQ(block.size(), 178u);  // ADF1 transfer is its first row
    EXPECT_EQ((Values{block[0], block[1], block[2], writes.latest.at(DEF_RMP_KEYS).at(0),
                      writes.latest.at(DEF_ATC_KEYS).at(0)}),
              (Values{1.0, 1.0, 0.0, 1.0, 1.0}));
}

TEST_F(InputDispatch, InputsNoRouteTakesWriteNothing) {
    InputSide unbuilt{helmbridge::testing::fakePlatform(), WriteTarget{this, &queue, &latest},
                      received, [] { return true; }};
    EXPECT_FALSE(unbuilt.SetDigitIn(605, true, t0));  // before BuildInputLogic: ignored
    unbuilt.SetAnalog(1, 0.5);
    unbuilt.SetEncoder(1, 1);
    EXPECT_TRUE(drain().none());
    // Unbound keys and positions, the edges of the id range, and AUTO (963) released.
    for (const int32_t id : {0, 35, 324, 387, 628, 897, 963, -1, 965, INT32_MIN, INT32_MAX})
        EXPECT_FALSE(input.SetDigitIn(id, id != 963, t0)) << id;
    EXPECT_TRUE(drain().none());
}

TEST_F(InputDispatch, SpeedbrakeLeverFollowsTheArmedSwitch) {
    input.SetAnalog(88, 0.5);
    EXPECT_EQ(drain().latest, (Latest{{2088, {2.0}}}));
    digital(472, true);
    EXPECT_EQ(drain(), (Writes{{{kSpeedbrakeArmed, 1.0}}, {{2088, {0.0}}}}));
    digital(472, true);  // unchanged: the lever is not recomputed
    EXPECT_EQ(drain(), (Writes{{{kSpeedbrakeArmed, 1.0}}, {}}));
    digital(472, false);
    EXPECT_EQ(drain().latest, (Latest{{2088, {2.0}}}));
}

// The gates themselves are pinned in debounced_key_test.cpp; here, that each panel's keys have
// their own gate, started at build, and that the block goes out after every member event.
TEST_F(InputDispatch, GatedPanelBlockIsWrittenAfterEveryMemberEvent) {
    input.SetDigitIn(481, true, built + milliseconds(50));
    EXPECT_EQ(drain().latest.at(DEF_FCU_KEYS), Values(23, 0.0));
    digital(230, true);
    input.SetDigitIn(230, false, t0 + milliseconds(50));  // inside the gate: dropped
    input.SetDigitIn(231, true, t0 + milliseconds(60));
    const Values block = drain().latest.at(DEF_CDU_KEYS);
    ASSERT_EQ(block.size(), 146u);
    EXPECT_EQ((Values{block[0], block[1], block[2]}), (Values{1.0, 1.0, 0.0}));
}

TEST_F(InputDispatch, EncodersCountDetentsUpOnlyForDirectionOne) {
    for (const int32_t direction : {1, 1, 1, 0, -1, 2}) input.SetEncoder(1, direction);
    EXPECT_EQ(drain().queuedTo(1001), (Values{1.0, 2.0, 3.0, 2.0, 1.0, 0.0}));
    for (const int32_t id : {0, 44, -5, INT32_MAX}) input.SetEncoder(id, 1);
    EXPECT_TRUE(drain().none());
    connected = false;
    input.SetEncoder(1, 1);
    connected = true;
    input.SetEncoder(1, 1);
    EXPECT_EQ(drain().queuedTo(1001), Values{1.0});
}

// Each event leaves exactly one latest-value write, or none (definition 0), and nothing queued.
TEST_F(InputDispatch, EventsWriteTheirConvertedValueThroughDeadBandsAndSelectors) {
    const struct {
        int32_t id;    // analog below 400, digital above
        double value;  // analog value, or kPress / kRelease
        uint32_t defineId;
        double written;
    } script[] = {
        // clang-format off
        // Volume knob (raw), axis, trim wheel with its motor unpowered.
        {1, 0.42, 2001, 0.42}, {77, 0.25, 2077, 250.0}, {82, 1.2345, 2082, 1235.0},
        // Throttles: one dead-band record for both levers, so the other lever's value resets it.
        {89, 0.5, 2089, 0.5 / 0.69 + 2.0}, {89, 0.503, 0, 0.0},
        {90, 0.501, 2090, 0.501 / 0.69 + 2.0}, {89, 0.502, 2089, 0.502 / 0.69 + 2.0},
        // Temperatures and a dead band; signals without a variable of their own write nothing.
        {114, 24.0, 2114, 0.5}, {114, 24.3, 0, 0.0}, {112, 26.0, 2112, 1.0},
        {61, 0.7, 0, 0.0}, {100, 0.7, 0, 0.0},
        // Landing elevation AUTO (-3.0) goes through the dead band: not within 1.0 of -2.5.
        {116, -2.5, 2116, -2.5}, {kAuto, kPress, 0, 0.0}, {116, 0.0, 2116, 0.0},
        {kAuto, kPress, 2116, -3.0}, {kAuto, kRelease, 0, 0.0},
        // The flap lever moves the flap selector to a captured detent and holds between them.
        {124, 2.1, 404, 2.0}, {124, 2.6, 0, 0.0}, {124, 0.1, 404, 0.0}, {460, kPress, 0, 0.0},
        // Position contacts; the altitude knob (415) has no rest position, the dome light (611)
        // rests at dim; 747 is the weather radar gain.
        {478, kPress, 415, -1.0}, {478, kRelease, 0, 0.0}, {477, kPress, 415, 0.0},
        {917, kPress, 747, -5.0}, {743, kPress, 611, 2.0}, {743, kRelease, 611, 1.0}};
    // clang-format on
    for (const auto& step : script) {
        SCOPED_TRACE(::testing::Message() << step.id << " at " << step.value);
        if (step.id >= 400) {
            digital(step.id, step.value == kPress);
        } else {
            input.SetAnalog(step.id, step.value);
        }
        Latest expected;
        if (step.defineId != 0) expected[step.defineId] = {step.written};
        EXPECT_EQ(drain(), (Writes{{}, expected}));
    }
    digital(23, true);  // the table's first switch (its slot 0): ASP INT/RAD to RAD
    EXPECT_EQ(drain(), (Writes{{}, Latest{{22, {1.0}}}}));
    EXPECT_EQ(input.switchVarValue(611), 1.0);
    EXPECT_EQ(input.switchVarValue(-3), 0.0);
}

TEST_F(InputDispatch, OutOfRangeNonFiniteAndMotorDrivenAnalogValuesNeverReachTheAircraft) {
    for (int32_t id = -1; id <= 125; ++id) {
        for (const double bad : {NAN, INFINITY, -INFINITY}) {
            try {
                input.SetAnalog(id, bad);
            } catch (const std::out_of_range&) {
                EXPECT_TRUE(id == 89 || id == 90) << id;
            }
        }
    }
    EXPECT_TRUE(drain().none());
    // While the trim motor is powered the trim wheel is left to the servo loop.
    std::vector<double> block(472, 0.0);
    block[471] = 1.0;  // B_FC_ELEVATOR_TRIM_MOTOR_POWER
    received.storeDigitOut(reinterpret_cast<const unsigned char*>(block.data()), block.size());
    input.SetAnalog(82, 2.5);
    EXPECT_TRUE(drain().none());
    EXPECT_EQ(input.trimWheelInput(), 2.5);
}

// The same input side in a running module, with the simulator clock advancing.
class InputReplay : public InputDispatch {
  protected:
    // Replay passes every `step` for `length` after `from`: all their queued writes and the last
    // latest value of each definition.
    Writes passes(TimePoint from, Nanos step, Nanos length) {
        Writes all;
        for (TimePoint t = from; t <= from + length; t += step) {
            input.inputReplayPass(t, gate);
            Writes one = drain();
            all.queued.insert(all.queued.end(), one.queued.begin(), one.queued.end());
            for (auto& [id, values] : one.latest) all.latest[id] = values;
        }
        return all;
    }

    ReplayGate gate{true, true, true};
};

// Replays come every full second of the clock, from the start of the run.
TEST_F(InputReplay, SeenInputsAndReportedSelectorsWhileTheClockRunsUntilANewRunOrAStop) {
    digital(600, true);  // master caution: excluded from replay
    digital(600, false);
    digital(230, true);  // a CDU key: no memory
    digital(449, true);
    digital(24, true);   // INT/RAD to RAD
    digital(478, true);  // altitude knob pushed and released: position unknown
    digital(478, false);
    input.SetAnalog(124, 3.0);  // flap lever to 3
    drain();
    // INT/RAD and flaps only: not the unknown altitude knob, nor the never reported selector 33.
    EXPECT_EQ(passes(t0, milliseconds(250), seconds(3)),
              (Writes{Queued(3, {kEngMaster1, 1.0}), {{22, {2.0}}, {404, {3.0}}}}));
    gate.clockAdvancing = false;  // paused: a long quiet tail, then a replay as soon as it runs
    EXPECT_TRUE(passes(t0 + seconds(4), milliseconds(250), seconds(20)).none());
    gate.clockAdvancing = true;
    EXPECT_EQ(passes(t0 + seconds(25), milliseconds(250), Nanos(0)).queuedTo(kEngMaster1),
              Values{1.0});

    // A pass outside a run: the next run's replay clock starts again, no selector reported
    // yet, inputs still seen.
    input.inputReplayPass(t0 + seconds(26), {});
    EXPECT_EQ(passes(t0 + seconds(26), milliseconds(250), seconds(3)),
              (Writes{Queued(3, {kEngMaster1, 1.0}), {}}));

    input.forgetReported();  // as Stop leaves them
    EXPECT_TRUE(passes(t0 + seconds(30), milliseconds(250), seconds(5)).none());
    digital(449, false);
    drain();
    EXPECT_EQ(passes(t0 + seconds(36), milliseconds(250), milliseconds(1500)).queuedTo(kEngMaster1),
              (Values{0.0, 0.0}));
}

TEST_F(InputReplay, AnalogValuesComeBackEveryTwoSecondsThroughTheirDeadBands) {
    input.SetAnalog(77, 0.5);    // sidestick: no dead band
    input.SetAnalog(114, 24.0);  // cockpit temperature: its record still holds the value
    drain();
    EXPECT_EQ(passes(t0, milliseconds(50), seconds(4)), (Writes{{}, {{2077, {500.0}}}}));
    EXPECT_EQ(helmbridge::testing::FakeSystem::slept.load(),
              milliseconds(8));  // 2 s and 4 s, 2 ms after each
}

// The switch is spring-loaded: its contacts only move a position that the refresher writes.
TEST_F(InputReplay, RudderTrimContactsMoveThePositionTheRefresherWritesEveryPass) {
    digital(468, true);  // the switch's own contact: not fed to its position logic
    digital(470, true);
    input.rudderTrimPass(t0);
    EXPECT_EQ(drain().latest, (Latest{{kRudderTrim, {2.0}}}));
    digital(469, true);
    EXPECT_TRUE(drain().none());
    gate.clockAdvancing = false;  // the refresher does not wait for the clock
    for (int pass = 0; pass < 10; ++pass) {
        input.rudderTrimPass(t0 + milliseconds(30 * pass));
        EXPECT_EQ(drain().latest, (Latest{{kRudderTrim, {0.0}}})) << pass;
    }
    digital(469, false);
    input.rudderTrimPass(t0 + milliseconds(300));
    EXPECT_EQ(drain().latest, (Latest{{kRudderTrim, {1.0}}}));
    EXPECT_EQ(input.switchVarValue(kRudderTrim), 1.0);
}

// Two host threads and the replay and refresher on a third: every detent is counted once.
TEST_F(InputReplay, HostThreadsAndReplayShareTheInputPath) {
    digital(449, true);
    input.SetAnalog(77, 0.1);
    std::atomic<int> replayPasses{0};
    std::atomic<bool> stop{false};
    std::thread replay([&] {
        for (TimePoint t = t0 + seconds(1); !stop.load(); t += seconds(1), ++replayPasses) {
            input.inputReplayPass(t, gate);
            input.rudderTrimPass(t);
        }
    });
    int detents[3] = {};  // by encoder id: 1 counts up, 2 down
    const auto host = [&](int32_t encoder, int32_t contact, int32_t axis) {
        const auto deadline = SteadyClock::now() + seconds(60);
        for (int& n = detents[encoder];
             (n < 2000 || replayPasses.load() < 50) && SteadyClock::now() < deadline; ++n) {
            input.SetEncoder(encoder, encoder == 1 ? 1 : -1);
            input.SetDigitIn(contact, n % 2 == 0, t0);
            input.SetDigitIn(469, n % 3 == 0, t0);
            input.SetAnalog(axis, (n % 200) / 100.0 - 1.0);
            input.switchVarValue(611);
        }
    };
    std::thread hostA(host, 1, 743, 78);
    std::thread hostB(host, 2, 450, 79);
    hostA.join();
    hostB.join();
    stop = true;
    replay.join();
    EXPECT_GE(replayPasses.load(), 50);
    const Writes writes = drain();
    EXPECT_EQ(writes.queuedTo(1001).back(), static_cast<double>(detents[1]));
    EXPECT_EQ(writes.queuedTo(1002).back(), -static_cast<double>(detents[2]));
}

}  // namespace
}  // namespace fenixA320::testing
