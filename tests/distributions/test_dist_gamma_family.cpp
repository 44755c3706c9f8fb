// Weibull, gamma, beta and the Pearson families: closed forms against
// scipy.stats where the system's gamma function is exact (integers and
// half-integers), and its Stirling values where it is not.
#include <gtest/gtest.h>

#include <cmath>

#include "dist_helpers.h"
#include "distributions/dist.h"

using namespace velmora;

TEST(DistGammaFamily, ClosedFormsAgreeWithScipyAndVanishOutsideTheSupport) {
    const disttest::Near cases[] = {
        // scipy.stats.weibull_min(1.5, scale=2)
        {"weibull pdf", Weibull::weibull_pdf(1.3, 1.5, 2), 0.358036520885648, 1e-14},
        {"weibull cdf", Weibull::weibull_cdf(1.3, 1.5, 2), 0.407880468782734, 1e-14},
        {"weibull ppf", Weibull::weibull_inverse_cdf(0.6, 1.5, 2), 1.88676954780596, 1e-13},
        // scipy.stats.gamma(3, scale=2) and gamma(2.5, scale=0.5); the CDF is AS 239
        // over the log-gamma of Pike and Hill, good to about 1e-11. The density
        // uses the system's gamma function, exact at these shapes
        {"gamma pdf", Gamma::gamma_pdf(4.1, 3, 2), 0.135252108081937, 1e-14},
        {"gamma cdf", Gamma::gamma_cdf(4.1, 3, 2), 0.336854327893324, 1e-10},
        {"gamma ppf", Gamma::gamma_inverse_cdf(0.7, 3, 2), 7.23113533173198, 1e-5},
        {"gamma pdf half shape", Gamma::gamma_pdf(1.1, 2.5, 0.5), 0.543976272738699, 1e-14},
        {"gamma ppf half shape", Gamma::gamma_inverse_cdf(0.3, 2.5, 0.5), 0.749977033189977, 1e-6},
        // scipy.stats.gamma(0.7): the CDF and quantile do not use the gamma function
        {"gamma cdf small shape", Gamma::gamma_cdf(0.4, 0.7, 1), 0.494986008271671, 1e-10},
        {"gamma ppf small shape", Gamma::gamma_inverse_cdf(0.5, 0.7, 1), 0.407423748476441, 1e-6},
        // scipy.stats.beta(2, 3) and beta(2.5, 1.5)
        {"beta pdf", Beta::beta_pdf(0.3, 2, 3), 1.764, 1e-13},
        {"beta pdf half shapes", Beta::beta_pdf(0.6, 2.5, 1.5), 1.49701785836866, 1e-13},
        // scipy.stats.invgamma(3, scale=2) and betaprime(2, 3, scale=1.5)
        {"pearson V pdf", PearsonV::pearsonV_pdf(0.8, 3, 2), 0.801611314686511, 1e-14},
        {"pearson VI pdf", PearsonVI::pearsonVI_pdf(1.2, 2, 3, 1.5), 0.338701756168606, 1e-14},
        // Outside the support, and quantiles at the ends.
        {"gamma pdf at 0", Gamma::gamma_pdf(0, 1, 1), 0, 0},  // although the limit at 0 is 1
        {"gamma cdf below 0", Gamma::gamma_cdf(-1, 1, 1), 0, 0},
        {"weibull pdf at 0", Weibull::weibull_pdf(0, 0.5, 1), 0, 0},
        {"weibull cdf below 0", Weibull::weibull_cdf(-1, 2, 1), 0, 0},
        {"beta pdf at 0", Beta::beta_pdf(0, 0.5, 2), 0, 0},
        {"beta pdf at 1", Beta::beta_pdf(1, 3, 2), 0, 0},
        {"pearson V pdf at 0", PearsonV::pearsonV_pdf(0, 3, 2), 0, 0},
        {"pearson VI pdf below 0", PearsonVI::pearsonVI_pdf(-1, 2, 3, 1), 0, 0},
        {"weibull ppf 1", Weibull::weibull_inverse_cdf(1, 1, 1), 13.815510557935518, 1e-9},  // -log(1e-6)
        {"weibull ppf 0", Weibull::weibull_inverse_cdf(0, 2, 3), 0, 0},
        {"gamma ppf 0", Gamma::gamma_inverse_cdf(0, 2, 3), 0, 0},
    };
    for (const auto& c : cases) EXPECT_NEAR(c.value, c.expected, c.tolerance) << c.what;
    double top = Gamma::gamma_inverse_cdf(1, 2, 3);
    EXPECT_TRUE(std::isfinite(top) && top > 30);
}

TEST(DistGammaFamily, StatisticsAndRawMoments) {
    DistStats w = Weibull(1, 2).getProperties(2);  // an exponential with mean 2
    EXPECT_DOUBLE_EQ(w.variance, 4);
    ASSERT_EQ(w.moments.size(), 2u);
    EXPECT_DOUBLE_EQ(w.moments[0], 2);
    EXPECT_DOUBLE_EQ(w.moments[1], 8);
    EXPECT_TRUE(std::isnan(w.skewness));  // not computed for Weibull
    EXPECT_TRUE(std::isnan(w.kurtosis));

    // Shape 3 puts Gamma(4/3) off the exact grid: Stirling's first term.
    DistStats w3 = Weibull(3, 1).getProperties(0);
    EXPECT_NEAR(w3.mean, 0.839742703223566, 1e-14);
    EXPECT_NEAR(w3.variance, 0.154022440082108, 1e-14);

    DistStats g = Gamma(2, 3).getProperties(2);
    EXPECT_DOUBLE_EQ(g.variance, 18);
    EXPECT_DOUBLE_EQ(g.skewness, std::sqrt(2.0));
    EXPECT_DOUBLE_EQ(g.kurtosis, 3);
    ASSERT_EQ(g.moments.size(), 2u);
    EXPECT_DOUBLE_EQ(g.moments[0], 6);
    EXPECT_DOUBLE_EQ(g.moments[1], 54);

    // Gamma(2.7)/Gamma(1.7) and Gamma(3.7)/Gamma(1.7) by Stirling's first
    // term, not the exact 3.4 and 18.36.
    DistStats gs = Gamma(1.7, 2).getProperties(2);
    EXPECT_NEAR(gs.moments[0], 3.46096405858334, 1e-12);
    EXPECT_NEAR(gs.moments[1], 18.8442058131826, 1e-11);

    DistStats b1 = Beta(1, 1).getProperties(2);
    EXPECT_DOUBLE_EQ(b1.moments[0], 0.5);
    EXPECT_DOUBLE_EQ(b1.moments[1], 1.0 / 3);

    // scipy.stats.beta(2, 3).stats("mvsk"): the kurtosis is the exact excess.
    DistStats b = Beta(2, 3).getProperties(1);
    EXPECT_DOUBLE_EQ(b.mean, 0.4);
    EXPECT_DOUBLE_EQ(b.variance, 0.04);
    EXPECT_NEAR(b.skewness, 0.285714285714286, 1e-14);
    EXPECT_NEAR(b.kurtosis, -0.642857142857143, 1e-14);
}
