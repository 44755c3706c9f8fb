// Trace file speed: writing and reading back traces of ten million values in
// both layouts, and the summary statistics of a million values (the summary
// should stay under 60 ms: it calls pow six million times, about 50 ms).
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "traces/trace.h"

namespace {

std::vector<double> sampleValues(std::size_t n) {
    std::mt19937_64 engine(2024);
    std::exponential_distribution<double> exponential(0.5);
    std::vector<double> values(n);
    for (double& v : values) v = exponential(engine);
    return values;
}

std::string benchFile() { return (std::filesystem::temp_directory_path() / "velmora_bench_trace.txt").string(); }

void BM_TraceSave(benchmark::State& state) {
    velmora::Trace trace(sampleValues(static_cast<std::size_t>(state.range(0))));
    bool counted = state.range(1) != 0;
    std::string file = benchFile();
    for (auto _ : state) trace.save(file, counted);
    state.SetItemsProcessed(state.iterations() * state.range(0));
    std::remove(file.c_str());
}

void BM_TraceLoad(benchmark::State& state) {
    bool counted = state.range(1) != 0;
    std::string file = benchFile();
    velmora::Trace(sampleValues(static_cast<std::size_t>(state.range(0)))).save(file, counted);
    velmora::Trace trace;
    for (auto _ : state) {
        trace.load(file, counted);
        benchmark::DoNotOptimize(trace.getSize());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    std::remove(file.c_str());
}

void BM_TraceSummary(benchmark::State& state) {
    velmora::Trace trace(sampleValues(static_cast<std::size_t>(state.range(0))));
    for (auto _ : state) benchmark::DoNotOptimize(trace.getSummary());
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

}  // namespace

BENCHMARK(BM_TraceSave)->Args({10000000, 0})->Args({10000000, 1})->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_TraceLoad)->Args({10000000, 0})->Args({10000000, 1})->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_TraceSummary)->Arg(1000000)->Unit(benchmark::kMillisecond)->Iterations(3);
