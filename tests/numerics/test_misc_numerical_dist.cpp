// Normal, gamma and chi-squared special functions and bivariate normal
// probabilities against independent reference figures.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "core/libvelmora_settings.h"
#include "numerics/misc_numerical_dist.h"

using namespace velmora;

namespace {

struct Pair {
    double x, expected;
};

template <typename F>
void expectThrows(F f, const std::string& file, const std::string& message) {
    try {
        f();
        ADD_FAILURE() << "no exception for " << message;
    } catch (Exception& e) {
        EXPECT_EQ(e.file, file);
        EXPECT_EQ(e.message, message);
    }
}

}  // namespace

TEST(Ppnd16, MatchesNormalQuantileToSixteenDigits) {
    // scipy.stats.norm.ppf
    const Pair cases[] = {
        {1e-300, -37.0470962993612},          {1e-100, -21.273453560965322},
        {1e-20, -9.262340089798409},          {1.389e-11, -6.657882879105874},
        {1e-05, -4.264890793922825},          {0.02, -2.053748910631823},
        {0.075, -1.4395314709384563},         {0.3, -0.5244005127080409},
        {0.7, 0.5244005127080407},            {0.925, 1.4395314709384563},
        {0.975, 1.959963984540054},           {0.999, 3.090232306167813},
        {0.9999999999, 6.361340889697422},    {0.9999999999999999, 8.209536151601387},
    };
    for (const Pair& c : cases)
        EXPECT_NEAR(as::ppnd16(c.x), c.expected, 1e-15 * std::fabs(c.expected)) << "p = " << c.x;
}

TEST(Ppnd16, GivesZeroAtTheMedianAndOutsideTheOpenInterval) {
    for (double p : {0.5, 0.0, 1.0, 1.5, -0.25}) EXPECT_EQ(as::ppnd16(p), 0.0) << "p = " << p;
}

TEST(Alnorm, MatchesNormalTailsToPublishedAccuracy) {
    // x, lower area, upper area: scipy.special.ndtr
    const struct {
        double x, lower, upper;
    } cases[] = {
        {-18.0, 9.740948918936876e-73, 1.0},
        {-8.0, 6.22096057427174e-16, 0.9999999999999993},
        {-6.5, 4.016000583859088e-11, 0.99999999995984},
        {-3.0, 0.0013498980316300933, 0.9986501019683699},
        {-1.28, 0.10027256795444206, 0.8997274320455579},
        {-0.3, 0.3820885778110474, 0.6179114221889526},
        {0.3, 0.6179114221889526, 0.3820885778110474},
        {1.2799, 0.8997098461770858, 0.10029015382291412},
        {1.2801, 0.8997450156631828, 0.10025498433681723},
        {2.5, 0.9937903346742238, 0.006209665325776132},
        {5.0, 0.9999997133484281, 2.866515718791933e-07},
        {7.0, 0.9999999999987201, 1.279812543885835e-12},
        {10.0, 1.0, 7.61985302416047e-24},
        {15.0, 1.0, 3.6709661993126986e-51},
        {18.5, 1.0, 1.0323698689562996e-76},
    };
    for (const auto& c : cases) {
        EXPECT_NEAR(as::alnorm(c.x, false), c.lower, 5e-12) << "x = " << c.x;
        EXPECT_NEAR(as::alnorm(c.x, true), c.upper, 5e-12) << "x = " << c.x;
        // The small tail also holds relatively.
        const double small = c.x < 0 ? c.lower : c.upper;
        EXPECT_NEAR(as::alnorm(c.x, c.x > 0), small, 5e-11 * small) << "x = " << c.x;
    }
}

TEST(Alnorm, CutsOffBeyondTheMachineLimits) {
    EXPECT_EQ(as::alnorm(0, true), 0.5);
    EXPECT_EQ(as::alnorm(0, false), 0.5);
    EXPECT_EQ(as::alnorm(7.0001, false), 1.0);
    EXPECT_EQ(as::alnorm(8, false), 1.0);
    EXPECT_EQ(as::alnorm(-8, true), 1.0);
    EXPECT_EQ(as::alnorm(19, true), 0.0);
    EXPECT_EQ(as::alnorm(-19, false), 0.0);
    EXPECT_GT(as::alnorm(18.6, true), 0.0);
}

TEST(Gammad, MatchesRegularisedIncompleteGamma) {
    // x, p, P(p, x): scipy.special.gammainc. Both the series and the continued
    // fraction carry the error of the Pike-Hill log-gamma, a few 1e-11.
    const struct {
        double x, p, expected;
    } cases[] = {
        {0.001, 0.01, 0.9385706525261288},   {0.5, 0.5, 0.6826894921370859},
        {0.999, 3.0, 0.08011754935131771},   {1.0, 1.0, 0.6321205588285577},  // 1 - 1/e
        {2.5, 0.3, 0.9881546781546887},      {3.0, 3.0, 0.5768099188731566},
        {3.0, 5.0, 0.18473675547622787},     {10.0, 2.5, 0.9987502694369687},
        {50.0, 49.5, 0.5470414886790687},    {80.0, 100.0, 0.0171083130351331},
        {10000.0, 9.0, 1.0},                 {950.0, 1000.0, 0.055054686230738045},
        {1100.0, 1000.0, 0.9989406767460701}, {1e8, 50.0, 1.0},
    };
    for (const auto& c : cases)
        EXPECT_NEAR(as::gammad(c.x, c.p), c.expected, 5e-11) << "x = " << c.x << ", p = " << c.p;
}

TEST(Gammad, UsesTheNormalApproximationAboveShapeThousand) {
    // scipy.special.gammainc; the approximation is good to some 1e-6.
    EXPECT_NEAR(as::gammad(2000, 2000), 0.5029735484442025, 5e-6);
    EXPECT_NEAR(as::gammad(1950, 2000), 0.13135263695671465, 5e-6);
    EXPECT_NEAR(as::gammad(5000, 5100), 0.08003099915657268, 5e-6);
}

TEST(Gammad, HandlesTheEndsAndRefusesInvalidArguments) {
    EXPECT_EQ(as::gammad(0, 1), 0.0);
    EXPECT_EQ(as::gammad(1e9, 2), 1.0);
    EXPECT_EQ(as::gammad(1e-30, 0.5 * 1e3), 0.0);  // the log of the result is below -88
    for (const auto& args : std::vector<std::pair<double, double>>{{1, 0}, {1, -1}, {-1, 1}, {NAN, 1}})
        expectThrows([&] { as::gammad(args.first, args.second); }, "misc_numerical_dist",
                     "Invalid parameters for gammad.");
}

TEST(Ppchi2, MatchesChiSquaredQuantileToOnePartInAMillion) {
    // p, v, quantile: scipy.stats.chi2.ppf
    const struct {
        double p, v, expected;
    } cases[] = {
        {0.95, 1.0, 3.841458820694124},       {2e-06, 0.1, 1.225708180820214e-114},
        {0.48, 0.1, 4.927334214387032e-07},   {0.9, 0.1, 0.1526342278183781},
        {0.999998, 0.3, 18.634427814498295},  {0.01, 0.5, 1.349939585911692e-08},
        {0.5, 1.0, 0.454936423119572},        {0.3, 2.0, 0.7133498878774648},
        {0.001, 5.0, 0.2102126026292192},     {0.999, 10.0, 29.58829844507442},
        {0.5, 37.5, 36.835481531935926},      {1e-05, 100.0, 50.71093754563406},
        {0.99999, 100.0, 172.09894203615858}, {0.05, 1000.0, 927.594363020979},
        {0.999998, 1000.0, 1219.8934568184538},
    };
    for (const auto& c : cases)
        EXPECT_NEAR(as::ppchi2(c.p, c.v), c.expected, 1e-6 * c.expected)
            << "p = " << c.p << ", v = " << c.v;
}

TEST(Ppchi2, EndsOfTheProbabilityRange) {
    for (double v : {0.1, 2.0, 1000.0}) {
        EXPECT_EQ(as::ppchi2(0, v), 0.0) << "v = " << v;
        // At p = 1 the iteration stops where the integral rounds to 1.
        const double top = as::ppchi2(1, v);
        EXPECT_TRUE(std::isfinite(top)) << "v = " << v;
        EXPECT_GT(top, as::ppchi2(0.999998, v)) << "v = " << v;
    }
    expectThrows([] { as::ppchi2(0.5, 0); }, "misc_numerical", "Invalid value for loggamma.");
}

TEST(Mvphi, MatchesNormalDistributionToFullPrecision) {
    // scipy.special.ndtr
    const Pair cases[] = {
        {-38.0, 0.0},          {-20.0, 2.7536241186061556e-89},
        {-8.0, 6.22096057427174e-16}, {-3.3, 0.00048342414238377744},
        {-1.0, 0.15865525393145707},  {-0.001, 0.49960105778608893},
        {0.0, 0.5},            {0.5, 0.6914624612740131},
        {2.0, 0.9772498680518208},    {6.0, 0.9999999990134123},
        {40.0, 1.0},           {150.0, 1.0},
        {-150.0, 0.0},
    };
    for (const Pair& c : cases) EXPECT_NEAR(mvphi(c.x), c.expected, 1e-15) << "z = " << c.x;
    // In the lower tail the error is also small relative to the value.
    EXPECT_NEAR(mvphi(-8.0), 6.22096057427174e-16, 2e-14 * 6.22096057427174e-16);
}

TEST(Mvbvu, MatchesBivariateNormalUpperProbability) {
    // h, k, r, P(X > h, Y > k): mpmath at 30 digits, Phi(-h) Phi(-k) plus the
    // integral over t in [0, asin r] of exp(-(h^2 + k^2 - 2hk sin t) /
    // (2 cos^2 t)) / (2 pi); at r = +-1 the closed forms. The rows cover the
    // three Gauss-Legendre rules, the expansion for |r| >= 0.925 and r = +-1.
    const struct {
        double h, k, r, expected;
    } cases[] = {
        {1.1, -1.1, -1, 0.0},
        {-2.0, 3.74, -1, 0.0},
        {-4.95, 3.21, -1, 0.00066330379403200452},
        {-0.79, -0.89, -0.99999, 0.59850317279919027},
        {-2.45, -0.55, -0.99999, 0.70169750247638223},
        {0.05, 0.53, -0.99999, 0.0},
        {0.49, 1.96, -0.95, 5.6724551584392973e-17},
        {-2.85, -3.4, -0.95, 0.99747710927940988},
        {1.13, -4.56, -0.95, 0.12923555455897839},
        {-0.14, 1.67, -0.925, 9.1471617557527515e-7},
        {1.29, 0.14, -0.925, 3.5461343395579964e-6},
        {-0.03, -2.52, -0.925, 0.50609873169901473},
        {0.77, -1.2, -0.8, 0.12853612539638475},
        {-1.3, -4.96, -0.8, 0.9031991629484915},
        {3.3, -3.46, -0.8, 0.00040288626168082655},
        {0.04, 1.39, -0.5, 0.011443796322911014},
        {1.4, 2.42, -0.5, 5.993400448986434e-6},
        {-4.09, 0.41, -0.5, 0.34088189308747157},
        {-0.55, 0.39, -0.1, 0.23403761641674309},
        {-4.41, -1.12, -0.1, 0.86863823976480958},
        {-1.77, -3.5, -0.1, 0.96140742203378654},
        {1.91, 0.36, 0, 0.010087799873123117},
        {1.05, 1.38, 0, 0.012305808260470206},
        {1.76, -3.49, 0, 0.039194435142074764},
        {-0.39, -1.61, 0.2, 0.62524059591155462},
        {4.68, -2.85, 0.2, 1.434306070113525e-6},
        {1.72, -2.0, 0.2, 0.0424270262032276},
        {-1.47, 1.38, 0.31, 0.082399793198990452},
        {4.45, 4.04, 0.31, 1.3811696884391205e-8},
        {0.7, -3.55, 0.31, 0.24195894187556728},
        {0.21, -1.28, 0.6, 0.4103372344111228},
        {3.84, 1.42, 0.6, 5.5167580805469105e-5},
        {0.7, -1.24, 0.6, 0.23997306737831998},
        {-1.85, 1.5, 0.76, 0.066807164469097675},
        {-0.32, 0.48, 0.76, 0.29794453902506665},
        {-1.78, 2.51, 0.76, 0.0060365580679561813},
        {-1.88, -1.51, 0.9, 0.92975994149879901},
        {4.67, 1.58, 0.9, 1.5059986772296694e-6},
        {-0.72, 0.24, 0.9, 0.40416107427543174},
        {0.36, 0.73, 0.924, 0.22029411910231535},
        {-1.45, 0.19, 0.924, 0.4246542036824893},
        {2.65, 4.09, 0.924, 2.1556871527506214e-5},
        {-1.98, 1.01, 0.925, 0.15624764502125449},
        {3.11, -3.63, 0.925, 0.00093543671951410001},
        {-0.81, 3.15, 0.925, 0.00081635231282856246},
        {1.17, 0.05, 0.97, 0.1210004448233574},
        {2.26, -2.74, 0.97, 0.011910625418547072},
        {-3.01, -1.37, 0.97, 0.91465654917801971},
        {1.79, 0.29, 0.9999, 0.036726955698726295},
        {-1.6, -2.28, 0.9999, 0.94520070830044202},
        {4.52, -0.56, 0.9999, 3.0919815689561837e-6},
        {0.08, 1.59, 1, 0.055917402519469433},
        {2.43, 0.81, 1, 0.0075494114163092044},
        {-0.73, 3.78, 1, 7.8414179383585098e-5},
    };
    for (const auto& c : cases)
        EXPECT_NEAR(mvbvu(c.h, c.k, c.r), c.expected, 1e-13)
            << "h = " << c.h << ", k = " << c.k << ", r = " << c.r;
}

TEST(Mvbvu, ClosedFormsAtTheOrigin) {
    EXPECT_EQ(mvbvu(0, 0, 0), 0.25);
    EXPECT_NEAR(mvbvu(0, 0, 0.5), 1.0 / 3.0, 1e-16);
    EXPECT_NEAR(mvbvu(0, 0, -0.5), 1.0 / 6.0, 1e-16);
    // Sheppard's formula 1/4 + asin(r)/(2 pi), in the branch for |r| near 1.
    EXPECT_NEAR(mvbvu(0, 0, 0.95), 0.25 + std::asin(0.95) / (4 * std::acos(0.0)), 1e-15);
    EXPECT_NEAR(mvbvu(0, 0, 1), 0.5, 1e-15);
    EXPECT_EQ(mvbvu(0, 0, -1), 0.0);
}

TEST(Mvbvn, LimitTypesSelectTheirRectangle) {
    // Lower limits (-0.3, 0.2), upper limits (1.1, 0.9), correlation 0.6.
    // References: the probabilities of the intended regions, from the mpmath
    // upper probabilities above (0: below upper, 1: above lower, 2: between).
    const struct {
        int i1, i2;
        double expected;
    } cases[] = {
        {2, 2, 0.14451953625922269}, {2, 1, 0.24179048401503134}, {1, 2, 0.18392099969572855},
        {2, 0, 0.38497441348676133}, {0, 2, 0.19727870177763162}, {1, 0, 0.44906458876254187},
        {0, 1, 0.30976294145378899}, {1, 1, 0.35276783312213932}, {0, 0, 0.75184969937745998},
        {3, 1, 1.0},                 {-1, 0, 1.0},                {2, 5, 1.0},
    };
    for (const auto& c : cases)
        EXPECT_NEAR(mvbvn({-0.3, 0.2}, {1.1, 0.9}, {c.i1, c.i2}, 0.6), c.expected, 1e-13)
            << "infin = " << c.i1 << ", " << c.i2;
}

TEST(Mvbvn, WideRectangleHoldsAllTheMass) {
    for (double rho : {-0.99, -0.5, 0.0, 0.3, 0.93, 1.0})
        EXPECT_NEAR(mvbvn({-10, -10}, {10, 10}, {2, 2}, rho), 1.0, 1e-15) << "rho = " << rho;
    expectThrows([] { mvbvn({0}, {1, 1}, {2, 2}, 0.5); }, "misc_numerical_dist",
                 "mvbvn needs two limits and two limit types.");
}
