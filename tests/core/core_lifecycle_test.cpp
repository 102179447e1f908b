// Start and stop of the core: worker threads, write-path reset and liveness reset.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>

#include "core/core.h"

namespace fenixA320 {
namespace {

int workersWithThreads(const FenixA320Core& core) {
    int count = 0;
    for (const PeriodicWorker* w :
         {&core.connectWorker, &core.dispatchWorker, &core.servoWorker, &core.rudderTrimWorker,
          &core.inputRefreshWorker, &core.writerWorker}) {
        if (w->thread) ++count;
    }
    return count;
}

// Threads of this process, where the system tells (Linux); -1 elsewhere.
int processThreads() {
#if defined(_WIN32)
    return -1;  // under Wine, /proc shows the emulator's own threads too
#else
    std::error_code ec;
    const std::filesystem::path tasks("/proc/self/task");
    if (!std::filesystem::exists(tasks, ec)) return -1;
    int count = 0;
    for (auto it = std::filesystem::directory_iterator(tasks, ec);
         !ec && it != std::filesystem::directory_iterator(); it.increment(ec)) {
        ++count;
    }
    return count;
#endif
}

TEST(CoreLifecycle, StopWithoutStartStartsNothing) {
    FenixA320Core core;
    const int threadsBefore = processThreads();
    EXPECT_TRUE(core.Stop());
    EXPECT_EQ(workersWithThreads(core), 0);
    EXPECT_EQ(processThreads(), threadsBefore);
    EXPECT_FALSE(core.inputsBuilt);
    EXPECT_FALSE(core.running);
}

TEST(CoreLifecycle, TwoStartsLeaveExactlySixWorkerThreads) {
    FenixA320Core core;
    std::thread([] {}).join();  // let a sanitizer runtime start its helper thread first
    const int threadsBefore = processThreads();
    ASSERT_TRUE(core.Start());
    ASSERT_TRUE(core.Start());
    EXPECT_TRUE(core.running);
    EXPECT_EQ(workersWithThreads(core), 6);
    if (threadsBefore >= 0) {
        EXPECT_EQ(processThreads(), threadsBefore + 6);
    }
    EXPECT_TRUE(core.Stop());
    EXPECT_EQ(workersWithThreads(core), 0);
    if (threadsBefore >= 0) {
        EXPECT_EQ(processThreads(), threadsBefore);
    }
}

TEST(CoreLifecycle, StartSetsPeriodsAndFirstConnectAttempt) {
    FenixA320Core core;
    core.Start();
    EXPECT_EQ(core.connectWorker.periodMs, 1000);
    EXPECT_EQ(core.dispatchWorker.periodMs, 15);
    EXPECT_EQ(core.servoWorker.periodMs, 50);
    EXPECT_EQ(core.rudderTrimWorker.periodMs, 10);
    EXPECT_EQ(core.inputRefreshWorker.periodMs, 50);
    EXPECT_EQ(core.writerWorker.periodMs, 5);
    EXPECT_TRUE(core.inputsBuilt);
    core.Stop();
}

// Without a client library every connection attempt fails; the places searched go to the
// debugger once per Start, not once per attempt.
TEST(CoreLifecycle, MissingClientLibraryIsReportedOncePerStart) {
    static std::atomic<int> lines{0};
    static std::mutex lastMutex;
    static std::string last;
    lines = 0;
    const platform::Platform noLibrary{
        []() -> const platform::SimConnectApi* { return nullptr; },
        [] { return platform::ProbeResult::kFound; }, [] { return false; },
        [](const char* text) {
            std::lock_guard lock(lastMutex);
            last = text;
            ++lines;
        },
        [] { return std::string("SimConnect.dll not loaded; tried: here (missing)"); }};
    FenixA320Core core{noLibrary};
    core.linkCheckCount = 10;  // as Start leaves it: the first pass attempts
    for (int s = 0; s <= 10; ++s) core.connectPass(TimePoint{} + std::chrono::seconds(s));
    EXPECT_EQ(lines, 1);  // three attempts
    {
        std::lock_guard lock(lastMutex);
        EXPECT_EQ(last, "[HelmBridge] SimConnect.dll not loaded; tried: here (missing)\n");
    }
    core.Start();
    const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (lines < 2 && std::chrono::steady_clock::now() < until) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    core.Stop();
    EXPECT_EQ(lines, 2);
    EXPECT_FALSE(core.connected);
}

TEST(CoreLifecycle, RestartKeepsInputObjectsAndResetsState) {
    FenixA320Core core;
    core.Start();
    std::atomic<double>* values = core.digitOutValues.get();
    values[3].store(1.5);
    core.Stop();
    core.droppedWrites = 7;
    core.clockAdvancing = true;
    core.clockRiseCount = 4;
    core.acceptedClock = 1234.0;
    core.Start();
    EXPECT_EQ(core.digitOutValues.get(), values);  // built once, never moved
    EXPECT_EQ(values[3].load(), 1.5);              // received values survive a restart
    EXPECT_EQ(core.droppedWrites, 0u);
    core.Stop();
    EXPECT_FALSE(core.clockAdvancing);
    EXPECT_EQ(core.clockRiseCount, 0);
    EXPECT_EQ(core.acceptedClock, -1.0);
    EXPECT_EQ(core.lastClockValue, -1.0);
    EXPECT_FALSE(core.connected);
    EXPECT_FALSE(core.running);
}

TEST(CoreLifecycle, StopForgetsWhichInputsAndSelectorsWereReported) {
    FenixA320Core core;
    core.BuildInputLogic();
    core.connected = true;
    core.simHandle = reinterpret_cast<void*>(0x1);  // no client library: nothing is called
    core.SetDigitIn(1, true);                       // one-variable key
    core.SetDigitIn(22, true);                      // a contact of the INT/RAD selector
    const auto reported = [&] {
        int count = 0;
        for (const SwitchEntry& entry : core.input.switches) count += entry.reported ? 1 : 0;
        return count;
    };
    ASSERT_EQ(reported(), 1);
    ASSERT_TRUE(core.lastDigitIn.at(1).seen);
    core.Stop();
    EXPECT_EQ(reported(), 0);
    EXPECT_FALSE(core.lastDigitIn.at(1).seen);
    EXPECT_TRUE(core.lastDigitIn.at(1).state);  // states stay for the next run
}

TEST(CoreLifecycle, PwmWrapperFloorsLowLevels) {
    FenixA320Core core;
    std::vector<std::pair<unsigned, double>> calls;
    core.SetPwmProc([&](unsigned channel, double level) {
        calls.emplace_back(channel, level);
        return channel != 9;
    });
    EXPECT_TRUE(core.pwmProc(1, 49.9));
    EXPECT_TRUE(core.pwmProc(2, 50.0));
    EXPECT_TRUE(core.pwmProc(3, -20.0));
    EXPECT_TRUE(core.pwmProc(4, 2500.0));
    EXPECT_FALSE(core.pwmProc(9, 100.0));  // the host's result comes back
    EXPECT_EQ(calls, (std::vector<std::pair<unsigned, double>>{
                         {1, 0.0}, {2, 50.0}, {3, 0.0}, {4, 2500.0}, {9, 100.0}}));
}

TEST(CoreLifecycle, PwmWrapperAroundEmptyHostFunctionSendsNothing) {
    FenixA320Core core;
    core.SetPwmProc(PwmProc{});
    EXPECT_FALSE(core.pwmProc(1, 100.0));
}

}  // namespace
}  // namespace fenixA320
