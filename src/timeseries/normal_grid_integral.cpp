#include "timeseries/normal_grid_integral.h"

#include <cmath>
#include <string>
#include <vector>

#include "core/libvelmora_settings.h"
#include "distributions/dist_normal.h"
#include "numerics/misc_numerical.h"

namespace velmora {

namespace {

const double integralLower = -10.0;
const double integralUpper = 10.0;
const double integralTolerance = 0.0001;
const double gridStep = (integralUpper - integralLower) / normal_grid_intervals;

// The state of the running computation.
NormalGridFactor* gridInner = nullptr;
NormalGridFactor* gridOuter = nullptr;
double gridRho = 0.0;
double gridX = 0.0;
double gridOuterValue = 0.0;  // g(x) at the current outer value

// Smooth integrands settle within some 10^5 evaluations (6 10^5 at most for
// the models of the tests and examples); factors with jumps
// over hundreds of orders of magnitude (a gamma marginal of shape 0.01) can
// keep both levels from settling until 2^30 of them. Past this count the
// integral gives up with a message instead.
const unsigned long long evaluationLimit = 1ull << 22;
unsigned long long gridEvaluations = 0;
unsigned long long gridEvaluationsBefore = 0;  // of the calls before this one

double innerIntegrand(double y, std::vector<double>) {
    if (++gridEvaluations > evaluationLimit)
        throw Exception("normal_grid_integral", __LINE__,
                        "The correlation integral did not settle within " + std::to_string(evaluationLimit) +
                            " evaluations: the marginal's values span too many orders of magnitude.");
    return (*gridInner)(y) * gridOuterValue * Normal::standard_bivariate_normal_pdf(y, gridX, gridRho);
}

double outerIntegrand(double x, std::vector<double> params) {
    gridX = x;
    gridOuterValue = (*gridOuter)(x);
    // A zero factor makes every inner value 0, and the inner integral would
    // run all its levels on them (its relative test never fires at 0).
    if (gridOuterValue == 0.0) return 0.0;
    return RombergIteration(integralLower, integralUpper, innerIntegrand, params, integralTolerance);
}

}  // namespace

unsigned long long normal_grid_evaluation_count() { return gridEvaluationsBefore + gridEvaluations; }

bool normal_grid_node(double z, unsigned* node) {
    const double r = std::nearbyint((z - integralLower) / gridStep);
    if (!(r >= 0.0 && r <= static_cast<double>(normal_grid_intervals))) return false;
    const unsigned j = static_cast<unsigned>(r);
    if (integralLower + j * gridStep != z) return false;
    *node = j;
    return true;
}

double normal_grid_double_integral(NormalGridFactor& inner, NormalGridFactor& outer, double rho) {
    gridInner = &inner;
    gridOuter = &outer;
    gridRho = rho;
    gridEvaluationsBefore += gridEvaluations;
    gridEvaluations = 0;
    return RombergIteration(integralLower, integralUpper, outerIntegrand, std::vector<double>(), integralTolerance);
}

}  // namespace velmora
