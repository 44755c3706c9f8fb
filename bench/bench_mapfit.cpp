// Cost of a whole MAP fit: the ten autocorrelations of a MAP(4) with fast and
// slow phases are the targets, T is its D0 and tau its embedded stationary
// vector. Sixteen linear programs span the start polytope, then Nelder-Mead
// runs on the penalised L1 goal. The counters are the L1 distance of the
// fitted autocorrelations from the targets and that of the renewal process.
// The fit writes its start polytope as debug lines on every run.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "fitting/mepfit.h"
#include "markov/maps.h"

namespace {

using namespace velmora;

void BM_FitMAP4TenLags(benchmark::State& state) {
    const Matrix D0({{-10, 1, 0, 0}, {1, -10, 0, 0}, {0, 0, -1, 0.1}, {0, 0, 0.1, -1}});
    const Matrix D1({{8, 0.8, 0.2, 0}, {0.5, 8.3, 0, 0.2}, {0.05, 0, 0.85, 0}, {0, 0.05, 0, 0.85}});
    MAP model(D0, D1);
    const Vector tau(model.steady_state_vector_embedded_dtmc().getRow(0), true);
    const std::vector<double> targets = model.getAutocorrelations(1, 10);
    map_markovian_rep fitted;
    for (auto _ : state) fitted = mapfit::mapfit_fit_autocorrelation(D0, tau, targets);
    const std::vector<double> reached = MAP(fitted.D0, fitted.D1).getAutocorrelations(1, 10);
    double distance = 0, renewal = 0;
    for (std::size_t k = 0; k < targets.size(); ++k) {
        distance += std::fabs(reached[k] - targets[k]);
        renewal += std::fabs(targets[k]);
    }
    state.counters["distance"] = distance;
    state.counters["renewal"] = renewal;
    if (!(distance < 0.5 * renewal)) state.SkipWithError("the fit is no better than half the renewal process");
}
BENCHMARK(BM_FitMAP4TenLags)->Unit(benchmark::kMillisecond)->Iterations(10);

}  // namespace
