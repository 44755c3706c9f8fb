#include <map>

#include "config/conf.h"
#include "support/test_support.h"

using namespace velmora;
using namespace velmora_test;

namespace {
struct Args {
    std::vector<std::string> items;
    std::vector<char*> pointers;
    explicit Args(std::vector<std::string> list) : items(std::move(list)) {
        for (auto& item : items) pointers.push_back(&item[0]);
    }
    int argc() { return static_cast<int>(pointers.size()); }
    char** argv() { return pointers.data(); }
};
}  // namespace

TEST(ConfigFile, GrammarOfKeysValuesCommentsAndContinuations) {
    struct Case { const char* text; std::map<std::string, std::string> expected; } cases[] = {
        {"a = 1\nB=2\nx = 1 = 2\n#comment=9\n\n", {{"a", "1"}, {"b", "2"}, {"x", "1 = 2"}}},
        // Continuations are trimmed; a line of blanks appends an empty line.
        {"m = 1 2\n  3 4  \n   \n#c\nn=5\n", {{"m", "1 2\n3 4\n"}, {"n", "5"}}},
        {"a = 1\r\n", {{"a", "1\r"}}},
        {" #x = 1\n", {{"#x", "1"}}},  // only column 1 starts a comment
        {"seed = 5\n 6\nseed = 7\n", {{"seed", "5\n6"}}},  // first value of a repeated key wins
        {"loose\nk=v\n", {{"k", "v"}}},                   // a continuation before any key is dropped
        {"", {}},
    };
    int i = 0;
    for (const auto& c : cases) {
        Config config(writeFile("grammar" + std::to_string(i++), c.text));
        for (const auto& [key, value] : c.expected) EXPECT_EQ(config.getValue(key), value) << c.text;
        EXPECT_FALSE(config.existsKey("")) << c.text;
    }
    Config config(writeFile("typed", "a = 12abc\nb = 2.5\n"));
    EXPECT_EQ(config.getValueAsInt("A"), 12);
    EXPECT_EQ(config.getValueAsDouble("b"), 2.5);
}

TEST(ConfigFile, OverwriteDecidesWhoWinsIncludingContinuations) {
    std::string file = writeFile("over.txt", "loose\nseed = 5\n 6\nseed = 7\nother = 1\n");
    Config keep;
    keep.setValue("seed", "1", true);
    keep.loadConfigFromFile(file, false);
    EXPECT_EQ(keep.getValue("seed"), "1");
    EXPECT_EQ(keep.getValue("other"), "1");
    EXPECT_FALSE(keep.existsKey(""));
    Config replace;
    replace.setValue("seed", "1", true);
    replace.loadConfigFromFile(file, true);
    EXPECT_EQ(replace.getValue("seed"), "7");
    EXPECT_EQ(replace.getValue(""), "\nloose");
    // setValue stores the key as given and respects its overwrite flag.
    Config config;
    config.setValue("Mixed", "1", false);
    EXPECT_FALSE(config.existsKey("Mixed"));  // getters lowercase their key
    config.setValue("k", "1", false);
    config.setValue("k", "2", false);
    EXPECT_EQ(config.getValue("k"), "1");
    config.setValue("k", "3", true);
    EXPECT_EQ(config.getValue("k"), "3");
}

TEST(ConfigFile, FailuresKeepWhatWasReadBefore) {
    EXPECT_EQ(failureOf([] { Config c(tempPath("no/such/file")); }), "conf: Cannot open file.");
    Config partial;
    EXPECT_EQ(failureOf([&] { partial.loadConfigFromFile(writeFile("blank.txt", "a=1\ny =   \nz=2\n"), false); }),
              "conf: No value for key.");
    EXPECT_TRUE(partial.existsKey("a"));
    EXPECT_FALSE(partial.existsKey("z"));
    EXPECT_EQ(failureOf([&] { partial.getValue("TRACE"); }), "conf: Key TRACE does not exist.");
    EXPECT_EQ(failureOf([&] { partial.getValueAsDouble("q"); }), "conf: Key q does not exist.");
}

TEST(ConfigFile, HugeFiles) {
    Config big(writeFile("big.txt", "k=" + std::string(10 * 1024 * 1024, 'x') + "\n"));
    EXPECT_EQ(big.getValue("k").size(), 10u * 1024 * 1024);
}

TEST(CommandLine, GrammarAndFirstValueWins) {
    Args args({"prog", "-a=b=c", "-MODEL=X.xml", "--seed=5", "-a=other"});
    Config config(args.argc(), args.argv());
    EXPECT_EQ(config.getValue("a"), "b=c");
    EXPECT_EQ(config.getValue("model"), "X.xml");
    EXPECT_TRUE(config.existsKey("-seed"));
    EXPECT_FALSE(config.existsKey("seed"));
    Args range({"prog", "-a=1", "bad", "-b=2"});
    Config part(range.argc(), range.argv(), 3, 3);
    EXPECT_EQ(part.getValue("b"), "2");
    EXPECT_FALSE(part.existsKey("a"));
}

TEST(CommandLine, RefusesMalformedArgumentsAfterStoringTheEarlierOnes) {
    struct Case { const char* argument; const char* message; } cases[] = {
        {"-x", "Invalid command line parameter."},  {"--help", "Invalid command line parameter."},
        {"-=x", "Invalid command line parameter."}, {"=x", "Invalid command line parameter."},
        {"a=1", "Invalid command line parameter."}, {"-seed=", "No value for key."},
    };
    for (const auto& c : cases) {
        Args args({"prog", "-kept=1", c.argument});
        Config config;
        EXPECT_EQ(failureOf([&] { config.loadConfigFromCommandLine(args.argc(), args.argv(), false); }),
                  std::string("conf: ") + c.message) << c.argument;
        EXPECT_TRUE(config.existsKey("kept"));
    }
}
