// Digamma and trigamma against scipy.special (SciPy 1.10.1): digamma(x) and
// polygamma(1, x), on both sides of the switch to the asymptotic series.
#include "numerics/misc_polygamma.h"

#include <cmath>

#include "support/test_support.h"

using namespace velmora;

TEST(Polygamma, MatchesScipyOnBothSidesOfTheSeries) {
    struct Row {
        double x, digamma, trigamma;
    };
    const Row rows[] = {
        {1e-3, -1000.5755719318103, 1000001.6425331959},
        {0.5, -1.9635100260214235, 4.93480220054468},
        {1, -0.5772156649015329, 1.6449340668482266},
        {2.5, 0.7031566406452432, 0.4903577561002349},
        {9.99, 2.250700372831201, 0.10527695014824176},
        {10, 2.251752589066721, 0.10516633568168576},
        {123.4, 4.8113737751162775, 0.008136651610865263},
    };
    for (const Row& r : rows) {
        EXPECT_NEAR(digamma(r.x), r.digamma, 1e-13 * std::fabs(r.digamma)) << r.x;
        EXPECT_NEAR(trigamma(r.x), r.trigamma, 1e-13 * r.trigamma) << r.x;
    }
    EXPECT_TRUE(std::isnan(digamma(0)));
    EXPECT_TRUE(std::isnan(trigamma(-1)));
}
