// Sample statistics against numpy on the same twenty values, the empirical grid, the summary, the fitters' targets.
#include <cstdio>
#include <cstring>
#include <random>

#include "trace_helpers.h"
#include "traces/trace.h"
#include "traces/trace_summary.h"

using velmora::Distribution;
using velmora::Trace;

using namespace trace_test;

namespace {
// Twenty exponential draws with six significant digits.
const std::vector<double> SAMPLE = {1.36861, 3.60529, 0.948984, 1.16564, 4.43904, 5.38815,  8.24903,
                                    0.135134, 0.91128, 2.04891, 4.85969, 0.212862, 1.46996, 0.764582,
                                    8.56187,  1.63337, 0.564405, 2.19458, 0.419506, 0.471151};
velmora::Matrix row(const std::vector<double>& v) { return velmora::Matrix(v, velmora::MATRIX_ROW); }
}  // namespace

TEST(TraceStatistics, AgreeWithNumpy) {
    Trace trace(SAMPLE);
    // numpy: np.mean(x**k)
    const std::vector<double> m = trace.getMoments(5);
    expectRelative(row(m), row({1.0, 2.4706022, 12.3437218607021, 81.38820349744535, 601.093830153929,
                                4695.182167133566}), 1e-12, "moments");
    EXPECT_EQ(trace.getMoments(2, 4), std::vector<double>(m.begin() + 2, m.end() - 1));
    // numpy: np.var(x, ddof=1)
    EXPECT_NEAR(trace.getVariance(), 6.56825961058659, 1e-11);
    // numpy: np.sum(x[:-1]**i * x[1:]**j) / (n - 1)
    const velmora::Matrix all = trace.getJointMoments(0, 3);
    expectRelative(all, velmora::Matrix({{1.0, 2.5286017894736843, 12.89480757273379, 85.53687029914008},
                                         {2.5758364736842108, 6.439178478224, 35.654667398407355, 245.14135581854657},
                                         {12.98170810259163, 28.365222096440323, 155.7727185114625, 1093.6271239711261},
                                         {85.66628854272172, 158.20150816517108, 801.4142620508719, 5568.767051725375}}),
                   1e-12, "joint moments");
    EXPECT_EQ(trace.getJointMoments(4u), all);
    EXPECT_EQ(trace.getJointMoments(1, 2, 0, 3), all.getSubmatrix(1, 2, 0, 3));  // orders 1-2 by 0-3
    // numpy: np.sum((x[:n-l] - m) * (x[l:] - m)) divided by n, and by (n - l - 1) * variance
    expectRelative(row(trace.getAutocovariances(0, 7)),
                   row({6.23984663005726, -0.06458355916057182, -1.1484369384708542, -1.5710078848540063,
                        1.022793519164352, -0.0823791745432901, -0.8694732272367318, -1.2518965355185538}),
                   1e-12, "autocovariances");
    const std::vector<double> correlations = trace.getAutocorrelations(0, 7);
    expectRelative(row(correlations),
                   row({1.0, -0.010925193952862731, -0.20570171714532512, -0.29897719829806346, 0.2076234456416905,
                        -0.017917156452245193, -0.2036538136631722, -0.3176631786145126}),
                   1e-12, "autocorrelations");
    EXPECT_EQ(trace.getAutocorrelations(3, 3)[0], correlations[3]);
}

TEST(TraceStatistics, DegenerateTracesBadRangesAndLagsBeyondTheLength) {
    Trace trace(SAMPLE);
    EXPECT_TRUE(trace.getMoments(3, 2).empty());
    EXPECT_TRUE(trace.getAutocorrelations(3, 2).empty());
    const std::string range = "trace: Invalid range for joint moments.";
    EXPECT_EQ(failureOf([&] { trace.getJointMoments(2, 1); }), range);
    EXPECT_EQ(failureOf([&] { trace.getJointMoments(0, 1, 3, 2); }), range);
    EXPECT_EQ(failureOf([&] { trace.getJointMoments(0u); }), range);
    EXPECT_EQ(failureOf([&] { trace.saveJointMoments(tempPath("jm0"), 0, ""); }), range);

    Trace constant(std::vector<double>(5, 2.5));
    EXPECT_EQ(constant.getVariance(), 0.0);
    EXPECT_TRUE(std::isnan(constant.getAutocorrelations(1, 1)[0]));

    Trace mixed(std::vector<double>{-3.0, 0.5, -0.25}), empty;
    const std::pair<double (Trace::*)() const, double> extremes[] = {
        {&Trace::getSmallestValue, -3.0}, {&Trace::getLargestValue, 0.5},
        {&Trace::getSmallestValueAbs, 0.25}, {&Trace::getLargestValueAbs, 3.0}};
    for (const auto& e : extremes) {
        EXPECT_EQ((mixed.*e.first)(), e.second);
        EXPECT_EQ(failureOf([&] { (empty.*e.first)(); }), "trace: Invalid trace element.");
    }
    EXPECT_EQ(failureOf([&] { empty.getSummary(); }), "trace: Invalid trace element.");
    EXPECT_TRUE(std::isnan(empty.getMoments(1)[1]));
    // Lags at and beyond the length stay inside.
    std::vector<double> acf = trace.getAutocorrelations(18, 25);
    ASSERT_EQ(acf.size(), 8u);
    // Lag n - 1 has one pair and a divisor of 0: numpy gives the pair's product 2.2033796266806402.
    EXPECT_EQ(acf[1], std::numeric_limits<double>::infinity());
    for (std::size_t i = 2; i < acf.size(); ++i) EXPECT_TRUE(std::isnan(acf[i])) << "lag " << 18 + i;
    std::vector<double> acov = trace.getAutocovariances(19, 21);
    EXPECT_NEAR(acov[0], 2.2033796266806402 / 20, 1e-12);
    EXPECT_TRUE(acov[1] == 0.0 && acov[2] == 0.0);
    // The summary asks for lags up to 5 even of a trace of three values.
    Trace shortTrace(std::vector<double>{1.0, 2.0, 4.0});
    EXPECT_NE(shortTrace.getSummary().find("Autocorrelation at lag 5: nan\n"), std::string::npos);
    unsigned top = std::numeric_limits<unsigned>::max();
    EXPECT_EQ(shortTrace.getAutocovariances(top, top).size(), 1u);
}

TEST(TraceStatistics, DistributionGridIsAnchoredAtMultiplesOfTheWidth) {
    struct Case { std::vector<double> values; double lower, upper, width; std::vector<double> cdf; } cases[] = {
        // 10 / 1 - 0 + 1 is counter 11, the one above the range.
        {{0.0, 5.0, 10.0}, 0.0, 10.0, 1.0, {0, 1. / 3, 1. / 3, 1. / 3, 1. / 3, 1. / 3, 2. / 3, 2. / 3, 2. / 3, 2. / 3, 2. / 3}},
        // Bins [0, 1), [1, 2) of the grid, not [0.5, 1.5): 2.4 lands above.
        {{0.7, 1.2, 2.4}, 0.5, 2.5, 1.0, {0, 1. / 3, 2. / 3}},
        // Two bins for a range of 2.2: 3.05 would go to counter 4 and is counted above.
        {{0.95, 3.05, 0.1, 5.0}, 0.9, 3.1, 1.0, {0.25, 0.5, 0.5}},
        // The cell index cuts toward zero: -0.5 and 0.5 share a counter, and
        // -1.5 lies in the second bin although it is below -1.
        {{-1.5, -0.5, 0.5}, -2.0, 1.0, 1.0, {0, 0, 1. / 3, 1}},
    };
    for (const Case& c : cases) {  // the cdf values at the grid points
        Trace trace(c.values);
        Distribution d = trace.computeDistribution(c.lower, c.upper, c.width);
        std::size_t b = c.cdf.size() - 1;
        ASSERT_TRUE(d.cdf.size() == b + 1 && d.ccdf.size() == b + 1 && d.pdf.size() == 2 * b + 1);
        for (std::size_t i = 0; i <= b; ++i) {
            EXPECT_NEAR(d.cdf[i].second, c.cdf[i], 1e-15) << i;
            EXPECT_NEAR(d.ccdf[i].second, 1 - c.cdf[i], 1e-15) << i;
            EXPECT_NEAR(d.cdf[i].first, c.lower + i * c.width, 1e-15) << i;
        }
    }
    Trace trace({0.0, 5.0, 10.0});
    Distribution d = trace.computeDistribution(0, 10, 1);
    EXPECT_EQ(d.pdf[0], std::make_pair(0.0, 1.0 / 3));
    EXPECT_EQ(d.pdf[1], std::make_pair(1.0, 1.0 / 3));
    EXPECT_EQ(d.pdf[10], std::make_pair(5.0, 1.0 / 3));
    EXPECT_EQ(d.pdf[20], std::make_pair(10.0, 0.0));
    EXPECT_EQ(trace.computeDistribution(0, 1).cdf.size(), 26u);  // width 0.04

    EXPECT_EQ(failureOf([&] { trace.computeDistribution(0, 1, 0); }), "trace: Invalid bin width.");
    EXPECT_EQ(failureOf([&] { trace.computeDistribution(0, 1e8); }), "trace: Invalid bin width.");
    // A constant trace spans no range: no bins, and no failure.
    Trace constant(std::vector<double>(4, 3.0));
    EXPECT_EQ(constant.computeDistribution(3, 3, 0).cdf.size(), 1u);
    EXPECT_NE(constant.getSummary().find("t\t\tpdf\t\tcdf\n=\t\t===\t\t===\n3.00000\t\t"), std::string::npos);
    // Single points use the unit grid: 2.2 lies in [2, 3), above the range 1.5 to 2.5.
    Trace five({1.0, 1.5, 2.2, 3.0, -4.0});
    EXPECT_TRUE(five.evalCDF(-0.5) == 0.0 && five.evalPDF(-0.5) == 0.0);
    EXPECT_DOUBLE_EQ(five.evalCDF(2.5), 3.0 / 5);
    EXPECT_DOUBLE_EQ(five.evalCCDF(2.5), 2.0 / 5);
    EXPECT_DOUBLE_EQ(five.evalPDF(2.5), 1.0 / 5);
}

TEST(TraceStatistics, SummaryMatchesTheStoredText) {
    // Written by tests/traces/data/make_summary_expected.py from numpy figures.
    std::string expected = readFile(std::string(VELMORA_SOURCE_DIR) + "/tests/traces/data/summary_expected.txt");
    ASSERT_GT(expected.size(), 1000u);
    Trace trace(SAMPLE);
    EXPECT_EQ(trace.getSummary(), expected);
    EXPECT_EQ(trace.getSummary(5, 3, 5), expected);
}

TEST(TraceStatistics, SummaryFiguresAreTheSingleStatisticsToTheLastBit) {
    auto sameBits = [](double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; };
    // Five thousand values of both signs, and a value whose square by the
    // library's pow differs from 2.759 * 2.759 in the last bit (glibc 2.36).
    std::mt19937_64 engine(11);
    std::lognormal_distribution<double> spread(0.0, 1.5);
    std::vector<double> wide(5000);
    for (double& v : wide) v = spread(engine) - 2;
    struct Case { std::vector<double> values; unsigned moments, joint, lags; };
    const Case cases[] = {{SAMPLE, 5, 3, 5}, {wide, 5, 3, 5}, {wide, 2, 4, 1}, {{1.0, 2.0, 4.0}, 5, 3, 5},
                           {{2.759, 2.759}, 2, 2, 1}};
    for (const Case& c : cases) {
        Trace trace(c.values);
        velmora::SummaryFigures f = velmora::summaryFigures(c.values, c.moments, c.joint, c.lags);
        SCOPED_TRACE(c.values.size());
        EXPECT_TRUE(sameBits(f.smallest, trace.getSmallestValue()));
        EXPECT_TRUE(sameBits(f.largest, trace.getLargestValue()));
        EXPECT_EQ(f.moments, trace.getMoments(c.moments));
        EXPECT_TRUE(sameBits(f.variance, trace.getVariance()));
        EXPECT_TRUE(f.jointMoments == trace.getJointMoments(0, c.joint));
        ASSERT_TRUE(f.autocovariances.size() == c.lags + 1u && f.autocorrelations.size() == c.lags + 1u);
        for (unsigned l = 0; l <= c.lags; ++l) {
            EXPECT_TRUE(sameBits(f.autocovariances[l], trace.getAutocovariances(l, l)[0])) << l;
            EXPECT_TRUE(sameBits(f.autocorrelations[l], trace.getAutocorrelations(l, l)[0])) << l;
        }
    }
}

TEST(TraceStatistics, TargetFilesAndWeights) {
    Trace trace(SAMPLE);
    std::string file = tempPath("target"), weights = tempPath("weights");
    // Figures formatted from numpy.
    trace.saveMoments(file, 3, weights);
    EXPECT_EQ(readFile(file), "3\n2.4706\n12.3437\n81.3882\n");
    EXPECT_EQ(readFile(weights), "3\n0.40476\n0.0810128\n0.0122868\n");
    trace.saveJointMoments(file, 2, weights);
    EXPECT_EQ(readFile(file), "2\n2\n6.439178478 35.6546674 \n28.3652221 155.7727185 \n");
    EXPECT_EQ(readFile(weights), "2\n2\n0.155299 0.0280468 \n0.0352544 0.00641961 \n");
    trace.saveAutocorrelations(file, 3, weights);
    EXPECT_EQ(readFile(file), "3\n-0.0109252\n-0.205702\n-0.298977\n");
    EXPECT_EQ(readFile(weights), "3\n1\n1\n1\n");
    // Without a weights file only the target is written.
    std::remove(weights.c_str());
    trace.saveMoments(file, 1, "");
    EXPECT_EQ(readFile(file), "1\n2.4706\n");
    EXPECT_FALSE(std::ifstream(weights).good());
    // The target stays written when the weights file fails.
    EXPECT_EQ(failureOf([&] { trace.saveAutocorrelations(file, 1, ::testing::TempDir()); }),
              "trace: Cannot open file.");
    EXPECT_EQ(readFile(file), "1\n-0.0109252\n");
    EXPECT_EQ(failureOf([&] { trace.saveMoments(::testing::TempDir(), 1, ""); }), "trace: Cannot open file.");
}
