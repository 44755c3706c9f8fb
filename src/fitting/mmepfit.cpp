// MMAP fitting: the closed-form moment representation and the Nelder-Mead
// search for a similarity transformation with rates of the right signs.
#include "fitting/mmepfit.h"

#include <cmath>

#include "core/libvelmora_settings.h"
#include "markov/mep_structs.h"
#include "numerics/misc_linalg.h"
#include "numerics/misc_math.h"
#include "numerics/misc_optim.h"
#include "traces/trace_mc.h"

namespace velmora {

namespace mmapfit {

thread_local std::vector<Matrix> mmep_to_mmap_nm_goalfunc_mmep;
thread_local double mmep_to_mmap_nm_goalfunc_r = 10.0;

namespace {

[[noreturn]] void fail(int line, const std::string& message) { throw Exception("mmepfit", line, message); }

// Q of order n from its off-diagonal entries in row order; the diagonal
// completes each row sum to 1.
Matrix matrixQ(const std::vector<double>& x, unsigned n) {
    Matrix Q(n, n);
    std::size_t next = 0;
    for (unsigned i = 0; i < n; ++i) {
        double sum = 0.0;
        for (unsigned j = 0; j < n; ++j) {
            if (j == i) continue;
            Q[i][j] = x[next++];
            sum += Q[i][j];
        }
        Q[i][i] = 1.0 - sum;
    }
    return Q;
}

// D0 and the D_(k+1) of the MMEP list H, A, B, J_0, ... under Q.
std::vector<Matrix> processMatrices(const std::vector<Matrix>& mmep, std::size_t classes, const Matrix& Q) {
    const Matrix Qinv = Q ^ -1;
    const Matrix D0 = (Qinv * ((-mmep[0]) ^ -1)) * Q;
    std::vector<Matrix> D{D0};
    if (classes == 0) return D;
    // Products from the left, in the order of the formula.
    const Matrix left = (-D0) * Qinv * (mmep[1] ^ -1);
    const Matrix Binv = mmep[2] ^ -1;
    for (std::size_t k = 0; k < classes; ++k) D.push_back(left * mmep[3 + k] * Binv * Q);
    return D;
}

void checkFinite(double value) {
    if (!std::isfinite(value)) fail(__LINE__, "Moments for MMAP fitting must be finite.");
}

// The goal on the list H, A, B, J_k with penalty factor r.
double goalValue(const std::vector<Matrix>& mmep, double r, const std::vector<double>& x) {
    if (mmep.size() < 3) fail(__LINE__, "No MMAP fit in progress.");
    const unsigned n = mmep[0].getNumberRows();
    if (x.size() != static_cast<std::size_t>(n) * (n - 1))
        fail(__LINE__, "Invalid number of variables for MMAP fitting.");
    const std::vector<Matrix> D = processMatrices(mmep, mmep.size() - 3, matrixQ(x, n));
    double negative = 0.0;
    for (unsigned i = 0; i < n; ++i)
        for (unsigned j = 0; j < n; ++j)
            if (i != j && D[0][i][j] < 0) negative += -D[0][i][j];
    for (std::size_t k = 1; k < D.size(); ++k)
        for (unsigned i = 0; i < D[k].getNumberRows(); ++i)
            for (double value : D[k][i])
                if (value < 0) negative += -value;
    // A valid point is worth 0 whatever the factor: after some thirty fits
    // the factor overflows to infinity, and infinity times 0 would be NaN.
    return negative == 0 ? 0.0 : r * negative;
}

}  // namespace

MMAP* moments_matching(MCTrace* trace, unsigned order) {
    if (trace == nullptr) fail(__LINE__, "No trace given for MMAP fitting.");
    // 2 order - 1 moments: an order of 0 has none, and the count would wrap.
    if (order == 0 || order > 6) fail(__LINE__, "Invalid order for MMAP fitting (1 to 6).");
    return moments_matching(trace->getMoments(2 * order - 1), trace->getJointMoments(order - 1));
}

MMAP* moments_matching(std::map<std::string, std::vector<double>> moments,
                       std::map<std::string, std::vector<std::vector<double>>> jointMoments) {
    auto all = moments.find("ALL");
    if (all == moments.end()) fail(__LINE__, "No moments under ALL for MMAP fitting.");
    return mmep_to_mmap_nm(moments_to_mmep(all->second, jointMoments));
}

std::vector<Matrix> moments_to_mmep(std::vector<double> moments,
                                    std::map<std::string, std::vector<std::vector<double>>> jointMoments) {
    // fac is exact up to 12!: a 14th moment would be reduced by a wrapped factorial.
    if (moments.size() < 2 || moments.size() > 13) fail(__LINE__, "MMAP fitting needs 2 to 13 moments.");
    for (double m : moments) checkFinite(m);

    Matrix H = map_mrp_similarity_transform(map_solve_mrp(compute_reduced_moments(Matrix(moments, MATRIX_ROW))));
    H.eliminateSmallValues(1e-15);
    const unsigned n = H.getNumberRows();

    Matrix e(1, n);
    e[0][0] = 1.0;
    const Matrix ones(n, 1, MATRIX_ONES);
    Matrix A(n, n), B(n, n);
    for (unsigned i = 0; i < n; ++i) {
        const Matrix Hi = H ^ static_cast<int>(i);
        const double factorial = static_cast<double>(fac(i));
        A.setRow(i, (e * Hi) * factorial);
        B.setCol(i, (Hi * ones) * factorial);
    }
    A.eliminateSmallValues(1e-15);
    B.eliminateSmallValues(1e-15);

    std::vector<Matrix> mmep{H, A, B};
    for (const auto& entry : jointMoments) {
        if (entry.first == "ALL") continue;
        const std::vector<std::vector<double>>& table = entry.second;
        bool square = table.size() == n;
        for (const std::vector<double>& row : table) {
            square = square && row.size() == n;
            for (double m : row) checkFinite(m);
        }
        if (!square) fail(__LINE__, "Joint moments of class " + entry.first + " don't match the order of the moments.");
        Matrix J(table);
        J.eliminateSmallValues(1e-15);
        mmep.push_back(J);
    }
    return mmep;
}

Matrix map_solve_mrp(Matrix reducedMoments) {
    const Matrix& m = reducedMoments;
    if (m.getNumberRows() < 1 || m.getNumberCols() < 2) fail(__LINE__, "At least two reduced moments are needed.");
    const unsigned K = m.getNumberCols();
    const double c = m[0][1];

    // The recursion: a, b and d are polynomials in the shift, as columns of
    // coefficients; p counts the steps since the last block began (negative
    // while its entries are collected), q the sizes of the blocks.
    Matrix a(K, 1), b(K, 1), d(K, 1);
    a[0][0] = 1.0;
    std::vector<int> p{0}, q{0};
    double s = 1.0;
    std::size_t j = 0;
    std::vector<double> f;
    std::vector<std::vector<double>> g;
    for (unsigned i = 1; i <= K; ++i) {
        const double h = (m * a)[0][0] * s;
        p.push_back(p[i - 1] + 1);
        if (p[i] > 0 && h != 0) {
            f.push_back(h / std::pow(c, static_cast<double>(p[i] + q[j] - 1)));
            ++j;
            q.push_back(p[i]);
            p[i] = -p[i];
            s = s / h;
            d = a.downshift();
        } else if (p[i] < 1) {
            if (g.size() <= j) g.resize(j + 1);
            g[j].push_back(h / std::pow(c, static_cast<double>(q[j] + p[i - 1])));
        }
        a = a.downshift() - b * h;
        b = d;
    }

    // R block by block: each block of the collected entries sits on the
    // diagonal, tied to the one before by f below and c above it.
    Matrix R(1, 1);
    for (std::size_t t = 1; t < g.size(); ++t) {
        if (t == 1) {
            R[0][0] = c;
            continue;
        }
        const unsigned L = static_cast<unsigned>(g[t].size()), u = static_cast<unsigned>(g[t - 1].size());
        const unsigned r0 = R.getNumberRows(), c0 = R.getNumberCols();
        // A first step without the entry r_0 makes blocks that don't chain.
        if (L == 0 || u > c0 || u > r0 || t - 1 >= f.size())
            fail(__LINE__, "The reduced moments have no block tridiagonal representation.");
        R.resize(r0 + L, c0 + L);
        for (unsigned k = 0; k < L; ++k) R[r0 + L - 1][c0 + k] = g[t][L - 1 - k];
        for (unsigned k = 1; k < L; ++k) R[r0 + k - 1][c0 + k] = c;
        R[r0 + L - 1][c0 - u] = f[t - 1];
        R[r0 - 1][c0] = c;
    }
    return R;
}

Matrix map_mrp_similarity_transform(Matrix R) {
    const unsigned n = R.getNumberRows();
    Matrix L(n, n);
    for (unsigned i = 0; i < n; ++i)
        for (unsigned j = 0; j <= i; ++j) L[i][j] = 1.0;
    return (L * R) * (L ^ -1);
}

bool valid_mmap(std::vector<Matrix> mmepAndQ) {
    if (mmepAndQ.size() < 4) fail(__LINE__, "An MMEP list with Q needs H, A, B and Q.");
    const Matrix Q = mmepAndQ.back();
    std::vector<Matrix> D = processMatrices(mmepAndQ, mmepAndQ.size() - 4, Q);
    for (Matrix& Dk : D) Dk.eliminateSmallValues(1e-15);
    const Matrix& D0 = D[0];
    for (unsigned i = 0; i < D0.getNumberRows(); ++i)
        for (unsigned j = 0; j < D0.getNumberCols(); ++j)
            if (i == j ? D0[i][j] > 0 : D0[i][j] < 0) return false;
    for (std::size_t k = 1; k < D.size(); ++k)
        for (unsigned i = 0; i < D[k].getNumberRows(); ++i)
            for (double v : D[k][i])
                if (v < 0) return false;
    return true;
}

MMAP* mmep_to_mmap_nm(std::vector<Matrix> mmep) {
    if (mmep.size() < 3 || mmep[0].getNumberRows() == 0 || mmep[0].getNumberRows() != mmep[0].getNumberCols())
        fail(__LINE__, "An MMEP list needs a square H, A and B.");
    mmep_to_mmap_nm_goalfunc_mmep = mmep;
    const unsigned n = mmep[0].getNumberRows();
    const unsigned v = n * (n - 1);

    // Vertex j of the start polytope: 0.85 / v everywhere, 0.71 / v more on
    // coordinate j. Q then starts near the matrix of equal entries 0.85 / v.
    Matrix P(v + 1, v + 2);
    for (unsigned j = 0; j <= v; ++j) {
        for (unsigned i = 0; i < v; ++i) P[i][j] = 0.85 / v;
        if (j < v) P[j][j] += 0.71 / v;
    }
    std::vector<double> x(v, 0.0);
    double minimum = 0.0;
    int failed = 0, fncount = 0;
    // The penalty factor lives on from fit to fit on this thread.
    double& r = mmep_to_mmap_nm_goalfunc_r;
    const std::vector<Matrix> problem = mmep;
    const auto goal = [&problem, &r](std::vector<double> point) { return goalValue(problem, r, point); };
    nmmin(P, &x, &minimum, goal, &failed, -1e17, 1e-17, 1.0, 0.5, 2.0, &fncount, 10000);
    Matrix Q = matrixQ(x, n);

    mmep.push_back(Q);
    for (int round = 0; round <= 10; ++round) {
        r *= 10.0;
        mmep.back() = Q;
        if (valid_mmap(mmep)) break;
        // Restart around the last result, each vertex 0.9 / v further along
        // its own coordinate.
        for (unsigned j = 0; j <= v; ++j) {
            for (unsigned i = 0; i < v; ++i) P[i][j] = x[i];
            if (j < v) P[j][j] += 0.9 / v;
        }
        nmmin(P, &x, &minimum, goal, &failed, -1e17, 1e-17, 1.0, 0.5, 2.0, &fncount, 10000);
        Q = matrixQ(x, n);
    }
    mmep.pop_back();
    return new MMAP(processMatrices(mmep, mmep.size() - 3, Q));
}

double mmep_to_mmap_nm_goalfunc(std::vector<double> x) {
    return goalValue(mmep_to_mmap_nm_goalfunc_mmep, mmep_to_mmap_nm_goalfunc_r, x);
}

}  // namespace mmapfit

}  // namespace velmora
