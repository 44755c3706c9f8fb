#include "numerics/misc_polygamma.h"

#include <cmath>
#include <limits>

namespace velmora {

namespace {

// Below this the recurrences shift the argument up; at 10 the first omitted
// terms of both series are below 2e-14 of the result.
const double kAsymptotic = 10.0;

}  // namespace

double digamma(double x) {
    if (!(x > 0)) return std::numeric_limits<double>::quiet_NaN();
    if (std::isinf(x)) return x;
    double shift = 0.0;
    while (x < kAsymptotic) {
        shift -= 1.0 / x;
        x += 1.0;
    }
    const double r = 1.0 / (x * x);
    // sum B_2k / (2k x^2k), k = 1..6, in Horner form.
    const double series =
        r * (1.0 / 12 - r * (1.0 / 120 - r * (1.0 / 252 - r * (1.0 / 240 - r * (1.0 / 132 - r * (691.0 / 32760))))));
    return shift + std::log(x) - 0.5 / x - series;
}

double trigamma(double x) {
    if (!(x > 0)) return std::numeric_limits<double>::quiet_NaN();
    if (std::isinf(x)) return 0.0;
    double shift = 0.0;
    while (x < kAsymptotic) {
        shift += 1.0 / (x * x);
        x += 1.0;
    }
    const double r = 1.0 / (x * x);
    // 1/x + 1/(2x^2) + sum B_2k / x^(2k+1), k = 1..6.
    const double series =
        (1.0 + r * (1.0 / 6 - r * (1.0 / 30 - r * (1.0 / 42 - r * (1.0 / 30 - r * (5.0 / 66 - r * (691.0 / 2730))))))) /
        x;
    return shift + series + 0.5 * r;
}

}  // namespace velmora
