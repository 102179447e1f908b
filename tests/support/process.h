// Child processes for tests: a program run to its end with its output captured, or one kept
// running in the background; a scratch directory; and what this process holds.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace helmbridge::testing {

// A fresh directory under the system's temporary directory, removed with its contents.
class ScratchDirectory {
  public:
    ScratchDirectory();
    ~ScratchDirectory();
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;
    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

// Exit codes that no program gives: killed at the time limit, or never started.
inline constexpr int kTimedOut = -1000;
inline constexpr int kNotStarted = -1001;

// A program started with `arguments` in `directory` (empty: this process's), with its standard
// streams taken from and sent to files when `streams` names them. Killed, if it still runs,
// when this object goes.
class ChildProcess {
  public:
    struct Streams {
        std::filesystem::path in, out, err;
    };

    explicit ChildProcess(const std::filesystem::path& program,
                          const std::vector<std::string>& arguments = {},
                          const std::filesystem::path& directory = {},
                          const Streams* streams = nullptr);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    bool started() const { return process_ != 0; }
    // Its exit code (on POSIX 128 plus the signal that ended it), or kTimedOut once it has been
    // killed at the limit, or kNotStarted.
    int wait(std::chrono::seconds timeout);

  private:
    std::intptr_t process_ = 0;  // a process handle (Windows) or id
};

struct ProgramRun {
    int exitCode = kNotStarted;
    std::string out;
    std::string err;
};

// Runs the program to its end, or kills it at the limit, with `input` as all of its standard
// input, in `directory` (empty: this process's), and captures standard output and error. The
// limit is generous: a process start under Wine alone can take seconds.
ProgramRun runProgram(const std::filesystem::path& program,
                      const std::vector<std::string>& arguments, const std::string& input = {},
                      const std::filesystem::path& directory = {},
                      std::chrono::seconds timeout = std::chrono::seconds(300));

// The lines of a program's output, without line ends.
std::vector<std::string> lines(const std::string& text);

// All bytes of a file; empty when it cannot be read.
std::string readFile(const std::filesystem::path& file);

// What this process holds: threads, handles (Windows) or file descriptors, resident memory.
struct ProcessUsage {
    long threads = 0;
    long handles = 0;
    long memoryKb = 0;
};
ProcessUsage processUsage();

}  // namespace helmbridge::testing
