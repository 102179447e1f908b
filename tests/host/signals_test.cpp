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

TEST(CsvField, QuotesOnlyFieldsThatNeedIt) {
    EXPECT_EQ(csvField("S_ADF1_TFC"), "S_ADF1_TFC");
    EXPECT_EQ(csvField(""), "");
    EXPECT_EQ(csvField("[0:Normal, 1:Pushed]"), "\"[0:Normal, 1:Pushed]\"");
    EXPECT_EQ(csvField("say \"hi\""), "\"say \"\"hi\"\"\"");
    EXPECT_EQ(csvField("two\nlines"), "\"two\nlines\"");
    EXPECT_EQ(csvField("S_XPDR_MODE_TA   "), "\"S_XPDR_MODE_TA   \"");
    EXPECT_EQ(csvField(" lead"), "\" lead\"");
    EXPECT_EQ(csvField("inner blank"), "inner blank");
}

TEST(ParseCsv, ReadsBackWhatCsvFieldWrote) {
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
}

TEST(ParseCsv, AcceptsBareLineFeedsAndALastLineWithoutBreak) {
    std::vector<std::vector<std::string>> records;
    ASSERT_TRUE(parseCsv("a,b\nc,\"d\"", records));
    EXPECT_EQ(records, (std::vector<std::vector<std::string>>{{"a", "b"}, {"c", "d"}}));
}

TEST(ParseCsv, RejectsAnUnclosedQuote) {
    std::vector<std::vector<std::string>> records;
    EXPECT_FALSE(parseCsv("a,\"open\r\n", records));
}

TEST(VisibleBlanks, MarksOnlyLeadingAndTrailingBlanks) {
    EXPECT_EQ(visibleBlanks("S_XPDR_MODE_TA   "), "S_XPDR_MODE_TA\xC2\xB7\xC2\xB7\xC2\xB7");
    EXPECT_EQ(visibleBlanks(" a b "),
              "\xC2\xB7"
              "a b\xC2\xB7");
    EXPECT_EQ(visibleBlanks("  "), "\xC2\xB7\xC2\xB7");
    EXPECT_EQ(visibleBlanks(""), "");
    EXPECT_EQ(visibleBlanks("ASP  Channel"), "ASP  Channel");
}

TEST(MarkdownCell, EscapesPipesAndInlineMarkup) {
    EXPECT_EQ(markdownCell("a|b"), "a\\|b");
    EXPECT_EQ(markdownCell("[0~2500]"), "[0\\~2500]");
    EXPECT_EQ(markdownCell("x*y<z`w\\"), "x\\*y\\<z\\`w\\\\");
    EXPECT_EQ(markdownCell("S_ADF1_TFC.Radio"), "S_ADF1_TFC.Radio");
    EXPECT_EQ(markdownCell("_lead trail_ (_x_)"), "\\_lead trail\\_ (\\_x\\_)");
}

TEST(JsonString, EscapesQuotesBackslashesAndControlCharacters) {
    EXPECT_EQ(jsonString("plain"), "\"plain\"");
    EXPECT_EQ(jsonString("a\"b\\c"), "\"a\\\"b\\\\c\"");
    EXPECT_EQ(jsonString("tab\tline\n\x01"), "\"tab\\tline\\n\\u0001\"");
}

TEST(FindSignal, TakesAnIdOrAnExactlyMatchingName) {
    const SignalLists lists = sampleLists();
    const SignalRef byId = findSignal(lists, ListKind::kDigitIn, "7");
    EXPECT_TRUE(byId.found);
    EXPECT_EQ(byId.id, 7);
    const SignalRef byName = findSignal(lists, ListKind::kDigitIn, "S_ONE");
    EXPECT_TRUE(byName.found);
    EXPECT_EQ(byName.id, 1);
    const SignalRef padded = findSignal(lists, ListKind::kDigitIn, "S_PADDED  ");
    EXPECT_TRUE(padded.found);
    EXPECT_EQ(padded.id, 4);
    EXPECT_FALSE(findSignal(lists, ListKind::kDigitIn, "S_PADDED").found);
    EXPECT_FALSE(findSignal(lists, ListKind::kDigitIn, "s_one").found);
}

TEST(FindSignal, ExplainsUnknownAndSharedNames) {
    const SignalLists lists = sampleLists();
    const SignalRef unknownId = findSignal(lists, ListKind::kDigitIn, "5");
    EXPECT_FALSE(unknownId.found);
    EXPECT_EQ(unknownId.error, "unknown digital input id 5");
    const SignalRef unknownName = findSignal(lists, ListKind::kPwm, "S_ONE");
    EXPECT_FALSE(unknownName.found);
    EXPECT_EQ(unknownName.error, "unknown PWM channel 'S_ONE'");
    const SignalRef shared = findSignal(lists, ListKind::kDigitIn, "S_SHARED");
    EXPECT_FALSE(shared.found);
    EXPECT_EQ(shared.error, "'S_SHARED' names 3 digital inputs (ids 2, 3, 7): give the id");
    EXPECT_FALSE(findSignal(lists, ListKind::kDigitIn, "").found);
    EXPECT_FALSE(findSignal(lists, ListKind::kDigitIn, "1x").found);
}

TEST(WriteSignals, CsvHasTheHeaderAndOneCrlfRecordPerEntry) {
    std::ostringstream out;
    writeSignals(out, sampleLists(), {ListKind::kPwm}, Format::kCsv);
    EXPECT_EQ(out.str(),
              "list,id,variable,label\r\n"
              "pwm,0,Fenix NONE,NO SIGNAL\r\n"
              "pwm,1,\"LT, \"\"MAIN\"\"\",\" lead\"\r\n");
}

TEST(WriteSignals, MarkdownHasOneTablePerListWithVisibleBlanks) {
    std::ostringstream out;
    writeSignals(out, sampleLists(), {ListKind::kDigitIn, ListKind::kPwm}, Format::kMarkdown);
    const std::string md = out.str();
    EXPECT_NE(md.find("## Digital inputs (`digital-in`, 6 entries)\n\n| id | variable | label |\n"
                      "|---:|---|---|\n| 0 | `Fenix NONE` | NO SIGNAL |\n"),
              std::string::npos)
        << md;
    EXPECT_NE(md.find("| 4 | `S_PADDED\xC2\xB7\xC2\xB7` | padded \\| piped |\n"), std::string::npos)
        << md;
    EXPECT_NE(md.find("## PWM channels (`pwm`, 2 entries)"), std::string::npos) << md;
    EXPECT_NE(md.find("| 1 | `LT, \"MAIN\"` | \xC2\xB7lead |\n"), std::string::npos) << md;
}

TEST(WriteSignals, JsonListsEntriesUnderTheListName) {
    std::ostringstream out;
    writeSignals(out, sampleLists(), {ListKind::kPwm}, Format::kJson);
    EXPECT_EQ(out.str(),
              "{\n  \"pwm\": [\n"
              "    {\"id\": 0, \"variable\": \"Fenix NONE\", \"label\": \"NO SIGNAL\"},\n"
              "    {\"id\": 1, \"variable\": \"LT, \\\"MAIN\\\"\", \"label\": \" lead\"}\n"
              "  ]\n}\n");
}

TEST(WriteSignals, TableAlignsLabelsAndShowsEdgeBlanks) {
    std::ostringstream out;
    writeSignals(out, sampleLists(), {ListKind::kDigitIn}, Format::kTable);
    const std::string table = out.str();
    EXPECT_NE(table.find("digital-in: Digital inputs, 6 entries\n"), std::string::npos);
    EXPECT_NE(table.find("    1  S_ONE       S_ONE.One"), std::string::npos) << table;
    EXPECT_NE(table.find("    4  S_PADDED\xC2\xB7\xC2\xB7  padded | piped\n"), std::string::npos)
        << table;
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
