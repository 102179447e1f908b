// A host process for the unload tests: loads the module, starts it connected to the stand-in
// and then leaves it in one of the ways a host can. Exit code 0 means every check held.
//
//   helmbridge_unload_probe MODE DIRECTORY
//     never-started   load and unload without Start: unloading calls no simulator function
//     stop-unload     Stop, then unload: the unload (and, on Linux, the exit) calls nothing
//     unload-running  unload without Stop: the workers keep running, then the process exits
//     exit-running    the process exits with the module loaded and its workers running
// DIRECTORY becomes the current directory and gets a SimConnect.cfg, so the module connects
// without a simulator process.
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "plugin/helmbridge_a320.h"
#include "simulator/standin_control.h"
#include "tests/plugin/module_loader.h"

namespace {

using Clock = std::chrono::steady_clock;

// Exit codes, so the parent test can tell which check failed.
enum Failure {
    kUsage = 2,
    kLoad = 3,
    kExports = 4,
    kNoConnection = 5,
    kCallsDuringUnload = 6,
    kCallsAtExit = 7,
    kWorkersGone = 8,
    kStillConnected = 9,
};

uint64_t simulatorCalls() {
    StandinCounters counters{};
    standinCounters(&counters);
    return counters.calls;
}

// Calls the stand-in has seen when the module should have gone quiet; -1 while not checked.
int64_t expectedCallsAtExit = -1;

// Runs after the module's exit-time teardown on Linux (registered before the module was
// loaded); on Windows before it, since the module's teardown runs at process detach.
void checkCallsAtExit() {
    if (expectedCallsAtExit < 0) return;
    const auto calls = static_cast<int64_t>(simulatorCalls());
    if (calls != expectedCallsAtExit) {
        std::fprintf(stderr, "exit made %lld simulator calls\n",
                     static_cast<long long>(calls - expectedCallsAtExit));
        std::fflush(stderr);
        std::_Exit(kCallsAtExit);
    }
}

template <typename Condition>
bool waitFor(Condition condition, std::chrono::seconds timeout) {
    const auto until = Clock::now() + timeout;
    while (!condition()) {
        if (Clock::now() > until) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

int fail(Failure code, const char* what) {
    std::fprintf(stderr, "unload probe: %s\n", what);
    return code;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return fail(kUsage, "usage: helmbridge_unload_probe MODE DIRECTORY");
    const std::string mode = argv[1];
    std::filesystem::current_path(argv[2]);
    std::ofstream("SimConnect.cfg") << "[SimConnect]\n";
    std::atexit(&checkCallsAtExit);

    standinReset();
    standinStartFrameThread(30);

    // Never destroyed: whether and when the module is unloaded is the mode's choice alone.
    static auto* module = new helmbridge::testing::LoadedModule(
        helmbridge::testing::programDirectory() + HELMBRIDGE_MODULE_FILE);
    if (!module->loaded()) return fail(kLoad, "module not loaded");
    const auto start = module->symbol<helmbridge::StartFn>("Start");
    const auto stop = module->symbol<helmbridge::VoidFn>("Stop");
    const auto status = module->symbol<helmbridge::VoidFn>("GetConnectStatus");
    const auto update = module->symbol<helmbridge::VoidFn>("UpdateOutput");
    const auto setDigitOut = module->symbol<helmbridge::SetDigitOutProcFn>("SetDigitOutProc");
    const auto setServo = module->symbol<helmbridge::SetServoProcFn>("SetServoProc");
    if (!start || !stop || !status || !update || !setDigitOut || !setServo) {
        return fail(kExports, "exports missing");
    }

    if (mode == "never-started") {
        const uint64_t before = simulatorCalls();
        module->unload();
        if (simulatorCalls() != before) return fail(kCallsDuringUnload, "unload called SimConnect");
        expectedCallsAtExit = static_cast<int64_t>(before);
        return 0;
    }

    // Callbacks that live in this program: the module's threads call into it.
    setDigitOut([](unsigned int, bool) { return true; });
    setServo([](unsigned int, double) { return true; });
    start({});
    if (!waitFor([&] { return status() && standinDatumCount(nullptr, 3009) == 1; },
                 std::chrono::seconds(30))) {
        return fail(kNoConnection, "no connection to the stand-in");
    }
    update();

    if (mode == "stop-unload") {
        stop();
        if (status() || standinOpenConnectionCount() != 0) {
            return fail(kStillConnected, "still connected after Stop");
        }
        const uint64_t before = simulatorCalls();
        module->unload();
        if (simulatorCalls() != before) return fail(kCallsDuringUnload, "unload called SimConnect");
        expectedCallsAtExit = static_cast<int64_t>(before);
        return 0;
    }
    if (mode == "unload-running") {
        module->unload();
        // Pinned by Start: the code stays mapped and the workers keep polling the simulator.
        const uint64_t before = simulatorCalls();
        if (!waitFor([&] { return simulatorCalls() > before + 10; }, std::chrono::seconds(30))) {
            return fail(kWorkersGone, "workers stopped after unload");
        }
        return 0;
    }
    if (mode == "exit-running") return 0;
    return fail(kUsage, "unknown mode");
}
