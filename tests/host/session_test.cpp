// The built helmbridge-host with the module on the simulator stand-in: the bench printing what a
// piped script causes, and the demo running to its summary.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "tests/host/tool_runner.h"

namespace helmbridge::host {
namespace {

using testing::contains;
using testing::lines;
using testing::runTool;
using testing::ToolRun;

TEST(ToolBench, PrintsTheChangesAPipedScriptCausesAndStatusListsThem) {
    // Connected comes before the module has declared its variables to the simulator; the first
    // lamp the aircraft lights shows that the module's data flows.
    const ToolRun run = runTool("run --standin",
                                "# a cold cockpit comes alive\n"
                                "wait connected\n"
                                "wait lamp I_OH_ELEC_BAT1_L on\n"
                                "press S_OH_ELEC_BAT1\n"
                                "wait 300\n"
                                "release S_OH_ELEC_BAT1\n"
                                "wait lamp I_OH_ELEC_BAT1_L off\n"
                                "wait display N_FCU_SPEED \"250\"\n"
                                "turn E_FCU_SPEED +5\n"
                                "wait display N_FCU_SPEED \"255\"\n"
                                "press S_FCU_AP1\n"
                                "wait 300\n"
                                "release S_FCU_AP1\n"
                                "wait lamp 167 on\n"
                                "status\n"
                                "quit\n"
                                "press S_FCU_AP2\n");  // after quit: never read
    const std::vector<std::string> out = lines(run.out);
    EXPECT_EQ(run.exitCode, 0) << run.out << run.err;
    EXPECT_TRUE(run.err.empty()) << run.err;
    for (const char* line :
         {"connected", "lamp 255 I_OH_ELEC_BAT1_L on", "lamp 255 I_OH_ELEC_BAT1_L off",
          "display 54 N_FCU_SPEED \"250\"", "display 54 N_FCU_SPEED \"255\"",
          "lamp 167 I_FCU_AP1 on", "status connected", "  lamp 167 I_FCU_AP1 on",
          "  display 54 N_FCU_SPEED \"255\"",
          // Powered in the same output cycle that showed the speed.
          "  pwm 15 FENIX RMP ACP BK ENABLE 2500"}) {
        EXPECT_TRUE(contains(out, line)) << line << "\nin:\n" << run.out;
    }
    EXPECT_FALSE(contains(out, "lamp 168 I_FCU_AP2 on")) << run.out;
}

// On Windows the test command runs the demo under Wine by itself.
#if !defined(_WIN32)
TEST(ToolDemo, RunsToItsSummaryWithExitCodeZero) {
    const ToolRun run = runTool("demo --seconds 4");  // standard output is a file: plain lines
    EXPECT_EQ(run.exitCode, 0) << run.out << run.err;
    EXPECT_EQ(run.out.find('\x1b'), std::string::npos);
    const std::vector<std::string> out = lines(run.out);
    ASSERT_FALSE(out.empty());
    unsigned passed = 0, checks = 0;
    unsigned long long events = 0, writes = 0, calls = 0;
    ASSERT_EQ(std::sscanf(out.back().c_str(),
                          "demo: %u of %u checks passed; %llu events sent, %llu writes received "
                          "by the simulator, %llu output calls",
                          &passed, &checks, &events, &writes, &calls),
              5)
        << out.back();
    EXPECT_EQ(passed, checks);
    EXPECT_GT(checks, 30u);
    EXPECT_GT(events, 50u);
    EXPECT_GE(writes, events / 2);  // latest-value writes may merge a few events, not most
    EXPECT_GT(calls, 10000u);
}
#endif

}  // namespace
}  // namespace helmbridge::host
