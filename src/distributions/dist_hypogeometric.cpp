// The hypo-geometric distribution: variates as sums of geometric draws, and
// the mean as the sum of the phases' means.
#include "distributions/dist_hypogeometric.h"

#include <algorithm>

#include <limits>

#include <cmath>

#include "core/libvelmora_settings.h"
#include "distributions/dist_read.h"
#include "numerics/random.h"
#include "distributions/dist_exact.h"
#include "numerics/misc_numerical_dist.h"

namespace velmora {

using namespace distread;

// A NaN element is refused like one outside [0, 1].
static void checkP(const std::vector<double>& p) {
    for (double value : p)
        if (!(value >= 0 && value <= 1))
            throw Exception("dist", __LINE__, "Invalid parameter for HypoGeometric distribution.");
}

[[noreturn]] static void notSupported(int line) { throw Exception("dist", line, "Not supported!"); }

HypoGeometric::HypoGeometric(std::vector<double> p) : Dist(DIST_HYPOGEOMETRIC), p(std::move(p)) { paramCheck(); }

std::vector<double> HypoGeometric::getP() const { return p; }

void HypoGeometric::setP(std::vector<double> value) { setChecked(p, std::move(value)); }

double HypoGeometric::generateVariate() { return rng.hypogeometric(p); }
double HypoGeometric::evalPDF(double) { notSupported(__LINE__); }
double HypoGeometric::evalCDF(double) { notSupported(__LINE__); }
double HypoGeometric::evalInverseCDF(double) { notSupported(__LINE__); }
double HypoGeometric::evalCCDF(double) { notSupported(__LINE__); }

std::string HypoGeometric::toString(format f) {
    TextFields keys = {{"phases", formatNumber(static_cast<unsigned>(p.size()))}, {"p", formatList(p, true)}};
    return layoutText(f, type, "", keys, {}, "Output format not supported.");
}

Dist* HypoGeometric::fromConfig(Config* c) {
    std::vector<double> p;
    if (c->existsKey("p")) p = doubleList(c->getValue("p"));
    return new HypoGeometric(p);
}

DistStats HypoGeometric::getProperties(unsigned n) {
    DistStats stats;
    stats.mean = getMean();
    stats.variance = 0;
    stats.skewness = 0;
    stats.cv = 0;
    stats.kurtosis = 0;
    if (n >= 1) stats.moments.push_back(stats.mean);
    if (n > 1)
        throw Exception("dist", __LINE__, "For geometric distribution only computation of first moment is supported.");
    return stats;
}

void HypoGeometric::paramCheck() { checkP(p); }

// 1/p is the mean of Geometric(p); no phase object (and no stream of its own)
// is built for it.
double HypoGeometric::getMean() {
    double mean = 0;
    for (double value : p) mean += 1 / value;
    return mean;
}

// ---- exact view
double HypoGeometric::exactLogPDF(double) {
    throw Exception("dist", __LINE__, "Cannot assess hypogeometric: the family has no probability function.");
}
unsigned HypoGeometric::parameterCount() const { return static_cast<unsigned>(getP().size()); }
bool HypoGeometric::isDiscrete() const { return true; }

}  // namespace velmora
