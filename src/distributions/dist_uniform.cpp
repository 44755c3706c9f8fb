// The continuous uniform distribution on [a, b] in closed form. The object
// refuses a negative lower bound; the density, distribution and quantile
// functions refuse only a > b, and the statistics both.
#include "distributions/dist_uniform.h"

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

static void checkRange(double a, double b) {
    if (a > b) throw Exception("dist", __LINE__, "Invalid range for uniform distribution");
}

Uniform::Uniform(double a, double b) : Dist(DIST_UNIFORM), a(a), b(b) { paramCheck(); }

double Uniform::getA() const { return a; }
double Uniform::getB() const { return b; }

void Uniform::setA(double value) { setChecked(a, value); }
void Uniform::setB(double value) { setChecked(b, value); }

double Uniform::generateVariate() { return rng.uniform(a, b); }
double Uniform::evalPDF(double x) { return uniform_pdf(x, a, b); }
double Uniform::evalCDF(double x) { return uniform_cdf(x, a, b); }
double Uniform::evalInverseCDF(double p) { return uniform_inverse_cdf(p, a, b); }

std::string Uniform::toString(format f) {
    TextFields fields = {{"a", formatNumber(a, false)}, {"b", formatNumber(b, false)}};
    return layoutText(f, type, "uniformdist", fields, fields);
}

Dist* Uniform::fromConfig(Config* c) {
    return new Uniform(keyDouble(c, "a", 0), keyDouble(c, "b", 1));
}

Dist* Uniform::fromXML(XMLElement* family) {
    return new Uniform(tagDouble(family, "a", 0), tagDouble(family, "b", 1));
}

DistStats Uniform::getProperties(unsigned n) { return uniform_stats(a, b, n); }

void Uniform::paramCheck() {
    if (a < 0 || a > b) throw Exception("dist", __LINE__, "Invalid range for uniform distribution");
}

double Uniform::uniform_pdf(double x, double a, double b) {
    checkRange(a, b);
    if (a <= x && x <= b) return 1 / (b - a);
    return 0;
}

double Uniform::uniform_cdf(double x, double a, double b) {
    checkRange(a, b);
    if (x < a) return 0;
    if (x <= b) return (x - a) / (b - a);
    return 1;
}

double Uniform::uniform_inverse_cdf(double p, double a, double b) {
    checkProbability(p);
    checkRange(a, b);
    return (b - a) * p + a;
}

double Uniform::uniform_ccdf(double x, double a, double b) { return 1 - uniform_cdf(x, a, b); }

DistStats Uniform::uniform_stats(double a, double b, unsigned n) {
    if (a < 0) throw Exception("dist", __LINE__, "Invalid range for uniform distribution");
    checkRange(a, b);
    DistStats stats;
    stats.mean = (a + b) / 2;
    stats.variance = (b - a) * (b - a) / 12;
    stats.skewness = 0;
    stats.cv = (b - a) / (a + b) * 0.5773502691896258;  // 1/sqrt(3)
    stats.kurtosis = -1.2;
    for (unsigned k = 1; k <= n; k++) {
        double e = k + 1.0;
        stats.moments.push_back((std::pow(b, e) - std::pow(a, e)) / (e * (b - a)));
    }
    return stats;
}

// ---- exact view
double Uniform::exactQuantile(double p) { return evalInverseCDF(p); }
unsigned Uniform::parameterCount() const { return 2; }

}  // namespace velmora
