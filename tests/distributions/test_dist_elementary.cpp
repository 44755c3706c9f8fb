// Densities, distribution functions, quantiles and statistics of the
// elementary families against independent figures (scipy.stats), and the
// deliberate grain of the table-based normal distribution function.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "dist_helpers.h"
#include "distributions/dist.h"

using namespace velmora;

TEST(DistElementary, ClosedFormsAgreeWithScipyAndStayFiniteAtTheEnds) {
    const disttest::Near cases[] = {
        // scipy.stats.uniform(1, 3)
        {"uniform pdf", Uniform::uniform_pdf(2, 1, 4), 0.333333333333333, 1e-14},
        {"uniform cdf", Uniform::uniform_cdf(2.5, 1, 4), 0.5, 1e-15},
        {"uniform ppf", Uniform::uniform_inverse_cdf(0.25, 1, 4), 1.75, 1e-15},
        // scipy.stats.expon(scale=0.5)
        {"expon pdf", Exponential::exponential_pdf(0.7, 2), 0.493193927883213, 1e-14},
        {"expon cdf", Exponential::exponential_cdf(0.7, 2), 0.753403036058394, 1e-14},
        {"expon ppf", Exponential::exponential_inverse_cdf(0.3, 2), 0.178337471969366, 1e-14},
        // scipy.stats.norm(1, 2); the quantile is PPND16
        {"normal pdf", Normal::normal_pdf(2.3, 1, 2), 0.161486179833957, 1e-14},
        {"normal ppf", Normal::normal_inverse_cdf(0.975, 1, 2), 4.91992796908011, 1e-12},
        {"normal ppf low", Normal::normal_inverse_cdf(0.01, 1, 2), -3.65269574808168, 1e-12},
        // scipy.stats.multivariate_normal([0, 0], [[1, .5], [.5, 1]]).pdf([.3, -.4])
        {"bivariate pdf", Normal::standard_bivariate_normal_pdf(0.3, -0.4, 0.5), 0.143603004935809, 1e-14},
        // scipy.stats.lognorm(s=0.5, scale=e)
        {"lognormal pdf", Lognormal::lognormal_pdf(2, 1, 0.5), 0.330464565983484, 1e-14},
        {"lognormal ppf", Lognormal::lognormal_inverse_cdf(0.9, 1, 0.5), 5.15917035562259, 1e-11},
        // scipy.stats.triang(c=1/3, loc=1, scale=3): a = 1, b = 4, mode 2
        {"triangular pdf left", Triangular::triangular_pdf(1.5, 1, 4, 2), 0.333333333333333, 1e-14},
        {"triangular pdf right", Triangular::triangular_pdf(3, 1, 4, 2), 0.333333333333333, 1e-14},
        {"triangular cdf left", Triangular::triangular_cdf(1.5, 1, 4, 2), 0.0833333333333333, 1e-14},
        {"triangular cdf right", Triangular::triangular_cdf(3, 1, 4, 2), 0.833333333333333, 1e-14},
        {"triangular ppf left", Triangular::triangular_inverse_cdf(0.2, 1, 4, 2), 1.77459666924148, 1e-13},
        {"triangular ppf right", Triangular::triangular_inverse_cdf(0.8, 1, 4, 2), 2.90455488498967, 1e-13},
        // scipy.stats.chi2(5) and chi2(4); the quantile is AS 91 (about 5e-7 relative)
        {"chi2 pdf odd k", ChiSquare::chi2_pdf(3.2, 5), 0.153688937267856, 1e-13},
        {"chi2 pdf even k", ChiSquare::chi2_pdf(2.5, 4), 0.179065498037619, 1e-13},
        {"chi2 cdf", ChiSquare::chi2_cdf(3.2, 5), 0.330817097966757, 1e-10},  // AS 239 over Pike-Hill log-gamma
        {"chi2 ppf", ChiSquare::chi2_inverse_cdf(0.95, 5), 11.0704976935164, 1e-5},
        {"chi2 ppf low", ChiSquare::chi2_inverse_cdf(0.1, 5), 1.61030798696232, 1e-6},
        // Quantiles stay finite at the ends of the unit interval; the normal
        // quantile does not check p at all.
        {"normal ppf 0", Normal(3, 2).evalInverseCDF(0), 3, 0},
        {"normal ppf 1.5", Normal(3, 2).evalInverseCDF(1.5), 3, 0},
        {"expon ppf 1", Exponential(2).evalInverseCDF(1), 13.815510557935518 / 2, 1e-9},  // -log(1e-6)/2
        {"lognormal ppf 1", Lognormal(1, 0.5).evalInverseCDF(1), std::exp(1.0), 1e-15},
        {"triangular ppf 0", Triangular(1, 4, 2).evalInverseCDF(0), 1, 0},
        {"triangular ppf 1", Triangular(1, 4, 2).evalInverseCDF(1), 4, 0},
        {"chi2 ppf 0", ChiSquare(2).evalInverseCDF(0), 0, 0},
        // The deterministic family is a point mass.
        {"deterministic pdf", Deterministic(2.5).evalPDF(2.5), 1, 0},
        {"deterministic pdf off", Deterministic(2.5).evalPDF(2.5000001), 0, 0},
        {"deterministic cdf below", Deterministic(2.5).evalCDF(2.4999), 0, 0},
        {"deterministic cdf", Deterministic(2.5).evalCDF(2.5), 1, 0},
        {"deterministic variate", Deterministic(2.5).generateVariate(), 2.5, 0},
    };
    for (const auto& c : cases) EXPECT_NEAR(c.value, c.expected, c.tolerance) << c.what;
}

TEST(DistElementary, NormalDistributionFunctionIsTheFourDecimalTable) {
    struct Case {
        double z;
        double expected;
    };
    // Phi rounded to four decimals at z rounded to two (scipy.stats.norm.cdf).
    const Case cases[] = {
        {0, 0.5},        {0.004, 0.5},         {0.005, 0.504},       {0.5, 0.6915},
        {1.0, 0.8413},   {1.2345, 0.8907},     {1.96, 0.975},        {2.33, 0.9901},
        {3.0, 0.9987},   {3.49, 0.9998},       {3.4900001, 1},       {-0.5, 1 - 0.6915},
        {-1.2345, 1 - 0.8907}, {-3.49, 1 - 0.9998}, {-3.4900001, 0},  {-100, 0},
    };
    for (const Case& c : cases) EXPECT_NEAR(Normal::standard_normal_cdf(c.z), c.expected, 1e-15) << c.z;
    EXPECT_NEAR(Normal(1, 2).evalCDF(1 + 2 * 1.96), 0.975, 1e-15);
    EXPECT_NEAR(Normal(1, 2).evalCCDF(1 + 2 * 1.96), 0.025, 1e-15);
    // The lognormal inherits the grain in log x.
    EXPECT_NEAR(Lognormal(0, 1).evalCDF(std::exp(0.004)), 0.5, 1e-15);
    EXPECT_NEAR(Lognormal(1, 0.5).evalCDF(std::exp(1.5)), 0.8413, 1e-15);
    EXPECT_EQ(Lognormal(0, 1).evalCDF(0), 0);
    // No table lookup with NaN (sd 0 at the mean): the result is NaN.
    EXPECT_TRUE(std::isnan(Normal::standard_normal_cdf(std::numeric_limits<double>::quiet_NaN())));
    EXPECT_TRUE(std::isnan(Normal(2, 0).evalCDF(2)));
}

TEST(DistElementary, StatisticsAndRawMoments) {
    EXPECT_EQ(Deterministic(2.5).getProperties(3).moments, (std::vector<double>{2.5, 6.25, 15.625}));
    DistStats u = Uniform(1, 4).getProperties(3);
    EXPECT_DOUBLE_EQ(u.variance, 0.75);
    EXPECT_DOUBLE_EQ(u.cv, 3.0 / 5 / std::sqrt(3.0));
    EXPECT_DOUBLE_EQ(u.kurtosis, -1.2);
    ASSERT_EQ(u.moments.size(), 3u);
    EXPECT_DOUBLE_EQ(u.moments[2], 21.25);  // (4^4 - 1) / (4 * 3)

    // The raw moments use the 32-bit factorial: the 13th is 1932053504, not 13!.
    DistStats e = Exponential(1).getProperties(13);
    EXPECT_EQ(e.kurtosis, 6);
    ASSERT_EQ(e.moments.size(), 13u);
    EXPECT_EQ(e.moments[11], 479001600);
    EXPECT_EQ(e.moments[12], 1932053504);
    EXPECT_DOUBLE_EQ(Exponential(2).getProperties(4).moments[3], 24.0 / 16);

    // scipy.stats.norm(1, 2).moment(k), k = 1..8; the kurtosis is 3, not the excess.
    testing::internal::CaptureStdout();
    DistStats n = Normal(1, 2).getProperties(9);
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("For normal distribution only computation of first 8 moments is supported."), std::string::npos);
    const double normalMoments[] = {1, 5, 13, 73, 281, 1741, 8485, 57233};
    ASSERT_EQ(n.moments.size(), 8u);
    for (int k = 0; k < 8; k++) EXPECT_DOUBLE_EQ(n.moments[k], normalMoments[k]) << k + 1;
    EXPECT_EQ(n.kurtosis, 3);

    // scipy.stats.lognorm(s=0.5, scale=e).stats("mvsk"); the kurtosis is the excess.
    DistStats l = Lognormal(1, 0.5).getProperties(20);
    EXPECT_NEAR(l.mean, 3.08021684891803, 1e-13);
    EXPECT_NEAR(l.variance, 2.69475812434495, 1e-13);
    EXPECT_NEAR(l.skewness, 1.75018965506972, 1e-13);
    EXPECT_NEAR(l.kurtosis, 5.89844567378478, 1e-12);
    ASSERT_EQ(l.moments.size(), 20u);
    EXPECT_DOUBLE_EQ(l.moments[19], std::exp(20 * 1 + 400 * 0.25 / 2));

    // scipy.stats.triang(c=1/3, loc=1, scale=3).stats("mvsk")
    testing::internal::CaptureStdout();
    DistStats t = Triangular(1, 4, 2).getProperties(2);
    out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("For triangular distribution only computation of first moment is supported."),
              std::string::npos);
    EXPECT_NEAR(t.variance, 0.388888888888889, 1e-14);
    EXPECT_NEAR(t.skewness, 0.305441419328485, 1e-13);
    EXPECT_EQ(t.moments, (std::vector<double>{t.mean}));
    EXPECT_NEAR(t.mean, 2.33333333333333, 1e-13);

    // scipy.stats.chi2(5).moment(k)
    DistStats c = ChiSquare(5).getProperties(3);
    EXPECT_EQ(c.variance, 10);
    EXPECT_DOUBLE_EQ(c.kurtosis, 2.4);
    EXPECT_EQ(c.moments, (std::vector<double>{5, 35, 315}));
}
