// The Pearson type VI distribution: beta times the ratio of two unit-scale
// gamma variates of shapes alpha1 and alpha2. Only the density is offered, in
// closed form over the system's beta function.
#include "distributions/dist_pearsonvi.h"

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

static void checkParameters(double alpha1, double alpha2, double beta) {
    if (alpha1 <= 0 || alpha2 <= 0 || beta <= 0)
        throw Exception("dist", __LINE__, "Invalid parameters for Pearson VI distribution.");
}

PearsonVI::PearsonVI(double alpha1, double alpha2, double beta)
    : Dist(DIST_PEARSONVI), alpha1(alpha1), alpha2(alpha2), beta(beta) {
    paramCheck();
}

double PearsonVI::getAlpha1() const { return alpha1; }
double PearsonVI::getAlpha2() const { return alpha2; }
double PearsonVI::getBeta() const { return beta; }

void PearsonVI::setAlpha1(double value) { setChecked(alpha1, value); }
void PearsonVI::setAlpha2(double value) { setChecked(alpha2, value); }
void PearsonVI::setBeta(double value) { setChecked(beta, value); }

double PearsonVI::generateVariate() { return rng.pearsonVI(alpha1, alpha2, beta); }
double PearsonVI::evalPDF(double x) { return pearsonVI_pdf(x, alpha1, alpha2, beta); }
double PearsonVI::evalCDF(double) { throw Exception("dist", __LINE__, "Not implemented!"); }
double PearsonVI::evalInverseCDF(double) { throw Exception("dist", __LINE__, "Not implemented."); }

std::string PearsonVI::toString(format f) {
    TextFields fields = {{"alpha1", formatNumber(alpha1, true)},
                         {"alpha2", formatNumber(alpha2, true)},
                         {"beta", formatNumber(beta, true)}};
    return layoutText(f, type, "pearson6dist", fields, fields);
}

Dist* PearsonVI::fromConfig(Config* c) {
    return new PearsonVI(keyDouble(c, "alpha1", 1), keyDouble(c, "alpha2", 1), keyDouble(c, "beta", 1));
}

DistStats PearsonVI::getProperties(unsigned) { throw Exception("dist", __LINE__, "Not implemented."); }

void PearsonVI::paramCheck() { checkParameters(alpha1, alpha2, beta); }

double PearsonVI::pearsonVI_pdf(double x, double alpha1, double alpha2, double beta) {
    checkParameters(alpha1, alpha2, beta);
    if (x <= 0) return 0;
    double y = x / beta;
    return std::pow(y, alpha1 - 1) / (beta * beta_function(alpha1, alpha2) * std::pow(1 + y, alpha1 + alpha2));
}

// ---- exact view
double PearsonVI::exactLogPDF(double x) {
    const double a1 = getAlpha1(), a2 = getAlpha2(), b = getBeta();
    if (!(x > 0)) return -std::numeric_limits<double>::infinity();
    return log_gamma(a1 + a2) - log_gamma(a1) - log_gamma(a2) - std::log(b) + (a1 - 1) * std::log(x / b) -
           (a1 + a2) * std::log1p(x / b);
}
double PearsonVI::exactQuantile(double) { throw Exception("dist", __LINE__, "Not implemented."); }
DistStats PearsonVI::exactStats(unsigned n) {
    const double a1 = getAlpha1(), a2 = getAlpha2(), b = getBeta();
    DistStats stats;
    double m = 1;
    for (unsigned k = 0; k < n; ++k)
        stats.moments.push_back(a2 > k + 1 ? (m *= b * (a1 + k) / (a2 - 1 - k)) : std::numeric_limits<double>::quiet_NaN());
    if (a2 > 1) stats.mean = b * a1 / (a2 - 1);
    if (a2 > 2) stats.variance = b * b * a1 * (a1 + a2 - 1) / ((a2 - 1) * (a2 - 1) * (a2 - 2));
    stats.cv = stats.sdOverMean();
    return stats;
}
unsigned PearsonVI::parameterCount() const { return 3; }
bool PearsonVI::hasExactCDF() const { return false; }

}  // namespace velmora
