// Tests of multivariate normal variates: the order in which the standard
// normal values enter, and the sample mean and covariance.
#include <gtest/gtest.h>

#include <cmath>

#include "numerics/matrix.h"
#include "numerics/random.h"

using namespace velmora;

// Covariance [[4, 1.2], [1.2, 1]] has the Cholesky factor [[2, 0], [0.6, 0.8]].
TEST(Rand, MultivariateNormalIsMeanPlusCholeskyFactorTimesNormals) {
    const Vector mean(std::vector<double>{1.0, -2.0}, false);
    const Matrix covariance(std::vector<std::vector<double>>{{4.0, 1.2}, {1.2, 1.0}});

    Rand r(31UL), ref(31UL);
    for (int i = 0; i < 5; ++i) {
        const Vector x = r.multivariate_normal(mean, covariance);
        const double z0 = ref.normal(0.0, 1.0);
        const double z1 = ref.normal(0.0, 1.0);
        ASSERT_EQ(x.getNumberEntries(), 2u);
        EXPECT_NEAR(x[0], 1.0 + 2.0 * z0, 1e-12);
        EXPECT_NEAR(x[1], -2.0 + 0.6 * z0 + 0.8 * z1, 1e-12);
    }

    const int n = 100000;
    double s0 = 0, s1 = 0, s00 = 0, s01 = 0, s11 = 0;
    for (int i = 0; i < n; ++i) {
        const Vector x = r.multivariate_normal(mean, covariance);
        s0 += x[0];
        s1 += x[1];
        s00 += x[0] * x[0];
        s01 += x[0] * x[1];
        s11 += x[1] * x[1];
    }
    const double m0 = s0 / n, m1 = s1 / n;
    EXPECT_NEAR(m0, 1.0, 4.5 * std::sqrt(4.0 / n));
    EXPECT_NEAR(m1, -2.0, 4.5 * std::sqrt(1.0 / n));
    EXPECT_NEAR(s00 / n - m0 * m0, 4.0, 0.08);
    EXPECT_NEAR(s01 / n - m0 * m1, 1.2, 0.04);
    EXPECT_NEAR(s11 / n - m1 * m1, 1.0, 0.02);
}
