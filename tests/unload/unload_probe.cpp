// A host process for the unload tests: loads the module, starts it connected to the stand-in
// and then leaves it in one of the ways a host can. Exit code 0 means every check held; a failed
// check prints one line on standard error.
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
#include <map>
#include <string>

#include "catalogue/encoders.h"
#include "catalogue/position_switches.h"
#include "simulator/standin_control.h"
#include "tests/support/eventually.h"
#include "tests/support/module_loader.h"
#include "tests/support/process.h"

namespace {

using helmbridge::standin::lvar;
using namespace helmbridge::testing;

// A selector's switch variable (EFIS Capt ND mode) and its contact for NAV (position 2), and an
// encoder's variable (FCU speed).
constexpr const char* kNdMode = "S_FCU_EFIS1_ND_MODE";
constexpr int32_t kNdModeNav = fenixA320::firstPositionOf(kNdMode) + 2;
constexpr const char* kSpeed = "E_FCU_SPEED";

// A failed check ends the process at once with its line, whatever the module is doing.
void require(bool holds, const std::string& what) {
    if (holds) return;
    std::fprintf(stderr, "unload probe: %s\n", what.c_str());
    std::_Exit(1);
}

uint64_t simulatorCalls() { return helmbridge::standin::counters().calls; }

// Calls the stand-in has seen when the module should have gone quiet; -1 while not checked.
// Checked after the module's exit-time teardown on Linux (registered before the module was
// loaded); on Windows before it, since the module's teardown runs at process detach.
int64_t expectedCallsAtExit = -1;
void checkCallsAtExit() {
    const auto made = static_cast<int64_t>(simulatorCalls()) - expectedCallsAtExit;
    require(expectedCallsAtExit < 0 || made == 0, "exit made " + std::to_string(made) + " calls");
}

// Never destroyed: whether and when the module is unloaded is the mode's choice alone.
LoadedModule& module = *new LoadedModule;

// Loads the module unless it is loaded, and hands it callbacks that live in this program: the
// module's threads call into it.
void load() {
    require(module.loaded() || module.load(), module.error());
    module->setDigitOutProc([](unsigned int, bool) { return true; });
    module->setServoProc([](unsigned int, double) { return true; });
}

// Starts the module and waits until it has declared its variables to the stand-in.
void startConnected() {
    module->start({});
    require(eventually(
                [] { return module->getConnectStatus() && standinDatumCount(nullptr, 3009) == 1; }),
            "no connection to the stand-in");
    module->updateOutput();
}

// A session as after a fresh load: an encoder count that starts from zero and a selector that
// reports its first position.
void freshSession(int run) {
    startConnected();
    standinSetLVar(kNdMode, 0.0);
    module->setEncoder(fenixA320::encoderIdOf(kSpeed), 1);
    module->setDigitIn(kNdModeNav, true);
    require(eventually([] { return lvar(kSpeed) == 1 && lvar(kNdMode) == 2; }),
            "run " + std::to_string(run) + ": no fresh encoder count and selector position");
}

// Unloads after Stop: nothing may call the simulator, and the module must be gone.
void unloadStopped() {
    const uint64_t before = simulatorCalls();
    module.unload();
    require(simulatorCalls() == before, "unload called SimConnect");
    require(!moduleMapped(), "module still mapped after Stop and unload");
    expectedCallsAtExit = static_cast<int64_t>(before);
}

void stopUnloadReload() {
    // A cockpit clock that stands still holds the module's replays back: a selector's position
    // can then only be written by its contact.
    standinSetClockStalled(1);
    freshSession(1);
    module->stop();
    module->stop();  // a second Stop gives back nothing more
    // Stop gives back only the module's own reference: the host's keeps it loaded.
    require(moduleMapped(), "module unmapped by Stop");
    unloadStopped();

    load();
    module->start({});  // the second Start stops and starts again, with one reference
    freshSession(2);
    module->stop();
    unloadStopped();
}

void unloadRunning() {
    startConnected();
    module.unload();
    // The module's own reference keeps the code mapped and the workers polling.
    require(moduleMapped(), "module unmapped under its workers");
    const uint64_t before = simulatorCalls();
    require(eventually([&] { return simulatorCalls() > before + 10; }),
            "workers stopped after unload");
}

void cycles() {
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
    ProcessUsage warm;
    for (int cycle = 0; cycle < kCycles; ++cycle) {
        if (cycle == kWarmUp) warm = processUsage();
        load();
        startConnected();
        module->stop();
        unloadStopped();
        standinClearCalls();  // the stand-in's record would grow
    }
    const ProcessUsage end = processUsage();
    std::printf("threads, handles, kB: %ld, %ld, %ld after warm-up; %ld, %ld, %ld at the end\n",
                warm.threads, warm.handles, warm.memoryKb, end.threads, end.handles, end.memoryKb);
    // Generous: a cycle that leaked anything would leave 90 of it.
    require(end.threads <= warm.threads + 3 &&
                end.handles <= warm.handles + 20 + kRuntimeHandlesPerLoad * (kCycles - kWarmUp) &&
                end.memoryKb <= warm.memoryKb + kMemoryKb,
            "something was left behind");
}

}  // namespace

int main(int argc, char** argv) {
    const std::map<std::string, void (*)()> modes = {{"never-started", unloadStopped},
                                                     {"stop-unload", stopUnloadReload},
                                                     {"unload-running", unloadRunning},
                                                     {"exit-running", startConnected},
                                                     {"cycles", cycles}};
    const auto mode = modes.find(argc == 2 ? argv[1] : "");
    require(mode != modes.end(), "usage: helmbridge_unload_probe MODE");
    std::ofstream("SimConnect.cfg") << "[SimConnect]\n";
    std::atexit(&checkCallsAtExit);
    standinStartFrameThread(30);
    load();
    mode->second();
    return 0;
}
