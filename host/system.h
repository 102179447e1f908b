// The host tool's seam to the operating system: libraries, paths and the terminal.
#pragma once

#include <filesystem>
#include <string>

namespace helmbridge::host {

// File names of the module and of the SimConnect client library beside it.
const char* moduleFileName();
const char* simConnectFileName();

// Directory of the running executable.
std::filesystem::path executableDirectory();

// A shared library loaded at run time; unloaded when destroyed.
class Library {
  public:
    Library() = default;
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    // False with a one-line reason in `error` when the file cannot be loaded.
    bool open(const std::filesystem::path& file, std::string& error);
    void* symbol(const char* name) const;
    bool loaded() const { return handle_ != nullptr; }
    void close();

  private:
    void* handle_ = nullptr;
};

// The file of the loaded library that holds `address`; empty when there is none.
std::filesystem::path libraryFileOf(const void* address);
// The file version of a Windows executable or DLL ("1.2.3.4"); empty elsewhere or without one.
std::string fileVersion(const std::filesystem::path& file);
// Whether this system has a Visual C++ runtime to look for (Windows).
bool hasVisualCppRuntime();
// The Visual C++ runtime DLLs (vcruntime140, vcruntime140_1, msvcp140) that cannot be loaded.
std::string missingVisualCppRuntime();

// Catches the module's debugger lines while it lives: on Windows through a vectored exception
// handler (the way a debugger receives them), elsewhere by sending standard error to a file.
class DebugCapture {
  public:
    DebugCapture();
    ~DebugCapture();
    DebugCapture(const DebugCapture&) = delete;
    DebugCapture& operator=(const DebugCapture&) = delete;
    // Everything caught so far.
    std::string text() const;

  private:
    // The handler (Windows), or the saved standard error and the file it goes to (elsewhere).
    [[maybe_unused]] void* handle_ = nullptr;
    [[maybe_unused]] int savedStderr_ = -1;
    std::filesystem::path file_;
};

// Console set-up at start: UTF-8 output and byte-exact standard output on Windows.
void prepareConsole();
bool stdoutIsTerminal();
bool stdinIsTerminal();
// Lets the terminal interpret cursor and erase sequences; false when it cannot.
bool enableTerminalControl();

}  // namespace helmbridge::host
