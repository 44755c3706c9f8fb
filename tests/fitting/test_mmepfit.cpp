// MMAP fitting: moment matrices of known reduced moments, e H^i 1 = r_i for
// random phase-type distributions, the sign test, the fit of a two-class
// trace of a known MMAP(2), and bad input.
#include <random>

#include "fitting/mmepfit.h"
#include "fitting_helpers.h"
#include "markov/mep_structs.h"
#include "numerics/misc_linalg.h"
#include "numerics/misc_math.h"
#include "numerics/misc_util.h"
#include "numerics/random.h"
#include "traces/trace_mc.h"

using namespace velmora;
using namespace velmora::mmapfit;
using velmora_test::messageOf;

namespace {

// Intervals of an MMAP (D0, D1, D2, ...) of classes "c1", "c2", ... from
// phase 0: an exponential sojourn, then one uniform draw picks the next
// transition among the row's rates, those of D0 (diagonal left out) first.
MCTrace simulate(unsigned count, unsigned long seed) {
    const std::vector<Matrix> D = {Matrix({{-3, 1}, {0.5, -1}}), Matrix({{1.2, 0.3}, {0.1, 0.2}}),
                                   Matrix({{0.3, 0.2}, {0.05, 0.15}})};
    Rand rng(seed);
    MCTrace trace;
    unsigned phase = 0;
    double interval = 0;
    while (trace.getSize() < count) {
        interval += rng.exponential(-D[0][phase][phase]);
        auto rate = [&](std::size_t i) { return i == phase ? 0.0 : D[i / 2][phase][i % 2]; };
        const double u = -D[0][phase][phase] * rng.drawRandomNumber();
        const std::size_t pick = std::min<std::size_t>(first_index_reaching(rate, 6, u), 5);
        phase = pick % 2;
        if (pick >= 2) {
            trace.addElement({interval, "c" + std::to_string(pick / 2)});
            interval = 0;
        }
    }
    return trace;
}

// a! pi M^(a+1) D_k 1, M = (-D0)^-1 and pi stationary after an event: the
// moment of order a of the intervals that end in class k.
double classMoment(const std::vector<Matrix>& D, std::size_t k, unsigned a) {
    const Matrix M = (-D[0]) ^ -1;
    const Matrix pi = compute_steady_state_probability_vector(M * (D[1] + D[2]), true);
    return fac(a) * (pi * (M ^ static_cast<int>(a + 1)) * D[k] * Matrix(2, 1, MATRIX_ONES))(0, 0);
}

}  // namespace

TEST(MMAPFit, ReducedMomentsGiveTheirMomentMatrices) {
    // Exponential, Erlang(2) and a two-phase distribution, all of mean 1.
    struct Case { std::vector<double> r; Matrix R, H; double tol; } cases[] = {
        {{1, 1, 1, 1}, Matrix({{1}}), Matrix({{1}}), 0},
        {{1, 1, 0.75, 0.5}, Matrix({{1, 1}, {-0.25, 0}}), Matrix({{0, 1}, {-0.25, 1}}), 0},
        {{1, 0.6, 7.0 / 15, 19.0 / 45}, Matrix({{0.6, 0.6}, {8.0 / 45, 11.0 / 15}}),
         Matrix({{0, 0.6}, {-5.0 / 9, 4.0 / 3}}), 1e-15},
    };
    for (const Case& c : cases) {
        const Matrix R = map_solve_mrp(Matrix(c.r, MATRIX_ROW));
        velmora_test::expectNear(R, c.R, c.tol, "R");
        velmora_test::expectNear(map_mrp_similarity_transform(R), c.H, c.tol, "H");
    }

    // Random phase-type (alpha, T) of order n: from its moments of orders up
    // to 2n - 1, e H^i 1 gives back r_i, and row i of A sums to moment i.
    std::mt19937 gen(3);
    std::uniform_real_distribution<double> U(0.1, 2.0);
    for (unsigned n = 1; n <= 4; ++n) {
        Matrix T(n, n), alpha(1, n);
        for (unsigned i = 0; i < n; ++i) {
            alpha(0u, i) = U(gen);
            T(i, i) = -U(gen);
            for (unsigned j = 0; j < n; ++j)
                if (j != i) T(i, i) -= (T(i, j) = U(gen));
        }
        const Matrix M = (-T) ^ -1, ones(n, 1, MATRIX_ONES);
        std::vector<double> m;
        for (unsigned i = 0; i < 2 * n; ++i)
            m.push_back(fac(i) * (alpha / alpha.getSum() * (M ^ int(i)) * ones)(0, 0));
        const std::vector<Matrix> mmep = moments_to_mmep(m, {});
        ASSERT_EQ(mmep[0].getNumberRows(), n);
        for (unsigned i = 0; i < 2 * n; ++i)
            EXPECT_NEAR(((mmep[0] ^ int(i)) * ones)(0, 0), m[i] / fac(i), 1e-10 * m[i]) << n << ", order " << i;
        for (unsigned i = 0; i < n; ++i) EXPECT_NEAR(mmep[1].getRowSum(i), m[i], 1e-10 * m[i]) << "A row " << i;
    }
}

TEST(MMAPFit, SignTestSeesOnlyRoundedSigns) {
    // With A = B = Q = I the test sees D0 = (-H)^-1 and D1 = (-D0) J.
    const Matrix I(2, 2, MATRIX_IDENTITY);
    struct Case { Matrix H, J; bool valid; } cases[] = {
        {I, Matrix({{0.5, -1e-16}, {0, 1}}), true},                      // rounding below 1e-15 is removed
        {I, Matrix({{0.5, -1e-3}, {0, 1}}), false},                      // a negative event rate
        {Matrix({{-2, -1}, {-1, 0}}), Matrix({{-1, 0}, {0, 0}}), true},  // D0 = [[0, 1], [1, -2]]
        {Matrix({{1, -0.5}, {0, 1}}), Matrix(2, 2), false},              // D0 with a negative rate
    };
    for (const Case& c : cases) EXPECT_EQ(valid_mmap({c.H, I, I, c.J, I}), c.valid);
    EXPECT_EQ(messageOf([&] { valid_mmap({I, I, I}); }, "mmepfit"), "An MMEP list with Q needs H, A, B and Q.");

    // Order 1, mean 2: D0 = [-1/2], and each class the rate of its share.
    std::unique_ptr<MMAP> fit(moments_matching({{"ALL", {1, 2}}}, {{"ALL", {{1}}}, {"a", {{0.4}}}, {"b", {{0.6}}}}));
    EXPECT_EQ(fit->matrices, std::vector<Matrix>({Matrix({{-0.5}}), Matrix({{0.2}}), Matrix({{0.3}})}));
}

TEST(MMAPFit, TwoClassTraceOfKnownMMAPFitsWithItsClassMoments) {
    const std::string path = velmora_test::tempPath("mmap2.txt");
    simulate(20000, 11).save(path);
    MCTrace trace(path, false);
    ASSERT_EQ(trace.getSize(), 20000u);
    const double penalty = mmep_to_mmap_nm_goalfunc_r;  // grows tenfold per round, across fits
    std::unique_ptr<MMAP> fit(moments_matching(&trace, 2));
    EXPECT_GE(mmep_to_mmap_nm_goalfunc_r, 10 * penalty);
    ASSERT_EQ(fit->matrices.size(), 3u);
    for (std::size_t k = 0; k < 3; ++k) {
        Matrix D = fit->matrices[k];
        D.eliminateSmallValues(1e-15);  // what the fitter's own sign test removes
        for (unsigned i = 0; i < 2; ++i)
            for (unsigned j = 0; j < 2; ++j) EXPECT_TRUE(k == 0 && i == j ? D(i, j) <= 0 : D(i, j) >= 0) << k;
    }
    auto moments = trace.getMoments(3);
    for (unsigned a = 0; a < 2; ++a)
        for (std::size_t k = 1; k <= 2; ++k) {
            const double wanted = moments["c" + std::to_string(k)][a];
            EXPECT_NEAR(classMoment(fit->matrices, k, a), wanted, 1e-3 * wanted) << "class " << k << ", order " << a;
        }
    fit->save(path, FORMAT_XML);
    const std::string text = velmora_test::readFile(path);
    EXPECT_EQ(text.substr(0, 56), "<?xml version=\"1.0\"?>\n<velmora>\n<map>\n<states>2</states>");
    EXPECT_TRUE(text.find("</d2>") != std::string::npos && text.find("<d3>") == std::string::npos);
}

TEST(MMAPFit, BadInputIsRefusedOrStaysHarmless) {
    MCTrace one, two;
    one.addElement({1.0, "a"});
    two = one;
    two.addElement({2.0, "b"});
    EXPECT_EQ(messageOf([&] { moments_matching(&two, 0); }, "mmepfit"), "Invalid order for MMAP fitting (1 to 6).");
    EXPECT_EQ(messageOf([&] { moments_matching(&one, 2); }, "trace_mc"),
              "Joint moments need at least two trace elements.");
    EXPECT_EQ(messageOf([&] { moments_matching(&two, 2); }, "mmepfit"), "Moments for MMAP fitting must be finite.");
    // A class seen once, as the last element, starts no pair: a zero matrix.
    MCTrace trace = simulate(5000, 5);
    trace.addElement({1.0, "once"});
    std::unique_ptr<MMAP> fit(moments_matching(&trace, 2));
    ASSERT_EQ(fit->matrices.size(), 4u);
    EXPECT_EQ(fit->matrices[3], Matrix(2, 2));
}
