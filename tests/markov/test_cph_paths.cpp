// Paths and series canonical form of acyclic phase-type distributions: the
// examples worked by hand, moments kept by the canonical form on random
// chains, and the refusals.
#include "distributions/dist_hypoexponential.h"
#include "markov/cph.h"
#include "markov_helpers.h"
#include "numerics/random.h"

using namespace velmora;
using namespace markov_test;

namespace {

using Paths = std::vector<std::pair<double, std::vector<double>>>;

Paths pathsOf(const CPH& c) {
    cph_path_list list = c.generatePaths();
    Paths result;
    for (auto& entry : list) result.emplace_back(entry.first, entry.second->getRates());
    delete_paths(list);
    return result;
}

}  // namespace

// Probabilities and rate lists, in mean order (selection by exchange).
TEST(CPHPaths, WorkedExamplesInAscendingMean) {
    struct Case { const char* name; Matrix T; Vector tau; Paths expected; } cases[] = {
        {"exponential", mat({{-2}}), row({1}), {{1, {2}}}},
        {"two-stage series", mat({{-1, 1}, {0, -2}}), row({1, 0}), {{1, {1, 2}}}},
        {"exit or continue", mat({{-3, 1}, {0, -2}}), row({1, 0}), {{2.0 / 3, {3}}, {1.0 / 3, {3, 2}}}},
        {"hyperexponential", mat({{-1, 0}, {0, -2}}), row({0.5, 0.5}), {{0.5, {2}}, {0.5, {1}}}},
        {"lower triangular", mat({{-1, 0}, {3, -4}}), row({0, 1}), {{0.25, {4}}, {0.75, {4, 1}}}},
        // Found depth-first as (4,2,1), (4,2), (4,1), (4); the exchanges order them so.
        {"dense order 3", mat({{-4, 1, 2}, {0, -2, 1}, {0, 0, -1}}), row({1, 0, 0}),
         {{0.25, {4}}, {0.125, {4, 2}}, {0.5, {4, 1}}, {0.125, {4, 2, 1}}}},
        {"zero start entry", mat({{-1, 0}, {0, -2}}), row({1, 0}), {{1, {1}}}},
        {"no exit", mat({{0}}), row({1}), {}},
    };
    for (const Case& c : cases) {
        Paths got = pathsOf(CPH(c.T, c.tau));
        ASSERT_EQ(got.size(), c.expected.size()) << c.name;
        for (size_t k = 0; k < got.size(); k++) {
            EXPECT_NEAR(got[k].first, c.expected[k].first, 1e-15) << c.name << " path " << k;
            EXPECT_EQ(got[k].second, c.expected[k].second) << c.name << " path " << k;
        }
    }
    std::vector<std::pair<double, Dist*>> series = CPH(mat({{-3, 1}, {0, -2}}), row({1, 0})).getElementarySeries();
    EXPECT_EQ(series[1].second->getProperties(0).mean, 1.0 / 3 + 0.5);
    for (auto& s : series) delete s.second;
}

TEST(CPHPaths, CanonicalFormsWorkedByHand) {
    struct Case { const char* name; Matrix T; Vector tau; Matrix S; Vector v; } cases[] = {
        // (2) enters at phase 1 with 0.5; (1) splits into (2) and (1, 2), 0.25 each.
        {"hyperexponential", mat({{-1, 0}, {0, -2}}), row({0.5, 0.5}), mat({{-1, 1}, {0, -2}}), row({0.25, 0.75})},
        {"exponential", mat({{-2}}), row({1}), mat({{-2}}), row({1})},
        {"equal rates need no split", mat({{-1, 0}, {0, -1}}), row({0.5, 0.5}), mat({{-1, 1}, {0, -1}}), row({0, 1})},
        // In series form already (the last row is not examined), yet its rates fall.
        {"falling series", mat({{-1, 1}, {0, -0.5}}), row({1, 0}), mat({{-0.5, 0.5}, {0, -1}}), row({1, 0})},
    };
    for (const Case& c : cases) {
        CPH cf = CPH(c.T, c.tau).seriesCanonicalForm();
        EXPECT_EQ(cf.getT(), c.S) << c.name;
        EXPECT_EQ(cf.getTau(), c.v) << c.name;
    }
}

// 200 random upper triangular chains of order 1..6, rates multiples of 1/64
// so that the row sums close exactly: moments 1..5 agree to 1e-12 relative.
TEST(CPHPaths, CanonicalFormKeepsTheMoments) {
    Rand rng(2024);
    auto rate = [&rng] { return std::ceil(rng.uniform(0.1, 3) * 64) / 64; };
    for (unsigned k = 0; k < 200; k++) {
        const unsigned n = 1 + k % 6;
        Matrix T(n, n);
        Vector tau(n, true);
        for (unsigned i = 0; i < n; i++) {
            double out = 0;
            for (unsigned j = i + 1; j < n; j++)
                if (rng.uniform(0, 1) < 0.5) out += T(i, j) = rate();
            T(i, i) = -(out + (out == 0 || rng.uniform(0, 1) < 0.7 ? rate() : 0));
            tau[i] = rng.uniform(0, 1);
        }
        tau.normalize();
        CPH c(T, tau), cf = c.seriesCanonicalForm();
        EXPECT_TRUE(cf.hasSeriesCF()) << k;
        std::vector<double> expected = c.getMoments(1, 5), got = cf.getMoments(1, 5);
        for (unsigned i = 0; i < 5; i++)
            EXPECT_NEAR(got[i], expected[i], 1e-12 * expected[i]) << k << " moment " << i + 1;
    }
}

TEST(CPHPaths, RefusalsAndThePathLimit) {
    const std::string paths = "cph: Acyclic Phase-type distribution expected.";
    const std::string form = "cph: Only acyclic PHs can be transformed into canonical form!";
    CPH cyclic(mat({{-1, 1}, {1, -2}}), row({1, 0})), invalid(mat({{-1}}), row({0.5})),
        longTau(mat({{-1}}), row({0.5, 0.5}));
    for (CPH* c : {&cyclic, &invalid, &longTau}) {
        EXPECT_EQ(failureOf([&] { c->getElementarySeries(); }), paths);
        EXPECT_EQ(failureOf([&] { c->seriesCanonicalForm(); }), form);
    }
    // Dense order 20 would have 2^20 - 1 paths.
    Matrix T(20, 20);
    for (unsigned i = 0; i < 20; i++)
        for (unsigned j = i; j < 20; j++) T(i, j) = j == i ? -double(21 - i) : 1;
    Vector tau(20, true);
    tau[0] = 1;
    EXPECT_EQ(failureOf([&] { CPH(T, tau).generatePaths(); }),
              "cph: Acyclic phase-type distribution has more than 4095 paths.");
}
