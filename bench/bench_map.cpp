// MAP speed: the log-likelihood of a trace of a million intervals and the
// generation of ten million intervals, both for a MAP of order 4.
#include <benchmark/benchmark.h>

#include <vector>

#include "markov/maps.h"
#include "numerics/matrix.h"
#include "traces/trace.h"

namespace {

// Sojourn rates from 0.8 to 5 and a mean interval of about 1.3, so that a
// likelihood step sums a handful of Poisson terms and a variate passes a few
// phases.
velmora::MAP orderFour() {
    velmora::Matrix D0(std::vector<std::vector<double>>{{-5.0, 1.0, 0.5, 0.5},
                                                        {0.2, -2.0, 0.3, 0.5},
                                                        {0.1, 0.2, -1.0, 0.2},
                                                        {0.3, 0.1, 0.1, -0.8}});
    velmora::Matrix D1(std::vector<std::vector<double>>{{2.5, 0.3, 0.1, 0.1},
                                                        {0.2, 0.6, 0.1, 0.1},
                                                        {0.1, 0.1, 0.2, 0.1},
                                                        {0.05, 0.05, 0.05, 0.15}});
    return velmora::MAP(D0, D1);
}

void BM_MAPLikelihood(benchmark::State& state) {
    velmora::MAP map = orderFour();
    const unsigned n = static_cast<unsigned>(state.range(0));
    map.initRandomNumberGeneration(1);
    std::vector<double> values(n);
    for (double& v : values) v = map.getNextRandomVariate();
    velmora::Trace trace(values);
    for (auto _ : state) benchmark::DoNotOptimize(map.computeLikelihood(&trace));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_MAPGenerate(benchmark::State& state) {
    velmora::MAP map = orderFour();
    const long n = state.range(0);
    for (auto _ : state) {
        map.initRandomNumberGeneration(7);
        double sum = 0;
        for (long i = 0; i < n; i++) sum += map.getNextRandomVariate();
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

}  // namespace

BENCHMARK(BM_MAPLikelihood)->Arg(1000000)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_MAPGenerate)->Arg(10000000)->Unit(benchmark::kMillisecond)->Iterations(3);
