// Cost of the type-2 CHEP correlation map: getAutocorrelations(1, 10) of a
// three-branch hyper-Erlang (phases 1, 2, 3) on an AR(1) base, which takes
// six double integrals per lag, on the shared grid and by the straightforward
// nested evaluation. Generation of both types is timed as well.
#include <benchmark/benchmark.h>

#include <memory>

#include "distributions/dist_hypererlang.h"
#include "markov/chep.h"
#include "timeseries/arima.h"

namespace {

using velmora::chep;

chep* threeBranches(velmora::chep_type t) {
    return new chep(new velmora::HyperErlang({1, 2, 3}, {2.0, 1.0, 0.5}, {0.5, 0.3, 0.2}),
                    new velmora::ARIMA({0.8}, {}, 0, 0, 1, 0, "bench"), t);
}

void BM_ChepType2AutocorrelationsTenLags(benchmark::State& state) {
    std::unique_ptr<chep> model(threeBranches(velmora::CHEP_TYPE_2));
    for (auto _ : state) benchmark::DoNotOptimize(model->getAutocorrelations(1, 10));
}
BENCHMARK(BM_ChepType2AutocorrelationsTenLags)->Unit(benchmark::kMillisecond);

void BM_ChepType2AutocorrelationsTenLagsDirect(benchmark::State& state) {
    std::unique_ptr<chep> model(threeBranches(velmora::CHEP_TYPE_2));
    const std::vector<double> rho = model->getBaseProcess()->getAutocorrelations(1, 10);
    for (auto _ : state)
        benchmark::DoNotOptimize(chep::compute_type2_autocorrelation_direct(model->getHyperErlang(), rho));
}
BENCHMARK(BM_ChepType2AutocorrelationsTenLagsDirect)->Unit(benchmark::kMillisecond)->Iterations(1);

void BM_ChepGeneration(benchmark::State& state) {
    std::unique_ptr<chep> model(threeBranches(static_cast<velmora::chep_type>(state.range(0))));
    model->initRandomNumberGeneration(5);
    for (auto _ : state) benchmark::DoNotOptimize(model->getNextRandomVariate());
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ChepGeneration)->Arg(0)->Arg(1);

}  // namespace
