// The seven signal lists as the host receives them, compared with tests/data/signals.tsv, and the
// tables the catalogue derives from them, compared with tests/data/bindings.tsv.
//
// signals.tsv holds one line per entry: list, id, variable, label, separated by tabs, lists in
// the order of the list functions and entries in ascending id. A blank at the start or end of a
// field is written as '·' (U+00B7), so the padded names stay visible. bindings.tsv holds one line
// per row of the binding and key-group tables (table, slot, data-definition id, key, variable)
// and one per id of the behaviour tables. After a deliberate change, run the test program with
// HELMBRIDGE_UPDATE_GOLDEN=1 to rewrite the files, then review the diff before committing it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "catalogue/behaviour.h"
#include "catalogue/bindings.h"
#include "catalogue/position_switches.h"
#include "catalogue/signal_lists.h"
#include "tests/support/process.h"

namespace fenixA320 {
namespace {

const std::string kVisibleBlank = "\xC2\xB7";  // '·' in UTF-8

// The field with each leading and trailing blank replaced by the visible mark.
std::string visible(const std::string& field) {
    const std::size_t lead = std::min(field.find_first_not_of(' '), field.size());
    const std::size_t end = std::max(lead, field.find_last_not_of(' ') + 1);  // npos + 1 is 0
    std::string out;
    for (std::size_t i = 0; i < field.size(); ++i)
        out += i < lead || i >= end ? kVisibleBlank : field.substr(i, 1);
    return out;
}

std::string joined(std::initializer_list<std::string> fields) {
    std::string line;
    for (const std::string& field : fields) line += (line.empty() ? "" : "\t") + field;
    return line;
}

std::vector<std::string> signalLines() {
    const std::pair<const char*, const SigList&> lists[] = {
        {"digitIn", digitInSigList()},   {"encoder", encoderSigList()}, {"analog", analogSigList()},
        {"digitOut", digitOutSigList()}, {"display", displaySigList()}, {"servo", servoSigList()},
        {"pwm", pwmSigList()},
    };
    std::vector<std::string> lines;
    for (const auto& [name, list] : lists) {
        for (const auto& [id, entry] : list)
            lines.push_back(
                joined({name, std::to_string(id), visible(entry.first), visible(entry.second)}));
    }
    return lines;
}

std::vector<std::string> bindingLines() {
    std::vector<std::string> lines;
    const std::pair<const char*, const std::vector<VarBinding>&> tables[] = {
        {"digitIn", digitInBindings()},
        {"switchVar", switchVarBindings()},
        {"encoder", encoderBindings()},
        {"analog", analogBindings()},
    };
    for (const auto& [name, rows] : tables) {
        for (const VarBinding& r : rows) {
            lines.push_back(joined({name, std::to_string(r.slot), std::to_string(r.defineId),
                                    std::to_string(r.key), visible(std::string(r.variable))}));
        }
    }
    const std::tuple<const char*, uint32_t, const std::vector<GroupKey>&> groups[] = {
        {"cdu", DEF_CDU_KEYS, cduKeyGroup()}, {"fcu", DEF_FCU_KEYS, fcuKeyGroup()},
        {"asp", DEF_ASP_KEYS, aspKeyGroup()}, {"rmp", DEF_RMP_KEYS, rmpKeyGroup()},
        {"atc", DEF_ATC_KEYS, atcKeyGroup()},
    };
    for (const auto& [name, definition, rows] : groups) {
        for (const GroupKey& r : rows) {
            lines.push_back(joined({name, std::to_string(r.index), std::to_string(definition),
                                    std::to_string(r.signalId), std::string(r.variable)}));
        }
    }
    // The order in which the input side holds the switches, by switchVar slot.
    for (std::size_t i = 0; i < kPositionSwitchCount; ++i) {
        lines.push_back(
            joined({"switchFeed", std::to_string(i), std::to_string(kPositionSwitchFeedOrder[i])}));
    }
    const std::pair<const char*, std::vector<int32_t>> idSets[] = {
        {"heldDigitIn", {kHeldDigitInIds.begin(), kHeldDigitInIds.end()}},
        {"heldSwitch", {kHeldSwitchNumbers.begin(), kHeldSwitchNumbers.end()}},
        {"heldAnalog", {kHeldAnalogInIds.begin(), kHeldAnalogInIds.end()}},
        {"replayExcluded", {kReplayExcludedIds.begin(), kReplayExcludedIds.end()}},
    };
    for (auto [name, ids] : idSets) {
        std::sort(ids.begin(), ids.end());
        for (int32_t id : ids) lines.push_back(joined({name, std::to_string(id)}));
    }
    for (std::size_t id = 0; id < kAnalogCount; ++id) {
        lines.push_back(joined({"analogRule", std::to_string(id),
                                std::to_string(static_cast<int>(kAnalogRuleOfId[id])),
                                std::to_string(static_cast<int>(kDeadBandOfId[id]))}));
    }
    return lines;
}

TEST(GoldenSignalLists, ListsAndTablesMatchTheCheckedInFiles) {
    const std::pair<std::string, std::vector<std::string>> files[] = {
        {std::string(HELMBRIDGE_SOURCE_DIR) + "/tests/data/signals.tsv", signalLines()},
        {std::string(HELMBRIDGE_SOURCE_DIR) + "/tests/data/bindings.tsv", bindingLines()},
    };
    const char* update = std::getenv("HELMBRIDGE_UPDATE_GOLDEN");
    for (const auto& [path, actual] : files) {
        if (update != nullptr && std::string(update) == "1") {
            std::ofstream out(path, std::ios::binary | std::ios::trunc);
            for (const std::string& line : actual) out << line << '\n';
            out.close();
            ASSERT_TRUE(out) << "cannot write " << path;
            continue;
        }
        const auto expected = helmbridge::testing::lines(helmbridge::testing::readFile(path));
        for (std::size_t i = 0; i < std::min(expected.size(), actual.size()); ++i)
            ASSERT_EQ(actual[i], expected[i]) << path << ":" << (i + 1);  // the first change
        // An unreadable file has no lines: HELMBRIDGE_UPDATE_GOLDEN=1 writes it.
        EXPECT_EQ(expected.size(), actual.size()) << path << ": line count";
    }
}

}  // namespace
}  // namespace fenixA320
