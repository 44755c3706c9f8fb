// The stages from a trace to a model, as a library user calls them.
#include <memory>

#include "config/conf.h"
#include "core/process.h"
#include "distributions/dist_hypererlang.h"
#include "fitting/modelchoice.h"
#include "fitting/process_factory.h"
#include "fitting/tracefit.h"
#include "markov/cph.h"
#include "numerics/matrix.h"
#include "support/test_support.h"
#include "traces/trace.h"

using namespace velmora;
using velmora_test::messageOf;

namespace {
std::vector<double> valuesOf(Trace& t) {
    std::vector<double> v(t.getSize());
    for (unsigned i = 0; i < t.getSize(); ++i) v[i] = t.getElement(i);
    return v;
}

Trace* chepTrace(unsigned n) {
    XMLConfig document(std::string(VELMORA_SOURCE_DIR) + "/examples/chep.xml");
    std::unique_ptr<Process> chep(load_process(&document));
    return chep->simulate(1, n, 0, 11);
}
}  // namespace

// Six values of 1.08e16 and one of 4.5e-308 (once 91 s in the correlation
// fit): the gamma of shape 0.009 that AIC picks has transforms spanning 300
// orders of magnitude, and the fit now ends in a message.
TEST(TraceFit, ValuesSpanningThreeHundredOrdersEndInAMessage) {
    std::vector<double> values(6, 1.08e16);
    values.push_back(4.5e-308);
    Trace t(values);
    TraceFitMarginal m = tracefit_marginal(values, "gamma", 3);
    TraceFitOrders orders;
    orders.lags = 2;
    EXPECT_EQ(messageOf([&] { tracefit_correlation(m, TRACEFIT_AUTO, &t, orders); }, "normal_grid_integral"),
              "The correlation integral did not settle within 4194304 evaluations: the marginal's values span too "
              "many orders of magnitude.");
    // Found by fuzzing: every integral settles just below its limit, and the search ran for minutes.
    const std::vector<double> five = {1.08e16, 4401056824082432.0, 4401056825999393.5, 5.677224323160984e-81,
                                      1.1659655929118087e-87};
    Trace t5(five);
    TraceFitMarginal g = tracefit_marginal(five, "gamma", 3);
    orders.lags = 1;
    orders.pMax = 1;
    orders.qMax = 0;
    EXPECT_EQ(messageOf([&] { tracefit_correlation(g, TRACEFIT_ARTA, &t5, orders); }, "artafit"),
              "The search of the base autocorrelations took more than 8388608 integrand evaluations: the "
              "marginal's values span too many orders of magnitude.");
}

// Uniformization over the sorted values against the hyper-Erlang's closed
// forms: the same distribution, so the same figures.
TEST(TraceFit, PhaseTypeAssessmentAgreesWithTheClosedFormOfTheSameDistribution) {
    HyperErlang h({1, 3, 2}, {2.0, 1.5, 0.5}, {0.5, 0.3, 0.2});
    h.setSeed(5);
    std::vector<double> data(5000);
    for (double& x : data) x = h.generateVariate();
    const distfit::Assessment closed = distfit::assess(&h, data);
    const distfit::Assessment walked = tracefit_assess_ph(h.asCPH(), data);
    EXPECT_NEAR(walked.logLikelihood, closed.logLikelihood, 1e-9 * std::fabs(closed.logLikelihood));
    EXPECT_NEAR(walked.ks, closed.ks, 1e-9);
    for (unsigned i = 0; i < 3; ++i) {
        EXPECT_NEAR(walked.modelMoments[i], closed.modelMoments[i], 1e-12 * closed.modelMoments[i]);
        EXPECT_DOUBLE_EQ(walked.dataMoments[i], closed.dataMoments[i]);
    }
    // Six rates, three links inside the branches and three entries.
    EXPECT_EQ(walked.parameters, 11u);

    // Near 0 the density of a chain lives in the small mass of its last
    // phase: rates 1, 2, 3 give 3 x^2 at x = 1e-9, and the hypo-exponential
    // closed form at 0.5 (both by hand in Python's math module).
    CPH chain(Matrix({{-1, 1, 0}, {0, -2, 2}, {0, 0, -3}}), Vector({1, 0, 0}, true));
    EXPECT_NEAR(tracefit_assess_ph(chain, {1e-9, 0.5}).logLikelihood, -41.61481135569098, 1e-8);
}

// A refused class leaves the marginal with the caller; an accepted one takes
// it, and a MAP keeps the marginal's moments (D0 stays T, and tau stays the
// stationary vector after an event up to the penalty of the search).
TEST(TraceFit, CorrelationTakesTheMarginalOnlyWhenItSucceeds) {
    std::unique_ptr<Trace> trace(chepTrace(20000));
    const std::vector<double> data = valuesOf(*trace);
    TraceFitOrders orders;

    TraceFitMarginal gamma = tracefit_marginal(data, "gamma", 6);
    EXPECT_EQ(gamma.source, "fitted");
    EXPECT_EQ(messageOf([&] { tracefit_correlation(gamma, TRACEFIT_CAPP, trace.get(), orders); }, "tracefit"),
              "Model capp needs a phase-type marginal (exponential, erlang, hypoexponential, hyperexponential, "
              "hypererlang or a ph model file), not gamma.");
    EXPECT_TRUE(gamma.dist);

    TraceFitMarginal h = tracefit_marginal(data, "hypererlang", 4);
    EXPECT_EQ(h.candidates.size(), 4u) << "one candidate per phase count";
    const std::array<double, 3> moments = h.assessment.modelMoments;
    std::unique_ptr<Process> map(tracefit_correlation(h, TRACEFIT_MAP, trace.get(), orders));
    EXPECT_FALSE(h.dist);
    EXPECT_EQ(tracefit_model_class(map.get()).rfind("MAP of order ", 0), 0u);
    unsigned p = 0, q = 0;
    EXPECT_FALSE(tracefit_base_orders(map.get(), &p, &q));
    const std::vector<double> got = map->getMoments(1, 3);
    for (unsigned i = 0; i < 3; ++i) EXPECT_NEAR(got[i], moments[i], 1e-7 * moments[i]);

    TraceFitMarginal chosen = tracefit_marginal(data, "", 3);
    EXPECT_EQ(chosen.source, "AIC choice");
    EXPECT_EQ(chosen.candidates.size(), 5u + 3u);
    std::unique_ptr<Process> model(tracefit_correlation(chosen, TRACEFIT_AUTO, trace.get(), orders));
    EXPECT_TRUE(tracefit_base_orders(model.get(), &p, &q));
    EXPECT_TRUE(p >= orders.pMin && p <= orders.pMax && q <= orders.qMax);
}

// The whole fit reports its stages in order and describes what it chose;
// a trace too short for the lags is refused before any stage.
TEST(TraceFit, WholeFitGivesOneResultAndNamesItsStages) {
    std::unique_ptr<Trace> trace(chepTrace(20000));
    TraceFitRequest request;
    request.marginal = "HyperErlang";
    request.phases = 4;
    request.orders.lags = 3;
    std::vector<std::string> stages;
    const TraceFitResult r = tracefit(*trace, request, [&](const std::string& s) { stages.push_back(s); });
    EXPECT_EQ(stages, (std::vector<std::string>{"marginal", "correlation"}));
    ASSERT_TRUE(r.model);
    EXPECT_EQ(r.values, 20000u);
    EXPECT_EQ(r.marginalName, "hypererlang");
    EXPECT_EQ(r.candidates.size(), 4u);
    EXPECT_EQ(r.targets, trace->getAutocorrelations(1, 3));
    EXPECT_EQ(r.fitted, r.model->getAutocorrelations(1, 3));
    // The default class is chosen by joint BIC, and the model written is the chosen candidate.
    ASSERT_FALSE(r.likelihoodCandidates.empty());
    EXPECT_EQ(r.jointLogLikelihood, r.likelihoodCandidates.at(r.likelihoodChosen).logLikelihood);

    Trace four(std::vector<double>{1, 2, 3, 4});
    EXPECT_EQ(messageOf([&] { tracefit(four, request); }, "tracefit"),
              "The trace holds 4 values; 3 lags need at least 5.");
}
