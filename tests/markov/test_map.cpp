// MAP: validity, likelihood, distribution, the order of the generator's draws, and the renewal MAP of a CPH.
// The statistics of a long generated stream are checked end to end through sylvar.
#include "markov/cph.h"
#include "markov/maps.h"
#include "markov_helpers.h"
#include "numerics/random.h"
#include "traces/trace.h"

using namespace velmora;
using namespace markov_test;

namespace {
// Erlang with two stages of rate 1 as a MAP: both phases are passed in every interval.
MAP erlangTwo() { return MAP(mat({{-1, 1}, {0, -1}}), mat({{0, 0}, {1, 0}})); }

const std::vector<double> INTERVALS = {0.3, 1.7, 0.05, 2.4, 0.9, 0.0, 3.3, 0.6};
}  // namespace

TEST(MAP, ValidityFollowsSignsShapesAndRowSums) {
    MAP map = erlangTwo();
    EXPECT_TRUE(map.valid_map());
    struct Case { Matrix d0, d1; bool valid; const char* what; } cases[] = {
        {mat({{-2}}), mat({{2}}), true, "one phase"},
        {mat({{-2, 1}, {0, -1}}), mat({{1, 1e-6}, {1, 0}}), false, "row fails to close by 1e-6"},
        {mat({{-2, 1}, {0, -1}}), mat({{1, 1e-8}, {1, 0}}), true, "row fails to close by 1e-8"},
        {mat({{1, -1}, {0, -1}}), mat({{0, 0}, {1, 0}}), false, "positive diagonal"},
        {mat({{-1, -1}, {0, -1}}), mat({{2, 0}, {1, 0}}), false, "negative off-diagonal of D0"},
        {mat({{-1, 0}, {0, -1}}), mat({{2, -1}, {1, 0}}), false, "negative entry of D1"},
        {mat({{-1, 1}, {0, -1}}), mat({{0}}), false, "shapes differ"},
        {mat({{-1, 1}}), mat({{0, 0}}), false, "not square"},
        {Matrix(), Matrix(), false, "empty"},
        {mat({{-1, 0}, {0, -1}}), mat({{1, 0}, {NAN, 0}}), false, "row of NaN"},
    };
    for (const Case& c : cases) EXPECT_EQ(map.valid_map(c.d0, c.d1), c.valid) << c.what;
    EXPECT_TRUE(map.valid_map(mat({{-1, 1}, {0, -1}})));
    EXPECT_FALSE(map.valid_map(mat({{-1, 2}, {0, -1}})));
    EXPECT_EQ(map.get_generator_matrix(), mat({{-1, 1}, {1, -1}}));
    MAP invalid(mat({{-1}}), mat({{2}}));
    EXPECT_EQ(failureOf([&] { invalid.get_generator_matrix(); }), "maps: Not a valid MAP!");
}

TEST(MAP, LikelihoodAgreesWithClosedFormAndIndependentComputation) {
    // One phase: K ln 2 - 2 sum(x).
    MAP poisson(mat({{-2}}), mat({{2}}));
    std::vector<double> xs = INTERVALS;
    xs.push_back(12.0);
    Trace trace(xs);
    double sum = 0;
    for (double x : xs) sum += x;
    double expected = xs.size() * std::log(2.0) - 2 * sum;
    EXPECT_NEAR(poisson.computeLikelihood(&trace), expected, 1e-9 * std::fabs(expected));
    Trace empty;
    EXPECT_NEAR(poisson.computeLikelihood(&empty), 0.0, 1e-15);
    // Order 3: numpy/scipy, the forward recursion a <- a expm(D0 x) D1 with scipy.linalg.expm, rescaled at
    // each step, and pi from the eigenvector of P^T.
    MAP map(order3D0(), order3D1());
    Trace eight(INTERVALS);
    EXPECT_NEAR(map.computeLikelihood(&eight), -9.343313236459686, 1e-9 * 9.343313236459686);
}

TEST(MAP, DistributionAndSummaryOfErlangIntervals) {
    MAP map = erlangTwo();
    // Closed forms of the Erlang-2 distribution at 1: 1 - 2/e and 1/e.
    EXPECT_NEAR(map.evalCDF(1.0), 0.26424111765711533, 1e-9);
    EXPECT_NEAR(map.evalPDF(1.0), 0.36787944117144233, 1e-9);
    EXPECT_DOUBLE_EQ(map.evalPDF(0.0), 0.0);
    EXPECT_DOUBLE_EQ(map.evalCDF(0.0), 0.0);
    // The summary ends with a table of six rows: t e^-t and 1 - (1 + t) e^-t.
    // The row of 0.2 + 0.2 + 0.2, a little above 0.6, reads the grid point 0.601.
    const std::string table =
        "\n\nt\t\tpdf\t\tcdf\n=\t\t===\t\t===\n0.00000\t\t0.00000\t\t0.00000\n0.20000\t\t0.16375\t\t0.01752\n"
        "0.40000\t\t0.26813\t\t0.06155\n0.60000\t\t0.32951\t\t0.12223\n0.80000\t\t0.35946\t\t0.19121\n"
        "1.00000\t\t0.36788\t\t0.26424\n";
    std::string summary = map.getSummary();
    EXPECT_EQ(summary.substr(0, 9), "Summary:\n");
    ASSERT_GT(summary.size(), table.size());
    EXPECT_EQ(summary.substr(summary.size() - table.size()), table);
    EXPECT_EQ(map.getProcessDescription(), "MAP(2)");
    EXPECT_EQ(map.toString(FORMAT_CONFIG).substr(0, 12), "model = map\n");
}

// One uniform for the start phase (embedded stationary vector), then per step an exponential of the phase's
// rate and a uniform for the jump, jumps without an event first. Phase 0 goes to phase 1 without an event with
// probability 3/4; phase 1 ends the interval in phase 0 up to 1/2. Seed 1 starts in phase 0, seed 4 in phase 1;
// the values were recorded when checked draw by draw against that order.
TEST(MAP, GeneratorDrawsInTheDescribedOrder) {
    MAP map(mat({{-4, 3}, {0, -1}}), mat({{1, 0}, {0.5, 0.5}}));
    const std::pair<unsigned, std::vector<double>> streams[] = {
        {1, {0.070529406206374864, 0.51464825470627518, 1.285762293249769, 0.63760168659329519}},
        {4, {0.10467024849503492, 1.7562263640902578, 0.15592782209255179, 0.49587855935836145}},
    };
    for (const auto& stream : streams) {
        map.initRandomNumberGeneration(stream.first);
        for (double x : stream.second) EXPECT_EQ(map.getNextRandomVariate(), x) << "seed " << stream.first;
    }
}

TEST(MAP, WalksThatCannotStartOrEndAreRefused) {
    MAP map = erlangTwo();
    EXPECT_EQ(failureOf([&] { map.getNextRandomVariate(); }), "maps: Initialize Random Number Generation first.");
    // A copy has no stream of its own until it is initialised.
    map.initRandomNumberGeneration(3);
    MAP copy(map);
    EXPECT_EQ(failureOf([&] { copy.getNextRandomVariate(); }), "maps: Initialize Random Number Generation first.");
    struct Case { const char* name; Matrix d0, d1; } cases[] = {
        // Phases 1 and 2 pass the chain between them and leak, but never
        // give an event: a walk that enters them could not end.
        {"leaking pair", mat({{-2, 0.5, 0}, {0, -1, 0.5}, {0, 0.5, -1}}), mat({{1.5, 0, 0}, {0, 0, 0}, {0, 0, 0}})},
        // Phase 0 has an event entry, but its first jump sum 1.5 takes every
        // draw to phase 1, which always goes back.
        {"event hidden behind a large jump sum", mat({{-1, 1.5}, {1, -1}}), mat({{-0.6, 0.1}, {0, 0}})},
    };
    for (const Case& c : cases) {
        MAP trapped(c.d0, c.d1);
        trapped.initRandomNumberGeneration(1);
        EXPECT_EQ(failureOf([&] { for (int i = 0; i < 1000; i++) trapped.getNextRandomVariate(); }),
                  "maps: No event can be reached from the current phase.") << c.name;
    }
}

TEST(CPH, RenewalMAPHasIndependentIntervals) {
    CPH cph(mat({{-1, 0}, {0, -3}}), row({0.4, 0.6}));
    MAP map = cph.asMAP();
    EXPECT_EQ(map.getD0(), cph.getT());
    expectRelative(map.getD1(), mat({{0.4, 0.6}, {1.2, 1.8}}), 1e-15, "D1");
    std::vector<double> m = cph.getMoments(0, 3);
    Matrix J = cph.getJointMoments(0, 3);
    for (unsigned i = 0; i <= 3; i++)
        for (unsigned j = 0; j <= 3; j++) EXPECT_NEAR(J(i, j), m[i] * m[j], 1e-12 * m[i] * m[j]);
    // Sum of the logarithms of the hyper-exponential density 0.4 e^-x + 1.8 e^-3x.
    Trace trace(INTERVALS);
    EXPECT_NEAR(cph.computeLikelihood(&trace), -10.412656076637827, 1e-9 * 10.412656076637827);
}
