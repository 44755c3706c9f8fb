// The Weibull distribution in closed form. The quantile caps p at 0.999999,
// so p = 1 stays finite. The moments beta^k Gamma(k/alpha + 1) rest on the
// system's gamma function, exact at integers and half-integers and Stirling's
// first term elsewhere. The object and the statistics refuse bad parameters
// with one message, the density, distribution and quantile with another.
#include "distributions/dist_weibull.h"

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

static void checkObjectParameters(double alpha, double beta) {
    if (alpha <= 0 || beta <= 0) throw Exception("dist", __LINE__, "Invalid parameter for weibull distribution");
}

static void checkFunctionParameters(double alpha, double beta) {
    if (alpha <= 0 || beta <= 0) throw Exception("dist", __LINE__, "Invalid parameter for Weibull distribution.");
}

Weibull::Weibull(double alpha, double beta) : Dist(DIST_WEIBULL), alpha(alpha), beta(beta) { paramCheck(); }

double Weibull::getAlpha() const { return alpha; }
double Weibull::getBeta() const { return beta; }

void Weibull::setAlpha(double value) { setChecked(alpha, value); }
void Weibull::setBeta(double value) { setChecked(beta, value); }

double Weibull::generateVariate() { return rng.weibull(alpha, beta); }
double Weibull::evalPDF(double x) { return weibull_pdf(x, alpha, beta); }
double Weibull::evalCDF(double x) { return weibull_cdf(x, alpha, beta); }
double Weibull::evalInverseCDF(double p) { return weibull_inverse_cdf(p, alpha, beta); }

std::string Weibull::toString(format f) {
    std::string a = formatNumber(alpha, true), b = formatNumber(beta, true);
    return layoutText(f, type, "weibulldist", {{"alpha", a}, {"beta", b}}, {{"shape", a}, {"scale", b}});
}

Dist* Weibull::fromConfig(Config* c) {
    return new Weibull(keyDouble(c, "alpha", 1), keyDouble(c, "beta", 1));
}

Dist* Weibull::fromXML(XMLElement* family) {
    return new Weibull(tagDouble(family, "shape", 1), tagDouble(family, "scale", 1));
}

DistStats Weibull::getProperties(unsigned n) { return weibull_stats(alpha, beta, n); }

void Weibull::paramCheck() { checkObjectParameters(alpha, beta); }

double Weibull::weibull_pdf(double x, double alpha, double beta) {
    checkFunctionParameters(alpha, beta);
    if (x <= 0) return 0;
    return alpha * std::pow(beta, -alpha) * std::pow(x, alpha - 1) * std::exp(-std::pow(x / beta, alpha));
}

double Weibull::weibull_cdf(double x, double alpha, double beta) {
    checkFunctionParameters(alpha, beta);
    if (x <= 0) return 0;
    return 1 - std::exp(-std::pow(x / beta, alpha));
}

double Weibull::weibull_inverse_cdf(double p, double alpha, double beta) {
    checkProbability(p);
    checkFunctionParameters(alpha, beta);
    if (p > 0.999999) p = 0.999999;
    return beta * std::pow(-std::log(1 - p), 1 / alpha);
}

double Weibull::weibull_ccdf(double x, double alpha, double beta) { return 1 - weibull_cdf(x, alpha, beta); }

DistStats Weibull::weibull_stats(double alpha, double beta, unsigned n) {
    checkObjectParameters(alpha, beta);
    double g1 = gamma_function(1 / alpha + 1);
    DistStats stats;
    stats.mean = beta * g1;
    stats.variance = beta * beta * (gamma_function(2 / alpha + 1) - g1 * g1);
    stats.cv = stats.sdOverMean();
    for (unsigned k = 1; k <= n; k++)
        stats.moments.push_back(std::pow(beta, static_cast<double>(k)) * gamma_function(k / alpha + 1));
    return stats;
}

// ---- exact view
double Weibull::exactLogPDF(double x) {
    if (!(x > 0)) return -std::numeric_limits<double>::infinity();
    return std::log(alpha / beta) + (alpha - 1) * std::log(x / beta) - std::pow(x / beta, alpha);
}
double Weibull::exactCDF(double x) { return x > 0 ? -std::expm1(-std::pow(x / beta, alpha)) : 0.0; }
double Weibull::exactCCDF(double x) { return x > 0 ? std::exp(-std::pow(x / beta, alpha)) : 1.0; }
double Weibull::exactQuantile(double p) {
    checkProbability(p);
    return beta * std::pow(-std::log1p(-p), 1 / alpha);
}
DistStats Weibull::exactStats(unsigned n) {
    DistStats stats;
    const double g1 = std::tgamma(1 / alpha + 1);
    stats.mean = beta * g1;
    stats.variance = beta * beta * (std::tgamma(2 / alpha + 1) - g1 * g1);
    stats.cv = stats.sdOverMean();
    for (unsigned k = 1; k <= n; k++) stats.moments.push_back(std::pow(beta, k) * std::tgamma(k / alpha + 1));
    return stats;
}
unsigned Weibull::parameterCount() const { return 2; }

}  // namespace velmora
