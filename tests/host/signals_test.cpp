// The host tool's signal formats and its lookup of signals by name or id.
#include "host/signals.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "host/bench.h"

namespace helmbridge::host {
namespace {

SignalLists sampleLists() {
    SignalLists lists;
    lists[ListKind::kDigitIn] = {
        {0, {"Fenix NONE", "NO SIGNAL"}},
        {1, {"S_ONE", "S_ONE.One [0:Normal, 1:Pushed]"}},
        {2, {"S_SHARED", "first"}},
        {3, {"S_SHARED", "second"}},
        {4, {"S_PADDED  ", "padded | piped"}},
        {7, {"S_SHARED", "third"}},
    };
    lists[ListKind::kPwm] = {{0, {"Fenix NONE", "NO SIGNAL"}}, {1, {"LT, \"MAIN\"", " lead"}}};
    return lists;
}

// Beside what the lists in WriteSignals show (commas, quotes, pipes, blanks inside and at the
// edges).
TEST(FieldEscapes, EachFormatEscapesOnlyWhatItMust) {
    const struct {
        std::string (*escape)(const std::string&);
        std::string in;
        std::string out;
    } rows[] = {
        {&csvField, "two\nlines", "\"two\nlines\""},
        {&csvField, "S_XPDR_MODE_TA   ", "\"S_XPDR_MODE_TA   \""},
        {&visibleBlanks, "  ", "\xC2\xB7\xC2\xB7"},
        {&markdownCell, "x*y<z`w\\[0~2500]", "x\\*y\\<z\\`w\\\\[0\\~2500]"},
        {&markdownCell, "S_ADF1_TFC.Radio", "S_ADF1_TFC.Radio"},
        {&markdownCell, "_lead trail_ (_x_)", "\\_lead trail\\_ (\\_x\\_)"},
        {&jsonString, "a\"b\\c\tline\n\x01", "\"a\\\"b\\\\c\\tline\\n\\u0001\""},
    };
    for (const auto& row : rows) EXPECT_EQ(row.escape(row.in), row.out) << row.in;
}

// Ids, single names and what is not found by either are the tool's (EachMistakeIsOneLine...,
// PrintsTheChanges...); here the exact match and a name several inputs share.
TEST(FindSignal, TakesAnIdOrAnExactlyMatchingNameAndExplainsWhatItCannotFind) {
    const std::pair<std::string, int32_t> rows[] = {
        {"S_PADDED  ", 4}, {"S_PADDED", -1}, {"s_one", -1}, {"", -1}, {"S_SHARED", -1}};
    for (const auto& [token, id] : rows) {
        const SignalRef ref = findSignal(sampleLists(), ListKind::kDigitIn, token);
        EXPECT_EQ(ref.found ? ref.id : -1, id) << token;
    }
    EXPECT_EQ(findSignal(sampleLists(), ListKind::kDigitIn, "S_SHARED").error,
              "'S_SHARED' names 3 digital inputs (ids 2, 3, 7): give the id");
}

// CSV and JSON exactly; Markdown and the table by the lines that show their layout and the
// blanks at the edges of names and labels.
TEST(WriteSignals, EachFormatListsTheEntriesOneSectionPerList) {
    const std::string dots = "\xC2\xB7\xC2\xB7";
    const struct {
        std::vector<ListKind> kinds;
        Format format;
        std::vector<std::string> parts;  // one part: the whole output
    } cases[] = {
        {{ListKind::kPwm},
         Format::kCsv,
         {"list,id,variable,label\r\npwm,0,Fenix NONE,NO SIGNAL\r\n"
          "pwm,1,\"LT, \"\"MAIN\"\"\",\" lead\"\r\n"}},
        {{ListKind::kPwm},
         Format::kJson,
         {"{\n  \"pwm\": [\n"
          "    {\"id\": 0, \"variable\": \"Fenix NONE\", \"label\": \"NO SIGNAL\"},\n"
          "    {\"id\": 1, \"variable\": \"LT, \\\"MAIN\\\"\", \"label\": \" lead\"}\n"
          "  ]\n}\n"}},
        {{ListKind::kDigitIn, ListKind::kPwm},
         Format::kMarkdown,
         {"## Digital inputs (`digital-in`, 6 entries)\n\n| id | variable | label |\n"
          "|---:|---|---|\n| 0 | `Fenix NONE` | NO SIGNAL |\n",
          "| 4 | `S_PADDED" + dots + "` | padded \\| piped |\n",
          "## PWM channels (`pwm`, 2 entries)", "| 1 | `LT, \"MAIN\"` | \xC2\xB7lead |\n"}},
        {{ListKind::kDigitIn},
         Format::kTable,
         {"digital-in: Digital inputs, 6 entries\n", "    1  S_ONE       S_ONE.One",
          "    4  S_PADDED" + dots + "  padded | piped\n"}},
    };
    for (const auto& c : cases) {
        std::ostringstream out;
        writeSignals(out, sampleLists(), c.kinds, c.format);
        EXPECT_TRUE(c.parts.size() > 1 || out.str() == c.parts[0]) << out.str();
        for (const std::string& part : c.parts) {
            EXPECT_NE(out.str().find(part), std::string::npos) << part << "\nin:\n" << out.str();
        }
    }
}

// An unclosed quote is the tool's mistakes table's.
TEST(SplitWords, SplitsOnBlanksAndKeepsQuotedBlanks) {
    const std::pair<std::string, std::vector<std::string>> rows[] = {
        {"  press   S_FCU_AP1 \r", {"press", "S_FCU_AP1"}},
        {"press \"S_XPDR_MODE_TA   \"", {"press", "S_XPDR_MODE_TA   "}},
        {"wait display N_FCU_VS \"\"", {"wait", "display", "N_FCU_VS", ""}},
        {"", {}},
    };
    std::vector<std::string> words;
    for (const auto& [line, expected] : rows) {
        ASSERT_TRUE(splitWords(line, words)) << line;
        EXPECT_EQ(words, expected) << line;
    }
}

}  // namespace
}  // namespace helmbridge::host
