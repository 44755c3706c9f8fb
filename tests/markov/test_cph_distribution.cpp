// Uniformization, the distribution curves of a CPH on their fixed grid, and the generator walking the chain.
#include "markov/cph.h"
#include "markov_helpers.h"
#include "traces/trace.h"

using namespace velmora;
using namespace markov_test;

TEST(Uniformization, PoissonWeightsAreRelativeToTheMode) {
    // 1 / weightSum is the Poisson probability of the mode trunc(q) and
    // leftWeight / weightSum that of the left limit (scipy.stats.poisson.pmf);
    // the right limit is the smallest R with scipy.stats.poisson.sf(R, q) < 1e-12.
    struct Case { double q; double pmfMode; int left, right; double pmfLeft; } cases[] = {
        {0.5, 0.6065306597126334, 0, 11, 0.6065306597126334},
        {3.7, 0.20872013105035025, 0, 24, 0.024723526470339385},
        // The left weights still count down to 0 beside a sum of about 16.
        {40.0, 0.06294703942359213, 0, 92, 4.248354255291589e-18},
    };
    double W, w;
    int L, R;
    for (const Case& c : cases) {
        map_ph_randomization_params(c.q, 1e-12, &W, &w, &L, &R);
        EXPECT_NEAR(1 / W, c.pmfMode, 1e-12 * c.pmfMode) << c.q;
        EXPECT_EQ(L, c.left) << c.q;
        EXPECT_EQ(R, c.right) << c.q;
        EXPECT_NEAR(w / W, c.pmfLeft, 1e-10 * c.pmfLeft) << c.q;
    }
    for (double q : {-1.0, double(NAN)})
        EXPECT_EQ(failureOf([&] { map_ph_randomization_params(q, 1e-12, &W, &w, &L, &R); }),
                  "cph: Invalid mean for uniformization.");
    // An eps beyond 1 trims down to the first weight and stops there.
    map_ph_randomization_params(3.7, 2.0, &W, &w, &L, &R);
    EXPECT_EQ(R, 0);
}

TEST(Uniformization, StepGivesTheTransientVectorAndZeroMeanCopiesIt) {
    Matrix P = denseT() / 3 + Matrix(3, 3, MATRIX_IDENTITY), v = denseTau().toMatrix(), scratch, result;
    map_ph_randomization(&P, &v, &scratch, &result, 3, 0.37, 1e-12);
    // tau @ scipy.linalg.expm(0.37 * T); v is renormalised, its mass being more than 0.001 away from 1.
    const double expm[] = {0.20522678141133438, 0.24189131697953364, 0.2368315594798442};
    for (unsigned j = 0; j < 3; j++) {
        EXPECT_NEAR(result(0, j), expm[j], 1e-12) << j;
        EXPECT_NEAR(v(0, j), expm[j] / (expm[0] + expm[1] + expm[2]), 1e-12) << j;
    }
    // A zero mean copies the vector: result keeps the mass, w is scaled to 1. Other orders are refused.
    Matrix I2(2, 2, MATRIX_IDENTITY), I3(3, 3, MATRIX_IDENTITY), w = mat({{0.2, 0.3}});
    map_ph_randomization(&I2, &w, &scratch, &result, 0, 5, 1e-12);
    EXPECT_EQ(result, mat({{0.2, 0.3}}));
    expectNear(w, mat({{0.4, 0.6}}), 1e-15, "w");
    EXPECT_EQ(failureOf([&] { map_ph_randomization(&I3, &w, &scratch, &result, 1, 1, 1e-12); }),
              "cph: These Matrices cannot be multiplied.");
    Matrix D0 = mat({{-1, 0}, {0, -2}});
    EXPECT_EQ(failureOf([&] { CPH::computeDistribution(0, 1, D0, mat({{1, 0, 0}}), D0 * -1.0); }),
              "cph: These Matrices cannot be multiplied.");
}

TEST(CPHDistribution, CurvesMatchTheMatrixExponential) {
    // 1 - tau @ expm(x T) @ 1 and tau @ expm(x T) @ (-T 1), by scipy.linalg.expm.
    struct Point { unsigned index; double x, cdf, pdf; } points[] = {
        {0, 0.5, 0.39642030935355077, 0.5742141099472902},
        {500, 1.0, 0.6208015459658728, 0.34779935313402066},
        {2000, 2.5, 0.9039241014823909, 0.08821410789569725},
    };
    CPH c(denseT(), denseTau());
    Distribution d = c.computeDistribution(0.5, 2.5);
    ASSERT_TRUE(d.cdf.size() == 2002u && d.pdf.size() == 2002u && d.ccdf.size() == 2002u);
    for (const Point& p : points) {
        EXPECT_NEAR(d.cdf[p.index].first, p.x, 1e-12);
        EXPECT_NEAR(d.cdf[p.index].second, p.cdf, 1e-9) << p.x;
        EXPECT_NEAR(d.ccdf[p.index].second, 1 - p.cdf, 1e-9) << p.x;
        EXPECT_NEAR(d.pdf[p.index].second, p.pdf, 1e-9) << p.x;
        EXPECT_EQ(d.pdf[p.index].first, d.cdf[p.index].first);
    }
    EXPECT_NEAR(d.cdf.back().first, 2.501, 1e-12);
    EXPECT_NEAR(c.evalCDF(1.0), 0.6208015459658728, 1e-9);
    EXPECT_NEAR(c.evalCCDF(1.0), 1 - 0.6208015459658728, 1e-9);
    EXPECT_NEAR(c.evalPDF(1.0), 0.34779935313402066, 1e-9);
}

TEST(CPHDistribution, GridIsAnchoredAtZero) {
    CPH e(mat({{-1}}), row({1}));
    Distribution zero = e.computeDistribution(0, 0);
    ASSERT_EQ(zero.pdf.size(), 2u);
    EXPECT_EQ(zero.pdf[0], std::make_pair(0.0, 1.0));
    EXPECT_EQ(zero.cdf[0], std::make_pair(0.0, 0.0));
    EXPECT_EQ(zero.ccdf[0], std::make_pair(0.0, 1.0));
    EXPECT_NEAR(zero.cdf[1].first, 0.001, 1e-15);

    Distribution below = e.computeDistribution(-1, 0.5);
    EXPECT_EQ(below.cdf.size(), 502u);
    EXPECT_EQ(below.cdf.front().first, 0.0);
    // A negative upper bound leaves the point at 0 only.
    EXPECT_EQ(e.computeDistribution(-2, -1).cdf.size(), 1u);
    EXPECT_EQ(e.evalCDF(-1), 0.0);

    EXPECT_EQ(failureOf([&] { e.computeDistribution(2, 1); }), "cph: Invalid range for distribution.");
    EXPECT_EQ(failureOf([&] { e.computeDistribution(0, INFINITY); }), "cph: Invalid range for distribution.");
    EXPECT_EQ(failureOf([&] { CPH(mat({{-1, 1}, {1, -1}}), row({1, 0})).computeDistribution(0, 1); }),
              "misc_linalg: Singular matrix.");
    // Mass at zero shows after the first point. D1 is the exit rate times
    // tau, so the density carries the factor 0.7 of tau once more.
    Distribution d = CPH(mat({{-1}}), row({0.7})).computeDistribution(0, 1);
    EXPECT_EQ(d.cdf[0].second, 0.0);
    EXPECT_NEAR(d.pdf[0].second, 0.49, 1e-15);
    EXPECT_NEAR(d.cdf[1000].second, 0.3 + 0.7 * 0.6321205588285577, 1e-9);
}

TEST(CPHGeneration, DrawsFollowTheChainAndMatchItsMoments) {
    // Mass 0.4 at zero: a start draw, then per phase an exponential and a
    // uniform; a variate at zero takes the start draw only. From phase 0 the
    // jump draw picks phase 1 below 1/3, phase 2 below 2/3 and absorption above.
    // At seed 11 that walk gives three zeros, then values through phase 1 and
    // phase 2, then three straight exits (recorded when checked draw by draw).
    CPH b(mat({{-3, 1, 1}, {0, -2, 0}, {0, 0, -5}}), row({0.6, 0, 0}));
    b.initRandomNumberGeneration(11);
    for (double x : {0.0, 0.0, 0.0, 0.41735616647366502, 1.0484078406376303, 0.23957613252865109, 0.7923913560194944,
                     0.10491980757702729})
        EXPECT_EQ(b.getNextRandomVariate(), x);
    // A chain with cycles: standard errors 0.0034 (mean) and 0.0105 (variance) at this length, from the moments.
    CPH c(denseT(), denseTau());
    c.initRandomNumberGeneration(12345);
    std::vector<double> draws(100000);
    for (double& x : draws) x = c.getNextRandomVariate();
    Trace sample(draws);
    EXPECT_NEAR(sample.getMoments(1, 1)[0], 1.045090909090909, 4 * 0.0034);
    EXPECT_NEAR(sample.getVariance(), 1.1676091239669426, 4 * 0.0105);
}

TEST(CPHGeneration, ChainsThatCannotBeWalkedAreRefused) {
    CPH unseeded(denseT(), denseTau());
    EXPECT_EQ(failureOf([&] { unseeded.getNextRandomVariate(); }), "cph: Initialize Random Number Generation first.");
    struct Case { const char* name; Matrix T; Vector tau; const char* failure; } cases[] = {
        {"zero rate", mat({{0, 0}, {0, -1}}), row({1, 0}), "random: Invalid rate for exponential distribution"},
        {"closed cycle", mat({{-1, 1}, {1, -1}}), row({1, 0}),
         "cph: Absorption can't be reached from the current phase."},
        // Row 0 sums to -0.5, yet its jump sums 2 and 0.5 always pick phase 1,
        // and phase 1 always goes back: the exit is never taken.
        {"exit hidden behind a large jump sum", mat({{-1, 2, -1.5}, {1, -1, 0}, {0, 0, -1}}), row({1, 0, 0}),
         "cph: Absorption can't be reached from the current phase."},
        {"T not square", mat({{-1}, {0}}), row({1, 0}), "cph: Invalid matrix dimensions."},
        {"tau longer than the order", mat({{-1}}), row({0, 1}), "cph: Invalid matrix dimensions."},
    };
    for (const Case& c : cases) {
        CPH p(c.T, c.tau);
        p.initRandomNumberGeneration(1);
        EXPECT_EQ(failureOf([&] { p.getNextRandomVariate(); }), c.failure) << c.name;
    }
}
