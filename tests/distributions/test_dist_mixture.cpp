// Erlang, hyper-exponential, hypo-exponential and hyper-Erlang: statistics
// against their phase-type forms, the parameter checks with their two
// tolerances, and branch order.
#include "dist_helpers.h"
#include "distributions/dist.h"
#include "distributions/dist_erlang.h"
#include "distributions/dist_hypererlang.h"
#include "distributions/dist_hyperexponential.h"
#include "distributions/dist_hypoexponential.h"
#include "markov/cph.h"

using namespace velmora;
using disttest::failure;

TEST(DistMixture, PhaseTypeFormsHaveTheFamilysMomentsAndLayout) {
    // The series chain has the closed-form moments (the hypo-exponential's
    // moments come from its chain and are checked against numpy instead).
    Erlang erlang(4, 1.5);
    CPH chain = erlang.asCPH();
    EXPECT_EQ(chain.getOrder(), 4u);
    EXPECT_TRUE(chain.valid_ph());
    velmora_test::expectRelative(Matrix(chain.getMoments(1, 4), MATRIX_ROW),
                                 Matrix(erlang.getProperties(4).moments, MATRIX_ROW), 1e-12, "moments");
    // The hyper-Erlang puts its branches on the diagonal.
    CPH c = HyperErlang({2, 1}, {1, 5}, {0.3, 0.7}).asCPH();
    EXPECT_EQ(c.getT(), Matrix({{-1, 1, 0}, {0, -1, 0}, {0, 0, -5}}));
    EXPECT_EQ(c.getTau(), Vector({0.3, 0, 0.7}, true));
}

TEST(DistMixture, ParameterChecksTheirTolerancesAndMissingOperations) {
    struct Case { const char* what; std::function<void()> call; const char* message; };  // message "": accepted
    const char* hyperExp = "Invalid parameters for Hyper-Exponential distribution.";
    const char* hyperErl = "Invalid parameters for Hyper-Erlang distribution.";
    const char* erlangRate = "Invalid rate for erlang distribution";
    const char* erlangPhases = "Invalid number of phases for Erlang distribution.";
    const char* missing = "Not implemented.";
    HyperExponential x({1, 2}, {0.5, 0.5});
    HypoExponential y({1, 2});
    HyperErlang z({1, 2}, {1, 2}, {0.5, 0.5});
    const Case cases[] = {
        {"erlang rate 0", [] { Erlang(2, 0); }, erlangRate},
        {"erlang 0 phases", [] { Erlang(0, 1); }, ""},
        {"hyperexp sum off by 0.003", [] { HyperExponential({1, 2}, {0.5, 0.503}); }, ""},
        {"hyperexp sum off by 0.006", [] { HyperExponential({1, 2}, {0.5, 0.506}); }, hyperExp},
        {"hyperexp lengths", [] { HyperExponential({1, 2, 3}, {0.5, 0.5}); }, hyperExp},
        {"hyperexp negative rate", [] { HyperExponential({1, -2}, {0.5, 0.5}); }, hyperExp},
        {"hyperexp negative probability", [] { HyperExponential({1, 2}, {1.5, -0.5}); }, hyperExp},
        {"hyperexp rate 0", [] { HyperExponential({0, 2}, {0.5, 0.5}); }, ""},
        {"hypoexp negative rate", [] { HypoExponential({1, -1}); },
         "Invalid parameters for Hypo-Exponential distribution."},
        {"hypoexp rate 0", [] { HypoExponential({0, 1}); }, ""},
        {"hypererlang sum off by 0.003", [] { HyperErlang({1, 1}, {1, 2}, {0.5, 0.503}); }, hyperErl},
        {"hypererlang sum off by 5e-6", [] { HyperErlang({1, 1}, {1, 2}, {0.5, 0.500005}); }, ""},
        {"hypererlang lengths", [] { HyperErlang({1, 1, 1}, {1, 2}, {0.5, 0.5}); }, hyperErl},
        {"hypererlang negative rate", [] { HyperErlang({1, 1}, {1, -2}, {0.5, 0.5}); }, hyperErl},
        {"hypererlang rate 0", [] { HyperErlang({1, 1}, {0, 2}, {0.5, 0.5}); }, ""},
        {"erlang static negative rate", [] { Erlang::erlang_cdf(1, 2, -1); }, "Invalid rate for Erlang distribution."},
        {"erlang static rate 0", [] { Erlang::erlang_pdf(1, 2, 0); }, ""},
        {"erlang static 0 phases", [] { Erlang::erlang_pdf(1, 0, 1); }, erlangPhases},
        {"erlang moments past the factorial", [] { Erlang::erlang_stats(35, 1, 1); },
         "Moments of Erlang distribution beyond the range of the factorial."},
        {"erlang statistics without moments", [] { Erlang::erlang_stats(35, 1, 0); }, ""},
        {"branch of rate 0 as phase-type", [] { HyperErlang({1, 1}, {0, 2}, {0.5, 0.5}).asCPH(); }, erlangRate},
        {"branch without phases as phase-type", [] { HyperErlang({0, 1}, {1, 2}, {0.5, 0.5}).asCPH(); }, erlangPhases},
        {"series without phases as phase-type", [] { HypoExponential({}).asCPH(); },
         "Hypo-Exponential distribution without phases has no phase-type form."},
        // Operations the families do not offer (the statics throw where the members do).
        {"hyperexp variate", [&] { x.generateVariate(); }, missing},
        {"hyperexp statistics", [&] { x.getProperties(1); }, missing},
        {"hypoexp cdf", [&] { y.evalCDF(1); }, missing},
        {"hypererlang quantile", [&] { z.evalInverseCDF(0.5); }, missing},
    };
    for (const Case& c : cases) EXPECT_EQ(failure(c.call), *c.message ? c.message : "no failure") << c.what;
}

TEST(DistMixture, DegenerateSeries) {
    // Equal rates make the hypo-exponential density divide by zero.
    EXPECT_FALSE(std::isfinite(HypoExponential({2, 2}).evalPDF(1)));
    HypoExponential empty({});
    EXPECT_EQ(empty.getProperties(2).moments, (std::vector<double>{0, 0}));
    EXPECT_EQ(empty.generateVariate(), 0);
}

TEST(DistMixture, BranchesSortByMeanKeepingTiesAndBecomeErlangs) {
    // Means 3, 1, 2.
    HyperErlang h({3, 1, 4}, {1, 1, 2}, {0.2, 0.3, 0.5});
    h.sortBranches();
    EXPECT_EQ(h.getPhases(), (std::vector<unsigned>{1, 4, 3}));
    EXPECT_EQ(h.getRates(), (std::vector<double>{1, 2, 1}));
    EXPECT_EQ(h.getProbabilities(), (std::vector<double>{0.3, 0.5, 0.2}));
    // Equal means 1: the order stays.
    HyperErlang tie({1, 2, 3}, {1, 2, 3}, {0.2, 0.3, 0.5});
    tie.sortBranches();
    EXPECT_EQ(tie.getPhases(), (std::vector<unsigned>{1, 2, 3}));

    std::vector<std::pair<double, Erlang*>> dists = h.getErlangDists();
    ASSERT_EQ(dists.size(), 3u);
    for (size_t i = 0; i < 3; i++) {
        EXPECT_EQ(dists[i].first, h.getProbabilities()[i]);
        EXPECT_EQ(dists[i].second->getPhases(), h.getPhases()[i]);
        EXPECT_EQ(dists[i].second->getRate(), h.getRates()[i]);
        delete dists[i].second;
    }
}
