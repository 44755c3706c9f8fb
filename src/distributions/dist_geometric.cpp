// The geometric distribution in closed form. The family has no static
// functions: the formulas live in the object's operations.
#include "distributions/dist_geometric.h"

#include <algorithm>

#include <limits>

#include <cmath>

#include "core/libvelmora_settings.h"
#include "distributions/dist_read.h"
#include "numerics/random.h"
#include "distributions/dist_exact.h"
#include "numerics/misc_numerical_dist.h"

namespace velmora {

using namespace distread;

// A NaN is refused with the same message as a p outside [0, 1].
static void checkP(double p) {
    if (!(p >= 0 && p <= 1)) throw Exception("dist", __LINE__, "Invalid parameter for Geometric distribution.");
}

// The integer k = floor(x). Everything below 1, negative and NaN arguments
// included, counts as k = 0; k is kept as a double, so arguments of 2^32 and
// more do not wrap.
static double trials(double x) { return x >= 1 ? std::floor(x) : 0; }

Geometric::Geometric(double p) : Dist(DIST_GEOMETRIC), p(p) { paramCheck(); }

double Geometric::getP() const { return p; }

void Geometric::setP(double value) { setChecked(p, value); }

double Geometric::generateVariate() { return rng.geometric(p); }

double Geometric::evalPDF(double x) {
    const double k = trials(x);
    return k == 0 ? 0 : p * std::pow(1 - p, k - 1);
}

double Geometric::evalCDF(double x) {
    const double k = trials(x);
    return k == 0 ? 0 : 1 - std::pow(1 - p, k);
}

// Adding 0.0 turns the -0 of q = 0 into 0.
double Geometric::evalInverseCDF(double q) {
    checkProbability(q);
    return std::floor(std::log(1 - q) / std::log(1 - p)) + 0.0;
}

std::string Geometric::toString(format f) {
    TextFields fields = {{"p", formatNumber(p, true)}};
    return layoutText(f, type, "geometric", fields, fields);
}

Dist* Geometric::fromConfig(Config* c) { return new Geometric(keyDouble(c, "p", 0.5)); }

DistStats Geometric::getProperties(unsigned n) {
    DistStats stats;
    stats.mean = 1 / p;
    stats.variance = (1 - p) / (p * p);
    stats.skewness = (2 - p) / std::sqrt(1 - p);
    stats.cv = stats.sdOverMean();
    stats.kurtosis = p * p / (1 - p) + 6;
    if (n >= 1) stats.moments.push_back(stats.mean);
    if (n > 1)
        throw Exception("dist", __LINE__, "For geometric distribution only computation of first moment is supported.");
    return stats;
}

void Geometric::paramCheck() { checkP(p); }

// ---- exact view
// The probability of a whole number of trials x >= 1.
double Geometric::exactLogPDF(double x) {
    if (x < 1 || x != std::floor(x)) return -std::numeric_limits<double>::infinity();
    return std::log(p) + (x - 1) * std::log1p(-p);
}
double Geometric::exactCDF(double x) { return x < 1 ? 0.0 : -std::expm1(std::floor(x) * std::log1p(-p)); }
double Geometric::exactQuantile(double q) {
    checkProbability(q);
    if (q == 0) return 1;
    if (p == 1) return 1;
    const double k = std::max(1.0, std::ceil(std::log1p(-q) / std::log1p(-p)));
    // The closed form may land one step off where F(k - 1) >= q by rounding.
    return k > 1 && exactCDF(k - 1) >= q ? k - 1 : k;
}
DistStats Geometric::exactStats(unsigned n) {
    DistStats stats;
    stats.mean = 1 / p;
    stats.variance = (1 - p) / (p * p);
    stats.cv = stats.sdOverMean();
    const std::vector<double> m = {1 / p, (2 - p) / (p * p), (p * p - 6 * p + 6) / (p * p * p)};
    for (unsigned k = 0; k < n && k < 3; ++k) stats.moments.push_back(m[k]);
    return stats;
}
unsigned Geometric::parameterCount() const { return 1; }
bool Geometric::isDiscrete() const { return true; }

}  // namespace velmora
