// Windows and POSIX implementations of the tests' process helpers.
#include "tests/support/process.h"

#include <fstream>
#include <iterator>
#include <random>
#include <sstream>

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

// One argument as the C runtime's command-line parser reads it back.
std::wstring quoted(const std::wstring& argument) {
    if (!argument.empty() && argument.find_first_of(L" \t\"") == std::wstring::npos) {
        return argument;
    }
    std::wstring out = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t c : argument) {
        if (c == L'\\') {
            ++backslashes;
            continue;
        }
        out.append(c == L'"' ? 2 * backslashes + 1 : backslashes, L'\\');
        out += c;
        backslashes = 0;
    }
    out.append(2 * backslashes, L'\\');
    return out + L"\"";
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
    const auto process = reinterpret_cast<HANDLE>(process_);
    int result = kTimedOut;
    if (WaitForSingleObject(process, static_cast<DWORD>(timeout.count() * 1000)) == WAIT_OBJECT_0) {
        DWORD code = 0;
        GetExitCodeProcess(process, &code);
        result = static_cast<int>(code);
    } else {
        TerminateProcess(process, 1);
        WaitForSingleObject(process, 30000);
    }
    CloseHandle(process);
    process_ = 0;
    return result;
}

ProcessUsage processUsage() {
    ProcessUsage now;
    HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof(entry);
    if (Thread32First(snapshot, &entry)) {
        do {
            if (entry.th32OwnerProcessID == GetCurrentProcessId()) ++now.threads;
        } while (Thread32Next(snapshot, &entry));
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
    PROCESS_MEMORY_COUNTERS memory{};
    if (GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof(memory))) {
        now.memoryKb = static_cast<long>(memory.WorkingSetSize / 1024);
    }
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
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (streams != nullptr) {
        posix_spawn_file_actions_addopen(&actions, 0, streams->in.c_str(), O_RDONLY, 0);
        const int write = O_WRONLY | O_CREAT | O_TRUNC;
        posix_spawn_file_actions_addopen(&actions, 1, streams->out.c_str(), write, 0600);
        posix_spawn_file_actions_addopen(&actions, 2, streams->err.c_str(), write, 0600);
    }
    if (!directory.empty()) posix_spawn_file_actions_addchdir_np(&actions, directory.c_str());
    pid_t pid = 0;
    if (posix_spawn(&pid, file.c_str(), &actions, nullptr, argv.data(), environ) == 0) {
        process_ = pid;
    }
    posix_spawn_file_actions_destroy(&actions);
}

int ChildProcess::wait(std::chrono::seconds timeout) {
    if (!started()) return kNotStarted;
    const auto pid = static_cast<pid_t>(process_);
    process_ = 0;
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
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        std::istringstream fields(line);
        std::string name;
        fields >> name;
        if (name == "Threads:") fields >> now.threads;
        if (name == "VmRSS:") fields >> now.memoryKb;
    }
    now.handles = std::distance(fs::directory_iterator("/proc/self/fd"), {});
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
    const auto readFile = [](const fs::path& file) {
        std::ostringstream text;
        text << std::ifstream(file, std::ios::binary).rdbuf();
        return text.str();
    };
    const int exitCode = ChildProcess(program, arguments, directory, &streams).wait(timeout);
    return {exitCode, readFile(streams.out), readFile(streams.err)};
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> out;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        out.push_back(line);
    }
    return out;
}

}  // namespace helmbridge::testing
