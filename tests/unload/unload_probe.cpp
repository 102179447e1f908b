// A host process for the unload tests: loads the module, starts it connected to the stand-in
// and then leaves it in one of the ways a host can. Exit code 0 means every check held; a failed
// check prints one line on standard output.
//
//   helmbridge_unload_probe MODE
//     never-started   load and unload without Start: unloading calls no simulator function
//     stop-unload     Stop, then unload: the module is gone, the unload (and, on Linux, the exit)
//                     calls nothing, and loading it again gives a fresh module
//     unload-running  unload without Stop: the module stays, its workers keep running, then the
//                     process exits
//     exit-running    the process exits with the module loaded and its workers running
//     cycles          a hundred loads, each connected, stopped and unloaded: no thread, handle
//                     or memory is left behind
// The current directory gets a SimConnect.cfg, so the module connects without a simulator
// process.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>

#include "catalogue/encoders.h"
#include "catalogue/position_switches.h"
#include "host/system.h"
#include "simulator/standin_control.h"
#include "tests/support/eventually.h"
#include "tests/support/module_loader.h"
#include "tests/support/process.h"

namespace {

using helmbridge::testing::eventually;
using helmbridge::testing::LoadedModule;
using helmbridge::testing::moduleMapped;
using helmbridge::testing::ProcessUsage;
using helmbridge::testing::processUsage;

// A selector contact and the switch variable it sets (EFIS Capt ND mode NAV: position 2), and
// an encoder (FCU speed) with its variable.
constexpr const char* kNdModeVariable = "S_FCU_EFIS1_ND_MODE";
constexpr int32_t kNdModeNav = fenixA320::firstPositionOf(kNdModeVariable) + 2;
constexpr const char* kSpeedEncoderVariable = "E_FCU_SPEED";
constexpr int32_t kSpeedEncoder = fenixA320::encoderIdOf(kSpeedEncoderVariable);

// Every failed check exits with 1; its line tells which one it was.
int fail(const std::string& what) {
    std::printf("unload probe: %s\n", what.c_str());
    std::fflush(stdout);
    return 1;
}

uint64_t simulatorCalls() { return helmbridge::standin::counters().calls; }

// Calls the stand-in has seen when the module should have gone quiet; -1 while not checked.
int64_t expectedCallsAtExit = -1;

// Runs after the module's exit-time teardown on Linux (registered before the module was
// loaded); on Windows before it, since the module's teardown runs at process detach.
void checkCallsAtExit() {
    if (expectedCallsAtExit < 0) return;
    const auto calls = static_cast<int64_t>(simulatorCalls());
    if (calls != expectedCallsAtExit) {
        fail("exit made " + std::to_string(calls - expectedCallsAtExit) + " simulator calls");
        std::_Exit(1);
    }
}

// The module's variant lines ("[VariantDetector] ...") on its debugger output while captured.
std::optional<helmbridge::host::DebugCapture> debugOutput;

int variantLines() {
    const std::string text = debugOutput->text();
    int lines = 0;
    for (auto at = text.find("[VariantDetector]"); at != std::string::npos;
         at = text.find("[VariantDetector]", at + 1)) {
        ++lines;
    }
    return lines;
}

std::string describe(const ProcessUsage& u) {
    return std::to_string(u.threads) + " threads, " + std::to_string(u.handles) + " handles, " +
           std::to_string(u.memoryKb) + " kB";
}

// Loads the module unless it is loaded, and hands it callbacks that live in this program: the
// module's threads call into it.
int load(LoadedModule& module) {
    if (!module.loaded() && !module.load()) return fail(module.error());
    module->setDigitOutProc([](unsigned int, bool) { return true; });
    module->setServoProc([](unsigned int, double) { return true; });
    return 0;
}

// Starts the module and waits until it has declared its variables to the stand-in.
int startConnected(LoadedModule& module) {
    module->start({});
    if (!eventually(
            [&] { return module->getConnectStatus() && standinDatumCount(nullptr, 3009) == 1; })) {
        return fail("no connection to the stand-in");
    }
    module->updateOutput();
    return 0;
}

// One session as after a fresh load: the variant line for the known aircraft, an encoder
// count that starts from zero and a selector that reports its first position.
int freshSession(LoadedModule& module, int run) {
    if (int failed = startConnected(module)) return failed;
    if (!eventually([&] { return variantLines() == run; })) {
        return fail(std::to_string(variantLines()) + " variant lines in run " +
                    std::to_string(run));
    }
    standinSetLVar(kNdModeVariable, 0.0);
    module->setEncoder(kSpeedEncoder, 1);
    module->setDigitIn(kNdModeNav, true);
    if (!eventually([] {
            return helmbridge::standin::lvar(kSpeedEncoderVariable) == 1.0 &&
                   helmbridge::standin::lvar(kNdModeVariable) == 2.0;
        })) {
        return fail("run " + std::to_string(run) + ": encoder count " +
                    std::to_string(helmbridge::standin::lvar(kSpeedEncoderVariable)) +
                    ", ND mode " + std::to_string(helmbridge::standin::lvar(kNdModeVariable)));
    }
    return 0;
}

// Unloads after Stop: nothing may call the simulator, and the module must be gone.
int unloadStopped(LoadedModule& module) {
    const uint64_t before = simulatorCalls();
    module.unload();
    if (simulatorCalls() != before) return fail("unload called SimConnect");
    if (moduleMapped()) return fail("module still mapped after Stop and unload");
    expectedCallsAtExit = static_cast<int64_t>(before);
    return 0;
}

int stopUnloadReload(LoadedModule& module) {
    debugOutput.emplace();
    standinSetTitle("FenixA320 IAE");
    // A cockpit clock that stands still holds the module's replays back: a selector's position
    // can then only be written by its contact.
    standinSetClockStalled(1);
    if (int failed = freshSession(module, 1)) return failed;
    module->stop();
    module->stop();  // a second Stop gives back nothing more
    if (module->getConnectStatus() || standinOpenConnectionCount() != 0) {
        return fail("still connected after Stop");
    }
    // Stop gives back only the module's own reference: the host's keeps it loaded.
    if (!moduleMapped()) return fail("module unmapped by Stop");
    if (int failed = unloadStopped(module)) return failed;

    if (int failed = load(module)) return failed;
    expectedCallsAtExit = -1;
    module->start({});  // the second Start stops and starts again, with one reference
    if (int failed = freshSession(module, 2)) return failed;
    debugOutput.reset();  // what the process reports at its exit goes to standard error again
    module->stop();
    return unloadStopped(module);
}

int cycles(LoadedModule& module) {
    constexpr int kCycles = 100;
    constexpr int kWarmUp = 10;
#if defined(__MINGW32__)
    // Known deviation: the thread library linked into the module keeps a record with two
    // handles for the host thread that used it, and no unload frees it.
    constexpr long kRuntimeHandlesPerLoad = 2;
#else
    constexpr long kRuntimeHandlesPerLoad = 0;
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    // The sanitizer's own memory grows with every load; its leak check judges the heap instead.
    constexpr long kMemoryKb = 1024 * 1024 * 1024;
#else
    constexpr long kMemoryKb = 4 * 1024;  // 45 kB a load; about 0.5 MB grow under Wine
#endif
    // Generous: a cycle that leaked anything would leave 90 of it.
    constexpr ProcessUsage kAllowed{3, 20 + kRuntimeHandlesPerLoad * (kCycles - kWarmUp),
                                    kMemoryKb};
    ProcessUsage warm;
    for (int cycle = 0; cycle < kCycles; ++cycle) {
        if (cycle == kWarmUp) warm = processUsage();
        if (cycle > 0) {
            if (int failed = load(module)) return failed;
        }
        if (int failed = startConnected(module)) return failed;
        module->stop();
        if (int failed = unloadStopped(module)) return failed;
        standinClearCalls();  // the stand-in's record would grow
    }
    const ProcessUsage end = processUsage();
    if (end.threads > warm.threads + kAllowed.threads ||
        end.handles > warm.handles + kAllowed.handles ||
        end.memoryKb > warm.memoryKb + kAllowed.memoryKb) {
        return fail("after warm-up " + describe(warm) + ", at the end " + describe(end));
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return fail("usage: helmbridge_unload_probe MODE");
    const std::string mode = argv[1];
    std::ofstream("SimConnect.cfg") << "[SimConnect]\n";
    std::atexit(&checkCallsAtExit);

    standinReset();
    standinStartFrameThread(30);

    // Never destroyed: whether and when the module is unloaded is the mode's choice alone.
    static auto* module = new LoadedModule;
    if (int failed = load(*module)) return failed;

    if (mode == "never-started") return unloadStopped(*module);
    if (mode == "stop-unload") return stopUnloadReload(*module);
    if (mode == "cycles") return cycles(*module);

    if (int failed = startConnected(*module)) return failed;
    if (mode == "unload-running") {
        module->unload();
        // The module's own reference keeps the code mapped and the workers polling.
        if (!moduleMapped()) return fail("module unmapped under its workers");
        const uint64_t before = simulatorCalls();
        if (!eventually([&] { return simulatorCalls() > before + 10; })) {
            return fail("workers stopped after unload");
        }
        return 0;
    }
    if (mode == "exit-running") return 0;
    return fail("unknown mode");
}
