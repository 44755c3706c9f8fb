// Student's t quantile for whole degrees of freedom. The distribution
// function has a finite closed form in theta = atan(t / sqrt(v)) (Abramowitz
// and Stegun 26.7.3 and 26.7.4): P(|T| < t) is a sum of at most v / 2 terms
// in sin and cos of theta. The quantile inverts it by bisection on theta in
// [0, pi/2), which keeps it monotone and bounded for every v.
#include <cmath>

#include "numerics/misc_numerical_dist.h"

namespace velmora {

namespace {

const double PI = 3.14159265358979323846;

// P(|T| < t) for t = sqrt(v) tan(theta). The series stops once its terms no
// longer change the sum.
double centralProbability(double theta, unsigned v) {
    const double s = std::sin(theta), c = std::cos(theta), c2 = c * c;
    if (v % 2 == 0) {
        double term = 1.0, sum = 1.0;
        for (unsigned j = 1; j < v / 2; ++j) {
            term *= c2 * (2.0 * j - 1.0) / (2.0 * j);
            if (sum + term == sum) break;
            sum += term;
        }
        return s * sum;
    }
    if (v == 1) return 2.0 * theta / PI;
    double term = 1.0, sum = 1.0;
    for (unsigned j = 1; j <= (v - 3) / 2; ++j) {
        term *= c2 * (2.0 * j) / (2.0 * j + 1.0);
        if (sum + term == sum) break;
        sum += term;
    }
    return 2.0 / PI * (theta + s * c * sum);
}

}  // namespace

double student_t_quantile(double p, unsigned v) {
    if (!(p > 0.0 && p < 1.0) || v == 0) return std::nan("");
    if (p == 0.5) return 0.0;
    const double target = std::fabs(2.0 * p - 1.0);
    double low = 0.0, high = PI / 2.0;
    for (int i = 0; i < 200; ++i) {
        const double middle = 0.5 * (low + high);
        if (middle == low || middle == high) break;
        if (centralProbability(middle, v) < target)
            low = middle;
        else
            high = middle;
    }
    const double t = std::sqrt(static_cast<double>(v)) * std::tan(0.5 * (low + high));
    return p > 0.5 ? t : -t;
}

}  // namespace velmora
