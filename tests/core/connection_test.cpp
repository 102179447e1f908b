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

constexpr sc::DWORD kData = sc::SIMCONNECT_RECV_ID_SIMOBJECT_DATA;
constexpr sc::DWORD kEvent = sc::SIMCONNECT_RECV_ID_EVENT;
constexpr sc::DWORD kFile = sc::SIMCONNECT_RECV_ID_EVENT_FILENAME;

// Something the simulator tells at a second: a clock reading (kData) or an event.
struct Told {
    int second;
    sc::DWORD recvId;
    uint32_t eventId;
    double value;
    sc::DWORD size = 0;  // 0: the message's full size
};

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

    void deliver(const std::vector<unsigned char>& bytes, double s) {
        link.handleSimMessage(reinterpret_cast<const sc::SIMCONNECT_RECV*>(bytes.data()),
                              static_cast<sc::DWORD>(bytes.size()), at(s));
    }
    void clockAt(double s, double value) { deliver(dataMessage(5, 8, value), s); }

    void tell(const Told& told) {
        if (told.recvId == kData) return clockAt(told.second, told.value);
        sc::SIMCONNECT_RECV_EVENT_FILENAME e{};
        e.dwSize = told.size != 0          ? told.size
                   : told.recvId == kEvent ? sizeof(sc::SIMCONNECT_RECV_EVENT)
                                           : sizeof(e);
        e.dwID = told.recvId;
        e.uEventID = told.eventId;
        e.dwData = static_cast<sc::DWORD>(told.value);
        link.handleSimMessage(reinterpret_cast<const sc::SIMCONNECT_RECV*>(&e), e.dwSize,
                              at(told.second));
    }

    ReceivedValues received;
    Connection link{helmbridge::testing::fakePlatform(), received};
};

// Without a simulator passes 0, 5 and 10 close the null handle and 3, 4, 8 and 9 send
// keep-alives on it (an open would show in the calls). A config file alone, or a failed process
// snapshot, counts as a simulator; a refused open is tried again five passes later.
TEST_F(ConnectionTest, SearchesRightAwayThenEveryFiveSeconds) {
    for (int s = 0; s < 11; ++s) tick(s);
    std::vector<int32_t> functions;
    for (const auto& call : standin::calls()) functions.push_back(call.function);
    const int32_t close = kStandinClose;
    const int32_t keepAlive = kStandinRequestSystemState;
    EXPECT_EQ(functions, (std::vector<int32_t>{close, keepAlive, keepAlive, close, keepAlive,
                                               keepAlive, close}));
    FakeSystem::configFile = true;
    standinSetOpenResult(static_cast<int32_t>(0x80004005));
    for (int s = 11; s <= 19; ++s) tick(s);
    EXPECT_EQ(standin::calls(kStandinOpen).size(), 1u);
    EXPECT_FALSE(link.connected());
    FakeSystem::configFile = false;
    FakeSystem::probe = platform::ProbeResult::kSnapshotFailed;
    standinSetOpenResult(0);
    tick(20);
    EXPECT_TRUE(link.connected());
    ASSERT_EQ(standin::calls(kStandinOpen).size(), 2u);
    const auto open = standin::calls(kStandinOpen).back();
    EXPECT_EQ(std::tuple(std::string(open.name), open.window, open.userEvent, open.eventHandle,
                         open.configIndex),
              std::tuple(std::string("HelmBridge"), nullptr, 0u, nullptr, 0u));
}

// Every datum in declaration order: the variables, the key groups, the two blocks (entry 0 with
// the placeholder variable); each request after its definition, title and clock; the events.
TEST_F(ConnectionTest, OpenRegistersEverythingInOrder) {
    FakeSystem::probe = platform::ProbeResult::kFound;
    tick(0);
    std::vector<std::string> expected;
    const auto number = [&](uint32_t id, std::string_view variable) {
        expected.push_back(std::to_string(id) + " L:" + std::string(variable) + " number");
    };
    for (const auto* table :
         {&digitInBindings(), &switchVarBindings(), &analogBindings(), &encoderBindings()}) {
        for (const VarBinding& row : *table)
            number(static_cast<uint32_t>(row.defineId), row.variable);
    }
    for (const auto& [defineId, keys] :
         {std::pair{DEF_CDU_KEYS, &cduKeyGroup()}, std::pair{DEF_FCU_KEYS, &fcuKeyGroup()},
          std::pair{DEF_ASP_KEYS, &aspKeyGroup()}, std::pair{DEF_RMP_KEYS, &rmpKeyGroup()},
          std::pair{DEF_ATC_KEYS, &atcKeyGroup()}}) {
        for (const GroupKey& key : *keys) number(defineId, key.variable);
    }
    for (const auto& [defineId, list] : {std::pair{DEF_DIGIT_OUT, &digitOutSigList()},
                                         std::pair{DEF_DISPLAY, &displaySigList()}}) {
        for (const auto& [id, entry] : *list)
            number(defineId, id == 0 ? "S_DCDU1_LSK1L" : entry.first);
    }
    // Requests as "request id definition period" (3: every frame, 4: every second).
    for (const char* call :
         {"request 1 3006 3", "request 0 3005 3", "3008 TITLE ", "request 4 3008 4",
          "3009 L:N_MIP_CLOCK_UTC number", "request 5 3009 4", "9001 FlightLoaded",
          "9002 AircraftLoaded", "9003 Pause", "9004 Sim", "9005 Crashed"}) {
        expected.push_back(call);
    }
    std::vector<std::string> calls;
    std::size_t odd = 0;
    for (const auto& call : standin::calls()) {
        const std::string id = std::to_string(call.id);
        if (call.function == kStandinRequestDataOnSimObject) {
            calls.push_back("request " + id + " " + std::to_string(call.defineId) + " " +
                            std::to_string(call.period));
            odd += call.objectId + call.flags + call.origin + call.interval + call.limit;
        } else if (call.function == kStandinAddToDataDefinition) {
            calls.push_back(id + " " + call.name + " " + call.unit);
            odd += call.datumType != (call.id == DEF_TITLE ? sc::SIMCONNECT_DATATYPE_STRING256
                                                           : sc::SIMCONNECT_DATATYPE_FLOAT64) ||
                   call.epsilon != 0.0f || call.datumId != sc::SIMCONNECT_UNUSED;
        } else if (call.function == kStandinSubscribeToSystemEvent) {
            calls.push_back(id + " " + call.name);
        }
    }
    EXPECT_EQ(calls, expected);
    EXPECT_EQ(odd, 0u);
}

// Keep-alives every three passes; a quit unregisters everything in order, and the keep-alives,
// unanswered from then on, reconnect five passes after the last answer without the host; with the
// simulator gone the link is down and searching until it is back. The new connection's title
// detects the variant, once.
TEST_F(ConnectionTest, KeepAliveQuitAndReconnect) {
    openConnection();
    for (int s = 1; s <= 9; ++s) tick(s);
    const auto keepAlives = standin::calls(kStandinRequestSystemState);
    ASSERT_EQ(keepAlives.size(), 3u);  // seconds 3, 6, 9
    EXPECT_STREQ(keepAlives[0].name, "Sim");
    EXPECT_EQ(keepAlives[0].id, 3u);

    standinClearCalls();
    standinQuit();
    link.dispatchPass(at(9.5));
    std::vector<uint32_t> expected;
    for (const auto* table :
         {&digitInBindings(), &switchVarBindings(), &analogBindings(), &encoderBindings()}) {
        for (const VarBinding& row : *table)
            expected.push_back(static_cast<uint32_t>(row.defineId));
    }
    expected.insert(expected.end(), {3001, 3002, 3000, 3003, 3004, 3005, 3006, 3008, 3009});
    expected.insert(expected.end(), {9001, 9002, 9003, 9004, 9005});
    std::vector<uint32_t> cleared;
    for (const auto& call : standin::calls()) {
        if (call.function != kStandinCallDispatch) cleared.push_back(call.id);
    }
    EXPECT_EQ(cleared, expected);   // definitions, then events
    EXPECT_TRUE(link.connected());  // until the keep-alive notices

    for (int s = 10; s <= 13; ++s) tick(s);
    EXPECT_TRUE(standin::calls(kStandinOpen).empty());
    FakeSystem::probe = platform::ProbeResult::kNotFound;  // the simulator has gone too
    for (int s = 14; s <= 18; ++s) tick(s);
    EXPECT_FALSE(link.connected());  // the reconnect at 14 closed the link and found nothing
    FakeSystem::probe = platform::ProbeResult::kFound;
    tick(19);
    EXPECT_EQ(standin::calls(kStandinOpen).size(), 1u);
    // Nothing went to the closed handle: the keep-alive at 17 and the close at 19 used none.
    EXPECT_EQ(standin::counters().misuseCalls, 0u);
    standinSetTitle("Fenix A321 Example Air");
    standinRunSeconds(3);
    link.dispatchPass(at(19.5));  // connected again: a closed link dispatches nothing
    EXPECT_EQ(link.variant(), 3);
    EXPECT_EQ(FakeSystem::debugLines(),
              (std::vector<std::string>{
                  "[VariantDetector] variant=A321 title=\"Fenix A321 Example Air\"\n"}));
}

// A block one byte short changes nothing; the frames fill the value arrays by position. The
// simulator refused a declaration (it does not know the title variable): the refusals reach the
// module as exception messages, and the module carries on without a variant.
TEST_F(ConnectionTest, FramesFillTheValueArraysByPositionDespiteARefusedDeclaration) {
    const std::size_t n = displaySigList().size();
    deliver(dataMessage(1, 8 * n - 1, 5.0), 0);
    EXPECT_EQ(received.display(0), 0.0);
    deliver(dataMessage(1, 8 * n, 5.0), 0);
    EXPECT_EQ(received.display(0), 5.0);
    EXPECT_EQ(received.display(n - 1), 5.0);

    standinSetUnknownVariable("TITLE");
    standinSetTitle("Fenix A321 Example Air");
    openConnection();
    // Every digital output variable gets a value derived from its position; the synthesized
    // outputs 496..501 share B_FCU_POWER with output 485.
    std::size_t slot = 0;
    for (const auto& [id, entry] : digitOutSigList()) {
        if (id != 0) standinSetLVar(entry.first.c_str(), 1000.0 + static_cast<double>(slot));
        ++slot;
    }
    standinSetLVar("B_FCU_POWER", 7.0);
    standinRunFrames(1);
    link.dispatchPass(at(0.1));
    // Entry 0 is declared with the placeholder variable, which output 470 uses too; 501 is never
    // written.
    const std::pair<std::size_t, double> expected[] = {{0, 1470},   {470, 1470}, {1, 1001},
                                                       {484, 1484}, {485, 7},    {494, 1494},
                                                       {495, 7},    {500, 7},    {501, 0}};
    for (const auto& [index, value] : expected) EXPECT_EQ(received.digitOut(index), value) << index;
    EXPECT_EQ(standin::counters().deliveredExceptions, 2u);
    for (int s = 1; s <= 12; ++s) {
        standinRunSeconds(1);
        tick(s);
    }
    EXPECT_TRUE(link.connected());
    EXPECT_EQ(standin::counters().opens, 1u);
    EXPECT_EQ(link.variant(), 0);  // no title ever came
}

// Clock readings: a rise needs two readings in a row above the last; a block too short for the
// reading, or a malformed event, is no message at all; a crash starts the count again, and so
// does a close.
TEST_F(ConnectionTest, ClockReadingsAndMalformedMessages) {
    const unsigned char garbage[8] = {0xff, 0xff, 0xff, 0xff, 8, 0, 0, 0};
    link.handleSimMessage(reinterpret_cast<const sc::SIMCONNECT_RECV*>(garbage), 8, at(0));
    link.handleSimMessage(nullptr, 0, at(0));
    deliver(dataMessage(5, 7, 100), 0);
    constexpr double kCrash = -1;
    constexpr double kClose = -2;
    const std::pair<double, bool> steps[] = {
        {100, false}, {101, true},  {101, false},  {102, false},    {103, true}, {kCrash, false},
        {104, false}, {0.4, false}, {0.45, false}, {kClose, false}, {200, false}};
    for (const auto& [reading, advancing] : steps) {
        if (reading == kCrash) {
            tell({0, kEvent, 9005, 0});
        } else if (reading == kClose) {
            link.close(at(0));
        } else {
            clockAt(0, reading);
        }
        EXPECT_EQ(link.clockAdvancing(), advancing) << reading;
    }
}

class StallWatchdog : public ConnectionTest {
  protected:
    void SetUp() override {
        ConnectionTest::SetUp();
        openConnection();
        link.dispatchPass(at(0));  // the "Sim" state that comes with the subscription
        clockAt(0, 100.0);
    }
    std::size_t rerequests() { return standin::calls(kStandinRequestDataOnSimObject).size(); }
    // Passes from second `from`, telling `told` on its second; the second of the first pass that
    // re-requests the blocks, or -1 when none has by second 200.
    int nextRerequest(int from, const std::vector<Told>& told = {}) {
        const std::size_t before = rerequests();
        for (int s = from; s <= 200; ++s) {
            for (const Told& t : told) {
                if (t.second == s) tell(t);
            }
            if (s > 0) tick(s);
            if (rerequests() > before) return s;
        }
        return -1;
    }
};

// A reading cancels a pending re-request; a stream still silent five seconds after the
// re-request is rebuilt on a new connection, whose pass checks the stream too. The reconnect is
// armed at second 15, in a pass that also sends a keep-alive (every third second), and must
// survive that keep-alive's answer.
TEST_F(StallWatchdog, ReRequestsAfterFiveSilentSecondsThenReconnectsFiveSecondsLater) {
    EXPECT_EQ(nextRerequest(1), 5);
    EXPECT_EQ(rerequests(), 3u);  // display, digital outputs, clock
    clockAt(5, 101.0);
    EXPECT_EQ(nextRerequest(6), 10);
    EXPECT_EQ(nextRerequest(11), 16);
    EXPECT_EQ(standin::calls(kStandinOpen).size(), 1u);
    // The new handle's registration (dispatched, so the link is up), the stream check before it.
    EXPECT_EQ(rerequests(), 13u);
}

// What the simulator tells moves the second where a silent stream is re-requested: only readings
// within 60 of the last accepted one count; a resume grants ten seconds, the sim starting, a
// crash and the loads sixty; no user aircraft, no check.
class StallGrace : public StallWatchdog,
                   public ::testing::WithParamInterface<std::pair<std::vector<Told>, int>> {};

TEST_P(StallGrace, FirstReRequestFollowsWhatTheSimulatorTold) {
    EXPECT_EQ(nextRerequest(0, GetParam().first), GetParam().second);
}

constexpr sc::DWORD kShortEvent = sizeof(sc::SIMCONNECT_RECV_EVENT) - 1;
INSTANTIATE_TEST_SUITE_P(
    Told, StallGrace,
    ::testing::Values(std::pair{std::vector<Told>{{3, kData, 0, 150},
                                                  {4, kData, 0, 150},
                                                  {5, kData, 0, 140},
                                                  {6, kData, 0, 211},
                                                  {7, kData, 0, 120}},
                                9},
                      std::pair{std::vector<Told>{{3, kData, 0, 160}, {4, kData, 0, 220}}, 9},
                      std::pair{std::vector<Told>{{1, kEvent, 9003, 1, kShortEvent}}, 5},
                      std::pair{std::vector<Told>{{1, kEvent, 9003, 1}, {20, kEvent, 9003, 0}}, 35},
                      std::pair{std::vector<Told>{{0, kEvent, 9004, 1}}, 65},
                      std::pair{std::vector<Told>{{2, kEvent, 9005, 0}}, 67},
                      std::pair{std::vector<Told>{{3, kFile, 9001, 0}}, 68},
                      std::pair{std::vector<Told>{{4, kFile, 9002, 0}}, 69},
                      std::pair{std::vector<Told>{{0, kEvent, 9004, 0}}, -1}));

// A close forgets the clock reading and a pause: the next connection waits for its own first
// reading, then watches the stream, also before the simulator has told it anything.
TEST_F(StallWatchdog, CloseForgetsTheReadingAndAPause) {
    tell({1, kEvent, 9003, 1});
    link.close(at(2));
    link.begin();
    tick(3);  // opens and registers; the subscriptions' answers wait for the next dispatch
    ASSERT_TRUE(link.connected());
    standinClearCalls();
    for (int s = 4; s <= 10; ++s) link.connectPass(at(s));
    EXPECT_EQ(rerequests(), 0u);
    clockAt(10, 100.0);
    for (int s = 11; s <= 15; ++s) link.connectPass(at(s));
    EXPECT_EQ(rerequests(), 3u);
}

// Without a client library every connection attempt fails; the places searched go to the
// debugger once, not once per attempt (that each Start reports again is the lifecycle test's).
TEST_F(ConnectionTest, MissingClientLibraryIsReportedOnce) {
    FakeSystem::libraryMissing = true;
    FakeSystem::probe = platform::ProbeResult::kFound;
    for (int s = 0; s <= 10; ++s) tick(s);  // three attempts
    const std::string line = "[HelmBridge] SimConnect.dll not loaded; tried: here (missing)\n";
    EXPECT_EQ(FakeSystem::debugLines(), (std::vector<std::string>{line}));
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
    EXPECT_GE(standin::counters().opens, 300u);
    EXPECT_EQ(standin::counters().misuseCalls, 0u);
}

}  // namespace
}  // namespace fenixA320
