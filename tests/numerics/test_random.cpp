// Tests of the random streams: the reference sequences of the generator, the
// distribution of every variate method, reproducibility and the parameter
// checks with their messages.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "core/libvelmora_settings.h"
#include "numerics/random.h"

using namespace velmora;

TEST(MTRand, ReferenceSeedsGiveThePublishedFirstWords) {
    MTRand bySeed(5489UL);
    EXPECT_EQ(bySeed.randInt(), 3499211612UL);

    // Key and words: numpy MT19937 with the legacy array seeding.
    const unsigned long key[] = {0x123, 0x234, 0x345, 0x456};
    MTRand byArray;
    byArray.seed(key, 4);
    const unsigned long firstWords[] = {1067595299UL, 955945823UL, 477289528UL, 4107218783UL, 4228976476UL};
    for (unsigned long expected : firstWords) EXPECT_EQ(byArray.randInt(), expected);
    for (int i = 5; i < 999; ++i) byArray.randInt();
    EXPECT_EQ(byArray.randInt(), 3460025646UL);  // word 1000, across a reload
}

TEST(MTRand, ThousandWordsEqualTheStandardLibraryEngine) {
    MTRand ours(5489UL);
    std::mt19937 reference(5489U);
    for (int i = 0; i < 1000; ++i) ASSERT_EQ(ours.randInt(), static_cast<unsigned long>(reference())) << "word " << i;
    // Only the low 32 bits of a seed count.
    MTRand wide(5489UL + (1UL << 40));
    EXPECT_EQ(wide.randInt(), 3499211612UL);
}

TEST(MTRand, RandScalesTheWordOntoTheClosedUnitInterval) {
    MTRand a(42UL), b(42UL);
    for (int i = 0; i < 2000; ++i) {
        const double u = a.rand();
        // The factor is 1 / (2^32 - 1) rounded; it is a product, not a quotient.
        ASSERT_EQ(u, static_cast<double>(b.randInt()) * 2.3283064370807974e-10);
        ASSERT_GE(u, 0.0);
        ASSERT_LE(u, 1.0);
    }
    EXPECT_EQ(4294967295.0 * 2.3283064370807974e-10, 1.0);  // a word of all ones gives 1
}

TEST(MTRand, CopyContinuesTheSameStream) {
    MTRand a(7UL);
    for (int i = 0; i < 700; ++i) a.randInt();
    MTRand b(a);
    MTRand c(1UL);
    c = a;
    for (int i = 0; i < 1000; ++i) {
        const unsigned long w = a.randInt();
        ASSERT_EQ(b.randInt(), w);
        ASSERT_EQ(c.randInt(), w);
    }
}

TEST(MTRand, SystemSeedsDiffer) {
    MTRand a, b;
    Rand c, d;
    EXPECT_NE(a.randInt(), b.randInt());
    EXPECT_NE(c.drawRandomNumber(), d.drawRandomNumber());
}

namespace {

struct VariateCase {
    std::string name;
    std::function<double(Rand&)> draw;
    std::vector<double> deciles;  // the 10 %, ..., 90 % quantiles
    double mean;
    double variance;
};

// Quantiles, means and variances from scipy.stats (ppf, mean, var); the
// hypo-exponential quantiles by brentq on its closed-form distribution function.
std::vector<VariateCase> variateCases() {
    return {
        {"uniform(1,4)", [](Rand& r) { return r.uniform(1, 4); },
         {1.3, 1.6, 1.9, 2.2, 2.5, 2.8, 3.1, 3.4, 3.7}, 2.5, 0.75},
        {"exponential(2.5)", [](Rand& r) { return r.exponential(2.5); },
         {0.04214420626, 0.08925742053, 0.1426699776, 0.2043302495, 0.2772588722, 0.3665162927, 0.4815891217,
          0.643775165, 0.9210340372}, 0.4, 0.16},
        {"normal(1,2)", [](Rand& r) { return r.normal(1, 2); },
         {-1.563103131, -0.6832424671, -0.04880102542, 0.4933057937, 1, 1.506694206, 2.048801025, 2.683242467,
          3.563103131}, 1, 4},
        {"lognormal(0.5,0.75)", [](Rand& r) { return r.lognormal(0.5, 0.75); },
         {0.6305494643, 0.8770283814, 1.112599996, 1.363411034, 1.648721271, 1.993736123, 2.443179792, 3.099422876,
          4.310973179}, 2.184200811, 3.602164306},
        {"erlang(3,2)", [](Rand& r) { return r.erlang(3, 2); },
         {0.5510326641, 0.7675221013, 0.9568878971, 1.142538452, 1.337030157, 1.552689299, 1.807783833, 2.13951493,
          2.661160169}, 1.5, 0.75},
        {"hypo_exponential(1,3)", [](Rand& r) { return r.hypo_exponential({1.0, 3.0}); },
         {0.3156711022, 0.4969230659, 0.6710035874, 0.8539768338, 1.057576814, 1.296508438, 1.595636617,
          2.008887308, 2.706563202}, 4.0 / 3.0, 1.0 + 1.0 / 9.0},
        {"weibull(1.5,2)", [](Rand& r) { return r.weibull(1.5, 2); },
         {0.4461510513, 0.7357883198, 1.00587743, 1.278041957, 1.566439538, 1.886769548, 2.263468459, 2.746710034,
          3.487443027}, 1.805490586, 1.502761139},
        {"gamma(0.3,2)", [](Rand& r) { return r.gamma(0.3, 2); },
         {0.0006474492436, 0.006540679049, 0.02545331554, 0.06747958529, 0.1462622717, 0.2825050073, 0.5131298266,
          0.920147774, 1.769621547}, 0.6, 1.2},
        {"gamma(1,2)", [](Rand& r) { return r.gamma(1, 2); },
         {0.2107210313, 0.4462871026, 0.7133498879, 1.021651248, 1.386294361, 1.832581464, 2.407945609, 3.218875825,
          4.605170186}, 2, 4},
        {"gamma(2.5,2)", [](Rand& r) { return r.gamma(2.5, 2); },
         {1.610307987, 2.342534306, 2.999908133, 3.655499623, 4.351460191, 5.131867074, 6.064429984, 7.289276127,
          9.2363569}, 5, 10},
        {"gamma(40,0.5)", [](Rand& r) { return r.gamma(40, 0.5); },
         {16.06946112, 17.30173477, 18.22883558, 19.04698299, 19.83358251, 20.64156251, 21.52992748, 22.60133713,
          24.1445509}, 20, 10},
        {"beta(2,5)", [](Rand& r) { return r.beta(2, 5); },
         {0.09259525891, 0.1398806883, 0.1818034713, 0.2225835336, 0.2644499833, 0.3094444275, 0.3603576904,
          0.4224475248, 0.5103163066}, 0.2857142857, 0.02551020408},
        {"beta(0.5,0.5)", [](Rand& r) { return r.beta(0.5, 0.5); },
         {0.02447174185, 0.09549150281, 0.2061073739, 0.3454915028, 0.5, 0.6545084972, 0.7938926261, 0.9045084972,
          0.9755282581}, 0.5, 0.125},
        {"beta(1,1)", [](Rand& r) { return r.beta(1, 1); },
         {0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9}, 0.5, 1.0 / 12.0},
        {"pearsonV(3,2)", [](Rand& r) { return r.pearsonV(3, 2); },
         {0.3757759535, 0.4673956634, 0.5531634822, 0.644043854, 0.7479262864, 0.8752440657, 1.045054497,
          1.302894077, 1.81477445}, 1, 1},
        {"pearsonVI(2,4,1.5)", [](Rand& r) { return r.pearsonVI(2, 4, 1.5); },
         {0.189636255, 0.3042049138, 0.4182245914, 0.5423966025, 0.685984017, 0.8621497678, 1.09519256, 1.442286133,
          2.10481928}, 1, 1.25},
        {"triangular(1,4,2)", [](Rand& r) { return r.triangular(1, 4, 2); },
         {1.547722558, 1.774596669, 1.948683298, 2.102633404, 2.267949192, 2.450806662, 2.658359214, 2.904554885,
          3.225403331}, 7.0 / 3.0, 0.3888888889},
        {"chi2(5)", [](Rand& r) { return r.chi2(5); },
         {1.610307987, 2.342534306, 2.999908133, 3.655499623, 4.351460191, 5.131867074, 6.064429984, 7.289276127,
          9.2363569}, 5, 10},
    };
}

}  // namespace

// 1e5 draws at a fixed seed: the share below each decile lies within 0.006
// (about 3.8 standard errors) of its nominal value, the sample mean within 4.5
// standard errors of the exact mean.
TEST(Rand, EveryContinuousVariateFollowsItsDistribution) {
    const int n = 100000;
    for (const VariateCase& c : variateCases()) {
        Rand r(20240501UL);
        std::vector<double> x(n);
        double sum = 0.0;
        for (int i = 0; i < n; ++i) {
            x[i] = c.draw(r);
            sum += x[i];
        }
        std::sort(x.begin(), x.end());
        for (std::size_t k = 0; k < c.deciles.size(); ++k) {
            const double share =
                static_cast<double>(std::lower_bound(x.begin(), x.end(), c.deciles[k]) - x.begin()) / n;
            EXPECT_NEAR(share, 0.1 * (k + 1), 0.006) << c.name << " at decile " << k + 1;
        }
        EXPECT_NEAR(sum / n, c.mean, 4.5 * std::sqrt(c.variance / n)) << c.name;
    }
}

TEST(Rand, GeometricCountsTrialsUpToTheFirstSuccess) {
    const int n = 100000;
    const double p = 0.3;
    Rand r(99UL);
    std::vector<int> counts(6, 0);
    double sum = 0.0;
    for (int i = 0; i < n; ++i) {
        const double k = r.geometric(p);
        ASSERT_GE(k, 1.0);
        ASSERT_EQ(k, std::floor(k));
        sum += k;
        if (k <= 5) ++counts[static_cast<int>(k)];
    }
    for (int k = 1; k <= 5; ++k)
        EXPECT_NEAR(counts[k] / double(n), std::pow(1 - p, k - 1) * p, 0.005) << "k = " << k;
    EXPECT_NEAR(sum / n, 1 / p, 4.5 * std::sqrt((1 - p) / (p * p) / n));

    // A sum of geometric counts: mean sum 1/p, variance sum (1 - p)/p^2.
    const std::vector<double> ps = {0.5, 0.2, 0.9};
    double s1 = 0.0, s2 = 0.0;
    for (int i = 0; i < n; ++i) {
        const double k = r.hypogeometric(ps);
        s1 += k;
        s2 += k * k;
    }
    const double mean = 2 + 5 + 1 / 0.9;
    const double variance = 0.5 / 0.25 + 0.8 / 0.04 + 0.1 / 0.81;
    EXPECT_NEAR(s1 / n, mean, 4.5 * std::sqrt(variance / n));
    EXPECT_NEAR(s2 / n - (s1 / n) * (s1 / n), variance, 0.05 * variance);
}

TEST(Rand, EqualSeedsGiveEqualSequencesInEveryMethod) {
    Rand a(1234UL), b(1234UL);
    for (int round = 0; round < 50; ++round) {
        for (const VariateCase& c : variateCases()) ASSERT_EQ(c.draw(a), c.draw(b)) << c.name;
        ASSERT_EQ(a.geometric(0.2), b.geometric(0.2));
        ASSERT_EQ(a.hypogeometric({0.4, 0.7}), b.hypogeometric({0.4, 0.7}));
    }
    // Reseeding restarts the uniform stream.
    a.setSeed(77UL);
    Rand c(77UL);
    for (int i = 0; i < 10; ++i) EXPECT_EQ(a.drawRandomNumber(), c.drawRandomNumber());
}

TEST(Rand, NormalKeepsTheSecondValueOfThePairForTheNextCall) {
    Rand r(5UL);
    const double first = r.normal(0.0, 1.0);
    Rand afterFirst(r);
    const double spare = afterFirst.normal(0.0, 1.0);
    // The spare takes the mu and sigma of the call that fetches it ...
    EXPECT_DOUBLE_EQ(r.normal(5.0, 2.0), 2.0 * spare + 5.0);
    // ... and that call draws nothing.
    Rand fresh(afterFirst);
    EXPECT_EQ(r.drawRandomNumber(), fresh.drawRandomNumber());
    EXPECT_NE(first, spare);

    // sigma 0 gives mu and still consumes the pair.
    Rand s(8UL), t(8UL);
    EXPECT_EQ(s.normal(3.5, 0.0), 3.5);
    t.normal(0.0, 1.0);
    EXPECT_EQ(s.drawRandomNumber(), t.drawRandomNumber());
}

TEST(Rand, DegenerateParametersGiveTheirExactValues) {
    Rand r(3UL), ref(3UL);
    EXPECT_EQ(r.uniform(2.0, 2.0), 2.0);
    ref.drawRandomNumber();
    EXPECT_EQ(r.geometric(1.0), 1.0);  // one draw
    ref.drawRandomNumber();
    const double zero = r.erlang(0, 1.5);  // no draw
    EXPECT_EQ(zero, 0.0);
    EXPECT_FALSE(std::signbit(zero));
    EXPECT_EQ(r.hypo_exponential({}), 0.0);
    EXPECT_EQ(r.drawRandomNumber(), ref.drawRandomNumber());
}

TEST(Rand, ExtremeShapesStayFinite) {
    Rand r(11UL);
    for (int i = 0; i < 20000; ++i) {
        const double g = r.gamma(1e-3, 1.0);
        ASSERT_TRUE(std::isfinite(g) && g >= 0.0) << g;
        const double b = r.beta(1e-3, 2e-3);
        ASSERT_TRUE(b >= 0.0 && b <= 1.0) << b;
        const double p = r.pearsonVI(1e-3, 1e-3, 1.0);
        ASSERT_FALSE(std::isnan(p));
    }
    // The Erlang product would underflow for large k; Erlang(5000, 1) has mean
    // 5000 and standard deviation about 71.
    for (int i = 0; i < 20; ++i) {
        const double e = r.erlang(5000, 1.0);
        ASSERT_TRUE(std::isfinite(e));
        EXPECT_NEAR(e, 5000.0, 500.0);
    }
}

TEST(Rand, InvalidParametersRaiseTheFamilyMessage) {
    struct Case {
        std::function<void(Rand&)> call;
        std::string message;
    };
    const std::string gammaMessage = "Invalid parameters for gamma distribution.";
    const std::string geometricMessage = "Invalid parameter for geometric distribution.";
    const std::vector<Case> cases = {
        {[](Rand& r) { r.uniform(-1.0, 1.0); }, "Invalid range for uniform distribution"},
        {[](Rand& r) { r.uniform(2.0, 1.0); }, "Invalid range for uniform distribution"},
        {[](Rand& r) { r.exponential(0.0); }, "Invalid rate for exponential distribution"},
        {[](Rand& r) { r.hypo_exponential({1.0, -2.0}); }, "Invalid rate for exponential distribution"},
        {[](Rand& r) { r.normal(0.0, -1.0); }, "Invalid parameter for normal distribution"},
        {[](Rand& r) { r.normal(0.0, NAN); }, "Invalid parameter for normal distribution"},
        {[](Rand& r) { r.lognormal(0.0, -1.0); }, "Invalid parameter for lognormal distribution"},
        {[](Rand& r) { r.erlang(2, 0.0); }, "Invalid rate for erlang distribution"},
        {[](Rand& r) { r.weibull(0.0, 1.0); }, "Invalid parameter for weibull distribution"},
        {[](Rand& r) { r.weibull(1.0, -1.0); }, "Invalid parameter for weibull distribution"},
        {[](Rand& r) { r.gamma(0.0, 1.0); }, gammaMessage},
        {[](Rand& r) { r.gamma(2.0, 0.0); }, gammaMessage},
        {[](Rand& r) { r.gamma(INFINITY, 1.0); }, gammaMessage},
        {[](Rand& r) { r.chi2(0); }, gammaMessage},
        {[](Rand& r) { r.beta(0.0, 1.0); }, "Invalid parameter for beta distribution"},
        {[](Rand& r) { r.pearsonV(1.0, 0.0); }, "Invalid parameters for Pearson V distribution."},
        {[](Rand& r) { r.pearsonVI(1.0, 1.0, 0.0); }, "Invalid parameters for Pearson VI distribution."},
        {[](Rand& r) { r.triangular(1.0, 3.0, 1.0); }, "Invalid parameters for triangular distribution."},
        {[](Rand& r) { r.triangular(1.0, 3.0, 3.0); }, "Invalid parameters for triangular distribution."},
        {[](Rand& r) { r.geometric(1.5); }, geometricMessage},
        {[](Rand& r) { r.geometric(0.0); }, geometricMessage},  // would wait for a draw of exactly 0
        {[](Rand& r) { r.hypogeometric({0.5, -0.1}); }, geometricMessage},
    };
    Rand r(1UL);
    for (std::size_t i = 0; i < cases.size(); ++i) {
        try {
            cases[i].call(r);
            ADD_FAILURE() << "case " << i << " did not throw";
        } catch (Exception& e) {
            EXPECT_EQ(e.message, cases[i].message) << "case " << i;
            EXPECT_EQ(e.file, "random") << "case " << i;
        }
    }
}
