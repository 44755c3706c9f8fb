// Tests of the elementary scalar functions: rounding, the 32-bit factorial,
// the three regimes of the gamma function and the integer powers.
#include "numerics/misc_math.h"

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "support/test_support.h"

using namespace velmora;
using velmora_test::failureOf;

TEST(MiscMath, RoundGoesHalfAwayFromZero) {
    const struct { double x; unsigned digits; double expected; } cases[] = {
        {2.5, 0, 3.0}, {-2.5, 0, -3.0}, {0.125, 2, 0.13}, {-0.125, 2, -0.13},
        {1.23456, 3, 1.235}, {-7.4, 0, -7.0}, {0.0, 4, 0.0}, {1234.5678, 1, 1234.6},
    };
    for (const auto& c : cases) EXPECT_DOUBLE_EQ(velmora::round(c.x, c.digits), c.expected) << c.x << ", " << c.digits;
}

TEST(MiscMath, FactorialWrapsInThirtyTwoBits) {
    // n! mod 2^32, exact integer arithmetic in python; 33! holds 31 factors of 2.
    const struct { unsigned long n, expected; } cases[] = {
        {0, 1}, {5, 120}, {12, 479001600UL}, {13, 1932053504UL}, {20, 2192834560UL},
        {33, 2147483648UL}, {34, 0}, {1000000000000UL, 0},
    };
    for (const auto& c : cases) EXPECT_EQ(fac(c.n), c.expected) << c.n;
}

TEST(MiscMath, GammaFunctionIsExactOnlyAtIntegersAndHalfIntegers) {
    // scipy.special.gamma at integers and half-integers. Elsewhere Stirling's
    // first term, sqrt(2 pi) x^(x - 1/2) e^(-x), not Gamma(1.7) = 0.908638732853.
    // Beyond 13 the integers inherit the wrapped factorial.
    const struct { double x, expected, relTol; } cases[] = {
        {1.0, 1.0, 0.0},                  {13.0, 479001600.0, 0.0},         {0.5, 1.7724538509055159, 1e-15},
        {2.5, 1.329340388179137, 1e-15},  {6.5, 287.88527781504433, 1e-15}, {1.7, 0.865621471794, 1e-11},
        {3.3, 2.6167195285806382, 1e-13}, {14.0, 1932053504.0, 0.0},
    };
    for (const auto& c : cases) EXPECT_NEAR(gamma_function(c.x), c.expected, c.relTol * c.expected) << c.x;
    for (double x : {0.0, -1.5})
        EXPECT_EQ(failureOf([x] { gamma_function(x); }),
                  "misc_math: gamma function only implemented for positive values.");
    // The beta function is a quotient of gamma values (scipy.special.beta).
    EXPECT_DOUBLE_EQ(beta_function(2.0, 3.0), 1.0 / 12.0);
    EXPECT_DOUBLE_EQ(beta_function(2.5, 1.5), 0.19634954084936207);
    EXPECT_DOUBLE_EQ(beta_function(1.7, 2.0), gamma_function(1.7) * 1.0 / gamma_function(3.7));
}

// integer_powers must give the library's pow to the last bit: the trace
// summary's figures rest on it. Values of every magnitude and sign, the
// integers and powers of two whose powers are exact, and the special values.
TEST(MiscMath, IntegerPowersAreThoseOfTheLibrarysPow) {
    std::mt19937_64 engine(42);
    std::vector<double> xs = {0.0, -0.0, 1.0, -1.0, 2.0, 0.5, 3.0, -7.0, 1e-300, 1e300, 1e-170, 1e100, 4.9e-324,
                              std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
                              std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::max()};
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    std::uniform_int_distribution<int> exponent(-200, 200);
    for (int i = 0; i < 100000; ++i) {
        const double u = unit(engine);
        xs.push_back(-std::log(1 - u));                                    // exponential values, as traces hold
        xs.push_back((i % 2 ? -1 : 1) * std::ldexp(0.5 + u, exponent(engine)));  // any sign and scale
    }
    double out[9];
    // Six is the summary's count, with a path of its own.
    for (std::size_t count : {6, 9}) {
        for (double x : xs) {
            velmora::integer_powers(x, out, count);
            for (int k = 2; k < static_cast<int>(count); ++k) {
                volatile double order = k;
                const double expected = std::pow(x, order);
                if (std::isnan(expected))
                    EXPECT_TRUE(std::isnan(out[k])) << x << "^" << k;
                else
                    ASSERT_EQ(out[k], expected) << std::hexfloat << x << "^" << k;
            }
        }
    }
}
