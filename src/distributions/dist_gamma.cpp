// The gamma distribution. The distribution function is the incomplete gamma
// integral (Algorithm AS 239, Shea 1988); the quantile is a chi-squared
// quantile with 2 alpha degrees of freedom (Algorithm AS 91, Best and Roberts
// 1975) scaled by beta/2. Density and moments rest on the system's gamma
// function and carry its Stirling grain away from integers and half-integers.
#include "distributions/dist_gamma.h"

#include <algorithm>

#include <limits>

#include <cmath>

#include "core/libvelmora_settings.h"
#include "distributions/dist_read.h"
#include "numerics/misc_math.h"
#include "numerics/misc_numerical_dist.h"
#include "numerics/random.h"
#include "distributions/dist_exact.h"

namespace velmora {

using namespace distread;

static void checkParameters(double alpha, double beta) {
    if (alpha <= 0 || beta <= 0) throw Exception("dist", __LINE__, "Invalid parameters for gamma distribution.");
}

Gamma::Gamma(double alpha, double beta) : Dist(DIST_GAMMA), alpha(alpha), beta(beta) { paramCheck(); }

double Gamma::getAlpha() const { return alpha; }
double Gamma::getBeta() const { return beta; }

void Gamma::setAlpha(double value) { setChecked(alpha, value); }
void Gamma::setBeta(double value) { setChecked(beta, value); }

double Gamma::generateVariate() { return rng.gamma(alpha, beta); }
double Gamma::evalPDF(double x) { return gamma_pdf(x, alpha, beta); }
double Gamma::evalCDF(double x) { return gamma_cdf(x, alpha, beta); }
double Gamma::evalInverseCDF(double p) { return gamma_inverse_cdf(p, alpha, beta); }

std::string Gamma::toString(format f) {
    std::string a = formatNumber(alpha, true), b = formatNumber(beta, true);
    return layoutText(f, type, "gammadist", {{"alpha", a}, {"beta", b}}, {{"shape", a}, {"scale", b}});
}

Dist* Gamma::fromConfig(Config* c) {
    return new Gamma(keyDouble(c, "alpha", 1), keyDouble(c, "beta", 1));
}

Dist* Gamma::fromXML(XMLElement* family) {
    return new Gamma(tagDouble(family, "shape", 1), tagDouble(family, "scale", 1));
}

DistStats Gamma::getProperties(unsigned n) { return gamma_stats(alpha, beta, n); }

void Gamma::paramCheck() { checkParameters(alpha, beta); }

double Gamma::gamma_pdf(double x, double alpha, double beta) {
    checkParameters(alpha, beta);
    if (x <= 0) return 0;
    return std::pow(beta, -alpha) * std::pow(x, alpha - 1) * std::exp(-x / beta) / gamma_function(alpha);
}

double Gamma::gamma_cdf(double x, double alpha, double beta) {
    checkParameters(alpha, beta);
    if (x < 0) return 0;
    return as::gammad(x / beta, alpha);
}

double Gamma::gamma_inverse_cdf(double p, double alpha, double beta) {
    checkParameters(alpha, beta);
    checkProbability(p);
    return (beta / 2) * as::ppchi2(p, 2 * alpha);
}

double Gamma::gamma_ccdf(double x, double alpha, double beta) { return 1 - gamma_cdf(x, alpha, beta); }

DistStats Gamma::gamma_stats(double alpha, double beta, unsigned n) {
    checkParameters(alpha, beta);
    DistStats stats;
    stats.mean = alpha * beta;
    stats.variance = beta * beta * alpha;
    stats.skewness = 2 / std::sqrt(alpha);
    stats.cv = stats.sdOverMean();
    stats.kurtosis = 6 / alpha;
    double gammaAlpha = gamma_function(alpha);
    for (unsigned k = 1; k <= n; k++)
        stats.moments.push_back(gamma_function(k + alpha) / (gammaAlpha * std::pow(1 / beta, static_cast<double>(k))));
    return stats;
}

// ---- exact view
double Gamma::exactLogPDF(double x) { return exact::gamma_logpdf(x, alpha, beta); }
double Gamma::exactCDF(double x) { return exact::gamma_cdf(x, alpha, beta); }
double Gamma::exactCCDF(double x) { return exact::gamma_ccdf(x, alpha, beta); }
double Gamma::exactQuantile(double p) {
    checkProbability(p);
    return exact::gamma_quantile(p, alpha, beta);
}
DistStats Gamma::exactStats(unsigned n) { return exact::gamma_stats(alpha, beta, n); }
unsigned Gamma::parameterCount() const { return 2; }

}  // namespace velmora
