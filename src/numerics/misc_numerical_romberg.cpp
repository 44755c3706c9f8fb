// Romberg integration: the trapezoidal rule with the step halved level by
// level and Richardson extrapolation over a triangular table of 16 x 16 values.
#include <cmath>

#include "numerics/misc_numerical.h"

namespace velmora {

double RombergIteration(double a, double b, double (*f)(double, std::vector<double>),
                        std::vector<double> params, double tol) {
    const unsigned maxLevel = 15;
    double R[maxLevel + 1][maxLevel + 1];
    const double w = b - a;
    // f(a) is evaluated before f(b), so an integrand that counts or records
    // its calls sees them in a fixed order.
    const double fa = f(a, params);
    const double fb = f(b, params);
    R[0][0] = (fa + fb) * w / 2.0;

    unsigned n = 1;
    for (;; ++n) {
        const double twoN = std::ldexp(1.0, static_cast<int>(n));
        const double h = w / twoN;
        const unsigned long points = 1UL << (n - 1);

        // The new points lie between the old ones, visited from b downwards.
        double sum = 0.0;
        double x = b - h;
        for (unsigned long i = 0; i < points; ++i) {
            sum += f(x, params);
            x -= 2.0 * h;
        }
        R[n][0] = w * sum / twoN + R[n - 1][0] / 2.0;

        double fourM = 1.0;
        for (unsigned m = 1; m <= n; ++m) {
            fourM *= 4.0;
            R[n][m] = (fourM * R[n][m - 1] - R[n - 1][m - 1]) / (fourM - 1.0);
        }

        // Relative change of the diagonal only, with no floor: a diagonal of
        // exactly 0 gives no number here, so the test never fires then.
        if (std::fabs((R[n][n] - R[n - 1][n - 1]) / R[n][n]) < tol || n == maxLevel) break;
        // Every later diagonal is formed from this one: once it is no number,
        // so is the result, and the remaining levels would only cost time.
        if (std::isnan(R[n][n])) break;
    }
    return R[n][n];
}

}  // namespace velmora
