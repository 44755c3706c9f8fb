// Romberg integration with an integrand of the variable and a parameter list.
#include "numerics/misc_numerical.h"

namespace velmora {

double RombergIteration(double a, double b, double (*f)(double, std::vector<double>),
                        std::vector<double> params, double tol) {
    return RombergIteration(a, b, [f, &params](double x) { return f(x, params); }, tol);
}

}  // namespace velmora
