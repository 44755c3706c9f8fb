// Densities, distribution functions, quantiles and statistics of every
// family against independent figures (scipy.stats), the deliberate grain of
// the table-based normal distribution function, and the system's gamma
// function where it is Stirling's approximation rather than exact.
#include "dist_helpers.h"
#include "distributions/dist.h"
#include "distributions/dist_beta.h"
#include "distributions/dist_chisquare.h"
#include "distributions/dist_deterministic.h"
#include "distributions/dist_erlang.h"
#include "distributions/dist_exponential.h"
#include "distributions/dist_gamma.h"
#include "distributions/dist_hypererlang.h"
#include "distributions/dist_hyperexponential.h"
#include "distributions/dist_hypoexponential.h"
#include "distributions/dist_lognormal.h"
#include "distributions/dist_normal.h"
#include "distributions/dist_pearsonv.h"
#include "distributions/dist_pearsonvi.h"
#include "distributions/dist_triangular.h"
#include "distributions/dist_uniform.h"
#include "distributions/dist_weibull.h"
#include "numerics/misc_math.h"

using namespace velmora;

namespace {

// Raw moments within a relative tolerance.
void expectMoments(const DistStats& s, const std::vector<double>& expected, double relative, const char* what) {
    ASSERT_EQ(s.moments.size(), expected.size()) << what;
    for (size_t k = 0; k < expected.size(); k++)
        EXPECT_NEAR(s.moments[k], expected[k], relative * std::fabs(expected[k])) << what << " moment " << k + 1;
}

}  // namespace

TEST(DistFamilies, ClosedFormsAgreeWithScipyAtTheEndsAndOutsideTheSupport) {
    HyperErlang mix = disttest::mixture();
    Deterministic point(2.5);
    const disttest::Near cases[] = {
        // scipy.stats.uniform(1, 3)
        {"uniform pdf", Uniform::uniform_pdf(2, 1, 4), 0.333333333333333, 1e-14},
        {"uniform cdf", Uniform::uniform_cdf(2.5, 1, 4), 0.5, 1e-15},
        {"uniform ppf", Uniform::uniform_inverse_cdf(0.25, 1, 4), 1.75, 1e-15},
        // scipy.stats.expon(scale=0.5)
        {"expon pdf", Exponential::exponential_pdf(0.7, 2), 0.493193927883213, 1e-14},
        {"expon cdf", Exponential::exponential_cdf(0.7, 2), 0.753403036058394, 1e-14},
        {"expon ppf", Exponential::exponential_inverse_cdf(0.3, 2), 0.178337471969366, 1e-14},
        // scipy.stats.norm(1, 2); the quantile is PPND16, whose regions the numerics tests cover
        {"normal pdf", Normal::normal_pdf(2.3, 1, 2), 0.161486179833957, 1e-14},
        {"normal ppf", Normal::normal_inverse_cdf(0.975, 1, 2), 4.91992796908011, 1e-12},
        // scipy.stats.multivariate_normal([0, 0], [[1, .5], [.5, 1]]).pdf([.3, -.4])
        {"bivariate pdf", Normal::standard_bivariate_normal_pdf(0.3, -0.4, 0.5), 0.143603004935809, 1e-14},
        // scipy.stats.lognorm(s=0.5, scale=e)
        {"lognormal pdf", Lognormal::lognormal_pdf(2, 1, 0.5), 0.330464565983484, 1e-14},
        {"lognormal ppf", Lognormal::lognormal_inverse_cdf(0.9, 1, 0.5), 5.15917035562259, 1e-11},
        // scipy.stats.triang(c=1/3, loc=1, scale=3): a = 1, b = 4, mode 2
        {"triangular pdf left", Triangular::triangular_pdf(1.5, 1, 4, 2), 0.333333333333333, 1e-14},
        {"triangular pdf right", Triangular::triangular_pdf(3, 1, 4, 2), 0.333333333333333, 1e-14},
        {"triangular cdf left", Triangular::triangular_cdf(1.5, 1, 4, 2), 0.0833333333333333, 1e-14},
        {"triangular cdf right", Triangular::triangular_cdf(3, 1, 4, 2), 0.833333333333333, 1e-14},
        {"triangular ppf left", Triangular::triangular_inverse_cdf(0.2, 1, 4, 2), 1.77459666924148, 1e-13},
        {"triangular ppf right", Triangular::triangular_inverse_cdf(0.8, 1, 4, 2), 2.90455488498967, 1e-13},
        // scipy.stats.chi2(5); the CDF is AS 239 over the log-gamma of Pike and
        // Hill (about 1e-11), the quantile AS 91 (about 5e-7 relative).
        {"chi2 pdf", ChiSquare::chi2_pdf(3.2, 5), 0.153688937267856, 1e-13},
        {"chi2 cdf", ChiSquare::chi2_cdf(3.2, 5), 0.330817097966757, 1e-10},
        {"chi2 ppf", ChiSquare::chi2_inverse_cdf(0.95, 5), 11.0704976935164, 1e-5},
        // Quantiles stay finite at the ends of the unit interval; the normal
        // quantile does not check p at all. -log(1e-6) = 13.815510557935518.
        {"normal p 1.5", Normal(3, 2).evalInverseCDF(1.5), 3, 0}, {"chi2 ppf 0", ChiSquare(2).evalInverseCDF(0), 0, 0},
        {"lognormal ppf 1", Lognormal(1, 0.5).evalInverseCDF(1), std::exp(1.0), 1e-15},
        {"expon ppf 1", Exponential(2).evalInverseCDF(1), 13.815510557935518 / 2, 1e-9},
        {"weibull ppf 1", Weibull::weibull_inverse_cdf(1, 1, 1), 13.815510557935518, 1e-9},
        // The deterministic family is a point mass.
        {"deterministic pdf", point.evalPDF(2.5), 1, 0}, {"deterministic cdf below", point.evalCDF(2.4999), 0, 0},
        {"deterministic cdf", point.evalCDF(2.5), 1, 0}, {"deterministic variate", point.generateVariate(), 2.5, 0},
        // Weibull, gamma, beta and Pearson: the system's gamma function is exact
        // at integers and half-integers. scipy.stats.weibull_min(1.5, scale=2)
        {"weibull pdf", Weibull::weibull_pdf(1.3, 1.5, 2), 0.358036520885648, 1e-14},
        {"weibull cdf", Weibull::weibull_cdf(1.3, 1.5, 2), 0.407880468782734, 1e-14},
        {"weibull ppf", Weibull::weibull_inverse_cdf(0.6, 1.5, 2), 1.88676954780596, 1e-13},
        // scipy.stats.gamma(3, scale=2); the CDF and quantile as for chi2.
        {"gamma pdf", Gamma::gamma_pdf(4.1, 3, 2), 0.135252108081937, 1e-14},
        {"gamma cdf", Gamma::gamma_cdf(4.1, 3, 2), 0.336854327893324, 1e-10},
        {"gamma ppf", Gamma::gamma_inverse_cdf(0.7, 3, 2), 7.23113533173198, 1e-5},
        // scipy.stats.gamma(0.7): the CDF does not use the gamma function and is exact off its grid
        {"gamma cdf small shape", Gamma::gamma_cdf(0.4, 0.7, 1), 0.494986008271671, 1e-10},
        // scipy.stats.beta(2.5, 1.5), invgamma(3, scale=2) and betaprime(2, 3, scale=1.5)
        {"beta pdf", Beta::beta_pdf(0.6, 2.5, 1.5), 1.49701785836866, 1e-13},
        {"pearson V pdf", PearsonV::pearsonV_pdf(0.8, 3, 2), 0.801611314686511, 1e-14},
        {"pearson VI pdf", PearsonVI::pearsonVI_pdf(1.2, 2, 3, 1.5), 0.338701756168606, 1e-14},
        // Outside the support, where the formulas give other values.
        // The gamma density at 0 is 0 although its limit there is 1.
        {"gamma pdf at 0", Gamma::gamma_pdf(0, 1, 1), 0, 0}, {"gamma cdf below 0", Gamma::gamma_cdf(-1, 1, 1), 0, 0},
        {"weibull pdf at 0", Weibull::weibull_pdf(0, 0.5, 1), 0, 0},
        {"weibull cdf below 0", Weibull::weibull_cdf(-1, 2, 1), 0, 0},
        {"beta pdf at 0", Beta::beta_pdf(0, 0.5, 2), 0, 0}, {"pearson V at 0", PearsonV::pearsonV_pdf(0, 3, 2), 0, 0},
        {"pearson VI pdf below 0", PearsonVI::pearsonVI_pdf(-1, 2, 3, 1), 0, 0},
        // scipy.stats.gamma(3, scale=0.5)
        {"erlang pdf", Erlang::erlang_pdf(1.3, 3, 2), 0.5020893887288971, 1e-15},
        {"erlang cdf", Erlang::erlang_cdf(1.3, 3, 2), 0.4815704240639496, 1e-15},
        {"erlang ppf", Erlang::erlang_inverse_cdf(0.7, 3, 2), 1.8077838329329956, 1e-5},
        // 0.4 expon(scale=1) + 0.6 expon(scale=1/3)
        {"hyperexp pdf", HyperExponential::hyper_exponential_pdf(0.7, {1, 3}, {0.4, 0.6}), 0.4190556923719313, 1e-15},
        {"hyperexp cdf", HyperExponential::hyper_exponential_cdf(0.7, {1, 3}, {0.4, 0.6}), 0.7278920215316471, 1e-15},
        // tau expm(T x) t of the series chain 1 -> 2 -> 4 (scipy.linalg.expm)
        {"hypoexp pdf", HypoExponential::hypo_exponential_pdf(0.9, {1, 2, 4}), 0.4594218363516422, 1e-14},
        // 0.3 gamma(2, scale=1) + 0.5 gamma(1, scale=0.2) + 0.2 gamma(3, scale=0.4)
        {"hypererlang pdf", mix.evalPDF(0.4), 0.5107464739086689, 1e-15},
        {"hypererlang cdf", mix.evalCDF(0.4), 0.466858218461004, 1e-15},
        // Below zero; at 0 only the one-phase branch has a density: 0.5 * 5.
        {"erlang pdf below 0", Erlang::erlang_pdf(-1, 2, 1), 0, 0},
        {"hyperexp ccdf below 0", HyperExponential::hyper_exponential_ccdf(-1, {1, 2}, {0.5, 0.5}), 1, 0},
        {"hypoexp pdf below 0", HypoExponential::hypo_exponential_pdf(-1, {1, 2}), 0, 0},
        {"hypererlang ccdf below 0", mix.evalCCDF(-1), 1, 0}, {"hypererlang pdf at 0", mix.evalPDF(0), 2.5, 1e-15},
    };
    for (const auto& c : cases) EXPECT_NEAR(c.value, c.expected, c.tolerance) << c.what;
}

// The sum under the Erlang and hyper-Erlang distribution functions:
// e^(-x) S(x, k) is the Poisson probability P(N < k) of mean x, here to 40
// digits from exact rational sums.
TEST(PoissonPartialSum, TimesEToTheMinusXIsThePoissonDistributionFunction) {
    const disttest::Near cases[] = {
        {"no terms", poisson_partial_sum(2, 0), 0, 0},
        {"x = 0 keeps the term 0^0 = 1", poisson_partial_sum(0, 3), 1, 0},
        {"1 + 2 + 2", poisson_partial_sum(2, 3), 5, 0},
        {"P(N < 5), mean 2.5", std::exp(-2.5) * poisson_partial_sum(2.5, 5), 0.8911780189141512, 1e-15},
        {"P(N < 12), mean 7", std::exp(-7.0) * poisson_partial_sum(7, 12), 0.9466503768484414, 1e-15},
    };
    for (const auto& c : cases) EXPECT_NEAR(c.value, c.expected, c.tolerance) << c.what;
}

TEST(DistFamilies, NormalDistributionFunctionIsTheFourDecimalTable) {
    struct Case { double z; double expected; };
    // Phi rounded to four decimals at z rounded to two (scipy.stats.norm.cdf).
    const Case cases[] = {
        {0, 0.5},        {0.004, 0.5},         {0.005, 0.504},       {0.5, 0.6915},
        {1.0, 0.8413},   {1.2345, 0.8907},     {1.96, 0.975},        {2.33, 0.9901},
        {3.0, 0.9987},   {3.49, 0.9998},       {3.4900001, 1},       {-0.5, 1 - 0.6915},
        {-1.2345, 1 - 0.8907}, {-3.49, 1 - 0.9998}, {-3.4900001, 0},  {-100, 0},
    };
    for (const Case& c : cases) EXPECT_NEAR(Normal::standard_normal_cdf(c.z), c.expected, 1e-15) << c.z;
    EXPECT_NEAR(Normal(1, 2).evalCDF(1 + 2 * 1.96), 0.975, 1e-15);
    // The lognormal inherits the grain in log x: z = 1.004 reads Phi(1.00), not 0.8423.
    EXPECT_NEAR(Lognormal(1, 0.5).evalCDF(std::exp(1.502)), 0.8413, 1e-15);
    EXPECT_EQ(Lognormal(0, 1).evalCDF(0), 0);
    // No table lookup with NaN (sd 0 at the mean): the result is NaN.
    EXPECT_TRUE(std::isnan(Normal(2, 0).evalCDF(2)));
}

TEST(DistFamilies, StatisticsAndRawMoments) {
    struct Case {
        const char* what;
        DistStats s;
        double mean, variance, skewness, kurtosis;  // NaN: not computed by the family
        std::vector<double> moments;
        double relative;
    };
    const double none = std::numeric_limits<double>::quiet_NaN();
    testing::internal::CaptureStdout();
    const Case cases[] = {
        {"deterministic", Deterministic(2.5).getProperties(3), 2.5, 0, 0, 0, {2.5, 6.25, 15.625}, 0},
        // (4^(k+1) - 1) / ((k+1) * 3)
        {"uniform", Uniform(1, 4).getProperties(3), 2.5, 0.75, 0, -1.2, {2.5, 7, 21.25}, 1e-15},
        // The raw moments use the 32-bit factorial: the 13th is 1932053504, not 13!.
        {"exponential", Exponential(1).getProperties(13), 1, 1, 2, 6,
         {1, 2, 6, 24, 120, 720, 5040, 40320, 362880, 3628800, 39916800, 479001600, 1932053504}, 0},
        // scipy.stats.norm(1, 2).moment(k), k = 1..8 (order 9 is refused); the kurtosis is 3, not the excess.
        {"normal", Normal(1, 2).getProperties(9), 1, 4, 0, 3, {1, 5, 13, 73, 281, 1741, 8485, 57233}, 1e-15},
        // scipy.stats.lognorm(s=0.5, scale=e).stats("mvsk") and .moment(k); the kurtosis is the excess.
        {"lognormal", Lognormal(1, 0.5).getProperties(3), 3.08021684891803, 2.69475812434495, 1.75018965506972,
         5.89844567378478, {3.08021684891803, 12.1824939607035, 61.8678092503679}, 1e-13},
        // scipy.stats.triang(c=1/3, loc=1, scale=3).stats("mvsk"); one moment only.
        {"triangular", Triangular(1, 4, 2).getProperties(2), 2.33333333333333, 0.388888888888889, 0.305441419328485,
         -0.6, {2.33333333333333}, 1e-13},
        // scipy.stats.chi2(5).stats("mvsk") and .moment(k)
        {"chi-squared", ChiSquare(5).getProperties(3), 5, 10, 1.2649110640673518, 2.4, {5, 35, 315}, 1e-15},
        // Shape 3 puts Gamma(4/3) and Gamma(5/3) off the exact grid: Stirling's first
        // term, 0.839742703223566 and 0.154022440082108 + 0.839742703223566^2 at scale 1.
        {"weibull", Weibull(3, 2).getProperties(2), 2 * 0.839742703223566, 4 * 0.154022440082108, none, none,
         {2 * 0.839742703223566, 4 * (0.154022440082108 + 0.839742703223566 * 0.839742703223566)}, 1e-13},
        // Gamma(2.7)/Gamma(1.7) and Gamma(3.7)/Gamma(1.7) by Stirling's first
        // term, not the exact 3.4 and 18.36.
        {"gamma shape 1.7", Gamma(1.7, 2).getProperties(2), 3.4, 6.8, 1.5339299776947408, 3.5294117647058822,
         {3.46096405858334, 18.8442058131826}, 1e-12},
        // scipy.stats.beta(2, 3).stats("mvsk") and .moment(k): the kurtosis is the exact excess.
        {"beta", Beta(2, 3).getProperties(2), 0.4, 0.04, 0.285714285714286, -0.642857142857143, {0.4, 0.2}, 1e-14},
        // scipy.stats.gamma(3, scale=0.5).moment(k)
        {"erlang", Erlang(3, 2).getProperties(3), 1.5, 0.75, 1.1547005383792517, 2, {1.5, 3.0, 7.5}, 1e-15},
        // n! tau (-T)^-n 1 of the chain 1 -> 2 -> 4 (numpy); no kurtosis (0).
        {"hypoexponential", HypoExponential({1, 2, 4}).getProperties(3), 1.75, 1.3125, 1.5171339035454707, 0,
         {1.75, 4.375, 14.53125}, 1e-12},
        // The moments of the scipy.stats.gamma mixture of the tables.
        {"hypererlang", disttest::mixture().getProperties(4), 0.94, 1.3404, none, none, {0.94, 2.224, 7.992, 37.8624},
         1e-14},
    };
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("For normal distribution only computation of first 8 moments is supported."), std::string::npos);
    EXPECT_NE(out.find("For triangular distribution only computation of first moment is supported."),
              std::string::npos);
    for (const Case& c : cases) {
        const double expected[] = {c.mean, c.variance, c.skewness, c.kurtosis};
        const double value[] = {c.s.mean, c.s.variance, c.s.skewness, c.s.kurtosis};
        for (int i = 0; i < 4; i++) {
            if (std::isnan(expected[i]))
                EXPECT_TRUE(std::isnan(value[i])) << c.what << " statistic " << i;
            else
                EXPECT_NEAR(value[i], expected[i], c.relative * std::max(1.0, std::fabs(expected[i])))
                    << c.what << " statistic " << i;
        }
        expectMoments(c.s, c.moments, c.relative, c.what);
    }
    EXPECT_NEAR(disttest::mixture().getProperties(0).cv, 1.2316557990133028, 1e-14);
}
