#include "numerics/random.h"
#include "timeseries/arima.h"
#include "support/test_support.h"

using namespace velmora;
using namespace velmora_test;

namespace {
ARIMA model(std::vector<double> ar, std::vector<double> ma, double variance = 1.0, double d = 0.0, double mean = 0.0,
            double intercept = 0.0) {
    return ARIMA(ar, ma, d, mean, variance, intercept, "");
}
}  // namespace

// Reference autocovariances gamma(0..4), past max(p, q) for every model: sigma^2 sum_j psi_j psi_{j+k} over the
// first 20000 psi-weights of X(t) = sum phi_i X(t-i) + e(t) + sum theta_j e(t-j), computed with numpy
// (the figures of statsmodels arma_acovf with ar = [1, -phi], ma = [1, theta]).
TEST(ARIMA, AutocovariancesAndAutocorrelationsMatchPsiWeightSums) {
    struct Case { const char* name; std::vector<double> ar, ma; double variance; std::vector<double> gamma; };
    const Case cases[] = {
        {"AR(1)", {0.5}, {}, 1.0,
         {1.333333333333, 0.6666666666667, 0.3333333333333, 0.1666666666667, 0.08333333333333}},
        {"white noise", {}, {}, 3.0, {3, 0, 0, 0, 0}},
        {"MA(2)", {}, {0.4, -0.3}, 2.0, {2.5, 0.56, -0.6, 0, 0}},
        {"AR(2)", {0.5, 0.3}, {}, 1.0, {2.24358974359, 1.602564102564, 1.474358974359, 1.217948717949, 1.051282051282}},
        {"ARMA(1,1)", {0.7}, {0.4}, 1.5,
         {5.058823529412, 4.141176470588, 2.898823529412, 2.029176470588, 1.420423529412}},
        {"ARMA(2,1)", {0.6, -0.2}, {0.5}, 1.0,
         {2.430555555556, 1.631944444444, 0.4930555555556, -0.03055555555556, -0.1169444444444}},
        {"ARMA(1,3)", {-0.5}, {0.2, 0.4, -0.3}, 1.0,
         {1.833333333333, -1.001666666667, 0.9908333333333, -0.7954166666667, 0.3977083333333}},
        {"ARMA(3,2)", {0.4, -0.2, 0.1}, {0.3, 0.25}, 0.8,
         {1.288144173332, 0.7734737268401, 0.3291080287537, 0.1057628834666, 0.05383092031994}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ARIMA m = model(c.ar, c.ma, c.variance);
        std::vector<double> gamma = m.computeAutocovariances(4), rho = m.computeAutocorrelations(4);
        ASSERT_TRUE(gamma.size() == 5u && rho.size() == 5u);
        for (unsigned k = 0; k <= 4; ++k) {
            EXPECT_NEAR(gamma[k], c.gamma[k], 1e-10) << "lag " << k;
            EXPECT_NEAR(rho[k], c.gamma[k] / c.gamma[0], 1e-10) << "lag " << k;
        }
        // Fewer lags than the AR order give exactly that many.
        EXPECT_EQ(m.computeAutocovariances(1).size(), 2u);
    }
    // Ranges and single lags come from the same computation.
    ARIMA m = model({0.5}, {});
    EXPECT_EQ(m.getAutocorrelations(2, 3), (std::vector<double>{0.25, 0.125}));
    EXPECT_EQ(m.getAutocorrelation(3), 0.125);
    EXPECT_TRUE(m.getAutocorrelations(6, 5).empty());
    // Fractional noise: the running product of (k - 1 + d) / (k - d).
    std::vector<double> rho = model({}, {}, 1.0, 0.25).computeAutocorrelations(3);
    ASSERT_EQ(rho.size(), 4u);
    EXPECT_TRUE(rho[0] == 1.0 && rho[1] == 1.0 / 3.0) << rho[1];
    EXPECT_DOUBLE_EQ(rho[3], (0.25 * 1.25 * 2.25) / (0.75 * 1.75 * 2.75));
}

TEST(ARIMA, StationarityLooksAtTheARRootsOnly) {
    const std::pair<std::vector<double>, bool> cases[] = {
        {{}, true}, {{0.5}, true}, {{1.0}, false},  // root on the unit circle: the comparison is strict
        {{0.5, 0.3}, true}, {{0.5, 0.6}, false}, {{0.4, -0.2, 0.1}, true},
    };
    for (const auto& c : cases) EXPECT_EQ(model(c.first, {0.9, 3.0}).isStationary(), c.second) << c.first.size();
    // A zero last coefficient leaves the polynomial without its leading term.
    std::string message = failureOf([] { model({0.5, 0.0}, {}).isStationary(); });
    EXPECT_NE(message.find("Leading coefficient must not be zero."), std::string::npos) << message;
}

TEST(ARIMA, MomentsAreThoseOfTheNormalMarginal) {
    ARIMA m = model({0.5}, {}, 1.0, 0.0, 2.0);  // N(2, 4/3)
    EXPECT_EQ(m.getMoments(0, 1), (std::vector<double>{1.0, 2.0}));
    EXPECT_NEAR(m.getMoments(2, 2).at(0), 4.0 + 4.0 / 3.0, 1e-12);
    EXPECT_TRUE(m.getMoments(3, 2).empty());
    EXPECT_NEAR(m.evalPDF(2.0), 1.0 / std::sqrt(2 * M_PI * 4.0 / 3.0), 1e-12);
    // The intercept enters the mean as intercept/(1 - sum phi).
    EXPECT_DOUBLE_EQ(model({0.5}, {}, 1.0, 0.0, 3.0, 1.0).compute_mean_and_variance().first, 5.0);
    EXPECT_EQ(failureOf([] { model({0.5, 0.5}, {}, 1.0, 0.0, 3.0, 7.0).compute_mean_and_variance(); }),
              "misc_linalg: Singular matrix.");
}

TEST(ARIMA, DistributionWalkEndsForEveryRange) {
    ARIMA m = model({0.5}, {});
    Distribution full = m.computeDistribution(0, 1);
    EXPECT_GE(full.cdf.size(), 100u);
    EXPECT_LE(full.cdf.size(), 101u);
    EXPECT_DOUBLE_EQ(full.pdf[10].first, 0.1);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(m.computeDistribution(0.5, 0.5).cdf.size(), 1u);
    EXPECT_TRUE(m.computeDistribution(nan, 1).cdf.empty());
    EXPECT_TRUE(m.computeDistribution(0, nan).cdf.empty());
    EXPECT_LE(m.computeDistribution(0, std::numeric_limits<double>::infinity()).cdf.size(), 2u);
    EXPECT_LE(m.computeDistribution(1e17, 1e17 + 16).cdf.size(), 202u);
    EXPECT_EQ(failureOf([&] { m.computeDistribution(1, 0); }), "arima: Invalid range for distribution.");
}

TEST(ARIMA, OperationsRefuseWhatTheModelCannotDo) {
    ARIMA integrated = model({0.5}, {0.2}, 1.0, 1.0), plain = model({0.5}, {0.2});
    const std::string distribution = "arima: Computation of distribution only supported for ARMA processes.";
    const std::pair<std::function<void()>, std::string> cases[] = {
        {[&] { integrated.computeAutocovariances(3); },
         "arima: Computation of autocovariance is only implemented for ARMA models."},
        {[&] { integrated.compute_mean_and_variance(); }, distribution},
        {[&] { integrated.evalCDF(0); }, distribution}, {[&] { integrated.toString(FORMAT_XML); }, distribution},
        {[] { model({0.5}, {}, 1.0, 0.3).computeAutocorrelations(2); }, "arima: Not implemented."},
        {[] { model({}, {}, 1.0, -0.5).computeAutocorrelations(2); }, "arima: Not implemented."},
        {[&] { integrated.initRandomNumberGeneration(1); },
         "arima: Random Number Generation only supported for ARMA models."},
        {[&] { plain.getNextRandomVariate(); }, "arima: Initialize Random Number Generation first."},
        {[&] { plain.getJointMoments(1, 2); }, "arima: Computation of Joint Moments not supported for ARIMA."},
        {[&] { plain.computeLikelihood(nullptr); }, "arima: Not implemented."},
        {[&] { plain.toString(static_cast<format>(2)); }, "arima: Output format is not supported for ARMA models."},
        {[&] { plain.load("unused", static_cast<format>(2)); }, "arima: Format not supported!"},
    };
    for (const auto& c : cases) EXPECT_EQ(failureOf(c.first), c.second);
}

// The state starts from one multivariate normal draw of the p last values (each of mean `mean`, with the
// stationary covariance), then q innovations; each value is a fresh innovation plus the AR and MA sums over that
// state, plus mean + intercept / (1 - sum phi), here 1 + 0.5 / 0.6. Recorded when checked draw by draw.
TEST(ARIMA, GeneratorFollowsTheWarmStartAndTheStateUpdateExactly) {
    ARIMA m(std::vector<double>{0.6, -0.2}, std::vector<double>{0.5, 0.25}, 0.0, 1.0, 2.0, 0.5, "");
    m.initRandomNumberGeneration(2024);
    for (double x : {1.5298829212458451, 1.1808764212410019, 2.2632023140321915, 4.0375599232577937})
        EXPECT_EQ(m.getNextRandomVariate(), x);
}

TEST(ARIMA, WhiteNoiseTakesOneNormalDrawPerValueAndTheMeanOfTheCurrentCoefficients) {
    // Prepared as white noise, the AR state stays empty: each value is one innovation plus the process mean of
    // the coefficients set afterwards. An AR sum of 1 leaves the mean alone, with no division by zero.
    const std::pair<std::vector<double>, double> cases[] = {{{0.5, 0.5}, 3.0}, {{0.5}, 3.0 + 7.0 / 0.5}};
    for (const auto& c : cases) {
        ARIMA m = model({}, {}, 4.0, 0.0, 3.0, 7.0);
        m.initRandomNumberGeneration(11);
        m.setARCoefficients(c.first);
        Rand reference(11);
        for (int t = 0; t < 3; ++t) EXPECT_EQ(m.getNextRandomVariate(), reference.normal(0, 2.0) + c.second);
    }
    // Longer coefficient lists after preparation run on the old state.
    ARIMA m = model({0.5}, {});
    m.initRandomNumberGeneration(5);
    m.setARCoefficients({0.5, 0.1, 0.1});
    m.setMACoefficients({0.3});
    for (int t = 0; t < 10; ++t) EXPECT_TRUE(std::isfinite(m.getNextRandomVariate()));
}
