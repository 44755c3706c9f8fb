// CAPP and CHEP fits: a round trip through the exact autocorrelations of a
// type-1 chep, the widening of the reachable range with its progress lines,
// the dispatch by family, and the refusals.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "distributions/dist_exponential.h"
#include "distributions/dist_hypererlang.h"
#include "distributions/dist_hyperexponential.h"
#include "distributions/dist_hypoexponential.h"
#include "distributions/dist_normal.h"
#include "fitting/arta_capp_fit.h"
#include "fitting/cappfit.h"
#include "fitting_helpers.h"
#include "markov/capp.h"
#include "markov/chep.h"
#include "timeseries/arima.h"
#include "timeseries/arta.h"

using namespace velmora;
using fitting_test::failureOf;

namespace {

HyperErlang* threeBranches() { return new HyperErlang({1, 2, 3}, {2.0, 1.0, 0.5}, {0.5, 0.3, 0.2}); }

// The exact autocorrelations of a type-1 chep on an AR(1) base.
std::vector<double> chepTargets(double phi, unsigned lags) {
    chep model(threeBranches(), new ARIMA({phi}, {}, 0, 0, 1, 0, "unknown"), CHEP_TYPE_1);
    return model.getAutocorrelations(1, lags);
}

unsigned count(const std::string& text, const std::string& what) {
    unsigned n = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) n++;
    return n;
}

}  // namespace

TEST(CappFit, ChepRoundTripOnItsOwnAutocorrelations) {
    const std::vector<double> targets = chepTargets(0.7, 10);
    testing::internal::CaptureStdout();
    std::unique_ptr<capp> fitted(cappfit::fit_chep(threeBranches(), targets, 1, 0));
    const std::string out = testing::internal::GetCapturedStdout();
    ASSERT_NE(dynamic_cast<chep*>(fitted.get()), nullptr);
    EXPECT_EQ(static_cast<chep*>(fitted.get())->getType(), CHEP_TYPE_1);
    const std::vector<double> reached = fitted->getAutocorrelations(1, 10);
    for (unsigned i = 0; i < 10; i++) EXPECT_NEAR(reached[i], targets[i], 0.01) << "lag " << i + 1;
    EXPECT_NEAR(fitted->getBaseProcess()->getARCoefficients()[0], 0.7, 0.01);
    EXPECT_EQ(count(out, "possible autocorrelation for HErD: ["), 1u);
    EXPECT_EQ(count(out, "ACPH"), 0u);
    EXPECT_NE(out.find("Compute base process autocorrelation...\nFit ARMA model...\nARMA(1,0)...\n"),
              std::string::npos);
    EXPECT_TRUE(cappfit::cappfit_autocorrelation_cache.empty());
}

TEST(CappFit, SearchMapsZeroToZeroAndInvertsTheMapping) {
    std::unique_ptr<HyperErlang> h(threeBranches());
    chep model(threeBranches(), new ARIMA({0.5}, {}, 0, 0, 1, 0, "unknown"), CHEP_TYPE_1);
    const DistStats s = h->getProperties(0);
    const std::vector<double> mapped =
        capp::compute_autocorrelation(s.mean, s.variance, {0.4, -0.3}, model.getPaths(), model.getPathMeans());
    const std::vector<double> base = cappfit::compute_base_process_autocorrelation(
        s.mean, s.variance, model.getPaths(), model.getPathMeans(), {mapped[0], 0.0, mapped[1]});
    EXPECT_NEAR(base[0], 0.4, 1e-6);
    EXPECT_EQ(base[1], 0.0);
    EXPECT_NEAR(base[2], -0.3, 1e-6);
}

TEST(CappFit, TargetsBeyondTheBranchesWidenTheRange) {
    // The branches reach 0.5804 at most; the series canonical form 0.6643,
    // and one more pass of rewriting 0.6874.
    testing::internal::CaptureStdout();
    std::unique_ptr<capp> fitted(cappfit::fit_chep(threeBranches(), {0.68}, 1, 0));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(dynamic_cast<chep*>(fitted.get()), nullptr);
    EXPECT_EQ(fitted->getACPH()->getOrder(), 7u);  // 6 phases, one added
    EXPECT_NEAR(fitted->getAutocorrelations(1, 1)[0], 0.68, 1e-6);
    EXPECT_NEAR(fitted->getMoments(1, 1)[0], 0.5 * 0.5 + 0.3 * 2 + 0.2 * 6, 1e-12);
    EXPECT_EQ(count(out, "possible autocorrelation for HErD: [-0.322591, 0.580396]\n"), 1u);
    EXPECT_EQ(count(out, "possible autocorrelation for ACPH: ["), 2u);
    EXPECT_EQ(count(out, "desired autocorrelation: [0.68, 0.68]\n"), 3u);

    // Out of reach for good: eleven evaluations of the range, then the
    // failure; the hyper-Erlang stays the caller's.
    std::unique_ptr<HyperErlang> h(threeBranches());
    testing::internal::CaptureStdout();
    const std::string failure = failureOf([&] { cappfit::fit_chep(h.get(), {0.5, 0.8}, 1, 0); });
    out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(failure, "cappfit: AC not possible.");
    EXPECT_EQ(count(out, "possible autocorrelation for ACPH: ["), 11u);
    EXPECT_EQ(count(out, "desired autocorrelation: [0.5, 0.8]\n"), 12u);

    // Targets of 0 alone need no range and no search.
    testing::internal::CaptureStdout();
    std::unique_ptr<capp> flat(
        cappfit::fit_capp(new CPH(Matrix({{-4, 1, 1}, {0, -1, 0.5}, {0, 0, -0.25}}), Vector({0.5, 0.3, 0.2}, true)),
                          {0.0, 0.0}, 0, 0));
    out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(count(out, "possible autocorrelation"), 0u);
    EXPECT_EQ(flat->getACPH()->getOrder(), 3u);
    EXPECT_NEAR(flat->getAutocorrelations(1, 1)[0], 0.0, 1e-8);
}

TEST(CappFit, DispatchByFamily) {
    // Each target lies within the first reachable range of its marginal.
    testing::internal::CaptureStdout();
    std::unique_ptr<Process> arta(fit_arta_chep_capp(new Normal(1, 2), {0.3}, 1, 0));
    std::unique_ptr<Process> hyperExp(fit_arta_chep_capp(new HyperExponential({3.0, 0.5}, {0.6, 0.4}), {0.1}, 1, 0));
    std::unique_ptr<Process> hypo(fit_arta_chep_capp(new HypoExponential({1.0, 2.0, 4.0}), {0.05}, 1, 0));
    std::unique_ptr<Process> hyperErlang(fit_arta_chep_capp(threeBranches(), {0.3}, 1, 0));
    std::unique_ptr<Process> exponential(
        fit_arta_chep_capp(new CPH(Matrix({{-2.0}}), Vector({1.0}, true)), {0.3}, 1, 0));
    std::unique_ptr<Process> acyclic(fit_arta_chep_capp(
        new CPH(Matrix({{-4, 1, 1}, {0, -1, 0.5}, {0, 0, -0.25}}), Vector({0.5, 0.3, 0.2}, true)), {0.3}, 1, 0));
    testing::internal::GetCapturedStdout();

    EXPECT_NE(dynamic_cast<ARTA*>(arta.get()), nullptr);
    auto* c = dynamic_cast<chep*>(hyperExp.get());
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(c->getHyperErlang()->getPhases(), (std::vector<unsigned>{1, 1}));
    EXPECT_EQ(hypo->getProcessType(), PROCESS_CAPP);
    EXPECT_EQ(dynamic_cast<chep*>(hypo.get()), nullptr);
    EXPECT_NE(dynamic_cast<chep*>(hyperErlang.get()), nullptr);
    auto* a = dynamic_cast<ARTA*>(exponential.get());
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(a->getDistribution()->getType(), DIST_EXPONENTIAL);
    EXPECT_EQ(acyclic->getProcessType(), PROCESS_CAPP);
    const double target[] = {0.3, 0.1, 0.05, 0.3, 0.3, 0.3};
    const Process* all[] = {arta.get(), hyperExp.get(), hypo.get(), hyperErlang.get(), exponential.get(), acyclic.get()};
    for (unsigned i = 0; i < 6; i++)
        EXPECT_NEAR(const_cast<Process*>(all[i])->getAutocorrelations(1, 1)[0], target[i], 1e-3) << i;
}

TEST(CappFit, Refusals) {
    std::unique_ptr<CPH> cyclic(
        new CPH(Matrix({{-3, 1, 0.5}, {0.5, -2, 1}, {0.2, 0.3, -1.5}}), Vector({0.5, 0.3, 0.2}, true)));
    std::unique_ptr<CPH> invalid(new CPH(Matrix({{-1, 2}, {0, -1}}), Vector({0.5, 0.5}, true)));
    std::unique_ptr<CPH> acyclic(new CPH(Matrix({{-1, 1}, {0, -2}}), Vector({1.0, 0.0}, true)));
    EXPECT_EQ(failureOf([&] { fit_arta_chep_capp(invalid.get(), {0.2}, 1, 0); }),
              "arta_capp_fit: Not a valid PH distribution!");
    EXPECT_EQ(failureOf([&] { fit_arta_chep_capp(cyclic.get(), {0.2}, 1, 0); }),
              "arta_capp_fit: Not an acyclic PH distribution!");
    EXPECT_EQ(failureOf([&] { cappfit::fit_capp(cyclic.get(), {0.2}, 1, 0); }),
              "cappfit: Acyclic Phase-type distribution expected.");
    EXPECT_EQ(failureOf([&] { cappfit::fit_capp(acyclic.get(), {}, 1, 0); }),
              "arimafit: No target autocorrelations.");
    EXPECT_EQ(failureOf([&] { cappfit::fit_capp(acyclic.get(), {1.0}, 1, 0); }),
              "arimafit: Target autocorrelations must lie in (-1, 1).");
    EXPECT_EQ(failureOf([&] { cappfit::fit_capp(acyclic.get(), static_cast<Trace*>(nullptr), 3, 1, 0); }),
              "cappfit: No trace.");
    std::unique_ptr<HyperErlang> h(threeBranches());
    EXPECT_EQ(failureOf([&] { fit_arta_chep_capp(h.get(), std::vector<double>{}, 1, 0); }),
              "arimafit: No target autocorrelations.");
}
