// Elementary scalar functions: rounding to decimals, the factorial in 32-bit
// unsigned arithmetic, and the gamma function as exact values at integers and
// half-integers (Gamma(n + 1/2) = (2n)! sqrt(pi) / (n! 4^n)) with Stirling's
// first term elsewhere; the beta function through it; the Poisson partial sum.
#include "numerics/misc_math.h"

#include <math.h>

#include <cmath>
#include <cstdint>

#include "core/libvelmora_settings.h"

namespace velmora {

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
