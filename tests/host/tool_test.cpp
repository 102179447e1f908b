// The built helmbridge-host as a user runs it: signal lists, errors and exit codes, the bench
// printing what a piped script causes, the demo running to its summary, and the doctor.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "catalogue/signal_lists.h"
#include "host/signals.h"
#include "tests/support/module_loader.h"
#include "tests/support/process.h"

namespace helmbridge::host {
namespace {

namespace fs = std::filesystem;
using testing::lines;
using testing::programDirectory;
using ToolRun = testing::ProgramRun;

// Runs the tool built here, or the copy in `directory` with that as the current directory.
ToolRun runTool(const std::vector<std::string>& arguments, const std::string& input = {},
                const fs::path& directory = {}) {
    const fs::path tool =
        (directory.empty() ? programDirectory() : directory) / HELMBRIDGE_HOST_FILE;
    return testing::runProgram(tool, arguments, input, directory);
}

// The module's lists, loaded and listed by the tool, read back exactly; golden_test.cpp pins the
// lists themselves.
TEST(ToolSignals, CsvRoundTripsEveryListOfTheModule) {
    const ToolRun run = runTool({"signals", "--format", "csv"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    std::vector<std::vector<std::string>> records;
    ASSERT_TRUE(parseCsv(run.out, records));
    const std::pair<const char*, const fenixA320::SigList&> lists[] = {
        {"digital-in", fenixA320::digitInSigList()},
        {"encoder", fenixA320::encoderSigList()},
        {"analog", fenixA320::analogSigList()},
        {"digital-out", fenixA320::digitOutSigList()},
        {"display", fenixA320::displaySigList()},
        {"servo", fenixA320::servoSigList()},
        {"pwm", fenixA320::pwmSigList()},
    };
    std::vector<std::vector<std::string>> expected{{"list", "id", "variable", "label"}};
    for (const auto& [name, list] : lists) {
        for (const auto& [id, entry] : list) {
            expected.push_back({name, std::to_string(id), entry.first, entry.second});
        }
    }
    EXPECT_EQ(records, expected);
}

TEST(ToolCommandLine, HelpNamesEveryCommand) {
    const ToolRun help = runTool({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    for (const char* text : {"signals [--list LIST]", "demo [--seconds N]", "run ", "doctor "}) {
        EXPECT_NE(help.out.find(text), std::string::npos) << text;
    }
}

// A mistake is one line on standard error and exit code 2, with nothing printed but comments; a
// bad line ends a piped script before the status line after it. Each lookup's own wording is
// signals_test.cpp's.
TEST(ToolCommandLine, EachMistakeIsOneLineOnStandardErrorWithExitCodeTwo) {
    const std::string standin = (programDirectory() / HELMBRIDGE_STANDIN_FILE).string();
    const struct {
        std::vector<std::string> arguments;
        std::string script;
        std::string error;  // after "helmbridge-host: "
    } cases[] = {
        {{"signals", "--list", "lamps"}, "", "unknown list 'lamps' (--help for usage)"},
        {{"signals", "--format", "xml"}, "", "unknown format 'xml' (--help for usage)"},
        {{"signals", "--list"}, "", "--list needs a value (--help for usage)"},
        {{"frobnicate"}, "", "unknown command 'frobnicate' (--help for usage)"},
        {{}, "", "no command given (--help for usage)"},
        {{"--module", "no-such-module.bin", "signals"}, "", "module not found: no-such-module.bin"},
        {{"--module", standin, "signals"}, "", "missing export Start in " + standin},
        {{"run"}, "press 167x\n", "unknown digital input '167x'"},
        {{"run"},
         "turn E_FCU_SPEED lots\n",
         "turn takes a detent count from -1000 to +1000, not 'lots'"},
        {{"run"}, "axis 9999 0.5\n", "unknown analog input id 9999"},
        {{"run"}, "fly\n", "unknown command 'fly' (help lists the commands)"},
        {{"run"}, "press \"S_FCU_AP1\n", "unclosed quote in: press \"S_FCU_AP1"},
    };
    for (const auto& c : cases) {
        const ToolRun run = runTool(c.arguments, c.script + "status\n");
        EXPECT_EQ(run.exitCode, 2) << c.error;
        EXPECT_EQ(lines(run.err), std::vector<std::string>{"helmbridge-host: " + c.error});
        for (const std::string& line : lines(run.out)) EXPECT_EQ(line[0], '#') << line;
    }
}

// A healthy set-up on the stand-in passes every check; each failure a cockpit builder can meet
// is named by a FAIL line of its own, with exit code 1.
TEST(ToolDoctor, StandInPassesAndEachProvokedFailureHasItsOwnLine) {
    const ToolRun healthy = runTool({"doctor", "--standin"});
    EXPECT_EQ(healthy.exitCode, 0) << healthy.out;
    const std::vector<std::string> report = lines(healthy.out);
    EXPECT_EQ(report.size(), 8u) << healthy.out;
    for (const std::string& line : report) EXPECT_EQ(line.substr(0, 5), "ok   ") << line;
    EXPECT_EQ(report.at(6),
              "ok   aircraft: variant=A320 title=\"Fenix A320 (simulator stand-in)\"");

    const std::string library = HELMBRIDGE_STANDIN_FILE;  // the client library's file name
    const struct {
        const char* setup;
        const char* libraryFrom;  // the built file copied in as the client library, if any
        bool cfg;
        std::string failure;
    } cases[] = {
        {"no client library", nullptr, true, "FAIL " + library + " not loaded; tried: next"},
        {"a library without the ten functions", HELMBRIDGE_NINE_FUNCTIONS_FILE, true,
         "(lacks a SimConnect function)"},
        {"no simulator and no SimConnect.cfg", HELMBRIDGE_STANDIN_FILE, false,
         "FAIL simulator: no FlightSimulator.exe"},
        {"a simulator that never sends a frame", HELMBRIDGE_STANDIN_FILE, true,
         "FAIL aircraft: no Fenix A319, A320 or A321 reported within 6.0 s"},
    };
    for (const auto& c : cases) {
        const testing::ScratchDirectory scratch;
        const fs::path& dir = scratch.path();
        for (const char* file : {HELMBRIDGE_HOST_FILE, HELMBRIDGE_MODULE_FILE}) {
            fs::copy_file(programDirectory() / file, dir / file);
        }
        if (c.libraryFrom) fs::copy_file(programDirectory() / c.libraryFrom, dir / library);
        if (c.cfg) std::ofstream(dir / "SimConnect.cfg") << "[SimConnect]\n";
        // Six seconds: on a loaded machine connecting alone can take two.
        const ToolRun run = runTool({"doctor", "--seconds", "6"}, {}, dir);
        EXPECT_EQ(run.exitCode, 1) << c.setup << "\n" << run.out;
        std::vector<std::string> failed = lines(run.out);
        std::erase_if(failed, [](const std::string& line) { return !line.starts_with("FAIL "); });
        ASSERT_EQ(failed.size(), 1u) << c.setup << "\n" << run.out;
        EXPECT_NE(failed[0].find(c.failure), std::string::npos) << c.setup << "\n" << run.out;
    }
}

TEST(ToolBench, PrintsTheChangesAPipedScriptCausesAndStatusListsThem) {
    // Connected comes before the module has declared its variables to the simulator; the first
    // lamp the aircraft lights shows that the module's data flows.
    const ToolRun run = runTool({"run", "--standin"},
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
    // Piped, every line on standard error also ends the run with exit code 2.
    EXPECT_EQ(run.exitCode, 0) << run.out << run.err;
    for (const char* line :
         {"connected", "lamp 255 I_OH_ELEC_BAT1_L on", "lamp 255 I_OH_ELEC_BAT1_L off",
          "display 54 N_FCU_SPEED \"250\"", "display 54 N_FCU_SPEED \"255\"",
          "lamp 167 I_FCU_AP1 on", "status connected", "  lamp 167 I_FCU_AP1 on",
          "  display 54 N_FCU_SPEED \"255\"",
          // Powered in the same output cycle that showed the speed.
          "  pwm 15 FENIX RMP ACP BK ENABLE 2500"}) {
        EXPECT_GT(std::ranges::count(out, line), 0) << line << "\nin:\n" << run.out;
    }
    EXPECT_EQ(std::ranges::count(out, "lamp 168 I_FCU_AP2 on"), 0) << run.out;
}

// On Windows the test command runs the demo under Wine by itself.
#if !defined(_WIN32)
TEST(ToolDemo, RunsToItsSummaryWithExitCodeZero) {
    const ToolRun run = runTool({"demo", "--seconds", "4"});
    EXPECT_EQ(run.exitCode, 0) << run.out << run.err;
    // Standard output is a file: plain lines.
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
    // Latest-value writes may merge a few events, not most.
    EXPECT_TRUE(passed == checks && checks > 30 && events > 50 && writes >= events / 2 &&
                calls > 10000)
        << out.back();
}
#endif

}  // namespace
}  // namespace helmbridge::host
