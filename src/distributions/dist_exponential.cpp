// The exponential distribution in closed form. The quantile caps p at
// 0.999999, so that p = 1 gives the finite value -log(1e-6)/rate; the raw
// moments k!/rate^k inherit the 32-bit range of the factorial (k <= 12).
#include "distributions/dist_exponential.h"

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

static void checkRate(double rate) {
    if (rate <= 0) throw Exception("dist", __LINE__, "Invalid rate for exponential distribution");
}

Exponential::Exponential(double rate) : Dist(DIST_EXPONENTIAL), rate(rate) { paramCheck(); }

double Exponential::getRate() const { return rate; }

void Exponential::setRate(double value) { setChecked(rate, value); }

double Exponential::generateVariate() { return rng.exponential(rate); }
double Exponential::evalPDF(double x) { return exponential_pdf(x, rate); }
double Exponential::evalCDF(double x) { return exponential_cdf(x, rate); }
double Exponential::evalInverseCDF(double p) { return exponential_inverse_cdf(p, rate); }

// The XML form carries the mean, the key-value form the rate.
std::string Exponential::toString(format f) {
    return layoutText(f, type, "expodist", {{"rate", formatNumber(rate, false)}},
                      {{"mean", formatNumber(1 / rate, false)}});
}

Dist* Exponential::fromConfig(Config* c) {
    return new Exponential(keyDouble(c, "rate", 1));
}

Dist* Exponential::fromXML(XMLElement* family) {
    XMLElement* mean = family->getChildElement("mean");
    return new Exponential(mean != nullptr ? 1 / toDouble(mean->getValue()) : 1);
}

DistStats Exponential::getProperties(unsigned n) { return exponential_stats(rate, n); }

void Exponential::paramCheck() { checkRate(rate); }

double Exponential::exponential_pdf(double x, double rate) {
    checkRate(rate);
    if (x < 0) return 0;
    return rate * std::exp(-rate * x);
}

double Exponential::exponential_cdf(double x, double rate) {
    checkRate(rate);
    if (x < 0) return 0;
    return 1 - std::exp(-rate * x);
}

double Exponential::exponential_inverse_cdf(double p, double rate) {
    checkProbability(p);
    checkRate(rate);
    if (p > 0.999999) p = 0.999999;
    return -std::log(1 - p) / rate;
}

double Exponential::exponential_ccdf(double x, double rate) {
    checkRate(rate);
    return 1 - exponential_cdf(x, rate);
}

DistStats Exponential::exponential_stats(double rate, unsigned n) {
    checkRate(rate);
    DistStats stats;
    stats.mean = 1 / rate;
    stats.variance = 1 / (rate * rate);
    stats.skewness = 2;
    stats.cv = 1;
    stats.kurtosis = 6;
    for (unsigned k = 1; k <= n; k++)
        stats.moments.push_back(static_cast<double>(fac(k)) / std::pow(rate, static_cast<double>(k)));
    return stats;
}

// ---- exact view
double Exponential::exactLogPDF(double x) {
    return x < 0 ? -std::numeric_limits<double>::infinity() : std::log(getRate()) - getRate() * x;
}
double Exponential::exactCDF(double x) { return x > 0 ? -std::expm1(-getRate() * x) : 0.0; }
double Exponential::exactCCDF(double x) { return x > 0 ? std::exp(-getRate() * x) : 1.0; }
double Exponential::exactQuantile(double p) {
    checkProbability(p);
    return -std::log1p(-p) / getRate();
}
DistStats Exponential::exactStats(unsigned n) { return exact::erlang_mixture_stats({1}, {getRate()}, {1.0}, n); }
bool Exponential::erlangBranches(std::vector<unsigned>& phases, std::vector<double>& rates,
                        std::vector<double>& probabilities) const {
    phases = {1};
    rates = {getRate()};
    probabilities = {1.0};
    return true;
}
unsigned Exponential::parameterCount() const { return 1; }

}  // namespace velmora
