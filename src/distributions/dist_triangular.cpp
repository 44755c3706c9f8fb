// The triangular distribution in closed form; the mode must lie strictly
// between the bounds.
#include "distributions/dist_triangular.h"

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

static void checkTriangle(double a, double b, double c) {
    if (a >= c || c >= b) throw Exception("dist", __LINE__, "Invalid parameters for triangular distribution.");
}

Triangular::Triangular(double a, double b, double c) : Dist(DIST_TRIANGULAR), a(a), b(b), c(c) { paramCheck(); }

double Triangular::getA() const { return a; }
double Triangular::getB() const { return b; }
double Triangular::getC() const { return c; }

void Triangular::setA(double value) { setChecked(a, value); }
void Triangular::setB(double value) { setChecked(b, value); }
void Triangular::setC(double value) { setChecked(c, value); }

double Triangular::generateVariate() { return rng.triangular(a, b, c); }
double Triangular::evalPDF(double x) { return triangular_pdf(x, a, b, c); }
double Triangular::evalCDF(double x) { return triangular_cdf(x, a, b, c); }
double Triangular::evalInverseCDF(double p) { return triangular_inverse_cdf(p, a, b, c); }

std::string Triangular::toString(format f) {
    TextFields fields = {{"a", formatNumber(a, true)}, {"b", formatNumber(b, true)}, {"c", formatNumber(c, true)}};
    return layoutText(f, type, "triangulardist", fields, fields);
}

Dist* Triangular::fromConfig(Config* c) {
    return new Triangular(keyDouble(c, "a", 0), keyDouble(c, "b", 1), keyDouble(c, "c", 0.5));
}

Dist* Triangular::fromXML(XMLElement* family) {
    return new Triangular(tagDouble(family, "a", 0), tagDouble(family, "b", 1), tagDouble(family, "c", 0.5));
}

DistStats Triangular::getProperties(unsigned n) { return triangular_stats(a, b, c, n); }

void Triangular::paramCheck() { checkTriangle(a, b, c); }

double Triangular::triangular_pdf(double x, double a, double b, double c) {
    checkTriangle(a, b, c);
    if (a <= x && x <= c) return 2 * (x - a) / ((b - a) * (c - a));
    if (c < x && x <= b) return 2 * (b - x) / ((b - a) * (b - c));
    return 0;
}

double Triangular::triangular_cdf(double x, double a, double b, double c) {
    checkTriangle(a, b, c);
    if (x < a) return 0;
    if (x <= c) return (x - a) * (x - a) / ((b - a) * (c - a));
    if (x <= b) return 1 - (b - x) * (b - x) / ((b - a) * (b - c));
    return 1;
}

double Triangular::triangular_inverse_cdf(double p, double a, double b, double c) {
    checkProbability(p);
    checkTriangle(a, b, c);
    if (p <= (c - a) / (b - a)) return a + std::sqrt((b - a) * p * (c - a));
    return b - std::sqrt((1 - p) * (b - a) * (b - c));
}

double Triangular::triangular_ccdf(double x, double a, double b, double c) {
    return 1 - triangular_cdf(x, a, b, c);
}

DistStats Triangular::triangular_stats(double a, double b, double c, unsigned n) {
    checkTriangle(a, b, c);
    double q = a * a + b * b + c * c - a * b - a * c - b * c;
    DistStats stats;
    stats.mean = (a + b + c) / 3;
    stats.variance = q / 18;
    stats.skewness = std::sqrt(2.0) * (a + b - 2 * c) * (2 * a - b - c) * (a - 2 * b + c) / (5 * std::pow(q, 1.5));
    stats.cv = stats.sdOverMean();
    stats.kurtosis = -0.6;
    if (n >= 1) stats.moments.push_back(stats.mean);
    if (n > 1) libvelmora_warning("For triangular distribution only computation of first moment is supported.");
    return stats;
}

// ---- exact view
double Triangular::exactQuantile(double p) { return evalInverseCDF(p); }
DistStats Triangular::exactStats(unsigned n) {
    DistStats stats = triangular_stats(getA(), getB(), getC(), 0);
    const std::vector<double> raw = exact::raw_from_central(stats.mean, stats.variance, stats.skewness);
    for (unsigned k = 0; k < n && k < 3; ++k) stats.moments.push_back(raw[k]);
    return stats;
}
unsigned Triangular::parameterCount() const { return 3; }

}  // namespace velmora
