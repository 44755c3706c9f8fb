// The geometric and hypo-geometric families: floored arguments, the
// quantile's own rounding, the one-moment limit and the variates.
#include "dist_helpers.h"
#include "distributions/dist_geometric.h"
#include "distributions/dist_hypogeometric.h"
#include "numerics/random.h"

using namespace velmora;
using disttest::failure;

TEST(Geometric, ClosedFormsFloorTheArgumentAndTheQuantileRoundsDown) {
    Geometric half(0.5);
    const disttest::Near cases[] = {
        {"pdf 1", half.evalPDF(1), 0.5, 0}, {"pdf 2.9", half.evalPDF(2.9), 0.25, 0},
        {"pdf 0.5", half.evalPDF(0.5), 0, 0}, {"pdf below 0", half.evalPDF(-3), 0, 0},
        {"cdf 3", half.evalCDF(3), 0.875, 0}, {"cdf 0.9", half.evalCDF(0.9), 0, 0},
        {"ccdf 0.9", half.evalCCDF(0.9), 1, 0}, {"ppf 0.75", half.evalInverseCDF(0.75), 2, 0},
        {"ppf 0", half.evalInverseCDF(0), 0, 0},
        // Not the smallest k with cdf(k) >= 0.6, which is 2.
        {"ppf 0.6", half.evalInverseCDF(0.6), 1, 0},
    };
    for (const auto& c : cases) EXPECT_NEAR(c.value, c.expected, c.tolerance) << c.what;
    EXPECT_FALSE(std::signbit(half.evalInverseCDF(0)));
    EXPECT_EQ(failure([&] { half.evalInverseCDF(1.5); }), "Invalid value for inverse cdf.");

    // scipy.stats.geom(0.25).stats("mvsk"); the kurtosis is the excess.
    DistStats s = Geometric(0.25).getProperties(1);
    const double got[] = {s.mean, s.variance, s.skewness, s.kurtosis, s.cv};
    const double expected[] = {4, 12, 2.0207259421636903, 6.083333333333333, 0.8660254037844386};
    for (int i = 0; i < 5; i++) EXPECT_NEAR(got[i], expected[i], 1e-15) << i;
    EXPECT_EQ(s.moments, std::vector<double>{4});
    EXPECT_TRUE(Geometric(0.25).getProperties(0).moments.empty());
    EXPECT_EQ(failure([] { Geometric(0.25).getProperties(2); }),
              "For geometric distribution only computation of first moment is supported.");
}

TEST(HypoGeometric, OffersTheMeanAndVariatesOnly) {
    HypoGeometric h({0.5, 0.25});
    DistStats s = h.getProperties(1);
    EXPECT_EQ(s.mean, 6);
    EXPECT_EQ(s.moments, std::vector<double>{6});
    EXPECT_EQ(s.variance, 0);
    EXPECT_EQ(HypoGeometric({}).getMean(), 0);
    EXPECT_TRUE(std::isinf(HypoGeometric({0.5, 0}).getMean()));
    EXPECT_EQ(failure([&] { h.getProperties(2); }),
              "For geometric distribution only computation of first moment is supported.");
    for (auto call : std::vector<std::function<void()>>{[&] { h.evalPDF(1); }, [&] { h.evalCDF(1); },
                                                         [&] { h.evalCCDF(1); }, [&] { h.evalInverseCDF(0.5); }})
        EXPECT_EQ(failure(call), "Not supported!");

    // Variates are sums of geometric draws of the phases in order.
    h.setSeed(5);
    Rand reference(5);
    const double first = reference.geometric(0.5);
    EXPECT_EQ(h.generateVariate(), first + reference.geometric(0.25));
}
