// Windows and POSIX implementations of the tests' process helpers.
#include "tests/support/process.h"

#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <utility>

#include "tests/support/eventually.h"

#if defined(_WIN32)
#include <windows.h>
// psapi.h and tlhelp32.h need the declarations of windows.h first.
#include <psapi.h>
#include <tlhelp32.h>
#else
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;
#endif

namespace helmbridge::testing {

namespace fs = std::filesystem;

ScratchDirectory::ScratchDirectory() {
    std::random_device random;
    do {
        path_ = fs::temp_directory_path() / ("helmbridge-test-" + std::to_string(random()));
    } while (!fs::create_directories(path_));
}

ScratchDirectory::~ScratchDirectory() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

#if defined(_WIN32)

namespace {

// One argument as the C runtime's command-line parser reads it back: quoted, with the
// backslashes before a quote, and before the closing one, doubled.
std::wstring quoted(const std::wstring& argument) {
    std::wstring out = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t c : argument) {
        out.append(c == L'"' ? backslashes + 1 : 0, L'\\');
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        out += c;
    }
    return out.append(backslashes, L'\\') + L"\"";
}

HANDLE inheritable(const fs::path& file, bool write) {
    SECURITY_ATTRIBUTES inherit{sizeof(inherit), nullptr, TRUE};
    return CreateFileW(file.c_str(), write ? GENERIC_WRITE : GENERIC_READ,
                       FILE_SHARE_READ | FILE_SHARE_WRITE, &inherit,
                       write ? CREATE_ALWAYS : OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
}

}  // namespace

ChildProcess::ChildProcess(const fs::path& program, const std::vector<std::string>& arguments,
                           const fs::path& directory, const Streams* streams) {
    std::wstring commandLine = quoted(program.wstring());
    for (const std::string& argument : arguments) {
        commandLine += L" " + quoted(fs::path(argument).wstring());
    }
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    if (streams != nullptr) {
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdInput = inheritable(streams->in, false);
        startup.hStdOutput = inheritable(streams->out, true);
        startup.hStdError = inheritable(streams->err, true);
    }
    PROCESS_INFORMATION info{};
    if (CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr,
                       streams != nullptr ? TRUE : FALSE, 0, nullptr,
                       directory.empty() ? nullptr : directory.c_str(), &startup, &info)) {
        CloseHandle(info.hThread);
        process_ = reinterpret_cast<std::intptr_t>(info.hProcess);
    }
    for (HANDLE file : {startup.hStdInput, startup.hStdOutput, startup.hStdError}) {
        if (file != nullptr && file != INVALID_HANDLE_VALUE) CloseHandle(file);
    }
}

int ChildProcess::wait(std::chrono::seconds timeout) {
    if (!started()) return kNotStarted;
    const auto process = reinterpret_cast<HANDLE>(std::exchange(process_, 0));
    const auto milliseconds = static_cast<DWORD>(timeout.count() * 1000);
    const bool exited = WaitForSingleObject(process, milliseconds) == WAIT_OBJECT_0;
    if (!exited) TerminateProcess(process, 1);
    WaitForSingleObject(process, 30000);  // a killed process lets go of its files
    DWORD code = 0;
    GetExitCodeProcess(process, &code);
    CloseHandle(process);
    return exited ? static_cast<int>(code) : kTimedOut;
}

ProcessUsage processUsage() {
    ProcessUsage now;
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry)) {
        if (entry.th32OwnerProcessID == GetCurrentProcessId()) ++now.threads;
    }
    CloseHandle(snapshot);
    DWORD handles = 0;
    if (GetProcessHandleCount(GetCurrentProcess(), &handles) && handles > 0) {
        now.handles = static_cast<long>(handles);
    } else {
        // Wine counts no handles, but it hands out the lowest free handle value: a fresh
        // handle's value rises with every handle left open.
        HANDLE fresh = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        now.handles = static_cast<long>(reinterpret_cast<std::uintptr_t>(fresh) / 4);
        CloseHandle(fresh);
    }
    PROCESS_MEMORY_COUNTERS memory{};  // zero when unreadable
    GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof(memory));
    now.memoryKb = static_cast<long>(memory.WorkingSetSize / 1024);
    return now;
}

#else

ChildProcess::ChildProcess(const fs::path& program, const std::vector<std::string>& arguments,
                           const fs::path& directory, const Streams* streams) {
    const std::string file = fs::absolute(program).string();
    std::vector<char*> argv = {const_cast<char*>(file.c_str())};
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t io;
    posix_spawn_file_actions_init(&io);
    if (streams != nullptr) {
        posix_spawn_file_actions_addopen(&io, 0, streams->in.c_str(), O_RDONLY, 0);
        const int write = O_WRONLY | O_CREAT | O_TRUNC;
        posix_spawn_file_actions_addopen(&io, 1, streams->out.c_str(), write, 0600);
        posix_spawn_file_actions_addopen(&io, 2, streams->err.c_str(), write, 0600);
    }
    if (!directory.empty()) posix_spawn_file_actions_addchdir_np(&io, directory.c_str());
    pid_t pid = 0;
    if (posix_spawn(&pid, file.c_str(), &io, nullptr, argv.data(), environ) == 0) process_ = pid;
    posix_spawn_file_actions_destroy(&io);
}

int ChildProcess::wait(std::chrono::seconds timeout) {
    if (!started()) return kNotStarted;
    const auto pid = static_cast<pid_t>(std::exchange(process_, 0));
    int status = 0;
    if (!eventually([&] { return waitpid(pid, &status, WNOHANG) == pid; }, timeout)) {
        kill(pid, SIGKILL);
        waitpid(pid, &status, 0);
        return kTimedOut;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

ProcessUsage processUsage() {
    ProcessUsage now;
    now.threads = std::distance(fs::directory_iterator("/proc/self/task"), {});
    now.handles = std::distance(fs::directory_iterator("/proc/self/fd"), {});
    std::ifstream status("/proc/self/status");
    for (std::string field; status >> field;) {
        if (field == "VmRSS:") status >> now.memoryKb;
    }
    return now;
}

#endif

ChildProcess::~ChildProcess() {
    if (started()) wait(std::chrono::seconds(0));
}

ProgramRun runProgram(const fs::path& program, const std::vector<std::string>& arguments,
                      const std::string& input, const fs::path& directory,
                      std::chrono::seconds timeout) {
    const ScratchDirectory scratch;
    const ChildProcess::Streams streams{scratch.path() / "in", scratch.path() / "out",
                                        scratch.path() / "err"};
    std::ofstream(streams.in, std::ios::binary) << input;
    const int exitCode = ChildProcess(program, arguments, directory, &streams).wait(timeout);
    return {exitCode, readFile(streams.out), readFile(streams.err)};
}

std::string readFile(const fs::path& file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> out;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        out.push_back(line.ends_with('\r') ? line.substr(0, line.size() - 1) : line);
    }
    return out;
}

}  // namespace helmbridge::testing
