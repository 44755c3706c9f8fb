// Elementary scalar functions: rounding to decimals, the factorial in 32-bit
// unsigned arithmetic, the gamma and beta functions in the forms on which
// the moment formulas of the models rest, and the Poisson partial sum. Their limits are deliberate: fac
// wraps beyond 12!, and gamma_function is exact only at integers and
// half-integers, Stirling's first term elsewhere.
#ifndef VELMORA_NUMERICS_MISC_MATH_H
#define VELMORA_NUMERICS_MISC_MATH_H

#include <cmath>
#include <cstddef>

namespace velmora {

// The one-argument rounding stays visible next to the one below.
using std::round;

// x rounded to `digits` decimals, halves away from 0.
double round(double x, unsigned digits);

// n! in 32-bit unsigned arithmetic: exact up to n = 12, the low 32 bits of
// the product beyond (fac(13) is 1932053504); fac(0) is 1.
unsigned long fac(unsigned long n);

// Gamma(x) for x > 0: fac(x - 1) at integers, the closed form through fac at
// half-integers, Stirling's first term sqrt(2 pi) x^(x - 1/2) e^(-x)
// elsewhere. Throws for x <= 0.
double gamma_function(double x);

// log |Gamma(x)|, the value of std::lgamma, without std::lgamma's write of
// the sign to a global: fits on several threads call it at once.
double log_gamma(double x);

// out[k] = pow(x, k) for k = 2 .. count - 1, each equal bit for bit to
// std::pow(x, double(k)), for the power sums of the trace statistics. Where
// the processor has fused multiply-add, most powers come from an exact
// product chain instead of the library's pow; see misc_math.cpp.
void integer_powers(double x, double* out, std::size_t count);

// B(a, b) = gamma_function(a) gamma_function(b) / gamma_function(a + b).
double beta_function(double a, double b);

// The Poisson partial sum sum_{n < k} x^n / n!, on which the Erlang
// distribution function 1 - e^(-rx) S(rx, k) rests. The terms pow(x, n) / fac(n)
// are added in order of n, so the sum inherits the 32-bit range of fac.
double poisson_partial_sum(double x, unsigned k);

}  // namespace velmora

#endif
