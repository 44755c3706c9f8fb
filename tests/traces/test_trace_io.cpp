// Trace storage: file layouts, reading rules, loading, replay, failures, and number text equal to the streams'.
#include <cfloat>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>

#include "config/conf.h"
#include "core/misc_string.h"
#include "trace_helpers.h"
#include "traces/trace.h"

using velmora::Trace;
using namespace trace_test;

TEST(Trace, SavedFilesKeepSixDigitsAndReadBackInBothLayouts) {
    std::vector<double> values = {1234.56789, 0.0, -2.5, 1e-7, 3.14159265358979, -1.0e22, 123456789.0, 6.02214076e23};
    const std::string text = "1234.57\n0\n-2.5\n1e-07\n3.14159\n-1e+22\n1.23457e+08\n6.02214e+23\n";
    for (bool counted : {false, true}) {
        std::string path = tempPath(counted ? "counted" : "plain");
        Trace(values).save(path, counted);
        EXPECT_EQ(readFile(path), (counted ? "8\n" : "") + text);
        Trace back(path, counted);
        ASSERT_EQ(back.getSize(), values.size());
        EXPECT_EQ(back.getElement(0), 1234.57);
        for (std::size_t i = 0; i < values.size(); ++i)
            EXPECT_NEAR(back.getElement(i), values[i], 5e-6 * std::fabs(values[i])) << i;
    }
    // A counted empty trace is the single line 0.
    std::string path = tempPath("empty");
    Trace().save(path, true);
    EXPECT_EQ(readFile(path), "0\n");
    EXPECT_EQ(Trace(path, true).getSize(), 0u);
    EXPECT_EQ(Trace(std::vector<double>{1, 2.5}).toString(std::string(", ")), "1, 2.5, ");
}

TEST(Trace, ReadingRulesForLinesAndLayouts) {
    struct Case { const char* text; bool counted; std::vector<double> expected; } cases[] = {
        {"3.5 abc\n# 3.5\n # 3.5\n", false, {3.5, 0.0}},
        {"\n\n2\n\n", false, {2.0}},
        {"1\n2\n3\n", true, {2.0, 3.0}},             // a plain file loses its first value
        {"3\n1\n2\n3\n", false, {3.0, 1.0, 2.0, 3.0}},  // the count read as a value
        {"# comment\n3\n5\n6\n", true, {3.0, 5.0, 6.0}},
        {"99\n7\n", true, {7.0}},                     // a wrong count does no harm
        {"", true, {}},
        {"1\n2", false, {1.0, 2.0}},                  // no line feed at the end
        {"   \n", false, {0.0}},                      // blanks alone read as 0
        // The number forms themselves are covered by NumberReadingEqualsStreamExtraction.
        {"\t7 8\n1e3x\n1e400\n", false, {7.0, 1000.0, std::numeric_limits<double>::max()}},
        {"2.5\r\n#x\r\n", false, {2.5}},
    };
    for (const Case& c : cases) {
        Trace trace(writeFile("rules", c.text), c.counted);
        EXPECT_EQ(contentsOf(trace), c.expected) << "text: " << c.text << " counted: " << c.counted;
    }
}

TEST(Trace, LoadFromConfiguration) {
    const std::string path = writeFile("conf", "2\n10\n20\n");
    auto load = [&](std::vector<std::pair<std::string, std::string>> entries) {
        velmora::Config config;
        for (const auto& e : entries) config.setValue(e.first, e.second == "<path>" ? path : e.second, true);
        Trace trace(&config);
        return contentsOf(trace);
    };
    EXPECT_EQ(load({{"trace", "<path>"}}), (std::vector<double>{2, 10, 20}));
    EXPECT_EQ(load({{"model", "trace"}, {"trace", "<path>"}, {"traceformat", "1"}}), (std::vector<double>{10, 20}));
    // Only the text "1" selects the counted layout.
    EXPECT_EQ(load({{"trace", "<path>"}, {"traceformat", "true"}}).size(), 3u);
    EXPECT_EQ(failureOf([&] { load({{"model", "Trace"}, {"trace", "<path>"}}); }), "trace: Not a Trace.");
    EXPECT_EQ(failureOf([&] { load({}); }), "trace: No trace data given.");
}

TEST(Trace, ReplayIsACursorThatOnlyInitializationResetsAndFailures) {
    Trace trace(std::vector<double>{1.0, 2.0});
    EXPECT_EQ(trace.getProcessDescription(), "Trace");
    EXPECT_EQ(failureOf([&] { trace.getNextRandomVariate(); }), "trace: Initialize Random Number Generation first.");
    trace.initRandomNumberGeneration(99);
    EXPECT_EQ(trace.getNextRandomVariate(), 1.0);
    trace.appendElement(3.0);
    EXPECT_EQ(trace.getNextRandomVariate(), 2.0);
    EXPECT_EQ(trace.getNextRandomVariate(), 3.0);
    EXPECT_EQ(failureOf([&] { trace.getNextRandomVariate(); }), "trace: End of trace reached.");
    trace.initRandomNumberGeneration(0);
    EXPECT_EQ(trace.getNextRandomVariate(), 1.0);
    EXPECT_EQ(failureOf([&] { trace.getElement(3); }), "trace: Invalid trace element.");
    EXPECT_EQ(failureOf([&] { trace.computeLikelihood(&trace); }), "trace: Not implemented.");
    EXPECT_EQ(failureOf([&] { trace.save(::testing::TempDir(), false); }), "trace: Cannot open file.");
    // The old contents go even when the file cannot be opened.
    EXPECT_EQ(failureOf([&] { trace.load(tempPath("does/not/exist"), false); }), "trace: Cannot open file.");
    EXPECT_EQ(trace.getSize(), 0u);
    trace.initRandomNumberGeneration(1);
    EXPECT_EQ(failureOf([&] { trace.getNextRandomVariate(); }), "trace: End of trace reached.");
}

// Byte for byte over fixed and exponent forms, signs, zeros, subnormals, extremes, round-ups and non-finites.
TEST(Trace, NumberTextEqualsStreamInsertion) {
    std::vector<double> values = {0.0, -0.0, 1.0, -1.0, 0.1, 1e-4, 1e-5, 9.999995e-5, 9.99999e-5, 999999.4, 999999.5,
                                  1e5, 1e6, -1e6, 100000.5, 100001.5, 0.000099999949, 0.00012345649,
                                  123456.5, 1234567.0, 1e15, 1e16, 1e100, -1e-100, DBL_MAX, -DBL_MAX, DBL_MIN,
                                  4.9406564584124654e-324, 1e-320, 0.5, 2.5, 1234.56789, 3.0000005,
                                  HUGE_VAL, -HUGE_VAL, NAN, -NAN};
    std::mt19937_64 bits(12345);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    std::uniform_int_distribution<int> exponent(-30, 30);
    for (int i = 0; i < 100000; ++i) {
        values.push_back(unit(bits) * std::pow(10.0, exponent(bits)));
        std::uint64_t raw = bits();
        values.push_back(0.0);
        std::memcpy(&values.back(), &raw, sizeof raw);
        values.push_back(std::round(unit(bits) * 1e7) / 10.0 + 0.05);  // on the rounding edges of six digits
    }
    std::ostringstream expected;
    for (double v : values) expected << v << '\n';
    EXPECT_EQ(Trace(values).toString(velmora::FORMAT_CONFIG), expected.str());
    std::string path = tempPath("writer");
    Trace(values).save(path, true);
    EXPECT_EQ(readFile(path), std::to_string(values.size()) + "\n" + expected.str());
}

// The reader must give what toDouble gives for every line, to the bit.
TEST(Trace, NumberReadingEqualsStreamExtraction) {
    std::vector<std::string> lines = {
        "0", "-0", "007", "1.", ".5", "-.5", "-", ".", "+.5", "+-1", "--1", "1e", "1e+", "1e-", "1E5", "1e+05",
        "2e-324", "3e-324", "1e-310", "1e-400", "1e308", "1.8e308", "-1.8e308", "0.1e1.5", "12abc", "1,5", "1 2",
        "\v\f 4", "0x1p3", "infinity", "-nan", "1e0000000000000000000001", "123456789012345678901234567890",
        "0.000000000000000000000000001", "+0x1p3", "-0x1p3", "+", "++5", "1e-5", "1ex", "1.e", "1e5.3", "-.e1",
        "2.4703282292062327e-324", "2.4703282292062328e-324", "1.7976931348623158e308", "1.7976931348623159e308",
        "-1e-400", "1e99999", "2.2250738585072011e-308", "\r8", "1d5"};
    std::mt19937_64 bits(777);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    std::uniform_int_distribution<int> exponent(-300, 300), digits(1, 17);
    char text[64];
    for (int i = 0; i < 50000; ++i) {
        double v = unit(bits) * std::pow(10.0, exponent(bits));
        std::snprintf(text, sizeof text, "%.*g", digits(bits), v);
        lines.push_back(text);
        std::snprintf(text, sizeof text, "%.*f", digits(bits), v / std::pow(10.0, exponent(bits) / 10));
        lines.push_back(text);
    }
    std::string file;
    for (const std::string& line : lines) file += line + "\n";
    Trace trace(writeFile("reader", file), false);
    ASSERT_EQ(trace.getSize(), lines.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        double expected = velmora::toDouble(lines[i]), got = trace.getElement(static_cast<unsigned>(i));
        EXPECT_EQ(std::memcmp(&got, &expected, sizeof got), 0) << "line \"" << lines[i] << "\": " << got;
    }
}
