// Cost of the CAPP correlation map: getAutocorrelations(1, 10) of a process
// whose marginal is a dense upper triangular chain of order 5 with mass on
// every phase, so that it has 2^5 - 1 = 31 paths and every lag takes
// 31 * 32 / 2 = 496 bivariate normal rectangles. Generation is timed as well.
#include <benchmark/benchmark.h>

#include <memory>

#include "markov/capp.h"
#include "markov/cph.h"
#include "numerics/matrix.h"
#include "timeseries/arima.h"

namespace {

using velmora::capp;

// Rates 1..5 along the diagonal, a jump of rate 0.5 to every later phase.
capp* denseOrderFive() {
    const unsigned n = 5;
    velmora::Matrix T(n, n);
    velmora::Vector tau(n, true);
    for (unsigned i = 0; i < n; i++) {
        T(i, i) = -double(i + 1) - 0.5 * (n - 1 - i);
        for (unsigned j = i + 1; j < n; j++) T(i, j) = 0.5;
        tau[i] = 0.2;
    }
    return new capp(new velmora::CPH(T, tau), new velmora::ARIMA({0.7, 0.2}, {0.3}, 0, 0, 1, 0, "bench"));
}

void BM_CappAutocorrelationsTenLags(benchmark::State& state) {
    std::unique_ptr<capp> model(denseOrderFive());
    for (auto _ : state) benchmark::DoNotOptimize(model->getAutocorrelations(1, 10));
    state.counters["paths"] = static_cast<double>(model->getPaths().size());
}
BENCHMARK(BM_CappAutocorrelationsTenLags)->Unit(benchmark::kMillisecond);

// Values per second: one base value, one path pick, one draw per phase.
void BM_CappGeneration(benchmark::State& state) {
    std::unique_ptr<capp> model(denseOrderFive());
    model->initRandomNumberGeneration(5);
    for (auto _ : state) benchmark::DoNotOptimize(model->getNextRandomVariate());
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_CappGeneration);

}  // namespace
