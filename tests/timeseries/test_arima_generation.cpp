#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "timeseries/arima.h"

using namespace velmora;

// One million values of the example ARMA(2,1) (phi = 0.6, -0.2; theta = 0.5;
// unit noise variance; mean 2). The long-run variance
// sigma^2 (1 + theta)^2 / (1 - phi_1 - phi_2)^2 = 6.25 puts the standard error
// of the sample mean at 0.0025; the sample autocorrelations have standard
// errors of about 0.002. The tolerances are about five of these.
TEST(ARIMA, MillionValuesOfTheExampleMatchTheAnalyticStatistics) {
    ARIMA m(std::string(VELMORA_SOURCE_DIR) + "/examples/arma.xml", FORMAT_XML);
    ASSERT_EQ(m.getProcessDescription(), "ARIMA(2,0,1)");
    ASSERT_TRUE(m.isStationary());
    const unsigned n = 1000000;
    std::vector<double> x(n);
    m.initRandomNumberGeneration(4711);
    for (unsigned i = 0; i < n; ++i) x[i] = m.getNextRandomVariate();

    double sum = 0;
    for (double v : x) sum += v;
    const double mean = sum / n;
    double ss = 0;
    for (double v : x) ss += (v - mean) * (v - mean);
    const double variance = ss / n;

    // gamma(0) and rho(1..10) from the psi-weight sums of the analysis tests.
    const double rho[11] = {1, 0.67142857142857182, 0.20285714285714293, -0.012571428571428584,
                            -0.048114285714285727, -0.026354285714285719, -0.0061897142857142871,
                            0.001557028571428574, 0.0021721600000000011, 0.00099189028571428648,
                            0.00016070217142857132};
    EXPECT_NEAR(mean, 2.0, 0.0125);
    EXPECT_NEAR(variance, 2.4305555555555549, 0.03);
    for (unsigned k = 1; k <= 10; ++k) {
        double c = 0;
        for (unsigned t = 0; t + k < n; ++t) c += (x[t] - mean) * (x[t + k] - mean);
        EXPECT_NEAR(c / ss, rho[k], 0.01) << "lag " << k;
    }
}
