// Normal, gamma and chi-squared special functions and bivariate normal probabilities against reference figures.
#include "numerics/misc_numerical_dist.h"
#include "support/test_support.h"

using namespace velmora;
using velmora_test::failureOf;

namespace { struct Pair { double x, expected; }; }

TEST(Ppnd16, MatchesNormalQuantileToSixteenDigits) {
    // scipy.stats.norm.ppf; the central region ends at |p - 1/2| = 0.425,
    // the intermediate one at p = exp(-25) = 1.389e-11.
    const Pair cases[] = {
        {1e-300, -37.0470962993612},        {1e-20, -9.262340089798409},
        {1.389e-11, -6.657882879105874},    {1e-05, -4.264890793922825},
        {0.075, -1.4395314709384563},       {0.3, -0.5244005127080409},
        {0.925, 1.4395314709384563},        {0.999, 3.090232306167813},
        {0.9999999999999999, 8.209536151601387},
    };
    for (const Pair& c : cases)
        EXPECT_NEAR(as::ppnd16(c.x), c.expected, 1e-15 * std::fabs(c.expected)) << "p = " << c.x;
    // Zero at the median and outside the open interval.
    for (double p : {0.5, 0.0, 1.0, 1.5, -0.25}) EXPECT_EQ(as::ppnd16(p), 0.0) << "p = " << p;
}

TEST(Alnorm, MatchesNormalTailsToPublishedAccuracy) {
    // x, lower area, upper area: scipy.special.ndtr. The series serves up to |x| = 1.28, the continued fraction
    // beyond; past 18.66 the upper tail is cut off to exactly 0.
    const struct { double x, lower, upper; } cases[] = {
        {-18.0, 9.740948918936876e-73, 1.0},                {-8.0, 6.22096057427174e-16, 0.9999999999999993},
        {-3.0, 0.0013498980316300933, 0.9986501019683699},  {-0.3, 0.3820885778110474, 0.6179114221889526},
        {0.0, 0.5, 0.5},                                    {1.2799, 0.8997098461770858, 0.10029015382291412},
        {1.2801, 0.8997450156631828, 0.10025498433681723},  {10.0, 1.0, 7.61985302416047e-24},
        {18.5, 1.0, 1.0323698689562996e-76},                {19.0, 1.0, 0.0},
    };
    for (const auto& c : cases) {
        EXPECT_NEAR(as::alnorm(c.x, false), c.lower, 5e-12) << "x = " << c.x;
        EXPECT_NEAR(as::alnorm(c.x, true), c.upper, 5e-12) << "x = " << c.x;
        // The small tail also holds relatively.
        const double small = c.x < 0 ? c.lower : c.upper;
        EXPECT_NEAR(as::alnorm(c.x, c.x > 0), small, 5e-11 * small) << "x = " << c.x;
    }
}

TEST(Gammad, MatchesRegularisedIncompleteGamma) {
    // x, p, P(p, x), tolerance: scipy.special.gammainc. The series (x <= 1 or x < p) and the continued fraction
    // carry the error of the Pike-Hill log-gamma, a few 1e-11; the normal approximation above shape 1000 is good
    // to some 1e-6. Exact ends: x = 0, x above 1e8, and a result whose logarithm is below -88.
    const struct { double x, p, expected, tol; } cases[] = {
        {0.001, 0.01, 0.9385706525261288, 5e-11},     {2.5, 0.3, 0.9881546781546887, 5e-11},
        {3.0, 5.0, 0.18473675547622787, 5e-11},       {50.0, 49.5, 0.5470414886790687, 5e-11},
        {80.0, 100.0, 0.0171083130351331, 5e-11},     {950.0, 1000.0, 0.055054686230738045, 5e-11},
        {1100.0, 1000.0, 0.9989406767460701, 5e-11}, {5000.0, 5100.0, 0.08003099915657268, 5e-6},
        {0.0, 1.0, 0.0, 0.0},                         {1e9, 2.0, 1.0, 0.0},
        {1e-30, 500.0, 0.0, 0.0},
    };
    for (const auto& c : cases)
        EXPECT_NEAR(as::gammad(c.x, c.p), c.expected, c.tol) << "x = " << c.x << ", p = " << c.p;
    for (const auto& args : std::vector<std::pair<double, double>>{{1, 0}, {NAN, 1}})
        EXPECT_EQ(failureOf([&] { as::gammad(args.first, args.second); }),
                  "misc_numerical_dist: Invalid parameters for gammad.");
}

TEST(Ppchi2, MatchesChiSquaredQuantileToOnePartInAMillion) {
    // p, v, quantile: scipy.stats.chi2.ppf. Starting values for small quantiles (v < -1.24 log p), v <= 0.32, else
    // Wilson-Hilferty.
    const struct { double p, v, expected; } cases[] = {
        {2e-06, 0.1, 1.225708180820214e-114}, {0.9, 0.1, 0.1526342278183781},
        {0.999998, 0.3, 18.634427814498295},  {0.5, 1.0, 0.454936423119572},
        {0.999, 10.0, 29.58829844507442},     {1e-05, 100.0, 50.71093754563406},
        {0.05, 1000.0, 927.594363020979},     {0.999998, 1000.0, 1219.8934568184538},
    };
    for (const auto& c : cases)
        EXPECT_NEAR(as::ppchi2(c.p, c.v), c.expected, 1e-6 * c.expected) << "p = " << c.p << ", v = " << c.v;
    // p = 0 gives 0; at p = 1 the iteration stops where the integral rounds to 1.
    for (double v : {0.1, 2.0, 1000.0}) {
        EXPECT_EQ(as::ppchi2(0, v), 0.0) << "v = " << v;
        const double top = as::ppchi2(1, v);
        EXPECT_TRUE(std::isfinite(top) && top > as::ppchi2(0.999998, v)) << "v = " << v << ": " << top;
    }
    EXPECT_EQ(failureOf([] { as::ppchi2(0.5, 0); }), "misc_numerical: Invalid value for loggamma.");
}

TEST(Ppchi2, FarLowerTailsOfLargeShapesAreQuantilesStill) {
    // The ARTA transform of a gamma of shape 27.2 at the ends of its grid, where the Taylor steps of AS 91 lead to
    // no number or below 0. p = scipy.stats.norm.cdf(z); expected: 2 * scipy.stats.gamma.ppf(p, 27.2).
    const struct { double p, expected; } cases[] = {
        {7.61985302416047e-24, 2 * 1.6473337641886427},    // z = -10
        {6.22096057427174e-16, 2 * 3.4275607054163615},    // z = -8
        {3.1908916729108844e-14, 2 * 4.0493096040769885},  // z = -7.5
    };
    for (const auto& c : cases) EXPECT_NEAR(as::ppchi2(c.p, 54.4), c.expected, 1e-9 * c.expected) << "p = " << c.p;
}

TEST(Mvphi, MatchesNormalDistributionToFullPrecision) {
    // scipy.special.ndtr
    const Pair cases[] = {
        {-38.0, 0.0},       {-20.0, 2.7536241186061556e-89}, {-8.0, 6.22096057427174e-16},
        {-1.0, 0.15865525393145707}, {0.0, 0.5},           {2.0, 0.9772498680518208},
        {6.0, 0.9999999990134123},   {150.0, 1.0},         {-150.0, 0.0},
    };
    for (const Pair& c : cases) EXPECT_NEAR(mvphi(c.x), c.expected, 1e-15) << "z = " << c.x;
    // In the lower tail the error is also small relative to the value.
    EXPECT_NEAR(mvphi(-8.0), 6.22096057427174e-16, 2e-14 * 6.22096057427174e-16);
}

TEST(Mvbvu, MatchesBivariateNormalUpperProbability) {
    // h, k, r, P(X > h, Y > k): mpmath at 30 digits, Phi(-h) Phi(-k) plus the integral over t in [0, asin r] of
    // exp(-(h^2 + k^2 - 2hk sin t) / (2 cos^2 t)) / (2 pi); at r = +-1 the closed forms. The rows cover the three
    // Gauss-Legendre rules (switching at |r| = 0.3 and 0.75), the expansion for |r| >= 0.925 and r = +-1.
    const struct { double h, k, r, expected; } cases[] = {
        {1.1, -1.1, -1, 0.0},                           {-4.95, 3.21, -1, 0.00066330379403200452},
        {-0.79, -0.89, -0.99999, 0.59850317279919027},  {-0.14, 1.67, -0.925, 9.1471617557527515e-7},
        {3.3, -3.46, -0.8, 0.00040288626168082655},     {0.04, 1.39, -0.5, 0.011443796322911014},
        {-1.77, -3.5, -0.1, 0.96140742203378654},       {1.91, 0.36, 0, 0.010087799873123117},
        {4.45, 4.04, 0.31, 1.3811696884391205e-8},      {-1.85, 1.5, 0.76, 0.066807164469097675},
        {0.36, 0.73, 0.924, 0.22029411910231535},       {3.11, -3.63, 0.925, 0.00093543671951410001},
        {4.52, -0.56, 0.9999, 3.0919815689561837e-6},   {0.08, 1.59, 1, 0.055917402519469433},
    };
    for (const auto& c : cases)
        EXPECT_NEAR(mvbvu(c.h, c.k, c.r), c.expected, 1e-13) << "h = " << c.h << ", k = " << c.k << ", r = " << c.r;
}

TEST(Mvbvn, LimitTypesSelectTheirRectangle) {
    // Lower limits (-0.3, 0.2), upper limits (1.1, 0.9), correlation 0.6. References: the probabilities of the
    // intended regions, from the mpmath upper probabilities above (0: below upper, 1: above lower, 2: between).
    const struct { int i1, i2; double expected; } cases[] = {
        {2, 2, 0.14451953625922269}, {2, 1, 0.24179048401503134}, {1, 2, 0.18392099969572855},
        {2, 0, 0.38497441348676133}, {0, 2, 0.19727870177763162}, {1, 0, 0.44906458876254187},
        {0, 1, 0.30976294145378899}, {1, 1, 0.35276783312213932}, {0, 0, 0.75184969937745998},
        {3, 1, 1.0},                 {-1, 0, 1.0},                {2, 5, 1.0},
    };
    for (const auto& c : cases)
        EXPECT_NEAR(mvbvn({-0.3, 0.2}, {1.1, 0.9}, {c.i1, c.i2}, 0.6), c.expected, 1e-13)
            << "infin = " << c.i1 << ", " << c.i2;
    EXPECT_EQ(failureOf([] { mvbvn({0}, {1, 1}, {2, 2}, 0.5); }),
              "misc_numerical_dist: mvbvn needs two limits and two limit types.");
}

// mpmath at 30 digits: the root of betainc(v/2, 1/2, 0, v/(v+t^2), regularized) / 2 = 1 - p
// (Debian's scipy.stats.t.ppf agrees to about 1e-10 only).
TEST(StudentT, QuantilesMatchMpmath) {
    struct Case { double p; unsigned v; double expected; } cases[] = {
        {0.975, 1, 12.706204736174693}, {0.975, 2, 4.3026527297494618}, {0.975, 3, 3.1824463052837084},
        {0.975, 4, 2.7764451051977935}, {0.975, 5, 2.5705818356363148}, {0.975, 9, 2.262157162798205},
        {0.975, 29, 2.0452296421327039}, {0.975, 1000, 1.9623390808264081}, {0.975, 100000, 1.9599877075346093},
        {0.1, 7, -1.4149239276505084},  {0.5, 3, 0.0}};
    for (const auto& c : cases)
        EXPECT_NEAR(velmora::student_t_quantile(c.p, c.v), c.expected, 1e-12 * (1 + std::fabs(c.expected)))
            << c.p << " " << c.v;
    EXPECT_TRUE(std::isnan(velmora::student_t_quantile(1.0, 3)));
    EXPECT_TRUE(std::isnan(velmora::student_t_quantile(0.9, 0)));
}
