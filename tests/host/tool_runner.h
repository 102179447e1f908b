// Runs the built helmbridge-host as a user runs it, with its standard streams in files.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#if !defined(_WIN32)
#include <sys/wait.h>
#endif

#include "tests/plugin/module_loader.h"

namespace helmbridge::host::testing {

namespace fs = std::filesystem;

struct ToolRun {
    int exitCode = -1;
    std::string out;
    std::string err;
};

inline std::string readFile(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

inline std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> out;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        out.push_back(line);
    }
    return out;
}

// Runs the tool in `toolDirectory` with that directory as the current one (empty: the built tool
// here), with `arguments`, feeding `input` to its standard input.
inline ToolRun runToolIn(const fs::path& toolDirectory, const std::string& arguments,
                         const std::string& input = std::string()) {
    const fs::path dir = fs::temp_directory_path() /
                         ("helmbridge-host-test-" + std::to_string(std::random_device{}()));
    fs::create_directories(dir);
    const fs::path in = dir / "in.txt";
    const fs::path out = dir / "out.txt";
    const fs::path err = dir / "err.txt";
    std::ofstream(in, std::ios::binary) << input;
    const std::string tool = toolDirectory.empty()
                                 ? helmbridge::testing::programDirectory() + HELMBRIDGE_HOST_FILE
                                 : (toolDirectory / HELMBRIDGE_HOST_FILE).string();
    std::string command = "\"" + tool + "\" " + arguments + " < \"" + in.string() + "\" > \"" +
                          out.string() + "\" 2> \"" + err.string() + "\"";
    if (!toolDirectory.empty()) {
#if defined(_WIN32)
        command = "cd /d \"" + toolDirectory.string() + "\" && " + command;
#else
        command = "cd \"" + toolDirectory.string() + "\" && " + command;
#endif
    }
#if defined(_WIN32)
    command = "\"" + command + "\"";  // cmd strips the outer pair of quotes
#endif
    const int status = std::system(command.c_str());
    ToolRun run;
#if defined(_WIN32)
    run.exitCode = status;
#else
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
#endif
    run.out = readFile(out);
    run.err = readFile(err);
    std::error_code ignored;
    fs::remove_all(dir, ignored);
    return run;
}

// Runs the built tool with `arguments`, feeding `input` to its standard input.
inline ToolRun runTool(const std::string& arguments, const std::string& input = std::string()) {
    return runToolIn({}, arguments, input);
}

inline bool contains(const std::vector<std::string>& haystack, const std::string& needle) {
    for (const std::string& line : haystack) {
        if (line == needle) return true;
    }
    return false;
}

}  // namespace helmbridge::host::testing
