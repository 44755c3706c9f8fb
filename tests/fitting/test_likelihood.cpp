// Joint log-likelihoods and the ARMA fit by likelihood: the Gaussian ARMA
// density against the full covariance matrix, the copula's identities, the
// partial-autocorrelation map, and the accuracy of the fit.
#include <cmath>

#include "distributions/dist_erlang.h"
#include "distributions/dist_hypererlang.h"
#include "distributions/dist_lognormal.h"
#include "distributions/dist_normal.h"
#include "core/process.h"
#include "distributions/dist.h"
#include "fitting/armaml.h"
#include "fitting/distfit.h"
#include "fitting/mapem.h"
#include "fitting/modelchoice.h"
#include "fitting/likelihood.h"
#include "fitting_helpers.h"
#include "markov/chep.h"
#include "numerics/random.h"
#include "timeseries/arima.h"

using namespace velmora;

namespace {

// sin(1.7 t), t = 1 .. n: a fixed series with every kind of step.
std::vector<double> sineSeries(unsigned n) {
    std::vector<double> z;
    for (unsigned t = 1; t <= n; ++t) z.push_back(std::sin(1.7 * t));
    return z;
}

// n values of an ARMA(1, 1) after 100 discarded, standardised like normal
// scores to mean 0 and variance 1.
std::vector<double> arma11(double phi, double theta, unsigned n, unsigned long seed) {
    Rand r(seed);
    std::vector<double> x;
    double previous = 0, shock = 0;
    for (unsigned k = 0; k < n + 100; ++k) {
        const double e = r.normal(0, 1);
        previous = phi * previous + e + theta * shock;
        shock = e;
        if (k >= 100) x.push_back(previous);
    }
    double m = 0, v = 0;
    for (double t : x) m += t;
    m /= n;
    for (double t : x) v += (t - m) * (t - m);
    for (double& t : x) t = (t - m) / std::sqrt(v / n);
    return x;
}

}  // namespace

TEST(Likelihood, GaussianArmaMatchesTheFullCovariance) {
    // scipy.stats.multivariate_normal.logpdf with the Toeplitz matrix of the
    // autocovariances (psi weights summed over 5000 terms).
    const std::vector<double> seven = {0.3, -1.2, 0.8, 1.5, 0.1, -0.4, 0.9};
    const std::vector<double> sixty = sineSeries(60);
    const struct {
        std::vector<double> ar, ma;
        double variance;
        const std::vector<double>* z;
        double expected;
    } cases[] = {
        {{0.5, -0.3}, {0.4, 0.2}, 1.3, &seven, -10.772671240303},
        {{0.7}, {0.4}, 1.0, &seven, -11.575932589627},
        {{}, {0.6}, 0.8, &seven, -9.340249811635},
        {{0.6}, {}, 0.8, &seven, -10.539710854147},
        // Long enough for the predictor coefficients to settle.
        {{}, {0.3}, 1.0, &sixty, -70.239055119246},
        {{0.5}, {0.3}, 0.7, &sixty, -73.868288708461},
        {{0.2, 0.1}, {-0.5, 0.3}, 1.0, &sixty, -76.157243977340},
    };
    for (const auto& c : cases) {
        const ARIMA model(c.ar, c.ma, 0, 0, c.variance, 0, "test");
        EXPECT_NEAR(likelihood::gaussian_arma(model, *c.z), c.expected, 1e-9) << c.ar.size() << "," << c.ma.size();
    }
}

TEST(Likelihood, CopulaIdentities) {
    const std::vector<double> x = {1.2, 0.7, 2.5, 1.9, 0.4, 1.1, 3.0, 0.9};
    const ARIMA base({0.5}, {0.2}, 0, 0, 0.6, 0, "test");
    // A normal marginal makes the copula the Gaussian ARMA of the scaled values.
    Normal normal(1.5, 0.8);
    std::vector<double> scaled;
    for (double v : x) scaled.push_back((v - 1.5) / 0.8);
    EXPECT_NEAR(likelihood::copula(&normal, base, x),
                likelihood::gaussian_arma(base, scaled) - x.size() * std::log(0.8), 1e-7);
    // White noise as the base leaves the renewal sum.
    Lognormal lognormal(0.1, 0.6);
    const ARIMA noise({}, {}, 0, 0, 1, 0, "test");
    EXPECT_NEAR(likelihood::copula(&lognormal, noise, x), likelihood::renewal(&lognormal, x), 1e-9);
}

TEST(Likelihood, PartialAutocorrelationsGiveStationaryCoefficients) {
    // Durbin-Levinson: phi_2 = r_2, phi_1 = r_1 (1 - r_2); three terms by hand.
    const struct {
        std::vector<double> r, expected;
    } cases[] = {
        {{0.5}, {0.5}},
        {{0.5, 0.4}, {0.5 * 0.6, 0.4}},
        {{0.5, 0.4, -0.2}, {0.3 + 0.2 * 0.4, 0.4 + 0.2 * 0.3, -0.2}},
    };
    for (const auto& c : cases) {
        const std::vector<double> got = armaml::from_partial_autocorrelations(c.r);
        ASSERT_EQ(got.size(), c.expected.size());
        for (std::size_t k = 0; k < got.size(); ++k) EXPECT_NEAR(got[k], c.expected[k], 1e-15);
        EXPECT_TRUE(ARIMA(got, {}, 0, 0, 1, 0, "test").isStationary());
    }
}

TEST(Likelihood, ArmaFitRecoversAKnownModelWithUnitVariance) {
    const std::vector<double> x = arma11(0.7, 0.4, 5000, 42);
    const armaml::Fit fit = armaml::fit(x, 1, 1);
    EXPECT_NEAR(fit.model->getARCoefficients()[0], 0.7, 0.04);
    EXPECT_NEAR(fit.model->getMACoefficients()[0], 0.4, 0.04);
    EXPECT_NEAR(fit.model->compute_mean_and_variance().second, 1.0, 1e-12);
    // AIC keeps an MA term for these data.
    std::vector<armaml::Fit> table;
    const armaml::Fit chosen = armaml::fit_by_aic(x, 1, 2, 0, 1, &table);
    EXPECT_EQ(table.size(), 4u);
    EXPECT_GE(chosen.q, 1u);
    EXPECT_EQ(velmora_test::failureOf([] { armaml::fit({0.1, 0.2}, 1, 1); }),
              "armaml: Cannot fit an ARMA(1, 1) to 2 values: fewer than its parameters and one.");
}

TEST(ModelChoice, BicPicksTheClassThatMadeTheData) {
    // Independent lognormal values: the renewal model; an ARMA(1, 1) series
    // (normal marginal): ARTA; the order-4 Erlang-branch MAP: a MAP.
    Rand r(5);
    std::vector<double> independent;
    for (unsigned k = 0; k < 3000; ++k) independent.push_back(std::exp(0.3 + 0.8 * r.normal(0, 1)));
    const std::vector<double> correlated = arma11(0.7, 0.4, 3000, 8);
    const mapem::Result map = mapem::model({1, 3}, {5.0, 1.5}, {{0.8, 0.2, 0.7, 0.3}});
    const std::vector<double> markov = mapem::simulate(map, 3000, 4).first;
    const struct {
        const std::vector<double>* data;
        const char* family;
        unsigned mapOrder;
        const char* expected;
    } cases[] = {
        {&independent, "lognormal", 3, "renewal"},
        {&correlated, "normal", 0, "ARTA"},
        {&markov, "gamma", 4, "MAP"},
    };
    for (const auto& c : cases) {
        std::unique_ptr<Dist> marginal(distfit::fit_distribution(c.family, *c.data));
        const unsigned k = distfit::parameter_count(marginal.get());
        const modelchoice::Choice choice =
            modelchoice::choose(std::move(marginal), k, *c.data, modelchoice::Orders(), c.mapOrder);
        EXPECT_EQ(choice.candidates[choice.chosen].name, c.expected) << c.family;
        for (const auto& candidate : choice.candidates)
            if (candidate.fitted) {
                EXPECT_LE(choice.candidates[choice.chosen].bic, candidate.bic);
            }
        EXPECT_EQ(choice.logLikelihood, choice.candidates[choice.chosen].logLikelihood);
        ASSERT_TRUE(choice.model != nullptr);
    }
}

TEST(Likelihood, ChepOfOneBranchIsTheArtaOfItsErlang) {
    // A type-2 CHEP of one branch places each value inside an Erlang by the
    // base process, as an ARTA with that Erlang marginal does; type 1 has no
    // copula form.
    const std::vector<double> x = {0.8, 1.6, 0.3, 2.2, 1.1, 0.9, 1.7};
    const ARIMA base({0.6}, {}, 0, 0, 0.64, 0, "test");
    chep type2(new HyperErlang({3}, {2.5}, {1.0}), new ARIMA(base), CHEP_TYPE_2);
    Erlang erlang(3, 2.5);
    EXPECT_NEAR(likelihood::chep_type2(type2, x), likelihood::copula(&erlang, base, x), 1e-9);
    chep type1(new HyperErlang({3}, {2.5}, {1.0}), new ARIMA(base), CHEP_TYPE_1);
    EXPECT_EQ(velmora_test::failureOf([&] { likelihood::chep_type2(type1, x); }),
              "likelihood: The copula likelihood is that of a CHEP of type 2.");
}

TEST(Likelihood, WhiteNoiseFitIsTheIndependentNormalDensity) {
    // ARMA(0, 0) has nothing to search: log L = sum log phi(z).
    const std::vector<double> z = sineSeries(40);
    double expected = 0;
    for (double v : z) expected += -0.5 * v * v - 0.91893853320467274178;
    const armaml::Fit fit = armaml::fit(z, 0, 0);
    EXPECT_NEAR(fit.logLikelihood, expected, 1e-9);
    EXPECT_NEAR(fit.aic, -2 * expected, 1e-9);
}
