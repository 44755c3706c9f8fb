// The incomplete gamma integral and the chi-squared quantile:
// - gammad: Algorithm AS 239 (Shea 1988), Applied Statistics 37, with the
//   rescaling bound OFLO raised to the largest double;
// - ppchi2: Algorithm AS 91 (Best and Roberts 1975), Applied Statistics 24,
//   with log Gamma(v/2) computed here, no range checks on p and v, the normal
//   deviate of AS 241 and the incomplete gamma of AS 239; a result that is no
//   number or below 0 is replaced by a bisection of gammad.
#include <cmath>

#include "core/libvelmora_settings.h"
#include "numerics/misc_numerical_dist.h"

namespace velmora {
namespace as {

double gammad(double x, double p) {
    const double elimit = -88.0;
    const double oflo = 1.7976931348623157e308;
    const double plimit = 1000.0;
    const double tol = 1.0e-14;
    const double xbig = 1.0e8;

    // Written as negations so that a NaN is refused too; the continued
    // fraction would never settle on one.
    if (!(p > 0.0) || !(x >= 0.0))
        throw Exception("misc_numerical_dist", __LINE__, "Invalid parameters for gammad.");
    if (x == 0.0) return 0.0;

    // Large shape: the Wilson-Hilferty normal approximation.
    if (p > plimit) {
        const double pn1 = 3.0 * std::sqrt(p) * (std::pow(x / p, 1.0 / 3.0) + 1.0 / (9.0 * p) - 1.0);
        return alnorm(pn1, false);
    }
    if (x > xbig) return 1.0;

    if (x <= 1.0 || x < p) {
        // Pearson's series.
        double arg = p * std::log(x) - x - loggamma(p + 1.0);
        double c = 1.0;
        double sum = 1.0;
        double a = p;
        do {
            a += 1.0;
            c = c * x / a;
            sum += c;
        } while (c > tol);
        arg += std::log(sum);
        return arg >= elimit ? std::exp(arg) : 0.0;
    }

    // Continued fraction for the upper tail.
    double arg = p * std::log(x) - x - loggamma(p);
    double a = 1.0 - p;
    double b = a + x + 1.0;
    double c = 0.0;
    double pn1 = 1.0;
    double pn2 = x;
    double pn3 = x + 1.0;
    double pn4 = x * b;
    double g = pn3 / pn4;
    for (;;) {
        a += 1.0;
        b += 2.0;
        c += 1.0;
        const double an = a * c;
        const double pn5 = b * pn3 - an * pn1;
        const double pn6 = b * pn4 - an * pn2;
        if (pn6 != 0.0) {
            const double rn = pn5 / pn6;
            const double bound = tol < tol * rn ? tol : tol * rn;
            if (std::fabs(g - rn) <= bound) break;
            g = rn;
        }
        pn1 = pn3;
        pn2 = pn4;
        pn3 = pn5;
        pn4 = pn6;
        if (std::fabs(pn5) >= oflo) {
            pn1 /= oflo;
            pn2 /= oflo;
            pn3 /= oflo;
            pn4 /= oflo;
        }
    }
    arg += std::log(g);
    return arg >= elimit ? 1.0 - std::exp(arg) : 1.0;
}

namespace {

// The quantile by bisection of the lower incomplete gamma integral, on a
// logarithmic scale: for the far tails, where the starting values of AS 91
// lead its Taylor steps away (to no number, or below 0). At most some two
// thousand halvings and doublings and 200 bisection steps.
double ppchi2Bisection(double p, double v) {
    const double shape = 0.5 * v;
    double hi = v > 1.0 ? v : 1.0;
    double lo = hi;
    for (unsigned it = 0; it < 1100 && gammad(0.5 * hi, shape) < p; ++it) hi *= 2.0;
    if (!std::isfinite(hi)) return hi;
    for (unsigned it = 0; it < 1100 && lo > 0.0 && gammad(0.5 * lo, shape) >= p; ++it) lo *= 0.5;
    if (lo == 0.0) return 0.0;
    for (unsigned it = 0; it < 200 && hi - lo > 1e-15 * hi; ++it) {
        const double mid = std::sqrt(lo) * std::sqrt(hi);
        if (!(mid > lo && mid < hi)) break;
        if (gammad(0.5 * mid, shape) < p)
            lo = mid;
        else
            hi = mid;
    }
    return hi;
}

}  // namespace

double ppchi2(double p, double v) {
    const double aa = 0.6931471806;
    const double e = 0.0000005;
    // Neither iteration has a limit in the published text; these caps are far
    // above what any p in [0, 1] needs and only stop runs on arguments outside
    // it, whose iterates grow without bound.
    const unsigned maxStart = 1000;
    const unsigned maxTaylor = 1000;

    const double g = loggamma(v / 2.0);
    const double xx = 0.5 * v;
    const double c = xx - 1.0;

    double ch;
    if (v < -1.24 * std::log(p)) {
        // Small chi-squared value. p = 0 always lands here and its quantile
        // is 0; for large v the factor exp(g + xx aa) overflows, and 0 times
        // that would be no number, so it is answered first.
        if (p == 0.0) return 0.0;
        ch = std::pow(p * xx * std::exp(g + xx * aa), 1.0 / xx);
        if (ch < e) return ch;
    } else if (v <= 0.32) {
        // Small number of degrees of freedom: Newton on log(1 - p).
        ch = 0.4;
        const double a = std::log(1.0 - p);
        for (unsigned it = 0; it < maxStart; ++it) {
            const double q = ch;
            const double p1 = 1.0 + ch * (4.67 + ch);
            const double p2 = ch * (6.73 + ch * (6.66 + ch));
            const double t = -0.5 + (4.67 + 2.0 * ch) / p1 - (6.73 + ch * (13.32 + 3.0 * ch)) / p2;
            ch -= (1.0 - std::exp(a + g + 0.5 * ch + c * aa) * p2 / p1) / t;
            if (std::fabs(q / ch - 1.0) <= 0.01) break;
        }
    } else {
        // Wilson-Hilferty.
        const double x = ppnd16(p);
        const double p1 = 0.222222 / v;
        const double w = x * std::sqrt(p1) + 1.0 - p1;
        ch = v * (w * w * w);
        if (ch > 2.2 * v + 6.0) ch = -2.0 * (std::log(1.0 - p) - c * std::log(0.5 * ch) + g);
    }

    // Seven-term Taylor series of the quantile.
    for (unsigned it = 0; it < maxTaylor && std::isfinite(ch) && ch > 0.0; ++it) {
        const double q = ch;
        const double p1 = 0.5 * ch;
        const double p2 = p - gammad(p1, xx);
        const double t = p2 * std::exp(xx * aa + g + p1 - c * std::log(ch));
        const double b = t / ch;
        const double a = 0.5 * t - b * c;
        const double s1 = (210.0 + a * (140.0 + a * (105.0 + a * (84.0 + a * (70.0 + 60.0 * a))))) / 420.0;
        const double s2 = (420.0 + a * (735.0 + a * (966.0 + a * (1141.0 + 1278.0 * a)))) / 2520.0;
        const double s3 = (210.0 + a * (462.0 + a * (707.0 + 932.0 * a))) / 2520.0;
        const double s4 =
            (252.0 + a * (672.0 + 1182.0 * a) + c * (294.0 + a * (889.0 + 1740.0 * a))) / 5040.0;
        const double s5 = (84.0 + 264.0 * a + c * (175.0 + 606.0 * a)) / 2520.0;
        const double s6 = (120.0 + c * (346.0 + 127.0 * c)) / 5040.0;
        ch += t * (1.0 + 0.5 * t * s1 -
                   b * c * (s1 - b * (s2 - b * (s3 - b * (s4 - b * (s5 - b * s6))))));
        if (std::fabs(q / ch - 1.0) <= e) break;
    }
    // Only results that can't be a quantile are replaced, so that every other
    // one stays as the published steps give it.
    if (!(ch >= 0.0 && ch < HUGE_VAL) && p > 0.0 && p < 1.0 && v > 0.0) return ppchi2Bisection(p, v);
    return ch;
}

}  // namespace as
}  // namespace velmora
