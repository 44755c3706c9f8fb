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
// Not reentrant: the integrands take no context argument, and the factors
// and the outer value of the running computation are held at file scope.
#ifndef VELMORA_TIMESERIES_NORMAL_GRID_INTEGRAL_H
#define VELMORA_TIMESERIES_NORMAL_GRID_INTEGRAL_H

namespace velmora {

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

// The integrand evaluations of all integrals so far, for callers that bound
// a whole search.
unsigned long long normal_grid_evaluation_count();

// The integral above with f = inner and g = outer. Throws when it has not
// settled after 2^22 evaluations of the integrand.
double normal_grid_double_integral(NormalGridFactor& inner, NormalGridFactor& outer, double rho);

}  // namespace velmora

#endif
