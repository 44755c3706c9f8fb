// MMAP fitting: the moment matrices of known reduced moments, the moment
// identity e H^i 1 = r_i for random phase-type distributions, the sign test,
// fits of order 1 and of a two-class trace of a known MMAP(2), and bad input.
#include <cmath>
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
using velmora_test::expectNear;
using velmora_test::messageOf;

namespace {

// Two phases, classes "c1" and "c2", with a mean interval of about 1.06.
std::vector<Matrix> knownMMAP() {
    return {Matrix({{-3, 1}, {0.5, -1}}), Matrix({{1.2, 0.3}, {0.1, 0.2}}), Matrix({{0.3, 0.2}, {0.05, 0.15}})};
}

// Intervals and classes of an MMAP from phase 0: an exponential sojourn, then
// one uniform draw picks the transition among the rates of the row, those of
// D0 (diagonal left out) first.
MCTrace simulate(const std::vector<Matrix>& D, unsigned count, unsigned long seed) {
    Rand rng(seed);
    MCTrace trace;
    const std::size_t n = D[0].getNumberRows(), entries = D.size() * n;
    unsigned phase = 0;
    double interval = 0;
    while (trace.getSize() < count) {
        const double rate = -D[0][phase][phase];
        interval += rng.exponential(rate);
        auto entry = [&](std::size_t i) { return i == phase ? 0.0 : D[i / n][phase][i % n]; };
        const std::size_t pick = std::min(first_index_reaching(entry, entries, rng.drawRandomNumber() * rate), entries - 1);
        phase = static_cast<unsigned>(pick % n);
        if (pick >= n) {
            trace.addElement({interval, "c" + std::to_string(pick / n)});
            interval = 0;
        }
    }
    return trace;
}

// a! pi M^(a+1) D_k 1, with M = (-D0)^-1 and pi the stationary vector after an
// event: the moment of order a of the intervals that end in class k.
double classMoment(const std::vector<Matrix>& D, std::size_t k, unsigned a) {
    const unsigned n = D[0].getNumberRows();
    const Matrix M = (-D[0]) ^ -1;
    Matrix events(n, n);
    for (std::size_t c = 1; c < D.size(); ++c) events = events + D[c];
    const Matrix pi = compute_steady_state_probability_vector(M * events, true);
    return fac(a) * (pi * (M ^ static_cast<int>(a + 1)) * D[k] * Matrix(n, 1, MATRIX_ONES))(0, 0);
}

// The sign conditions of an MMAP, after the rounding that the fitter's own test removes.
bool markovian(std::vector<Matrix> D) {
    for (std::size_t k = 0; k < D.size(); ++k) {
        D[k].eliminateSmallValues(1e-15);
        for (unsigned i = 0; i < D[k].getNumberRows(); ++i)
            for (unsigned j = 0; j < D[k].getNumberCols(); ++j)
                if (k == 0 && i == j ? D[k](i, j) > 0 : D[k](i, j) < 0) return false;
    }
    return true;
}

}  // namespace

TEST(MMAPFit, ReducedMomentsGiveTheirMomentMatrices) {
    // Exponential, Erlang(2), and a two-phase distribution, all of mean 1.
    struct Case { std::vector<double> r; Matrix R, H; double tol; } cases[] = {
        {{1, 1, 1, 1}, Matrix({{1}}), Matrix({{1}}), 0},
        {{1, 1, 0.75, 0.5}, Matrix({{1, 1}, {-0.25, 0}}), Matrix({{0, 1}, {-0.25, 1}}), 0},
        {{1, 3.0 / 5, 7.0 / 15, 19.0 / 45}, Matrix({{3.0 / 5, 3.0 / 5}, {8.0 / 45, 11.0 / 15}}),
         Matrix({{0, 3.0 / 5}, {-5.0 / 9, 4.0 / 3}}), 1e-15},
    };
    for (const Case& c : cases) {
        const Matrix R = map_solve_mrp(Matrix(c.r, MATRIX_ROW));
        expectNear(R, c.R, c.tol, "R");
        expectNear(map_mrp_similarity_transform(R), c.H, c.tol, "H");
    }
}

TEST(MMAPFit, MomentMatrixReproducesPhaseTypeMoments) {
    // r_i = alpha (-T)^-i 1 of random phase-type distributions of order n;
    // e H^i 1 must give them back up to order 2n - 1.
    std::mt19937 gen(3);
    std::uniform_real_distribution<double> U(0.1, 2.0);
    for (unsigned n = 1; n <= 4; ++n)
        for (int rep = 0; rep < 3; ++rep) {
            Matrix T(n, n), alpha(1, n);
            for (unsigned i = 0; i < n; ++i) {
                alpha(0u, i) = U(gen);
                T(i, i) = -U(gen);
                for (unsigned j = 0; j < n; ++j)
                    if (j != i) T(i, i) -= (T(i, j) = U(gen));
            }
            alpha = alpha / alpha.getSum();
            const Matrix M = (-T) ^ -1, ones(n, 1, MATRIX_ONES);
            std::vector<double> moments;
            for (unsigned i = 0; i < 2 * n; ++i) moments.push_back(fac(i) * (alpha * (M ^ int(i)) * ones)(0, 0));
            const std::vector<Matrix> mmep = moments_to_mmep(moments, {});
            ASSERT_EQ(mmep[0].getNumberRows(), n);
            for (unsigned i = 0; i < 2 * n; ++i) {
                const double r = moments[i] / fac(i);
                EXPECT_NEAR(((mmep[0] ^ int(i)) * ones)(0, 0), r, 1e-10 * r) << "n " << n << " order " << i;
                // Row i of A is i! e H^i, so its sum is the moment itself.
                if (i < n) {
                    EXPECT_NEAR(mmep[1].getRowSum(i), moments[i], 1e-10 * moments[i]) << "A row " << i;
                }
            }
        }
}

TEST(MMAPFit, SignTestSeesOnlyRoundedSigns) {
    // With H = -(-D0)^-1 given and A = B = Q = I, the test sees D0 and D1 = (-D0) J.
    const Matrix I(2, 2, MATRIX_IDENTITY);
    struct Case { Matrix H, J; bool valid; } cases[] = {
        {I, Matrix({{0.5, -1e-16}, {0, 1}}), true},             // rounding below 1e-15 is removed
        {I, Matrix({{0.5, -1e-3}, {0, 1}}), false},             // a negative event rate
        {Matrix({{-2, -1}, {-1, 0}}), Matrix({{-1, 0}, {0, 0}}), true},  // D0 = [[0, 1], [1, -2]]: a zero diagonal
        {Matrix({{1, -0.5}, {0, 1}}), Matrix({{0, 0}, {0, 0}}), false},  // D0 with a negative off-diagonal rate
    };
    for (const Case& c : cases) EXPECT_EQ(valid_mmap({c.H, I, I, c.J, I}), c.valid);
    EXPECT_EQ(messageOf([&] { valid_mmap({I, I, I}); }, "mmepfit"), "An MMEP list with Q needs H, A, B and Q.");
}

TEST(MMAPFit, OrderOneIsTheExponentialWithClassShares) {
    // One phase of mean 2: D0 = [-1/2], and class k gets the rate of its share.
    std::unique_ptr<MMAP> fit(moments_matching({{"ALL", {1, 2}}, {"a", {0.4, 0.8}}},
                                               {{"ALL", {{1}}}, {"a", {{0.4}}}, {"b", {{0.6}}}}));
    ASSERT_EQ(fit->matrices.size(), 3u);
    EXPECT_EQ(fit->matrices[0], Matrix({{-0.5}}));
    EXPECT_NEAR(fit->matrices[1](0, 0), 0.2, 1e-15);
    EXPECT_NEAR(fit->matrices[2](0, 0), 0.3, 1e-15);
}

TEST(MMAPFit, TwoClassTraceOfKnownMMAPFitsWithItsClassMoments) {
    const std::string path = velmora_test::tempPath("mmap2.txt");
    simulate(knownMMAP(), 20000, 11).save(path);
    MCTrace trace(path, false);
    ASSERT_EQ(trace.getSize(), 20000u);

    // The penalty factor grows tenfold per round and carries over between fits.
    const double before = mmep_to_mmap_nm_goalfunc_r;
    std::unique_ptr<MMAP> fit(moments_matching(&trace, 2));
    EXPECT_GE(mmep_to_mmap_nm_goalfunc_r, 10 * before);
    ASSERT_EQ(fit->matrices.size(), 3u);
    EXPECT_TRUE(markovian(fit->matrices));
    auto moments = trace.getMoments(3);
    for (unsigned a = 0; a < 2; ++a)
        for (std::size_t k = 1; k <= 2; ++k) {
            const double wanted = moments["c" + std::to_string(k)][a];
            EXPECT_NEAR(classMoment(fit->matrices, k, a), wanted, 1e-3 * wanted) << "class " << k << " order " << a;
        }
    // The class tables and the moments are sums over slightly different
    // ranges of the trace: the rows of the generator vanish to about 1e-3.
    const Matrix generator = fit->matrices[0] + fit->matrices[1] + fit->matrices[2];
    for (unsigned i = 0; i < 2; ++i) EXPECT_NEAR(generator.getRowSum(i), 0.0, 1e-3 * -generator(i, i)) << "row " << i;

    fit->save(path, FORMAT_XML);
    const std::string text = velmora_test::readFile(path);
    EXPECT_EQ(text.substr(0, 56), "<?xml version=\"1.0\"?>\n<velmora>\n<map>\n<states>2</states>");
    EXPECT_NE(text.find("</d2>"), std::string::npos);
    EXPECT_EQ(text.find("<d3>"), std::string::npos);
}

TEST(MMAPFit, BadInputIsRefusedOrStaysHarmless) {
    MCTrace one, two;
    one.addElement({1.0, "a"});
    two = one;
    two.addElement({2.0, "b"});
    EXPECT_EQ(messageOf([&] { moments_matching(&two, 0); }, "mmepfit"), "Invalid order for MMAP fitting (1 to 6).");
    EXPECT_EQ(messageOf([&] { moments_matching(&one, 2); }, "trace_mc"), "Joint moments need at least two trace elements.");
    EXPECT_EQ(messageOf([&] { moments_matching(&two, 2); }, "mmepfit"), "Moments for MMAP fitting must be finite.");
    EXPECT_EQ(messageOf([&] { moments_matching({{"a", {1, 2}}}, {}); }, "mmepfit"), "No moments under ALL for MMAP fitting.");
    EXPECT_EQ(messageOf([&] { moments_to_mmep({1, 1, 0.75, 0.5}, {{"a", {{1}}}}); }, "mmepfit"),
              "Joint moments of class a don't match the order of the moments.");

    // A class seen once, as the last element, starts no pair: its event
    // matrix is zero, and the other classes fit as before.
    MCTrace trace = simulate(knownMMAP(), 5000, 5);
    trace.addElement({1.0, "once"});
    std::unique_ptr<MMAP> fit(moments_matching(&trace, 2));
    ASSERT_EQ(fit->matrices.size(), 4u);
    EXPECT_EQ(fit->matrices[3], Matrix(2, 2));
}
