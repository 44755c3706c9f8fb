// ARTA fits: the inversion of the correlation mapping, whole fits on the
// closed-form uniform mapping, the shared marginal, the held transformed
// values, and the refusals.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "distributions/dist_gamma.h"
#include "distributions/dist_normal.h"
#include "distributions/dist_uniform.h"
#include "fitting/arimafit.h"
#include "fitting/artafit.h"
#include "fitting_helpers.h"
#include "timeseries/arima.h"
#include "timeseries/arta.h"
#include "traces/trace.h"

using namespace velmora;
using fitting_test::failureOf;
using fitting_test::yuleWalker;

TEST(ARTAFit, SearchInvertsTheCorrelationMapping) {
    // The normal mapping is the identity: the base values are the targets to
    // the tolerance of the search, a zero target stays exactly 0 and a
    // negative one is found in (-1, 0).
    Normal normal(0, 1);
    ARTAFit identity(std::vector<double>{0.5, 0, -0.3}, &normal, 1, 0);
    const std::vector<double> base = identity.arta_find_arma_autocorrelation(identity.ac);
    EXPECT_NEAR(base[0], 0.5, 1e-9);
    EXPECT_EQ(base[1], 0.0);
    EXPECT_NEAR(base[2], -0.3, 1e-9);
    EXPECT_TRUE(artafit_autocorrelation_cache.empty());

    // A gamma marginal: the targets are the mapped base values, and the
    // search comes back to them (round trip through the double integral).
    Gamma gamma(2.5, 1.5);
    ARTAFit roundTrip(std::vector<double>{}, &gamma, 1, 0);
    const std::vector<double> rho{0.6, -0.2};
    const std::vector<double> found =
        roundTrip.arta_find_arma_autocorrelation(roundTrip.arta_compute_autocorrelation_from_arma(rho));
    EXPECT_NEAR(found[0], rho[0], 1e-6);
    EXPECT_NEAR(found[1], rho[1], 1e-6);
}

TEST(ARTAFit, HeldTransformedValuesGiveBitIdenticalAutocorrelations) {
    // Values computed under a hold, with another marginal in between, equal
    // fresh ones; so do those of a second marginal held after the first.
    Gamma g(2.5, 1.5), other(2.0, 1.0);
    arta_process_hold_marginal(&g);
    const std::vector<double> held = arta_process_compute_autocorrelations(&g, {0.3, 0.8});
    const double between = arta_process_compute_autocorrelations(&other, {0.5})[0];
    const double heldAgain = arta_process_compute_autocorrelations(&g, {-0.4})[0];
    arta_process_hold_marginal(&other);
    const double otherHeld = arta_process_compute_autocorrelations(&other, {0.5})[0];
    arta_process_release_marginal();
    EXPECT_EQ(held, arta_process_compute_autocorrelations(&g, {0.3, 0.8}));
    EXPECT_EQ(heldAgain, arta_process_compute_autocorrelations(&g, {-0.4})[0]);
    EXPECT_EQ(between, otherHeld);
    const DistStats s = g.getProperties(0);
    EXPECT_EQ(held[0],
              (arta_process_compute_autocorrelation_joint_moments_direct(&g, 0.3, 1, 1) - s.mean * s.mean) / s.variance);
}

TEST(ARTAFit, FitsEveryOrderAndHandsTheMarginalToTheWinner) {
    // Uniform marginal, base AR(2) with 0.6 and 0.2: the ten targets are
    // 2 sin(pi rho(k)/6) of the exact base autocorrelations.
    std::vector<double> targets = yuleWalker(0.75, 0.6, 0.2, 10);
    for (double& r : targets) r = 2 * std::sin(r * M_PI / 6);
    Uniform* marginal = new Uniform(0, 1);
    ARTAFit fit(targets, marginal, 1, 3, 0, 0);
    testing::internal::CaptureStdout();
    const std::unique_ptr<ARTA> best(fit.fit_arta_model());
    const std::string out = testing::internal::GetCapturedStdout();
    for (const char* order : {"): ARMA(1, 0)\n", "): ARMA(2, 0)\n", "): ARMA(3, 0)\n"})
        EXPECT_NE(out.find(order), std::string::npos) << order;
    EXPECT_EQ(fit.pRange.current, 3u);
    EXPECT_EQ(best->getDistribution(), marginal);
    const std::vector<double> reached = best->getAutocorrelations(1, 10);
    for (std::size_t i = 0; i < targets.size(); ++i) EXPECT_NEAR(reached[i], targets[i], 1e-3) << "lag " << i + 1;
    EXPECT_NEAR(best->getBaseProcess()->getAutocovariance(0), 1, 1e-12);
}

TEST(ARTAFit, SelectionKeepsTheFirstOfTheBestStationaryModels) {
    Normal normal(0, 1);
    ARTAFit fit(std::vector<double>{0.5, 0.25}, &normal, 1, 0);
    ARIMAFit::libvelmora_arimafit_desired_ac = {0.5, 0.25};
    auto model = [&](double phi) { return std::make_unique<ARTA>(new Normal(0, 1), std::vector<double>{phi}, 0.0, 1.0); };
    const auto explosive = model(1.25), exact = model(0.5), same = model(0.5), off = model(0.4);
    EXPECT_EQ(fit.select_best_arta_model({explosive.get(), off.get(), exact.get(), same.get()}), exact.get());
    EXPECT_EQ(fit.select_best_arta_model({explosive.get()}), nullptr);
}

TEST(ARTAFit, RefusesWhatItCannotFit) {
    Trace shortTrace({1, 3, 2, 5, 4});
    Normal normal(0, 1);
    const struct {
        const char* what;
        std::function<void()> action;
        const char* failure;
    } cases[] = {
        {"pMin > pMax", [&] { ARTAFit(std::vector<double>{0.5}, &normal, 2, 1, 0, 0); },
         "artafit: Invalid range of ARMA orders."},
        {"qMin > qMax", [&] { ARTAFit(&shortTrace, &normal, 2, 1, 1, 1, 0); }, "artafit: Invalid range of ARMA orders."},
        {"no trace", [&] { ARTAFit(nullptr, &normal, 2, 1, 0); }, "artafit: No trace."},
        {"no marginal", [&] { ARTAFit(std::vector<double>{0.5}, nullptr, 1, 0).fit_arta_model(); },
         "artafit: No marginal distribution."},
        {"no targets", [&] { ARTAFit(std::vector<double>{}, &normal, 1, 0).fit_arta_model(); },
         "artafit: No target autocorrelations."},
        {"lags beyond the trace", [&] { ARTAFit(&shortTrace, &normal, 4, 1, 0).fit_arta_model(); },
         "artafit: Too many lags for the trace."},
        {"target 1", [&] { ARTAFit(std::vector<double>{0.5, 1}, &normal, 1, 0).fit_arta_model(); },
         "artafit: Target autocorrelations must lie in (-1, 1)."},
        // ARMA(1, 1) on one negative lag ends outside the unit circle.
        {"no stationary model", [&] { ARTAFit(std::vector<double>{-0.2}, &normal, 1, 1).fit_arta_model(); },
         "artafit: No stationary ARMA model has been found."},
    };
    testing::internal::CaptureStdout();
    for (const auto& c : cases) EXPECT_EQ(failureOf(c.action), c.failure) << c.what;
    testing::internal::GetCapturedStdout();
}
