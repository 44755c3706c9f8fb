// The Johnson translation system against scipy.stats (johnsonsu, johnsonsb,
// lognorm and norm of the same transformation), its statistics, the sign
// rule of the SU skewness, and what it does with parameters it never checks.
#include "dist_helpers.h"
#include "distributions/dist_johnson.h"
#include "numerics/random.h"

using namespace velmora;
using disttest::failure;

namespace {

const dist_johnson_family SL = JOHNSON_SL, SB = JOHNSON_SB, SU = JOHNSON_SU, SN = JOHNSON_SN;

// The statistics record and its moments within a relative tolerance.
void expectStats(const DistStats& s, const std::vector<double>& expected, double relative, const char* what) {
    const double value[] = {s.mean, s.variance, s.skewness, s.kurtosis};
    for (size_t i = 0; i < expected.size(); i++) {
        const double got = i < 4 ? value[i] : s.moments.at(i - 4);
        EXPECT_NEAR(got, expected[i], relative * std::max(1.0, std::fabs(expected[i]))) << what << " " << i;
    }
}

}  // namespace

TEST(Johnson, DensitiesQuantilesAndTableDistributionFunctionAgreeWithScipy) {
    const disttest::Near cases[] = {
        // scipy.stats.johnsonsu(1, 2, loc=0.5, scale=1.5)
        {"SU pdf", Johnson::johnson_pdf(0.3, SU, 1, 2, 1.5, 0.5), 0.40271293357852156, 1e-14},
        {"SU ppf", Johnson::johnson_inverse_cdf(0.3, SU, 1, 2, 1.5, 0.5), -0.7572606878508787, 1e-14},
        // scipy.stats.johnsonsb(0.5, 1.2, loc=1, scale=3)
        {"SB pdf", Johnson::johnson_pdf(2, SB, 0.5, 1.2, 3, 1), 0.6796415650610858, 1e-14},
        {"SB ppf", Johnson::johnson_inverse_cdf(0.25, SB, 0.5, 1.2, 3, 1), 1.8194247315000824, 1e-14},
        // scipy.stats.lognorm(s=1/2, loc=1, scale=2 exp(-1/4)): SL(0.5, 2, 2, 1)
        {"SL pdf", Johnson::johnson_pdf(2.5, SL, 0.5, 2, 2, 1), 0.530414587361674, 1e-14},
        {"SL ppf", Johnson::johnson_inverse_cdf(0.8, SL, 0.5, 2, 2, 1), 3.3725321377336392, 1e-14},
        // scipy.stats.norm(0.25, 1.5): SN(0.5, 2, 3, 1); SN(0, 1, 1, 0) is the standard normal
        {"SN pdf", Johnson::johnson_pdf(1, SN, 0.5, 2, 3, 1), 0.2347102178428663, 1e-15},
        {"SN ppf", Johnson::johnson_inverse_cdf(0.7, SN, 0.5, 2, 3, 1), 1.0366007690620611, 1e-14},
        {"standard normal pdf", Johnson(0, 1, 1, 0, SN).evalPDF(0), 0.3989422804014327, 1e-16},
        {"SN median", Johnson::johnson_inverse_cdf(0.5, SN, 0, 1, 2, 3), 3, 0},
        // The distribution function is the four-decimal table: scipy's ppf of
        // Phi(t) at t = 0.5, -1.2, 1 reads 0.6915, 0.1151, 0.8413 (scipy 0.691462, 0.115070, 0.841345).
        {"SU cdf", Johnson::johnson_cdf(0.12108152478774759, SU, 1, 2, 1.5, 0.5), 0.6915, 1e-15},
        {"SB cdf", Johnson::johnson_cdf(1.5855540310415206, SB, 0.5, 1.2, 3, 1), 1 - 0.8849, 1e-15},
        {"SL ccdf", Johnson::johnson_ccdf(3.5680508333754832, SL, 0.5, 2, 2, 1), 1 - 0.8413, 1e-15},
        // At the ends of the support; p = 0 (and 1) give the quantile of z = 0.
        {"SL pdf at xi", Johnson::johnson_pdf(1, SL, 0.5, 2, 2, 1), 0, 0},
        {"SL cdf at xi", Johnson::johnson_cdf(1, SL, 0.5, 2, 2, 1), 0, 0},
        {"SB pdf at xi + lambda", Johnson::johnson_pdf(4, SB, 0.5, 1.2, 3, 1), 0, 0},
        {"SB cdf at xi + lambda", Johnson::johnson_cdf(4, SB, 0.5, 1.2, 3, 1), 1, 0},
        {"SU ppf 0", Johnson::johnson_inverse_cdf(0, SU, 1, 2, 1.5, 0.5), 1.5 * std::sinh(-0.5) + 0.5, 1e-15},
    };
    for (const auto& c : cases) EXPECT_NEAR(c.value, c.expected, c.tolerance) << c.what;
}

TEST(Johnson, StatisticsAgreeWithScipyAndSBCarriesItsCutRange) {
    // mean, variance, skewness, excess kurtosis, then raw moments.
    // scipy.stats.lognorm(s=1/2, loc=1, scale=2 exp(-1/4)).stats("mvsk") and .moment(k)
    expectStats(Johnson::johnson_stats(SL, 0.5, 2, 2, 1, 4),
                {2.764993805169191, 0.8847968677143803, 1.7501896550697178, 5.898445673784778, 2.764993805169191,
                 8.529987610338381, 29.934912732453178, 122.1122097438039}, 1e-13, "SL");
    // scipy.stats.norm(0.25, 1.5).moment(k)
    expectStats(Johnson::johnson_stats(SN, 0.5, 2, 3, 1, 4), {0.25, 2.25, 0, 0, 0.25, 2.3125, 1.703125, 16.03515625},
                1e-15, "SN");
    expectStats(Johnson(0, 1, 1, 0, SN).getProperties(2), {0, 1, 0, 0, 0, 1}, 0, "standard normal");
    // scipy.stats.johnsonsu(-1, 2, loc=0.5, scale=1.5): mean and .moment(k), the central
    // moments by scipy.integrate.quad of its pdf; for gamma < 0 the skewness has the textbook sign.
    expectStats(Johnson::johnson_stats(SU, -1, 2, 1.5, 0.5, 4),
                {1.38571750899505, 0.9526280924381207, 0.8744838518008433, 2.5869657812478053, 1.38571750899505,
                 2.872841107164338, 7.434179802886489, 24.239718262043453}, 1e-8, "SU");
    // scipy.integrate.quad of (x - m)^k johnsonsb(0.5, 1.2, loc=1, scale=3).pdf
    // over its 0.1 to 99.9 percentiles, within the Romberg tolerance ...
    DistStats sb = Johnson(0.5, 1.2, 3, 1, SB).getProperties(2);
    expectStats(sb, {2.226550938855688, 0.2782228823812947, 0.31138343699550614, -0.6017272015338744}, 1e-4, "SB");
    // ... and so about 0.2 percent below the full mean 2.2314119302230035.
    EXPECT_LT(sb.mean, 2.2314119302230035 - 0.004);
}

TEST(Johnson, SUSkewnessIsPositiveForEitherSignOfGamma) {
    // scipy.stats.johnsonsu(1, 2, loc=0.5, scale=1.5): mean and .moment(2), the central moments
    // by scipy.integrate.quad of its pdf; there the skewness is -0.874484.
    DistStats s = Johnson::johnson_stats(SU, 1, 2, 1.5, 0.5, 2);
    expectStats(s, {-0.38571750899503787, 0.952628092431296, 0.8744838518008446, 2.586965781247815,
                    -0.38571750899503787, 1.101406089176633}, 1e-8, "SU gamma 1");
}

TEST(Johnson, NamesMessagesVariatesAndUncheckedParameters) {
    EXPECT_EQ(Johnson::getJohnsonType("SB"), SB);
    EXPECT_EQ(Johnson::getJohnsonType(SU), "SU");
    EXPECT_EQ(failure([] { Johnson::getJohnsonType("sb"); }), "Unknown type of Johnson distribution.");
    EXPECT_EQ(failure([] { Johnson::johnson_inverse_cdf(1.5, SU, 1, 2, 1, 0); }), "Invalid value for inverse cdf.");
    Johnson j(1, 2, 1.5, 0.5, SU);
    j.setJohnsonType(static_cast<dist_johnson_family>(7));
    EXPECT_EQ(failure([&] { j.toString(FORMAT_XML); }), "Unknown type for Johnson family.");
    EXPECT_EQ(failure([&] { j.toString(FORMAT_CONFIG); }), "Unknown type of Johnson distribution.");
    for (auto call : std::vector<std::function<void()>>{[&] { j.evalPDF(0); }, [&] { j.evalInverseCDF(0.5); },
                                                         [&] { j.getProperties(1); }})
        EXPECT_EQ(failure(call), "Unknown family for Johnson translation system.");

    // A variate is the quantile of exactly one uniform draw: the second uses the second draw.
    Johnson su(1, 2, 1.5, 0.5, SU);
    su.setSeed(11);
    Rand reference(11);
    su.generateVariate();
    reference.drawRandomNumber();
    EXPECT_EQ(su.generateVariate(), Johnson::johnson_inverse_cdf(reference.drawRandomNumber(), SU, 1, 2, 1.5, 0.5));

    // Any four numbers are accepted; an infinite or NaN transformed value
    // gives 0 below x = 0 and 1 from there on, and nothing loops.
    Johnson degenerate(std::nan(""), -1, 0, -2, SL);
    EXPECT_EQ(degenerate.evalCDF(-1), 0);
    EXPECT_EQ(degenerate.evalCDF(0.5), 1);
    EXPECT_TRUE(std::isnan(Johnson(std::nan(""), 1, 1, 0, SB).getProperties(1).mean));

    testing::internal::CaptureStdout();
    EXPECT_EQ(su.getProperties(5).moments.size(), 4u);
    const std::string warning = "For Johnson distribution only computation of first 4 moments is supported.";
    EXPECT_NE(testing::internal::GetCapturedStdout().find(warning), std::string::npos);
}
