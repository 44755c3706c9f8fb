// E[f(Y) g(X)] for a standard bivariate normal pair (Y, X) with correlation
// rho, as a Romberg integral over [-10, 10] in x of a Romberg integral over
// [-10, 10] in y of f(y) g(x) phi2(y, x; rho), tolerance 0.0001 on both
// levels. The correlated models that carry a normal base value through a
// transform (ARTA, the second type of CHEP) share this one integration.
//
// Romberg's method only ever evaluates its integrand on the dyadic grid
// -10 + j 20/2^15, j = 0..2^15 (every level halves the step, and at most 15
// levels are taken). The grid values are exact in binary, so the points of
// every level hit grid nodes exactly, and the factors f and g can be kept per
// node by their owners: each transform is then computed once per node
// instead of once per (outer, inner) pair. The integrand is formed as
// f(y) * g(x) * phi2(y, x; rho), in this order, so that it equals the
// straightforward nested evaluation bit for bit.
//
// The integration keeps no state outside its call, so integrals run side by
// side on several threads.
#ifndef VELMORA_TIMESERIES_NORMAL_GRID_INTEGRAL_H
#define VELMORA_TIMESERIES_NORMAL_GRID_INTEGRAL_H

#include "distributions/dist_normal.h"
#include "numerics/misc_numerical.h"

namespace velmora {

// E[f(Y) g(X)] as above for any callables f and g of one double: g(x) is
// evaluated once per outer point, before the inner integral over y, and the
// integrand is f(y) * g(x) * phi2(y, x; rho) in this order. ARTA and CHEP
// integrate their transformed normal values through this one function, on
// the grid or directly.
// The integrand evaluations of this thread's integrals so far, for callers
// that bound a whole search, and the count an integral adds to them.
unsigned long long normal_grid_evaluation_count();
void normal_grid_add_evaluations(unsigned long long count);

// Ends an integral that has not settled within `limit` evaluations.
[[noreturn]] void normal_grid_unsettled(unsigned long long limit);

template <class F, class G>
double normal_double_integral(F&& f, G&& g, double rho) {
    const double lower = -10.0, upper = 10.0, tolerance = 0.0001;
    // Smooth integrands settle within some 10^5 evaluations (6 10^5 at most
    // for the models of the tests and examples); factors with jumps over
    // hundreds of orders of magnitude (a gamma marginal of shape 0.01) can
    // keep both levels from settling until 2^30 of them. Past this count the
    // integral gives up with a message instead.
    const unsigned long long limit = 1ull << 22;
    unsigned long long evaluations = 0;
    struct Count {
        unsigned long long& n;
        ~Count() { normal_grid_add_evaluations(n); }
    } count{evaluations};
    return RombergIteration(
        lower, upper,
        [&](double x) {
            const double gx = g(x);
            // A zero factor makes every inner value 0, and the inner integral
            // would run all its levels on them (its relative test never
            // fires at 0).
            if (gx == 0.0) return 0.0;
            return RombergIteration(
                lower, upper,
                [&](double y) {
                    if (++evaluations > limit) normal_grid_unsettled(limit);
                    return f(y) * gx * Normal::standard_bivariate_normal_pdf(y, x, rho);
                },
                tolerance);
        },
        tolerance);
}

// The number of intervals of the finest grid; nodes are 0..this.
constexpr unsigned normal_grid_intervals = 1u << 15;

// The node of z, if z is one exactly.
bool normal_grid_node(double z, unsigned* node);

// One factor of the integrand. The integration asks for it at grid nodes
// (with the node's abscissa) and, never in practice, off the grid.
class NormalGridFactor {
public:
    virtual ~NormalGridFactor() = default;
    virtual double atNode(unsigned node, double z) = 0;
    virtual double offGrid(double z) = 0;
    double operator()(double z) {
        unsigned node;
        return normal_grid_node(z, &node) ? atNode(node, z) : offGrid(z);
    }
};

// The integral above with f = inner and g = outer.
double normal_grid_double_integral(NormalGridFactor& inner, NormalGridFactor& outer, double rho);

}  // namespace velmora

#endif
