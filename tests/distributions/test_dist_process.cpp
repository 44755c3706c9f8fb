// The distribution as a process: moments, autocorrelations, text forms read
// back, summary, the tabulated distribution and every failure.
#include "config/conf.h"
#include "dist_helpers.h"
#include "distributions/dist.h"
#include "distributions/dist_beta.h"
#include "distributions/dist_exponential.h"
#include "distributions/dist_gamma.h"
#include "distributions/dist_normal.h"
#include "distributions/dist_process.h"
#include "numerics/matrix.h"

using namespace velmora;
using namespace disttest;

TEST(DistProcess, MomentsStartWithOneAtOrderZeroAndAutocorrelationsVanish) {
    DistProcess exponential(new Exponential(1));
    EXPECT_EQ(exponential.getMoments(0, 2), (std::vector<double>{1, 1, 2}));
    EXPECT_EQ(DistProcess(new Exponential(2)).getMoments(2, 3), (std::vector<double>{0.5, 0.75}));
    // The normal family has eight moments: order 9 is left out.
    EXPECT_EQ(DistProcess(new Normal(0, 1)).getMoments(1, 9).size(), 8u);
    EXPECT_EQ(exponential.getAutocorrelations(0, 3), (std::vector<double>{1, 0, 0, 0}));
    EXPECT_EQ(exponential.getAutocorrelations(2, 3), (std::vector<double>{0, 0}));
    EXPECT_TRUE(exponential.getAutocorrelations(3, 2).empty());
}

TEST(DistProcess, SavedTextsHaveTheirEnvelopeAndReadBack) {
    DistProcess p(new Exponential(2));
    const std::string text = p.toString(FORMAT_CONFIG);
    EXPECT_EQ(text, "model = distribution\ndistribution = exponential\nrate = 2\n\n");
    const std::string path = tempPath("dist_process.conf");
    p.save(path, FORMAT_CONFIG);
    EXPECT_EQ(readFile(path), text);
    DistProcess back(path, FORMAT_CONFIG);
    EXPECT_EQ(back.toString(FORMAT_CONFIG), text);

    DistProcess g(new Gamma(2, 1.5));
    const std::string xmlPath = tempPath("dist_process.xml");
    g.save(xmlPath, FORMAT_XML);
    DistProcess xmlBack(xmlPath, FORMAT_XML);
    EXPECT_EQ(xmlBack.toString(FORMAT_XML), g.toString(FORMAT_XML));

    // The example model, and a key-value file without the model key.
    XMLConfig doc(std::string(VELMORA_SOURCE_DIR) + "/examples/dist.xml");
    DistProcess example(&doc);
    ASSERT_EQ(example.getDistribution()->getType(), DIST_GAMMA);
    EXPECT_EQ(example.getMoments(1, 1), (std::vector<double>{3}));
    DistProcess bare(writeFile("nomodel.conf", "distribution = normal\nmean = 1\nvar = 4\n"), FORMAT_CONFIG);
    EXPECT_DOUBLE_EQ(bare.getMoments(2, 2)[0], 5.0);
}

TEST(DistProcess, SummaryHoldsTextMeanAndVarianceInFixedNotation) {
    DistProcess p(new Exponential(2));
    EXPECT_EQ(p.getSummary(),
              "Distribution: \n=============\n"
              "model = distribution\ndistribution = exponential\nrate = 2\n\n\n"
              "mean = 0.500000\nvariance = 0.250000\n");
    EXPECT_EQ(p.getSummary(3, 3, 3), p.getSummary());
}

TEST(DistProcess, DistributionGridStartsAboveZeroForExponentialOnly) {
    DistProcess p(new Exponential(1));
    Distribution fromZero = p.computeDistribution(0, 10);
    ASSERT_GE(fromZero.cdf.size(), 1000u);
    EXPECT_LE(fromZero.cdf.size(), 1001u);
    EXPECT_EQ(fromZero.cdf.front().first, 0.0001);
    EXPECT_NEAR(fromZero.cdf[1].first - fromZero.cdf[0].first, (10 - 0.0001) / 1000, 1e-12);
    EXPECT_NEAR(fromZero.pdf[0].second, std::exp(-0.0001), 1e-15);
    EXPECT_NEAR(fromZero.ccdf[0].second, std::exp(-0.0001), 1e-15);
    EXPECT_EQ(p.computeDistribution(1, 10).cdf.front().first, 1.0);
    DistProcess gamma(new Gamma(2, 1));
    EXPECT_EQ(gamma.computeDistribution(0, 10).pdf.front().first, 0.0);
    // Left to the implementer: equal bounds give one point, a NaN bound none.
    EXPECT_EQ(gamma.computeDistribution(2, 2).pdf.size(), 1u);
    EXPECT_TRUE(gamma.computeDistribution(0, std::nan("")).pdf.empty());
    // A family without a distribution function gives (0, 0) pairs.
    Distribution beta = DistProcess(new Beta(2, 3)).computeDistribution(0, 1);
    ASSERT_TRUE(beta.cdf.size() == beta.pdf.size() && beta.ccdf.size() == beta.pdf.size());
    for (std::size_t i = 0; i < beta.cdf.size(); ++i)
        EXPECT_TRUE(beta.cdf[i] == std::make_pair(0.0, 0.0) && beta.ccdf[i] == beta.cdf[i]) << i;
    EXPECT_GT(beta.pdf[500].second, 0);
}

TEST(DistProcess, FailuresCarryTheirMessages) {
    const std::string bad = writeFile("badmodel.conf", "model = arima\ndistribution = exponential\n");
    const std::string empty = writeFile("empty.conf", "model = distribution\n");
    struct Case { std::function<void()> action; const char* expected; } cases[] = {
        {[&] { DistProcess p(bad, FORMAT_CONFIG); }, "Not a distribution."},
        {[&] { DistProcess p(empty, static_cast<format>(2)); }, "Unsupported Format."},
        {[] { DistProcess(new Exponential(1)).save("/nonexistent-dir/x.conf", FORMAT_CONFIG); }, "Cannot open file."},
        {[] { DistProcess(new Exponential(1)).getJointMoments(1, 2); },
         "Computation of Joint Moments not supported for Distribution."},
        {[] { DistProcess(new Exponential(1)).computeDistribution(2, 1); }, "Invalid range for distribution."},
        {[] { DistProcess(new Exponential(1)).getNextRandomVariate(); }, "Initialize Random Number Generation first."},
        // Left to the implementer: a file without "distribution" gives a
        // process without a family, which says so when it is used (one guard for every use).
        {[&] { DistProcess(empty, FORMAT_CONFIG).evalCDF(1); }, "No distribution loaded."},
    };
    for (const Case& c : cases) EXPECT_EQ(failure(c.action), c.expected);
    // A failed load keeps the held family.
    DistProcess p(new Exponential(2));
    Config config(writeFile("badmodel2.conf", "model = map\ndistribution = normal\n"));
    EXPECT_THROW(p.load(&config), Exception);
    EXPECT_EQ(p.getDistribution()->getType(), DIST_EXPONENTIAL);
}
