// Exact forms shared by several families. The gamma distribution function is
// the power series of P(a, y) below y = a + 1 and Legendre's continued
// fraction of Q(a, y) above, each to about 1e-15; its quantile starts from Algorithm AS 91
// (as::ppchi2, about 5e-7 relative) and is polished by Newton steps on the
// distribution function, with bisection where a step would leave its bracket.
#include "distributions/dist_exact.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "distributions/dist_gamma.h"
#include "numerics/misc_math.h"
#include "numerics/misc_numerical_dist.h"

namespace velmora {
namespace exact {

namespace {
const double kInf = std::numeric_limits<double>::infinity();
}

double erlang_mixture_logpdf(double x, const std::vector<unsigned>& k, const std::vector<double>& r,
                             const std::vector<double>& p) {
    if (x < 0) return -kInf;
    const double lx = x > 0 ? std::log(x) : -kInf;
    double top = -kInf;
    const std::size_t m = r.size();
    double terms[64];
    std::vector<double> more(m > 64 ? m : 0);
    double* t = m > 64 ? more.data() : terms;
    for (std::size_t i = 0; i < m; ++i) {
        t[i] = p[i] > 0 ? std::log(p[i]) + k[i] * std::log(r[i]) - log_gamma(k[i]) +
                              (k[i] > 1 ? (k[i] - 1.0) * lx : 0.0) - r[i] * x
                        : -kInf;
        top = std::max(top, t[i]);
    }
    if (top == -kInf) return top;
    double s = 0;
    for (std::size_t i = 0; i < m; ++i) s += std::exp(t[i] - top);
    return top + std::log(s);
}

double erlang_mixture_cdf(double x, const std::vector<unsigned>& k, const std::vector<double>& r,
                          const std::vector<double>& p) {
    if (x <= 0) return 0;
    double s = 0;
    for (std::size_t i = 0; i < r.size(); ++i) s += p[i] * gamma_cdf(x, k[i], 1 / r[i]);
    return std::min(1.0, s);
}

double erlang_mixture_ccdf(double x, const std::vector<unsigned>& k, const std::vector<double>& r,
                           const std::vector<double>& p) {
    if (x <= 0) return 1;
    double s = 0;
    for (std::size_t i = 0; i < r.size(); ++i) s += p[i] * gamma_ccdf(x, k[i], 1 / r[i]);
    return s;
}

DistStats erlang_mixture_stats(const std::vector<unsigned>& k, const std::vector<double>& r,
                               const std::vector<double>& p, unsigned n) {
    DistStats stats;
    double m1 = 0, m2 = 0;
    for (std::size_t i = 0; i < r.size(); ++i) {
        m1 += p[i] * k[i] / r[i];
        m2 += p[i] * k[i] * (k[i] + 1.0) / (r[i] * r[i]);
    }
    stats.mean = m1;
    stats.variance = m2 - m1 * m1;
    stats.cv = stats.sdOverMean();
    for (unsigned j = 1; j <= n; ++j) {
        double s = 0;
        for (std::size_t i = 0; i < r.size(); ++i) {
            double term = p[i];
            for (unsigned q = 0; q < j; ++q) term *= (k[i] + q) / r[i];
            s += term;
        }
        stats.moments.push_back(s);
    }
    return stats;
}

double gamma_logpdf(double x, double a, double b) {
    if (x < 0) return -kInf;
    if (x == 0) return a < 1 ? kInf : (a == 1 ? -std::log(b) : -kInf);
    return -a * std::log(b) - log_gamma(a) + (a - 1) * std::log(x) - x / b;
}

namespace {

// exp(-y + a log y - lgamma(a)), the factor in front of both expansions.
double gammaPrefix(double a, double y) { return std::exp(-y + a * std::log(y) - log_gamma(a)); }

// P(a, y) by its power series, for y < a + 1, where it converges fast.
double lowerSeries(double a, double y) {
    double term = 1 / a, sum = term;
    for (int n = 1; n < 100000; ++n) {
        term *= y / (a + n);
        sum += term;
        if (term < sum * 1e-17) break;
    }
    return sum * gammaPrefix(a, y);
}

// Q(a, y) by Legendre's continued fraction (modified Lentz), for y >= a + 1.
double upperFraction(double a, double y) {
    const double tiny = 1e-300;
    double bb = y + 1 - a, c = 1 / tiny, d = 1 / bb, h = d;
    for (int i = 1; i < 100000; ++i) {
        const double an = -i * (i - a);
        bb += 2;
        d = an * d + bb;
        if (std::fabs(d) < tiny) d = tiny;
        c = bb + an / c;
        if (std::fabs(c) < tiny) c = tiny;
        d = 1 / d;
        const double delta = d * c;
        h *= delta;
        if (std::fabs(delta - 1) < 1e-16) break;
    }
    return gammaPrefix(a, y) * h;
}

}  // namespace

// The regularised incomplete gamma functions to about 1e-15, each tail by the
// expansion that converges there, the other as its complement.
double gamma_cdf(double x, double a, double b) {
    if (!(x > 0)) return 0;
    const double y = x / b;
    return y < a + 1 ? lowerSeries(a, y) : 1 - upperFraction(a, y);
}

double gamma_ccdf(double x, double a, double b) {
    if (!(x > 0)) return 1;
    const double y = x / b;
    return y < a + 1 ? 1 - lowerSeries(a, y) : upperFraction(a, y);
}

double gamma_quantile(double p, double a, double b) {
    if (p <= 0) return 0;
    if (p >= 1) return kInf;
    double x = as::ppchi2(p, 2 * a) * b / 2;
    double lo = 0, hi = kInf;
    for (int it = 0; it < 100; ++it) {
        if (!(x > lo && x < hi)) x = std::isinf(hi) ? std::max(2 * lo, lo + b) : 0.5 * (lo + hi);
        const double f = gamma_cdf(x, a, b) - p;
        if (f == 0) return x;
        if (f < 0) lo = x; else hi = x;
        const double step = f / std::exp(gamma_logpdf(x, a, b));
        double next = x - step;
        if (!(next > lo && next < hi)) next = std::isinf(hi) ? std::max(2 * x, x + b) : 0.5 * (lo + hi);
        if (std::fabs(next - x) <= 4 * std::numeric_limits<double>::epsilon() * x) return next;
        if (std::isfinite(hi) && hi - lo <= 4 * std::numeric_limits<double>::epsilon() * hi) return hi;
        x = next;
    }
    return x;
}

// The specified statistics are exact; only the moments go through the
// gamma function there.
DistStats gamma_stats(double a, double b, unsigned n) {
    DistStats stats = Gamma::gamma_stats(a, b, 0);
    double m = 1;
    for (unsigned k = 0; k < n; ++k) stats.moments.push_back(m *= (a + k) * b);
    return stats;
}

double erlang_normal_transform(double z, unsigned phases, double rate) {
    const double u = as::alnorm(z, false);
    return gamma_quantile(u < 1 ? u : 1 - std::numeric_limits<double>::epsilon() / 2, phases, 1 / rate);
}

std::vector<double> raw_from_central(double mean, double variance, double skewness) {
    const double sd = std::sqrt(variance);
    return {mean, variance + mean * mean, mean * mean * mean + 3 * mean * variance + skewness * sd * sd * sd};
}

}  // namespace exact
}  // namespace velmora
