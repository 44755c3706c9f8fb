// Throughput of the random streams: raw words, uniform numbers and the
// exponential and normal variates that the models draw in their inner loops.
#include <benchmark/benchmark.h>

#include "numerics/random.h"

using velmora::MTRand;
using velmora::Rand;

static void BM_MTRandRandInt(benchmark::State& state) {
    MTRand generator(5489UL);
    for (auto _ : state) benchmark::DoNotOptimize(generator.randInt());
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_MTRandRandInt);

static void BM_RandDrawRandomNumber(benchmark::State& state) {
    Rand r(5489UL);
    for (auto _ : state) benchmark::DoNotOptimize(r.drawRandomNumber());
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_RandDrawRandomNumber);

static void BM_RandExponential(benchmark::State& state) {
    Rand r(5489UL);
    for (auto _ : state) benchmark::DoNotOptimize(r.exponential(1.5));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_RandExponential);

static void BM_RandNormal(benchmark::State& state) {
    Rand r(5489UL);
    for (auto _ : state) benchmark::DoNotOptimize(r.normal(0.0, 1.0));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_RandNormal);

static void BM_RandGamma(benchmark::State& state) {
    Rand r(5489UL);
    const double alpha = state.range(0) / 10.0;
    for (auto _ : state) benchmark::DoNotOptimize(r.gamma(alpha, 1.0));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_RandGamma)->Arg(5)->Arg(25);

static void BM_RandErlang(benchmark::State& state) {
    Rand r(5489UL);
    for (auto _ : state) benchmark::DoNotOptimize(r.erlang(4, 2.0));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_RandErlang);
