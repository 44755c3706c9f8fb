// Special functions of the normal, gamma and chi-squared distributions and
// bivariate normal probabilities, after the published algorithms named at
// each function.
#ifndef VELMORA_NUMERICS_MISC_NUMERICAL_DIST_H
#define VELMORA_NUMERICS_MISC_NUMERICAL_DIST_H

#include <vector>

#include "numerics/misc_numerical.h"

namespace velmora {

namespace as {

// Standard normal tail area by Algorithm AS 66 (Hill 1973), accurate to
// about 1e-11: the area above x when upper is true, below x otherwise.
double alnorm(double x, bool upper);

// Normal quantile by Algorithm AS 241 (Wichura 1988), PPND16, accurate to
// about 1e-16. p <= 0 and p >= 1 give 0; callers check their own arguments.
double ppnd16(double p);

// Regularised lower incomplete gamma integral P(p, x) by Algorithm AS 239
// (Shea 1988). Throws for p <= 0 or x < 0.
double gammad(double x, double p);

// Chi-squared quantile for probability p and v degrees of freedom by
// Algorithm AS 91 (Best and Roberts 1975), accurate to about 5e-7 relative.
// Where its Taylor steps end at no number or below 0 (the far lower tail of
// large v, p below about 1e-13 for v = 54), by bisection of gammad instead.
double ppchi2(double p, double v);

}  // namespace as

// Standard normal distribution function to about 2e-16, after Schonfelder's
// Chebyshev expansion of the error function (Genz's MVPHI).
double mvphi(double z);

// P(X > sh, Y > sk) for a standard bivariate normal pair with correlation r
// (Drezner and Wesolowsky, in Genz's double-precision form MVBVU).
double mvbvu(double sh, double sk, double r);

// Probability of a rectangle under the standard bivariate normal law with
// correlation correl. infin per coordinate: 0 for (-inf, upper], 1 for
// [lower, inf), 2 for [lower, upper]; other codes give 1.
double mvbvn(std::vector<double> lower, std::vector<double> upper, std::vector<int> infin,
             double correl);
// The same on plain pairs, without building lists: for sums over many
// rectangles.
double mvbvn(const double lower[2], const double upper[2], const int infin[2], double correl);

// Quantile of Student's t distribution with v degrees of freedom, to a few
// units in the last place; NaN outside 0 < p < 1 or for v = 0.
double student_t_quantile(double p, unsigned v);

}  // namespace velmora

#endif
