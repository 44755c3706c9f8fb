// ARMA fits to exact autocorrelations recover the coefficients; the penalty
// and the refusals of bad targets.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "fitting/arimafit.h"
#include "fitting_helpers.h"
#include "timeseries/arima.h"

using namespace velmora;
using fitting_test::failureOf;
using fitting_test::yuleWalker;

TEST(ARIMAFit, RecoversCoefficientsFromExactAutocorrelations) {
    // rho(1): phi for AR(1), phi1/(1 - phi2) for AR(2), and
    // (1 + phi theta)(phi + theta)/(1 + 2 phi theta + theta^2) for ARMA(1, 1)
    // (Box and Jenkins, Time Series Analysis, 3.2 and 3.4). The MA(1) row
    // has rho(1) = theta/(1 + theta^2) and a zero target at lag 2, and starts
    // from 0.8 although p = 0.
    const double arma = (1 + 0.7 * 0.4) * (0.7 + 0.4) / (1 + 2 * 0.7 * 0.4 + 0.4 * 0.4);
    const struct {
        const char* what;
        unsigned p, q;
        std::vector<double> targets, coefficients;
        const char* kind;
    } cases[] = {
        {"AR(1)", 1, 0, {0.5, 0.25, 0.125}, {0.5}, "ar"},
        {"AR(2)", 2, 0, yuleWalker(0.6 / 0.8, 0.6, 0.2, 5), {0.6, 0.2}, "ar"},
        {"ARMA(1,1)", 1, 1, yuleWalker(arma, 0.7, 0, 5), {0.7, 0.4}, "arma"},
        {"MA(1)", 0, 1, {0.5 / 1.25, 0}, {0.5}, "ma"},
    };
    for (const auto& c : cases) {
        const std::unique_ptr<ARIMA> m(ARIMAFit::fit_arma_model(c.targets, c.p, c.q));
        std::vector<double> got = m->getARCoefficients();
        for (double theta : m->getMACoefficients()) got.push_back(theta);
        ASSERT_EQ(got.size(), c.coefficients.size()) << c.what;
        for (std::size_t i = 0; i < got.size(); ++i) EXPECT_NEAR(got[i], c.coefficients[i], 1e-3) << c.what;
        EXPECT_EQ(m->getClass(), c.kind) << c.what;
        EXPECT_EQ(m->getVariance(), 1) << c.what;
        EXPECT_EQ(ARIMAFit::libvelmora_arimafit_desired_ac, c.targets) << c.what;
    }
}

TEST(ARIMAFit, PenaltyPushesTheRootsOutAndGrows) {
    // Near-unit targets pull phi towards 1: the weight grows tenfold at
    // every evaluation that pays, and the result stays stationary.
    const std::unique_ptr<ARIMA> m(ARIMAFit::fit_arma_model({0.9999, 0.9999, 0.9999}, 1, 0));
    EXPECT_GE(ARIMAFit::libvelmora_arimafit_arma_penalty, 1e10);
    EXPECT_TRUE(m->isStationary());

    // The objective at a point inside the circle pays w (1/1.25 - 1)^2 on
    // top of the error, and raises the weight for the next call.
    ARIMAFit::libvelmora_arimafit_desired_ac = {0.5};
    ARIMAFit::libvelmora_arimafit_arma_dim = {1, 0};
    ARIMAFit::libvelmora_arimafit_arma_penalty = 2;
    EXPECT_NEAR(ARIMAFit::arma_sum_of_squares({1.25}), std::pow(1.25 / 0.5 - 1, 2) + 2 * 0.04, 1e-12);
    EXPECT_EQ(ARIMAFit::libvelmora_arimafit_arma_penalty, 20);
    EXPECT_NEAR(ARIMAFit::arma_sum_of_squares({0.25}), 0.25, 1e-15);
    EXPECT_EQ(ARIMAFit::libvelmora_arimafit_arma_penalty, 20);
}

TEST(ARIMAFit, RefusesBadTargetsAndCoefficientCounts) {
    const struct {
        std::vector<double> targets;
        const char* failure;
    } cases[] = {
        {{}, "arimafit: No target autocorrelations."},
        {{0.5, 1.0}, "arimafit: Target autocorrelations must lie in (-1, 1)."},
        {{-1.0}, "arimafit: Target autocorrelations must lie in (-1, 1)."},
        {{NAN}, "arimafit: Target autocorrelations must lie in (-1, 1)."},
    };
    for (const auto& c : cases) EXPECT_EQ(failureOf([&] { delete ARIMAFit::fit_arma_model(c.targets, 1, 0); }), c.failure);
    EXPECT_EQ(failureOf([] { delete ARIMAFit::construct_arma_model({0.1, 0.2}, 1, 0); }),
              "arimafit: Invalid number of ARMA coefficients.");
}
