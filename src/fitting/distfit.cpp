// The families fitted from values: closed-form and one-dimensional
// maximum-likelihood estimators, moment matching where that is the usual
// estimator, and the refusals of families that values cannot determine.
#include "fitting/distfit.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <sstream>

#include "core/libvelmora_settings.h"
#include "distributions/dist.h"
#include "distributions/dist_beta.h"
#include "distributions/dist_chisquare.h"
#include "distributions/dist_deterministic.h"
#include "distributions/dist_erlang.h"
#include "distributions/dist_exponential.h"
#include "distributions/dist_gamma.h"
#include "distributions/dist_geometric.h"
#include "distributions/dist_hypererlang.h"
#include "distributions/dist_hyperexponential.h"
#include "distributions/dist_hypoexponential.h"
#include "distributions/dist_lognormal.h"
#include "distributions/dist_normal.h"
#include "distributions/dist_pearsonv.h"
#include "distributions/dist_triangular.h"
#include "distributions/dist_uniform.h"
#include "distributions/dist_weibull.h"
#include "numerics/misc_math.h"
#include "numerics/misc_polygamma.h"

namespace velmora {
namespace distfit {

namespace {

[[noreturn]] void fail(int line, const std::string& message) { throw Exception("distfit", line, message); }

std::string number(double x) {
    std::ostringstream s;
    s.precision(10);
    s << x;
    return s.str();
}

// Refuses data whose values are all equal: no family but the deterministic
// one has a finite likelihood there.
void requireSpread(const Range& r, const std::string& family) {
    if (r.min == r.max)
        fail(__LINE__, "Cannot fit " + family + " to constant data (every value is " + number(r.min) +
                           "); only the deterministic family fits such data.");
}

// Refuses data holding 0 for families whose log-likelihood is -infinity there.
void requirePositive(const Range& r, const std::string& family) {
    if (!(r.min > 0))
        fail(__LINE__, "Cannot fit " + family + ": its density is 0 at 0, and the data hold the value 0.");
}

void requirePhases(unsigned phases, const std::string& family) {
    if (phases == 0) fail(__LINE__, "Cannot fit " + family + ": the number of phases must be at least 1.");
    if (phases > kMaxPhases)
        fail(__LINE__, "Cannot fit " + family + " with " + std::to_string(phases) + " phases: at most " +
                           std::to_string(kMaxPhases) + " are supported.");
}

double mean(const std::vector<double>& data) {
    double s = 0;
    for (double x : data) s += x;
    return s / static_cast<double>(data.size());
}

// Central second moment around m, divided by n (the maximum-likelihood form).
double centralSquare(const std::vector<double>& data, double m) {
    double s = 0;
    for (double x : data) s += (x - m) * (x - m);
    return s / static_cast<double>(data.size());
}

double meanLog(const std::vector<double>& data) {
    double s = 0;
    for (double x : data) s += std::log(x);
    return s / static_cast<double>(data.size());
}

// The gamma shape alpha of maximum likelihood solves
// log(alpha) - psi(alpha) = s with s = log(mean) - mean(log x) > 0. The left
// side falls from +inf to 0, so Newton from the closed approximation
// (3 - s + sqrt((s - 3)^2 + 24 s)) / (12 s), halving any step that leaves
// alpha > 0, converges in a few steps.
double gammaShape(double s) {
    if (!(s > 0) || !std::isfinite(s))
        fail(__LINE__, "Cannot fit a gamma shape: the data's log-mean gap is " + number(s) +
                           ", so they are (numerically) constant.");
    double a = (3 - s + std::sqrt((s - 3) * (s - 3) + 24 * s)) / (12 * s);
    for (int it = 0; it < 100; ++it) {
        const double f = std::log(a) - digamma(a) - s;
        const double df = 1 / a - trigamma(a);
        double next = a - f / df;
        if (!(next > 0)) next = a / 2;
        const bool done = std::fabs(next - a) <= 1e-13 * a;
        a = next;
        if (done) break;
    }
    return a;
}

// --- the families ------------------------------------------------------

Dist* fitExponential(const std::vector<double>& data) { return new Exponential(1 / mean(data)); }

Dist* fitNormal(const std::vector<double>& data) {
    const double m = mean(data);
    return new Normal(m, std::sqrt(centralSquare(data, m)));
}

Dist* fitLognormal(const std::vector<double>& data) {
    const double n = static_cast<double>(data.size());
    double s = 0;
    for (double x : data) s += std::log(x);
    const double mu = s / n;
    double q = 0;
    for (double x : data) {
        const double d = std::log(x) - mu;
        q += d * d;
    }
    return new Lognormal(mu, std::sqrt(q / n));
}

Dist* fitGamma(const std::vector<double>& data) {
    const double m = mean(data);
    const double alpha = gammaShape(std::log(m) - meanLog(data));
    return new Gamma(alpha, m / alpha);
}

// Pearson V is the inverse gamma: 1/X is gamma with the same shape and the
// scale 1/beta, so its estimate is the gamma estimate of the reciprocals.
Dist* fitPearsonV(const std::vector<double>& data) {
    const double n = static_cast<double>(data.size());
    double s = 0, sl = 0;
    for (double x : data) {
        s += 1 / x;
        sl -= std::log(x);
    }
    const double m = s / n;
    const double alpha = gammaShape(std::log(m) - sl / n);
    return new PearsonV(alpha, alpha / m);
}

// The Weibull shape k of maximum likelihood is the root of
// g(k) = sum w_i t_i / sum w_i - 1/k - mean(t), w_i = exp(k t_i), with
// t_i = log x_i - max log x (the shift cancels and keeps w_i <= 1). g rises
// from -inf (its slope is the weighted variance of t plus 1/k^2), so Newton
// inside a bracket that bisection keeps valid finds it; the scale is then
// exp(max log x) (mean w)^(1/k).
Dist* fitWeibull(const std::vector<double>& data) {
    const std::size_t n = data.size();
    std::vector<double> t(n);
    double top = -std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < n; ++i) {
        t[i] = std::log(data[i]);
        if (t[i] > top) top = t[i];
    }
    double tMean = 0, tSq = 0;
    for (double& v : t) {
        v -= top;
        tMean += v;
    }
    tMean /= static_cast<double>(n);
    for (double v : t) tSq += (v - tMean) * (v - tMean);
    const double sdLog = std::sqrt(tSq / static_cast<double>(n));

    struct Eval {
        double g, dg, sumW;
    };
    auto eval = [&](double k) {
        double sw = 0, swt = 0, swtt = 0;
        for (double v : t) {
            const double w = std::exp(k * v);
            sw += w;
            swt += w * v;
            swtt += w * v * v;
        }
        const double a = swt / sw;
        return Eval{a - 1 / k - tMean, swtt / sw - a * a + 1 / (k * k), sw};
    };

    // The moment estimate: the log of a Weibull value has sd pi / (k sqrt 6).
    double k = 1.2825498301618641 / sdLog;
    double lo = 0, hi = std::numeric_limits<double>::infinity();
    Eval e = eval(k);
    for (int it = 0; it < 200; ++it) {
        if (e.g < 0) lo = k; else hi = k;
        double next = k - e.g / e.dg;
        if (!(next > lo && next < hi)) next = std::isinf(hi) ? 2 * k : 0.5 * (lo + hi);
        const bool done = std::fabs(next - k) <= 1e-12 * k;
        k = next;
        e = eval(k);
        if (done) break;
    }
    const double scale = std::exp(top + std::log(e.sumW / static_cast<double>(n)) / k);
    return new Weibull(k, scale);
}

Dist* fitUniform(const Range& r) { return new Uniform(r.min, r.max); }

Dist* fitGeometric(const std::vector<double>& data) {
    for (double x : data)
        if (x < 1 || x != std::floor(x))
            fail(__LINE__, "Cannot fit geometric: it counts trials, so every value must be a whole number of at "
                           "least 1, and the data hold " + number(x) + ".");
    return new Geometric(1 / mean(data));
}

Dist* fitErlang(const std::vector<double>& data, unsigned phases) {
    const double m = mean(data);
    if (phases == 0) {
        const double cv2 = centralSquare(data, m) / (m * m);
        const double k = std::round(1 / cv2);
        if (k > kMaxPhases)
            fail(__LINE__, "Cannot fit erlang: the data's 1/cv^2 = " + number(1 / cv2) + " asks for more than " +
                               std::to_string(kMaxPhases) + " phases.");
        phases = k < 1 ? 1 : static_cast<unsigned>(k);
    }
    return new Erlang(phases, phases / m);
}

// Two stages in series with the data's mean m and variance v: the stage means
// a, b solve a + b = m, a^2 + b^2 = v, which has distinct positive roots for
// 1/2 < cv^2 < 1 only.
Dist* fitHypoExponential(const std::vector<double>& data) {
    const double m = mean(data);
    const double v = centralSquare(data, m);
    const double cv2 = v / (m * m);
    const double disc = 2 * v - m * m;
    if (!(cv2 < 1) || !(disc > 1e-9 * m * m))
        fail(__LINE__, "Cannot fit hypoexponential with two stages: their squared coefficient of variation lies "
                       "strictly between 0.5 and 1, and the data's is " + number(cv2) + ".");
    const double root = std::sqrt(disc);
    return new HypoExponential({2 / (m - root), 2 / (m + root)});
}

// Two branches with the data's first three moments. With u_k = E[X^k]/k!,
// the branch means a, b are the roots of t^2 - s t + r, where
// s = (u3 - u1 u2)/(u2 - u1^2) and r = s u1 - u2, and p = (u1 - b)/(a - b).
// When the third moment admits no such pair, the two moments are matched with
// balanced means (p/rate1 = (1 - p)/rate2); cv <= 1 admits neither.
Dist* fitHyperExponential(const std::vector<double>& data) {
    const std::array<double, 3> raw = raw_moments(data);
    const double m1 = raw[0], m2 = raw[1], m3 = raw[2];
    const double cv2 = m2 / (m1 * m1) - 1;
    if (!(cv2 > 1))
        fail(__LINE__, "Cannot fit hyperexponential: a mixture of exponentials has a coefficient of variation "
                       "above 1, and the data's squared one is " + number(cv2) + ".");
    const double u1 = m1, u2 = m2 / 2, u3 = m3 / 6;
    const double s = (u3 - u1 * u2) / (u2 - u1 * u1);
    const double r = s * u1 - u2;
    const double disc = s * s - 4 * r;
    if (r > 0 && disc > 0) {
        const double a = 0.5 * (s + std::sqrt(disc)), b = 0.5 * (s - std::sqrt(disc));
        const double p = (u1 - b) / (a - b);
        if (b > 0 && p > 0 && p < 1) return new HyperExponential({1 / a, 1 / b}, {p, 1 - p});
    }
    const double p = 0.5 * (1 + std::sqrt((cv2 - 1) / (cv2 + 1)));
    return new HyperExponential({2 * p / m1, 2 * (1 - p) / m1}, {p, 1 - p});
}

// Maximum likelihood by Newton's method on
// psi(a) - psi(a + b) = mean log x, psi(b) - psi(a + b) = mean log(1 - x),
// from the moment estimate. The log-likelihood is concave in (a, b), so
// Newton converges; a step leaving a, b > 0 is halved.
Dist* fitBeta(const std::vector<double>& data, const Range& r) {
    if (!(r.min > 0 && r.max < 1))
        fail(__LINE__, "Cannot fit beta: its density lives on (0, 1), and the data range from " + number(r.min) +
                           " to " + number(r.max) + ".");
    const double n = static_cast<double>(data.size());
    double g1 = 0, g2 = 0;
    for (double x : data) {
        g1 += std::log(x);
        g2 += std::log1p(-x);
    }
    g1 /= n;
    g2 /= n;
    const double m = mean(data);
    const double common = m * (1 - m) / centralSquare(data, m) - 1;
    double a = common > 0 ? m * common : 1, b = common > 0 ? (1 - m) * common : 1;
    for (int it = 0; it < 100; ++it) {
        const double dab = digamma(a + b), tab = trigamma(a + b);
        const double f1 = digamma(a) - dab - g1, f2 = digamma(b) - dab - g2;
        const double j11 = trigamma(a) - tab, j22 = trigamma(b) - tab, j12 = -tab;
        const double det = j11 * j22 - j12 * j12;
        double da = -(j22 * f1 - j12 * f2) / det, db = -(j11 * f2 - j12 * f1) / det;
        while (!(a + da > 0 && b + db > 0)) {
            da /= 2;
            db /= 2;
        }
        a += da;
        b += db;
        if (std::fabs(da) <= 1e-13 * a && std::fabs(db) <= 1e-13 * b) break;
    }
    return new Beta(a, b);
}

// Bounds a little beyond the extremes (the density is 0 at a and b, so the
// extremes themselves would have no likelihood), and the mode from the mean
// (a + b + c)/3, kept within the data's range.
Dist* fitTriangular(const std::vector<double>& data, const Range& r) {
    const double pad = (r.max - r.min) / static_cast<double>(data.size());
    const double a = r.min - pad, b = r.max + pad;
    double c = 3 * mean(data) - a - b;
    if (c < r.min) c = r.min;
    if (c > r.max) c = r.max;
    return new Triangular(a, b, c);
}

// The whole k of highest likelihood near the moment estimate k = mean; the
// log-likelihood over whole k needs only sum x and sum log x.
Dist* fitChiSquare(const std::vector<double>& data) {
    const double n = static_cast<double>(data.size());
    const double m = mean(data), ml = meanLog(data);
    auto loglik = [&](double k) { return n * ((k / 2 - 1) * ml - m / 2 - k / 2 * std::log(2.0) - log_gamma(k / 2)); };
    // Degrees of freedom are a 32-bit count; a mean beyond it has no fit.
    if (!(m <= 4.0e9)) fail(__LINE__, "Chi-square fit: the mean " + number(m) + " is beyond 4e9 degrees of freedom.");
    const double start = std::max(1.0, std::round(m));
    double best = start, bestValue = loglik(start);
    for (int step = -3; step <= 3; ++step) {
        const double k = start + step;
        if (k < 1) continue;
        const double v = loglik(k);
        if (v > bestValue) {
            best = k;
            bestValue = v;
        }
    }
    return new ChiSquare(static_cast<unsigned>(best));
}

}  // namespace

Range check_values(const std::vector<double>& data, const std::string& family, bool nonNegative) {
    if (data.empty()) fail(__LINE__, "Cannot fit " + family + ": no data.");
    Range r{data[0], data[0]};
    for (std::size_t i = 0; i < data.size(); ++i) {
        const double x = data[i];
        if (!std::isfinite(x))
            fail(__LINE__, "Cannot fit " + family + ": value " + std::to_string(i + 1) + " is " + number(x) +
                               "; every value must be finite.");
        if (nonNegative && x < 0)
            fail(__LINE__, "Cannot fit " + family + ": its values are non-negative, and value " +
                               std::to_string(i + 1) + " is " + number(x) + ".");
        if (x < r.min) r.min = x;
        if (x > r.max) r.max = x;
    }
    return r;
}

namespace {

// The estimator of a family from values: whether its values may be
// negative (beta checks its own interval), whether it needs positive values
// (its density is 0 at 0), and the fit once the values passed the checks.
struct Estimator {
    const char* family;
    bool signedValues;
    bool positive;
    Dist* (*fit)(const std::vector<double>& data, const Range& r, unsigned phases);
};

const Estimator kEstimators[] = {
    {"deterministic", true, false,
     [](const std::vector<double>&, const Range& r, unsigned) -> Dist* {
         if (r.min != r.max)
             fail(__LINE__, "Cannot fit deterministic to data that vary (from " + number(r.min) + " to " +
                                number(r.max) + ").");
         return new Deterministic(r.min);
     }},
    {"uniform", false, false, [](const std::vector<double>&, const Range& r, unsigned) { return fitUniform(r); }},
    {"exponential", false, false, [](const std::vector<double>& d, const Range&, unsigned) { return fitExponential(d); }},
    {"normal", true, false, [](const std::vector<double>& d, const Range&, unsigned) { return fitNormal(d); }},
    {"lognormal", false, true, [](const std::vector<double>& d, const Range&, unsigned) { return fitLognormal(d); }},
    {"erlang", false, false,
     [](const std::vector<double>& d, const Range&, unsigned phases) {
         if (phases > 0) requirePhases(phases, "erlang");
         return fitErlang(d, phases);
     }},
    {"hyperexponential", false, false,
     [](const std::vector<double>& d, const Range&, unsigned) { return fitHyperExponential(d); }},
    {"hypoexponential", false, false,
     [](const std::vector<double>& d, const Range&, unsigned) { return fitHypoExponential(d); }},
    {"hypererlang", false, false,
     [](const std::vector<double>& d, const Range&, unsigned phases) -> Dist* {
         requirePhases(phases, "hypererlang");
         return fit_hypererlang(d, phases).release();
     }},
    {"weibull", false, true, [](const std::vector<double>& d, const Range&, unsigned) { return fitWeibull(d); }},
    {"gamma", false, true, [](const std::vector<double>& d, const Range&, unsigned) { return fitGamma(d); }},
    {"beta", true, false, [](const std::vector<double>& d, const Range& r, unsigned) { return fitBeta(d, r); }},
    {"pearsonV", false, true, [](const std::vector<double>& d, const Range&, unsigned) { return fitPearsonV(d); }},
    {"geometric", false, false, [](const std::vector<double>& d, const Range&, unsigned) { return fitGeometric(d); }},
    {"triangular", true, false, [](const std::vector<double>& d, const Range& r, unsigned) { return fitTriangular(d, r); }},
    {"chisquare", false, true, [](const std::vector<double>& d, const Range&, unsigned) { return fitChiSquare(d); }},
};

// Families of the registry that values cannot determine, with the reason.
const std::pair<const char*, const char*> kRefusals[] = {
    {"johnson", "Cannot fit johnson: fitting the Johnson system from data is not offered; choose its "
                "four parameters from the data's moments by hand."},
    {"pearsonVI", "Cannot fit pearsonVI: its three parameters have no one-dimensional likelihood equation, "
                  "and fitting it from data is not offered."},
    {"hypogeometric", "Cannot fit hypogeometric: the family has no probability function, so there is no "
                      "likelihood to maximise."},
};

}  // namespace

std::unique_ptr<Dist> fit_distribution(const std::string& family, const std::vector<double>& data, unsigned phases) {
    try {
        Dist::getDistType(family);
    } catch (Exception&) {
        fail(__LINE__, "Unknown distribution family '" + family + "'.");
    }
    for (const auto& refusal : kRefusals)
        if (family == refusal.first) fail(__LINE__, refusal.second);
    for (const Estimator& e : kEstimators) {
        if (family != e.family) continue;
        const Range r = check_values(data, family, !e.signedValues);
        if (family != "deterministic") requireSpread(r, family);
        if (e.positive) requirePositive(r, family);
        return std::unique_ptr<Dist>(e.fit(data, r, phases));
    }
    fail(__LINE__, "Cannot fit " + family + ".");
}

}  // namespace distfit
}  // namespace velmora
