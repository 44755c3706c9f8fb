// Variates of every family at fixed seeds: a Kolmogorov-Smirnov test where
// the family's distribution function is exact, a test of mean and variance
// where it is a table or absent.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <vector>

#include "distributions/dist.h"

using namespace velmora;

namespace {

const unsigned sampleSize = 20000;

std::vector<double> sample(Dist& d, unsigned seed) {
    d.setSeed(seed);
    std::vector<double> x(sampleSize);
    for (double& v : x) v = d.generateVariate();
    return x;
}

// sup |F_n - F| of the sample against the family's distribution function.
double ksDistance(std::vector<double> x, const std::function<double(double)>& cdf) {
    std::sort(x.begin(), x.end());
    double n = x.size(), d = 0;
    for (size_t i = 0; i < x.size(); i++) {
        double f = cdf(x[i]);
        d = std::max(d, std::max(f - i / n, (i + 1) / n - f));
    }
    return d;
}

}  // namespace

TEST(DistVariates, KolmogorovSmirnovAgainstTheExactDistributionFunctions) {
    std::vector<std::shared_ptr<Dist>> families = {
        std::make_shared<Uniform>(1, 3),      std::make_shared<Exponential>(2),
        std::make_shared<Triangular>(0, 2, 0.5), std::make_shared<ChiSquare>(3),
        std::make_shared<Weibull>(1.5, 2),    std::make_shared<Gamma>(0.7, 2),
        std::make_shared<Gamma>(1, 0.5),      std::make_shared<Gamma>(3.5, 1.5)};
    // Critical value of the two-sided test at the 0.1 % level.
    const double critical = 1.95 / std::sqrt(static_cast<double>(sampleSize));
    unsigned seed = 11;
    for (auto& d : families) {
        std::vector<double> x = sample(*d, seed++);
        Dist* dist = d.get();
        EXPECT_LT(ksDistance(x, [dist](double v) { return dist->evalCDF(v); }), critical)
            << d->toString(FORMAT_CONFIG);
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
        {std::make_shared<PearsonV>(5, 2), 0.5, 1.0 / 12},            // invgamma(5, scale=2)
        {std::make_shared<PearsonVI>(2, 5, 1.5), 0.75, 0.5625},      // betaprime(2, 5, scale=1.5)
    };
    unsigned seed = 101;
    for (const Case& c : cases) {
        std::vector<double> x = sample(*c.dist, seed++);
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
