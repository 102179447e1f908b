// The simulator connection against the stand-in: search, open, keep-alive, registration,
// message handling and the stall watchdog, driven with synthetic time.
#include "core/connection.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "catalogue/bindings.h"
#include "catalogue/signal_lists.h"
#include "simulator/standin_control.h"
#include "tests/support/fake_platform.h"

namespace fenixA320 {
namespace {

namespace platform = helmbridge::platform;
namespace standin = helmbridge::standin;
using helmbridge::testing::at;
using helmbridge::testing::FakeSystem;
using std::chrono::seconds;

class ConnectionTest : public ::testing::Test {
  protected:
    void SetUp() override {
        standinReset();
        FakeSystem::reset();
        received.allocate();
        link.begin();  // as Start leaves it
    }

    // One connection-loop pass at second `s`, then the messages waiting for the module.
    void tick(double s) {
        link.connectPass(at(s));
        link.dispatchPass(at(s));
    }

    // Opens, lets the OPEN message register everything, and forgets the calls so far.
    void openConnection() {
        FakeSystem::probe = platform::ProbeResult::kFound;
        tick(0);
        ASSERT_TRUE(link.connected());
        standinClearCalls();
    }

    static std::vector<int32_t> functions() {
        std::vector<int32_t> out;
        for (const auto& call : standin::calls()) out.push_back(call.function);
        return out;
    }

    ReceivedValues received;
    Connection link{helmbridge::testing::fakePlatform(), received};
};

// Passes 0, 5 and 10 close the null handle; 3, 4, 8 and 9 send keep-alives on it.
TEST_F(ConnectionTest, WithoutSimulatorTriesRightAwayThenEveryFiveSecondsWithoutOpening) {
    for (int s = 0; s < 11; ++s) tick(s);
    const int32_t close = kStandinClose;
    const int32_t keepAlive = kStandinRequestSystemState;
    EXPECT_EQ(functions(), (std::vector<int32_t>{close, keepAlive, keepAlive, close, keepAlive,
                                                 keepAlive, close}));
    for (const auto& call : standin::calls()) EXPECT_EQ(call.handle, nullptr);
    EXPECT_FALSE(link.connected());
    EXPECT_EQ(standin::counters().misuseCalls, 0u);
}

TEST_F(ConnectionTest, ConfigFileAloneOpensAndFailedOpensRetryEveryFiveSeconds) {
    FakeSystem::configFile = true;
    standinSetOpenResult(static_cast<int32_t>(0x80004005));
    for (int s = 0; s < 11; ++s) tick(s);
    EXPECT_EQ(standin::calls(kStandinOpen).size(), 3u);
    EXPECT_FALSE(link.connected());
    standinSetOpenResult(0);
    for (int s = 11; s < 16; ++s) tick(s);
    EXPECT_TRUE(link.connected());
    ASSERT_EQ(standin::calls(kStandinOpen).size(), 4u);
    const auto open = standin::calls(kStandinOpen).back();
    EXPECT_STREQ(open.name, "HelmBridge");
    EXPECT_EQ(open.window, nullptr);
    EXPECT_EQ(open.userEvent, 0u);
    EXPECT_EQ(open.eventHandle, nullptr);
    EXPECT_EQ(open.configIndex, 0u);
}

TEST_F(ConnectionTest, SnapshotFailureStillOpens) {
    FakeSystem::probe = platform::ProbeResult::kSnapshotFailed;
    tick(0);
    EXPECT_TRUE(link.connected());
}

TEST_F(ConnectionTest, OpenRegistersEverythingInOrder) {
    FakeSystem::probe = platform::ProbeResult::kFound;
    tick(0);
    ASSERT_TRUE(link.connected());

    // Definitions in declaration order, then blocks, title and clock.
    std::vector<uint32_t> expected;
    for (const auto* table :
         {&digitInBindings(), &switchVarBindings(), &analogBindings(), &encoderBindings()}) {
        for (const VarBinding& row : *table)
            expected.push_back(static_cast<uint32_t>(row.defineId));
    }
    for (uint32_t id : {DEF_CDU_KEYS, DEF_FCU_KEYS, DEF_ASP_KEYS, DEF_RMP_KEYS, DEF_ATC_KEYS,
                        DEF_DIGIT_OUT, DEF_DISPLAY, DEF_TITLE, DEF_CLOCK}) {
        expected.push_back(id);
    }
    EXPECT_EQ(standin::definitionIds(), expected);

    const std::pair<uint32_t, const std::vector<GroupKey>*> groups[] = {
        {DEF_CDU_KEYS, &cduKeyGroup()},
        {DEF_FCU_KEYS, &fcuKeyGroup()},
        {DEF_ASP_KEYS, &aspKeyGroup()},
        {DEF_RMP_KEYS, &rmpKeyGroup()},
        {DEF_ATC_KEYS, &atcKeyGroup()}};
    for (const auto& [defineId, keys] : groups) {
        const auto datums = standin::datums(defineId);
        ASSERT_EQ(datums.size(), keys->size()) << defineId;
        for (std::size_t i = 0; i < datums.size(); ++i) {
            EXPECT_EQ(std::string(datums[i].name), "L:" + std::string((*keys)[i].variable));
        }
    }
    const auto digitOut = standin::datums(DEF_DIGIT_OUT);
    ASSERT_EQ(digitOut.size(), digitOutSigList().size());
    EXPECT_STREQ(digitOut[0].name, "L:S_DCDU1_LSK1L");
    std::size_t slot = 0;
    for (const auto& [id, entry] : digitOutSigList()) {
        if (id != 0) {
            EXPECT_EQ(std::string(digitOut[slot].name), "L:" + entry.first) << id;
        }
        EXPECT_STREQ(digitOut[slot].unit, "number");
        EXPECT_EQ(digitOut[slot].type, sc::SIMCONNECT_DATATYPE_FLOAT64);
        EXPECT_EQ(digitOut[slot].epsilon, 0.0f);
        EXPECT_EQ(digitOut[slot].datumId, sc::SIMCONNECT_UNUSED);
        ++slot;
    }
    EXPECT_EQ(standin::datums(DEF_DISPLAY).size(), displaySigList().size());
    const auto title = standin::datums(DEF_TITLE);
    ASSERT_EQ(title.size(), 1u);
    EXPECT_STREQ(title[0].name, "TITLE");
    EXPECT_EQ(title[0].type, sc::SIMCONNECT_DATATYPE_STRING256);
    const auto clock = standin::datums(DEF_CLOCK);
    ASSERT_EQ(clock.size(), 1u);
    EXPECT_STREQ(clock[0].name, "L:N_MIP_CLOCK_UTC");

    // Requests 1 then 0 per frame, 4 and 5 per second; subscriptions 9001..9005.
    std::vector<std::pair<uint32_t, int32_t>> requests;
    for (const auto& call : standin::calls(kStandinRequestDataOnSimObject)) {
        requests.emplace_back(call.id, call.period);
        EXPECT_EQ(call.objectId, 0u);
        EXPECT_EQ(call.flags, 0u);
        EXPECT_EQ(call.origin + call.interval + call.limit, 0u);
    }
    EXPECT_EQ(requests,
              (std::vector<std::pair<uint32_t, int32_t>>{{1, sc::SIMCONNECT_PERIOD_SIM_FRAME},
                                                         {0, sc::SIMCONNECT_PERIOD_SIM_FRAME},
                                                         {4, sc::SIMCONNECT_PERIOD_SECOND},
                                                         {5, sc::SIMCONNECT_PERIOD_SECOND}}));
    std::vector<std::string> events;
    for (const auto& call : standin::calls(kStandinSubscribeToSystemEvent)) {
        events.push_back(std::to_string(call.id) + " " + call.name);
    }
    EXPECT_EQ(events, (std::vector<std::string>{"9001 FlightLoaded", "9002 AircraftLoaded",
                                                "9003 Pause", "9004 Sim", "9005 Crashed"}));
}

TEST_F(ConnectionTest, KeepAliveEveryThreeSecondsAndReconnectFiveSecondsAfterLastAnswer) {
    openConnection();
    for (int s = 1; s <= 9; ++s) tick(s);
    std::vector<int32_t> keepAliveCalls;
    for (const auto& call : standin::calls(kStandinRequestSystemState)) {
        EXPECT_STREQ(call.name, "Sim");
        EXPECT_EQ(call.id, 3u);
        keepAliveCalls.push_back(1);
    }
    EXPECT_EQ(keepAliveCalls.size(), 3u);  // seconds 3, 6, 9
    EXPECT_TRUE(standin::calls(kStandinOpen).empty());

    standinSetKeepAliveAnswers(0);  // the answer to second 9's request never comes
    for (int s = 10; s <= 13; ++s) tick(s);
    EXPECT_TRUE(standin::calls(kStandinOpen).empty());
    tick(14);  // five passes after the last answer (second 9)
    EXPECT_EQ(standin::calls(kStandinOpen).size(), 1u);
    EXPECT_TRUE(link.connected());
    EXPECT_EQ(standin::counters().misuseCalls, 0u);
}

TEST_F(ConnectionTest, QuitUnregistersInOrderAndReconnectsWithoutHostAction) {
    openConnection();
    standinQuit();
    link.dispatchPass(at(0.5));
    const auto clears = standin::calls(kStandinClearDataDefinition);
    const std::size_t perVariable = digitInBindings().size() + switchVarBindings().size() +
                                    analogBindings().size() + encoderBindings().size();
    ASSERT_EQ(clears.size(), perVariable + 9);
    EXPECT_EQ(clears[0].id, static_cast<uint32_t>(digitInBindings()[0].defineId));
    std::vector<uint32_t> tail;
    for (std::size_t i = perVariable; i < clears.size(); ++i) tail.push_back(clears[i].id);
    EXPECT_EQ(tail, (std::vector<uint32_t>{3001, 3002, 3000, 3003, 3004, 3005, 3006, 3008, 3009}));
    std::vector<uint32_t> unsubscribed;
    for (const auto& call : standin::calls(kStandinUnsubscribeFromSystemEvent)) {
        unsubscribed.push_back(call.id);
    }
    EXPECT_EQ(unsubscribed, (std::vector<uint32_t>{9001, 9002, 9003, 9004, 9005}));
    EXPECT_TRUE(link.connected());  // until the keep-alive notices

    for (int s = 1; s <= 5; ++s) tick(s);
    EXPECT_EQ(standin::calls(kStandinOpen).size(), 1u);
    EXPECT_EQ(standin::counters().misuseCalls, 0u);
}

TEST_F(ConnectionTest, FramesFillTheValueArraysByPosition) {
    openConnection();
    const auto& digitOut = digitOutSigList();
    // Every digital output variable gets a value derived from its position; the synthesized
    // outputs 496..501 share B_FCU_POWER with output 485.
    std::size_t slot = 0;
    for (const auto& [id, entry] : digitOut) {
        if (id != 0) standinSetLVar(entry.first.c_str(), 1000.0 + static_cast<double>(slot));
        ++slot;
    }
    standinSetLVar("B_FCU_POWER", 7.0);
    standinRunFrames(1);
    link.dispatchPass(at(0.1));
    // Entry 0 is declared with the placeholder variable, which output 470 uses too.
    EXPECT_EQ(received.digitOut(0), 1470.0);
    EXPECT_EQ(received.digitOut(470), 1470.0);
    EXPECT_EQ(received.digitOut(1), 1001.0);
    EXPECT_EQ(received.digitOut(484), 1484.0);
    EXPECT_EQ(received.digitOut(485), 7.0);
    EXPECT_EQ(received.digitOut(494), 1494.0);
    for (std::size_t s = 495; s <= 500; ++s) EXPECT_EQ(received.digitOut(s), 7.0) << s;
    EXPECT_EQ(received.digitOut(501), 0.0);  // never written
}

// A hand-made data message for the read-block size rules.
std::vector<unsigned char> dataMessage(uint32_t requestId, std::size_t payloadBytes, double fill) {
    std::vector<unsigned char> bytes(sc::kSimObjectDataHeaderSize + payloadBytes);
    sc::SIMCONNECT_RECV_SIMOBJECT_DATA header{};
    header.dwSize = static_cast<sc::DWORD>(bytes.size());
    header.dwID = sc::SIMCONNECT_RECV_ID_SIMOBJECT_DATA;
    header.dwRequestID = requestId;
    std::memcpy(bytes.data(), &header, sc::kSimObjectDataHeaderSize);
    for (std::size_t i = 0; i + 8 <= payloadBytes; i += 8) {
        std::memcpy(bytes.data() + sc::kSimObjectDataHeaderSize + i, &fill, 8);
    }
    return bytes;
}

void deliver(Connection& link, const std::vector<unsigned char>& bytes, TimePoint now) {
    link.handleSimMessage(reinterpret_cast<const sc::SIMCONNECT_RECV*>(bytes.data()),
                          static_cast<sc::DWORD>(bytes.size()), now);
}

TEST_F(ConnectionTest, ReadBlockOneByteShortChangesNothing) {
    const std::size_t n = displaySigList().size();
    auto shortBlock = dataMessage(1, 8 * n - 1, 5.0);
    deliver(link, shortBlock, at(0));
    EXPECT_EQ(received.display(0), 0.0);
    deliver(link, dataMessage(1, 8 * n, 5.0), at(0));
    EXPECT_EQ(received.display(0), 5.0);
    EXPECT_EQ(received.display(n - 1), 5.0);
}

// Clock readings: a rise needs two readings in a row above the last; a block too short for the
// reading, or a malformed event, is no message at all.
TEST_F(ConnectionTest, ClockReadingsAndMalformedMessages) {
    const auto reading = [&](double v, std::size_t bytes = 8) {
        deliver(link, dataMessage(5, bytes, v), at(0));
    };
    const unsigned char garbage[8] = {0xff, 0xff, 0xff, 0xff, 8, 0, 0, 0};
    link.handleSimMessage(reinterpret_cast<const sc::SIMCONNECT_RECV*>(garbage), 8, at(0));
    link.handleSimMessage(nullptr, 0, at(0));
    reading(100, 7);
    reading(101, 7);
    EXPECT_FALSE(link.clockAdvancing());
    reading(100);
    EXPECT_FALSE(link.clockAdvancing());
    reading(101);
    EXPECT_TRUE(link.clockAdvancing());  // the first reading after a reset counts as a rise
    reading(101);
    EXPECT_FALSE(link.clockAdvancing());
    reading(102);
    reading(103);
    EXPECT_TRUE(link.clockAdvancing());
    reading(0.4);
    EXPECT_FALSE(link.clockAdvancing());
    reading(0.45);  // not a running clock at all
    EXPECT_FALSE(link.clockAdvancing());
    link.close(at(0));
    reading(200);  // the first reading after a close is a rise, but only one
    EXPECT_FALSE(link.clockAdvancing());
}

class StallWatchdog : public ConnectionTest {
  protected:
    void SetUp() override {
        ConnectionTest::SetUp();
        openConnection();
        link.dispatchPass(at(0));  // the "Sim" state that comes with the subscription
        clockAt(0, 100.0);
    }
    void clockAt(double s, double value) { deliver(link, dataMessage(5, 8, value), at(s)); }
    std::size_t rerequests() { return standin::calls(kStandinRequestDataOnSimObject).size(); }
    std::size_t opens() { return standin::calls(kStandinOpen).size(); }
    void event(uint32_t id, uint32_t value, double s,
               sc::DWORD size = sizeof(sc::SIMCONNECT_RECV_EVENT)) {
        sc::SIMCONNECT_RECV_EVENT e{};
        e.dwSize = size;
        e.dwID = sc::SIMCONNECT_RECV_ID_EVENT;
        e.uEventID = id;
        e.dwData = value;
        link.handleSimMessage(reinterpret_cast<const sc::SIMCONNECT_RECV*>(&e), size, at(s));
    }
    // Connection passes with the keep-alive answered, so only the watchdog can act.
    void passes(int from, int to) {
        for (int s = from; s <= to; ++s) tick(s);
    }
};

TEST_F(StallWatchdog, ReRequestsAfterFiveSecondsThenReconnectsFiveSecondsLater) {
    passes(1, 4);
    EXPECT_EQ(rerequests(), 0u);
    passes(5, 5);
    EXPECT_EQ(rerequests(), 3u);  // display, digital outputs, clock
    passes(6, 10);
    EXPECT_EQ(opens(), 0u);
    link.connectPass(at(11));
    EXPECT_EQ(opens(), 1u);
    EXPECT_TRUE(link.connected());
    EXPECT_EQ(rerequests(), 6u);  // the reconnecting pass checks the stream too, on the new handle
}

// With the keep-alive answering, the reconnect armed in a pass that also sent a keep-alive must
// survive the answer (count 3 at seconds 3, 6, 9, 12: the arming pass at 12 is one of them).
TEST_F(ConnectionTest, StallReconnectSurvivesTheKeepAliveAnswer) {
    openConnection();
    link.dispatchPass(at(0));  // the "Sim" state that comes with the subscription
    deliver(link, dataMessage(5, 8, 100.0), at(2));
    for (int s = 1; s <= 12; ++s) tick(s);
    EXPECT_EQ(standin::calls(kStandinRequestDataOnSimObject).size(), 3u);  // second 7
    EXPECT_TRUE(standin::calls(kStandinOpen).empty());
    tick(13);
    EXPECT_EQ(standin::calls(kStandinOpen).size(), 1u);
    EXPECT_TRUE(link.connected());
}

// Readings within 60 of the last accepted one, the same reading included, keep the stream fresh;
// a jump or a step back does not, so the re-request comes five seconds after the last accepted
// reading.
TEST_F(StallWatchdog, OnlyAcceptedReadingsKeepTheStreamFresh) {
    clockAt(3, 150.0);
    clockAt(4, 150.0);
    clockAt(5, 140.0);
    passes(1, 8);
    EXPECT_EQ(rerequests(), 0u);
    clockAt(9, 211.0);  // more than 60 beyond 150
    clockAt(9, 120.0);  // behind it
    passes(9, 9);
    EXPECT_EQ(rerequests(), 3u);
    clockAt(10, 151.0);  // recovers the pending re-request: no reconnect follows
    passes(10, 17);
    EXPECT_EQ(opens(), 0u);
}

TEST_F(StallWatchdog, PauseSuspendsAndResumeGrantsTenSeconds) {
    event(9003, 1, 1, sizeof(sc::SIMCONNECT_RECV_EVENT) - 1);  // too short: no pause
    passes(1, 5);
    EXPECT_EQ(rerequests(), 3u);
    clockAt(5, 101.0);
    standinClearCalls();
    event(9003, 1, 6);
    passes(6, 20);
    EXPECT_EQ(rerequests(), 0u);
    event(9003, 0, 20);  // fresh until 30: stalled from 35
    passes(21, 34);
    EXPECT_EQ(rerequests(), 0u);
    passes(35, 35);
    EXPECT_EQ(rerequests(), 3u);
}

TEST_F(StallWatchdog, SimCrashAndLoadsGrantSixtySeconds) {
    event(9004, 1, 0);  // fresh until 60: stalled from 65
    passes(1, 64);
    EXPECT_EQ(rerequests(), 0u);
    passes(65, 65);
    EXPECT_EQ(rerequests(), 3u);

    standinClearCalls();
    clockAt(66, 101.0);
    clockAt(66, 102.0);
    ASSERT_TRUE(link.clockAdvancing());
    event(9005, 0, 66);  // crash: clock reset
    EXPECT_FALSE(link.clockAdvancing());
    passes(67, 130);
    EXPECT_EQ(rerequests(), 0u);
    passes(131, 131);
    EXPECT_EQ(rerequests(), 3u);

    standinClearCalls();
    event(9004, 0, 132);  // no user aircraft: no stall check at all
    passes(133, 200);
    EXPECT_EQ(rerequests(), 0u);
}

TEST_F(StallWatchdog, FlightAndAircraftLoadsGrantSixtySeconds) {
    sc::SIMCONNECT_RECV_EVENT_FILENAME e{};
    e.dwSize = sizeof(e);
    e.dwID = sc::SIMCONNECT_RECV_ID_EVENT_FILENAME;
    e.uEventID = 9001;
    link.handleSimMessage(reinterpret_cast<const sc::SIMCONNECT_RECV*>(&e), sizeof(e), at(3));
    passes(1, 67);
    EXPECT_EQ(rerequests(), 0u);
    passes(68, 68);
    EXPECT_EQ(rerequests(), 3u);
    e.uEventID = 9002;
    link.handleSimMessage(reinterpret_cast<const sc::SIMCONNECT_RECV*>(&e), sizeof(e), at(69));
    passes(69, 133);
    EXPECT_EQ(rerequests(), 3u);
    passes(134, 134);
    EXPECT_EQ(rerequests(), 6u);
}

// A stop forgets the simulator's pause: the next run watches the stream again, also before the
// simulator has told the new connection anything.
TEST_F(StallWatchdog, CloseForgetsAPause) {
    event(9003, 1, 1);
    link.close(at(2));
    link.begin();
    tick(3);  // opens and registers; the subscriptions' answers wait for the next dispatch
    ASSERT_TRUE(link.connected());
    standinClearCalls();
    clockAt(3, 100.0);
    for (int s = 4; s <= 8; ++s) link.connectPass(at(s));
    EXPECT_EQ(rerequests(), 3u);
}

TEST_F(ConnectionTest, StallCheckNeverFiresBeforeTheFirstClockReading) {
    openConnection();
    for (int s = 1; s <= 30; ++s) tick(s);
    EXPECT_TRUE(standin::calls(kStandinRequestDataOnSimObject).empty());
    EXPECT_TRUE(standin::calls(kStandinOpen).empty());
}

TEST_F(ConnectionTest, TitleDetectsTheVariantOnce) {
    openConnection();
    standinSetTitle("Fenix A321 Example Air");
    standinRunSeconds(3);
    link.dispatchPass(at(1));
    EXPECT_EQ(link.variant(), 3);
    EXPECT_EQ(FakeSystem::debugLines(),
              (std::vector<std::string>{
                  "[VariantDetector] variant=A321 title=\"Fenix A321 Example Air\"\n"}));
}

// Without a client library every connection attempt fails; the places searched go to the
// debugger once per Start, not once per attempt.
TEST_F(ConnectionTest, MissingClientLibraryIsReportedOncePerStart) {
    FakeSystem::libraryMissing = true;
    FakeSystem::probe = platform::ProbeResult::kFound;
    for (int s = 0; s <= 10; ++s) tick(s);  // three attempts
    link.begin();
    tick(11);
    const std::string line = "[HelmBridge] SimConnect.dll not loaded; tried: here (missing)\n";
    EXPECT_EQ(FakeSystem::debugLines(), (std::vector<std::string>{line, line}));
    EXPECT_FALSE(link.connected());
}

// The simulator refuses a declaration (here it does not know the title variable): the refusal
// reaches the module as exception messages on the next dispatch, and the module carries on.
TEST_F(ConnectionTest, RefusedDeclarationArrivesAsExceptionAndTheModuleKeepsWorking) {
    standinSetUnknownVariable("TITLE");
    FakeSystem::probe = platform::ProbeResult::kFound;
    tick(0);
    ASSERT_TRUE(link.connected());
    const auto rejected = standin::rejectedCalls();
    ASSERT_EQ(rejected.size(), 2u);  // the title datum, then the request on its definition
    EXPECT_STREQ(rejected[0].name, "TITLE");
    EXPECT_EQ(rejected[0].exception, sc::SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED);
    EXPECT_EQ(rejected[1].function, kStandinRequestDataOnSimObject);
    EXPECT_EQ(rejected[1].id, 4u);
    EXPECT_EQ(standin::counters().deliveredExceptions, 0u);  // sent while OPEN was handled

    std::size_t ap1 = 0;
    for (const auto& [id, entry] : digitOutSigList()) {
        if (entry.first == "I_FCU_AP1") break;
        ++ap1;
    }
    standinSetTitle("Fenix A321 Example Air");
    standinSetLVar("I_FCU_AP1", 1.0);
    const VarBinding& input = digitInBindings().back();
    const double pressed = 1.0;
    for (int s = 1; s <= 12; ++s) {
        standinRunSeconds(1);
        tick(s);
        if (s == 1) {
            EXPECT_EQ(standin::counters().deliveredExceptions, 2u);
        }
    }
    link.sendData(static_cast<uint32_t>(input.defineId), 0, 8, &pressed);
    // Still the first connection: keep-alives answered, lamps and writes flowing.
    EXPECT_TRUE(link.connected());
    EXPECT_EQ(standin::counters().opens, 1u);
    EXPECT_EQ(received.digitOut(ap1), 1.0);
    EXPECT_EQ(standin::lvar(std::string(input.variable).c_str()), 1.0);
    EXPECT_EQ(link.variant(), 0);  // no title ever came
    EXPECT_EQ(standin::counters().rejectedCalls, 2u);
}

TEST_F(ConnectionTest, ReconnectCyclesWithConcurrentDispatchNeverTouchAClosedHandle) {
    FakeSystem::probe = platform::ProbeResult::kFound;
    standinSetKeepAliveAnswers(0);  // every fifth pass reconnects
    standinStartFrameThread(200);
    std::atomic<bool> stop{false};
    std::thread dispatcher([&] {
        while (!stop) link.dispatchPass(SteadyClock::now());
    });
    std::thread writer([&] {
        const double value = 1.0;
        while (!stop) link.sendData(1, 0, 8, &value);
    });
    for (int pass = 0; pass < 1500; ++pass) {
        link.connectPass(SteadyClock::now());
        if (pass % 250 == 0) standinQuit();
    }
    stop = true;
    dispatcher.join();
    writer.join();
    standinStopFrameThread();
    const StandinCounters counters = standin::counters();
    EXPECT_GE(counters.opens, 300u);
    EXPECT_EQ(counters.misuseCalls, 0u);
}

}  // namespace
}  // namespace fenixA320
