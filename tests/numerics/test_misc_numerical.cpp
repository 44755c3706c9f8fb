// Polynomial zeros, Romberg integration and the log-gamma function against reference figures and edge cases.
#include <complex>

#include "numerics/misc_numerical.h"
#include "support/test_support.h"

using namespace velmora;
using velmora_test::failureOf;

namespace {
typedef std::vector<double> Vec;

// Largest distance, relative to max(1, |w|), of the zeros found from the expected ones, each used once.
double setDistance(const Vec& zr, const Vec& zi, Vec er, Vec ei) {
    if (zr.size() != er.size() || zi.size() != ei.size()) return INFINITY;
    auto expected = [&](std::size_t j) { return std::complex<double>(er[j], ei[j]); };
    double worst = 0.0;
    for (std::size_t i = 0; i < zr.size(); ++i) {
        const std::complex<double> z(zr[i], zi[i]);
        std::size_t best = 0;
        for (std::size_t j = 1; j < er.size(); ++j)
            if (std::abs(z - expected(j)) < std::abs(z - expected(best))) best = j;
        worst = std::max(worst, std::abs(z - expected(best)) / std::max(1.0, std::abs(expected(best))));
        er.erase(er.begin() + best);
        ei.erase(ei.begin() + best);
    }
    return worst;
}
}  // namespace

TEST(Loggamma, MatchesLogGammaToPikeHillAccuracy) {
    // scipy.special.gammaln; the series cut after x^-7 leaves about 2e-11.
    // Below 7 the argument is shifted up first.
    const struct { double x, expected; } cases[] = {
        {1e-05, 11.512919692895826}, {2.0, 0.0},          {6.9999, 6.579063934344322},
        {7.0, 6.579251212010101},    {1000.0, 5905.220423209181},
    };
    for (const auto& c : cases) EXPECT_NEAR(as::loggamma(c.x), c.expected, 3e-11) << "x = " << c.x;
    for (double x : {0.0, -0.5})
        EXPECT_EQ(failureOf([x] { as::loggamma(x); }), "misc_numerical: Invalid value for loggamma.");
}

TEST(Cpoly, ZerosOfRandomPolynomialsMatchAsSets) {
    // Coefficients, highest power first, and their zeros: numpy.roots.
    const struct { Vec cr, ci, zr, zi; } cases[] = {
        // degree 20
        {{1.028857, 1.64192, 1.14672, -0.97318, -1.3928, 0.067196, 0.861351, 0.509187, 1.810286, 0.750843, 0.63976,
          -0.731323, -1.107717, 1.484406, 0.048912, 0.81152, -1.376423, -0.436371, -1.291092, -0.775679, 0.903063},
         {0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0},
         {-0.7084540565162581, -1.1245010019628776, -1.1245010019628834, -0.7084540565162597, -1.0591805577000182,
          -0.6345756431675385, -0.3136352954085201, -0.772867443879708, -0.6345756431675393, -0.31363529540851964,
          0.08889094251826693, 0.3611466893096496, 0.08889094251826697, 0.3611466893096493, 0.7333059423384196,
          0.9942345904369947, 0.9942345904369942, 0.7333059423384191, 0.9127340851714218, 0.5306215452292785},
         {1.1120495964479447, 0.5043490646094856, -0.5043490646094878, -1.112049596447946, 8.071624547317122e-16,
          0.7490128014864206, 0.9845884260816546, -7.540038904220477e-16, -0.7490128014864211, -0.984588426081658,
          0.8875975221951306, 0.9289132228004049, -0.8875975221951302, -0.9289132228004052, 0.6054392870680134,
          0.3890807423473137, -0.38908074234731355, -0.605439287068013, 0.0, 0.0}},
        // degree 6
        {{0.394199, 0.761728, -0.26179, 0.017464, 1.335271, 1.265452, 0.709978},
         {-0.866401, -0.053676, 0.602917, -0.211866, -0.610018, -0.765389, -0.632009},
         {1.1119896018677917, 0.8881280158839993, -0.3965172167640223, -0.8008507256558323, -0.9610353258415196,
          -0.22445241775498448},
         {-0.7921558635652611, 0.7488261153212568, -0.9500348553018514, -0.510997748418095, 0.18035400582024264,
          0.6189617958417414}},
    };
    for (const auto& c : cases) {
        Vec zr, zi;
        cpoly(c.cr, c.ci, &zr, &zi);
        EXPECT_LT(setDistance(zr, zi, c.zr, c.zi), 1e-10) << "degree " << c.cr.size() - 1;
    }
}

TEST(Cpoly, SmallExamplesAndZerosAtTheOrigin) {
    const struct { Vec cr, ci, zr, zi; } cases[] = {
        {{-0.5, 1}, {0, 0}, {2}, {0}},                      // 1 - 0.5 z
        {{1, 0, 1}, {0, 0, 0}, {0, 0}, {1, -1}},            // z^2 + 1
        {{1, -3, 3, -1}, {0, 0, 0, 0}, {1, 1, 1}, {0, 0, 0}},  // (z - 1)^3
        {{0, 0}, {1, -1}, {1}, {0}},                        // i z - i
        {{2, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0}, {0, 0, 0}},
        // Huge and tiny coefficients: scaling by a power of two keeps the zeros.
        {{1e300, -3e300, 2e300}, {0, 0, 0}, {1, 2}, {0, 0}},
        {{1e-300, -3e-300, 2e-300}, {0, 0, 0}, {1, 2}, {0, 0}},
    };
    for (const auto& c : cases) {
        Vec zr, zi;
        cpoly(c.cr, c.ci, &zr, &zi);
        // A triple zero is only found to the cube root of the rounding error.
        const double tol = c.cr.size() == 4 && c.cr[1] == -3 ? 1e-5 : 1e-14;
        EXPECT_LT(setDistance(zr, zi, c.zr, c.zi), tol) << "degree " << c.cr.size() - 1;
    }
    // Zeros at the origin are taken off first and are exactly 0.
    Vec zr, zi;
    cpoly({1, 3, 2, 0, 0}, {0, 0, 0, 0, 0}, &zr, &zi);
    ASSERT_LT(setDistance(zr, zi, {0, 0, -1, -2}, {0, 0, 0, 0}), 1e-14);
    EXPECT_TRUE(zr[0] == 0 && zr[1] == 0 && zi[0] == 0 && zi[1] == 0);
}

TEST(Cpoly, RefusesPolynomialsOutsideItsContractAndHelpersAvoidOverflow) {
    Vec zr = {7}, zi = {7};
    const std::string leading = "misc_numerical: Leading coefficient must not be zero.";
    EXPECT_EQ(failureOf([&] { cpoly({0, 1, 2}, {0, 3, 4}, &zr, &zi); }), leading);
    // The zero slots are sized and cleared before the refusal.
    EXPECT_EQ(zr, Vec({0, 0}));
    EXPECT_EQ(zi, Vec({0, 0}));
    // The leading coefficient is looked at before the zeros at the origin.
    EXPECT_EQ(failureOf([&] { cpoly({0, 1, 0}, {0, 0, 0}, &zr, &zi); }), leading);
    EXPECT_EQ(failureOf([&] { cpoly({3}, {0}, &zr, &zi); }),
              "misc_numerical: cpoly needs a polynomial of degree 1 or more.");
    EXPECT_EQ(failureOf([&] { cpoly({1, 2}, {0}, &zr, &zi); }),
              "misc_numerical: cpoly needs real and imaginary parts of equal length.");
    // A NaN or infinite coefficient neither hangs the Cauchy bound nor overflows the scaling; the shifts find nothing.
    const double nan = NAN, inf = INFINITY;
    for (const Vec& c : {Vec{1, nan, 2}, Vec{inf, 1, 2}, Vec{1, -3, inf}})
        EXPECT_EQ(failureOf([&] { cpoly(c, {0, 0, 0}, &zr, &zi); }), "misc_numerical: cpoly failed.");
    // The complex helpers avoid overflow.
    EXPECT_DOUBLE_EQ(cmod(1e300, 1e300), 1.4142135623730951e300);
    double cr, ci;
    cdivid(1e300, 1e300, 1e300, -1e300, &cr, &ci);  // (1 + i)/(1 - i) = i
    EXPECT_NEAR(cr, 0.0, 1e-16);
    EXPECT_DOUBLE_EQ(ci, 1.0);
    cdivid(1, 2, 0, 0, &cr, &ci);  // division by zero gives the largest double
    EXPECT_EQ(cr, 1.7976931348623157e308);
    EXPECT_EQ(ci, 1.7976931348623157e308);
}

namespace {
Vec visited;
double constantFive(double x, Vec) { return visited.push_back(x), 5.0; }
double identity(double x, Vec) { return visited.push_back(x), x; }
double recordX(double x, Vec) { return visited.push_back(x), std::exp(x); }
double scaledSquare(double x, Vec params) { return params.at(0) * x * x + params.at(1); }
double expFcn(double x, Vec) { return std::exp(x); }
double innerProduct(double y, Vec params) { return params.at(0) * y; }
double outerIntegral(double x, Vec) { return RombergIteration(0, 1, innerProduct, {x}, 1e-12); }
}  // namespace

TEST(RombergIteration, VisitsEachLevelTopDownAndStopsAtTheFirstLevelOrTheCap) {
    // The ends first, then the new points of each level from the top down.
    visited.clear();
    RombergIteration(0, 8, recordX, {}, 1e-300);
    ASSERT_GE(visited.size(), 9u);
    EXPECT_EQ(Vec(visited.begin(), visited.begin() + 9), Vec({0, 8, 4, 6, 2, 7, 5, 3, 1}));
    // A constant stops at once; an odd function over a symmetric interval keeps a zero diagonal, never passing.
    visited.clear();
    EXPECT_EQ(RombergIteration(0, 1, constantFive, {}, 1e-4), 5.0);
    EXPECT_EQ(visited.size(), 3u);
    visited.clear();
    EXPECT_EQ(RombergIteration(-1, 1, identity, {}, 1e-4), 0.0);
    EXPECT_EQ(visited.size(), (1u << 15) + 1u);
}

TEST(RombergIteration, AnIntegrandOfNoNumberEndsAtTheFirstLevel) {
    static unsigned calls = 0;
    auto noNumber = [](double, Vec) { ++calls; return std::nan(""); };
    EXPECT_TRUE(std::isnan(RombergIteration(0, 1, noNumber, {}, 1e-4)));
    EXPECT_EQ(calls, 3u);  // f(a), f(b) and the midpoint, instead of 2^15 + 1
}

TEST(RombergIteration, IntegratesSmoothFunctionsToItsTolerance) {
    const struct { double a, b; double (*f)(double, Vec); Vec params; double expected; } cases[] = {
        {0, 1, expFcn, {}, std::exp(1.0) - 1},
        {0, 3, scaledSquare, {2, 1}, 21.0},  // params reach f untouched
        {2, 0, scaledSquare, {3, 0}, -8.0},  // reversed limits change the sign
        {0, 1, outerIntegral, {}, 0.25},  // nested integrals share no state
    };
    for (double tol : {1e-4, 1e-8, 1e-12})
        for (const auto& c : cases)
            EXPECT_NEAR(RombergIteration(c.a, c.b, c.f, c.params, tol), c.expected, 10 * tol * std::fabs(c.expected))
                << "tol " << tol << ", expected " << c.expected;
}
