// The distribution contract: the private stream of every family, the registry
// of family names, the log-likelihood of a trace and the text layout that all
// families share.
#include "distributions/dist.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <sstream>

#include "core/libvelmora_settings.h"
#include "core/misc_string.h"
#include "numerics/misc_numerical_dist.h"
#include "traces/trace.h"

namespace velmora {

namespace {

// Indexed by dist_type; the names are case-sensitive.
const char* const distTypeNames[] = {
    "deterministic", "uniform",   "exponential", "normal",   "lognormal",
    "johnson",       "erlang",    "hyperexponential", "hypoexponential", "hypererlang",
    "weibull",       "gamma",     "beta",        "pearsonV", "pearsonVI",
    "geometric",     "hypogeometric", "triangular", "chisquare"};
const int distTypeCount = sizeof(distTypeNames) / sizeof(distTypeNames[0]);

}  // namespace

DistStats::DistStats()
    : mean(std::numeric_limits<double>::quiet_NaN()),
      variance(std::numeric_limits<double>::quiet_NaN()),
      skewness(std::numeric_limits<double>::quiet_NaN()),
      cv(std::numeric_limits<double>::quiet_NaN()),
      kurtosis(std::numeric_limits<double>::quiet_NaN()) {}

double DistStats::sdOverMean() const { return std::sqrt(variance) / mean; }

Dist::Dist() : Dist(DIST_DETERMINISTIC) {}

Dist::Dist(dist_type type) : type(type) {}

dist_type Dist::getType() const { return type; }

double Dist::evalCCDF(double x) { return 1 - evalCDF(x); }

double Dist::exactLogPDF(double x) { return std::log(evalPDF(x)); }
double Dist::exactCDF(double x) { return evalCDF(x); }
double Dist::exactCCDF(double x) { return 1 - exactCDF(x); }

double Dist::exactQuantile(double p) {
    checkProbability(p);
    return invertExactCDF(p, -std::numeric_limits<double>::infinity(), exactStats(1).mean);
}

DistStats Dist::exactStats(unsigned n) { return getProperties(n); }
bool Dist::isDiscrete() const { return false; }
bool Dist::hasExactCDF() const { return true; }
bool Dist::erlangBranches(std::vector<unsigned>&, std::vector<double>&, std::vector<double>&) const { return false; }

void Dist::setExact(bool value) { exact = value; }
bool Dist::isExact() const { return exact; }
double Dist::quantile(double p) { return exact ? exactQuantile(p) : evalInverseCDF(p); }
DistStats Dist::stats(unsigned n) { return exact ? exactStats(n) : getProperties(n); }

double Dist::exactNormalTransform(double z) {
    const double u = as::alnorm(z, false);
    return exactQuantile(u < 1 ? u : 1 - std::numeric_limits<double>::epsilon() / 2);
}

// Doubling steps away from `start` bracket the root, then bisection on the
// midpoint runs until the bracket holds no double between its ends; about
// 60 to 120 evaluations of the distribution function.
double Dist::invertExactCDF(double p, double lower, double start) {
    const double inf = std::numeric_limits<double>::infinity();
    if (p <= 0) return lower;
    if (p >= 1) return inf;
    if (!std::isfinite(start)) start = std::isfinite(lower) ? lower + 1 : 0;
    double lo = start, hi = start;
    double step = std::max(1.0, std::fabs(start));
    if (exactCDF(start) >= p) {
        for (lo = start - step; lo > lower && exactCDF(lo) >= p; step *= 2, lo = start - step) hi = lo;
        if (!(lo > lower)) lo = lower;
    } else {
        for (hi = start + step; exactCDF(hi) < p; step *= 2, hi = start + step) {
            lo = hi;
            if (!std::isfinite(hi)) return inf;
        }
    }
    if (!std::isfinite(lo)) lo = -std::numeric_limits<double>::max();
    for (int it = 0; it < 2100; ++it) {
        const double mid = lo + (hi - lo) / 2;
        if (!(mid > lo && mid < hi)) break;
        if (exactCDF(mid) >= p) hi = mid; else lo = mid;
    }
    return hi;
}

double Dist::compute_loglikelihood(Trace* t) {
    double sum = 0;
    unsigned size = t->getSize();
    for (unsigned i = 0; i < size; i++) sum += std::log(evalPDF(t->getElement(i)));
    return sum;
}

void Dist::setSeed(unsigned seed) { rng.setSeed(seed); }

std::string Dist::getDistType(dist_type t) {
    int index = static_cast<int>(t);
    if (index < 0 || index >= distTypeCount) throw Exception("dist", __LINE__, "Unknown distribution");
    return distTypeNames[index];
}

dist_type Dist::getDistType(std::string name) {
    for (int i = 0; i < distTypeCount; i++)
        if (name == distTypeNames[i]) return static_cast<dist_type>(i);
    throw Exception("dist", __LINE__, "Unknown distribution");
}

std::string Dist::layoutText(format f, dist_type t, const std::string& familyTag, const TextFields& keys,
                             const TextFields& tags, const std::string& unsupported) {
    std::string text;
    if (f == FORMAT_CONFIG) {
        text = "distribution = " + getDistType(t) + "\n";
        for (const auto& key : keys) text += key.first + " = " + key.second + "\n";
    } else if (f == FORMAT_XML && !familyTag.empty()) {
        text = "<dist>\n<" + familyTag + ">\n";
        for (const auto& tag : tags) text += "<" + tag.first + ">" + tag.second + "</" + tag.first + ">\n";
        text += "</" + familyTag + ">\n</dist>\n";
    } else {
        throw Exception("dist", __LINE__, unsupported);
    }
    return text;
}

namespace {
// Full precision has no fixed form: 17 significant digits whatever the size.
void numberForm(std::ostream& out, bool fixed, bool exact) {
    if (exact || FullPrecisionText::active())
        out.precision(FullPrecisionText::kDigits);
    else if (fixed)
        out.setf(std::ios::fixed, std::ios::floatfield);
}
}  // namespace

std::string Dist::formatNumber(double value, bool fixed) const {
    std::ostringstream out;
    numberForm(out, fixed, exact);
    out << value;
    return out.str();
}

std::string Dist::formatNumber(unsigned value) {
    std::ostringstream out;
    out << value;
    return out.str();
}

std::string Dist::formatList(const std::vector<double>& values, bool fixed) const {
    std::ostringstream out;
    numberForm(out, fixed, exact);
    for (double value : values) out << value << " ";
    return out.str();
}

std::string Dist::formatList(const std::vector<unsigned>& values) {
    std::ostringstream out;
    for (unsigned value : values) out << value << " ";
    return out.str();
}

// A NaN is not a probability either, and is refused with the same message.
void Dist::checkProbability(double p) {
    if (!(p >= 0 && p <= 1)) throw Exception("dist", __LINE__, "Invalid value for inverse cdf.");
}

std::vector<double> dist_moments(Dist* dist, unsigned from, unsigned to) {
    const std::vector<double> moments = dist->stats(to).moments;
    std::vector<double> result;
    if (from == 0) {
        result.push_back(1.0);
        from = 1;
    }
    for (unsigned i = from; i <= to; ++i)
        if (moments.size() >= i) result.push_back(moments[i - 1]);
    return result;
}

}  // namespace velmora
