// Cost of the CAPP and CHEP fits. The round trip fits a three-branch
// hyper-Erlang (phases 1, 2, 3) to the ten exact autocorrelations of a
// type-1 chep on an AR(1) base with coefficient 0.7; the counter "worst" is
// the largest distance of the fitted autocorrelations from the targets. The
// unreachable fits ask for a lag-1 autocorrelation of 0.95, which no rewriting
// reaches, so they run all eleven evaluations of the range before they fail;
// the counter "paths" is the path count of the last pass. Progress lines go
// to standard output.
#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <vector>

#include "core/libvelmora_settings.h"
#include "distributions/dist_hypererlang.h"
#include "fitting/cappfit.h"
#include "markov/capp.h"
#include "markov/capp_transform.h"
#include "markov/chep.h"
#include "numerics/matrix.h"
#include "timeseries/arima.h"

namespace {

using namespace velmora;

HyperErlang* threeBranches() { return new HyperErlang({1, 2, 3}, {2.0, 1.0, 0.5}, {0.5, 0.3, 0.2}); }

void BM_FitChepAR1TenLags(benchmark::State& state) {
    chep model(threeBranches(), new ARIMA({0.7}, {}, 0, 0, 1, 0, "unknown"), CHEP_TYPE_1);
    const std::vector<double> targets = model.getAutocorrelations(1, 10);
    std::unique_ptr<capp> fitted;
    for (auto _ : state) {
        fitted.reset();
        fitted.reset(cappfit::fit_chep(threeBranches(), targets, 1, 0));
    }
    const std::vector<double> reached = fitted->getAutocorrelations(1, 10);
    double worst = 0;
    for (std::size_t i = 0; i < targets.size(); ++i) worst = std::fmax(worst, std::fabs(reached[i] - targets[i]));
    state.counters["worst"] = worst;
    if (!(worst < 0.01)) state.SkipWithError("the fitted model misses the targets");
}
BENCHMARK(BM_FitChepAR1TenLags)->Unit(benchmark::kMillisecond)->Iterations(3);

// Path count after the ten passes of rewriting that the failing fit makes.
double pathsAfterTenPasses(CPH c) {
    for (unsigned i = 0; i < 10; i++) c = capptrans::transform(capptrans::transform(c));
    cph_path_list paths = c.generatePaths();
    const double n = static_cast<double>(paths.size());
    delete_paths(paths);
    return n;
}

void unreachable(benchmark::State& state, const CPH& start) {
    for (auto _ : state) {
        CPH c = start;
        try {
            cappfit::fit_capp(&c, {0.95}, 1, 0);
            state.SkipWithError("an unreachable target was fitted");
        } catch (Exception&) {
        }
    }
    state.counters["paths"] = pathsAfterTenPasses(start);
}

void BM_UnreachableHyperErlangCanonical(benchmark::State& state) {
    std::unique_ptr<HyperErlang> h(threeBranches());
    unreachable(state, h->asCPH().seriesCanonicalForm());
}
BENCHMARK(BM_UnreachableHyperErlangCanonical)->Unit(benchmark::kMillisecond)->Iterations(1);

void BM_UnreachableDenseAcyclic(benchmark::State& state) {
    unreachable(state, CPH(Matrix({{-4, 1, 1}, {0, -1, 0.5}, {0, 0, -0.25}}), Vector({0.5, 0.3, 0.2}, true)));
}
BENCHMARK(BM_UnreachableDenseAcyclic)->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace
