// MAP: validity, the likelihood against closed forms and an independent
// computation, the distribution curves, the order of random draws of the
// generator, the statistics of a long generated stream, and the renewal MAP
// of a phase-type distribution.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "core/libvelmora_settings.h"
#include "markov/cph.h"
#include "markov/maps.h"
#include "numerics/matrix.h"
#include "numerics/random.h"
#include "traces/trace.h"

using namespace velmora;

namespace {

std::string mapMessage(const std::function<void()>& action) {
    try {
        action();
    } catch (Exception& e) {
        EXPECT_EQ(e.file, "maps") << e.message;
        return e.message;
    }
    return "(no exception)";
}

Matrix rows(std::vector<std::vector<double>> data) { return Matrix(std::move(data)); }

// Erlang with two stages of rate 1 as a MAP: both phases are passed in every interval.
MAP erlangTwo() { return MAP(rows({{-1, 1}, {0, -1}}), rows({{0, 0}, {1, 0}})); }

}  // namespace

TEST(MAP, ValidityFollowsSignsShapesAndRowSums) {
    MAP map = erlangTwo();
    EXPECT_TRUE(map.valid_map());
    struct Case {
        Matrix d0, d1;
        bool valid;
        const char* what;
    } cases[] = {
        {rows({{-2}}), rows({{2}}), true, "one phase"},
        {rows({{-2, 1}, {0, -1}}), rows({{1, 1e-6}, {1, 0}}), false, "row fails to close by 1e-6"},
        {rows({{-2, 1}, {0, -1}}), rows({{1, 1e-8}, {1, 0}}), true, "row fails to close by 1e-8"},
        {rows({{1, -1}, {0, -1}}), rows({{0, 0}, {1, 0}}), false, "positive diagonal"},
        {rows({{-1, -1}, {0, -1}}), rows({{2, 0}, {1, 0}}), false, "negative off-diagonal of D0"},
        {rows({{-1, 0}, {0, -1}}), rows({{2, -1}, {1, 0}}), false, "negative entry of D1"},
        {rows({{-1, 1}, {0, -1}}), rows({{0}}), false, "shapes differ"},
        {rows({{-1, 1}}), rows({{0, 0}}), false, "not square"},
        {Matrix(), Matrix(), false, "empty"},
        {rows({{-1, 0}, {0, -1}}), rows({{1, 0}, {NAN, 0}}), false, "row of NaN"},
    };
    for (const Case& c : cases) EXPECT_EQ(map.valid_map(c.d0, c.d1), c.valid) << c.what;
    EXPECT_TRUE(map.valid_map(rows({{-1, 1}, {0, -1}})));
    EXPECT_FALSE(map.valid_map(rows({{-1, 2}, {0, -1}})));

    Matrix Q = map.get_generator_matrix();
    EXPECT_EQ(Q, rows({{-1, 1}, {1, -1}}));
    MAP invalid(rows({{-1}}), rows({{2}}));
    EXPECT_EQ(mapMessage([&] { invalid.get_generator_matrix(); }), "Not a valid MAP!");
}

TEST(MAP, LikelihoodOfOnePhaseProcessIsClosedForm) {
    MAP map(rows({{-2}}), rows({{2}}));
    const std::vector<double> xs = {0.3, 1.7, 0.05, 2.4, 0.9, 0.0, 3.3, 0.6, 12.0};
    Trace trace(xs);
    double sum = 0;
    for (double x : xs) sum += x;
    double expected = xs.size() * std::log(2.0) - 2 * sum;
    EXPECT_NEAR(map.computeLikelihood(&trace), expected, 1e-9 * std::fabs(expected));

    Trace empty;
    EXPECT_NEAR(map.computeLikelihood(&empty), 0.0, 1e-15);
}

// Reference: numpy/scipy on the same matrices, the forward recursion
// a <- a expm(D0 x) D1 with scipy.linalg.expm, rescaled at each step, and pi
// from the eigenvector of P^T.
TEST(MAP, LikelihoodOfOrderThreeAgreesWithIndependentComputation) {
    MAP map(rows({{-3.0, 1.0, 0.5}, {0.2, -1.5, 0.3}, {0.1, 0.4, -0.8}}),
            rows({{1.2, 0.2, 0.1}, {0.1, 0.8, 0.1}, {0.0, 0.1, 0.2}}));
    Trace trace({0.3, 1.7, 0.05, 2.4, 0.9, 0.0, 3.3, 0.6});
    EXPECT_NEAR(map.computeLikelihood(&trace), -9.343313236459686, 1e-9 * 9.343313236459686);
}

TEST(MAP, DistributionOfErlangIntervalsOnTheGrid) {
    MAP map = erlangTwo();
    // Closed forms of the Erlang-2 distribution at 1: 1 - 2/e and 1/e.
    EXPECT_NEAR(map.evalCDF(1.0), 0.26424111765711533, 1e-9);
    EXPECT_NEAR(map.evalCCDF(1.0), 1 - 0.26424111765711533, 1e-9);
    EXPECT_NEAR(map.evalPDF(1.0), 0.36787944117144233, 1e-9);
    EXPECT_DOUBLE_EQ(map.evalPDF(0.0), 0.0);
    EXPECT_DOUBLE_EQ(map.evalCDF(0.0), 0.0);

    Distribution d = map.computeDistribution(0, 0.5);
    ASSERT_FALSE(d.cdf.empty());
    EXPECT_EQ(d.cdf.front().first, 0.0);
    EXPECT_GE(d.cdf.back().first, 0.5);
    EXPECT_EQ(d.pdf.size(), d.ccdf.size());
}

TEST(MAP, SummaryEndsWithASixRowTable) {
    MAP map = erlangTwo();
    std::string summary = map.getSummary();
    const std::string table = "\n\nt\t\tpdf\t\tcdf\n=\t\t===\t\t===\n";
    std::size_t at = summary.find(table);
    ASSERT_NE(at, std::string::npos);
    EXPECT_EQ(summary.substr(0, 9), "Summary:\n");
    std::string rowsText = summary.substr(at + table.size());
    EXPECT_EQ(rowsText.substr(0, 33), "0.00000\t\t0.00000\t\t0.00000\n0.20000");
    EXPECT_NE(rowsText.find("\n1.00000\t\t0.36788\t\t0.26424\n"), std::string::npos);
    unsigned lines = 0;
    for (char ch : rowsText) lines += ch == '\n';
    EXPECT_EQ(lines, 6u);
    EXPECT_EQ(map.getProcessDescription(), "MAP(2)");
    EXPECT_EQ(map.toString(FORMAT_CONFIG).substr(0, 12), "model = map\n");
}

TEST(MAP, GenerationNeedsInitialisation) {
    MAP map = erlangTwo();
    EXPECT_EQ(mapMessage([&] { map.getNextRandomVariate(); }), "Initialize Random Number Generation first.");
    // A copy has no stream of its own until it is initialised.
    map.initRandomNumberGeneration(3);
    MAP copy(map);
    EXPECT_EQ(mapMessage([&] { copy.getNextRandomVariate(); }), "Initialize Random Number Generation first.");
}

// The stream is: one uniform for the start phase, then per step one
// exponential of the phase's rate and one uniform for the jump, and the jumps
// without an event come first.
TEST(MAP, GeneratorDrawsInTheDescribedOrder) {
    MAP single(rows({{-2}}), rows({{2}}));
    single.initRandomNumberGeneration(11);
    Rand reference(11);
    reference.uniform(0, 1);
    for (int i = 0; i < 5; i++) {
        double x = reference.exponential(2);
        reference.uniform(0, 1);
        EXPECT_EQ(single.getNextRandomVariate(), x);
    }

    MAP erlang = erlangTwo();
    erlang.initRandomNumberGeneration(5);
    Rand stages(5);
    stages.uniform(0, 1);
    for (int i = 0; i < 5; i++) {
        double x = stages.exponential(1);
        stages.uniform(0, 1);
        x += stages.exponential(1);
        stages.uniform(0, 1);
        EXPECT_EQ(erlang.getNextRandomVariate(), x);
    }

    // Phase 0 jumps without an event to phase 1 with probability 3/4, with an
    // event to phase 0 otherwise; phase 1 always ends the interval in phase 0.
    MAP branching(rows({{-4, 3}, {0, -1}}), rows({{1, 0}, {1, 0}}));
    branching.initRandomNumberGeneration(9);
    Rand walk(9);
    walk.uniform(0, 1);  // pi = (1, 0): the start phase is 0
    for (int i = 0; i < 20; i++) {
        double x = walk.exponential(4);
        if (walk.uniform(0, 1) <= 0.75) {
            x += walk.exponential(1);
            walk.uniform(0, 1);
        }
        EXPECT_EQ(branching.getNextRandomVariate(), x);
    }

    // pi = (0.5, 0.5): the first uniform picks the start phase, and the two
    // phases differ in their rates. An event leads to phase 0 up to 1/2 and to
    // phase 1 above; the jumps without an event have probability 0.
    const double rates[2] = {1, 5};
    for (unsigned seed = 1; seed <= 8; seed++) {
        MAP twoPhases(rows({{-1, 0}, {0, -5}}), rows({{0.5, 0.5}, {2.5, 2.5}}));
        twoPhases.initRandomNumberGeneration(seed);
        Rand r(seed);
        unsigned s = r.uniform(0, 1) <= 0.5 ? 0 : 1;
        for (int i = 0; i < 10; i++) {
            double x = 0;
            while (true) {
                x += r.exponential(rates[s]);
                double v = r.uniform(0, 1);
                if (v <= 0) {
                    s = 1 - s;
                    continue;
                }
                s = v <= 0.5 ? 0 : 1;
                break;
            }
            EXPECT_EQ(twoPhases.getNextRandomVariate(), x) << "seed " << seed << ", interval " << i;
        }
    }

    // A new initialisation starts the same stream again.
    single.initRandomNumberGeneration(11);
    Rand again(11);
    again.uniform(0, 1);
    EXPECT_EQ(single.getNextRandomVariate(), again.exponential(2));
}

TEST(MAP, PhaseWithoutAnyEventIsRefusedInsteadOfWalkingForEver) {
    struct Case {
        const char* name;
        Matrix d0, d1;
    } cases[] = {
        // Phases 1 and 2 pass the chain between them and leak, but never
        // give an event: a walk that enters them could not end.
        {"leaking pair", rows({{-2, 0.5, 0}, {0, -1, 0.5}, {0, 0.5, -1}}), rows({{1.5, 0, 0}, {0, 0, 0}, {0, 0, 0}})},
        // Phase 0 has an event entry, but its first jump sum 1.5 takes every
        // draw to phase 1, which always goes back.
        {"event hidden behind a large jump sum", rows({{-1, 1.5}, {1, -1}}), rows({{-0.6, 0.1}, {0, 0}})},
    };
    for (const Case& c : cases) {
        MAP trapped(c.d0, c.d1);
        trapped.initRandomNumberGeneration(1);
        std::string message = mapMessage([&] {
            for (int i = 0; i < 1000; i++) trapped.getNextRandomVariate();
        });
        EXPECT_EQ(message, "No event can be reached from the current phase.") << c.name;
    }
}

// 100000 intervals of the example model: the standard deviations of the
// sample statistics at this length, from 16 independent runs of a separate
// simulation, are about 0.007 (mean), 0.05 (variance) and 0.005
// (autocorrelations); the tolerances are five of them.
TEST(MAP, GeneratedStreamOfExampleMatchesAnalyticStatistics) {
    MAP map(std::string(VELMORA_SOURCE_DIR) + "/examples/map.xml", FORMAT_XML);
    ASSERT_TRUE(map.valid_map());
    std::vector<double> moments = map.getMoments(1, 2);
    std::vector<double> rho = map.getAutocorrelations(1, 5);
    ASSERT_GE(rho[0], 0.1);

    const unsigned N = 100000;
    map.initRandomNumberGeneration(7);
    std::vector<double> x(N);
    double mean = 0;
    for (double& v : x) {
        v = map.getNextRandomVariate();
        mean += v;
    }
    mean /= N;
    double variance = 0;
    for (double v : x) variance += (v - mean) * (v - mean);
    variance /= N;

    EXPECT_NEAR(mean, moments[0], 0.035);
    EXPECT_NEAR(variance, moments[1] - moments[0] * moments[0], 0.25);
    for (unsigned k = 1; k <= 5; k++) {
        double c = 0;
        for (unsigned i = 0; i + k < N; i++) c += (x[i] - mean) * (x[i + k] - mean);
        EXPECT_NEAR(c / N / variance, rho[k - 1], 0.025) << "lag " << k;
    }
}

TEST(CPH, RenewalMAPHasIndependentIntervals) {
    CPH cph(rows({{-1, 0}, {0, -3}}), Vector({0.4, 0.6}, true));
    MAP map = cph.asMAP();
    EXPECT_EQ(map.getD0(), cph.getT());
    Matrix d1 = map.getD1();
    const double expectedD1[2][2] = {{0.4, 0.6}, {1.2, 1.8}};
    for (unsigned i = 0; i < 2; i++)
        for (unsigned j = 0; j < 2; j++) EXPECT_NEAR(d1(i, j), expectedD1[i][j], 1e-15);
    EXPECT_TRUE(map.valid_map());

    std::vector<double> m = cph.getMoments(0, 3);
    Matrix J = cph.getJointMoments(0, 3);
    for (unsigned i = 0; i <= 3; i++)
        for (unsigned j = 0; j <= 3; j++) EXPECT_NEAR(J(i, j), m[i] * m[j], 1e-12 * m[i] * m[j]);

    // Sum of the logarithms of the hyper-exponential density 0.4 e^-x + 1.8 e^-3x.
    Trace trace({0.3, 1.7, 0.05, 2.4, 0.9, 0.0, 3.3, 0.6});
    EXPECT_NEAR(cph.computeLikelihood(&trace), -10.412656076637827, 1e-9 * 10.412656076637827);
}

// The likelihood loop and the tabulation work on raw rows; the same steps
// written with whole-matrix operations must give the same bits.
TEST(MAP, FastLoopsMatchTheMatrixFormulationExactly) {
    const Matrix D0 = rows({{-3.0, 1.0, 0.5}, {0.2, -1.5, 0.3}, {0.1, 0.4, -0.8}});
    const Matrix D1 = rows({{1.2, 0.2, 0.1}, {0.1, 0.8, 0.1}, {0.0, 0.1, 0.2}});
    MAP map(D0, D1);
    const std::vector<double> xs = {0.3, 1.7, 0.05, 2.4, 0.9, 0.0, 3.3, 0.6, 40.0};
    Trace trace(xs);

    const double lambda = D0.getLargestValueAbsDiag();
    Matrix P0 = D0 / lambda + Matrix(3, 3, MATRIX_IDENTITY);
    Matrix P1 = D1 / lambda;
    Matrix a = map.steady_state_vector_embedded_dtmc();
    Matrix b(1, 3), scratch(1, 3);
    double c = 0;
    for (double x : xs) {
        map_ph_randomization(&P0, &a, &scratch, &b, lambda, x, 1e-12);
        double s = b.getSum();
        b = b / s;
        if (s < 2.2250738585072014e-307) s = 2.2250738585072014e-307;
        c += std::log(s);
        a = b * P1;
    }
    double s = a.getSum();
    EXPECT_EQ(map.computeLikelihood(&trace), std::log(s) + c + xs.size() * std::log(lambda));

    Distribution d = map.computeDistribution(0.2, 0.25);
    Matrix pi = map.steady_state_vector_embedded_dtmc();
    Matrix exits = D1.getRowSums();
    Matrix ones(3, 1, MATRIX_ONES);
    Matrix result(1, 3);
    unsigned point = 0;
    for (unsigned i = 0; i <= 250; i++) {
        map_ph_randomization(&P0, &pi, &scratch, &result, lambda, 0.001, 1e-12);
        double ccdf = (result * ones)(0u, 0u);
        pi = result;
        double pdf = (pi * exits)(0u, 0u);
        double x = (i + 1) * 0.001;
        if (0.2 <= x) {
            ASSERT_LT(point, d.cdf.size());
            EXPECT_EQ(d.cdf[point], std::make_pair(x, 1 - ccdf)) << i;
            EXPECT_EQ(d.ccdf[point], std::make_pair(x, ccdf)) << i;
            EXPECT_EQ(d.pdf[point], std::make_pair(x, pdf)) << i;
            point++;
        }
    }
    EXPECT_EQ(point, d.cdf.size());
}
