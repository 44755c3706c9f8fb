// Small dense linear programs: optimise c'x subject to equations and
// inequalities, with x >= 0, by a two-phase revised primal simplex method
// that keeps the inverse of the basis explicitly and updates it in place.
// Phase 1 drives artificial variables out of the basis, phase 2 minimises the
// costs; a ratio test that prefers to clear artificial rows, a random rule for
// ties, a watch for two columns that swap again and again, and limits on the
// pivots and on iterations without progress keep degenerate problems from
// cycling. Each solve keeps its state in its own block, so solves may run on
// several threads at once; the seed of the tie rule carries over from solve
// to solve on the same thread.
#ifndef VELMORA_NUMERICS_MISC_OPTIM_SIMPLEX_H
#define VELMORA_NUMERICS_MISC_OPTIM_SIMPLEX_H

#include <utility>
#include <vector>

namespace velmora {

struct simplex_constraint {
    int type;  // 0: a'x = b; 1: a'x >= b; 2: a'x <= b
    std::vector<double> coefficients;  // the row a
    double rhs;  // b
};

// The solution x (one entry per coefficient) and the value of the objective,
// minimised or maximised. Coefficient lists of different lengths, an
// objective of another length, no constraint at all, an unknown type or a
// value that is not finite throw "Invalid constraints for simplex algorithm.";
// an infeasible or unbounded problem, or one that hits the pivot or stall
// limit, throws "Simplex failed.".
std::pair<std::vector<double>, double> simplex_solve(std::vector<simplex_constraint> constraints,
                                                     std::vector<double> objective, bool minimise);

namespace lpprim {

enum lpprim_status {
    LPPRIM_OPTIMAL = 1,
    LPPRIM_INFEASIBLE = 2,
    LPPRIM_UNBOUNDED = 3,  // no pivot row
    LPPRIM_PIVOT_LIMIT = 4,
    LPPRIM_STALLED = 5  // no change of the objective for too long
};

// The solver on plain arrays, all 0-based here; m rows and n columns.
//   A        the constraint matrix column by column, leading dimension options[0]
//   t        per row: 0 for an equation, -1 for >=, +1 for <=; column n+i of
//            the extended problem is t[i] times unit vector i
//   b, c     right sides (m) and costs (n, or n + m with options[8] = 1)
//   options  19 integers: [0], [1] allocated rows and columns of A; [2], [3]
//            used rows (m) and columns (n); [4] 1 maximises (c changes sign
//            on entry and back on exit); [5] size of work; [6] start: 0 builds
//            a start basis, 1 reinverts the basis in ib, 2 (costs and right
//            sides changed), 3 (right sides changed) and 4 (costs changed)
//            renew the values from the inverse kept in work by an earlier
//            solve; [7] 1 lets the slack columns enter; [8] 1 gives costs to
//            the slacks; [9] pivot limit (default 1000); [10] limit on
//            iterations without a change of the objective (default 1000);
//            [11] iterations between reinversions (default 30); [12] 1
//            confirms an optimum after a fresh reinversion; [13] .. [17]
//            unused; [18] line width, held in 72 .. 132, unused. A limit
//            below 1 takes its default.
//   tolerances  pivot (1e-7), cost (1e-6), feasibility (1e-6), zero (1e-10);
//            a value at or below 0 takes the default
//   objectiveValue  c'x
//   xb       m + 2: the basic values, then the negated sum of
//            infeasibilities and the negated objective
//   ib       m: the column (1 .. n + m) basic in each row, 0 for an artificial
//   pi       m: the multipliers of the final phase
//   rc       n + m: the reduced costs of all columns in the final phase
//   errors   4: the largest and the summed row residual |b - Ax|, and the
//            largest and the summed reduced cost of a basic column
//   status   4: the final status (lpprim_status), the pivots, the iterations
//            since the last reinversion, the reinversions
//   work     (m + 5) m + 6: the inverse of the extended basis, (m+2) x (m+2)
//            column by column, and a work column of m + 2
// Sizes that don't fit the options, a work array that is too small, an
// unknown start option or a basis entry outside 0 .. n + m throw.
void lpprim(double* A, double* t, double* b, double* c, int* options, double* tolerances, double* objectiveValue,
            double* xb, int* ib, double* pi, double* rc, double* errors, int* status, double* work);

}  // namespace lpprim

}  // namespace velmora

#endif
