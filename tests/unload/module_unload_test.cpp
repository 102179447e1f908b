// Unloading the module and ending the process, in child processes that load the real module and
// connect it to the stand-in: every way a host can leave must end cleanly and in time.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

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

namespace {

// Generous: a Wine process start alone can take seconds, and an exit-time Stop joins the workers.
constexpr auto kTimeout = std::chrono::seconds(120);
constexpr int kTimedOut = -1000;
constexpr int kNotStarted = -1001;

// Runs the probe with a mode in a scratch directory; its exit code, or kTimedOut after killing it.
int runProbe(const std::string& mode, std::chrono::seconds timeout = kTimeout) {
    const fs::path directory = fs::temp_directory_path() / ("helmbridge_unload_" + mode + "_" +
#if defined(_WIN32)
                                                            std::to_string(GetCurrentProcessId()));
#else
                                                            std::to_string(getpid()));
#endif
    fs::remove_all(directory);
    fs::create_directories(directory);
    const fs::path probe =
        fs::path(helmbridge::testing::programDirectory()) / HELMBRIDGE_UNLOAD_PROBE_FILE;
    int result = kNotStarted;
#if defined(_WIN32)
    std::wstring commandLine = L"\"" + probe.wstring() + L"\" " +
                               std::wstring(mode.begin(), mode.end()) + L" \"" +
                               directory.wstring() + L"\"";
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION info{};
    if (CreateProcessW(probe.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr,
                       nullptr, &startup, &info)) {
        const auto ms = static_cast<DWORD>(
            std::chrono::duration_cast<std::chrono::milliseconds>(timeout).count());
        if (WaitForSingleObject(info.hProcess, ms) == WAIT_OBJECT_0) {
            DWORD code = 0;
            GetExitCodeProcess(info.hProcess, &code);
            result = static_cast<int>(code);
        } else {
            TerminateProcess(info.hProcess, 1);
            WaitForSingleObject(info.hProcess, 30000);
            result = kTimedOut;
        }
        CloseHandle(info.hThread);
        CloseHandle(info.hProcess);
    }
#else
    const std::string file = probe.string();
    const std::string where = directory.string();
    std::vector<char*> argv = {const_cast<char*>(file.c_str()), const_cast<char*>(mode.c_str()),
                               const_cast<char*>(where.c_str()), nullptr};
    pid_t pid = 0;
    if (posix_spawn(&pid, file.c_str(), nullptr, nullptr, argv.data(), environ) == 0) {
        const auto until = std::chrono::steady_clock::now() + timeout;
        int status = 0;
        for (;;) {
            const pid_t done = waitpid(pid, &status, WNOHANG);
            if (done == pid) {
                result = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
                break;
            }
            if (std::chrono::steady_clock::now() > until) {
                kill(pid, SIGKILL);
                waitpid(pid, &status, 0);
                result = kTimedOut;
                break;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    }
#endif
    std::error_code ignored;
    fs::remove_all(directory, ignored);
    return result;
}

TEST(ModuleUnload, UnloadWithoutStartCallsNoSimulatorFunctionAndUnmapsTheModule) {
    EXPECT_EQ(runProbe("never-started"), 0);
}

TEST(ModuleUnload, StopThenUnloadUnmapsQuietlyAndALoadAgainStartsAFreshModule) {
    EXPECT_EQ(runProbe("stop-unload"), 0);
}

TEST(ModuleUnload, UnloadWithoutStopKeepsTheModuleAndItsWorkersAndExitsCleanly) {
    EXPECT_EQ(runProbe("unload-running"), 0);
}

TEST(ModuleUnload, ProcessExitWithWorkersRunningNeitherCrashesNorHangs) {
    EXPECT_EQ(runProbe("exit-running"), 0);
}

// Each Stop waits up to a second for the connection worker's pass.
TEST(ModuleUnload, AHundredLoadStartStopUnloadCyclesLeaveNothingBehind) {
    EXPECT_EQ(runProbe("cycles", std::chrono::seconds(900)), 0);
}

}  // namespace
