// Tests of the system platform table: simulator name match, process probe, config file, output.
#include "platform/platform.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "tests/plugin/module_loader.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;
#endif

namespace fs = std::filesystem;
namespace platform = helmbridge::platform;

namespace {

// A directory of its own under the system's temporary directory, removed afterwards.
class ScratchDirectory {
  public:
    explicit ScratchDirectory(const char* tag) {
#if defined(_WIN32)
        const auto pid = static_cast<unsigned long>(GetCurrentProcessId());
#else
        const auto pid = static_cast<unsigned long>(getpid());
#endif
        path_ = fs::temp_directory_path() /
                ("helmbridge_" + std::string(tag) + "_" + std::to_string(pid));
        fs::remove_all(path_);
        fs::create_directories(path_);
    }
    ~ScratchDirectory() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    const fs::path& path() const { return path_; }

  private:
    fs::path path_;
};

// Runs an executable until destroyed.
class ChildProcess {
  public:
    explicit ChildProcess(const fs::path& executable) {
#if defined(_WIN32)
        std::wstring commandLine = L"\"" + executable.wstring() + L"\"";
        STARTUPINFOW startup{};
        startup.cb = sizeof(startup);
        started_ = CreateProcessW(executable.c_str(), commandLine.data(), nullptr, nullptr, FALSE,
                                  0, nullptr, nullptr, &startup, &info_) != 0;
#else
        const std::string file = executable.string();
        char* argv[] = {const_cast<char*>(file.c_str()), nullptr};
        started_ = posix_spawn(&pid_, file.c_str(), nullptr, nullptr, argv, environ) == 0;
#endif
    }
    ~ChildProcess() {
        if (!started_) return;
#if defined(_WIN32)
        TerminateProcess(info_.hProcess, 0);
        WaitForSingleObject(info_.hProcess, 30000);
        CloseHandle(info_.hThread);
        CloseHandle(info_.hProcess);
#else
        kill(pid_, SIGKILL);
        int status = 0;
        waitpid(pid_, &status, 0);
#endif
    }
    bool started() const { return started_; }

  private:
    bool started_ = false;
#if defined(_WIN32)
    PROCESS_INFORMATION info_{};
#else
    pid_t pid_ = 0;
#endif
};

}  // namespace

TEST(SimulatorProcessName, MatchesEitherExecutableInAnyLetterCaseAndNothingElse) {
    for (const char* name :
         {"FlightSimulator.exe", "flightsimulator.EXE", "FLIGHTSIMULATOR2024.EXE",
          "FlightSimulator2024.exe", "C:\\Games\\MSFS\\FlightSimulator.exe",
          "/opt/msfs/FlightSimulator2024.exe", "Z:/games\\flightSimulator.exe"}) {
        EXPECT_TRUE(platform::isSimulatorProcessName(name)) << name;
    }
    for (const char* name : {"", "FlightSimulator", "FlightSimulator.ex", "FlightSimulator.exe.bak",
                             "MyFlightSimulator.exe", "FlightSimulator2020.exe",
                             "FlightSimulator.exe ", "FlightSimulator.exe/",
                             "C:\\FlightSimulator.exe\\helper.exe", "Fl\xC4\xB0ghtSimulator.exe"}) {
        EXPECT_FALSE(platform::isSimulatorProcessName(name)) << name;
    }
    EXPECT_TRUE(platform::isSimulatorProcessName(L"C:\\MSFS\\flightsimulator2024.EXE"));
    // A non-ASCII capital I must not pass for 'i' through a locale's case mapping.
    EXPECT_FALSE(platform::isSimulatorProcessName(L"Fl\u0130ghtSimulator.exe"));
}

TEST(ProcessProbe, FindsARunningProcessNamedLikeTheSimulator) {
    ScratchDirectory scratch("probe");
    const fs::path simulator = scratch.path() / "flightsimulator.EXE";
    fs::copy_file(fs::path(helmbridge::testing::programDirectory()) / HELMBRIDGE_IDLE_PROCESS_FILE,
                  simulator);
    fs::permissions(simulator, fs::perms::owner_all, fs::perm_options::add);

    ChildProcess child(simulator);
    ASSERT_TRUE(child.started());
    // Process start is asynchronous on some systems (Wine): wait for it, generously.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    platform::ProbeResult result = platform::systemPlatform().probeSimulatorProcess();
    while (result != platform::ProbeResult::kFound && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        result = platform::systemPlatform().probeSimulatorProcess();
    }
    EXPECT_EQ(result, platform::ProbeResult::kFound);
}

#if !defined(_WIN32)
TEST(ProcessProbe, WalksOnlyNumericEntriesAndReadsArgvZero) {
    using namespace std::string_literals;
    ScratchDirectory proc("fakeproc");
    const auto addProcess = [&](const std::string& entry, const std::string& cmdline) {
        fs::create_directories(proc.path() / entry);
        std::ofstream(proc.path() / entry / "cmdline", std::ios::binary) << cmdline;
    };
    addProcess("1", "/sbin/init\0splash"s);
    addProcess("2", "");                            // kernel thread: empty command line
    addProcess("self", "FlightSimulator.exe");      // not a process id
    fs::create_directories(proc.path() / "3");      // vanished: no cmdline
    addProcess("4", "wine\0FlightSimulator.exe"s);  // only argv[0] counts
    EXPECT_EQ(platform::probeProcessDirectory(proc.path().c_str()),
              platform::ProbeResult::kNotFound);

    addProcess("77", "Z:\\MSFS\\FLIGHTSIMULATOR2024.EXE\0-fastlaunch"s);
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
    ScratchDirectory scratch("cfg");
    std::ofstream(scratch.path() / "SimConnect.cfg") << "[SimConnect]\nProtocol=IPv4\n";
    fs::create_directories(scratch.path() / "below");
    const fs::path previous = fs::current_path();
    for (const bool present : {true, false}) {
        fs::current_path(present ? scratch.path() : scratch.path() / "below");
        EXPECT_EQ(platform::systemPlatform().simConnectCfgPresent(), present);
    }
    fs::current_path(previous);
}
