// Fitting of a Markovian arrival process to autocorrelations, for a marginal
// distribution that is already given as a phase-type distribution (T, tau).
// D0 stays T; the search runs over the n^2 entries of D1, row by row. Every
// D1 >= 0 with the rows of T + D1 summing to zero and tau (-T)^-1 D1 = tau
// gives a MAP whose intervals have exactly the distribution (T, tau), since
// tau is then the stationary phase vector right after an event. Linear
// programs find extreme points of that set, which span the start polytope of
// a Nelder-Mead search; the goal is the weighted L1 distance of the lag
// correlations from the targets, plus large L1 penalties for leaving the set.
#ifndef VELMORA_FITTING_MEPFIT_H
#define VELMORA_FITTING_MEPFIT_H

#include <vector>

#include "markov/mep_structs.h"
#include "numerics/matrix.h"

namespace velmora {

class CPH;

// The problem of the fit running on this thread, read by the goal function
// below: a record, one per thread. Set by a fit and reset after it, also
// when it fails: null and empty between fits. The fit's own search carries
// its problem and does not read it.
extern thread_local CPH* mapfit_fit_autocorrelation_cph;  // the target (T, tau)
extern thread_local std::vector<double> mapfit_fit_autocorrelation_weights;  // per lag
extern thread_local std::vector<double> mapfit_fit_autocorrelation_autocorr_trace;  // lag 1 first

// The goal for D1[i][j] = x[i n + j]: sum over the lags of weight times
// |rho(k) - target|, with rho(k) computed as if tau were the embedded
// stationary vector, plus 1e6 times the sum of the negative entries of D1, of
// |row sums of T + D1| and of |tau (-T)^-1 D1 - tau|. Outside a fit, or for
// an x of other than n^2 entries, it throws.
double mapfit_fit_autocorrelation_goal_function(std::vector<double> x);

namespace mapfit {

// The fit with all weights 1.
map_markovian_rep mapfit_fit_autocorrelation(Matrix T, Vector tau, std::vector<double> autocorrelations);

// The largest order of T that the fit below takes.
const unsigned kMaxMapFitOrder = 25;

// D0 = T and the best D1 of a Nelder-Mead search (at most 10000 evaluations)
// for the autocorrelations at lags 1, 2, ... with one non-negative weight per
// lag. The start polytope and its text go out as debug lines. Throws for lists
// of different lengths ("Different dimensions for weights and lags."), for
// negative or non-finite weights, non-finite targets, an order above
// kMaxMapFitOrder, and the faults of T and tau listed at
// mapfit_construct_matrix_nm.
map_markovian_rep mapfit_fit_autocorrelation(Matrix T, Vector tau, std::vector<double> autocorrelations,
                                             std::vector<double> weights);

// The start polytope (Nelder-Mead layout: n^2 + 1 rows, n^2 + 2 columns):
// vertex 0 is D1, here the renewal process (-T 1) tau, and vertex i n + j + 1
// the solution of the linear program that maximises D1[i][j] over the
// admissible set. Owned by the caller. T must be a finite sub-generator with
// (-T) invertible ("Singular matrix." otherwise), tau a distribution (n
// non-negative entries summing to 1 within 1e-7, as a row or a column), and
// D1 a finite n x n matrix; otherwise it throws.
Matrix* mapfit_construct_matrix_nm(Matrix T, Vector tau);
Matrix* mapfit_construct_matrix_nm(Matrix T, Vector tau, Matrix D1);

}  // namespace mapfit

}  // namespace velmora

#endif
