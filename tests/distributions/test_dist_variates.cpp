// Variates of every family at fixed seeds: a Kolmogorov-Smirnov test where
// the family's distribution function is exact, a test of mean and variance
// where it is a table or absent, equal seeds giving equal variates, and the
// draw order of Rand::hyper_erlang.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "dist_helpers.h"
#include "distributions/dist.h"
#include "numerics/random.h"

using namespace velmora;
using namespace disttest;

TEST(DistVariates, KolmogorovSmirnovAgainstTheExactDistributionFunctions) {
    const std::vector<std::shared_ptr<Dist>> families = {
        std::make_shared<Uniform>(1, 3),      std::make_shared<Exponential>(2),
        std::make_shared<Triangular>(0, 2, 0.5), std::make_shared<ChiSquare>(3),
        std::make_shared<Weibull>(1.5, 2),    std::make_shared<Gamma>(0.7, 2),
        std::make_shared<Gamma>(1, 0.5),      std::make_shared<Gamma>(3.5, 1.5),
        std::make_shared<Erlang>(3, 2),
        std::make_shared<HyperErlang>(std::vector<unsigned>{2, 1, 3}, std::vector<double>{1, 5, 2.5},
                                      std::vector<double>{0.3, 0.5, 0.2})};
    unsigned seed = 11;
    for (auto& d : families) {
        std::vector<double> x = sample(*d, seed);
        EXPECT_LT(ksDistance(x, *d), ksCritical) << d->toString(FORMAT_CONFIG);
        EXPECT_EQ(sample(*d, seed++), x) << "equal seeds, " << d->toString(FORMAT_CONFIG);
    }
}

TEST(DistVariates, SampleMeanAndVarianceMatchTheFamily) {
    struct Case {
        std::shared_ptr<Dist> dist;
        double mean;      // scipy.stats
        double variance;  // scipy.stats
    };
    const std::vector<Case> cases = {
        {std::make_shared<Normal>(1, 2), 1, 4},
        {std::make_shared<Lognormal>(0, 0.5), 1.1331484530668263, 0.3646958540123865},  // lognorm(s=0.5)
        {std::make_shared<Beta>(2, 3), 0.4, 0.04},
        {std::make_shared<Beta>(1, 1), 0.5, 1.0 / 12},
        {std::make_shared<PearsonV>(5, 2), 0.5, 1.0 / 12},        // invgamma(5, scale=2)
        {std::make_shared<PearsonVI>(2, 5, 1.5), 0.75, 0.5625},  // betaprime(2, 5, scale=1.5)
        {std::make_shared<HypoExponential>(std::vector<double>{1, 2, 4}), 1.75, 1.3125},  // sums of 1/r, 1/r^2
    };
    unsigned seed = 101;
    for (const Case& c : cases) {
        std::vector<double> x = sample(*c.dist, seed);
        EXPECT_EQ(sample(*c.dist, seed++), x) << "equal seeds, " << c.dist->toString(FORMAT_CONFIG);
        double sum = 0, sumSq = 0;
        for (double v : x) sum += v;
        double mean = sum / x.size();
        for (double v : x) sumSq += (v - mean) * (v - mean);
        double variance = sumSq / (x.size() - 1);
        // Five standard errors of the mean; the variance within 10 %.
        EXPECT_NEAR(mean, c.mean, 5 * std::sqrt(c.variance / x.size())) << c.dist->toString(FORMAT_CONFIG);
        EXPECT_NEAR(variance, c.variance, 0.1 * c.variance) << c.dist->toString(FORMAT_CONFIG);
    }
}

TEST(DistVariates, HyperErlangDrawsTheBranchFirstThenItsErlang) {
    const std::vector<unsigned> orders = {2, 1, 3};
    const std::vector<double> rates = {1, 5, 2.5};
    const std::vector<double> probabilities = {0.3, 0.5, 0.2};
    Rand mixture(42), manual(42);
    for (int i = 0; i < 200; i++) {
        double r = manual.uniform(0.0, 1.0);
        size_t branch = r <= 0.3 ? 0 : (r <= 0.8 ? 1 : 2);
        ASSERT_EQ(mixture.hyper_erlang(orders, rates, probabilities), manual.erlang(orders[branch], rates[branch]))
            << i;
    }
    EXPECT_EQ(failure([&] { mixture.hyper_erlang({1, 1}, {1, 2}, {0.5, 0.6}); }, "random"),
              "Invalid parameters for Hyper-Erlang distribution.");
}
