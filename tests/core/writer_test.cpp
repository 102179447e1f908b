// The writer pass against the stand-in: ordered, latest-value and held writes as the simulator
// receives them, on synthetic time.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "core/core.h"
#include "simulator/standin_control.h"

namespace fenixA320 {
namespace {

namespace standin = helmbridge::standin;
using std::chrono::milliseconds;

struct WriterSystem {
    static platform::ProbeResult probe() { return platform::ProbeResult::kFound; }
    static bool noConfig() { return false; }
    static void quiet(const char*) {}
};
const platform::Platform kPlatform{&platform::bindSimConnect, &WriterSystem::probe,
                                   &WriterSystem::noConfig, &WriterSystem::quiet};

TimePoint at(int64_t ms) { return TimePoint{} + std::chrono::seconds(1000) + milliseconds(ms); }

class Writer : public ::testing::Test {
  protected:
    void SetUp() override {
        standinReset();
        core.BuildInputLogic();
        reconnect();
    }
    void reconnect() {
        core.linkCheckCount = 5;
        core.connectPass(at(0));
        core.dispatchPass(at(0));  // OPEN: definitions registered
        ASSERT_TRUE(core.connected);
        standinClearCalls();
    }
    // Values the simulator received for one definition, in order.
    static std::vector<double> sent(uint32_t defineId) {
        std::vector<double> values;
        for (const auto& call : standin::calls(kStandinSetDataOnSimObject)) {
            if (call.id != defineId) continue;
            double v = 0.0;
            if (call.data.size() >= sizeof v) std::memcpy(&v, call.data.data(), sizeof v);
            values.push_back(v);
        }
        return values;
    }
    void queue(uint32_t id, double v) { core.QueueWrite(id, &v); }
    void latest(uint32_t id, double v) { core.SetLatestWrite(id, &v, sizeof v); }

    FenixA320Core core{kPlatform};
};

TEST_F(Writer, QueuedWritesArriveInOrderWithTheirArguments) {
    queue(1, 5.0);
    queue(1, 6.0);
    core.writerPass(at(1));
    EXPECT_EQ(sent(1), (std::vector<double>{5.0, 6.0}));
    for (const auto& call : standin::calls(kStandinSetDataOnSimObject)) {
        EXPECT_EQ(call.objectId, 0u);
        EXPECT_EQ(call.flags, 0u);
        EXPECT_EQ(call.arrayCount, 0u);
        EXPECT_EQ(call.unitSize, 8u);
    }
    EXPECT_EQ(standin::lvar("S_ADF1_TFC"), 6.0);
}

TEST_F(Writer, TenQueuedRecordsPerPass) {
    for (int i = 0; i < 25; ++i) queue(1, i);
    core.writerPass(at(1));
    EXPECT_EQ(sent(1).size(), 10u);
    core.writerPass(at(6));
    core.writerPass(at(11));
    const std::vector<double> values = sent(1);
    ASSERT_EQ(values.size(), 25u);
    for (int i = 0; i < 25; ++i) EXPECT_EQ(values[static_cast<std::size_t>(i)], i);
}

TEST_F(Writer, FullQueueDropsTheOldestAndCountsIt) {
    for (int i = 0; i <= 20000; ++i) queue(1, i);
    EXPECT_EQ(core.writeQueue.size(), 20000u);
    EXPECT_EQ(core.droppedWrites, 1u);
    double first = 0.0;
    std::memcpy(&first, core.writeQueue.at(0).bytes.data(), sizeof first);
    EXPECT_EQ(first, 1.0);
}

TEST_F(Writer, NothingIsStoredWhileDisconnected) {
    core.connected = false;
    queue(1, 1.0);
    latest(2001, 1.0);
    EXPECT_EQ(core.writeQueue.size(), 0u);
    EXPECT_EQ(core.latestWrites.find(2001), nullptr);
    reconnect();
    core.writerPass(at(1));
    EXPECT_TRUE(standin::calls(kStandinSetDataOnSimObject).empty());
}

TEST_F(Writer, LatestValuesFlushTwentyAtMostEveryTenMilliseconds) {
    latest(2001, 1.0);
    latest(2001, 2.0);
    for (uint32_t id = 2002; id < 2026; ++id) latest(id, 3.0);  // 25 dirty in all
    core.writerPass(at(1));
    EXPECT_EQ(standin::calls(kStandinSetDataOnSimObject).size(), 20u);
    EXPECT_EQ(sent(2001), (std::vector<double>{2.0}));
    core.writerPass(at(6));  // 5 ms later: no flush yet
    EXPECT_EQ(standin::calls(kStandinSetDataOnSimObject).size(), 20u);
    core.writerPass(at(11));
    EXPECT_EQ(standin::calls(kStandinSetDataOnSimObject).size(), 25u);
}

TEST_F(Writer, HeldValuesAreResentEveryTwoHundredMillisecondsUntilStop) {
    ASSERT_EQ(core.heldDefinitions.count(2089), 1u);  // left throttle
    latest(2089, 0.5);
    core.writerPass(at(1));  // latest flush and held flush
    EXPECT_EQ(sent(2089).size(), 2u);
    for (int ms = 6; ms < 200; ms += 5) core.writerPass(at(ms));
    EXPECT_EQ(sent(2089).size(), 2u);
    core.writerPass(at(201));
    EXPECT_EQ(sent(2089), (std::vector<double>{0.5, 0.5, 0.5}));
    EXPECT_EQ(sent(2001).size(), 0u);
    core.Stop();
    EXPECT_TRUE(core.heldWrites.empty());
    core.writerPass(at(1000));
    EXPECT_EQ(sent(2089).size(), 3u);
}

TEST_F(Writer, DirtyLatestAndHeldWritesSurviveAReconnect) {
    latest(2089, 0.25);  // held
    latest(2002, 0.75);  // latest only
    core.connected = false;
    core.writerPass(at(1));
    EXPECT_TRUE(standin::calls(kStandinSetDataOnSimObject).empty());
    reconnect();
    core.writerPass(at(2));
    EXPECT_EQ(sent(2002), (std::vector<double>{0.75}));
    EXPECT_EQ(sent(2089), (std::vector<double>{0.25, 0.25}));
}

}  // namespace
}  // namespace fenixA320
