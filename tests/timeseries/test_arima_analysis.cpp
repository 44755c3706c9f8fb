#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "core/libvelmora_settings.h"
#include "numerics/matrix.h"
#include "numerics/random.h"
#include "timeseries/arima.h"

using namespace velmora;

namespace {

std::string arimaMessage(const std::function<void()>& action) {
    try {
        action();
    } catch (Exception& e) {
        return e.file + ": " + e.message;
    }
    return "(no exception)";
}

ARIMA model(std::vector<double> ar, std::vector<double> ma, double variance = 1.0, double d = 0.0,
            double mean = 0.0, double intercept = 0.0) {
    return ARIMA(ar, ma, d, mean, variance, intercept, "");
}

// Reference autocovariances gamma(0..10): sigma^2 sum_j psi_j psi_{j+k} over
// the first 20000 psi-weights of X(t) = sum phi_i X(t-i) + e(t) + sum theta_j e(t-j),
// computed with numpy (the figures of statsmodels arma_acovf with
// ar = [1, -phi], ma = [1, theta]).
struct AcfCase {
    const char* name;
    std::vector<double> ar, ma;
    double variance;
    std::vector<double> gamma;
};

const std::vector<AcfCase>& acfCases() {
    static const std::vector<AcfCase> cases = {
        {"AR(1)", {0.5}, {}, 1.0,
         {1.3333333333333333, 0.66666666666666663, 0.33333333333333331, 0.16666666666666666,
          0.083333333333333329, 0.041666666666666664, 0.020833333333333332, 0.010416666666666666,
          0.005208333333333333, 0.0026041666666666665, 0.0013020833333333333}},
        {"MA(2)", {}, {0.4, -0.3}, 2.0, {2.5000000000000004, 0.56000000000000005, -0.59999999999999998, 0, 0, 0, 0, 0, 0, 0, 0}},
        {"AR(2)", {0.5, 0.3}, {}, 1.0,
         {2.2435897435897432, 1.6025641025641018, 1.4743589743589749, 1.2179487179487172, 1.051282051282052,
          0.89102564102564141, 0.76089743589743541, 0.64775641025641073, 0.55214743589743576,
          0.47040064102564111, 0.40084455128205115}},
        {"ARMA(1,1)", {0.7}, {0.4}, 1.5,
         {5.0588235294117627, 4.141176470588233, 2.8988235294117644, 2.0291764705882342, 1.4204235294117644,
          0.99429647058823467, 0.69600752941176403, 0.48720527058823482, 0.34104368941176455,
          0.23873058258823499, 0.16711140781176453}},
        {"ARMA(2,1)", {0.6, -0.2}, {0.5}, 1.0,
         {2.4305555555555549, 1.6319444444444449, 0.49305555555555564, -0.030555555555555579,
          -0.11694444444444445, -0.064055555555555546, -0.015044444444444444, 0.0037844444444444496,
          0.0052795555555555573, 0.0024108444444444458, 0.00039059555555555521}},
        {"ARMA(1,3)", {-0.5}, {0.2, 0.4, -0.3}, 1.0,
         {1.833333333333333, -1.0016666666666669, 0.99083333333333334, -0.79541666666666644,
          0.39770833333333322, -0.19885416666666661, 0.099427083333333305, -0.049713541666666652,
          0.024856770833333326, -0.012428385416666663, 0.0062141927083333316}},
        {"ARMA(3,2)", {0.4, -0.2, 0.1}, {0.3, 0.25}, 0.8,
         {1.2881441733319834, 0.77347372684013382, 0.32910802875367007, 0.10576288346663974,
          0.053830920319935208, 0.033290594310013154, 0.013126342006682194, 0.0039755099726637667,
          0.0022939950187303841, 0.0014351302136276197, 0.00051280407897134775}},
    };
    return cases;
}

}  // namespace

TEST(ARIMA, AutocovariancesAndAutocorrelationsMatchPsiWeightSums) {
    for (const AcfCase& c : acfCases()) {
        SCOPED_TRACE(c.name);
        ARIMA m = model(c.ar, c.ma, c.variance);
        std::vector<double> gamma = m.computeAutocovariances(10);
        std::vector<double> rho = m.computeAutocorrelations(10);
        ASSERT_EQ(gamma.size(), 11u);
        ASSERT_EQ(rho.size(), 11u);
        for (unsigned k = 0; k <= 10; ++k) {
            EXPECT_NEAR(gamma[k], c.gamma[k], 1e-10) << "lag " << k;
            EXPECT_NEAR(rho[k], c.gamma[k] / c.gamma[0], 1e-10) << "lag " << k;
        }
        // Ranges and single lags come from the same computation.
        std::vector<double> middle = m.getAutocorrelations(3, 5);
        ASSERT_EQ(middle.size(), 3u);
        EXPECT_NEAR(middle[0], c.gamma[3] / c.gamma[0], 1e-10);
        EXPECT_NEAR(m.getAutocorrelation(7), c.gamma[7] / c.gamma[0], 1e-10);
        EXPECT_TRUE(m.getAutocorrelations(6, 5).empty());
    }
}

TEST(ARIMA, FewerLagsThanTheAROrderGiveExactlyThatMany) {
    const AcfCase& c = acfCases().back();  // ARMA(3,2)
    ARIMA m = model(c.ar, c.ma, c.variance);
    for (unsigned h = 0; h < 3; ++h) {
        std::vector<double> gamma = m.computeAutocovariances(h);
        ASSERT_EQ(gamma.size(), h + 1);
        EXPECT_NEAR(gamma[h], c.gamma[h], 1e-10);
    }
}

TEST(ARIMA, FractionalNoiseAutocorrelationsAreTheRunningProduct) {
    ARIMA fractional = model({}, {}, 1.0, 0.25);
    std::vector<double> rho = fractional.computeAutocorrelations(3);
    ASSERT_EQ(rho.size(), 4u);
    EXPECT_DOUBLE_EQ(rho[0], 1.0);
    EXPECT_DOUBLE_EQ(rho[1], 1.0 / 3.0);
    EXPECT_DOUBLE_EQ(rho[2], (0.25 * 1.25) / (0.75 * 1.75));
    EXPECT_DOUBLE_EQ(rho[3], (0.25 * 1.25 * 2.25) / (0.75 * 1.75 * 2.75));

    ARIMA white = model({}, {}, 3.0);
    EXPECT_EQ(white.computeAutocorrelations(3), (std::vector<double>{1, 0, 0, 0}));
    EXPECT_EQ(white.computeAutocovariances(2), (std::vector<double>{3, 0, 0}));
}

TEST(ARIMA, StationarityLooksAtTheARRootsOnly) {
    struct Case {
        std::vector<double> ar;
        bool stationary;
    } cases[] = {
        {{}, true},
        {{0.5}, true},
        {{1.0}, false},  // root on the unit circle: the comparison is strict
        {{0.5, 0.3}, true},
        {{0.5, 0.6}, false},
        {{0.4, -0.2, 0.1}, true},
    };
    for (const Case& c : cases) {
        ARIMA m = model(c.ar, {0.9, 3.0});
        EXPECT_EQ(m.isStationary(), c.stationary) << c.ar.size();
    }
    ARIMA zeroLeading = model({0.5, 0.0}, {});
    // A zero last coefficient leaves the polynomial without its leading term.
    std::string message = arimaMessage([&] { zeroLeading.isStationary(); });
    EXPECT_NE(message.find("Leading coefficient must not be zero."), std::string::npos) << message;
}

TEST(ARIMA, MomentsAreThoseOfTheNormalMarginal) {
    ARIMA m = model({0.5}, {}, 1.0, 0.0, 2.0);  // N(2, 4/3)
    std::vector<double> moments = m.getMoments(0, 2);
    ASSERT_EQ(moments.size(), 3u);
    EXPECT_DOUBLE_EQ(moments[0], 1.0);
    EXPECT_DOUBLE_EQ(moments[1], 2.0);
    EXPECT_NEAR(moments[2], 4.0 + 4.0 / 3.0, 1e-12);
    EXPECT_EQ(m.getMoments(1, 9).size(), 8u);  // the normal record has eight moments
    EXPECT_EQ(m.getMoments(3, 2).size(), 0u);
    // The intercept enters the mean as intercept/(1 - sum phi).
    EXPECT_DOUBLE_EQ(model({0.5}, {}, 1.0, 0.0, 3.0, 1.0).compute_mean_and_variance().first, 5.0);
    EXPECT_EQ(arimaMessage([] { model({0.5, 0.5}, {}, 1.0, 0.0, 3.0, 7.0).compute_mean_and_variance(); }),
              "misc_linalg: Singular matrix.");

    EXPECT_NEAR(m.evalPDF(2.0), 1.0 / std::sqrt(2 * M_PI * 4.0 / 3.0), 1e-12);
    EXPECT_DOUBLE_EQ(m.evalCDF(2.0), 0.5);
    EXPECT_DOUBLE_EQ(m.evalCCDF(2.0), 0.5);
}

TEST(ARIMA, DistributionWalkEndsForEveryRange) {
    ARIMA m = model({0.5}, {});
    Distribution full = m.computeDistribution(0, 1);
    EXPECT_GE(full.cdf.size(), 100u);
    EXPECT_LE(full.cdf.size(), 101u);
    EXPECT_EQ(full.pdf.size(), full.cdf.size());
    EXPECT_EQ(full.ccdf.size(), full.cdf.size());
    EXPECT_DOUBLE_EQ(full.pdf[10].first, 0.1);
    EXPECT_DOUBLE_EQ(full.pdf[10].second, m.evalPDF(full.pdf[10].first));

    EXPECT_EQ(m.computeDistribution(0.5, 0.5).cdf.size(), 1u);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    EXPECT_TRUE(m.computeDistribution(nan, 1).cdf.empty());
    EXPECT_TRUE(m.computeDistribution(0, nan).cdf.empty());
    EXPECT_LE(m.computeDistribution(0, inf).cdf.size(), 2u);
    EXPECT_LE(m.computeDistribution(1e17, 1e17 + 16).cdf.size(), 202u);
    EXPECT_EQ(arimaMessage([&] { m.computeDistribution(1, 0); }), "arima: Invalid range for distribution.");
}

TEST(ARIMA, OperationsRefuseWhatTheModelCannotDo) {
    ARIMA integrated = model({0.5}, {0.2}, 1.0, 1.0);
    ARIMA fractionalAR = model({0.5}, {}, 1.0, 0.3);
    ARIMA negative = model({}, {}, 1.0, -0.5);
    ARIMA plain = model({0.5}, {0.2});
    const std::string distribution = "arima: Computation of distribution only supported for ARMA processes.";
    struct Case {
        std::function<void()> action;
        std::string message;
    } cases[] = {
        {[&] { integrated.computeAutocovariances(3); },
         "arima: Computation of autocovariance is only implemented for ARMA models."},
        {[&] { integrated.compute_mean_and_variance(); }, distribution},
        {[&] { integrated.getMoments(1, 2); }, distribution},
        {[&] { integrated.evalCDF(0); }, distribution},
        {[&] { integrated.evalPDF(0); }, distribution},
        {[&] { integrated.evalCCDF(0); }, distribution},
        {[&] { integrated.toString(FORMAT_XML); }, distribution},
        {[&] { fractionalAR.computeAutocorrelations(2); }, "arima: Not implemented."},
        {[&] { negative.computeAutocorrelations(2); }, "arima: Not implemented."},
        {[&] { integrated.initRandomNumberGeneration(1); },
         "arima: Random Number Generation only supported for ARMA models."},
        {[&] { plain.getNextRandomVariate(); }, "arima: Initialize Random Number Generation first."},
        {[&] { plain.getJointMoments(1, 2); }, "arima: Computation of Joint Moments not supported for ARIMA."},
        {[&] { plain.computeLikelihood(nullptr); }, "arima: Not implemented."},
        {[&] { plain.toString(static_cast<format>(2)); },
         "arima: Output format is not supported for ARMA models."},
        {[&] { plain.load("unused", static_cast<format>(2)); }, "arima: Format not supported!"},
    };
    for (const Case& c : cases) EXPECT_EQ(arimaMessage(c.action), c.message);
}

TEST(ARIMA, WhiteNoiseTakesOneNormalDrawPerValue) {
    ARIMA white = model({}, {}, 4.0, 0.0, 3.0);
    white.initRandomNumberGeneration(99);
    Rand reference(99);
    for (int i = 0; i < 7; ++i) EXPECT_EQ(white.getNextRandomVariate(), reference.normal(0, 2.0) + 3.0);
}

TEST(ARIMA, GeneratorFollowsTheWarmStartAndTheStateUpdateExactly) {
    // ARMA(2,2) with mean and intercept: mu = 1 + 0.5 / (1 - 0.4) .
    ARIMA m(std::vector<double>{0.6, -0.2}, std::vector<double>{0.5, 0.25}, 0.0, 1.0, 2.0, 0.5, "");
    const double mu = 1.0 + 0.5 / (1 - (0.6 + -0.2));
    m.initRandomNumberGeneration(2024);

    Rand r(2024);
    std::vector<double> y = r.multivariate_normal(Vector(std::vector<double>{1.0, 1.0}, false),
                                                  m.constructCovarianceMatrix()).asVector();
    std::vector<double> e;
    e.push_back(r.normal(0, std::sqrt(2.0)));
    e.push_back(r.normal(0, std::sqrt(2.0)));
    for (int t = 0; t < 20; ++t) {
        const double shock = r.normal(0, std::sqrt(2.0));
        const double value = shock + 0.6 * y[0] + -0.2 * y[1] + 0.5 * e[0] + 0.25 * e[1];
        y = {value, y[0]};
        e = {shock, e[0]};
        EXPECT_EQ(m.getNextRandomVariate(), value + mu) << "step " << t;
    }

    // A new preparation with the same seed restarts the stream.
    m.initRandomNumberGeneration(2024);
    ARIMA twin(m);
    twin.initRandomNumberGeneration(2024);
    for (int t = 0; t < 5; ++t) EXPECT_EQ(m.getNextRandomVariate(), twin.getNextRandomVariate());
}

TEST(ARIMA, GeneratorLeavesTheInterceptOutWhenTheARSumIsOne) {
    // Prepared as white noise, so the AR state stays empty and each value is
    // one innovation plus the process mean of the current coefficients.
    const struct {
        std::vector<double> ar;
        double mu;
    } cases[] = {
        {{0.5, 0.5}, 3.0},  // sum 1: mean alone, no division by zero
        {{0.5}, 3.0 + 7.0 / 0.5},
    };
    for (const auto& c : cases) {
        ARIMA m = model({}, {}, 1.0, 0.0, 3.0, 7.0);
        m.initRandomNumberGeneration(11);
        m.setARCoefficients(c.ar);
        Rand reference(11);
        for (int t = 0; t < 3; ++t) EXPECT_EQ(m.getNextRandomVariate(), reference.normal(0, 1.0) + c.mu);
    }
}

TEST(ARIMA, LongerCoefficientListsAfterPreparationUseTheOldState) {
    ARIMA m = model({0.5}, {});
    m.initRandomNumberGeneration(5);
    m.setARCoefficients({0.5, 0.1, 0.1});
    m.setMACoefficients({0.3});
    for (int t = 0; t < 10; ++t) EXPECT_TRUE(std::isfinite(m.getNextRandomVariate()));
}
