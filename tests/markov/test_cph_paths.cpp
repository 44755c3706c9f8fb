// Paths and series canonical form of acyclic phase-type distributions: the
// worked examples by hand, moments kept by the canonical form on random
// chains, and the refusals.
#include "distributions/dist_hypoexponential.h"
#include "markov/cph.h"
#include "markov_helpers.h"
#include "numerics/random.h"

using namespace velmora;
using namespace markov_test;

namespace {

struct Path { double p; std::vector<double> rates; };

std::vector<Path> pathsOf(const CPH& c) {
    cph_path_list list = c.generatePaths();
    std::vector<Path> result;
    for (auto& entry : list) result.push_back({entry.first, entry.second->getRates()});
    delete_paths(list);
    return result;
}

// Upper triangular chain of order n with random rates, random jumps to later
// phases on about half of the entries, and a random start vector. Rates are
// multiples of 1/64, so that the row sums close exactly.
CPH randomAcyclic(Rand& rng, unsigned n) {
    auto rate = [&rng] { return std::ceil(rng.uniform(0.1, 3) * 64) / 64; };
    Matrix T(n, n);
    Vector tau(n, true);
    double sum = 0;
    for (unsigned i = 0; i < n; i++) {
        double out = 0;
        for (unsigned j = i + 1; j < n; j++)
            if (rng.uniform(0, 1) < 0.5) out += T(i, j) = rate();
        T(i, i) = -(out + (i + 1 == n || rng.uniform(0, 1) < 0.7 ? rate() : 0));
        if (out == 0 && T(i, i) == 0) T(i, i) = -1;
        sum += tau[i] = rng.uniform(0, 1);
    }
    for (unsigned i = 0; i < n; i++) tau[i] /= sum;
    return CPH(T, tau);
}

}  // namespace

// The examples worked by hand: probabilities and rate lists in mean order.
TEST(CPHPaths, WorkedExamplesInAscendingMean) {
    struct Case { const char* name; Matrix T; Vector tau; std::vector<Path> expected; } cases[] = {
        {"exponential", mat({{-2}}), row({1}), {{1, {2}}}},
        {"two-stage series", mat({{-1, 1}, {0, -2}}), row({1, 0}), {{1, {1, 2}}}},
        {"exit or continue", mat({{-3, 1}, {0, -2}}), row({1, 0}), {{2.0 / 3, {3}}, {1.0 / 3, {3, 2}}}},
        {"hyperexponential", mat({{-1, 0}, {0, -2}}), row({0.5, 0.5}), {{0.5, {2}}, {0.5, {1}}}},
        // Lower triangular: phase 1 jumps back to phase 0.
        {"lower triangular", mat({{-1, 0}, {3, -4}}), row({0, 1}), {{0.25, {4}}, {0.75, {4, 1}}}},
        // Depth-first, and the stop at phase 0 after the ways through 1 and 2.
        {"dense order 3", mat({{-4, 1, 2}, {0, -2, 1}, {0, 0, -1}}), row({1, 0, 0}),
         {{0.25, {4}}, {0.125, {4, 2}}, {0.5, {4, 1}}, {0.125, {4, 2, 1}}}},
    };
    for (const Case& c : cases) {
        std::vector<Path> got = pathsOf(CPH(c.T, c.tau));
        ASSERT_EQ(got.size(), c.expected.size()) << c.name;
        for (size_t k = 0; k < got.size(); k++) {
            EXPECT_NEAR(got[k].p, c.expected[k].p, 1e-15) << c.name << " path " << k;
            EXPECT_EQ(got[k].rates, c.expected[k].rates) << c.name << " path " << k;
        }
    }
    // getElementarySeries hands the same paths out as distributions.
    std::vector<std::pair<double, Dist*>> series = CPH(mat({{-3, 1}, {0, -2}}), row({1, 0})).getElementarySeries();
    ASSERT_EQ(series.size(), 2u);
    EXPECT_EQ(series[1].second->getProperties(0).mean, 1.0 / 3 + 0.5);
    for (auto& s : series) delete s.second;
}

TEST(CPHPaths, CanonicalFormOfTheWorkedExamples) {
    CPH hyper(mat({{-1, 0}, {0, -2}}), row({0.5, 0.5}));
    CPH cf = hyper.seriesCanonicalForm();
    EXPECT_EQ(cf.getT(), mat({{-1, 1}, {0, -2}}));
    EXPECT_EQ(cf.getTau(), row({0.25, 0.75}));
    EXPECT_TRUE(cf.hasSeriesCF());
    CPH exponential(mat({{-2}}), row({1}));
    EXPECT_EQ(exponential.seriesCanonicalForm().getT(), exponential.getT());
    EXPECT_EQ(exponential.seriesCanonicalForm().getTau(), exponential.getTau());
    // Equal rates need no split: the one-stage path enters at phase 1.
    CPH equal(mat({{-1, 0}, {0, -1}}), row({0.5, 0.5}));
    EXPECT_EQ(equal.seriesCanonicalForm().getTau(), row({0, 1}));
    // A series form with falling rates comes back with its phases ascending.
    CPH falling(mat({{-1, 1}, {0, -0.5}}), row({1, 0}));
    EXPECT_TRUE(falling.hasSeriesCF());
    EXPECT_EQ(falling.seriesCanonicalForm().getT(), mat({{-0.5, 0.5}, {0, -1}}));
}

// The canonical form is the same distribution: its moments 1..5 agree with
// those of the source to 1e-12 relative, on 200 random chains of order 1..6.
TEST(CPHPaths, CanonicalFormKeepsTheMoments) {
    Rand rng(2024);
    for (unsigned k = 0; k < 200; k++) {
        CPH c = randomAcyclic(rng, 1 + k % 6);
        ASSERT_TRUE(c.isAcyclic()) << k;
        CPH cf = c.seriesCanonicalForm();
        EXPECT_TRUE(cf.hasSeriesCF()) << k;
        EXPECT_EQ(cf.getOrder(), c.getOrder());
        std::vector<double> expected = c.getMoments(1, 5), got = cf.getMoments(1, 5);
        for (unsigned i = 0; i < 5; i++) EXPECT_NEAR(got[i], expected[i], 1e-12 * expected[i]) << k << " moment " << i + 1;
    }
}

TEST(CPHPaths, RefusalsAndThePathLimit) {
    // A tau entry of 0 adds no path; a phase without exit or successor none.
    EXPECT_EQ(pathsOf(CPH(mat({{-1, 0}, {0, -2}}), row({1, 0}))).size(), 1u);
    EXPECT_TRUE(pathsOf(CPH(mat({{0}}), row({1}))).empty());

    CPH cyclic(mat({{-1, 1}, {1, -2}}), row({1, 0}));
    EXPECT_TRUE(cyclic.hasSeriesCF());  // the last row is not examined
    EXPECT_EQ(failureOf([&] { cyclic.generatePaths(); }), "cph: Acyclic Phase-type distribution expected.");
    EXPECT_EQ(failureOf([&] { cyclic.seriesCanonicalForm(); }),
              "cph: Only acyclic PHs can be transformed into canonical form!");
    CPH invalid(mat({{-1}}), row({0.5}));
    EXPECT_EQ(failureOf([&] { invalid.getElementarySeries(); }), "cph: Acyclic Phase-type distribution expected.");
    CPH longTau(mat({{-1}}), row({0.5, 0.5}));
    EXPECT_EQ(failureOf([&] { longTau.generatePaths(); }), "cph: Acyclic Phase-type distribution expected.");

    // Dense order 20 would have 2^20 - 1 paths.
    const unsigned n = 20;
    Matrix T(n, n);
    for (unsigned i = 0; i < n; i++) {
        T(i, i) = -double(n - i);
        for (unsigned j = i + 1; j < n; j++) T(i, j) = 1;
    }
    Vector tau(n, true);
    tau[0] = 1;
    const std::string limit = "cph: Acyclic phase-type distribution has more than 65535 paths.";
    EXPECT_EQ(failureOf([&] { CPH(T, tau).generatePaths(); }), limit);
    EXPECT_EQ(failureOf([&] { CPH(T, tau).seriesCanonicalForm(); }), limit);
}
