// Fits side by side: every engine carries its problem with it, so a fit on
// one thread neither sees nor disturbs a fit on another. Each fit runs
// first alone on a fresh thread, then all of them twice at once; the figures
// must agree bit for bit. Run under ThreadSanitizer by `bash build.sh tsan`.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "core/libvelmora_settings.h"
#include "distributions/dist_gamma.h"
#include "distributions/dist_hypererlang.h"
#include "fitting/arimafit.h"
#include "fitting/artafit.h"
#include "fitting/cappfit.h"
#include "fitting/distfit.h"
#include "fitting/mepfit.h"
#include "markov/capp.h"
#include "markov/chep.h"
#include "markov/cph.h"
#include "markov/maps.h"
#include "numerics/matrix.h"
#include "numerics/random.h"
#include "timeseries/arima.h"
#include "timeseries/arta.h"

using namespace velmora;

namespace {

typedef std::vector<double> Figures;

Figures coefficientsOf(ARIMA* base) {
    Figures f = base->getARCoefficients();
    const Figures ma = base->getMACoefficients();
    f.insert(f.end(), ma.begin(), ma.end());
    return f;
}

Figures armaFit() {
    const std::unique_ptr<ARIMA> m(ARIMAFit::fit_arma_model({0.5, 0.3, 0.15, 0.07}, 2, 1));
    return coefficientsOf(m.get());
}

Figures artaFit() {
    ARTAFit fit(std::vector<double>{0.4, 0.2}, new Gamma(2.5, 1.5), 1, 2, 0, 0);
    const std::unique_ptr<ARTA> model(fit.fit_arta_model());
    Figures f = coefficientsOf(model->getBaseProcess());
    const Figures ac = model->getAutocorrelations(1, 3);
    f.insert(f.end(), ac.begin(), ac.end());
    return f;
}

HyperErlang* threeBranches() { return new HyperErlang({1, 2, 3}, {2.0, 1.0, 0.5}, {0.5, 0.3, 0.2}); }

Figures chepFit() {
    const std::unique_ptr<capp> model(cappfit::fit_chep(threeBranches(), {0.3, 0.12}, 1, 1, 0, 0));
    return coefficientsOf(model->getBaseProcess());
}

// A target beyond the branches' reach: the fit widens an acyclic chain.
Figures cappFit() {
    const std::unique_ptr<capp> model(cappfit::fit_chep(threeBranches(), {0.68}, 1, 0));
    return coefficientsOf(model->getBaseProcess());
}

Figures chepType2() {
    const std::unique_ptr<HyperErlang> h(threeBranches());
    return chep::compute_type2_autocorrelation(h.get(), {0.5, -0.3});
}

Figures mapFit() {
    const Matrix D0({{-10, 1, 0, 0}, {1, -10, 0, 0}, {0, 0, -1, 0.1}, {0, 0, 0.1, -1}});
    const Matrix D1({{8, 0.8, 0.2, 0}, {0.5, 8.3, 0, 0.2}, {0.05, 0, 0.85, 0}, {0, 0.05, 0, 0.85}});
    const MAP truth(D0, D1);
    const Vector tau(truth.steady_state_vector_embedded_dtmc().getRow(0), true);
    const map_markovian_rep rep = mapfit::mapfit_fit_autocorrelation(D0, tau, truth.getAutocorrelations(1, 5));
    Figures f;
    for (unsigned i = 0; i < 4; ++i)
        for (unsigned j = 0; j < 4; ++j) f.push_back(rep.D1[i][j]);
    return f;
}

Figures hyperErlangFit() {
    Rand r(11);
    Figures data(3000);
    for (double& x : data) x = r.hyper_erlang({1, 3}, {0.5, 3.0}, {0.4, 0.6});
    const std::unique_ptr<HyperErlang> fit(distfit::fit_hypererlang(data, 4));
    Figures f = fit->getRates();
    const Figures p = fit->getProbabilities();
    f.insert(f.end(), p.begin(), p.end());
    return f;
}

struct Job {
    std::string name;
    std::function<Figures()> run;
};

// Runs the job and keeps its figures, or the message of what it threw.
void runInto(const Job& job, Figures* figures, std::string* failure) {
    try {
        *figures = job.run();
    } catch (Exception& e) {
        *failure = e.toString();
    }
}

}  // namespace

TEST(ConcurrentFits, AgreeBitForBitWithTheSameFitsRunAlone) {
    const std::vector<Job> jobs{{"ARMA", armaFit},       {"ARTA", artaFit},         {"CHEP", chepFit},
                                {"CAPP", cappFit},       {"CHEP type 2", chepType2}, {"MAP", mapFit},
                                {"hyper-Erlang", hyperErlangFit}};
    const std::size_t n = jobs.size();
    const unsigned rounds = 2;
    // The fitters' progress lines, from all threads, are counted and dropped.
    std::size_t messages = 0;
    set_message_sink([&messages](MessageKind, const std::string&) { ++messages; });

    std::vector<Figures> alone(n);
    std::vector<std::string> aloneFailure(n);
    for (std::size_t i = 0; i < n; ++i) std::thread(runInto, std::cref(jobs[i]), &alone[i], &aloneFailure[i]).join();

    std::vector<Figures> together(n * rounds);
    std::vector<std::string> togetherFailure(n * rounds);
    std::vector<std::thread> threads;
    for (std::size_t k = 0; k < n * rounds; ++k)
        threads.emplace_back(runInto, std::cref(jobs[k % n]), &together[k], &togetherFailure[k]);
    for (std::thread& t : threads) t.join();
    set_message_sink(nullptr);
    EXPECT_EQ(messages % (rounds + 1), 0u);  // every fit reports the same lines each time

    for (std::size_t k = 0; k < n * rounds; ++k) {
        const std::size_t i = k % n;
        EXPECT_EQ(aloneFailure[i], "") << jobs[i].name;
        EXPECT_EQ(togetherFailure[k], "") << jobs[i].name;
        EXPECT_FALSE(alone[i].empty()) << jobs[i].name;
        EXPECT_EQ(together[k], alone[i]) << jobs[i].name;  // exact equality of every double
    }
}
