// The host tool's signal formats and its lookup of signals by name or id.
#include "host/signals.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
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

TEST(FieldEscapes, EachFormatEscapesOnlyWhatItMust) {
    const std::string dot = "\xC2\xB7";
    const struct {
        std::string (*escape)(const std::string&);
        std::string in;
        std::string out;
    } rows[] = {
        {&csvField, "S_ADF1_TFC", "S_ADF1_TFC"},
        {&csvField, "", ""},
        {&csvField, "inner blank", "inner blank"},
        {&csvField, "[0:Normal, 1:Pushed]", "\"[0:Normal, 1:Pushed]\""},
        {&csvField, "say \"hi\"", "\"say \"\"hi\"\"\""},
        {&csvField, "two\nlines", "\"two\nlines\""},
        {&csvField, "S_XPDR_MODE_TA   ", "\"S_XPDR_MODE_TA   \""},
        {&csvField, " lead", "\" lead\""},
        {&visibleBlanks, "S_XPDR_MODE_TA   ", "S_XPDR_MODE_TA" + dot + dot + dot},
        {&visibleBlanks, " a b ", dot + "a b" + dot},
        {&visibleBlanks, "  ", dot + dot},
        {&visibleBlanks, "", ""},
        {&visibleBlanks, "ASP  Channel", "ASP  Channel"},
        {&markdownCell, "a|b", "a\\|b"},
        {&markdownCell, "[0~2500]", "[0\\~2500]"},
        {&markdownCell, "x*y<z`w\\", "x\\*y\\<z\\`w\\\\"},
        {&markdownCell, "S_ADF1_TFC.Radio", "S_ADF1_TFC.Radio"},
        {&markdownCell, "_lead trail_ (_x_)", "\\_lead trail\\_ (\\_x\\_)"},
        {&jsonString, "plain", "\"plain\""},
        {&jsonString, "a\"b\\c", "\"a\\\"b\\\\c\""},
        {&jsonString, "tab\tline\n\x01", "\"tab\\tline\\n\\u0001\""},
    };
    for (const auto& row : rows) EXPECT_EQ(row.escape(row.in), row.out) << row.in;
}

TEST(ParseCsv, ReadsBackWhatCsvFieldWroteAndRejectsAnUnclosedQuote) {
    const std::vector<std::string> fields = {
        "plain", "", "a,b", "\"quoted\"", "trail  ", "  lead", "line\r\nbreak", ",\",\"",
    };
    std::string text;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        text += csvField(fields[i]) + "," + csvField(std::to_string(i)) + "\r\n";
    }
    std::vector<std::vector<std::string>> records;
    ASSERT_TRUE(parseCsv(text, records));
    ASSERT_EQ(records.size(), fields.size());
    for (std::size_t i = 0; i < fields.size(); ++i) {
        EXPECT_EQ(records[i], (std::vector<std::string>{fields[i], std::to_string(i)})) << i;
    }
    // Bare line feeds and a last line without a break are read too.
    ASSERT_TRUE(parseCsv("a,b\nc,\"d\"", records));
    EXPECT_EQ(records, (std::vector<std::vector<std::string>>{{"a", "b"}, {"c", "d"}}));
    EXPECT_FALSE(parseCsv("a,\"open\r\n", records));
}

TEST(FindSignal, TakesAnIdOrAnExactlyMatchingNameAndExplainsWhatItCannotFind) {
    const SignalLists lists = sampleLists();
    const struct {
        ListKind kind;
        std::string token;
        int32_t id;  // -1: not found
        std::string error;
    } rows[] = {
        {ListKind::kDigitIn, "7", 7, ""},
        {ListKind::kDigitIn, "S_ONE", 1, ""},
        {ListKind::kDigitIn, "S_PADDED  ", 4, ""},
        {ListKind::kDigitIn, "S_PADDED", -1, ""},
        {ListKind::kDigitIn, "s_one", -1, ""},
        {ListKind::kDigitIn, "", -1, ""},
        {ListKind::kDigitIn, "1x", -1, ""},
        {ListKind::kDigitIn, "5", -1, "unknown digital input id 5"},
        {ListKind::kPwm, "S_ONE", -1, "unknown PWM channel 'S_ONE'"},
        {ListKind::kDigitIn, "S_SHARED", -1,
         "'S_SHARED' names 3 digital inputs (ids 2, 3, 7): give the id"},
    };
    for (const auto& row : rows) {
        const SignalRef ref = findSignal(lists, row.kind, row.token);
        EXPECT_EQ(ref.found ? ref.id : -1, row.id) << row.token;
        EXPECT_TRUE(row.error.empty() || ref.error == row.error) << row.token << ": " << ref.error;
    }
}

TEST(WriteSignals, CsvHasAHeaderAndCrlfRecordsAndJsonListsEntriesUnderTheListName) {
    std::ostringstream csv;
    writeSignals(csv, sampleLists(), {ListKind::kPwm}, Format::kCsv);
    EXPECT_EQ(csv.str(),
              "list,id,variable,label\r\n"
              "pwm,0,Fenix NONE,NO SIGNAL\r\n"
              "pwm,1,\"LT, \"\"MAIN\"\"\",\" lead\"\r\n");
    std::ostringstream json;
    writeSignals(json, sampleLists(), {ListKind::kPwm}, Format::kJson);
    EXPECT_EQ(json.str(),
              "{\n  \"pwm\": [\n"
              "    {\"id\": 0, \"variable\": \"Fenix NONE\", \"label\": \"NO SIGNAL\"},\n"
              "    {\"id\": 1, \"variable\": \"LT, \\\"MAIN\\\"\", \"label\": \" lead\"}\n"
              "  ]\n}\n");
}

TEST(WriteSignals, MarkdownAndTableShowEdgeBlanksOneSectionPerList) {
    std::ostringstream md;
    writeSignals(md, sampleLists(), {ListKind::kDigitIn, ListKind::kPwm}, Format::kMarkdown);
    for (const char* text : {
             "## Digital inputs (`digital-in`, 6 entries)\n\n| id | variable | label |\n"
             "|---:|---|---|\n| 0 | `Fenix NONE` | NO SIGNAL |\n",
             "| 4 | `S_PADDED\xC2\xB7\xC2\xB7` | padded \\| piped |\n",
             "## PWM channels (`pwm`, 2 entries)",
             "| 1 | `LT, \"MAIN\"` | \xC2\xB7lead |\n",
         }) {
        EXPECT_NE(md.str().find(text), std::string::npos) << text << "\nin:\n" << md.str();
    }
    std::ostringstream table;
    writeSignals(table, sampleLists(), {ListKind::kDigitIn}, Format::kTable);
    for (const char* text : {
             "digital-in: Digital inputs, 6 entries\n",
             "    1  S_ONE       S_ONE.One",
             "    4  S_PADDED\xC2\xB7\xC2\xB7  padded | piped\n",
         }) {
        EXPECT_NE(table.str().find(text), std::string::npos) << text << "\nin:\n" << table.str();
    }
}

TEST(SplitWords, SplitsOnBlanksAndKeepsQuotedBlanks) {
    std::vector<std::string> words;
    ASSERT_TRUE(splitWords("  press   S_FCU_AP1 \r", words));
    EXPECT_EQ(words, (std::vector<std::string>{"press", "S_FCU_AP1"}));
    ASSERT_TRUE(splitWords("press \"S_XPDR_MODE_TA   \"", words));
    EXPECT_EQ(words, (std::vector<std::string>{"press", "S_XPDR_MODE_TA   "}));
    ASSERT_TRUE(splitWords("wait display N_FCU_VS \"\"", words));
    EXPECT_EQ(words, (std::vector<std::string>{"wait", "display", "N_FCU_VS", ""}));
    ASSERT_TRUE(splitWords("", words));
    EXPECT_TRUE(words.empty());
    EXPECT_FALSE(splitWords("press \"S_OPEN", words));
}

}  // namespace
}  // namespace helmbridge::host
