#include "distributions/dist.h"
#include "distributions/dist_exponential.h"
#include "distributions/dist_gamma.h"
#include "distributions/dist_lognormal.h"
#include "distributions/dist_normal.h"
#include "distributions/dist_triangular.h"
#include "distributions/dist_uniform.h"
#include "distributions/dist_weibull.h"
#include "timeseries/arima.h"
#include "timeseries/arta.h"
#include "support/test_support.h"

using namespace velmora;

// Normal marginals keep the base autocorrelations, uniform ones take 2 sin(rho pi/6) with no threshold, all
// others map |rho| <= 0.001 to zero.
TEST(ARTAMapping, MappingFollowsTheMarginalFamily) {
    Normal n(3, 2);
    Uniform u(0, 1);
    Exponential e(1);
    const struct { Dist* d; double rho, expected; } cases[] = {
        {&n, 0.7, 0.7}, {&n, -0.31, -0.31}, {&n, 0.0004, 0.0004},
        {&u, 1.0, 1.0}, {&u, 0.0, 0.0}, {&u, 0.5, 0.5176380902050415}, {&u, -0.5, -0.5176380902050415},
        {&u, 0.0005, 2 * std::sin(0.0005 * M_PI / 6)},
        {&e, 0.0005, 0.0}, {&e, -0.001, 0.0},
    };
    for (const auto& c : cases)
        EXPECT_DOUBLE_EQ(arta_process_compute_autocorrelations(c.d, {c.rho})[0], c.expected)
            << c.d->getType() << " rho " << c.rho;
    EXPECT_NE(arta_process_compute_autocorrelations(&e, {0.0011})[0], 0.0);
    ARTA a(new Normal(3, 2), {0.6, 0.2}, 0.0, 1.0);
    EXPECT_EQ(a.getAutocorrelations(1, 4), a.getBaseProcess()->getAutocorrelations(1, 4));
    // Lag 0 is exactly 1 whatever the marginal.
    const std::vector<double> withZero = ARTA(new Exponential(1), {0.5}, 0.0, 1.0).getAutocorrelations(0, 3);
    EXPECT_TRUE(withZero.size() == 4u && withZero[0] == 1.0);
}

// E[X1 X2] of X = F^-1(Phi(Z)) for standard normal pairs with correlation rho. Reference: numpy/scipy, Simpson's
// rule in both variables on 2001 points of [-10, 10] with scipy.stats ppf and norm.cdf (converged to about 1e-13
// against 801 points). The Romberg tolerance of 1e-4 per level leaves errors of a few 1e-6.
TEST(ARTAMapping, JointMomentsMatchAnIndependentQuadrature) {
    Gamma gamma(2.0, 1.5);
    Lognormal lognormal(0.0, 0.5);
    Weibull weibull(1.5, 2.0);
    const struct { Dist* d; double rho; unsigned k, l; double expected; } cases[] = {
        {&gamma, 0.9, 1, 1, 13.008327255809801},     {&gamma, -0.3, 1, 1, 7.827321623358033},
        {&gamma, 0.5, 2, 1, 58.64853846122634},      {&lognormal, 0.9, 1, 1, 1.608014197485469},
        {&lognormal, -0.3, 1, 1, 1.191246216612356}, {&weibull, 0.5, 1, 1, 3.9848186479425225},
    };
    for (const auto& c : cases)
        EXPECT_NEAR(arta_process_compute_autocorrelation_joint_moments(c.d, c.rho, c.k, c.l), c.expected,
                    1e-5 * c.expected) << c.d->getType() << " rho " << c.rho;
    // Same quadrature; the AR(2) base 0.6, 0.2 has rho 0.75, 0.65, 0.54.
    const std::vector<double> rho = ARTA(new Gamma(2.0, 1.5), {0.6, 0.2}, 0.0, 1.0).getAutocorrelations(1, 3);
    const double expected[] = {0.7307516376882981, 0.6266811694821111, 0.5145817637655234};
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(rho[i], expected[i], 2e-6);
}
