// MAP fitting: the start polytope against scipy's linear programs, a fit to
// the autocorrelations of a known MAP(4), the goal function's identities,
// and the refusal of bad input.
#include <cmath>

#include "fitting/mepfit.h"
#include "fitting_helpers.h"
#include "markov/cph.h"
#include "markov/maps.h"

using namespace velmora;
using fitting_test::failureOf;

namespace {

// Fast phases 0, 1 and slow phases 2, 3 that an event seldom leaves: intervals
// with autocorrelations from 0.33 at lag 1 to 0.16 at lag 10.
Matrix knownD0() { return Matrix({{-10, 1, 0, 0}, {1, -10, 0, 0}, {0, 0, -1, 0.1}, {0, 0, 0.1, -1}}); }
Matrix knownD1() {
    return Matrix({{8, 0.8, 0.2, 0}, {0.5, 8.3, 0, 0.2}, {0.05, 0, 0.85, 0}, {0, 0.05, 0, 0.85}});
}
Vector embeddedTau() { return Vector(MAP(knownD0(), knownD1()).steady_state_vector_embedded_dtmc().getRow(0), true); }

double distance(const std::vector<double>& a, const std::vector<double>& b) {
    double sum = 0;
    for (std::size_t k = 0; k < a.size(); ++k) sum += std::fabs(a[k] - b[k]);
    return sum;
}

}  // namespace

TEST(MapFit, PolytopeVerticesAreTheLinearProgramMaxima) {
    // scipy.optimize.linprog(method="highs"): the largest D1[i][j] with D1 >= 0,
    // rows of T + D1 summing to 0 and tau (-T)^-1 D1 = tau, row by row, for
    // this tau (the embedded vector to 17 digits; the maxima move 100 times
    // as far as tau does).
    const Vector tau({0.31929534786477315, 0.39499036639322571, 0.13982934119957749, 0.14588494454242365}, true);
    const double maxima[16] = {8.81012658052, 9, 3.85822782536, 4.02531648584, 7.40425530674, 9,
                               3.24255316759, 3.38297874374, 0.9, 0.9, 0.896470587102, 0.9,
                               0.9, 0.9, 0.865909080335, 0.9};
    // tau as a column: either orientation is a distribution.
    std::unique_ptr<Matrix> P(mapfit::mapfit_construct_matrix_nm(knownD0(), tau.transpose()));
    ASSERT_EQ(P->getNumberRows(), 17u);
    ASSERT_EQ(P->getNumberCols(), 18u);
    for (unsigned k = 0; k < 16; ++k) EXPECT_NEAR((*P)(k, k + 1), maxima[k], 1e-9) << "entry " << k;
    EXPECT_NEAR((*P)(0u, 0u), 9 * tau[0], 1e-12);  // vertex 0: the renewal process
}

TEST(MapFit, FitKeepsTheMarginalAndHalvesTheDistanceOfTheRenewalProcess) {
    const Matrix T = knownD0();
    const Vector tau = embeddedTau();
    const std::vector<double> targets = MAP(T, knownD1()).getAutocorrelations(1, 10);
    testing::internal::CaptureStdout();
    const map_markovian_rep rep = mapfit::mapfit_fit_autocorrelation(T, tau, targets);
    EXPECT_EQ(testing::internal::GetCapturedStdout().substr(0, 25), "DEBUG: Matrix pm:\nDEBUG: ");
    EXPECT_EQ(rep.D0, T);
    MAP fitted(rep.D0, rep.D1);
    const std::vector<double> moments = fitted.getMoments(1, 3), wanted = CPH(T, tau).getMoments(1, 3);
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(moments[k], wanted[k], 1e-6 * wanted[k]) << "moment " << k + 1;
    for (unsigned i = 0; i < 4; ++i) EXPECT_NEAR((rep.D0 + rep.D1).getRowSum(i), 0.0, 1e-9) << "row " << i;
    const double renewal = distance(targets, std::vector<double>(10, 0.0));
    EXPECT_LT(distance(fitted.getAutocorrelations(1, 10), targets), 0.5 * renewal);
    EXPECT_EQ(mapfit_fit_autocorrelation_cph, nullptr);
    EXPECT_TRUE(mapfit_fit_autocorrelation_weights.empty() && mapfit_fit_autocorrelation_autocorr_trace.empty());
    testing::internal::CaptureStdout();
    EXPECT_EQ(mapfit::mapfit_fit_autocorrelation(T, tau, targets, std::vector<double>(10, 1.0)).D1, rep.D1);

    // One phase: D1 = [2] is the only admissible matrix, with or without targets.
    EXPECT_EQ(mapfit::mapfit_fit_autocorrelation(Matrix({{-2}}), Vector({1}, true), {}).D1, Matrix({{2}}));
    EXPECT_EQ(mapfit::mapfit_fit_autocorrelation(Matrix({{-2}}), Vector({1}, true), {0.3}, {1}).D1, Matrix({{2}}));
    testing::internal::GetCapturedStdout();
}

TEST(MapFit, GoalIsTheWeightedL1DistanceOnTheAdmissibleSet) {
    const Matrix D1 = knownD1();
    std::vector<double> x;
    for (unsigned i = 0; i < 4; ++i)
        for (double v : D1[i]) x.push_back(v);
    const std::vector<double> rho = MAP(knownD0(), D1).getAutocorrelations(1, 10);
    mapfit_fit_autocorrelation_cph = new CPH(knownD0(), embeddedTau());
    mapfit_fit_autocorrelation_autocorr_trace = rho;
    mapfit_fit_autocorrelation_weights.assign(10, 1.0);
    // The stationary vector is exact to about 1e-10, which its penalty
    // magnifies a million times; the distance itself is zero.
    const double own = mapfit_fit_autocorrelation_goal_function(x);
    EXPECT_LT(own, 1e-3);
    for (double& r : mapfit_fit_autocorrelation_autocorr_trace) r += 0.1;
    EXPECT_NEAR(mapfit_fit_autocorrelation_goal_function(x), own + 1.0, 1e-9);
    mapfit_fit_autocorrelation_weights.assign(10, 0.0);
    EXPECT_NEAR(mapfit_fit_autocorrelation_goal_function(x), own, 1e-12);
    x[1] += 1e-3;  // the row sum and the stationary vector move, and pay 1e6 each
    EXPECT_GT(mapfit_fit_autocorrelation_goal_function(x), 1e3);
    EXPECT_EQ(failureOf([&] { mapfit_fit_autocorrelation_goal_function({1, 2}); }),
              "mepfit: Invalid number of variables for MAP fitting.");
    delete mapfit_fit_autocorrelation_cph;
    mapfit_fit_autocorrelation_cph = nullptr;
    mapfit_fit_autocorrelation_weights.clear();
    mapfit_fit_autocorrelation_autocorr_trace.clear();
    EXPECT_EQ(failureOf([&] { mapfit_fit_autocorrelation_goal_function(x); }), "mepfit: No MAP fit in progress.");
}

TEST(MapFit, BadInputIsRefused) {
    const Matrix T = knownD0();
    const Vector tau = embeddedTau();
    const std::string badT = "mepfit: Invalid sub-generator matrix T for MAP fitting.";
    const std::string badTau = "mepfit: Invalid initial distribution tau for MAP fitting.";
    const struct { Matrix T; Vector tau; std::vector<double> ac, w; std::string failure; } cases[] = {
        {T, tau, {0.1, 0.2}, {1}, "mepfit: Different dimensions for weights and lags."},
        {T, tau, {0.1, 0.2}, {1, -1}, "mepfit: Invalid weights for MAP fitting."},
        {T, tau, {0.1, std::nan("")}, {1, 1}, "mepfit: Invalid autocorrelations for MAP fitting."},
        {Matrix({{1, 0}, {0, -1}}), Vector({0.5, 0.5}, true), {}, {}, badT},
        {Matrix({{-1, 2}, {0, -1}}), Vector({0.5, 0.5}, true), {}, {}, badT},
        {Matrix({{-1, std::nan("")}, {0, -1}}), Vector({0.5, 0.5}, true), {}, {}, badT},
        {Matrix({{-1, 1}, {1, -1}}), Vector({0.5, 0.5}, true), {}, {}, "misc_linalg: Singular matrix."},
        {T, Vector({0.5, 0.5, 0.5, -0.5}, true), {}, {}, badTau},
        {T, Vector({0.3, 0.3, 0.3, 0.3}, true), {}, {}, badTau},
        {T, Vector({0.5, 0.5}, true), {}, {}, badTau},
    };
    // A 26-phase Erlang: a search over 676 entries that would run for minutes.
    Matrix erlang(26, 26);
    for (unsigned i = 0; i < 26; ++i) {
        erlang(i, i) = -1;
        if (i + 1 < 26) erlang(i, i + 1) = 1;
    }
    std::vector<double> first(26, 0.0);
    first[0] = 1;
    EXPECT_EQ(failureOf([&] { mapfit::mapfit_fit_autocorrelation(erlang, Vector(first, true), {0.1}); }),
              "mepfit: The MAP fit takes marginals of at most 25 phases; this one has 26.");
    for (const auto& k : cases) {
        EXPECT_EQ(failureOf([&] { mapfit::mapfit_fit_autocorrelation(k.T, k.tau, k.ac, k.w); }), k.failure);
        EXPECT_EQ(mapfit_fit_autocorrelation_cph, nullptr);
    }
    EXPECT_EQ(failureOf([&] { delete mapfit::mapfit_construct_matrix_nm(T, tau, Matrix(3, 3)); }),
              "mepfit: Invalid matrix D1 for MAP fitting.");
}
