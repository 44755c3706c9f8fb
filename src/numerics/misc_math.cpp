// Elementary scalar functions: rounding to decimals, the factorial in 32-bit
// unsigned arithmetic, and the gamma function as exact values at integers and
// half-integers (Gamma(n + 1/2) = (2n)! sqrt(pi) / (n! 4^n)) with Stirling's
// first term elsewhere; the beta function through it; the Poisson partial sum.
#include "numerics/misc_math.h"

#include <math.h>

#include <cmath>
#include <cstdint>
#include <cstring>

#include "core/libvelmora_settings.h"

namespace velmora {

namespace {

// std::pow with an order the compiler cannot see: a known order 2 would be
// folded into x * x, which differs from the library's pow in the last bit
// for some x.
double libraryPow(double x, std::size_t k) {
    volatile double order = static_cast<double>(k);
    return std::pow(x, order);
}

// Whether the double s is pow(x, k) for certain, given the rest l of the
// value s + l, which the product chain keeps within about 2^-100 of x^k in
// relative terms. The library's pow errs by at most 0.54 of a unit in the
// last place (glibc's bound since version 2.28): its result lies within 0.54
// units of x^k. When s + l lies within 0.45 units of s, every other double is
// more than 0.54 units from x^k, so the library returns s as well (on
// exponential values it returns s whenever s + l lies within 0.49 units).
// Nine powers in ten pass this test. Powers of
// two (with a smaller unit below than above) and magnitudes near the ends of
// the range, where the product's error terms could lose bits, are left to
// the library.
bool settled(double s, double l) {
    const double a = std::fabs(s);
    if (!(a >= 0x1p-900 && a <= 0x1p900)) return false;
    std::uint64_t bits;
    std::memcpy(&bits, &a, sizeof bits);
    if ((bits & 0xFFFFFFFFFFFFFull) == 0) return false;
    const std::uint64_t exponentBits = bits & 0x7FF0000000000000ull;
    double scale;
    std::memcpy(&scale, &exponentBits, sizeof scale);
    return std::fabs(l) <= 0.45 * 0x1p-52 * scale;
}

// x^k as an unevaluated sum h + l, step by step: the product h x is split
// exactly into p + e by a fused multiply-add, l x adds the rest of the last
// step, and p + e is renormalised.
__attribute__((target("fma"))) void powersWithFma(double x, double* out, std::size_t count) {
    double h = x, l = 0.0;
    for (std::size_t k = 2; k < count; ++k) {
        const double p = h * x;
        double e = __builtin_fma(h, x, -p);
        e += l * x;
        h = p + e;
        l = e - (h - p);
        out[k] = settled(h, l) ? h : libraryPow(x, k);
    }
}

// The powers 2 to 5 of the trace summary, with a shorter chain: x^2 is
// exact as p2 + l2, x^3 and x^4 both come from it, x^5 from x^4.
__attribute__((target("fma"))) void powersTwoToFive(double x, double* out) {
    const double p2 = x * x;
    const double l2 = __builtin_fma(x, x, -p2);
    const double p3 = p2 * x;
    const double e3 = __builtin_fma(p2, x, -p3) + l2 * x;
    const double h3 = p3 + e3, l3 = e3 - (h3 - p3);
    const double p4 = p2 * p2;
    const double e4 = __builtin_fma(p2, p2, -p4) + 2.0 * (p2 * l2);
    const double h4 = p4 + e4, l4 = e4 - (h4 - p4);
    const double p5 = h4 * x;
    const double e5 = __builtin_fma(h4, x, -p5) + l4 * x;
    const double h5 = p5 + e5, l5 = e5 - (h5 - p5);
    out[2] = settled(p2, l2) ? p2 : libraryPow(x, 2);
    out[3] = settled(h3, l3) ? h3 : libraryPow(x, 3);
    out[4] = settled(h4, l4) ? h4 : libraryPow(x, 4);
    out[5] = settled(h5, l5) ? h5 : libraryPow(x, 5);
}

bool haveFma() {
    static const bool yes = [] {
        __builtin_cpu_init();
        return __builtin_cpu_supports("fma") != 0;
    }();
    return yes;
}

}  // namespace

void integer_powers(double x, double* out, std::size_t count) {
    if (haveFma()) {
        if (count == 6)
            powersTwoToFive(x, out);
        else
            powersWithFma(x, out, count);
        return;
    }
    for (std::size_t k = 2; k < count; ++k) out[k] = libraryPow(x, k);
}

double log_gamma(double x) {
    int sign = 0;
    return ::lgamma_r(x, &sign);
}

double round(double x, unsigned digits) {
    const double s = std::pow(10.0, digits);
    const double t = s * x;
    return (t >= 0 ? std::floor(t + 0.5) : std::ceil(t - 0.5)) / s;
}

unsigned long fac(unsigned long n) {
    std::uint32_t product = 1;
    // From 34 on the product holds 2^32 and stays 0: the loop can stop there.
    for (unsigned long i = 2; i <= n && product != 0; ++i) product *= static_cast<std::uint32_t>(i);
    return product;
}

// fac of an integral double; beyond the range of unsigned long the 32-bit
// product is 0 anyway, and the conversion would not be defined.
static double facOf(double n) {
    if (n >= 34.0) return 0.0;
    return static_cast<double>(fac(static_cast<unsigned long>(n)));
}

double gamma_function(double x) {
    if (x <= 0) throw Exception("misc_math", __LINE__, "gamma function only implemented for positive values.");
    if (std::floor(x) == x) return facOf(x - 1.0);
    const double n = x - 0.5;
    if (std::floor(n) == n)
        return (facOf(2.0 * n) / (facOf(n) * std::pow(2.0, 2.0 * n))) * 1.7724538509055159;
    return 2.5066282746310002 * std::pow(x, x - 0.5) * std::exp(-x);
}

double beta_function(double a, double b) { return gamma_function(a) * gamma_function(b) / gamma_function(a + b); }

double poisson_partial_sum(double x, unsigned k) {
    double sum = 0;
    for (unsigned n = 0; n < k; n++) sum += std::pow(x, static_cast<double>(n)) / static_cast<double>(fac(n));
    return sum;
}

}  // namespace velmora
