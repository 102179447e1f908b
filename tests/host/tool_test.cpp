// The built helmbridge-host as a user runs it: signal lists, errors and exit codes.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "host/signals.h"
#include "tests/host/tool_runner.h"

namespace helmbridge::host {
namespace {

using testing::contains;
using testing::lines;
using testing::readFile;
using testing::runTool;
using testing::ToolRun;
namespace fs = std::filesystem;

// The golden file marks each leading or trailing blank as '·'.
std::string unmarked(const std::string& field) {
    const std::string mark = "\xC2\xB7";
    std::string lead;
    std::size_t begin = 0;
    while (field.compare(begin, mark.size(), mark) == 0) {
        lead += ' ';
        begin += mark.size();
    }
    std::size_t end = field.size();
    std::string trail;
    while (end >= begin + mark.size() && field.compare(end - mark.size(), mark.size(), mark) == 0) {
        trail += ' ';
        end -= mark.size();
    }
    return lead + field.substr(begin, end - begin) + trail;
}

TEST(ToolSignals, CsvRoundTripsTheGoldenFile) {
    const ToolRun run = runTool("signals --format csv");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out.rfind("list,id,variable,label\r\n", 0), 0u);
    std::vector<std::vector<std::string>> records;
    ASSERT_TRUE(parseCsv(run.out, records));
    ASSERT_FALSE(records.empty());
    records.erase(records.begin());

    const std::map<std::string, std::string> listNames = {
        {"digitIn", "digital-in"},
        {"encoder", "encoder"},
        {"analog", "analog"},
        {"digitOut", "digital-out"},
        {"display", "display"},
        {"servo", "servo"},
        {"pwm", "pwm"},
    };
    std::vector<std::vector<std::string>> golden;
    for (const std::string& line :
         lines(readFile(fs::path(HELMBRIDGE_SOURCE_DIR) / "tests/data/signals.tsv"))) {
        if (line.empty() || line[0] == '#') continue;
        std::vector<std::string> fields;
        std::size_t start = 0;
        for (std::size_t tab; (tab = line.find('\t', start)) != std::string::npos;
             start = tab + 1) {
            fields.push_back(line.substr(start, tab - start));
        }
        fields.push_back(line.substr(start));
        ASSERT_EQ(fields.size(), 4u) << line;
        ASSERT_EQ(listNames.count(fields[0]), 1u) << line;
        golden.push_back(
            {listNames.at(fields[0]), fields[1], unmarked(fields[2]), unmarked(fields[3])});
    }
    ASSERT_GT(golden.size(), 1000u);
    ASSERT_EQ(records.size(), golden.size());
    for (std::size_t i = 0; i < golden.size(); ++i) {
        EXPECT_EQ(records[i], golden[i]) << "record " << i + 1;
    }
}

TEST(ToolSignals, RejectsUnknownListsFormatsAndCommandsWithExitCodeTwo) {
    for (const char* arguments :
         {"signals --list lamps", "signals --format xml", "signals --list", "frobnicate", ""}) {
        const ToolRun run = runTool(arguments);
        EXPECT_EQ(run.exitCode, 2) << arguments;
        EXPECT_EQ(lines(run.err).size(), 1u) << arguments << ": " << run.err;
        EXPECT_TRUE(run.out.empty()) << arguments;
    }
}

TEST(ToolModule, MissingModuleOrExportIsOneLineWithExitCodeTwo) {
    const ToolRun missing = runTool("--module no-such-module.bin signals");
    EXPECT_EQ(missing.exitCode, 2);
    EXPECT_EQ(lines(missing.err),
              std::vector<std::string>{"helmbridge-host: module not found: no-such-module.bin"});

    // The stand-in is a loadable library without the module's exports.
    const std::string standin = helmbridge::testing::programDirectory() + HELMBRIDGE_STANDIN_FILE;
    const ToolRun wrong = runTool("--module \"" + standin + "\" signals --list servo");
    EXPECT_EQ(wrong.exitCode, 2);
    ASSERT_EQ(lines(wrong.err).size(), 1u) << wrong.err;
    EXPECT_NE(wrong.err.find("missing export Start"), std::string::npos) << wrong.err;
    EXPECT_TRUE(wrong.out.empty());
}

TEST(ToolHelp, DescribesTheThreeCommands) {
    const ToolRun run = runTool("--help");
    EXPECT_EQ(run.exitCode, 0);
    for (const char* text : {"signals [--list LIST]", "demo [--seconds N] [--plain]", "run "}) {
        EXPECT_NE(run.out.find(text), std::string::npos) << text;
    }
}

TEST(ToolBench, SharedNamesAndBadLinesEndAScriptWithExitCodeTwo) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"press S_DCDU1_LSK1L\n",
         "helmbridge-host: 'S_DCDU1_LSK1L' names 3 digital inputs (ids 387, 963, 964): give "
         "the id"},
        {"turn E_FCU_SPEED lots\n",
         "helmbridge-host: turn takes a detent count from -1000 to +1000, not 'lots'"},
        {"axis 9999 0.5\n", "helmbridge-host: unknown analog input id 9999"},
        {"fly\n", "helmbridge-host: unknown command 'fly' (help lists the commands)"},
        {"press \"S_FCU_AP1\n", "helmbridge-host: unclosed quote in: press \"S_FCU_AP1"},
    };
    for (const auto& [script, error] : cases) {
        const ToolRun run = runTool("run", script + "status\n");
        EXPECT_EQ(run.exitCode, 2) << script;
        EXPECT_EQ(lines(run.err), std::vector<std::string>{error}) << script;
        EXPECT_FALSE(contains(lines(run.out), "status not connected")) << script;
    }
}

}  // namespace
}  // namespace helmbridge::host
