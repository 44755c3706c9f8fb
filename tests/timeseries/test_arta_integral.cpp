#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <vector>

#include "distributions/dist.h"
#include "timeseries/arima.h"
#include "timeseries/arta.h"

using namespace velmora;

TEST(ARTAMapping, NormalMarginalKeepsTheBaseAutocorrelations) {
    Normal n(3, 2);
    const std::vector<double> rho = {0.7, -0.31, 0.0004, 0.123456789};
    EXPECT_EQ(arta_process_compute_autocorrelations(&n, rho), rho);
    ARTA a(new Normal(3, 2), {0.6, 0.2}, 0.0, 1.0);
    EXPECT_EQ(a.getAutocorrelations(1, 4), a.getBaseProcess()->getAutocorrelations(1, 4));
}

TEST(ARTAMapping, UniformMarginalUsesTheSineForm) {
    Uniform u(0, 1);
    const std::vector<double> mapped = arta_process_compute_autocorrelations(&u, {1.0, 0.0, 0.5, -0.5, 0.0005});
    EXPECT_DOUBLE_EQ(mapped[0], 1.0);
    EXPECT_EQ(mapped[1], 0.0);
    // 2 sin(pi/12) and its negative; the threshold does not apply here.
    EXPECT_DOUBLE_EQ(mapped[2], 0.5176380902050415);
    EXPECT_DOUBLE_EQ(mapped[3], -0.5176380902050415);
    EXPECT_DOUBLE_EQ(mapped[4], 2 * std::sin(0.0005 * M_PI / 6));
}

TEST(ARTAMapping, SmallBaseCorrelationsMapToExactlyZero) {
    Exponential e(1);
    const std::vector<double> mapped = arta_process_compute_autocorrelations(&e, {0.0005, -0.001, 0.0011});
    EXPECT_EQ(mapped[0], 0.0);
    EXPECT_EQ(mapped[1], 0.0);
    EXPECT_NE(mapped[2], 0.0);
}

TEST(ARTAMapping, LagZeroIsExactlyOneAndRangesHaveTheirLength) {
    ARTA a(new Exponential(1), {0.5}, 0.0, 1.0);
    const std::vector<double> withZero = a.getAutocorrelations(0, 3);
    ASSERT_EQ(withZero.size(), 4u);
    EXPECT_EQ(withZero[0], 1.0);
    const std::vector<double> tail = a.getAutocorrelations(2, 3);
    ASSERT_EQ(tail.size(), 2u);
    EXPECT_EQ(tail[0], withZero[2]);
    EXPECT_EQ(tail[1], withZero[3]);
}

// E[X1 X2] of X = F^-1(Phi(Z)) for standard normal pairs with correlation
// rho. Reference: numpy/scipy, Simpson's rule in both variables on 2001
// points of [-10, 10] with scipy.stats ppf and norm.cdf (converged to about
// 1e-13 against 801 points). The Romberg tolerance of 1e-4 per level leaves
// errors of a few 1e-6.
TEST(ARTAMapping, JointMomentsMatchAnIndependentQuadrature) {
    Gamma gamma(2.0, 1.5);
    Lognormal lognormal(0.0, 0.5);
    Weibull weibull(1.5, 2.0);
    struct Case {
        Dist* d;
        double rho;
        unsigned k, l;
        double expected;
    } cases[] = {
        {&gamma, 0.9, 1, 1, 13.008327255809801},      {&gamma, 0.5, 1, 1, 11.134951510596908},
        {&gamma, -0.3, 1, 1, 7.827321623358033},      {&gamma, 0.5, 2, 1, 58.64853846122634},
        {&lognormal, 0.9, 1, 1, 1.608014197485469},   {&lognormal, 0.5, 1, 1, 1.4549914146181366},
        {&lognormal, -0.3, 1, 1, 1.191246216612356},  {&weibull, 0.9, 1, 1, 4.60276302690904},
        {&weibull, 0.5, 1, 1, 3.9848186479425225},    {&weibull, -0.3, 1, 1, 2.8499580300023295},
    };
    for (const Case& c : cases)
        EXPECT_NEAR(arta_process_compute_autocorrelation_joint_moments(c.d, c.rho, c.k, c.l), c.expected,
                    1e-5 * c.expected)
            << c.d->getType() << " rho " << c.rho;
}

// Same quadrature; the AR(2) base 0.6, 0.2 has rho 0.75, 0.65, 0.54.
TEST(ARTAMapping, GammaMarginalAutocorrelationsMatchAnIndependentQuadrature) {
    ARTA a(new Gamma(2.0, 1.5), {0.6, 0.2}, 0.0, 1.0);
    const std::vector<double> rho = a.getAutocorrelations(1, 3);
    const double expected[] = {0.7307516376882981, 0.6266811694821111, 0.5145817637655234};
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(rho[i], expected[i], 2e-6);
}

// The cached form evaluates the same integrand at the same points in the
// same order, so both must agree far below the Romberg tolerance.
TEST(ARTAMapping, CachedIntegralEqualsTheDirectNestedEvaluation) {
    Gamma gamma(2.0, 1.5);
    Lognormal lognormal(0.0, 0.5);
    Triangular triangular(0.5, 4.0, 1.0);
    struct Case {
        Dist* d;
        double rho;
        unsigned k, l;
    } cases[] = {
        {&gamma, 0.5, 1, 1},      {&gamma, -0.3, 2, 1},     {&lognormal, 0.5, 1, 1},
        {&lognormal, 0.9, 1, 2},  {&triangular, 0.7, 1, 1}, {&triangular, -0.6, 2, 2},
    };
    for (const Case& c : cases) {
        const double direct = arta_process_compute_autocorrelation_joint_moments_direct(c.d, c.rho, c.k, c.l);
        const double cached = arta_process_compute_autocorrelation_joint_moments(c.d, c.rho, c.k, c.l);
        EXPECT_NEAR(cached, direct, 1e-12 * std::fabs(direct)) << c.d->getType() << " rho " << c.rho;
    }
    // A mapping over several lags shares one cache; each value still equals
    // its own direct computation.
    const std::vector<double> base = {0.8, 0.3, -0.2};
    const std::vector<double> mapped = arta_process_compute_autocorrelations(&triangular, base);
    const DistStats s = triangular.getProperties(0);
    for (std::size_t i = 0; i < base.size(); ++i) {
        const double direct =
            (arta_process_compute_autocorrelation_joint_moments_direct(&triangular, base[i], 1, 1) - s.mean * s.mean) /
            s.variance;
        EXPECT_NEAR(mapped[i], direct, 1e-12 * std::fabs(direct));
    }
}

TEST(ARTAMapping, DirectIntegrandsReadTheStoredState) {
    Exponential e(2);
    arta_process_compute_autocorrelation_joint_moments_direct(&e, 0.4, 2, 1);
    EXPECT_EQ(arta_process_compute_autocorrelation_double_integral_dist, &e);
    EXPECT_EQ(arta_process_compute_autocorrelation_double_integral_acorr, 0.4);
    EXPECT_EQ(arta_process_compute_joint_moments_k, 2u);
    EXPECT_EQ(arta_process_compute_joint_moments_l, 1u);
    // F^-1(Phi(0)) = log(2)/2 for rate 2: (log 2/2)^2 (log 2/2) phi2(0, 0; 0.4).
    const double q = std::log(2.0) / 2;
    const double phi2 = 1 / (2 * M_PI * std::sqrt(1 - 0.16));
    EXPECT_NEAR(arta_process_compute_autocorrelation_double_integral(0, 0), q * q * q * phi2, 1e-12);
    arta_process_compute_autocorrelation_double_integral_val = 0;
    EXPECT_EQ(arta_process_compute_autocorrelation_inner_integral(0, {}),
              arta_process_compute_autocorrelation_double_integral(0, 0));
}

#if defined(NDEBUG) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST(ARTAMapping, TenLagsOfAGammaMarginalTakeWellUnderASecond) {
    ARTA a(new Gamma(2.0, 1.5), {0.6, 0.2}, 0.0, 1.0);
    const auto start = std::chrono::steady_clock::now();
    const std::vector<double> rho = a.getAutocorrelations(1, 10);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_EQ(rho.size(), 10u);
    EXPECT_LT(seconds, 1.0);
}
#endif
