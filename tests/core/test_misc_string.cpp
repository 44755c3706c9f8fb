#include <gtest/gtest.h>

#include <climits>

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

TEST(TextToNumber, ReadsTheLeadingNumberAndNeverFails) {
    struct Case { const char* text; double value; } doubles[] = {
        {"1.5e3x", 1500.0}, {"12abc", 12.0}, {"  -0.25", -0.25}, {"", 0.0}, {"   ", 0.0}, {"abc", 0.0}};
    for (const auto& c : doubles) EXPECT_EQ(toDouble(c.text), c.value) << c.text;
    EXPECT_EQ(toInt("abc"), 0);
    EXPECT_EQ(toInt(" 42 rest"), 42);
    EXPECT_EQ(toInt("3.9"), 3);
    EXPECT_EQ(toInt("99999999999"), INT_MAX);
    EXPECT_EQ(toInt("-99999999999"), INT_MIN);
}

TEST(NumberToText, UsesSixSignificantDigits) {
    EXPECT_EQ(toString(10000.0), "10000");
    EXPECT_EQ(toString(1250000.0), "1.25e+06");
    EXPECT_EQ(toString(0.1), "0.1");
    EXPECT_EQ(toString(1234.56789), "1234.57");
    EXPECT_EQ(toString(4294967295u), "4294967295");
    EXPECT_EQ(toString(-7), "-7");
    EXPECT_EQ(toString(true), "1");
    EXPECT_EQ(toString(false), "0");
    char text[] = "abc";
    EXPECT_EQ(toString(text), "abc");
    EXPECT_EQ(toString(std::vector<std::string>{"a", "b"}), "a b ");
    EXPECT_EQ(toString(std::vector<std::string>{}), "");
}

TEST(TextToBool, AcceptsTrueTAndOneOnly) {
    for (const char* yes : {"true", "TRUE", "t", "T", "1"}) EXPECT_TRUE(toBool(yes)) << yes;
    for (const char* no : {"0", "yes", "on", " true", "", "1 "}) EXPECT_FALSE(toBool(no)) << no;
}

TEST(SplitString, DropsEmptyPieces) {
    EXPECT_EQ(splitString(",a,,b,", ','), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(splitString("a b  c", ' '), (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_TRUE(splitString("", ',').empty());
    EXPECT_TRUE(splitString(",,,", ',').empty());
    EXPECT_EQ(splitString("single", ','), (std::vector<std::string>{"single"}));
}

TEST(Trim, RemovesBlanksOnly) {
    EXPECT_EQ(trimString("\t a "), "\t a");
    EXPECT_EQ(trimString("   "), "");
    EXPECT_EQ(trimLeft("  a  "), "a  ");
    EXPECT_EQ(trimRight("  a  "), "  a");
    EXPECT_EQ(trimString("a\r"), "a\r");
    EXPECT_EQ(tolower("AbC1"), "abc1");
    EXPECT_EQ(toupper("AbC1"), "ABC1");
    EXPECT_EQ(velmora::min(2.0, 1.0), 1.0);
    EXPECT_EQ(velmora::max(2u, 7u), 7u);
}
