// Start and stop of the core: worker threads, the connection they open, and what a restart
// keeps and resets.
#include <gtest/gtest.h>

#include <atomic>

#include "core/core.h"
#include "simulator/standin_control.h"
#include "tests/support/eventually.h"
#include "tests/support/fake_platform.h"

namespace fenixA320 {
namespace {

namespace standin = helmbridge::standin;
using helmbridge::testing::eventually;
using helmbridge::testing::FakeSystem;

// Every Start searches at once and tells the debugger once where it looked for a missing client
// library, also after a Stop. With the library there a running core connects at once, sends a
// switch and shows a lamp; Stop unregisters and closes, and the next Start connects again with
// the values received so far still there; a second Start restarts with six workers, a stop
// leaves none.
TEST(CoreLifecycle, RunStopAndRestartAgainstTheStandIn) {
    standinReset();
    FakeSystem::reset(platform::ProbeResult::kFound);
    FakeSystem::synthetic = false;  // real workers on the steady clock
    FakeSystem::libraryMissing = true;
    FenixA320Core core{helmbridge::testing::fakePlatform()};
    EXPECT_TRUE(core.Stop());  // before any Start
    for (std::size_t starts = 1; starts <= 2; ++starts) {
        core.Start();
        EXPECT_TRUE(eventually([&] { return FakeSystem::debugLines().size() == starts; }));
        core.Stop();
    }
    FakeSystem::libraryMissing = false;
    std::atomic<bool> lamp{false};
    core.SetDigitOutProc([&](unsigned int id, bool on) {
        if (id == 1) lamp = on;
        return true;
    });
    EXPECT_FALSE(core.UpdateOutput());  // not connected
    core.Start();
    // Open, and registered: writes before the OPEN message's registration are refused.
    ASSERT_TRUE(
        eventually([] { return standin::calls(kStandinSubscribeToSystemEvent).size() == 5; }));
    ASSERT_TRUE(core.GetConnectStatus());
    core.SetDigitIn(1, true);
    EXPECT_TRUE(eventually([] { return standin::lvar("S_ADF1_TFC") == 1.0; })) << "write";
    standinSetLVar("I_ASP_ADF_1_REC", 1.0);
    EXPECT_TRUE(eventually([&] {
        standinRunFrames(1);
        return core.UpdateOutput() && lamp;
    })) << "lamp";

    core.Stop();
    EXPECT_FALSE(core.GetConnectStatus());
    EXPECT_FALSE(standin::calls(kStandinClearDataDefinition).empty());
    ASSERT_FALSE(standin::calls(kStandinClose).empty());
    EXPECT_NE(standin::calls(kStandinClose).back().handle, nullptr);
    lamp = false;
    ASSERT_TRUE(core.Start());
    ASSERT_TRUE(core.Start());
    EXPECT_TRUE(core.isRunning());
    EXPECT_EQ(core.workerThreads(), 6);
    ASSERT_TRUE(eventually([&] { return core.GetConnectStatus(); }));
    core.UpdateOutput();
    EXPECT_TRUE(lamp);  // received values survive a restart
    EXPECT_TRUE(core.Stop());
    EXPECT_EQ(core.workerThreads(), 0);
    EXPECT_FALSE(core.isRunning());
}

}  // namespace
}  // namespace fenixA320
