// Tests of the system platform table: simulator name match, process probe, config file, output.
#include "platform/platform.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "tests/support/eventually.h"
#include "tests/support/module_loader.h"
#include "tests/support/process.h"

namespace fs = std::filesystem;
namespace platform = helmbridge::platform;
using helmbridge::testing::ScratchDirectory;

TEST(SimulatorProcessName, MatchesEitherExecutableInAnyLetterCaseAndNothingElse) {
    for (const char* name :
         {"flightsimulator.EXE", "FLIGHTSIMULATOR2024.EXE", "C:\\Games\\MSFS\\FlightSimulator.exe",
          "/opt/msfs/FlightSimulator2024.exe", "Z:/games\\flightSimulator.exe",
          "C:\\games/FlightSimulator.exe"}) {
        EXPECT_TRUE(platform::isSimulatorProcessName(name)) << name;
    }
    for (const char* name :
         {"", "FlightSimulator.ex", "MyFlightSimulator.exe", "FlightSimulator2020.exe",
          "FlightSimulator.exe/", "C:\\FlightSimulator.exe\\helper.exe"}) {
        EXPECT_FALSE(platform::isSimulatorProcessName(name)) << name;
    }
    EXPECT_TRUE(platform::isSimulatorProcessName(L"C:\\MSFS\\flightsimulator2024.EXE"));
    // A name is read up to the end of its view, never to a terminator behind it.
    EXPECT_TRUE(platform::isSimulatorProcessName(std::string_view("FlightSimulator.exe!", 19)));
    // A non-ASCII capital I must not pass for 'i' through a locale's case mapping.
    EXPECT_FALSE(platform::isSimulatorProcessName(L"Fl\u0130ghtSimulator.exe"));
}

TEST(ProcessProbe, FindsARunningProcessNamedLikeTheSimulator) {
    const ScratchDirectory scratch;
    const fs::path simulator = scratch.path() / "flightsimulator.EXE";
    fs::copy_file(helmbridge::testing::programDirectory() / HELMBRIDGE_IDLE_PROCESS_FILE,
                  simulator);
    fs::permissions(simulator, fs::perms::owner_all, fs::perm_options::add);

    const helmbridge::testing::ChildProcess child(simulator);
    ASSERT_TRUE(child.started());
    // Process start is asynchronous on some systems (Wine).
    EXPECT_TRUE(helmbridge::testing::eventually([] {
        return platform::systemPlatform().probeSimulatorProcess() == platform::ProbeResult::kFound;
    }));
}

#if !defined(_WIN32)
TEST(ProcessProbe, WalksOnlyNumericEntriesAndReadsArgvZero) {
    using namespace std::string_literals;
    const ScratchDirectory proc;
    const auto addProcess = [&](const std::string& entry, const std::string& cmdline) {
        fs::create_directories(proc.path() / entry);
        std::ofstream(proc.path() / entry / "cmdline", std::ios::binary) << cmdline;
    };
    addProcess("1", "/sbin/init\0splash"s);
    addProcess("self", "FlightSimulator.exe");      // not a process id
    fs::create_directories(proc.path() / "3");      // vanished: no cmdline
    addProcess("4", "wine\0FlightSimulator.exe"s);  // only argv[0] counts
    EXPECT_EQ(platform::probeProcessDirectory(proc.path().c_str()),
              platform::ProbeResult::kNotFound);

    addProcess("79", "Z:\\MSFS\\FLIGHTSIMULATOR2024.EXE\0-fastlaunch"s);
    EXPECT_EQ(platform::probeProcessDirectory(proc.path().c_str()), platform::ProbeResult::kFound);

    EXPECT_EQ(platform::probeProcessDirectory((proc.path() / "missing").c_str()),
              platform::ProbeResult::kSnapshotFailed);
}

TEST(DebugOutput, WritesTheTextToStandardErrorAndIgnoresNull) {
    ::testing::internal::CaptureStderr();
    platform::systemPlatform().debugOutput("[VariantDetector] variant=A320\n");
    platform::systemPlatform().debugOutput(nullptr);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "[VariantDetector] variant=A320\n");
}
#endif

// Not in a parent directory either: only where the client library looks.
TEST(ConfigFileProbe, SeesSimConnectCfgOnlyInTheCurrentDirectory) {
    const ScratchDirectory scratch;
    std::ofstream(scratch.path() / "SimConnect.cfg") << "[SimConnect]\nProtocol=IPv4\n";
    fs::create_directories(scratch.path() / "below");
    const fs::path previous = fs::current_path();
    for (const bool present : {true, false}) {
        fs::current_path(present ? scratch.path() : scratch.path() / "below");
        EXPECT_EQ(platform::systemPlatform().simConnectCfgPresent(), present);
    }
    fs::current_path(previous);
}
