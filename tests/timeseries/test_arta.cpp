#include "config/conf.h"
#include "distributions/dist.h"
#include "distributions/dist_exponential.h"
#include "distributions/dist_gamma.h"
#include "distributions/dist_normal.h"
#include "distributions/dist_uniform.h"
#include "numerics/matrix.h"
#include "timeseries/arima.h"
#include "timeseries/arta.h"
#include "support/test_support.h"
#include "traces/trace.h"

using namespace velmora;
using namespace velmora_test;

TEST(ARTA, DescriptionNamesPAndOnlyANonZeroQ) {
    EXPECT_EQ(ARTA(new Normal(0, 1), {0.5, 0.2}, 0.0, 1.0).getProcessDescription(), "ARTA(2)");
    EXPECT_EQ(ARTA(new Normal(0, 1), {0.5, 0.2}, {0.3}, 0.0, 1.0).getProcessDescription(), "ARTA(2,1)");
    // A single 0 in key-value form is one AR coefficient of value 0.
    ARTA zero(writeFile("arta_zero.conf", "model = arta\ndistribution = exponential\nar = 0\n"), FORMAT_CONFIG);
    EXPECT_EQ(zero.getOrder(), (std::vector<unsigned>{1, 0}));
    EXPECT_EQ(zero.getProcessDescription(), "ARTA(1)");
}

TEST(ARTA, BothTextsHaveTheirLayoutsAndReadBack) {
    ARTA a(new Gamma(2, 1.5), {0.5, 0.2}, {0.3}, 1.0, 2.0);
    const std::string text = a.toString(FORMAT_CONFIG);
    // The base process has unit variance whatever deviation is stated.
    EXPECT_NEAR(a.getBaseProcess()->getAutocovariance(0), 1.0, 1e-12);
    std::ostringstream variance;
    variance << a.getBaseProcess()->getVariance();
    EXPECT_EQ(text, "model = arta\nclass = ARTA\ndistribution = gamma\nalpha = 2.000000\nbeta = 1.500000\n\n"
                    "order = 2, 1\nar = 0.5 0.2 \nma = 0.3 \nar_mean = 1\nar_variance = " + variance.str() + "\n");
    const std::string path = tempPath("arta.conf");
    a.save(path, FORMAT_CONFIG);
    ARTA back(path, FORMAT_CONFIG);
    EXPECT_EQ(back.toString(FORMAT_CONFIG), text);
    EXPECT_NEAR(back.getBaseProcess()->getAutocovariance(0), 1.0, 1e-5);
    // Without MA terms there is no "ma" line; p = 0 still writes "ar = ".
    EXPECT_EQ(ARTA(new Exponential(2), {}, 0.0, 1.0).toString(FORMAT_CONFIG),
              "model = arta\nclass = ARTA\ndistribution = exponential\nrate = 2\n\n"
              "order = 0, 0\nar = \nar_mean = 0\nar_variance = 1\n");
    // The XML text nests the base process first, inside the file's envelope.
    const std::string xml = a.toString(FORMAT_XML);
    EXPECT_EQ(xml.substr(0, 14), "<arta>\n<arima>");
    EXPECT_EQ(xml.substr(xml.size() - 16), "</dist>\n</arta>\n");
    a.save(path + ".xml", FORMAT_XML);
    EXPECT_EQ(ARTA(path + ".xml", FORMAT_XML).toString(FORMAT_XML), xml);
}

TEST(ARTA, ReloadReplacesBothParts) {
    ARTA a(new Gamma(2, 1.5), {0.5, 0.2}, {0.3}, 1.0, 2.0);
    Config config(writeFile("arta_reload.conf", "distribution = uniform\nar = 0.4\nar_mean = 0.5\n"));
    a.load(&config);
    EXPECT_EQ(a.getDistribution()->getType(), DIST_UNIFORM);
    EXPECT_EQ(a.getOrder(), (std::vector<unsigned>{1, 0}));
    EXPECT_EQ(a.getBaseProcess()->getMean(), 0.5);
    EXPECT_NEAR(a.getBaseProcess()->getVariance(), 1 - 0.4 * 0.4, 1e-15);
}

TEST(ARTA, SummaryListsMarginalBaseAndLagsZeroToLags) {
    ARTA a(new Normal(0, 1), {0.5}, 0.0, 1.0);
    EXPECT_EQ(a.getSummary(0, 0, 2),
              "ARTA statistics:\n========================\nMarginal Distribution:\n----------------------\n"
              "distribution = normal\nmean = 0\nvar = 1\nmean: 0\nvariance: 1\n\n"
              "Base Process:\n----------------\n" + a.getBaseProcess()->getSummary(0, 0, 2) +
                  "\n\nARTA Autocorrelation:\n---------------------\n"
                  "Autocorrelation at lag 0: 1\nAutocorrelation at lag 1: 0.5\nAutocorrelation at lag 2: 0.25\n");
    const std::string standard = a.getSummary();
    EXPECT_NE(standard.find("Autocorrelation at lag 5: 0.03125\n"), std::string::npos);
    EXPECT_EQ(standard.find("Autocorrelation at lag 6"), std::string::npos);
}

TEST(ARTA, DistributionTableWalksHundredStepsFromARaisedExponentialBound) {
    ARTA a(new Exponential(1), {0.5}, 0.0, 1.0);
    Distribution d = a.computeDistribution(0, 10);
    ASSERT_GE(d.cdf.size(), 100u);
    EXPECT_LE(d.cdf.size(), 101u);
    EXPECT_EQ(d.cdf[0].first, 0.0001);
    EXPECT_EQ(d.cdf[1].first, 0.0001 + (10 - 0.0001) / 100);
    EXPECT_EQ(a.computeDistribution(1, 10).cdf[0].first, 1.0);
}

TEST(ARTA, JointMomentsOfNeighboursAreIndexedByExponents) {
    ARTA a(new Exponential(1), {0.5}, 0.0, 1.0);
    Matrix m = a.getJointMoments(1, 2);
    ASSERT_TRUE(m.getNumberRows() == 2u && m.getNumberCols() == 2u);
    Exponential e(1);
    EXPECT_EQ(m(0, 1), arta_process_compute_autocorrelation_joint_moments(&e, 0.5, 1, 2));
    EXPECT_EQ(m(1, 0), arta_process_compute_autocorrelation_joint_moments(&e, 0.5, 2, 1));
    // E[X1 X2] = rho_X var + mean^2.
    EXPECT_NEAR(m(0, 0), a.getAutocorrelations(1, 1)[0] + 1.0, 1e-12);
}

TEST(ARTA, FailuresCarryTheirMessages) {
    const std::string mapModel = writeFile("arta_map.conf", "model = map\ndistribution = exponential\n");
    const std::string noMarginal = writeFile("arta_nomarginal.conf", "model = arta\nar = 0.5\n");
    auto xml = [](const std::string& text) { return ARTA(writeFile("arta_bad.xml", text), FORMAT_XML); };
    ARTA a(new Exponential(1), {0.5}, 0.0, 1.0);
    const std::pair<std::function<void()>, const char*> cases[] = {
        {[&] { ARTA b(mapModel, FORMAT_CONFIG); }, "arta: Not an ARTA model."},
        {[&] { xml("<model><arta></arta></model>"); }, "arta: Not an ARTA model."},
        {[&] { xml("<velmora><arima></arima></velmora>"); }, "arta: Not an ARTA model."},
        {[&] { xml("<velmora><arta><dist></dist></arta></velmora>"); }, "arta: Invalid ARTA model."},
        {[&] { xml("<velmora><arta><arima><ar>0.5</ar></arima></arta></velmora>"); }, "arta: Invalid ARTA model."},
        {[&] { ARTA b(mapModel, static_cast<format>(2)); }, "arta: Format not supported!"},
        {[&] { a.toString(static_cast<format>(2)); }, "arta: Output format not supported for ARTA models."},
        {[&] { a.save("/nonexistent-dir/a.xml", FORMAT_XML); }, "arta: Cannot open file."},
        {[&] { Trace t; a.computeLikelihood(&t); }, "arta: Not implemented."},
        {[&] { a.computeDistribution(1, 0); }, "arta: Invalid range for distribution."},
        {[&] { a.getNextRandomVariate(); }, "arta: Initialize Random Number Generation first."},
        // Left to the implementer: a key-value model without "distribution" loads with no marginal, reported later.
        {[&] { ARTA b(noMarginal, FORMAT_CONFIG); b.getAutocorrelations(1, 2); }, "arta: No marginal distribution."},
        {[&] { ARTA b(noMarginal, FORMAT_CONFIG); b.getSummary(); }, "arta: No marginal distribution."},
        {[&] { ARTA b(noMarginal, FORMAT_CONFIG); b.initRandomNumberGeneration(1); b.getNextRandomVariate(); },
         "arta: No marginal distribution."},
        // Left to the implementer: a reversed range of joint moments.
        {[&] { a.getJointMoments(2, 1); }, "arta: Invalid range of joint moments."},
    };
    for (const auto& c : cases) EXPECT_EQ(failureOf(c.first), c.second);
}

// Marginals whose transforms once gave no number after minutes, or ran the
// integral to 2^30 evaluations; and a base that can't be normalised.
TEST(ARTA, ExtremeGammaMarginalsEndInFiguresOrAMessage) {
    // The Old Faithful waiting times' gamma (shape 27.2); reference: the same expectation by 120 x 120
    // Gauss-Hermite nodes with scipy.stats.gamma.ppf / isf of scipy.stats.norm.cdf / sf.
    ARTA faithful(new Gamma(27.2, 2.6), {0.5}, 0.0, 1.0);
    const std::vector<double> rho = faithful.getAutocorrelations(1, 2);
    EXPECT_NEAR(rho[0], 0.4979691363829983, 1e-5);
    EXPECT_NEAR(rho[1], 0.24847715387894348, 1e-5);
    // Shape 0.009: values from 0 to 1e16 and beyond, as fitted to six values of 1.08e16 and one of 4.5e-308.
    ARTA spread(new Gamma(0.009, 1.2e18), {0.99}, 0.0, 1.0);
    EXPECT_EQ(messageOf([&] { spread.getAutocorrelations(1, 1); }, "normal_grid_integral"),
              "The correlation integral did not settle within 4194304 evaluations: the marginal's values span too "
              "many orders of magnitude.");
    EXPECT_EQ(messageOf([] { ARTA flat(new Exponential(1), {0.5}, 0.0, 0.0); }, "arta"),
              "The base process has no variance to normalise (0).");
}

const std::string exampleModel = std::string(VELMORA_SOURCE_DIR) + "/examples/arta.xml";

// Each value is F^-1 of the four-decimal table value of the base value:
// tails beyond 3.49 land on F^-1(0) and F^-1(1).
TEST(ARTAGeneration, ValuesAreTheMarginalQuantilesOfTheTabulatedBaseValues) {
    ARTA a(exampleModel, FORMAT_XML);
    ARIMA base(*a.getBaseProcess());
    for (int round = 0; round < 2; ++round) {  // a new preparation restarts the stream
        a.initRandomNumberGeneration(11);
        base.initRandomNumberGeneration(11);
        for (int i = 0; i < 2000; ++i) {
            const double z = base.getNextRandomVariate();
            ASSERT_EQ(a.getNextRandomVariate(), a.getDistribution()->evalInverseCDF(Normal::normal_cdf(z, 0, 1)));
        }
    }
    // The table is fixed at mean 0 and deviation 1: a base mean of 5 pushes almost every value to the top.
    ARTA shifted(new Uniform(0, 1), {0.3}, 5.0, 3.0);
    shifted.initRandomNumberGeneration(3);
    double sum = 0;
    for (int i = 0; i < 1000; ++i) sum += shifted.getNextRandomVariate();
    EXPECT_GT(sum / 1000, 0.9);
}

// A million values of the example model (triangular marginal, AR(2) base). The table of Phi (steps of 0.01, four
// decimals) moves the distribution function by up to phi(0) 0.005 + 0.00005 plus 2.4e-4 per clipped tail; the KS
// bound divides the sample size by 1 + 2 sum |rho_base|, a bound on the long-run variance factor of the indicators.
// The autocorrelations of the same example are checked end to end through sylvar.
TEST(ARTAGeneration, MillionValuesFollowTheMarginal) {
    ARTA a(exampleModel, FORMAT_XML);
    const unsigned n = 1000000;
    std::vector<double> sorted(n);
    a.initRandomNumberGeneration(20240611);
    for (double& v : sorted) v = a.getNextRandomVariate();
    double inflation = 1;
    for (double rho : a.getBaseProcess()->getAutocorrelations(1, 400)) inflation += 2 * std::fabs(rho);
    // The values come in ties: the empirical function is compared before and after each run of equal values.
    std::sort(sorted.begin(), sorted.end());
    double distance = 0;
    for (unsigned i = 0, j = 0; i < n; i = j) {
        while (j < n && sorted[j] == sorted[i]) ++j;
        const double F = a.evalCDF(sorted[i]);
        distance = std::max(distance, std::max(std::fabs(F - double(i) / n), std::fabs(double(j) / n - F)));
    }
    EXPECT_LT(distance, 0.0025 + 1.95 * std::sqrt(inflation / n)) << "KS distance";
}
