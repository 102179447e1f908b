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

// Console set-up at start: UTF-8 output and byte-exact standard output on Windows.
void prepareConsole();
bool stdoutIsTerminal();
bool stdinIsTerminal();
// Lets the terminal interpret cursor and erase sequences; false when it cannot.
bool enableTerminalControl();

}  // namespace helmbridge::host
