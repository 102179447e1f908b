// The run command: the module connected to whatever simulator it finds, lamp and display
// changes printed as they happen, hardware events typed or piped in as lines.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

namespace helmbridge::host {

struct BenchOptions {
    std::filesystem::path module;
    bool standin = false;  // fly the demo aircraft on the stand-in beside the module
    // Interactive sessions report a bad line and go on; scripts stop at the first one.
    bool interactive = false;
};

// 0 after quit or the end of the input, 2 when the module cannot be used or a scripted line
// fails.
int runBench(const BenchOptions& options, std::istream& in, std::ostream& out, std::ostream& err);

// Splits an input line into words; a word in double quotes may hold blanks. False when a quote
// is left open.
bool splitWords(const std::string& line, std::vector<std::string>& words);

}  // namespace helmbridge::host
