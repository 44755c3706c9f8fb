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
#include "distributions/dist_beta.h"
#include "distributions/dist_chisquare.h"
#include "distributions/dist_erlang.h"
#include "distributions/dist_exponential.h"
#include "distributions/dist_gamma.h"
#include "distributions/dist_hypererlang.h"
#include "distributions/dist_hypoexponential.h"
#include "distributions/dist_lognormal.h"
#include "distributions/dist_normal.h"
#include "distributions/dist_pearsonv.h"
#include "distributions/dist_pearsonvi.h"
#include "distributions/dist_triangular.h"
#include "distributions/dist_uniform.h"
#include "distributions/dist_weibull.h"
#include "numerics/random.h"

using namespace velmora;
using namespace disttest;
using std::make_shared;

TEST(DistVariates, FixedSeedsPassKolmogorovSmirnovOrMomentTestsAndEqualSeedsRepeat) {
    unsigned seed = 11;
    auto repeatable = [&seed](Dist& d) {
        std::vector<double> x = sample(d, seed);
        EXPECT_EQ(sample(d, seed++), x) << "equal seeds, " << d.toString(FORMAT_CONFIG);
        return x;
    };
    // Where the distribution function is exact: the KS distance.
    const std::vector<std::shared_ptr<Dist>> exact = {
        make_shared<Uniform>(1, 3),      make_shared<Exponential>(2),      make_shared<Triangular>(0, 2, 0.5),
        make_shared<ChiSquare>(3),       make_shared<Weibull>(1.5, 2),     make_shared<Gamma>(0.7, 2),
        make_shared<Gamma>(1, 0.5),      make_shared<Gamma>(3.5, 1.5),     make_shared<Erlang>(3, 2),
        make_shared<HyperErlang>(mixture())};
    for (auto& d : exact) EXPECT_LT(ksDistance(repeatable(*d), *d), ksCritical) << d->toString(FORMAT_CONFIG);

    // Where it is a table or absent: mean within five standard errors, variance within 10 %.
    struct Case {
        std::shared_ptr<Dist> dist;
        double mean, variance;  // scipy.stats
    };
    const Case cases[] = {
        {make_shared<Normal>(1, 2), 1, 4},
        {make_shared<Lognormal>(0, 0.5), 1.1331484530668263, 0.3646958540123865},  // lognorm(s=0.5)
        {make_shared<Beta>(2, 3), 0.4, 0.04},
        {make_shared<Beta>(1, 1), 0.5, 1.0 / 12},
        {make_shared<PearsonV>(5, 2), 0.5, 1.0 / 12},        // invgamma(5, scale=2)
        {make_shared<PearsonVI>(2, 5, 1.5), 0.75, 0.5625},  // betaprime(2, 5, scale=1.5)
        {make_shared<HypoExponential>(std::vector<double>{1, 2, 4}), 1.75, 1.3125},  // sums of 1/r, 1/r^2
    };
    seed = 101;
    for (const Case& c : cases) {
        std::vector<double> x = repeatable(*c.dist);
        double mean = 0, variance = 0;
        for (double v : x) mean += v / x.size();
        for (double v : x) variance += (v - mean) * (v - mean) / (x.size() - 1);
        EXPECT_NEAR(mean, c.mean, 5 * std::sqrt(c.variance / x.size())) << c.dist->toString(FORMAT_CONFIG);
        EXPECT_NEAR(variance, c.variance, 0.1 * c.variance) << c.dist->toString(FORMAT_CONFIG);
    }
}

TEST(DistVariates, HyperErlangDrawsTheBranchFirstThenItsErlang) {
    Rand mixture(42), manual(42);
    for (int i = 0; i < 200; i++) {
        double r = manual.uniform(0.0, 1.0);
        size_t branch = r <= 0.3 ? 0 : (r <= 0.8 ? 1 : 2);  // probabilities 0.3, 0.5, 0.2
        ASSERT_EQ(mixture.hyper_erlang(mixPhases, mixRates, mixProbabilities),
                  manual.erlang(mixPhases[branch], mixRates[branch]))
            << i;
    }
    EXPECT_EQ(failure([&] { mixture.hyper_erlang({1, 1}, {1, 2}, {0.5, 0.6}); }, "random"),
              "Invalid parameters for Hyper-Erlang distribution.");
}
