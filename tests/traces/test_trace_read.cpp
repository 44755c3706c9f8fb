// The strict reading of trace files for fitting: each line a finite number
// or blank, anything else refused with the file and the line.
#include "support/test_support.h"
#include "traces/trace_read.h"

using namespace velmora;
using velmora_test::messageOf;
using velmora_test::writeFile;

TEST(TraceRead, BlankLinesCrlfAndAByteOrderMarkAreAccepted) {
    struct Case { const char* text; bool counted; std::vector<double> values; } cases[] = {
        {"\xEF\xBB\xBF" "1.5\r\n2\r\n\r\n  \t\n+3e2\n# note\n-4", false, {1.5, 2, 300, -4}},
        {"3\n1\n2\n", true, {1, 2}},
        {"\n\n", false, {}},
        {"\r", false, {}},
    };
    for (const Case& c : cases) {
        const std::string file = writeFile("read_ok.txt", c.text);
        EXPECT_EQ(read_trace_values(file, c.counted), c.values) << c.text;
    }
}

TEST(TraceRead, WhatIsNoFiniteNumberIsRefusedWithFileAndLine) {
    struct Case { const char* text; const char* line; } cases[] = {
        {"1\n2\nnan\n", ":3: 'nan' is not a finite number"},
        {"1\ninf\n", ":2: 'inf' is not a finite number"},
        {"1,234\n", ":1: '1,234' is not a finite number"},
        {"1\n1e400\n", ":2: '1e400' is not a finite number"},
        {"1\n2 3\n", ":2: '2 3' is not a finite number"},
        {"1\nx\r\n", ":2: 'x' is not a finite number"},
    };
    for (const Case& c : cases) {
        const std::string file = writeFile("read_bad.txt", c.text);
        EXPECT_EQ(messageOf([&] { read_trace_values(file, false); }, "trace_read"), file + c.line);
    }
}

// Bounded whatever the file: a device that never ends, a line without end,
// a file larger than a trace may be (sparse, so it costs no disk).
TEST(TraceRead, FilesThatCannotBeReadInBoundedTimeAreRefusedFirst) {
    EXPECT_EQ(messageOf([] { read_trace_values("/dev/zero", false); }, "trace_read"),
              "/dev/zero: not a regular file.");
    const std::string longLine = writeFile("read_long.txt", std::string(kMaxTraceLine + 1, '1'));
    EXPECT_EQ(messageOf([&] { read_trace_values(longLine, false); }, "trace_read"),
              longLine + ":1: a line longer than 4096 characters.");
    const std::string big = velmora_test::tempPath("read_big.txt");
    ASSERT_EQ(truncate(writeFile("read_big.txt", "").c_str(), static_cast<off_t>(kMaxTraceFileBytes) + 1), 0);
    EXPECT_EQ(messageOf([&] { read_trace_values(big, false); }, "trace_read"),
              big + ": 1073741825 bytes, more than the 1073741824 a trace may hold.");
    std::remove(big.c_str());
}
