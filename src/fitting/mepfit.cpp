// MAP fitting: linear programs span the start polytope, and a Nelder-Mead
// search with L1 penalties finds D1.
#include "fitting/mepfit.h"

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "core/libvelmora_settings.h"
#include "markov/cph.h"
#include "numerics/misc_optim.h"
#include "numerics/misc_optim_simplex.h"

namespace velmora {

thread_local CPH* mapfit_fit_autocorrelation_cph = nullptr;
thread_local std::vector<double> mapfit_fit_autocorrelation_weights;
thread_local std::vector<double> mapfit_fit_autocorrelation_autocorr_trace;

namespace {

const double penaltyWeight = 1e6;

void fail(int line, const char* message) { throw Exception("mepfit", line, message); }

bool allFinite(const Matrix& m) {
    for (unsigned i = 0; i < m.getNumberRows(); ++i)
        for (double v : m[i])
            if (!std::isfinite(v)) return false;
    return true;
}

// T a finite sub-generator and tau a distribution over its phases. Whether
// -T can be inverted shows when the inverse is taken.
void checkPhaseType(const Matrix& T, const Vector& tau) {
    if (!T.isSubgeneratorMatrix() || !allFinite(T)) fail(__LINE__, "Invalid sub-generator matrix T for MAP fitting.");
    bool valid = tau.getNumberEntries() == T.getNumberRows();
    double sum = 0.0;
    for (unsigned i = 0; valid && i < tau.getNumberEntries(); ++i) {
        valid = std::isfinite(tau[i]) && tau[i] >= 0;
        sum += tau[i];
    }
    if (!valid || std::fabs(sum - 1.0) > 1e-7) fail(__LINE__, "Invalid initial distribution tau for MAP fitting.");
}

// The goal on the problem (T, tau, target, weights): the weighted distances
// of the autocorrelations of (T, D1) from the targets plus the L1 penalties.
double goalValue(const Matrix& T, const Vector& tau, const std::vector<double>& target,
                 const std::vector<double>& weights, const std::vector<double>& x) {
    const unsigned n = static_cast<unsigned>(std::sqrt(static_cast<double>(x.size())));
    if (n != T.getNumberRows() || static_cast<std::size_t>(n) * n != x.size())
        fail(__LINE__, "Invalid number of variables for MAP fitting.");
    Matrix D1(n, n);
    for (unsigned i = 0; i < n; ++i)
        for (unsigned j = 0; j < n; ++j) D1[i][j] = x[i * n + j];

    const Matrix M = (-T) ^ -1;
    const Vector ones(n, false, VECTOR_ONES);
    const Vector tauM = tau * M;
    const double lambda = 1.0 / (tauM * ones)(0, 0);
    const Vector a = (lambda * lambda * tau) * M;
    const Vector b = M * ones;
    const double d = 2 * lambda * lambda * ((tauM * M) * ones)(0, 0) - 1;

    // (M D1)^k by repeated multiplication from the right, one factor per lag.
    const Matrix P = M * D1;
    Matrix Pk = P;
    double value = 0.0;
    for (std::size_t k = 1; k <= target.size(); ++k) {
        if (k > 1) Pk = Pk * P;
        const double rho = ((a * Pk) * b)(0, 0) - 1;
        value += weights[k - 1] * std::fabs(rho / d - target[k - 1]);
    }

    double negative = 0.0, rows = 0.0, stationary = 0.0;
    for (unsigned i = 0; i < n; ++i)
        for (unsigned j = 0; j < n; ++j)
            if (D1[i][j] < 0) negative += std::fabs(D1[i][j]);
    for (unsigned i = 0; i < n; ++i) rows += std::fabs(T.getRowSum(i) + D1.getRowSum(i));
    const Vector embedded = tauM * D1;
    for (unsigned i = 0; i < n; ++i) stationary += std::fabs(embedded[i] - tau[i]);
    return value + penaltyWeight * negative + penaltyWeight * rows + penaltyWeight * stationary;
}

// The record of the fit on this thread while it runs, for the goal function;
// reset when the fit ends, however it ends.
struct FitState {
    FitState(const Matrix& T, const Vector& tau, std::vector<double> ac, std::vector<double> weights) {
        mapfit_fit_autocorrelation_cph = new CPH(T, tau);
        mapfit_fit_autocorrelation_weights = std::move(weights);
        mapfit_fit_autocorrelation_autocorr_trace = std::move(ac);
    }
    ~FitState() {
        delete mapfit_fit_autocorrelation_cph;
        mapfit_fit_autocorrelation_cph = nullptr;
        mapfit_fit_autocorrelation_weights.clear();
        mapfit_fit_autocorrelation_autocorr_trace.clear();
    }
    FitState(const FitState&) = delete;
    FitState& operator=(const FitState&) = delete;
};

}  // namespace

double mapfit_fit_autocorrelation_goal_function(std::vector<double> x) {
    if (mapfit_fit_autocorrelation_cph == nullptr) fail(__LINE__, "No MAP fit in progress.");
    return goalValue(mapfit_fit_autocorrelation_cph->getT(), mapfit_fit_autocorrelation_cph->getTau(),
                     mapfit_fit_autocorrelation_autocorr_trace, mapfit_fit_autocorrelation_weights, x);
}

namespace mapfit {

map_markovian_rep mapfit_fit_autocorrelation(Matrix T, Vector tau, std::vector<double> autocorrelations) {
    std::vector<double> weights(autocorrelations.size(), 1.0);
    return mapfit_fit_autocorrelation(T, tau, autocorrelations, weights);
}

map_markovian_rep mapfit_fit_autocorrelation(Matrix T, Vector tau, std::vector<double> autocorrelations,
                                             std::vector<double> weights) {
    if (weights.size() != autocorrelations.size()) fail(__LINE__, "Different dimensions for weights and lags.");
    // A negative weight would reward a distance, and a NaN would blind every
    // comparison of the search: both are refused.
    for (double w : weights)
        if (!std::isfinite(w) || w < 0) fail(__LINE__, "Invalid weights for MAP fitting.");
    for (double r : autocorrelations)
        if (!std::isfinite(r)) fail(__LINE__, "Invalid autocorrelations for MAP fitting.");

    // The search runs over all n^2 entries of D1 and solves a linear program
    // of that size per step: some 10 s at 25 phases, and growing as n^6.
    if (T.getNumberRows() > kMaxMapFitOrder)
        throw Exception("mepfit", __LINE__,
                        "The MAP fit takes marginals of at most " + std::to_string(kMaxMapFitOrder) +
                            " phases; this one has " + std::to_string(T.getNumberRows()) + ".");
    std::unique_ptr<Matrix> P(mapfit_construct_matrix_nm(T, tau));
    libvelmora_debugmsg("Matrix pm:");
    libvelmora_debugmsg(P->toString(10));

    const unsigned n = T.getNumberRows();
    std::vector<double> x(static_cast<std::size_t>(n) * n, 0.0);
    {
        FitState state(T, tau, autocorrelations, weights);
        // The goal reads the problem as the CPH holds it, like the record.
        const Matrix goalT = mapfit_fit_autocorrelation_cph->getT();
        const Vector goalTau = mapfit_fit_autocorrelation_cph->getTau();
        double minimum = 0.0;
        int failure = 0, evaluations = 0;
        nmmin(
            *P, &x, &minimum,
            [&](std::vector<double> v) { return goalValue(goalT, goalTau, autocorrelations, weights, v); },
            &failure, -1e17, 1e-17, 1.0, 0.5, 2.0, &evaluations, 10000);
    }

    Matrix D1(n, n);
    for (unsigned i = 0; i < n; ++i)
        for (unsigned j = 0; j < n; ++j) D1[i][j] = x[i * n + j];
    return create_map_markovian_rep(T, D1);
}

Matrix* mapfit_construct_matrix_nm(Matrix T, Vector tau) {
    checkPhaseType(T, tau);
    const unsigned n = T.getNumberRows();
    Matrix D1(n, n);
    for (unsigned i = 0; i < n; ++i) {
        const double exit = -1 * T.getRowSum(i);
        for (unsigned j = 0; j < n; ++j) D1[i][j] = exit * tau[j];
    }
    return mapfit_construct_matrix_nm(T, tau, D1);
}

Matrix* mapfit_construct_matrix_nm(Matrix T, Vector tau, Matrix D1) {
    checkPhaseType(T, tau);
    if (!tau.isRowVector()) tau = tau.transpose();
    const unsigned n = T.getNumberRows();
    if (D1.getNumberRows() != n || D1.getNumberCols() != n || !allFinite(D1))
        fail(__LINE__, "Invalid matrix D1 for MAP fitting.");
    const unsigned vars = n * n;

    const Matrix minusT = -T;
    const Vector e = minusT * Vector(n, false, VECTOR_ONES);
    const Vector y = tau * (minusT ^ -1);

    // The rows of T + D1 sum to zero, and tau (-T)^-1 D1 = tau.
    std::vector<simplex_constraint> constraints;
    for (unsigned r = 0; r < n; ++r) {
        simplex_constraint row{0, std::vector<double>(vars, 0.0), e[r]};
        for (unsigned c = 0; c < n; ++c) row.coefficients[r * n + c] = 1.0;
        constraints.push_back(row);
    }
    for (unsigned c = 0; c < n; ++c) {
        simplex_constraint column{0, std::vector<double>(vars, 0.0), tau[c]};
        for (unsigned r = 0; r < n; ++r) column.coefficients[r * n + c] = y[r];
        constraints.push_back(column);
    }

    std::unique_ptr<Matrix> P(new Matrix(vars + 1, vars + 2));
    for (unsigned k = 0; k < vars; ++k) (*P)(k, 0u) = D1[k / n][k % n];
    for (unsigned k = 0; k < vars; ++k) {
        std::vector<double> objective(vars, 0.0);
        objective[k] = 1.0;
        const std::vector<double> vertex = simplex_solve(constraints, objective, false).first;
        for (unsigned v = 0; v < vars; ++v) (*P)(v, k + 1) = vertex[v];
    }
    return P.release();
}

}  // namespace mapfit

}  // namespace velmora
