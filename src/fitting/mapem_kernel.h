// The two steps of the Erlang-branch MAP EM on flat arrays, shared by the
// parts of the mapem module; for library users who run EM steps of their own.
#ifndef VELMORA_FITTING_MAPEM_KERNEL_H
#define VELMORA_FITTING_MAPEM_KERNEL_H

#include <cstddef>
#include <vector>

namespace velmora {
namespace mapem {
namespace detail {

// The intervals: values, their logarithms and the class of the event that
// ends each one (all 0 for a plain trace).
struct Data {
    std::vector<double> x, logx;
    std::vector<unsigned> cls;
    unsigned classes = 1;
    std::size_t size() const { return x.size(); }
};

// Parameters of one structure: B branches of orders r, rates lambda, first
// branch distribution alpha, and C transition matrices P (C x B x B,
// row-major per class) whose rows summed over the classes are 1.
struct Params {
    std::vector<unsigned> r;
    std::vector<double> lambda, alpha, P;
    unsigned branches() const { return static_cast<unsigned>(r.size()); }
};

// Buffers of a pass, sized once per structure: the scaled densities and
// forward vectors of every interval (n x B each), the scaling factors, and
// the expected counts of the E-step.
struct Work {
    std::vector<double> G, A, scale;
    std::vector<double> beta, betaNext, t, rowSum;
    std::vector<double> counts;  // C x B x B expected transitions
    std::vector<double> visits, time, first;
    void resize(std::size_t n, unsigned B, unsigned C);
};

// The E-step: joint log-likelihood with the first branch drawn from
// p.alpha, and the expected counts in w; -infinity when the parameters
// give the data no density.
double expectation(const Data& d, const Params& p, Work& w);
// The M-step from the counts of the last expectation.
void maximisation(const Data& d, Params& p, const Work& w);
// The log-likelihood alone (the forward pass), with the first branch drawn
// from `start`.
double log_likelihood(const Data& d, const Params& p, const std::vector<double>& start, Work& w);
// Stationary vector of the branch chain (the class matrices summed).
std::vector<double> stationary(const Params& p, unsigned classes);

}  // namespace detail
}  // namespace mapem
}  // namespace velmora

#endif
