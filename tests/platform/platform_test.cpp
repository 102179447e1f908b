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
#include <fcntl.h>
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

// Makes a directory the current one for the lifetime of the object.
class CurrentDirectory {
  public:
    explicit CurrentDirectory(const fs::path& directory) : previous_(fs::current_path()) {
        fs::current_path(directory);
    }
    ~CurrentDirectory() { fs::current_path(previous_); }

  private:
    fs::path previous_;
};

}  // namespace

TEST(SimulatorProcessName, MatchesEitherExecutableInAnyLetterCase) {
    for (const char* name :
         {"FlightSimulator.exe", "flightsimulator.EXE", "FLIGHTSIMULATOR2024.EXE",
          "FlightSimulator2024.exe", "C:\\Games\\MSFS\\FlightSimulator.exe",
          "/opt/msfs/FlightSimulator2024.exe", "Z:/games\\flightSimulator.exe"}) {
        EXPECT_TRUE(platform::isSimulatorProcessName(name)) << name;
    }
    EXPECT_TRUE(platform::isSimulatorProcessName(L"flightsimulator.EXE"));
    EXPECT_TRUE(platform::isSimulatorProcessName(L"C:\\MSFS\\FlightSimulator2024.exe"));
}

TEST(SimulatorProcessName, RejectsOtherNames) {
    for (const char* name : {"", "FlightSimulator", "FlightSimulator.ex", "FlightSimulator.exe.bak",
                             "MyFlightSimulator.exe", "FlightSimulator2020.exe",
                             "FlightSimulator.exe ", "FlightSimulator.exe/",
                             "C:\\FlightSimulator.exe\\helper.exe", "Fl\xC4\xB0ghtSimulator.exe"}) {
        EXPECT_FALSE(platform::isSimulatorProcessName(name)) << name;
    }
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
    platform::ProbeResult result = platform::ProbeResult::kNotFound;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (result != platform::ProbeResult::kFound && std::chrono::steady_clock::now() < deadline) {
        result = platform::systemPlatform().probeSimulatorProcess();
        if (result != platform::ProbeResult::kFound) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
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

TEST(DebugOutput, WritesTheTextToStandardError) {
    ScratchDirectory scratch("stderr");
    const fs::path capture = scratch.path() / "stderr.txt";
    std::fflush(stderr);
    const int saved = dup(STDERR_FILENO);
    const int file = open(capture.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    ASSERT_GE(file, 0);
    dup2(file, STDERR_FILENO);
    platform::systemPlatform().debugOutput("[VariantDetector] variant=A320\n");
    platform::systemPlatform().debugOutput(nullptr);
    std::fflush(stderr);
    dup2(saved, STDERR_FILENO);
    close(saved);
    close(file);

    std::ifstream in(capture);
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_EQ(text, "[VariantDetector] variant=A320\n");
}
#endif

TEST(ConfigFileProbe, SeesSimConnectCfgOnlyInTheCurrentDirectory) {
    ScratchDirectory scratch("cfg");
    const fs::path withFile = scratch.path() / "with";
    const fs::path without = scratch.path() / "without";
    fs::create_directories(withFile);
    fs::create_directories(without);
    std::ofstream(withFile / "SimConnect.cfg") << "[SimConnect]\nProtocol=IPv4\n";

    {
        CurrentDirectory here(withFile);
        EXPECT_TRUE(platform::systemPlatform().simConnectCfgPresent());
    }
    {
        CurrentDirectory here(without);
        EXPECT_FALSE(platform::systemPlatform().simConnectCfgPresent());
    }
}
