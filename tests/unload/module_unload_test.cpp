// Unloading the module and ending the process, in child processes that load the real module and
// connect it to the stand-in: every way a host can leave must end cleanly and in time.
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "tests/support/module_loader.h"
#include "tests/support/process.h"

namespace {

using namespace helmbridge::testing;

// Runs the probe with a mode in a scratch directory; what it printed shows when it failed.
void expectProbePasses(const std::string& mode,
                       std::chrono::seconds timeout = std::chrono::seconds(120)) {
    const ScratchDirectory scratch;
    const ProgramRun run = runProgram(programDirectory() / HELMBRIDGE_UNLOAD_PROBE_FILE, {mode}, {},
                                      scratch.path(), timeout);
    EXPECT_EQ(run.exitCode, 0) << mode << "\n" << run.out << run.err;
}

// Without Start; Stop then unload and load again; unload without Stop; exit with the workers
// running. What each mode checks is listed in unload_probe.cpp.
TEST(ModuleUnload, EveryWayAHostLeavesTheModuleEndsCleanly) {
    for (const char* mode : {"never-started", "stop-unload", "unload-running", "exit-running"}) {
        expectProbePasses(mode);
    }
}

// Each Stop waits up to a second for the connection worker's pass.
TEST(ModuleUnload, AHundredLoadStartStopUnloadCyclesLeaveNothingBehind) {
    expectProbePasses("cycles", std::chrono::seconds(900));
}

}  // namespace
