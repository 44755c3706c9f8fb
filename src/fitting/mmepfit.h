// Fitting of a marked Markovian arrival process (MMAP) to a multi-class
// trace by moment matching, in two stages.
//
// 1. Closed form: the reduced moments r_i = m_i / i! of all intervals give,
//    through a continued-fraction recursion over the moment sequence, a
//    block tridiagonal matrix R, and H = L R L^-1 (L lower triangular ones)
//    is a moment matrix of the same order with e H^i 1 = r_i for i up to
//    2n - 1 (e = (1, 0, ..., 0)). With A (row i = i! e H^i) and B (column
//    i = i! H^i 1), the class-wise joint moments J_k give the embedded class
//    matrices A^-1 J_k B^-1. This "MMEP" representation matches the moments
//    but need not have rates of the right signs.
// 2. Search: every Q with Q 1 = 1 keeps the moments under the similarity
//        D0 = Q^-1 (-H)^-1 Q,  D_(k+1) = (-D0) Q^-1 A^-1 J_k B^-1 Q,
//    so a Nelder-Mead search over the off-diagonal entries of Q minimises
//    the negative rates, with a penalty factor that grows tenfold on each of
//    at most eleven rounds until the signs are right.
//
// The goal function takes no context argument: the MMEP list of the running
// fit and the penalty factor live in the two variables below, so one fit
// runs at a time. The penalty factor starts at 10 and is never reset: a
// later fit starts from the value that the one before left.
#ifndef VELMORA_FITTING_MMEPFIT_H
#define VELMORA_FITTING_MMEPFIT_H

#include <map>
#include <string>
#include <vector>

#include "numerics/matrix.h"

namespace velmora {

class MCTrace;
class MMAP;

namespace mmapfit {

// H, A, B and the J_k of the last fit on this thread (kept after it ends),
// read by mmep_to_mmap_nm_goalfunc: a record, one per thread.
extern thread_local std::vector<Matrix> mmep_to_mmap_nm_goalfunc_mmep;
// The penalty factor of the goal function, 10.0 when a thread starts; it
// grows from fit to fit on that thread.
extern thread_local double mmep_to_mmap_nm_goalfunc_r;

// The MMAP of order `order` >= 1 (created by new, owned by the caller) from
// the moments of orders 0 ... 2 order - 1 and the joint moments of orders
// 0 ... order - 1 of the trace. An order of 0 and the short-trace limits of
// MCTrace throw.
MMAP* moments_matching(MCTrace* trace, unsigned order);
// The same from ready moments: the list under "ALL" of `moments` (which must
// exist) and the class tables of `jointMoments`.
MMAP* moments_matching(std::map<std::string, std::vector<double>> moments,
                       std::map<std::string, std::vector<std::vector<double>>> jointMoments);

// The MMEP list H, A, B, J_0, J_1, ... from the moments of orders 0, 1, ...
// and the joint-moment tables, classes in ascending order of their names,
// the entry "ALL" left out; entries of absolute value below 1e-15 become 0.
// Throws for fewer than two or more than 13 moments (factorials beyond 12!
// overflow), for values that are not finite, and for a table whose size
// isn't the order of H.
std::vector<Matrix> moments_to_mmep(std::vector<double> moments,
                                    std::map<std::string, std::vector<std::vector<double>>> jointMoments);

// The block tridiagonal moment matrix R of the reduced moments in row 0 of
// `reducedMoments` (at least two columns; r_1 is the scale c). Moments that
// give no block (r_0 = 0, say) leave the 1 x 1 zero matrix, whose inverse
// later fails with "Singular matrix."; moments whose blocks don't fit
// together throw.
Matrix map_solve_mrp(Matrix reducedMoments);

// H = L R L^-1, L the lower triangular matrix of ones (diagonal included).
Matrix map_mrp_similarity_transform(Matrix R);

// Whether H, A, B, J_0, ..., Q (Q last) give D0 with a non-positive diagonal
// and non-negative off-diagonal entries and D_(k+1) without a negative entry,
// after entries below 1e-15 in absolute value are set to 0. Fewer than four
// matrices throw.
bool valid_mmap(std::vector<Matrix> mmepAndQ);

// The search of stage 2 on the list H, A, B, J_0, ...; the result (D0, D1,
// ...) comes from the last Q whether or not its signs are right: test it
// with the sign conditions. A list of fewer than three matrices or a
// non-square H throws; a singular H, A, B or Q fails with "Singular matrix.".
MMAP* mmep_to_mmap_nm(std::vector<Matrix> mmep);

// The penalty factor times the sum of the negative off-diagonal entries of
// D0 and of all negative entries of the D_(k+1), as positive numbers, for Q
// with the off-diagonal entries x in row order and rows summing to 1. 0
// exactly at a Markovian representation. Before the first fit, or for an x of other
// than n(n - 1) entries, it throws.
double mmep_to_mmap_nm_goalfunc(std::vector<double> x);

}  // namespace mmapfit

}  // namespace velmora

#endif
