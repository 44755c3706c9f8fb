// Logarithm of the gamma function by Algorithm 291 of the Communications of
// the ACM (Pike and Hill 1966): small arguments are raised to 7 or more by the
// recurrence Gamma(x + 1) = x Gamma(x), then Stirling's series with four terms.
#include <cmath>

#include "core/libvelmora_settings.h"
#include "numerics/misc_numerical.h"

namespace velmora {
namespace as {

double loggamma(double x) {
    if (x <= 0) throw Exception("misc_numerical", __LINE__, "Invalid value for loggamma.");
    double f = 0.0;
    if (x < 7.0) {
        // f = x (x + 1) ... (x + m - 1) with x + m the first value >= 7.
        f = 1.0;
        double z = x;
        while (z < 7.0) {
            f *= z;
            z += 1.0;
        }
        x = z;
        f = -std::log(f);
    }
    const double z = 1.0 / (x * x);
    return f + (x - 0.5) * std::log(x) - x + 0.918938533204673 +
           (((-0.000595238095238 * z + 0.000793650793651) * z - 0.002777777777778) * z +
            0.083333333333333) /
               x;
}

}  // namespace as
}  // namespace velmora
