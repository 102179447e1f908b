// Windows and POSIX implementations of the host tool's system seam.
#include "host/system.h"

#include <cstdio>

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#include <windows.h>
#else
#include <dlfcn.h>
#include <unistd.h>
#endif

namespace helmbridge::host {

#if defined(_WIN32)

const char* moduleFileName() { return "HelmBridgeA320.dll"; }
const char* simConnectFileName() { return "SimConnect.dll"; }

std::filesystem::path executableDirectory() {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD n = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (n < path.size()) {
            path.resize(n);
            break;
        }
        path.resize(path.size() * 2);
    }
    return std::filesystem::path(path).parent_path();
}

bool Library::open(const std::filesystem::path& file, std::string& error) {
    close();
    handle_ = LoadLibraryW(file.c_str());
    if (handle_ == nullptr) {
        error = "cannot load " + file.string() + " (Windows error " +
                std::to_string(GetLastError()) + ")";
        return false;
    }
    return true;
}

void* Library::symbol(const char* name) const {
    if (handle_ == nullptr) return nullptr;
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle_), name));
}

void Library::close() {
    if (handle_ != nullptr) FreeLibrary(static_cast<HMODULE>(handle_));
    handle_ = nullptr;
}

void prepareConsole() {
    SetConsoleOutputCP(CP_UTF8);
    // Byte-exact output: CSV rows end in CRLF by themselves, every other line in LF.
    _setmode(_fileno(stdout), _O_BINARY);
}

// A console handle, not _isatty: the C runtime takes its terminal flags from the parent process,
// so a redirected child of another program can count as a terminal.
bool isConsole(DWORD stdHandle) {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(stdHandle), &mode) != 0;
}

bool stdoutIsTerminal() { return isConsole(STD_OUTPUT_HANDLE); }
bool stdinIsTerminal() { return isConsole(STD_INPUT_HANDLE); }

bool enableTerminalControl() {
    HANDLE console = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    if (console == INVALID_HANDLE_VALUE || !GetConsoleMode(console, &mode)) return false;
    return SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

#else

const char* moduleFileName() { return "libHelmBridgeA320.so"; }
const char* simConnectFileName() { return "libSimConnect.so"; }

std::filesystem::path executableDirectory() {
    std::error_code ignored;
    return std::filesystem::read_symlink("/proc/self/exe", ignored).parent_path();
}

bool Library::open(const std::filesystem::path& file, std::string& error) {
    close();
    handle_ = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) {
        const char* reason = dlerror();
        error = reason != nullptr ? reason : "cannot load " + file.string();
        return false;
    }
    return true;
}

void* Library::symbol(const char* name) const {
    return handle_ != nullptr ? dlsym(handle_, name) : nullptr;
}

void Library::close() {
    if (handle_ != nullptr) dlclose(handle_);
    handle_ = nullptr;
}

void prepareConsole() {}

bool stdoutIsTerminal() { return isatty(STDOUT_FILENO) != 0; }
bool stdinIsTerminal() { return isatty(STDIN_FILENO) != 0; }

bool enableTerminalControl() { return stdoutIsTerminal(); }

#endif

Library::~Library() { close(); }

}  // namespace helmbridge::host
