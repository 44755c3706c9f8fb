// Generation speed of the ARMA generator: values of the example ARMA(2,1)
// model per second, with the state updated in place.
#include <benchmark/benchmark.h>

#include <vector>

#include "timeseries/arima.h"

namespace {

velmora::ARIMA exampleModel() {
    return velmora::ARIMA(std::vector<double>{0.6, -0.2}, std::vector<double>{0.5}, 0.0, 2.0, 1.0, 0.0, "");
}

// Ten million values per iteration, summed so that nothing is optimised away.
void BM_ARMA21TenMillionValues(benchmark::State& state) {
    velmora::ARIMA model = exampleModel();
    model.initRandomNumberGeneration(13);
    const long n = 10000000;
    for (auto _ : state) {
        double sum = 0;
        for (long i = 0; i < n; ++i) sum += model.getNextRandomVariate();
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_ARMA21TenMillionValues)->Unit(benchmark::kMillisecond);

// One value per iteration, for the cost of a single step.
void BM_ARMA21OneValue(benchmark::State& state) {
    velmora::ARIMA model = exampleModel();
    model.initRandomNumberGeneration(13);
    for (auto _ : state) benchmark::DoNotOptimize(model.getNextRandomVariate());
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ARMA21OneValue);

}  // namespace
