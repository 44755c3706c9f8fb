#include "timeseries/normal_grid_integral.h"

#include <cmath>

namespace velmora {

namespace {

const double integralLower = -10.0;
const double integralUpper = 10.0;
const double gridStep = (integralUpper - integralLower) / normal_grid_intervals;

}  // namespace

bool normal_grid_node(double z, unsigned* node) {
    const double r = std::nearbyint((z - integralLower) / gridStep);
    if (!(r >= 0.0 && r <= static_cast<double>(normal_grid_intervals))) return false;
    const unsigned j = static_cast<unsigned>(r);
    if (integralLower + j * gridStep != z) return false;
    *node = j;
    return true;
}

double normal_grid_double_integral(NormalGridFactor& inner, NormalGridFactor& outer, double rho) {
    return normal_double_integral([&inner](double y) { return inner(y); }, [&outer](double x) { return outer(x); },
                                  rho);
}

}  // namespace velmora
