// The chi-squared distribution. The distribution function is the incomplete
// gamma integral (Algorithm AS 239, Shea 1988) and the quantile Algorithm
// AS 91 (Best and Roberts 1975). Every k is accepted by the object; k = 0 is
// refused by the gamma routines once a density or probability is asked for.
#include "distributions/dist_chisquare.h"

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

ChiSquare::ChiSquare(unsigned k) : Dist(DIST_CHISQUARE), k(k) { paramCheck(); }

unsigned ChiSquare::getK() const { return k; }

void ChiSquare::setK(unsigned value) { setChecked(k, value); }

double ChiSquare::generateVariate() { return rng.chi2(k); }
double ChiSquare::evalPDF(double x) { return chi2_pdf(x, k); }
double ChiSquare::evalCDF(double x) { return chi2_cdf(x, k); }
double ChiSquare::evalInverseCDF(double p) { return chi2_inverse_cdf(p, k); }

std::string ChiSquare::toString(format f) {
    return layoutText(f, type, "chisquaredist", {{"k", formatNumber(k)}}, {{"deg", formatNumber(k)}});
}

Dist* ChiSquare::fromConfig(Config* c) {
    return new ChiSquare(static_cast<unsigned>(keyInt(c, "k", 2)));
}

Dist* ChiSquare::fromXML(XMLElement* family) {
    return new ChiSquare(static_cast<unsigned>(tagInt(family, "deg", 2)));
}

DistStats ChiSquare::getProperties(unsigned n) { return chi2_stats(k, n); }

void ChiSquare::paramCheck() {}

double ChiSquare::chi2_pdf(double x, unsigned k) {
    if (x <= 0) return 0;
    double h = k / 2.0;
    return std::pow(x, h - 1) * std::exp(-x / 2) / (std::pow(2.0, h) * gamma_function(h));
}

double ChiSquare::chi2_cdf(double x, unsigned k) {
    if (x <= 0) return 0;
    return as::gammad(x / 2, k / 2.0);
}

double ChiSquare::chi2_inverse_cdf(double p, unsigned k) {
    checkProbability(p);
    return as::ppchi2(p, k);
}

double ChiSquare::chi2_ccdf(double x, unsigned k) { return 1 - chi2_cdf(x, k); }

DistStats ChiSquare::chi2_stats(unsigned k, unsigned n) {
    double kd = k;
    DistStats stats;
    stats.mean = kd;
    stats.variance = 2 * kd;
    stats.skewness = std::sqrt(8 / kd);
    stats.cv = stats.sdOverMean();
    stats.kurtosis = 12 / kd;
    double moment = 1;
    for (unsigned i = 1; i <= n; i++) {
        moment *= kd + 2.0 * i - 2;
        stats.moments.push_back(moment);
    }
    return stats;
}

// ---- exact view
double ChiSquare::exactLogPDF(double x) { return exact::gamma_logpdf(x, k / 2.0, 2); }
double ChiSquare::exactCDF(double x) { return exact::gamma_cdf(x, k / 2.0, 2); }
double ChiSquare::exactCCDF(double x) { return exact::gamma_ccdf(x, k / 2.0, 2); }
double ChiSquare::exactQuantile(double p) {
    checkProbability(p);
    return exact::gamma_quantile(p, k / 2.0, 2);
}
DistStats ChiSquare::exactStats(unsigned n) { return exact::gamma_stats(k / 2.0, 2, n); }
unsigned ChiSquare::parameterCount() const { return 1; }

}  // namespace velmora
