// The Erlang distribution in closed form: the density r^k x^(k-1) e^(-rx) /
// (k-1)!, the distribution function through the Poisson sum, the quantile of
// the gamma distribution with integer shape, and the raw moments
// (i+k-1)!/(k-1)! / r^i with the 32-bit factorial of the toolkit.
//
// A count of 0 phases passes the parameter check of the object, but the
// formulas would subtract 1 from it: the density, distribution function,
// statistics and asCPH refuse it with an exception, the variate is 0.
#include "distributions/dist_erlang.h"

#include <algorithm>

#include <limits>

#include <cmath>

#include "core/libvelmora_settings.h"
#include "distributions/dist_gamma.h"
#include "distributions/dist_hypoexponential.h"
#include "distributions/dist_read.h"
#include "numerics/misc_math.h"
#include "numerics/random.h"
#include "distributions/dist_exact.h"
#include "numerics/misc_numerical_dist.h"

namespace velmora {

using namespace distread;

static void checkStaticRate(double rate) {
    if (rate < 0) throw Exception("dist", __LINE__, "Invalid rate for Erlang distribution.");
}

static void checkPhases(unsigned phases) {
    if (phases == 0) throw Exception("dist", __LINE__, "Invalid number of phases for Erlang distribution.");
}

Erlang::Erlang(unsigned phases, double rate) : Dist(DIST_ERLANG), phases(phases), rate(rate) { paramCheck(); }

unsigned Erlang::getPhases() const { return phases; }
double Erlang::getRate() const { return rate; }

void Erlang::setPhases(unsigned value) { setChecked(phases, value); }
void Erlang::setRate(double value) { setChecked(rate, value); }

double Erlang::generateVariate() { return rng.erlang(phases, rate); }
double Erlang::evalPDF(double x) { return erlang_pdf(x, phases, rate); }
double Erlang::evalCDF(double x) { return erlang_cdf(x, phases, rate); }
double Erlang::evalInverseCDF(double p) { return erlang_inverse_cdf(p, phases, rate); }

std::string Erlang::toString(format f) {
    std::string k = formatNumber(phases), r = formatNumber(rate, true);
    return layoutText(f, type, "erlangdist", {{"phases", k}, {"rate", r}}, {{"phases", k}, {"rate", r}});
}

Dist* Erlang::fromConfig(Config* c) {
    return new Erlang(phaseCount(keyInt(c, "phases", 1)), keyDouble(c, "rate", 1));
}

Dist* Erlang::fromXML(XMLElement* family) {
    return new Erlang(phaseCount(tagInt(family, "phases", 1)), tagDouble(family, "rate", 1));
}

DistStats Erlang::getProperties(unsigned n) { return erlang_stats(phases, rate, n); }

// The count of phases is not tested here (see the file comment).
void Erlang::paramCheck() {
    if (rate <= 0) throw Exception("dist", __LINE__, "Invalid rate for erlang distribution");
}


double Erlang::erlang_pdf(double x, unsigned phases, double rate) {
    checkStaticRate(rate);
    checkPhases(phases);
    if (x < 0) return 0;
    return std::pow(rate, static_cast<double>(phases)) * std::pow(x, static_cast<double>(phases - 1)) *
           std::exp(-rate * x) / static_cast<double>(fac(phases - 1));
}

double Erlang::erlang_cdf(double x, unsigned phases, double rate) {
    checkStaticRate(rate);
    checkPhases(phases);
    if (x < 0) return 0;
    return 1 - std::exp(-rate * x) * poisson_partial_sum(rate * x, phases);
}

double Erlang::erlang_inverse_cdf(double p, unsigned phases, double rate) {
    return Gamma::gamma_inverse_cdf(p, phases, 1 / rate);
}

double Erlang::erlang_ccdf(double x, unsigned phases, double rate) { return 1 - erlang_cdf(x, phases, rate); }

DistStats Erlang::erlang_stats(unsigned phases, double rate, unsigned n) {
    checkStaticRate(rate);
    checkPhases(phases);
    DistStats stats;
    double k = phases;
    stats.mean = k / rate;
    stats.variance = k / (rate * rate);
    stats.skewness = 2 / std::sqrt(k);
    stats.cv = stats.sdOverMean();
    stats.kurtosis = 6 / k;
    unsigned long below = fac(phases - 1);
    // From 35 phases on, (k-1)! has wrapped to 0 in 32 bits and the integer
    // quotient has no value: no moment is reported then.
    if (n > 0 && below == 0)
        throw Exception("dist", __LINE__, "Moments of Erlang distribution beyond the range of the factorial.");
    for (unsigned i = 1; i <= n; i++)
        stats.moments.push_back(static_cast<double>(fac(i + phases - 1) / below) /
                                std::pow(rate, static_cast<double>(i)));
    return stats;
}

// ---- exact view
double Erlang::exactLogPDF(double x) { return exact::gamma_logpdf(x, getPhases(), 1 / getRate()); }
double Erlang::exactCDF(double x) { return exact::gamma_cdf(x, getPhases(), 1 / getRate()); }
double Erlang::exactCCDF(double x) { return exact::gamma_ccdf(x, getPhases(), 1 / getRate()); }
double Erlang::exactQuantile(double p) {
    checkProbability(p);
    return exact::gamma_quantile(p, getPhases(), 1 / getRate());
}
DistStats Erlang::exactStats(unsigned n) { return exact::erlang_mixture_stats({getPhases()}, {getRate()}, {1.0}, n); }
bool Erlang::erlangBranches(std::vector<unsigned>& phases, std::vector<double>& rates,
                        std::vector<double>& probabilities) const {
    phases = {getPhases()};
    rates = {getRate()};
    probabilities = {1.0};
    return true;
}
unsigned Erlang::parameterCount() const { return 2; }

}  // namespace velmora
