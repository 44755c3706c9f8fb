// The Johnson translation system. Density and quantile are closed forms of
// the transformation; the distribution function reads the four-decimal table
// of the standard normal (Normal::standard_normal_cdf), and the quantile
// rests on Algorithm AS 241 (PPND16). The moments of SL, SU and SN are the
// closed forms of Johnson (1949); SB has none, and its moments are Romberg
// integrals of the density between its 0.1 and 99.9 percentiles, so they
// carry the truncation of 0.2 percent of the mass besides the tolerance
// 0.0001.
//
// The SU third central moment is taken with the sign that makes it positive
// for either sign of gamma, where the textbook value has the sign opposite to
// gamma's: a skewness of the Johnson SU is reported as its absolute value.
#include "distributions/dist_johnson.h"

#include <algorithm>

#include <limits>

#include <cmath>

#include "core/libvelmora_settings.h"
#include "distributions/dist_normal.h"
#include "distributions/dist_read.h"
#include "numerics/misc_numerical.h"
#include "numerics/misc_numerical_dist.h"
#include "numerics/random.h"
#include "distributions/dist_exact.h"

namespace velmora {

using namespace distread;

namespace {

const char* const familyNames[] = {"SL", "SB", "SU", "SN"};

bool knownFamily(dist_johnson_family f) { return f >= JOHNSON_SL && f <= JOHNSON_SN; }

void checkFamily(dist_johnson_family f) {
    if (!knownFamily(f)) throw Exception("dist", __LINE__, "Unknown family for Johnson translation system.");
}

// sqrt(2 pi)
const double sqrtTwoPi = 2.5066282746310002;

}  // namespace

Johnson::Johnson(double gamma, double delta, double lambda, double xi, dist_johnson_family family)
    : Dist(DIST_JOHNSON), gamma(gamma), delta(delta), lambda(lambda), xi(xi), family(family) {
    paramCheck();
}

double Johnson::getGamma() const { return gamma; }
double Johnson::getDelta() const { return delta; }
double Johnson::getLambda() const { return lambda; }
double Johnson::getXi() const { return xi; }
dist_johnson_family Johnson::getJohnsonType() const { return family; }

void Johnson::setGamma(double value) { setChecked(gamma, value); }
void Johnson::setDelta(double value) { setChecked(delta, value); }
void Johnson::setLambda(double value) { setChecked(lambda, value); }
void Johnson::setXi(double value) { setChecked(xi, value); }
void Johnson::setJohnsonType(dist_johnson_family value) { family = value; }

double Johnson::generateVariate() { return rng.johnson(family, gamma, delta, lambda, xi); }
double Johnson::evalPDF(double x) { return johnson_pdf(x, family, gamma, delta, lambda, xi); }
double Johnson::evalCDF(double x) { return johnson_cdf(x, family, gamma, delta, lambda, xi); }
double Johnson::evalInverseCDF(double p) { return johnson_inverse_cdf(p, family, gamma, delta, lambda, xi); }

// Format 1 has a message of its own for a family outside the four; the
// key-value form reports it through getJohnsonType.
std::string Johnson::toString(format f) {
    if (f == FORMAT_XML && !knownFamily(family)) throw Exception("dist", __LINE__, "Unknown type for Johnson family.");
    std::string name = getJohnsonType(family);
    std::string g = formatNumber(gamma, true), d = formatNumber(delta, true);
    std::string l = formatNumber(lambda, true), x = formatNumber(xi, true);
    return layoutText(f, type, "johnsondist", {{"johnson", name}, {"gamma", g}, {"delta", d}, {"lambda", l}, {"xi", x}},
                      {{"type", name}, {"shape1", g}, {"shape2", d}, {"location", x}, {"scale", l}});
}

Dist* Johnson::fromConfig(Config* c) {
    dist_johnson_family f = c->existsKey("johnson") ? getJohnsonType(c->getValue("johnson")) : JOHNSON_SB;
    return new Johnson(keyDouble(c, "gamma", 1), keyDouble(c, "delta", 1), keyDouble(c, "lambda", 1),
                       keyDouble(c, "xi", 1), f);
}

Dist* Johnson::fromXML(XMLElement* family) {
    XMLElement* name = family->getChildElement("type");
    dist_johnson_family f = name != nullptr ? getJohnsonType(name->getValue()) : JOHNSON_SB;
    return new Johnson(tagDouble(family, "shape1", 1), tagDouble(family, "shape2", 1), tagDouble(family, "scale", 1),
                       tagDouble(family, "location", 1), f);
}

DistStats Johnson::getProperties(unsigned n) { return johnson_stats(family, gamma, delta, lambda, xi, n); }

// A delta or lambda of 0 divides by 0 and gives what floating-point
// arithmetic makes of it.
void Johnson::paramCheck() {}

dist_johnson_family Johnson::getJohnsonType(std::string name) {
    for (int i = 0; i < 4; i++)
        if (name == familyNames[i]) return static_cast<dist_johnson_family>(i);
    throw Exception("dist", __LINE__, "Unknown type of Johnson distribution.");
}

std::string Johnson::getJohnsonType(dist_johnson_family f) {
    if (!knownFamily(f)) throw Exception("dist", __LINE__, "Unknown type of Johnson distribution.");
    return familyNames[f];
}

double Johnson::johnson_pdf(double x, dist_johnson_family f, double gamma, double delta, double lambda, double xi) {
    if (f == JOHNSON_SL && x <= xi) return 0;
    if (f == JOHNSON_SB && (x <= xi || x >= xi + lambda)) return 0;
    const double z = (x - xi) / lambda;
    const double t = gamma + delta * johnson_transformation(z, f);
    // The derivative of the transformation.
    double slope = 1;
    if (f == JOHNSON_SL) slope = 1 / z;
    if (f == JOHNSON_SB) slope = 1 / (z * (1 - z));
    if (f == JOHNSON_SU) slope = 1 / std::sqrt(z * z + 1);
    return (delta / (lambda * sqrtTwoPi)) * slope * std::exp(-0.5 * t * t);
}

// A transformed value that is infinite or not a number (delta or lambda 0)
// gives 0 below x = 0 and 1 from there on.
double Johnson::johnson_cdf(double x, dist_johnson_family f, double gamma, double delta, double lambda, double xi) {
    if (f == JOHNSON_SL && x <= xi) return 0;
    if (f == JOHNSON_SB && x <= xi) return 0;
    if (f == JOHNSON_SB && x >= xi + lambda) return 1;
    const double t = gamma + delta * johnson_transformation((x - xi) / lambda, f);
    if (!std::isfinite(t)) return x < 0 ? 0 : 1;
    return Normal::normal_cdf(t, 0, 1);
}

// p = 0 and p = 1 give the finite value of z = 0, as PPND16 does there.
double Johnson::johnson_inverse_cdf(double p, dist_johnson_family f, double gamma, double delta, double lambda,
                                    double xi) {
    checkProbability(p);
    checkFamily(f);
    const double y = (as::ppnd16(p) - gamma) / delta;
    switch (f) {
        case JOHNSON_SL: return lambda * std::exp(y) + xi;
        case JOHNSON_SB: return lambda * std::exp(y) / (std::exp(y) + 1) + xi;
        case JOHNSON_SU: return lambda * std::sinh(y) + xi;
        default: return lambda * y + xi;
    }
}

double Johnson::johnson_ccdf(double x, dist_johnson_family f, double gamma, double delta, double lambda, double xi) {
    return 1 - johnson_cdf(x, f, gamma, delta, lambda, xi);
}

// SU is log(z + sqrt(z^2 + 1)) as written, not asinh: far below 0 the sum
// cancels (about 1e-10 relative at z = -1000).
double Johnson::johnson_transformation(double z, dist_johnson_family f) {
    switch (f) {
        case JOHNSON_SL: return std::log(z);
        case JOHNSON_SB: return (z <= 0 || z >= 1) ? 0 : std::log(z / (1 - z));
        case JOHNSON_SU: return std::log(z + std::sqrt(z * z + 1));
        case JOHNSON_SN: return z;
    }
    checkFamily(f);
    return 0;
}

DistStats Johnson::johnson_stats(dist_johnson_family f, double gamma, double delta, double lambda, double xi,
                                 unsigned n) {
    checkFamily(f);
    const double w = std::exp(1 / (delta * delta));
    const double omega = gamma / delta;
    const double bigW = w * w * w * w + 2 * w * w * w + 3 * w * w - 3;
    double mean, var, c3, c4;
    if (f == JOHNSON_SL) {
        mean = lambda * std::exp(-omega) * std::sqrt(w) + xi;
        var = lambda * lambda * std::exp(-2 * omega) * w * (w - 1);
        c3 = lambda * lambda * lambda * std::exp(-3 * omega) * std::sqrt(w * w * w) * (w - 1) * (w - 1) * (w + 2);
        c4 = var * var * bigW;
    } else if (f == JOHNSON_SU) {
        const double l2 = lambda * lambda;
        mean = xi - lambda * std::sqrt(w) * std::sinh(omega);
        var = (l2 / 2) * (w - 1) * (w * std::cosh(2 * omega) + 1);
        const double e = (l2 * lambda / 4) * std::sqrt(w) * (w - 1) * (w - 1) *
                         (w * (w + 2) * std::sinh(3 * omega) + 3 * std::sinh(omega));
        c3 = gamma < 0 ? -e : e;
        c4 = (l2 * l2 / 8) * (w - 1) * (w - 1) *
             (w * w * bigW * std::cosh(4 * omega) + 4 * w * w * (w + 2) * std::cosh(2 * omega) + 3 * (2 * w + 1));
    } else if (f == JOHNSON_SN) {
        mean = xi - gamma * lambda / delta;
        var = (lambda / delta) * (lambda / delta);
        c3 = 0;
        c4 = 3 * var * var;
    } else {
        double bound[2];
        const double q[2] = {0.001, 0.999};
        for (int i = 0; i < 2; i++) {
            const double e = std::exp((as::ppnd16(q[i]) - gamma) / delta);
            bound[i] = lambda * (e / (e + 1)) + xi;
        }
        std::vector<double> params = {gamma, delta, lambda, xi};
        mean = RombergIteration(bound[0], bound[1], MeanJFcn, params, 0.0001);
        params.push_back(mean);
        var = RombergIteration(bound[0], bound[1], VarianceJFcn, params, 0.0001);
        c3 = RombergIteration(bound[0], bound[1], ThirdMomJFcn, params, 0.0001);
        c4 = RombergIteration(bound[0], bound[1], FourthMomJFcn, params, 0.0001);
    }
    DistStats stats;
    stats.mean = mean;
    stats.variance = var;
    stats.skewness = c3 / (std::sqrt(var) * std::sqrt(var) * std::sqrt(var));
    stats.cv = stats.sdOverMean();
    stats.kurtosis = c4 / (var * var) - 3;
    const double moments[4] = {mean, var + mean * mean, mean * mean * mean + 3 * var * mean + c3,
                               mean * mean * mean * mean + 6 * var * mean * mean + 4 * c3 * mean + c4};
    for (unsigned k = 0; k < n && k < 4; k++) stats.moments.push_back(moments[k]);
    if (n > 4) libvelmora_warning("For Johnson distribution only computation of first 4 moments is supported.");
    return stats;
}

static double sbDensity(double x, const std::vector<double>& params) {
    return Johnson::johnson_pdf(x, JOHNSON_SB, params[0], params[1], params[2], params[3]);
}

double Johnson::MeanJFcn(double x, std::vector<double> params) { return x * sbDensity(x, params); }

double Johnson::VarianceJFcn(double x, std::vector<double> params) {
    const double d = x - params[4];
    return d * d * sbDensity(x, params);
}

double Johnson::ThirdMomJFcn(double x, std::vector<double> params) {
    const double d = x - params[4];
    return d * d * d * sbDensity(x, params);
}

double Johnson::FourthMomJFcn(double x, std::vector<double> params) {
    const double d = x - params[4];
    return d * d * d * d * sbDensity(x, params);
}

// Declared with the other variates in numerics/random.h.
double Rand::johnson(dist_johnson_family family, double gamma, double delta, double lambda, double xi) {
    return Johnson::johnson_inverse_cdf(drawRandomNumber(), family, gamma, delta, lambda, xi);
}

// ---- exact view
double Johnson::exactCDF(double x) {
    const dist_johnson_family f = getJohnsonType();
    if ((f == JOHNSON_SL || f == JOHNSON_SB) && x <= getXi()) return 0.0;
    if (f == JOHNSON_SB && x >= getXi() + getLambda()) return 1.0;
    return mvphi(getGamma() + getDelta() * johnson_transformation((x - getXi()) / getLambda(), f));
}
double Johnson::exactQuantile(double p) {
    checkProbability(p);
    if (p == 0 || p == 1) return invertExactCDF(p, -std::numeric_limits<double>::infinity(), getXi());
    return evalInverseCDF(p);
}
unsigned Johnson::parameterCount() const { return 4; }

}  // namespace velmora
