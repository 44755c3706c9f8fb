// The Pearson type V distribution: X = 1/Y with Y gamma of shape alpha and
// scale 1/beta. Only the density is offered, in closed form over the system's
// gamma function.
#include "distributions/dist_pearsonv.h"

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

static void checkParameters(double alpha, double beta) {
    if (alpha <= 0 || beta <= 0) throw Exception("dist", __LINE__, "Invalid parameters for Pearson V distribution.");
}

PearsonV::PearsonV(double alpha, double beta) : Dist(DIST_PEARSONV), alpha(alpha), beta(beta) { paramCheck(); }

double PearsonV::getAlpha() const { return alpha; }
double PearsonV::getBeta() const { return beta; }

void PearsonV::setAlpha(double value) { setChecked(alpha, value); }
void PearsonV::setBeta(double value) { setChecked(beta, value); }

double PearsonV::generateVariate() { return rng.pearsonV(alpha, beta); }
double PearsonV::evalPDF(double x) { return pearsonV_pdf(x, alpha, beta); }
double PearsonV::evalCDF(double) { throw Exception("dist", __LINE__, "Not implemented!"); }
double PearsonV::evalInverseCDF(double) { throw Exception("dist", __LINE__, "Not implemented."); }

std::string PearsonV::toString(format f) {
    TextFields fields = {{"alpha", formatNumber(alpha, true)}, {"beta", formatNumber(beta, true)}};
    return layoutText(f, type, "pearson5dist", fields, fields);
}

Dist* PearsonV::fromConfig(Config* c) {
    return new PearsonV(keyDouble(c, "alpha", 1), keyDouble(c, "beta", 1));
}

DistStats PearsonV::getProperties(unsigned) { throw Exception("dist", __LINE__, "Not implemented."); }

void PearsonV::paramCheck() { checkParameters(alpha, beta); }

double PearsonV::pearsonV_pdf(double x, double alpha, double beta) {
    checkParameters(alpha, beta);
    if (x <= 0) return 0;
    return std::pow(x, -(alpha + 1)) * std::exp(-beta / x) / (std::pow(beta, -alpha) * gamma_function(alpha));
}

// ---- exact view
double PearsonV::exactLogPDF(double x) {
    const double a = getAlpha(), b = getBeta();
    return x > 0 ? a * std::log(b) - log_gamma(a) - (a + 1) * std::log(x) - b / x
                 : -std::numeric_limits<double>::infinity();
}
double PearsonV::exactCDF(double x) { return x > 0 ? exact::gamma_ccdf(getBeta() / x, getAlpha(), 1) : 0.0; }
double PearsonV::exactCCDF(double x) { return x > 0 ? exact::gamma_cdf(getBeta() / x, getAlpha(), 1) : 1.0; }
// Moments of order k exist for alpha > k only; the others stay NaN.
DistStats PearsonV::exactStats(unsigned n) {
    const double a = getAlpha(), b = getBeta();
    DistStats stats;
    double m = 1;
    for (unsigned k = 1; k <= n; ++k)
        stats.moments.push_back(a > k ? (m *= b / (a - k)) : std::numeric_limits<double>::quiet_NaN());
    if (a > 1) stats.mean = b / (a - 1);
    if (a > 2) stats.variance = b * b / ((a - 1) * (a - 1) * (a - 2));
    stats.cv = stats.sdOverMean();
    return stats;
}
unsigned PearsonV::parameterCount() const { return 2; }

}  // namespace velmora
