#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "config/conf.h"
#include "distributions/dist.h"
#include "timeseries/arima.h"
#include "timeseries/arta.h"

using namespace velmora;

namespace {

std::string exampleModel() { return std::string(VELMORA_SOURCE_DIR) + "/examples/arta.xml"; }

}  // namespace

// Each value is F^-1 of the four-decimal table value of the base value:
// tails beyond 3.49 land on F^-1(0) and F^-1(1).
TEST(ARTAGeneration, ValuesAreTheMarginalQuantilesOfTheTabulatedBaseValues) {
    ARTA a(exampleModel(), FORMAT_XML);
    ARIMA base(*a.getBaseProcess());
    Dist* marginal = a.getDistribution();
    a.initRandomNumberGeneration(11);
    base.initRandomNumberGeneration(11);
    std::vector<double> first;
    for (int i = 0; i < 2000; ++i) {
        const double z = base.getNextRandomVariate();
        first.push_back(a.getNextRandomVariate());
        ASSERT_EQ(first.back(), marginal->evalInverseCDF(Normal::normal_cdf(z, 0, 1))) << i;
    }
    a.initRandomNumberGeneration(11);
    for (int i = 0; i < 2000; ++i) ASSERT_EQ(a.getNextRandomVariate(), first[i]);
}

// The standard normal table is fixed at mean 0 and deviation 1, so a base
// mean of 5 pushes almost every value to the top of a uniform marginal.
TEST(ARTAGeneration, BaseMeanShiftsTheUniformNumbers) {
    ARTA a(new Uniform(0, 1), {0.3}, 5.0, 3.0);
    a.initRandomNumberGeneration(3);
    double sum = 0;
    for (int i = 0; i < 1000; ++i) sum += a.getNextRandomVariate();
    EXPECT_GT(sum / 1000, 0.9);
}

// A million values of the example model (triangular marginal, AR(2) base).
// Allowances: the base value goes through a table of Phi in steps of 0.01
// rounded to four decimals, which moves the distribution function of the
// values by up to phi(0) 0.005 + 0.00005 plus the 2.4e-4 of each clipped
// tail; the values are correlated, so the KS bound uses the sample size
// divided by 1 + 2 sum |rho_base|, which bounds the long-run variance factor
// of the indicators. Autocorrelation bounds: four standard deviations by
// Bartlett's formula with the base autocorrelations, which bound those of
// the transformed process, plus 1e-3 for the table grain.
TEST(ARTAGeneration, MillionValuesMatchTheMarginalAndTheAutocorrelations) {
    ARTA a(exampleModel(), FORMAT_XML);
    const unsigned n = 1000000;
    std::vector<double> x(n);
    a.initRandomNumberGeneration(20240611);
    for (unsigned i = 0; i < n; ++i) x[i] = a.getNextRandomVariate();

    const std::vector<double> baseRho = a.getBaseProcess()->getAutocorrelations(0, 400);
    double inflation = 1;
    for (std::size_t k = 1; k < baseRho.size(); ++k) inflation += 2 * std::fabs(baseRho[k]);

    // Kolmogorov-Smirnov distance; the values come in ties, so the empirical
    // function is compared before and after each run of equal values.
    std::vector<double> sorted(x);
    std::sort(sorted.begin(), sorted.end());
    double distance = 0;
    for (unsigned i = 0; i < n;) {
        unsigned j = i;
        while (j < n && sorted[j] == sorted[i]) ++j;
        const double F = a.evalCDF(sorted[i]);
        distance = std::max(distance, std::max(std::fabs(F - double(i) / n), std::fabs(double(j) / n - F)));
        i = j;
    }
    const double ksBound = 0.0025 + 1.95 * std::sqrt(inflation / n);
    EXPECT_LT(distance, ksBound) << "KS distance";

    double mean = 0;
    for (double v : x) mean += v;
    mean /= n;
    double c0 = 0;
    for (double v : x) c0 += (v - mean) * (v - mean);
    const std::vector<double> model = a.getAutocorrelations(1, 5);
    for (unsigned k = 1; k <= 5; ++k) {
        double ck = 0;
        const double* p = x.data();
        for (unsigned i = 0; i + k < n; ++i) ck += (p[i] - mean) * (p[i + k] - mean);
        double bartlett = 0;
        for (unsigned j = 1; j + k < baseRho.size(); ++j) {
            const double term = baseRho[j + k] + baseRho[j > k ? j - k : k - j] - 2 * baseRho[j] * baseRho[k];
            bartlett += term * term;
        }
        const double bound = 4 * std::sqrt(bartlett / n) + 1e-3;
        EXPECT_NEAR(ck / c0, model[k - 1], bound) << "lag " << k;
    }
}
