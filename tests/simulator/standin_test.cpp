// Tests of the simulator stand-in, driven through the bound client functions and its controls.
// What the module's own tests already pin through the stand-in (the call arguments of a
// registration, writes landing in variables, the keep-alive's answers, a QUIT and the dead link
// after it, reconnects under concurrent dispatch) is not repeated here.
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstring>
#include <iterator>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/simconnect_abi.h"
#include "platform/simconnect_binding.h"
#include "simulator/standin_control.h"
#include "tests/support/eventually.h"

namespace sc = helmbridge::simconnect;
namespace standin = helmbridge::standin;

namespace {

using Bytes = std::vector<unsigned char>;

void collect(sc::SIMCONNECT_RECV* data, sc::DWORD size, void* context) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(data);
    static_cast<std::vector<Bytes>*>(context)->emplace_back(bytes, bytes + size);
}

sc::DWORD field(const Bytes& message, std::size_t offset) {
    sc::DWORD value = 0;
    std::memcpy(&value, message.data() + offset, sizeof(value));
    return value;
}

sc::DWORD messageId(const Bytes& message) { return field(message, 8); }
sc::DWORD id(sc::SIMCONNECT_RECV_ID messageKind) { return static_cast<sc::DWORD>(messageKind); }

double payloadDouble(const Bytes& message, std::size_t index) {
    double value = 0.0;
    std::memcpy(&value, message.data() + sc::kSimObjectDataHeaderSize + 8 * index, sizeof(value));
    return value;
}

// The data messages of one request.
std::vector<Bytes> withRequest(const std::vector<Bytes>& messages, sc::DWORD requestId) {
    std::vector<Bytes> out;
    for (const Bytes& m : messages) {
        if (messageId(m) == id(sc::SIMCONNECT_RECV_ID_SIMOBJECT_DATA) &&
            field(m, 12) == requestId) {
            out.push_back(m);
        }
    }
    return out;
}

template <typename Message>
Message read(const Bytes& bytes) {
    Message message{};
    EXPECT_TRUE(sc::readMessage(reinterpret_cast<const sc::SIMCONNECT_RECV*>(bytes.data()),
                                static_cast<sc::DWORD>(bytes.size()), message));
    return message;
}

class StandIn : public ::testing::Test {
  protected:
    void SetUp() override {
        standinReset();
        api = helmbridge::platform::bindSimConnect();
        ASSERT_NE(api, nullptr);
    }
    void TearDown() override { standinReset(); }

    // Opens and takes the OPEN message, so later dispatches see only what the test causes.
    sc::HANDLE open() {
        sc::HANDLE handle = nullptr;
        EXPECT_EQ(api->open(&handle, "HelmBridge", nullptr, 0, nullptr, 0), sc::kSOk);
        dispatch(handle);
        return handle;
    }
    std::vector<Bytes> dispatch(sc::HANDLE handle) {
        std::vector<Bytes> messages;
        EXPECT_EQ(api->callDispatch(handle, &collect, &messages), sc::kSOk);
        return messages;
    }
    // The record of each test shows a call the stand-in refused.
    void add(sc::HANDLE handle, sc::DWORD definition, const char* name,
             sc::SIMCONNECT_DATATYPE type = sc::SIMCONNECT_DATATYPE_FLOAT64) {
        api->addToDataDefinition(handle, definition, name, "number", type, 0.0f, 0);
    }

    const helmbridge::platform::SimConnectApi* api = nullptr;
};

}  // namespace

TEST_F(StandIn, ConnectionsOpenCloseAndCountMisuseOfClosedOrUnknownHandles) {
    standinSetOpenResult(sc::kEFail);
    int unknown = 0;
    sc::HANDLE refused = &unknown;
    EXPECT_EQ(api->open(&refused, "HelmBridge", nullptr, 0, nullptr, 0), sc::kEFail);
    EXPECT_EQ(refused, nullptr);
    standinSetOpenResult(sc::kSOk);

    // Two handles, two connections; the OPEN each queues is what starts the module's
    // registration (the connection tests).
    sc::HANDLE first = open();
    open();
    EXPECT_EQ(standinOpenConnectionCount(), 2u);
    // Close takes as long as it is told to, but only when there is a connection to end.
    using Clock = std::chrono::steady_clock;
    standinSetCloseDelay(200);
    auto start = Clock::now();
    EXPECT_EQ(api->close(first), sc::kSOk);
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(200));
    EXPECT_EQ(standin::calls(kStandinClose).at(0).sendId, 2u);  // Open was 1
    standinSetCloseDelay(5000);
    start = Clock::now();
    EXPECT_LT(api->close(first), 0);
    EXPECT_EQ(api->close(nullptr), sc::kEFail);
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(5));
    EXPECT_LT(api->requestSystemState(first, 3, "Sim"), 0);
    EXPECT_LT(api->requestSystemState(&unknown, 3, "Sim"), 0);
    EXPECT_EQ(api->requestSystemState(nullptr, 3, "Sim"), sc::kEFail);

    // Opens, refused opens, calls on closed, unknown and null handles, and misuse (closed plus
    // unknown).
    const StandinCounters c = standin::counters();
    EXPECT_EQ((std::array{c.opens, c.failedOpens, c.closedHandleCalls, c.unknownHandleCalls,
                          c.nullHandleCalls, c.misuseCalls}),
              (std::array<uint64_t, 6>{2, 1, 2, 1, 2, 3}));

    // A reset ends every connection (a handle from before it counts as closed) and makes every
    // variable known again.
    sc::HANDLE beforeReset = open();
    standinSetUnknownVariable("L:X");
    standinReset();
    EXPECT_LT(api->callDispatch(beforeReset, &collect, nullptr), 0);
    EXPECT_EQ(standin::counters().closedHandleCalls, 1u);
    add(open(), 1, "L:X");
    EXPECT_EQ(standin::counters().rejectedCalls, 0u);
}

TEST_F(StandIn, DefinitionsKeepTheirDatumsPerConnectionSetDataWritesThemAndCallsAreRecorded) {
    sc::HANDLE handle = open();
    add(handle, 3000, "L:S_CDU1_KEY_A");
    add(handle, 3008, "TITLE", sc::SIMCONNECT_DATATYPE_STRING256);
    add(handle, 3000, "L:s_cdu1_key_b");
    // Two datums: the 16-byte block below is refused otherwise.
    EXPECT_STREQ(standin::datums(3000).at(1).name, "L:s_cdu1_key_b");
    EXPECT_EQ(standin::datums(3008).at(0).size, 256u);

    // Datum order decides which variable a value lands in; letter case does not matter.
    double block[2] = {1.0, 2.0};
    EXPECT_EQ(api->setDataOnSimObject(handle, 3000, 0, 0, 0, sizeof(block), block), sc::kSOk);
    EXPECT_EQ(standin::lvar("S_CDU1_KEY_A"), 1.0);
    EXPECT_EQ(standin::lvar("L:S_CDU1_KEY_B"), 2.0);

    // Writing the cockpit clock moves it; frames advance from there.
    add(handle, 3009, "L:N_MIP_CLOCK_UTC");
    double clock = 100.0;
    ASSERT_EQ(api->setDataOnSimObject(handle, 3009, 0, 0, 0, sizeof(clock), &clock), sc::kSOk);
    standinRunSeconds(2);
    EXPECT_DOUBLE_EQ(standinClock(), 102.0);

    EXPECT_EQ(api->clearDataDefinition(handle, 3000), sc::kSOk);
    api->clearDataDefinition(handle, 3000);  // refused: cleared already

    // A connection opened on another thread sees none of these definitions; the cleared one is
    // gone.
    uint64_t workerThread = 0;
    sc::HANDLE other = nullptr;
    std::thread([&] {
        workerThread = standinThreadId();
        api->open(&other, "HelmBridge", nullptr, 0, nullptr, 0);
    }).join();
    ASSERT_NE(workerThread, standinThreadId());
    EXPECT_TRUE(standin::definitionIds(other).empty());
    EXPECT_EQ(standin::definitionIds(handle), (std::vector<uint32_t>{3008, 3009}));

    // Every call is recorded with its thread, arguments and data, and numbered, refused ones too
    // (the refusals' own test checks what the record says about them); each connection numbers
    // its own calls from Open on.
    const auto calls = standin::calls();
    ASSERT_EQ(calls.size(), 11u);
    EXPECT_EQ((std::array{calls[0].sendId, calls[9].sendId, calls[10].sendId}),
              (std::array<uint32_t, 3>{1, 9, 1}));
    EXPECT_EQ((std::array{calls[0].threadId, calls[10].threadId}),
              (std::array{standinThreadId(), workerThread}));
    EXPECT_EQ(calls[5].data, Bytes(reinterpret_cast<unsigned char*>(block),
                                   reinterpret_cast<unsigned char*>(block) + sizeof(block)));
}

TEST_F(StandIn, FrameAndSecondRequestsDeliverPackedBlocksUnlessStalledPausedOrStopped) {
    standinSetFramesPerSecond(10);
    standinSetLVar("I_FCU_AP1", 1.5);
    standinSetLVar("L:i_fcu_ap2", -2.0);
    sc::HANDLE handle = open();
    for (const char* name : {"L:I_FCU_AP1", "L:I_FCU_AP2", "L:NEVER_SET"}) add(handle, 3005, name);
    add(handle, 3009, "L:N_MIP_CLOCK_UTC");
    api->requestDataOnSimObject(handle, 0, 3005, 0, sc::SIMCONNECT_PERIOD_SIM_FRAME, 0, 0, 0, 0);
    api->requestDataOnSimObject(handle, 5, 3009, 0, sc::SIMCONNECT_PERIOD_SECOND, 0, 0, 0, 0);

    standinRunFrames(20);
    standinSetLVar("L:I_FCU_AP2", 1.0);
    standinRunFrames(1);  // the SECOND requests send on frames 1, 11 and 21
    auto messages = dispatch(handle);
    const auto blocks = withRequest(messages, 0);
    ASSERT_EQ(blocks.size(), 21u);  // one a frame, none when requested
    const auto block = read<sc::SIMCONNECT_RECV_SIMOBJECT_DATA>(blocks[20]);
    // One object's block (entry 1 of 1) of three packed values, each frame's values as they were.
    EXPECT_EQ((std::array{block.dwSize, block.dwDefineID, block.dwDefineCount, block.dwentrynumber,
                          block.dwoutof}),
              (std::array<sc::DWORD, 5>{sc::kSimObjectDataHeaderSize + 3 * 8, 3005, 3, 1, 1}));
    EXPECT_EQ((std::array{payloadDouble(blocks[19], 1), payloadDouble(blocks[20], 0),
                          payloadDouble(blocks[20], 1), payloadDouble(blocks[20], 2)}),
              (std::array{-2.0, 1.5, 1.0, 0.0}));
    const auto clocks = withRequest(messages, 5);
    ASSERT_EQ(clocks.size(), 3u);
    EXPECT_DOUBLE_EQ(payloadDouble(clocks[2], 0) - payloadDouble(clocks[1], 0), 1.0);

    // A request for period NEVER ends it; a stalled clock holds its reading.
    api->requestDataOnSimObject(handle, 0, 3005, 0, sc::SIMCONNECT_PERIOD_NEVER, 0, 0, 0, 0);
    standinSetClockStalled(1);
    standinRunFrames(20);
    messages = dispatch(handle);
    EXPECT_TRUE(withRequest(messages, 0).empty());
    auto held = withRequest(messages, 5);
    ASSERT_EQ(held.size(), 2u);
    EXPECT_EQ(payloadDouble(held[0], 0), payloadDouble(held[1], 0));
    standinSetClockStalled(0);
    standinSetClock(5.0);
    standinRunFrames(10);
    held = withRequest(dispatch(handle), 5);
    ASSERT_EQ(held.size(), 1u);
    EXPECT_DOUBLE_EQ(payloadDouble(held[0], 0), 6.0);

    // Paused, the clock holds while data still flows; with the simulation stopped nothing flows.
    standinSetPaused(1);
    const double before = standinClock();
    standinRunFrames(30);
    EXPECT_EQ(standinClock(), before);
    EXPECT_EQ(withRequest(dispatch(handle), 5).size(), 3u);
    standinSetPaused(0);
    standinSetSimRunning(0);
    standinRunFrames(30);
    EXPECT_TRUE(dispatch(handle).empty());
    standinSetSimRunning(1);
    standinRunFrames(30);
    EXPECT_GT(standinClock(), before);
}

TEST_F(StandIn, SubscribedSystemEventsArriveWithTheirIdsAndData) {
    sc::HANDLE handle = open();
    const char* names[] = {"FlightLoaded", "AircraftLoaded", "Pause", "sim", "Crashed"};
    // A refused subscription would show as an exception among the events below.
    for (sc::DWORD i = 0; i < 5; ++i) api->subscribeToSystemEvent(handle, 9001 + i, names[i]);
    // Event id and data of each message; Pause and Sim report their current state at once.
    using Events = std::vector<std::pair<sc::DWORD, sc::DWORD>>;
    const auto events = [](const std::vector<Bytes>& messages) {
        Events out;
        for (const Bytes& m : messages) out.emplace_back(field(m, 16), field(m, 20));
        return out;
    };
    EXPECT_EQ(events(dispatch(handle)), (Events{{9003, 0}, {9004, 1}}));

    standinSetPaused(1);
    standinCrash();
    standinLoadFlight("flights\\LFPG.FLT");
    standinLoadAircraft("SimObjects\\Airplanes\\A320\\aircraft.cfg");
    const auto messages = dispatch(handle);
    ASSERT_EQ(events(messages), (Events{{9003, 1}, {9005, 0}, {9001, 0}, {9002, 0}}));
    EXPECT_EQ(messageId(messages[0]), id(sc::SIMCONNECT_RECV_ID_EVENT));
    const auto file = read<sc::SIMCONNECT_RECV_EVENT_FILENAME>(messages[2]);
    EXPECT_EQ(file.dwID, id(sc::SIMCONNECT_RECV_ID_EVENT_FILENAME));
    EXPECT_STREQ(file.szFileName, "flights\\LFPG.FLT");

    ASSERT_EQ(api->unsubscribeFromSystemEvent(handle, 9005), sc::kSOk);
    standinCrash();
    EXPECT_TRUE(dispatch(handle).empty());
}

// The answers themselves and switching them off are the connection tests' (keep-alive,
// reconnect cycles).
TEST_F(StandIn, ADispatchCallbackMayReenterAndClose) {
    sc::HANDLE handle = open();
    ASSERT_EQ(api->requestSystemState(handle, 3, "Sim"), sc::kSOk);
    ASSERT_EQ(api->requestSystemState(handle, 7, "Sim"), sc::kSOk);
    struct Context {
        const helmbridge::platform::SimConnectApi* api;
        sc::HANDLE handle;
        int seen;
    } context{api, handle, 0};
    const auto closeOnFirst = [](sc::SIMCONNECT_RECV*, sc::DWORD, void* raw) {
        auto* c = static_cast<Context*>(raw);
        ++c->seen;
        c->api->requestSystemState(c->handle, 9, "Sim");  // re-enters the stand-in
        c->api->close(c->handle);
    };
    EXPECT_EQ(api->callDispatch(handle, closeOnFirst, &context), sc::kSOk);
    // The second answer was not delivered after the close: the connection is gone and no call
    // came on its closed handle.
    EXPECT_EQ(context.seen, 1);
}

TEST_F(StandIn, RefusedCallsReturnOkAndTheNextDispatchNamesCodeSendIdAndArgument) {
    sc::HANDLE h = open();
    add(h, 1, "L:X");
    standinSetUnknownVariable("Gear Handle Position");
    const auto f64 = sc::SIMCONNECT_DATATYPE_FLOAT64;
    const auto frame = sc::SIMCONNECT_PERIOD_SIM_FRAME;
    const auto badType = static_cast<sc::SIMCONNECT_DATATYPE>(99);
    const auto unknownName = sc::SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED;
    const auto unknownId = sc::SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID;
    double v[2] = {1.0, 2.0};
    const struct {
        sc::HRESULT result;
        sc::DWORD exception;
        sc::DWORD argument;
    } refusals[] = {
        // Called in this order (braced initialisers run left to right).
        // clang-format off
        {api->requestSystemState(h, 3, "NoSuchState"),                           unknownName, 3},
        {api->requestSystemState(h, 3, nullptr),                                 unknownName, 3},
        {api->addToDataDefinition(h, 1, nullptr, "number", f64, 0.0f, 0),        unknownName, 3},
        {api->addToDataDefinition(h, 1, "GEAR HANDLE POSITION", "bool", f64, 0.0f, 0),
                                                                                 unknownName, 3},
        {api->addToDataDefinition(h, 1, "L:X", "number", badType, 0.0f, 0),
                                            sc::SIMCONNECT_EXCEPTION_INVALID_DATA_TYPE,       5},
        {api->requestDataOnSimObject(h, 1, 77, 0, frame, 0, 0, 0, 0),            unknownId,   3},
        {api->requestDataOnSimObject(h, 1, 1, 5, frame, 0, 0, 0, 0),             unknownId,   4},
        {api->requestDataOnSimObject(h, 1, 1, 0, static_cast<sc::SIMCONNECT_PERIOD>(9), 0, 0, 0, 0),
                                            sc::SIMCONNECT_EXCEPTION_INVALID_ENUM,            5},
        {api->requestDataOnSimObject(h, 1, 1, 0, frame, sc::SIMCONNECT_DATA_REQUEST_FLAG_TAGGED,
                                     0, 0, 0), sc::SIMCONNECT_EXCEPTION_ERROR,                6},
        {api->subscribeToSystemEvent(h, 1, "NoSuchEvent"),                       unknownName, 3},
        {api->unsubscribeFromSystemEvent(h, 12345),                              unknownId,   2},
        {api->clearDataDefinition(h, 77),                                        unknownId,   2},
        {api->setDataOnSimObject(h, 77, 0, 0, 0, 8, v),                          unknownId,   2},
        {api->setDataOnSimObject(h, 1, 0, sc::SIMCONNECT_DATA_SET_FLAG_TAGGED, 0, 8, v),
                                            sc::SIMCONNECT_EXCEPTION_ERROR,                   4},
        {api->setDataOnSimObject(h, 1, 0, 0, 2, 8, v), sc::SIMCONNECT_EXCEPTION_INVALID_ARRAY, 5},
        {api->setDataOnSimObject(h, 1, 0, 0, 0, 4, v), sc::SIMCONNECT_EXCEPTION_SIZE_MISMATCH, 6},
        // clang-format on
    };
    const auto rejected = standin::rejectedCalls();
    const auto messages = dispatch(h);
    ASSERT_EQ(rejected.size(), std::size(refusals));
    ASSERT_EQ(messages.size(), std::size(refusals));
    for (std::size_t i = 0; i < std::size(refusals); ++i) {
        EXPECT_EQ(refusals[i].result, sc::kSOk) << i;
        // Open was 1 and the definition 2, so the refused calls are 3, 4, ...; the record and the
        // message say the same.
        const std::array<sc::DWORD, 3> expected{
            refusals[i].exception, static_cast<sc::DWORD>(i + 3), refusals[i].argument};
        const auto e = read<sc::SIMCONNECT_RECV_EXCEPTION>(messages[i]);
        EXPECT_EQ(e.dwID, id(sc::SIMCONNECT_RECV_ID_EXCEPTION)) << i;
        EXPECT_EQ((std::array{e.dwException, e.dwSendID, e.dwIndex}), expected) << i;
        EXPECT_EQ((std::array<sc::DWORD, 3>{rejected[i].exception, rejected[i].sendId,
                                            rejected[i].exceptionIndex}),
                  expected)
            << i;
    }
    // Refused calls change nothing.
    EXPECT_EQ(standinDatumCount(nullptr, 1), 1);
    EXPECT_TRUE(standin::requestIds().empty());
    EXPECT_TRUE(standin::subscriptionIds().empty());
    EXPECT_EQ(standin::lvar("X"), 0.0);

    // What the library cannot send fails at once, unnumbered and without a message.
    standinClearCalls();
    EXPECT_EQ(api->open(nullptr, "HelmBridge", nullptr, 0, nullptr, 0), sc::kEFail);
    EXPECT_LT(api->callDispatch(h, nullptr, nullptr), 0);
    EXPECT_LT(api->setDataOnSimObject(h, 1, 0, 0, 0, 8, nullptr), 0);
    EXPECT_LT(api->setDataOnSimObject(h, 1, 0, 0, 0xFFFFFFFFu, 0xFFFFFFFFu, v), 0);
    for (const auto& call : standin::calls()) EXPECT_EQ(call.sendId, 0u) << call.function;
    EXPECT_TRUE(dispatch(h).empty());
    const StandinCounters c = standin::counters();
    EXPECT_EQ((std::array{c.rejectedCalls, c.deliveredExceptions, c.misuseCalls}),
              (std::array<uint64_t, 3>{std::size(refusals), std::size(refusals), 0}));
}

// Clients dispatching against these frames are the connection and plugin tests'.
TEST_F(StandIn, RealTimeFramesRunFromOneThreadStartedOnce) {
    ASSERT_EQ(standinStartFrameThread(200), 1);
    EXPECT_EQ(standinStartFrameThread(200), 0);
    EXPECT_TRUE(helmbridge::testing::eventually([] { return standinFrameCount() >= 20; }));
    standinStopFrameThread();
    EXPECT_EQ(standinStartFrameThread(0), 0);  // no rate: no thread
}
