#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <utility>
#include <vector>

#include "core/libvelmora_settings.h"
#include "core/misc_string.h"

using namespace velmora;

TEST(Exception, TextNamesModuleAndLineOnlyWhenFileIsGiven) {
    EXPECT_EQ(Exception("conf", 78, "Key seed does not exist.").toString(),
              "Error in: conf, line 78: Key seed does not exist.\n");
    EXPECT_EQ(Exception("", 12, "Bad.").toString(), "Error: Bad.\n");
}

TEST(Messages, WriteTheirLayoutsToStandardOutput) {
    testing::internal::CaptureStdout();
    libvelmora_warning("w");
    libvelmora_warning("dist", 3, "x");
    libvelmora_infomsg("plain");
    libvelmora_debugmsg("d");
    libvelmora_debugmsg("maps", 9, "y");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Warning: w\nWarning in dist, line 3: x\nplain\nDEBUG: d\nDEBUG (maps, line 9): y\n");
    EXPECT_EQ(libVelmora_name_full(), "libVelmora 0.11.3.3");
}

TEST(Messages, GoToTheInstalledSinkWithTheirKindUntilTheDefaultIsRestored) {
    std::vector<std::pair<MessageKind, std::string>> got;
    set_message_sink([&got](MessageKind kind, const std::string& text) { got.emplace_back(kind, text); });
    testing::internal::CaptureStdout();
    libvelmora_warning("dist", 3, "x");
    libvelmora_infomsg("two\nlines");
    libvelmora_debugmsg("d");
    set_message_sink(nullptr);
    libvelmora_warning("back");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Warning: back\n");
    const std::vector<std::pair<MessageKind, std::string>> expected{
        {MessageKind::Warning, "Warning in dist, line 3: x"},
        {MessageKind::Info, "two\nlines"},
        {MessageKind::Debug, "DEBUG: d"}};
    EXPECT_EQ(got, expected);
}

TEST(TextToNumberAndBool, ReadTheLeadingNumberOrTruthAndNeverFail) {
    struct Case { const char* text; double value; } doubles[] = {
        {"1.5e3x", 1500.0}, {"12abc", 12.0}, {"  -0.25", -0.25}, {"", 0.0}, {"   ", 0.0}, {"abc", 0.0}};
    for (const auto& c : doubles) EXPECT_EQ(toDouble(c.text), c.value) << c.text;
    struct { const char* text; int value; } ints[] = {
        {"abc", 0}, {" 42 rest", 42}, {"3.9", 3}, {"99999999999", INT_MAX}, {"-99999999999", INT_MIN}};
    for (const auto& c : ints) EXPECT_EQ(toInt(c.text), c.value) << c.text;
}

TEST(NumberToText, UsesSixSignificantDigits) {
    char text[] = "abc";
    const std::pair<std::string, std::string> cases[] = {
        {toString(10000.0), "10000"}, {toString(1250000.0), "1.25e+06"}, {toString(0.1), "0.1"},
        {toString(1234.56789), "1234.57"}, {toString(4294967295u), "4294967295"}, {toString(-7), "-7"},
        {toString(true), "1"}, {toString(false), "0"}, {toString(text), "abc"},
        {toString(std::vector<std::string>{"a", "b"}), "a b "}, {toString(std::vector<std::string>{}), ""}};
    for (const auto& c : cases) EXPECT_EQ(c.first, c.second);
    // Truth values: true, t and 1 only, in either case.
    for (const char* yes : {"true", "TRUE", "t", "T", "1"}) EXPECT_TRUE(toBool(yes)) << yes;
    for (const char* no : {"0", "yes", "on", " true", "", "1 "}) EXPECT_FALSE(toBool(no)) << no;
}

TEST(SplitAndTrim, DropEmptyPiecesAndBlanksOnly) {
    EXPECT_EQ(splitString(",a,,b,", ','), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(splitString("a b  c", ' '), (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_TRUE(splitString("", ',').empty() && splitString(",,,", ',').empty());
    EXPECT_EQ(splitString("single", ','), (std::vector<std::string>{"single"}));
    // Trimming removes blanks only.
    const std::pair<std::string, std::string> cases[] = {
        {trimString("\t a "), "\t a"}, {trimString("   "), ""}, {trimLeft("  a  "), "a  "}, {trimRight("  a  "), "  a"},
        {trimString("a\r"), "a\r"}, {tolower("AbC1"), "abc1"}, {toupper("AbC1"), "ABC1"}};
    for (const auto& c : cases) EXPECT_EQ(c.first, c.second);
    EXPECT_EQ(velmora::min(2.0, 1.0), 1.0);
    EXPECT_EQ(velmora::max(2u, 7u), 7u);
}
