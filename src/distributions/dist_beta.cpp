// The beta distribution. Density and moments B(a + k, b)/B(a, b) rest on the
// system's beta function, a quotient of its gamma functions, and carry their
// Stirling grain away from integers and half-integers.
#include "distributions/dist_beta.h"

#include <algorithm>

#include <limits>

#include <cmath>

#include "core/libvelmora_settings.h"
#include "distributions/dist_read.h"
#include "numerics/misc_math.h"
#include "numerics/random.h"
#include "distributions/dist_exact.h"
#include "numerics/misc_numerical_dist.h"

namespace velmora {

using namespace distread;

static void checkParameters(double a, double b) {
    if (a <= 0 || b <= 0) throw Exception("dist", __LINE__, "Invalid parameter for beta distribution");
}

Beta::Beta(double alpha1, double alpha2) : Dist(DIST_BETA), alpha1(alpha1), alpha2(alpha2) { paramCheck(); }

double Beta::getAlpha1() const { return alpha1; }
double Beta::getAlpha2() const { return alpha2; }

void Beta::setAlpha1(double value) { setChecked(alpha1, value); }
void Beta::setAlpha2(double value) { setChecked(alpha2, value); }

double Beta::generateVariate() { return rng.beta(alpha1, alpha2); }
double Beta::evalPDF(double x) { return beta_pdf(x, alpha1, alpha2); }
double Beta::evalCDF(double) { throw Exception("dist", __LINE__, "Not implemented!"); }
double Beta::evalInverseCDF(double) { throw Exception("dist", __LINE__, "Not implemented."); }

std::string Beta::toString(format f) {
    TextFields fields = {{"alpha1", formatNumber(alpha1, true)}, {"alpha2", formatNumber(alpha2, true)}};
    return layoutText(f, type, "betadist", fields, fields);
}

Dist* Beta::fromConfig(Config* c) {
    return new Beta(keyDouble(c, "alpha1", 1), keyDouble(c, "alpha2", 1));
}

DistStats Beta::getProperties(unsigned n) { return beta_stats(alpha1, alpha2, n); }

void Beta::paramCheck() { checkParameters(alpha1, alpha2); }

double Beta::beta_pdf(double x, double a, double b) {
    checkParameters(a, b);
    if (x <= 0 || x >= 1) return 0;
    return std::pow(x, a - 1) * std::pow(1 - x, b - 1) / beta_function(a, b);
}

DistStats Beta::beta_stats(double a, double b, unsigned n) {
    checkParameters(a, b);
    double s = a + b;
    DistStats stats;
    stats.mean = a / s;
    stats.variance = a * b / (s * s * (s + 1));
    stats.skewness = 2 * (b - a) * std::sqrt(s + 1) / ((s + 2) * std::sqrt(a * b));
    stats.cv = stats.sdOverMean();
    // The excess kurtosis in its exact closed form,
    // 6 [(a - b)^2 (a + b + 1) - ab (a + b + 2)] / [ab (a + b + 2)(a + b + 3)],
    // with the numerator expanded; its last factor is a + b + 3, not ab + 3.
    stats.kurtosis = 6 * (a * a * a - a * a * (2 * b - 1) + b * b * (b + 1) - 2 * a * b * (b + 2)) /
                     (a * b * (s + 2) * (s + 3));
    double norm = beta_function(a, b);
    for (unsigned k = 1; k <= n; k++) stats.moments.push_back(beta_function(a + k, b) / norm);
    return stats;
}

// ---- exact view
double Beta::exactLogPDF(double x) {
    const double a = getAlpha1(), b = getAlpha2();
    if (!(x > 0 && x < 1)) return -std::numeric_limits<double>::infinity();
    return log_gamma(a + b) - log_gamma(a) - log_gamma(b) + (a - 1) * std::log(x) + (b - 1) * std::log1p(-x);
}
double Beta::exactQuantile(double) { throw Exception("dist", __LINE__, "Not implemented."); }
DistStats Beta::exactStats(unsigned n) {
    const double a = getAlpha1(), b = getAlpha2();
    DistStats stats;
    stats.mean = a / (a + b);
    stats.variance = a * b / ((a + b) * (a + b) * (a + b + 1));
    stats.cv = stats.sdOverMean();
    double m = 1;
    for (unsigned k = 0; k < n; ++k) stats.moments.push_back(m *= (a + k) / (a + b + k));
    return stats;
}
unsigned Beta::parameterCount() const { return 2; }
bool Beta::hasExactCDF() const { return false; }

}  // namespace velmora
