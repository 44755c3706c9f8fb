// The lognormal distribution. The distribution function goes through the
// table-based normal distribution function, so it carries its 0.01 grain in
// log x; the quantile uses Algorithm AS 241 (PPND16), which gives exp(mu) at
// p = 0 and p = 1. Raw moments exp(k mu + k^2 sigma^2 / 2) have no limit.
#include "distributions/dist_lognormal.h"

#include <algorithm>

#include <limits>

#include <cmath>

#include "core/libvelmora_settings.h"
#include "distributions/dist_normal.h"
#include "distributions/dist_read.h"
#include "numerics/misc_numerical_dist.h"
#include "numerics/random.h"
#include "distributions/dist_exact.h"

namespace velmora {

using namespace distread;

static void checkSigma(double sigma) {
    if (sigma < 0) throw Exception("dist", __LINE__, "Invalid parameter for lognormal distribution");
}

Lognormal::Lognormal(double mu, double sigma) : Dist(DIST_LOGNORMAL), mu(mu), sigma(sigma) { paramCheck(); }

double Lognormal::getMu() const { return mu; }
double Lognormal::getSigma() const { return sigma; }

void Lognormal::setMu(double value) { setChecked(mu, value); }
void Lognormal::setSigma(double value) { setChecked(sigma, value); }

double Lognormal::generateVariate() { return rng.lognormal(mu, sigma); }
double Lognormal::evalPDF(double x) { return lognormal_pdf(x, mu, sigma); }
double Lognormal::evalCDF(double x) { return lognormal_cdf(x, mu, sigma); }
double Lognormal::evalInverseCDF(double p) { return lognormal_inverse_cdf(p, mu, sigma); }

// The key-value form carries sigma squared, the XML form sigma.
std::string Lognormal::toString(format f) {
    return layoutText(f, type, "lognormaldist",
                      {{"mu", formatNumber(mu, true)}, {"sigma2", formatNumber(sigma * sigma, true)}},
                      {{"mu", formatNumber(mu, true)}, {"sigma", formatNumber(sigma, true)}});
}

Dist* Lognormal::fromConfig(Config* c) {
    return new Lognormal(keyDouble(c, "mu", 0), std::sqrt(keyDouble(c, "sigma2", 1)));
}

Dist* Lognormal::fromXML(XMLElement* family) {
    return new Lognormal(tagDouble(family, "mu", 0), tagDouble(family, "sigma", 1));
}

DistStats Lognormal::getProperties(unsigned n) { return lognormal_stats(mu, sigma, n); }

void Lognormal::paramCheck() { checkSigma(sigma); }

double Lognormal::lognormal_pdf(double x, double mu, double sigma) {
    if (x <= 0) return 0;
    double d = std::log(x) - mu;
    double s2 = sigma * sigma;
    return (1 / (x * std::sqrt(6.283185307179586 * s2))) * std::exp(-d * d / (2 * s2));
}

double Lognormal::lognormal_cdf(double x, double mu, double sigma) {
    return Normal::normal_cdf(std::log(x), mu, sigma);
}

double Lognormal::lognormal_inverse_cdf(double p, double mu, double sigma) {
    checkProbability(p);
    return std::exp(as::ppnd16(p) * sigma + mu);
}

double Lognormal::lognormal_ccdf(double x, double mu, double sigma) { return 1 - lognormal_cdf(x, mu, sigma); }

DistStats Lognormal::lognormal_stats(double mu, double sigma, unsigned n) {
    checkSigma(sigma);
    double s2 = sigma * sigma;
    double w = std::exp(s2);
    DistStats stats;
    stats.mean = std::exp(mu + s2 / 2);
    stats.variance = std::exp(2 * mu + s2) * (w - 1);
    stats.skewness = (w + 2) * std::sqrt(w - 1);
    stats.cv = std::sqrt(w - 1);
    stats.kurtosis = std::exp(4 * s2) + 2 * std::exp(3 * s2) + 3 * std::exp(2 * s2) - 6;
    for (unsigned k = 1; k <= n; k++) {
        double kd = k;
        stats.moments.push_back(std::exp(kd * mu + kd * kd * s2 / 2));
    }
    return stats;
}

// ---- exact view
double Lognormal::exactLogPDF(double x) {
    if (!(x > 0)) return -std::numeric_limits<double>::infinity();
    const double z = (std::log(x) - getMu()) / getSigma();
    return -0.5 * z * z - std::log(x) - std::log(getSigma()) - 0.91893853320467274178;  // log sqrt(2 pi)
}
double Lognormal::exactCDF(double x) { return x > 0 ? mvphi((std::log(x) - getMu()) / getSigma()) : 0.0; }
double Lognormal::exactCCDF(double x) { return x > 0 ? mvphi((getMu() - std::log(x)) / getSigma()) : 1.0; }
double Lognormal::exactQuantile(double p) {
    checkProbability(p);
    if (p == 0) return 0;
    if (p == 1) return std::numeric_limits<double>::infinity();
    return std::exp(getMu() + getSigma() * as::ppnd16(p));
}
DistStats Lognormal::exactStats(unsigned n) {
    DistStats stats;
    const double mu = getMu(), s2 = getSigma() * getSigma();
    stats.mean = std::exp(mu + s2 / 2);
    stats.variance = std::expm1(s2) * std::exp(2 * mu + s2);
    stats.cv = stats.sdOverMean();
    for (unsigned k = 1; k <= n; ++k) stats.moments.push_back(std::exp(k * mu + k * k * s2 / 2));
    return stats;
}
unsigned Lognormal::parameterCount() const { return 2; }

}  // namespace velmora
