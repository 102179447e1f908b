// The seven signal lists as the host receives them, compared with tests/data/signals.tsv.
//
// The file holds one line per entry: list, id, variable, label, separated by tabs, lists in the
// order of the list functions and entries in ascending id. A blank at the start or end of a field
// is written as '·' (U+00B7), so the padded names stay visible. After a deliberate change of a
// list, run the test program with HELMBRIDGE_UPDATE_GOLDEN=1 to rewrite the file, then review the
// diff before committing it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "catalogue/signal_lists.h"

namespace fenixA320 {
namespace {

const std::string kGoldenPath = std::string(HELMBRIDGE_SOURCE_DIR) + "/tests/data/signals.tsv";
const std::string kVisibleBlank = "\xC2\xB7";  // '·' in UTF-8

const std::string kHeader =
    "# list\tid\tvariable\tlabel; each leading or trailing blank of a field is written as '" +
    kVisibleBlank +
    "' (U+00B7); rewrite with HELMBRIDGE_UPDATE_GOLDEN=1 (tests/catalogue/"
    "golden_test.cpp)";

// The field with each leading and trailing blank replaced by the visible mark.
std::string visible(const std::string& field) {
    const std::size_t first = field.find_first_not_of(' ');
    if (first == std::string::npos) {
        std::string marks;
        for (std::size_t i = 0; i < field.size(); ++i) marks += kVisibleBlank;
        return marks;
    }
    const std::size_t last = field.find_last_not_of(' ');
    std::string out;
    for (std::size_t i = 0; i < first; ++i) out += kVisibleBlank;
    out += field.substr(first, last - first + 1);
    for (std::size_t i = last + 1; i < field.size(); ++i) out += kVisibleBlank;
    return out;
}

std::vector<std::string> buildLines() {
    struct Named {
        const char* name;
        const SigList& list;
    };
    const Named lists[] = {
        {"digitIn", digitInSigList()},   {"encoder", encoderSigList()}, {"analog", analogSigList()},
        {"digitOut", digitOutSigList()}, {"display", displaySigList()}, {"servo", servoSigList()},
        {"pwm", pwmSigList()},
    };
    std::vector<std::string> lines{kHeader};
    for (const Named& l : lists) {
        for (const auto& [id, entry] : l.list) {
            lines.push_back(std::string(l.name) + "\t" + std::to_string(id) + "\t" +
                            visible(entry.first) + "\t" + visible(entry.second));
        }
    }
    return lines;
}

std::vector<std::string> readLines(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::vector<std::string> lines;
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();  // a CRLF checkout
        lines.push_back(line);
    }
    return lines;
}

bool updateRequested() {
    const char* value = std::getenv("HELMBRIDGE_UPDATE_GOLDEN");
    return value != nullptr && std::string(value) == "1";
}

TEST(GoldenSignalLists, FieldsNeedNoEscaping) {
    // Tabs, line breaks and the visible-blank mark itself would make the file ambiguous.
    for (const SigList* list :
         {&digitInSigList(), &encoderSigList(), &analogSigList(), &digitOutSigList(),
          &displaySigList(), &servoSigList(), &pwmSigList()}) {
        for (const auto& [id, entry] : *list) {
            for (const std::string* field : {&entry.first, &entry.second}) {
                EXPECT_EQ(field->find_first_of("\t\r\n"), std::string::npos) << id;
                EXPECT_EQ(field->find(kVisibleBlank), std::string::npos) << id;
            }
        }
    }
}

TEST(GoldenSignalLists, MatchTheCheckedInFile) {
    const std::vector<std::string> actual = buildLines();
    if (updateRequested()) {
        std::ofstream out(kGoldenPath, std::ios::binary | std::ios::trunc);
        ASSERT_TRUE(out) << "cannot write " << kGoldenPath;
        for (const std::string& line : actual) out << line << '\n';
        out.close();
        ASSERT_TRUE(out) << "cannot write " << kGoldenPath;
        std::cout << "rewrote " << kGoldenPath << " (" << actual.size() << " lines)\n";
        return;
    }

    const std::vector<std::string> expected = readLines(kGoldenPath);
    ASSERT_FALSE(expected.empty())
        << "cannot read " << kGoldenPath << "; HELMBRIDGE_UPDATE_GOLDEN=1 writes it";
    int mismatches = 0;
    for (std::size_t i = 0; i < std::max(expected.size(), actual.size()) && mismatches < 20; ++i) {
        const bool both = i < expected.size() && i < actual.size();
        if (both && expected[i] == actual[i]) continue;
        ++mismatches;
        ADD_FAILURE() << kGoldenPath << ":" << (i + 1)
                      << "\n  expected: " << (i < expected.size() ? expected[i] : "(no line)")
                      << "\n  actual:   " << (i < actual.size() ? actual[i] : "(no line)");
    }
    EXPECT_EQ(expected.size(), actual.size()) << "line count";
}

}  // namespace
}  // namespace fenixA320
