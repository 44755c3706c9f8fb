// Multi-class traces: the text and binary readers, the text writer, the
// class-wise moments with their divisors, and the failures: the guarded
// small-trace limits throw, a file that can't be opened ends the program.
#include <unistd.h>

#include <cmath>
#include <cstdio>

#include "support/test_support.h"
#include "traces/trace_mc.h"

using namespace velmora;
using namespace velmora_test;

namespace {

std::vector<std::pair<std::string, double>> contentsOf(MCTrace& trace) {
    std::vector<std::pair<std::string, double>> v;
    for (unsigned i = 0; i < trace.getSize(); ++i) v.emplace_back(trace.getElement(i).elementClass, trace.getElement(i).value);
    return v;
}

// A 16-byte request record: kind at 0, addressing at 3, big-endian stamp at 12.
std::string record(char kind, char addressing, std::uint32_t stamp) {
    std::string r(16, 'z');
    r[0] = kind;
    r[3] = addressing;
    for (int b = 0; b < 4; ++b) r[12 + b] = static_cast<char>((stamp >> (24 - 8 * b)) & 0xFF);
    return r;
}

}  // namespace

TEST(MCTrace, TextLinesGiveClassAndValue) {
    const std::string path = writeFile("mc.txt", "99 ignored count\n7.5\na 1.5 junk\n\n# 3\n   \nb 2e3\n #x 4\n");
    MCTrace trace(path, false);
    const std::vector<std::pair<std::string, double>> expected = {
        {"class1", 7.5}, {"a", 1.5}, {"b", 2000}, {"#x", 4}};  // a line of blanks alone is skipped
    EXPECT_EQ(contentsOf(trace), expected);
    // load replaces the contents, also by nothing.
    trace.load(writeFile("empty.txt", ""), false);
    EXPECT_EQ(trace.getSize(), 0u);
    EXPECT_EQ(messageOf([&] { trace.getElement(0); }, "trace_mc"), "Invalid trace element.");
}

TEST(MCTrace, SavedTraceReadsBackWithSixDigits) {
    MCTrace trace;
    for (unsigned i = 0; i < 20000; ++i) trace.addElement(MCTElement{1234.56789 + i, i % 3 ? "a" : "b"});
    const std::string path = tempPath("mc_saved.txt");
    trace.save(path);
    EXPECT_EQ(readFile(path).substr(0, 30), "20000\nb 1234.57\na 1235.57\na 12");
    MCTrace back(path, false);
    ASSERT_EQ(back.getSize(), 20000u);
    EXPECT_EQ(back.getElement(19999).elementClass, "a");
    EXPECT_EQ(back.getElement(19999).value, 21233.6);
}

TEST(MCTrace, BinaryRecordsGiveClassesAndStampDifferences) {
    // Stamps 100, 160, then 0 (its successor gets 0 again), then a clock that
    // wraps: 0xFFFFFFF0 to 0x10 is 32 ticks. Unknown letters stand as "?".
    const std::string bytes = record('r', 'L', 100) + record('W', 'S', 160) + record('R', 'C', 0) +
                              record('w', 'L', 50) + record('w', 'C', 0xFFFFFFF0u) + record('r', 'S', 0x10) +
                              record('x', 'Q', 0x20);
    MCTrace trace(writeFile("mc.bin", bytes), true);
    const std::vector<std::pair<std::string, double>> expected = {
        {"rLBA", 0}, {"wSCSI", 60}, {"rCHS", 4294967136.0}, {"wLBA", 0}, {"wCHS", 4294967230.0}, {"rSCSI", 32}, {"??", 16}};
    EXPECT_EQ(contentsOf(trace), expected);

    // A partial record at the end has no stamp: dropped, with a warning.
    testing::internal::CaptureStdout();
    trace.load(writeFile("mc_cut.bin", bytes + record('r', 'L', 7).substr(0, 9)), true);
    EXPECT_NE(testing::internal::GetCapturedStdout().find("Incomplete record of 9 bytes"), std::string::npos);
    EXPECT_EQ(contentsOf(trace), expected);
}

TEST(MCTrace, MomentsUseOneDivisorForAllClasses) {
    // Two elements: only the first counts, divided by 1; b keeps zeros.
    MCTrace two;
    two.addElement({2.0, "a"});
    two.addElement({3.0, "b"});
    auto m = two.getMoments(2);
    EXPECT_EQ(m["ALL"], std::vector<double>({1, 2, 4}));
    EXPECT_EQ(m["a"], std::vector<double>({1, 2, 4}));
    EXPECT_EQ(m["b"], std::vector<double>({0, 0, 0}));

    // Values 1, 2, 3, 4 of classes a, b, a, b: moments over 1, 2, 3 / 3,
    // joint moments over the pairs (1, 2), (2, 3) / 2, by the first's class.
    MCTrace four;
    for (int i = 1; i <= 4; ++i) four.addElement({double(i), i % 2 ? "a" : "b"});
    m = four.getMoments(1);
    EXPECT_EQ(m["a"], std::vector<double>({2.0 / 3, 4.0 / 3}));
    EXPECT_EQ(m["b"], std::vector<double>({1.0 / 3, 2.0 / 3}));
    auto j = four.getJointMoments(1);
    EXPECT_EQ(j["a"], std::vector<std::vector<double>>({{0.5, 1}, {0.5, 1}}));
    EXPECT_EQ(j["b"], std::vector<std::vector<double>>({{0.5, 1.5}, {1, 3}}));
    EXPECT_EQ(j["ALL"], std::vector<std::vector<double>>({{1, 2.5}, {1.5, 4}}));
}

TEST(MCTrace, SmallTraceLimitsAreGuarded) {
    MCTrace trace;
    EXPECT_EQ(messageOf([&] { trace.getMoments(1); }, "trace_mc"), "Moments need at least one trace element.");
    trace.addElement({1.0, "a"});
    EXPECT_TRUE(std::isnan(trace.getMoments(1)["ALL"][0]));  // 0 / 0, as the formulas give
    EXPECT_EQ(messageOf([&] { trace.getJointMoments(1); }, "trace_mc"), "Joint moments need at least two trace elements.");
    trace.addElement({1.0, "ALL"});
    EXPECT_EQ(messageOf([&] { trace.getMoments(1); }, "trace_mc"), "The class name ALL is reserved for the whole trace.");
}

TEST(MCTraceDeathTest, UnopenableFileEndsTheProgramWithItsLine) {
    // The line goes to standard output; the child sends it to standard error
    // where the death test reads it.
    const auto toStderr = [] { std::fflush(stdout); dup2(STDERR_FILENO, STDOUT_FILENO); };
    EXPECT_EXIT({ toStderr(); MCTrace("/nonexistent/mc.txt", false); }, testing::ExitedWithCode(255),
                "^error: couldn't open /nonexistent/mc.txt\n$");
    EXPECT_EXIT({ toStderr(); MCTrace("/nonexistent/mc.bin", true); }, testing::ExitedWithCode(255),
                "^error: couldn't open /nonexistent/mc.bin\n$");
    EXPECT_EXIT({ toStderr(); MCTrace().save("/nonexistent/out.txt"); }, testing::ExitedWithCode(255),
                "^error: couldn't open /nonexistent/out.txt\n$");
}
