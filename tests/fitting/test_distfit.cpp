// Marginal fitting: recovery of known families from their own variates, the
// hyper-Erlang EM against the true mixture, the family choice, and the
// refusals of data that no family of the name can fit.
#include "fitting/distfit.h"

#include <cmath>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "distributions/dist.h"
#include "distributions/dist_beta.h"
#include "distributions/dist_erlang.h"
#include "distributions/dist_exponential.h"
#include "distributions/dist_gamma.h"
#include "distributions/dist_geometric.h"
#include "distributions/dist_hypererlang.h"
#include "distributions/dist_lognormal.h"
#include "distributions/dist_normal.h"
#include "distributions/dist_pearsonv.h"
#include "distributions/dist_uniform.h"
#include "distributions/dist_weibull.h"
#include "numerics/random.h"
#include "support/test_support.h"

using namespace velmora;

namespace {

std::vector<double> draw(unsigned seed, std::size_t n, const std::function<double(Rand&)>& variate) {
    Rand rng(seed);
    std::vector<double> v(n);
    for (double& x : v) x = variate(rng);
    return v;
}

// The parameters of a fitted family in constructor order.
std::vector<double> parameters(Dist* d) {
    switch (d->getType()) {
        case DIST_EXPONENTIAL: return {static_cast<Exponential*>(d)->getRate()};
        case DIST_NORMAL: return {static_cast<Normal*>(d)->getMean(), static_cast<Normal*>(d)->getSD()};
        case DIST_LOGNORMAL: return {static_cast<Lognormal*>(d)->getMu(), static_cast<Lognormal*>(d)->getSigma()};
        case DIST_GAMMA: return {static_cast<Gamma*>(d)->getAlpha(), static_cast<Gamma*>(d)->getBeta()};
        case DIST_WEIBULL: return {static_cast<Weibull*>(d)->getAlpha(), static_cast<Weibull*>(d)->getBeta()};
        case DIST_BETA: return {static_cast<Beta*>(d)->getAlpha1(), static_cast<Beta*>(d)->getAlpha2()};
        case DIST_PEARSONV: return {static_cast<PearsonV*>(d)->getAlpha(), static_cast<PearsonV*>(d)->getBeta()};
        case DIST_UNIFORM: return {static_cast<Uniform*>(d)->getA(), static_cast<Uniform*>(d)->getB()};
        case DIST_GEOMETRIC: return {static_cast<Geometric*>(d)->getP()};
        case DIST_ERLANG:
            return {static_cast<double>(static_cast<Erlang*>(d)->getPhases()), static_cast<Erlang*>(d)->getRate()};
        default: return {};
    }
}

}  // namespace

// 100 000 variates of a known member; every fitted parameter within 2 % of
// the truth (the sampling error of each is below 1 % at this size).
TEST(DistFit, RecoversKnownFamiliesWithinTwoPercent) {
    struct Row {
        std::string family;
        std::function<double(Rand&)> variate;
        std::vector<double> truth;
    };
    const std::vector<Row> rows = {
        {"exponential", [](Rand& r) { return r.exponential(2.0); }, {2.0}},
        {"gamma", [](Rand& r) { return r.gamma(2.5, 1.5); }, {2.5, 1.5}},
        {"gamma", [](Rand& r) { return r.gamma(0.4, 3.0); }, {0.4, 3.0}},
        {"lognormal", [](Rand& r) { return r.lognormal(0.3, 0.8); }, {0.3, 0.8}},
        {"weibull", [](Rand& r) { return r.weibull(1.7, 2.0); }, {1.7, 2.0}},
        {"weibull", [](Rand& r) { return r.weibull(0.6, 5.0); }, {0.6, 5.0}},
        {"normal", [](Rand& r) { return r.normal(5.0, 2.0); }, {5.0, 2.0}},
        {"beta", [](Rand& r) { return r.beta(2.0, 5.0); }, {2.0, 5.0}},
        {"pearsonV", [](Rand& r) { return r.pearsonV(3.0, 2.0); }, {3.0, 2.0}},
        {"uniform", [](Rand& r) { return r.uniform(1.0, 4.0); }, {1.0, 4.0}},
        {"geometric", [](Rand& r) { return r.geometric(0.3); }, {0.3}},
        {"erlang", [](Rand& r) { return r.erlang(3, 2.0); }, {3.0, 2.0}},
    };
    unsigned seed = 11;
    for (const Row& row : rows) {
        const std::vector<double> data = draw(seed++, 100000, row.variate);
        std::unique_ptr<Dist> d(distfit::fit_distribution(row.family, data));
        ASSERT_EQ(Dist::getDistType(d->getType()), row.family);
        const std::vector<double> got = parameters(d.get());
        ASSERT_EQ(got.size(), row.truth.size()) << row.family;
        for (std::size_t i = 0; i < got.size(); ++i)
            EXPECT_NEAR(got[i], row.truth[i], 0.02 * std::fabs(row.truth[i])) << row.family << " parameter " << i;
    }
}

// A mixture of Erlang branches with 1, 2 and 3 phases: EM over the eleven
// structures of 6 phases reaches the true mixture's log-likelihood (it may
// exceed it: it is the likelihood's maximum over a larger family), and the
// figure it reports is that of the returned object on the full data.
TEST(DistFit, HyperErlangEMReachesTheTrueLikelihood) {
    const std::vector<unsigned> phases{1, 2, 3};
    const std::vector<double> rates{0.5, 4.0, 1.0}, probabilities{0.3, 0.3, 0.4};
    const std::vector<double> data =
        draw(5, 100000, [&](Rand& r) { return r.hyper_erlang(phases, rates, probabilities); });
    HyperErlang truth(phases, rates, probabilities);
    const double trueLL = distfit::assess(&truth, data).logLikelihood;

    distfit::EMReport report;
    std::unique_ptr<HyperErlang> fit(distfit::fit_hypererlang(data, 6, &report));
    EXPECT_GE(report.structures, 11u);  // every partition of 6, and the smaller orders
    EXPECT_TRUE(report.converged);
    EXPECT_EQ(fit->getOrder(), 6u);
    EXPECT_GE(report.logLikelihood, trueLL - 0.001 * std::fabs(trueLL));
    EXPECT_NEAR(distfit::assess(fit.get(), data).logLikelihood, report.logLikelihood, 1e-9 * std::fabs(trueLL));
    // Value by value (no aggregation) on a short input: the same fit within
    // the bins' grain.
    const std::vector<double> head(data.begin(), data.begin() + 1500);
    distfit::EMReport exact, binned;
    distfit::EMOptions coarse;
    coarse.bins = 200;
    std::unique_ptr<HyperErlang> a(distfit::fit_hypererlang(head, 4, &exact));
    std::unique_ptr<HyperErlang> b(distfit::fit_hypererlang(head, 4, &binned, coarse));
    EXPECT_EQ(exact.bins, head.size());
    EXPECT_LE(binned.bins, 200u);
    EXPECT_NEAR(binned.logLikelihood, exact.logLikelihood, 1e-3 * std::fabs(exact.logLikelihood));
    // The iteration cap holds and is reported (with a warning line).
    distfit::EMOptions capped;
    capped.maxIterations = 3;
    distfit::EMReport stopped;
    std::unique_ptr<HyperErlang> c(distfit::fit_hypererlang(head, 4, &stopped, capped));
    EXPECT_FALSE(stopped.converged);
    EXPECT_LE(stopped.iterations, 3u);
    EXPECT_GT(stopped.unconverged, 0u);
}

TEST(DistFit, BestFamilyPicksGammaForGammaDataAndHyperErlangForBimodalData) {
    const std::vector<std::string> families{"exponential", "gamma", "lognormal", "weibull", "hypererlang"};
    const std::vector<double> gammaData = draw(21, 20000, [](Rand& r) { return r.gamma(2.5, 1.5); });
    distfit::Selection s = distfit::best_family(gammaData, families, 3);
    EXPECT_EQ(Dist::getDistType(s.best->getType()), "gamma");
    EXPECT_EQ(s.candidates.size(), 7u);  // four families and three hyper-Erlangs
    EXPECT_EQ(s.candidates[s.bestIndex].family, "gamma");

    const std::vector<double> bimodal =
        draw(22, 20000, [](Rand& r) { return r.hyper_erlang({6, 6}, {6.0, 0.6}, {0.5, 0.5}); });
    s = distfit::best_family(bimodal, families, 4);
    EXPECT_EQ(Dist::getDistType(s.best->getType()), "hypererlang");
}

// Exponential(1) on {1, 2, 3}: log-likelihood -6; AIC 2 - 2(-6) = 14; BIC
// ln 3 + 12; the KS distance is F(1) = 1 - e^-1 against the empty step
// before the first value; model moments 1, 2, 6 and data moments 2, 14/3, 12.
TEST(DistFit, AssessmentOfAnExponentialIsClosedForm) {
    Exponential e(1.0);
    const distfit::Assessment a = distfit::assess(&e, {1, 2, 3});
    EXPECT_NEAR(a.logLikelihood, -6.0, 1e-12);
    EXPECT_NEAR(a.aic, 14.0, 1e-12);
    EXPECT_NEAR(a.bic, std::log(3.0) + 12.0, 1e-12);
    EXPECT_NEAR(a.ks, 1 - std::exp(-1.0), 1e-12);
    EXPECT_NEAR(a.modelMoments[2], 6.0, 1e-12);
    EXPECT_NEAR(a.dataMoments[1], 14.0 / 3, 1e-12);
}

TEST(DistFit, RefusesDataNoFamilyOfTheNameCanFit) {
    const std::vector<double> good{0.5, 1.0, 2.0, 4.0};
    const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
    struct Row {
        std::function<void()> action;
        std::string expected;  // a part of the message
    };
    auto fit = [](const std::string& family, std::vector<double> data, unsigned phases = 0) {
        return [=]() { distfit::fit_distribution(family, data, phases); };
    };
    const std::vector<Row> rows = {
        {fit("normal", {}), "no data"},
        {fit("gamma", {1, nan, 2}), "value 2 is nan"},
        {fit("exponential", {1, inf}), "must be finite"},
        {fit("gamma", {1, -2, 3}), "non-negative, and value 2 is -2"},
        {fit("weibull", {3, 3, 3}), "constant data"},
        {fit("lognormal", {0, 1, 2}), "density is 0 at 0"},
        {fit("hypererlang", good, 0), "at least 1"},
        {[&]() { distfit::fit_hypererlang(good, 0); }, "at least 1"},
        {fit("hypererlang", good, 65), "at most 64"},
        {fit("erlang", {1, 1.0001, 0.9999, 1.00005}), "more than 64 phases"},
        {fit("deterministic", good), "vary"},
        {fit("beta", good), "(0, 1)"},
        {fit("hyperexponential", {1, 2, 3}), "above 1"},
        {fit("hypoexponential", {1, 10, 100}), "between 0.5 and 1"},
        {fit("geometric", {1, 2.5}), "whole number"},
        // Steps of 1 are lost at this size: the search over k once never ended.
        {fit("chisquare", {1e300, 2e300}), "beyond 4e9 degrees of freedom"},
        {fit("johnson", good), "not offered"},
        {fit("hypogeometric", good), "no probability function"},
        {fit("Normal", good), "Unknown distribution family"},
        {[&]() { distfit::best_family(good, {"beta", "deterministic"}, 0); }, "No candidate family could be fitted"},
    };
    for (const Row& row : rows) {
        const std::string message = velmora_test::messageOf(row.action, "distfit");
        EXPECT_NE(message.find(row.expected), std::string::npos) << message;
    }
}

// Four phases on Weibull(scale 1, shape 1.5) values: the start that puts the
// branches at quantiles makes [2, 2] collapse into one Erlang and [2, 1, 1]
// into a [2, 1] with two equal exponential branches; the kept fit is a true
// four-phase structure (grown from the best of three phases), better than
// any three-phase fit in disguise.
TEST(DistFit, HyperErlangKeepsNoCollapsedStructure) {
    const std::vector<double> data = draw(11, 100000, [](Rand& r) { return r.weibull(1.5, 1.0); });
    distfit::EMReport three, four;
    std::unique_ptr<HyperErlang> a(distfit::fit_hypererlang(data, 3, &three));
    std::unique_ptr<HyperErlang> b(distfit::fit_hypererlang(data, 4, &four));
    EXPECT_EQ(four.structure, (std::vector<unsigned>{2, 2}));
    EXPECT_GT(four.logLikelihood, three.logLikelihood + 50);
    const std::vector<double> rates = b->getRates();
    EXPECT_GT(std::fabs(rates[0] - rates[1]), 1e-3 * std::max(rates[0], rates[1]));
}

// Beyond 13 phases: lognormal(0, 0.2) values (squared cv 0.04) want about 25
// phases in one branch; 13 phases leave a KS distance near 0.1.
TEST(DistFit, HyperErlangFitsBeyondThirteenPhases) {
    const std::vector<double> data = draw(17, 20000, [](Rand& r) { return r.lognormal(0, 0.2); });
    std::unique_ptr<HyperErlang> thirteen(distfit::fit_hypererlang(data, 13));
    std::unique_ptr<HyperErlang> many(distfit::fit_hypererlang(data, 28));
    EXPECT_EQ(many->getOrder(), 28u);
    EXPECT_GT(distfit::assess(thirteen.get(), data).ks, 0.05);
    EXPECT_LT(distfit::assess(many.get(), data).ks, 0.02);
}
