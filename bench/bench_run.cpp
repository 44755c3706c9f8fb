// A whole generation run against its floor. The run is what the program does
// for an exponential distribution model: draw two million values, save them as
// a trace file, and write the summaries of the model and of the trace. The
// floor draws as many exponential values with std::mt19937 and writes them
// with std::to_chars in the same six-digit form, and nothing else: no run
// can be much faster, and the run's time over the floor's is the figure to
// watch (it should stay at 1.5 or below).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "distributions/dist_exponential.h"
#include "distributions/dist_process.h"
#include "traces/trace.h"
#include "traces/trace_stream.h"

namespace {

const unsigned COUNT = 2000000;

std::string benchFile() { return (std::filesystem::temp_directory_path() / "velmora_bench_run.txt").string(); }

void BM_FloorWriter(benchmark::State& state) {
    std::string file = benchFile();
    for (auto _ : state) {
        std::mt19937 engine(13);
        std::exponential_distribution<double> exponential(0.5);
        std::unique_ptr<std::FILE, int (*)(std::FILE*)> out(std::fopen(file.c_str(), "wb"), &std::fclose);
        const std::size_t capacity = 1 << 16;
        char buffer[capacity + 64];
        char* p = buffer;
        for (unsigned i = 0; i < COUNT; ++i) {
            p = std::to_chars(p, p + 32, exponential(engine), std::chars_format::general, 6).ptr;
            *p++ = '\n';
            if (static_cast<std::size_t>(p - buffer) >= capacity) {
                std::fwrite(buffer, 1, p - buffer, out.get());
                p = buffer;
            }
        }
        std::fwrite(buffer, 1, p - buffer, out.get());
    }
    state.SetItemsProcessed(state.iterations() * COUNT);
    std::remove(file.c_str());
}

void BM_ExponentialRun(benchmark::State& state) {
    std::string file = benchFile();
    velmora::DistProcess process(new velmora::Exponential(0.5));
    for (auto _ : state) {
        std::unique_ptr<velmora::Trace> trace(process.simulate(1, COUNT, 10000.0, 13));
        trace->save(file, false);
        std::string text = process.getSummary() + trace->getSummary();
        benchmark::DoNotOptimize(text.data());
    }
    state.SetItemsProcessed(state.iterations() * COUNT);
    std::remove(file.c_str());
}

// The same run as sylvar makes it: drawn, written and summarised as it goes.
void BM_StreamedRun(benchmark::State& state) {
    std::string file = benchFile();
    velmora::DistProcess process(new velmora::Exponential(0.5));
    for (auto _ : state) {
        velmora::StreamedTrace run = velmora::stream_trace(process, 1, COUNT, 10000.0, 13, file, false);
        std::string text = process.getSummary() + run.summary;
        benchmark::DoNotOptimize(text.data());
    }
    state.SetItemsProcessed(state.iterations() * COUNT);
    std::remove(file.c_str());
}

// On a shared machine the least of the repetitions is the figure that other
// load disturbs least.
double least(const std::vector<double>& v) { return *std::min_element(v.begin(), v.end()); }

}  // namespace

BENCHMARK(BM_FloorWriter)->Unit(benchmark::kMillisecond)->Iterations(5)->Repetitions(5)->ComputeStatistics("min", least);
BENCHMARK(BM_ExponentialRun)->Unit(benchmark::kMillisecond)->Iterations(5)->Repetitions(5)->ComputeStatistics("min", least);
BENCHMARK(BM_StreamedRun)->Unit(benchmark::kMillisecond)->Iterations(5)->Repetitions(5)->ComputeStatistics("min", least);
