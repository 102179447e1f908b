// Windows and POSIX implementations of the host tool's system seam.
#include "host/system.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <mutex>
#include <random>
#include <vector>

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#include <windows.h>
#else
#include <dlfcn.h>
#include <fcntl.h>
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

std::filesystem::path libraryFileOf(const void* address) {
    HMODULE library = nullptr;
    if (!GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            static_cast<LPCWSTR>(address), &library)) {
        return {};
    }
    std::wstring path(MAX_PATH, L'\0');
    const DWORD n = GetModuleFileNameW(library, path.data(), static_cast<DWORD>(path.size()));
    path.resize(n < path.size() ? n : 0);
    return path;
}

std::string fileVersion(const std::filesystem::path& file) {
    DWORD ignored = 0;
    const DWORD size = GetFileVersionInfoSizeW(file.c_str(), &ignored);
    if (size == 0) return {};
    std::vector<char> data(size);
    VS_FIXEDFILEINFO* info = nullptr;
    UINT length = 0;
    if (!GetFileVersionInfoW(file.c_str(), 0, size, data.data()) ||
        !VerQueryValueW(data.data(), L"\\", reinterpret_cast<void**>(&info), &length) ||
        info == nullptr) {
        return {};
    }
    return std::to_string(HIWORD(info->dwFileVersionMS)) + "." +
           std::to_string(LOWORD(info->dwFileVersionMS)) + "." +
           std::to_string(HIWORD(info->dwFileVersionLS)) + "." +
           std::to_string(LOWORD(info->dwFileVersionLS));
}

bool hasVisualCppRuntime() { return true; }

std::string missingVisualCppRuntime() {
    std::string missing;
    for (const wchar_t* name : {L"vcruntime140.dll", L"vcruntime140_1.dll", L"msvcp140.dll"}) {
        HMODULE library = LoadLibraryExW(name, nullptr, LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
        if (library == nullptr) library = LoadLibraryW(name);
        if (library == nullptr) {
            if (!missing.empty()) missing += ", ";
            missing += std::filesystem::path(name).string();
        } else {
            FreeLibrary(library);
        }
    }
    return missing;
}

namespace {

std::mutex debugMutex;
std::string debugText;  // guarded by debugMutex

LONG CALLBACK onDebugString(EXCEPTION_POINTERS* exception) {
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    if (record.ExceptionCode == DBG_PRINTEXCEPTION_C && record.NumberParameters >= 2) {
        const auto* text = reinterpret_cast<const char*>(record.ExceptionInformation[1]);
        if (text != nullptr) {
            std::lock_guard lock(debugMutex);
            debugText += text;
        }
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

}  // namespace

DebugCapture::DebugCapture() {
    {
        std::lock_guard lock(debugMutex);
        debugText.clear();
    }
    handle_ = AddVectoredExceptionHandler(1, &onDebugString);
}

DebugCapture::~DebugCapture() {
    if (handle_ != nullptr) RemoveVectoredExceptionHandler(handle_);
}

std::string DebugCapture::text() const {
    std::lock_guard lock(debugMutex);
    return debugText;
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

std::filesystem::path libraryFileOf(const void* address) {
    Dl_info info{};
    if (dladdr(address, &info) == 0 || info.dli_fname == nullptr) return {};
    std::error_code ignored;
    return std::filesystem::absolute(info.dli_fname, ignored);
}

std::string fileVersion(const std::filesystem::path& /*file*/) { return {}; }

bool hasVisualCppRuntime() { return false; }

std::string missingVisualCppRuntime() { return {}; }

DebugCapture::DebugCapture() {
    std::fflush(stderr);
    file_ = std::filesystem::temp_directory_path() /
            ("helmbridge-debug-" + std::to_string(std::random_device{}()) + ".txt");
    const int file = open(file_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0600);
    if (file < 0) return;
    savedStderr_ = dup(STDERR_FILENO);
    dup2(file, STDERR_FILENO);
    close(file);
}

DebugCapture::~DebugCapture() {
    if (savedStderr_ < 0) return;
    std::fflush(stderr);
    dup2(savedStderr_, STDERR_FILENO);
    close(savedStderr_);
    std::error_code ignored;
    std::filesystem::remove(file_, ignored);
}

std::string DebugCapture::text() const {
    std::fflush(stderr);
    std::ifstream in(file_, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void prepareConsole() {}

bool stdoutIsTerminal() { return isatty(STDOUT_FILENO) != 0; }
bool stdinIsTerminal() { return isatty(STDIN_FILENO) != 0; }

bool enableTerminalControl() { return stdoutIsTerminal(); }

#endif

Library::~Library() { close(); }

}  // namespace helmbridge::host
