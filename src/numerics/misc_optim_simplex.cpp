// Two-phase revised primal simplex with an explicit inverse.
//
// The extended basis has two more rows than the problem: row m holds the
// phase-1 costs (1 for each artificial variable) and row m+1 the phase-2
// costs. Its inverse therefore carries, below the inverse of the basis B, the
// rows -f_B B^-1 and -c_B B^-1; the same product with a column gives its
// reduced costs in rows m and m+1, and with b the negated infeasibility and
// the negated objective. An artificial variable of row i is the column
// +-e_i; once it has left, it never comes back.
//
// The stages keep the names of the published routine: lppnew (start basis),
// lppver (reinversion), lpprm2 (iterations) with lppphs (phase), lppmin
// (pricing), lppjmy (column), lpprow (ratio test), lpppiv (pivot) and lpplop
// (loop watch), lppers (residuals), lppmod with lppgt1 and lppvr1 (warm
// starts). They share the block of one Solver and the caller's arrays; every
// solve has its own Solver, and only the seed of the tie rule outlives it.
#include "numerics/misc_optim_simplex.h"

#include <cmath>
#include <limits>
#include <vector>

#include "core/libvelmora_settings.h"

namespace velmora {

namespace lpprim {

namespace {

// Integers of the running solve.
struct LppIntegers {
    int m, n, lda, columns;  // columns: those priced, n or n + m
    int sign, slackCosts, pivotLimit, stallLimit, interval, confirm, lineWidth;
    int phase, status, pivots, sinceReinversion, reinversions, stall;
    bool firstReinversion;
    int loopK, loopEnter[8], loopLeave[8], refusedEnter, refusedLeave;
};

struct LppReals {
    double pivot, cost, feasibility, zero;
};

// Values that live between iterations of one solve.
struct LppDoubles {
    double lastObjective;
    double seed;
};

// The seed of the tie rule lives on from solve to solve, one per thread, so
// solves on several threads never meet and each thread sees the sequence of
// a program that runs its solves alone.
thread_local double tieSeed = 123457.0;

void invalid(int line, const char* message) { throw Exception("misc_optim_simplex", line, message); }

// One solve: the block of the running solve and the stages that share it.
class Solver {
public:
    void solve(double* A, double* t, double* b, double* c, int* options, double* tolerances, double* objectiveValue,
               double* xb, int* ib, double* pi, double* rc, double* errors, int* status, double* work);

private:
LppIntegers lppzzi_;
LppReals lppzzr_;
LppDoubles lppzzd_ = {0.0, 0.0};

// The caller's arrays of the running solve.
double* A_;
double* t_;
double* b_;
double* c_;
double* xb_;
int* ib_;
double* rc_;
double* inv_;  // (m+2) x (m+2), column by column
double* w_;    // m + 2

std::vector<char> basic_;  // per column 1 .. n + m: in the basis
bool phase2Reached_;

inline double& inv(int i, int j) { return inv_[j * (lppzzi_.m + 2) + i]; }
inline double a(int i, int j) { return A_[(j - 1) * lppzzi_.lda + i]; }  // column j is 1-based

double costOf(int j) {
    if (j >= 1 && j <= lppzzi_.n) return c_[j - 1];
    if (j > lppzzi_.n && lppzzi_.slackCosts == 1) return c_[j - 1];
    return 0.0;
}

// Park and Miller's minimal standard generator in double arithmetic, with the
// remainder of a quotient truncated towards zero.
static double d_mod(double x, double y) { return x - std::trunc(x / y) * y; }

// The random rule among rows that tie in the ratio test: the k-th tie since
// the last strictly better row takes over with chance 1/k.
bool tieTakesOver(int& ties) {
    ++ties;
    const double s = 1.0 / ties;
    tieSeed = d_mod(16807.0 * tieSeed, 2147483647.0);
    const double r = tieSeed / 2147483648.0;
    return s >= r;
}

// w = inverse times the extended column j (lppjmy).
void lppjmy(int j, double* w) {
    const int m = lppzzi_.m, n = lppzzi_.n;
    for (int r = 0; r < m + 2; ++r) w[r] = 0.0;
    if (j <= n) {
        for (int k = 0; k < m; ++k) {
            const double akj = a(k, j);
            if (akj == 0.0) continue;
            const double* col = &inv(0, k);
            for (int r = 0; r < m + 2; ++r) w[r] += col[r] * akj;
        }
    } else {
        const int i = j - n - 1;
        const double* col = &inv(0, i);
        for (int r = 0; r < m + 2; ++r) w[r] = col[r] * t_[i];
    }
    w[m + 1] += costOf(j);
}

// Pivot on row r with the column w (lpppiv): w[r] stands in as -1 so that the
// one update formula also scales the pivot row.
void lpppiv(int r, double* w) {
    const int rows = lppzzi_.m + 2;
    const double z = lppzzr_.zero;
    const double p = w[r];
    w[r] = -1.0;
    for (int j = 0; j < rows; ++j) {
        double* col = &inv(0, j);
        if (std::fabs(col[r]) <= z) continue;
        const double e = col[r] / p;
        col[r] = 0.0;
        for (int i = 0; i < rows; ++i)
            if (std::fabs(w[i]) > z) col[i] -= w[i] * e;
    }
    const double e = xb_[r] / p;
    xb_[r] = 0.0;
    for (int i = 0; i < rows; ++i)
        if (std::fabs(w[i]) > z) xb_[i] -= w[i] * e;
    w[r] = p;
}

void choosePhase() {
    lppzzi_.phase = std::fabs(xb_[lppzzi_.m]) > lppzzr_.feasibility ? 1 : 2;
    if (lppzzi_.phase == 2) phase2Reached_ = true;
}

// Stages 5 and 6 of a reinversion (lppvr1): one composite artificial column
// makes all negative basic values non-negative, then the phase is chosen.
void lppvr1() {
    const int m = lppzzi_.m;
    int r = -1, artificials = 0;
    double costs = 0.0;
    for (int i = 0; i < m; ++i) {
        if (xb_[i] >= -lppzzr_.zero) continue;
        if (r < 0 || xb_[i] < xb_[r]) r = i;
        if (ib_[i] == 0) ++artificials;
        costs += costOf(ib_[i]);
    }
    if (r >= 0) {
        for (int i = 0; i < m; ++i) w_[i] = xb_[i] < -lppzzr_.zero ? -1.0 : 0.0;
        w_[m] = 1.0 + artificials;
        w_[m + 1] = costs;
        lpppiv(r, w_);
        ib_[r] = 0;
    }
    choosePhase();
}

// Start basis (lppnew): structural columns with a single entry of the sign
// of the right side, then the slacks of rows they left free.
void lppnew() {
    const int m = lppzzi_.m, n = lppzzi_.n;
    for (int i = 0; i < m; ++i) ib_[i] = 0;
    for (int j = 1; j <= n; ++j) {
        int row = -1, count = 0;
        for (int i = 0; i < m; ++i)
            if (a(i, j) != 0.0) {
                row = i;
                ++count;
            }
        if (count != 1 || ib_[row] != 0) continue;
        if (b_[row] == 0.0 || a(row, j) * b_[row] >= 0.0) ib_[row] = j;
    }
    for (int i = 0; i < m; ++i)
        if (t_[i] != 0.0 && ib_[i] == 0 && (b_[i] == 0.0 || t_[i] * b_[i] > 0.0)) ib_[i] = n + i + 1;
}

// Reinversion (lppver): the inverse is rebuilt from the identity by pivoting
// every basic column in again. rc marks the rows that the columns took.
void lppver() {
    const int m = lppzzi_.m, n = lppzzi_.n, rows = m + 2;
    double* mark = rc_;
    for (int j = 0; j < rows; ++j)
        for (int i = 0; i < rows; ++i) inv(i, j) = i == j ? 1.0 : 0.0;
    for (int i = 0; i < m; ++i) xb_[i] = b_[i];
    xb_[m] = xb_[m + 1] = 0.0;
    for (int i = 0; i < m; ++i) mark[i] = 0.0;

    std::vector<int> columns;
    for (int i = 0; i < m; ++i)
        if (ib_[i] != 0) columns.push_back(ib_[i]);
    if (lppzzi_.firstReinversion) {
        for (int i = 0; i < m; ++i) {
            if (t_[i] == 0.0 || ib_[i] != 0 || t_[i] * b_[i] < 0.0) continue;
            const int j = n + i + 1;
            inv(i, i) = t_[i];
            xb_[i] = t_[i] * b_[i];
            inv(m + 1, i) = -costOf(j) * t_[i];
            xb_[m + 1] -= costOf(j) * xb_[i];
            mark[i] = j;
        }
    }
    std::vector<char> artificial(m, 0);
    for (int i = 0; i < m; ++i) {
        if (ib_[i] != 0 || mark[i] != 0.0) continue;
        const double s = b_[i] < 0.0 ? -1.0 : 1.0;
        inv(i, i) = s;
        inv(m, i) = -s;
        xb_[i] = s * b_[i];
        xb_[m] -= xb_[i];
        artificial[i] = 1;
    }
    for (int j : columns) {
        lppjmy(j, w_);
        for (int i = 0; i < rows; ++i)
            if (std::fabs(w_[i]) <= lppzzr_.zero) w_[i] = 0.0;
        int r = -1;
        double best = 0.0;
        for (int i = 0; i < m; ++i)
            if (mark[i] == 0.0 && std::fabs(w_[i]) > best) {
                best = std::fabs(w_[i]);
                r = i;
            }
        if (r < 0 || best <= lppzzr_.pivot) continue;  // the column leaves the basis
        lpppiv(r, w_);
        mark[r] = j;
        artificial[r] = 0;
    }
    // Rows still held by a placeholder unit column get an artificial of the
    // sign of their value.
    for (int i = 0; i < m; ++i) {
        if (mark[i] != 0.0 || artificial[i]) continue;
        const double s = xb_[i] < 0.0 ? -1.0 : 1.0;
        for (int r = 0; r < rows; ++r) w_[r] = s * inv(r, i);
        w_[m] += 1.0;
        lpppiv(i, w_);
    }
    for (int i = 0; i < m; ++i) ib_[i] = static_cast<int>(mark[i]);

    lppvr1();
    lppzzi_.firstReinversion = false;
    lppzzi_.loopK = 1;
    lppzzi_.sinceReinversion = 0;
    ++lppzzi_.reinversions;
}

// Warm starts (lppmod): the inverse of the earlier solve stays; the objective
// row is renewed from the basic costs (lppgt1) and/or the basic values from
// the right sides, and negative values are repaired.
void lppgt1() {
    const int m = lppzzi_.m;
    for (int j = 0; j < m; ++j) {
        double s = 0.0;
        for (int i = 0; i < m; ++i) s += costOf(ib_[i]) * inv(i, j);
        inv(m + 1, j) = -s;
    }
    inv(m + 1, m) = 0.0;
    inv(m + 1, m + 1) = 1.0;
}

void lppmod(int start) {
    const int m = lppzzi_.m, rows = m + 2;
    if (start == 2 || start == 4) lppgt1();
    for (int r = 0; r < rows; ++r) {
        double s = 0.0;
        for (int i = 0; i < m; ++i) s += inv(r, i) * b_[i];
        xb_[r] = s;
    }
    lppvr1();
    lppzzi_.firstReinversion = false;
    lppzzi_.loopK = 1;
}

// Phase update (lppphs); false when the objective has stood still too long.
bool lppphs() {
    const int m = lppzzi_.m;
    const double objective = xb_[m + lppzzi_.phase - 1];
    if (std::fabs(objective - lppzzd_.lastObjective) < lppzzr_.zero)
        ++lppzzi_.stall;
    else
        lppzzi_.stall = 0;
    lppzzd_.lastObjective = objective;
    if (lppzzi_.stall >= lppzzi_.stallLimit) return false;
    for (int i = 0; i < m + 2; ++i)
        if (std::fabs(xb_[i]) <= lppzzr_.zero) xb_[i] = 0.0;
    choosePhase();
    return true;
}

// Reduced cost of column j against the multipliers of the current phase.
double reducedCost(int j, const double* pi) {
    const int m = lppzzi_.m, n = lppzzi_.n;
    const double z = lppzzr_.zero;
    double d = 0.0;
    if (j <= n) {
        for (int i = 0; i < m; ++i)
            if (std::fabs(pi[i]) > z) d += pi[i] * a(i, j);
    } else {
        const int i = j - n - 1;
        if (t_[i] == 0.0) return 0.0;  // the slack of an equation never enters
        if (std::fabs(pi[i]) > z) d = pi[i] * t_[i];
    }
    if (lppzzi_.phase == 2) d += costOf(j);
    return d;
}

// Pricing (lppget, lppmin, lppdel): the column with the smallest reduced cost,
// the last of equal ones; 0 if none is below minus the cost tolerance.
int lppmin() {
    const int m = lppzzi_.m;
    std::vector<double> pi(m);
    for (int i = 0; i < m; ++i) pi[i] = inv(m + lppzzi_.phase - 1, i);
    for (std::size_t j = 0; j < basic_.size(); ++j) basic_[j] = 0;
    for (int i = 0; i < m; ++i) basic_[ib_[i]] = 1;
    const bool refusing = lppzzi_.loopK >= 6;
    int enter = 0;
    double best = std::numeric_limits<double>::infinity();
    for (int j = 1; j <= lppzzi_.columns; ++j) {
        if (basic_[j]) continue;
        if (refusing && (j == lppzzi_.refusedEnter || j == lppzzi_.refusedLeave)) continue;
        const double d = reducedCost(j, pi.data());
        if (d <= best) {
            best = d;
            enter = j;
        }
    }
    return best <= -lppzzr_.cost ? enter : 0;
}

// Ratio test (lpprow), in passes: artificial rows at level zero, real rows at
// level zero, then the smallest ratio, artificial rows first. -1: none.
int lpprow(const double* w) {
    const int m = lppzzi_.m;
    const double p = lppzzr_.pivot, z = lppzzr_.zero;
    int r = -1;
    double best = p;
    for (int i = 0; i < m; ++i)
        if (ib_[i] == 0 && xb_[i] <= z && std::fabs(w[i]) > best) {
            best = std::fabs(w[i]);
            r = i;
        }
    if (r >= 0) return r;

    int ties = 0;
    for (int i = 0; i < m; ++i) {
        if (ib_[i] <= 0 || xb_[i] > z || w[i] <= p) continue;
        if (r < 0 || w[i] > best) {
            r = i;
            best = w[i];
            ties = 0;
        } else if (w[i] == best && tieTakesOver(ties)) {
            r = i;
        }
    }
    if (r >= 0) return r;

    double ratio = 0.0;
    for (int i = 0; i < m; ++i) {
        if (ib_[i] != 0 || xb_[i] <= z || w[i] <= p) continue;
        const double q = xb_[i] / w[i];
        if (r < 0 || q <= ratio) {
            r = i;
            ratio = q;
        }
    }
    ties = 0;
    for (int i = 0; i < m; ++i) {
        if (ib_[i] <= 0 || xb_[i] <= z || w[i] <= p) continue;
        const double q = xb_[i] / w[i];
        if (r < 0 || q < ratio) {
            r = i;
            ratio = q;
            ties = 0;
        } else if (q == ratio && tieTakesOver(ties)) {
            r = i;
        }
    }
    return r;
}

// Loop watch (lpplop): five pivots that undo each other in turn make the
// last pair barred from pricing for the next two pivots.
void lpplop(int enter, int leave) {
    LppIntegers& s = lppzzi_;
    if (s.loopK < 6) {
        const int k = s.loopK;
        s.loopEnter[k] = enter;
        s.loopLeave[k] = leave;
        if (k > 1 && enter == s.loopLeave[k - 1] && leave == s.loopEnter[k - 1]) {
            ++s.loopK;
            if (s.loopK == 6) {
                s.refusedEnter = enter;
                s.refusedLeave = leave;
            }
        } else {
            s.loopEnter[1] = enter;
            s.loopLeave[1] = leave;
            s.loopK = 2;
        }
    } else if (++s.loopK > 7) {
        s.loopK = 1;
    }
}

// Iterations (lpprm2) until a status is set. Every pass either ends, pivots
// (bounded by the pivot limit) or reinverts, after which it pivots or ends;
// so the loop always ends.
void lpprm2() {
    LppIntegers& s = lppzzi_;
    s.status = 0;
    while (s.status == 0) {
        if (!lppphs()) {
            s.status = LPPRIM_STALLED;
            break;
        }
        if (s.sinceReinversion >= s.interval) {
            lppver();
            continue;
        }
        const int enter = lppmin();
        if (enter == 0) {
            s.status = s.phase == 1 ? LPPRIM_INFEASIBLE : LPPRIM_OPTIMAL;
            break;
        }
        lppjmy(enter, w_);
        const int r = lpprow(w_);
        if (r < 0) {
            s.status = LPPRIM_UNBOUNDED;
            break;
        }
        if (s.pivots >= s.pivotLimit) {
            s.status = LPPRIM_PIVOT_LIMIT;
            break;
        }
        const int leave = ib_[r];
        lpppiv(r, w_);
        ib_[r] = enter;
        ++s.pivots;
        ++s.sinceReinversion;
        lpplop(enter, leave);
    }
}

// Residuals (lppers) of the final basis, and the reduced costs of all columns.
void lppers(double* pi, double* errors) {
    const int m = lppzzi_.m, n = lppzzi_.n;
    std::vector<double> x(n + m + 1, 0.0);
    for (int i = 0; i < m; ++i)
        if (ib_[i] > 0) x[ib_[i]] = xb_[i];
    errors[0] = errors[1] = errors[2] = errors[3] = 0.0;
    for (int i = 0; i < m; ++i) {
        double r = b_[i] - t_[i] * x[n + i + 1];
        for (int j = 1; j <= n; ++j) r -= a(i, j) * x[j];
        errors[0] = std::fmax(errors[0], std::fabs(r));
        errors[1] += std::fabs(r);
    }
    for (int i = 0; i < m; ++i) pi[i] = inv(m + lppzzi_.phase - 1, i);
    for (int j = 1; j <= n + m; ++j) rc_[j - 1] = reducedCost(j, pi);
    for (int i = 0; i < m; ++i) {
        if (ib_[i] <= 0) continue;
        const double d = std::fabs(rc_[ib_[i] - 1]);
        errors[2] = std::fmax(errors[2], d);
        errors[3] += d;
    }
}
};

void Solver::solve(double* A, double* t, double* b, double* c, int* options, double* tolerances,
                   double* objectiveValue, double* xb, int* ib, double* pi, double* rc, double* errors, int* status,
                   double* work) {
    LppIntegers& s = lppzzi_;
    const int m = options[2], n = options[3];
    if (m < 1 || n < 1 || options[0] < m || options[1] < n)
        invalid(__LINE__, "Invalid dimensions for simplex algorithm.");
    // The size in 64 bits, so that a huge m can't wrap around.
    if (static_cast<long long>(options[5]) < (static_cast<long long>(m) + 5) * m + 6)
        invalid(__LINE__, "Work array too small for simplex algorithm.");
    const int start = options[6];
    if (start < 0 || start > 4) invalid(__LINE__, "Invalid start option for simplex algorithm.");
    if (start != 0)
        for (int i = 0; i < m; ++i)
            if (ib[i] < 0 || ib[i] > n + m) invalid(__LINE__, "Invalid basis for simplex algorithm.");

    s.m = m;
    s.n = n;
    s.lda = options[0];
    s.sign = options[4] == 1 ? 1 : 0;
    s.columns = options[7] == 1 ? n + m : n;
    s.slackCosts = options[8] == 1 ? 1 : 0;
    s.pivotLimit = options[9] < 1 ? 1000 : options[9];
    s.stallLimit = options[10] < 1 ? 1000 : options[10];
    s.interval = options[11] < 1 ? 30 : options[11];
    s.confirm = options[12] == 1 ? 1 : 0;
    s.lineWidth = options[18] < 72 ? 72 : options[18] > 132 ? 132 : options[18];
    const double defaults[4] = {1e-7, 1e-6, 1e-6, 1e-10};
    double* tol[4] = {&lppzzr_.pivot, &lppzzr_.cost, &lppzzr_.feasibility, &lppzzr_.zero};
    for (int k = 0; k < 4; ++k) *tol[k] = tolerances[k] > 0 ? tolerances[k] : defaults[k];

    A_ = A;
    t_ = t;
    b_ = b;
    c_ = c;
    xb_ = xb;
    ib_ = ib;
    rc_ = rc;
    inv_ = work;
    w_ = work + (m + 2) * (m + 2);
    basic_.assign(n + m + 1, 0);

    const int costs = s.slackCosts ? n + m : n;
    if (s.sign)
        for (int j = 0; j < costs; ++j) c[j] = -c[j];

    s.pivots = s.reinversions = s.stall = 0;
    s.sinceReinversion = 0;
    s.loopK = 1;
    s.firstReinversion = true;
    lppzzd_.lastObjective = std::numeric_limits<double>::quiet_NaN();
    phase2Reached_ = false;
    if (start == 0) lppnew();
    if (start <= 1)
        lppver();
    else
        lppmod(start);

    lpprm2();
    const bool again = s.status == LPPRIM_INFEASIBLE || s.status == LPPRIM_UNBOUNDED ||
                       (s.status == LPPRIM_OPTIMAL && s.confirm);
    if (again) {
        lppver();
        lpprm2();
    }

    lppers(pi, errors);
    *objectiveValue = -xb[m + 1];
    if (s.sign) {
        for (int j = 0; j < costs; ++j) c[j] = -c[j];
        for (int i = 0; i < m; ++i) pi[i] = -pi[i];
        for (int j = 0; j < n + m; ++j) rc[j] = -rc[j];
        if (s.status == LPPRIM_OPTIMAL || phase2Reached_) *objectiveValue = -*objectiveValue;
    }
    if (s.status == LPPRIM_OPTIMAL) {
        for (int i = 0; i < m + 2; ++i)
            if (std::fabs(xb[i]) <= lppzzr_.zero) xb[i] = 0.0;
        for (int i = 0; i < m; ++i)
            if (std::fabs(pi[i]) <= lppzzr_.zero) pi[i] = 0.0;
    }
    status[0] = s.status;
    status[1] = s.pivots;
    status[2] = s.sinceReinversion;
    status[3] = s.reinversions;
}

}  // namespace

void lpprim(double* A, double* t, double* b, double* c, int* options, double* tolerances, double* objectiveValue,
            double* xb, int* ib, double* pi, double* rc, double* errors, int* status, double* work) {
    Solver solver;
    solver.solve(A, t, b, c, options, tolerances, objectiveValue, xb, ib, pi, rc, errors, status, work);
}

}  // namespace lpprim

std::pair<std::vector<double>, double> simplex_solve(std::vector<simplex_constraint> constraints,
                                                     std::vector<double> objective, bool minimise) {
    // No constraint at all, no variable, an unknown type or a value that is
    // not finite are refused like lists of different lengths: the arrays
    // would have no row or column, and a NaN would only wander through the
    // pivots until a limit stops it. So are problems whose work array an int
    // can't count.
    const std::size_t n = objective.size();
    bool valid = !constraints.empty() && n > 0;
    for (double v : objective) valid = valid && std::isfinite(v);
    for (const simplex_constraint& row : constraints) {
        valid = valid && row.coefficients.size() == n && row.type >= 0 && row.type <= 2 && std::isfinite(row.rhs);
        for (double v : row.coefficients) valid = valid && std::isfinite(v);
    }
    if (!valid || constraints.size() > 20000 || n > 1000000)
        throw Exception("misc_optim_simplex", __LINE__, "Invalid constraints for simplex algorithm.");

    const int m = static_cast<int>(constraints.size());
    const int cols = static_cast<int>(n);
    std::vector<double> A(static_cast<std::size_t>(m) * n), t(m), b(m), c = objective;
    for (int i = 0; i < m; ++i) {
        for (int j = 0; j < cols; ++j) A[static_cast<std::size_t>(j) * m + i] = constraints[i].coefficients[j];
        t[i] = constraints[i].type == 0 ? 0.0 : constraints[i].type == 1 ? -1.0 : 1.0;
        b[i] = constraints[i].rhs;
    }
    int options[19] = {m, cols, m, cols, minimise ? 0 : 1, (m + 5) * m + 6, 0, 1, 0, 10000, -1, -1, 1,
                       0, 0, 0, 0, 0, 72};
    double tolerances[4] = {-1, -1, -1, -1};
    double value = 0.0;
    std::vector<double> xb(m + 2), pi(m), rc(static_cast<std::size_t>(m) + n), work((m + 5) * m + 6);
    std::vector<int> ib(m);
    double errors[4];
    int status[4];
    lpprim::lpprim(A.data(), t.data(), b.data(), c.data(), options, tolerances, &value, xb.data(), ib.data(),
                   pi.data(), rc.data(), errors, status, work.data());
    if (status[0] != lpprim::LPPRIM_OPTIMAL) throw Exception("misc_optim_simplex", __LINE__, "Simplex failed.");

    std::vector<double> x(n, 0.0);
    for (int i = 0; i < m; ++i)
        if (ib[i] >= 1 && ib[i] <= cols) x[ib[i] - 1] = xb[i];
    return {x, value};
}

}  // namespace velmora
