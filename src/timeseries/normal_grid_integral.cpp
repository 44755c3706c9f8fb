#include "timeseries/normal_grid_integral.h"

#include <cmath>
#include <string>

#include "core/libvelmora_settings.h"

namespace velmora {

namespace {

const double integralLower = -10.0;
const double integralUpper = 10.0;
const double gridStep = (integralUpper - integralLower) / normal_grid_intervals;

// Each thread counts its own integrals, so searches bound on their own.
thread_local unsigned long long threadEvaluations = 0;

}  // namespace

unsigned long long normal_grid_evaluation_count() { return threadEvaluations; }

void normal_grid_add_evaluations(unsigned long long count) { threadEvaluations += count; }

void normal_grid_unsettled(unsigned long long limit) {
    throw Exception("normal_grid_integral", __LINE__,
                    "The correlation integral did not settle within " + std::to_string(limit) +
                        " evaluations: the marginal's values span too many orders of magnitude.");
}

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
