// Multi-class traces: the readers, the writer, the moment divisors, the
// guarded small-trace limits, and the program's end on a file it can't open.
#include <unistd.h>

#include <cstdio>

#include "support/test_support.h"
#include "traces/trace_mc.h"

using namespace velmora;
using namespace velmora_test;

namespace {

std::vector<std::pair<std::string, double>> contentsOf(MCTrace& trace) {
    std::vector<std::pair<std::string, double>> v;
    for (unsigned i = 0; i < trace.getSize(); ++i)
        v.emplace_back(trace.getElement(i).elementClass, trace.getElement(i).value);
    return v;
}

// A 16-byte request record: kind at 0, addressing at 3, big-endian stamp at 12.
std::string record(char kind, char addressing, std::uint32_t stamp) {
    std::string r(16, 'z');
    r[0] = kind;
    r[3] = addressing;
    for (int b = 0; b < 4; ++b) r[12 + b] = static_cast<char>(stamp >> (24 - 8 * b));
    return r;
}

}  // namespace

TEST(MCTrace, TextFilesReadAndWriteClassAndValue) {
    // The count line is skipped; a line of blanks alone too.
    MCTrace trace(writeFile("mc.txt", "99 count\n7.5\na 1.5 junk\n\n# 3\n   \n #x 4\n"), false);
    EXPECT_EQ(contentsOf(trace),
              (std::vector<std::pair<std::string, double>>{{"class1", 7.5}, {"a", 1.5}, {"#x", 4}}));
    trace.load(writeFile("empty.txt", ""), false);
    EXPECT_EQ(messageOf([&] { trace.getElement(0); }, "trace_mc"), "Invalid trace element.");

    trace.addElement({1234.56789, "b"});
    trace.save(tempPath("mc_saved.txt"));  // the round trip of 20000 values is in the MMAP fitting tests
    EXPECT_EQ(readFile(tempPath("mc_saved.txt")), "1\nb 1234.57\n");
}

TEST(MCTrace, BinaryRecordsGiveClassesAndStampDifferences) {
    // After a stamp of 0 the value is 0 again; 0xFFFFFFF0 to 0x10 wraps to 32.
    const std::string bytes = record('r', 'L', 100) + record('W', 'S', 160) + record('R', 'C', 0) +
                              record('w', 'L', 50) + record('w', 'C', 0xFFFFFFF0u) + record('r', 'S', 0x10) +
                              record('x', 'Q', 0x20);
    const std::vector<std::pair<std::string, double>> expected = {{"rLBA", 0},         {"wSCSI", 60},
                                                                  {"rCHS", 4294967136.0}, {"wLBA", 0},
                                                                  {"wCHS", 4294967230.0}, {"rSCSI", 32},
                                                                  {"??", 16}};
    MCTrace trace(writeFile("mc.bin", bytes), true);
    EXPECT_EQ(contentsOf(trace), expected);
    // A partial record at the end has no stamp: dropped, with a warning.
    testing::internal::CaptureStdout();
    trace.load(writeFile("mc_cut.bin", bytes + record('r', 'L', 7).substr(0, 9)), true);
    EXPECT_NE(testing::internal::GetCapturedStdout().find("Incomplete record of 9 bytes"), std::string::npos);
    EXPECT_EQ(contentsOf(trace), expected);
}

TEST(MCTrace, MomentsDivideAllClassesByTheTraceLength) {
    // 1, 2, 3, 4 of classes a, b, a, b: moments over 1, 2, 3 divided by 3;
    // joint moments over the pairs (1, 2), (2, 3), by the first's class, / 2.
    MCTrace trace;
    for (int i = 1; i <= 4; ++i) trace.addElement({double(i), i % 2 ? "a" : "b"});
    auto m = trace.getMoments(1);
    EXPECT_EQ(m["a"], std::vector<double>({2.0 / 3, 4.0 / 3}));
    EXPECT_EQ(m["b"], std::vector<double>({1.0 / 3, 2.0 / 3}));
    auto j = trace.getJointMoments(1);
    EXPECT_EQ(j["a"], std::vector<std::vector<double>>({{0.5, 1}, {0.5, 1}}));
    EXPECT_EQ(j["ALL"], std::vector<std::vector<double>>({{1, 2.5}, {1.5, 4}}));

    MCTrace small;
    EXPECT_EQ(messageOf([&] { small.getMoments(1); }, "trace_mc"), "Moments need at least one trace element.");
    small.addElement({1.0, "a"});
    EXPECT_TRUE(std::isnan(small.getMoments(1)["ALL"][0]));  // 0 / 0, as the formulas give
    EXPECT_EQ(messageOf([&] { small.getJointMoments(1); }, "trace_mc"),
              "Joint moments need at least two trace elements.");
    small.addElement({1.0, "ALL"});
    EXPECT_EQ(messageOf([&] { small.getMoments(1); }, "trace_mc"),
              "The class name ALL is reserved for the whole trace.");
}

TEST(MCTraceDeathTest, UnopenableFileEndsTheProgramWithItsLine) {
    // The child sends standard output to standard error, where the test reads.
    const auto toStderr = [] { std::fflush(stdout); dup2(STDERR_FILENO, STDOUT_FILENO); };
    EXPECT_EXIT({ toStderr(); MCTrace("/nonexistent/mc.bin", true); }, testing::ExitedWithCode(255),
                "^error: couldn't open /nonexistent/mc.bin\n$");
    EXPECT_EXIT({ toStderr(); MCTrace().save("/nonexistent/out.txt"); }, testing::ExitedWithCode(255),
                "^error: couldn't open /nonexistent/out.txt\n$");
}
