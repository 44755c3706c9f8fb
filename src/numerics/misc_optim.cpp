// Nelder-Mead after Nash's Algorithm 19 and the golden section search.
//
// The polytope P keeps vertex j in column j (coordinates in rows 0..n-1, the
// value in row n) and the centroid of all vertices but the highest in column
// n+1. The loop works on raw row pointers; the sums run in a fixed order,
// since the evaluation count and the minimum found depend on every rounding.
#include "numerics/misc_optim.h"

#include <climits>
#include <cmath>
#include <vector>

#include "core/libvelmora_settings.h"
#include "numerics/matrix.h"

namespace velmora {

namespace {

struct SearchOutcome {
    unsigned long long evaluations;
    int fail;
    double minimum;
};

// The main loop shared by both forms. P has vertex 0 and its value f0 in
// place and the coordinates of the other vertices; B is scratch of n entries
// and holds the best vertex on return.
SearchOutcome searchPolytope(Matrix& P, unsigned n, std::vector<double>& B, double f0, double size,
                             FunctionRef<double(std::vector<double>)> fn, double abstol, double intol, double alpha,
                             double beta, double gamma, unsigned maxit) {
    std::vector<double*> row(n + 1);
    for (unsigned i = 0; i <= n; ++i) row[i] = P[i].data();
    double* value = row[n];
    const unsigned C = n + 1;

    SearchOutcome out{1, 0, f0};
    const double convtol = (std::fabs(f0) + intol) * intol;
    unsigned L = 0;
    double oldsize = size;
    bool recompute = true;

    auto evaluate = [&]() {
        ++out.evaluations;
        return fn(B);
    };
    auto loadVertex = [&](unsigned j) {
        for (unsigned i = 0; i < n; ++i) B[i] = row[i][j];
    };
    auto storeVertex = [&](unsigned j, double v) {
        for (unsigned i = 0; i < n; ++i) row[i][j] = B[i];
        value[j] = v;
    };

    do {
        if (recompute) {
            for (unsigned j = 0; j <= n; ++j) {
                if (j == L) continue;
                loadVertex(j);
                value[j] = evaluate();
            }
            recompute = false;
        }

        // Strict comparisons: of equal values the earlier column stays.
        double VL = value[L];
        double VH = VL;
        unsigned H = L;
        for (unsigned j = 0; j <= n; ++j) {
            if (j == L) continue;
            const double f = value[j];
            if (f < VL) {
                L = j;
                VL = f;
            }
            if (f > VH) {
                H = j;
                VH = f;
            }
        }
        if (VL + convtol >= VH || VL <= abstol) break;

        // The sum starts from minus the highest vertex, as in the published
        // routine: any other order changes the last bits and so the path.
        for (unsigned i = 0; i < n; ++i) {
            double sum = -row[i][H];
            for (unsigned j = 0; j <= n; ++j) sum += row[i][j];
            row[i][C] = sum / n;
        }

        for (unsigned i = 0; i < n; ++i) B[i] = (1 + alpha) * row[i][C] - alpha * row[i][H];
        const double VR = evaluate();

        if (VR < VL) {
            // Column C takes the reflected point, B the extended one.
            value[C] = VR;
            for (unsigned i = 0; i < n; ++i) {
                const double e = gamma * B[i] + (1 - gamma) * row[i][C];
                row[i][C] = B[i];
                B[i] = e;
            }
            const double f = evaluate();
            if (f < VR) {
                storeVertex(H, f);
            } else {
                for (unsigned i = 0; i < n; ++i) row[i][H] = row[i][C];
                value[H] = VR;
            }
        } else {
            if (VR < VH) storeVertex(H, VR);
            for (unsigned i = 0; i < n; ++i) B[i] = (1 - beta) * row[i][H] + beta * row[i][C];
            const double f = evaluate();
            if (f < value[H]) {
                storeVertex(H, f);
            } else if (VR >= VH) {
                // Shrink towards the lowest vertex; a polytope that no longer
                // gets smaller has collapsed in double precision.
                recompute = true;
                double s = 0.0;
                for (unsigned j = 0; j <= n; ++j) {
                    if (j == L) continue;
                    for (unsigned i = 0; i < n; ++i) {
                        row[i][j] = beta * (row[i][j] - row[i][L]) + row[i][L];
                        s += std::fabs(row[i][j] - row[i][L]);
                    }
                }
                if (s < oldsize) {
                    oldsize = s;
                } else {
                    out.fail = 10;
                    break;
                }
            }
        }
    } while (out.evaluations <= maxit);

    if (out.evaluations > maxit) out.fail = 1;
    loadVertex(L);
    out.minimum = value[L];
    return out;
}

void finish(const std::vector<double>& best, const SearchOutcome& outcome, std::vector<double>* result,
            double* minimum, int* fail, int* fncount) {
    if (result != nullptr) *result = best;
    if (minimum != nullptr) *minimum = outcome.minimum;
    if (fail != nullptr) *fail = outcome.fail;
    // The count is kept wide inside, so a huge maxit can't overflow it.
    if (fncount != nullptr)
        *fncount = outcome.evaluations > static_cast<unsigned long long>(INT_MAX) ? INT_MAX
                                                                                 : static_cast<int>(outcome.evaluations);
}

}  // namespace

void nmmin(std::vector<double> start, std::vector<double>* result, double* minimum, FunctionRef<double(std::vector<double>)> fn,
           int* fail, double abstol, double intol, double alpha, double beta, double gamma, int* fncount,
           unsigned maxit) {
    const unsigned n = static_cast<unsigned>(start.size());
    std::vector<double> B = start;
    const double f = fn(B);

    Matrix P(n + 1, n + 2);
    for (unsigned i = 0; i < n; ++i) P(i, 0u) = B[i];
    P(n, 0u) = f;

    double step = 0.0;
    for (unsigned i = 0; i < n; ++i)
        if (0.1 * std::fabs(B[i]) > step) step = 0.1 * std::fabs(B[i]);
    if (step == 0.0) step = 0.1;

    // A step too small to change a coordinate grows by powers of ten. Only an
    // infinite coordinate never changes; there the growth stops when the step
    // itself overflows.
    double size = 0.0;
    for (unsigned j = 1; j <= n; ++j) {
        for (unsigned i = 0; i < n; ++i) P(i, j) = B[i];
        double t = step;
        while (P(j - 1, j) == B[j - 1] && std::isfinite(t)) {
            P(j - 1, j) = B[j - 1] + t;
            t = 10 * t;
        }
        size += t;
    }

    const SearchOutcome outcome = searchPolytope(P, n, B, f, size, fn, abstol, intol, alpha, beta, gamma, maxit);
    finish(B, outcome, result, minimum, fail, fncount);
}

void nmmin(Matrix polytope, std::vector<double>* result, double* minimum, FunctionRef<double(std::vector<double>)> fn,
           int* fail, double abstol, double intol, double alpha, double beta, double gamma, int* fncount,
           unsigned maxit) {
    const unsigned rows = polytope.getNumberRows();
    if (rows == 0 || polytope.getNumberCols() != rows + 1)
        throw Exception("misc_optim", __LINE__, "Invalid polytope.");
    const unsigned n = rows - 1;
    Matrix& P = polytope;

    std::vector<double> B(n);
    for (unsigned i = 0; i < n; ++i) B[i] = P(i, 0u);
    const double f = fn(B);
    P(n, 0u) = f;

    double size = 0.0;
    for (unsigned j = 1; j <= n; ++j)
        for (unsigned i = 0; i < n; ++i) size += std::fabs(P(i, j) - P(i, 0u));

    const SearchOutcome outcome = searchPolytope(P, n, B, f, size, fn, abstol, intol, alpha, beta, gamma, maxit);
    finish(B, outcome, result, minimum, fail, fncount);
}

double golden_section_search(FunctionRef<double(double)> fn, double a, double b, double tol) {
    const double c = 0.3819660112501051;  // (3 - sqrt(5))/2
    double x1 = a + c * (b - a);
    double x2 = x1 + c * (b - x1);
    double f1 = fn(x1);
    double f2 = fn(x2);
    // Near the resolution of doubles the new point can round onto an old
    // one and the bracket stops shrinking; then it is as small as it gets.
    double width = std::fabs(b - a);
    while (width > tol) {
        if (f1 <= f2) {
            b = x2;
            x2 = x1;
            x1 = (1 - c) * x2 + c * a;
            f2 = f1;
            f1 = fn(x1);
        } else {
            a = x1;
            x1 = x2;
            x2 = (1 - c) * x1 + c * b;
            f1 = f2;
            f2 = fn(x2);
        }
        const double next = std::fabs(b - a);
        if (!(next < width)) break;
        width = next;
    }
    return f2 <= f1 ? x2 : x1;
}

}  // namespace velmora
