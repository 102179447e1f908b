// The system's platform table: process probe, configuration-file probe and debug output.
#include "platform/platform.h"

#include <array>
#include <string>

#if defined(_WIN32)
#include <windows.h>
// tlhelp32.h needs the declarations of windows.h first.
#include <tlhelp32.h>
#else
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#endif

namespace helmbridge::platform {
namespace {

constexpr std::array<std::string_view, 2> kSimulatorExecutables = {"FlightSimulator.exe",
                                                                   "FlightSimulator2024.exe"};

// ASCII only: locale-dependent case mapping must not decide whether a simulator runs.
constexpr char asciiLower(char32_t c) {
    return static_cast<char>(c >= U'A' && c <= U'Z' ? c - U'A' + U'a' : c);
}

template <typename Char>
bool matchesSimulator(std::basic_string_view<Char> executable) {
    const auto slash = executable.find_last_of(static_cast<Char>('/'));
    const auto backslash = executable.find_last_of(static_cast<Char>('\\'));
    std::size_t start = 0;
    if (slash != executable.npos) start = slash + 1;
    if (backslash != executable.npos && backslash + 1 > start) start = backslash + 1;
    const auto name = executable.substr(start);
    for (const std::string_view wanted : kSimulatorExecutables) {
        if (name.size() != wanted.size()) continue;
        bool same = true;
        for (std::size_t i = 0; i < name.size() && same; ++i) {
            const auto c = static_cast<char32_t>(name[i]);
            // Anything outside ASCII cannot match the ASCII names.
            same = c < 0x80 && asciiLower(c) == asciiLower(static_cast<char32_t>(wanted[i]));
        }
        if (same) return true;
    }
    return false;
}

#if defined(_WIN32)

ProbeResult probeSystemProcesses() {
    HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (snapshot == INVALID_HANDLE_VALUE) return ProbeResult::kSnapshotFailed;
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof(entry);
    bool found = false;
    if (Process32FirstW(snapshot, &entry)) {
        do {
            found = isSimulatorProcessName(std::wstring_view(entry.szExeFile));
        } while (!found && Process32NextW(snapshot, &entry));
    }
    CloseHandle(snapshot);
    return found ? ProbeResult::kFound : ProbeResult::kNotFound;
}

bool systemCfgPresent() { return GetFileAttributesW(L"SimConnect.cfg") != INVALID_FILE_ATTRIBUTES; }

void systemDebugOutput(const char* text) {
    if (text != nullptr) OutputDebugStringA(text);
}

#else

// argv[0] of one process, from <procRoot>/<pid>/cmdline; empty when unreadable.
std::string_view readArgv0(int directoryFd, const char* pid, std::array<char, 4096>& buffer) {
    const std::string path = std::string(pid) + "/cmdline";
    const int fd = openat(directoryFd, path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return {};
    const ssize_t n = read(fd, buffer.data(), buffer.size());
    close(fd);
    if (n <= 0) return {};
    const std::string_view contents(buffer.data(), static_cast<std::size_t>(n));
    return contents.substr(0, contents.find('\0'));
}

bool isProcessId(const char* name) {
    if (*name == '\0') return false;
    for (; *name != '\0'; ++name) {
        if (*name < '0' || *name > '9') return false;
    }
    return true;
}

ProbeResult probeSystemProcesses() { return probeProcessDirectory("/proc"); }

bool systemCfgPresent() {
    struct stat info {};
    return stat("SimConnect.cfg", &info) == 0;
}

void systemDebugOutput(const char* text) {
    if (text != nullptr) std::fputs(text, stderr);
}

#endif

}  // namespace

#if !defined(_WIN32)
ProbeResult probeProcessDirectory(const char* procRoot) {
    DIR* directory = procRoot != nullptr ? opendir(procRoot) : nullptr;
    if (directory == nullptr) return ProbeResult::kSnapshotFailed;
    std::array<char, 4096> buffer{};
    bool found = false;
    while (!found) {
        const dirent* entry = readdir(directory);
        if (entry == nullptr) break;
        // Processes come and go during the walk: an unreadable entry is simply skipped.
        found = isProcessId(entry->d_name) &&
                isSimulatorProcessName(readArgv0(dirfd(directory), entry->d_name, buffer));
    }
    closedir(directory);
    return found ? ProbeResult::kFound : ProbeResult::kNotFound;
}
#endif

bool isSimulatorProcessName(std::string_view executable) { return matchesSimulator(executable); }

bool isSimulatorProcessName(std::wstring_view executable) { return matchesSimulator(executable); }

const Platform& systemPlatform() {
    static constexpr Platform kSystem{&bindSimConnect, &probeSystemProcesses, &systemCfgPresent,
                                      &systemDebugOutput, &simConnectSearchReport};
    return kSystem;
}

}  // namespace helmbridge::platform
