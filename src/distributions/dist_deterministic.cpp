// The deterministic distribution: a point mass at `val`. Its density is 1 at
// exactly that value, and it has no quantile function.
#include "distributions/dist_deterministic.h"

#include <algorithm>

#include <limits>

#include <cmath>

#include "core/libvelmora_settings.h"
#include "distributions/dist_read.h"
#include "distributions/dist_exact.h"
#include "numerics/misc_numerical_dist.h"

namespace velmora {

using namespace distread;

Deterministic::Deterministic(double val) : Dist(DIST_DETERMINISTIC), val(val) { paramCheck(); }

double Deterministic::getVal() const { return val; }
void Deterministic::setVal(double v) { val = v; }

double Deterministic::generateVariate() { return val; }

double Deterministic::evalPDF(double x) { return x == val ? 1.0 : 0.0; }

double Deterministic::evalCDF(double x) { return x < val ? 0.0 : 1.0; }

double Deterministic::evalInverseCDF(double) { throw Exception("dist", __LINE__, "Not supported."); }


std::string Deterministic::toString(format f) {
    return layoutText(f, type, "", {{"val", formatNumber(val, false)}}, {});
}

Dist* Deterministic::fromConfig(Config* c) {
    return new Deterministic(keyDouble(c, "val", 0));
}

DistStats Deterministic::getProperties(unsigned n) {
    DistStats stats;
    stats.mean = val;
    stats.variance = 0;
    stats.skewness = 0;
    stats.cv = 0;
    stats.kurtosis = 0;
    for (unsigned k = 1; k <= n; k++) stats.moments.push_back(std::pow(val, static_cast<double>(k)));
    return stats;
}

void Deterministic::paramCheck() {}

// ---- exact view
// The probability of the one value, so constant data have likelihood 1.
double Deterministic::exactLogPDF(double x) { return x == getVal() ? 0.0 : -std::numeric_limits<double>::infinity(); }
double Deterministic::exactQuantile(double p) {
    checkProbability(p);
    return getVal();
}
unsigned Deterministic::parameterCount() const { return 1; }
bool Deterministic::isDiscrete() const { return true; }

}  // namespace velmora
