// Variates of the Erlang and mixture families at fixed seeds: a
// Kolmogorov-Smirnov test where the distribution function is exact, mean and
// variance where it is absent, and the draw order of Rand::hyper_erlang.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include "core/libvelmora_settings.h"
#include "distributions/dist.h"
#include "numerics/random.h"

using namespace velmora;

namespace {

const unsigned sampleSize = 20000;
// The 0.1% critical value of the KS distance, 1.95 / sqrt(n).
const double ksCritical = 1.95 / std::sqrt(static_cast<double>(sampleSize));

std::vector<double> sample(Dist& d, unsigned seed) {
    d.setSeed(seed);
    std::vector<double> x(sampleSize);
    for (double& v : x) v = d.generateVariate();
    return x;
}

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

TEST(DistMixtureVariates, KolmogorovSmirnovAgainstTheExactDistributionFunctions) {
    Erlang erlang(3, 2);
    HyperErlang hyper({2, 1, 3}, {1, 5, 2.5}, {0.3, 0.5, 0.2});
    Dist* dists[] = {&erlang, &hyper};
    for (Dist* d : dists) {
        std::vector<double> x = sample(*d, 20240611);
        EXPECT_LT(ksDistance(x, [d](double v) { return d->evalCDF(v); }), ksCritical) << d->getType();
    }
}

TEST(DistMixtureVariates, HypoExponentialSampleMeanAndVariance) {
    HypoExponential d({1, 2, 4});
    std::vector<double> x = sample(d, 77);
    double mean = 0, square = 0;
    for (double v : x) mean += v;
    mean /= x.size();
    for (double v : x) square += (v - mean) * (v - mean);
    double variance = square / (x.size() - 1);
    // Mean 1.75, variance 1.3125: four standard errors.
    EXPECT_NEAR(mean, 1.75, 4 * std::sqrt(1.3125 / sampleSize));
    EXPECT_NEAR(variance, 1.3125, 0.08);
}

TEST(DistMixtureVariates, EqualSeedsGiveEqualVariates) {
    HyperErlang a({2, 1}, {1, 5}, {0.3, 0.7}), b({2, 1}, {1, 5}, {0.3, 0.7});
    Erlang c(4, 2), d(4, 2);
    HypoExponential e({1, 3}), f({1, 3});
    std::pair<Dist*, Dist*> pairs[] = {{&a, &b}, {&c, &d}, {&e, &f}};
    for (auto& p : pairs) {
        p.first->setSeed(5);
        p.second->setSeed(5);
        for (int i = 0; i < 50; i++) ASSERT_EQ(p.first->generateVariate(), p.second->generateVariate());
    }
}

TEST(DistMixtureVariates, HyperErlangDrawsTheBranchFirstThenItsErlang) {
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
}

TEST(DistMixtureVariates, HyperErlangRefusesInvalidParametersFromTheStream) {
    Rand rng(1);
    try {
        rng.hyper_erlang({1, 1}, {1, 2}, {0.5, 0.6});
        FAIL() << "accepted";
    } catch (Exception& e) {
        EXPECT_EQ(e.file, "random");
        EXPECT_EQ(e.message, "Invalid parameters for Hyper-Erlang distribution.");
    }
}
