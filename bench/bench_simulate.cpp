// Generation from a model file as sylvar and the Python module run it: ten
// million values of examples/map.xml through Process::simulate. The
// reference for bench/bench_python_simulate.py.
#include <benchmark/benchmark.h>

#include <memory>

#include "config/conf.h"
#include "core/process.h"
#include "fitting/process_factory.h"
#include "traces/trace.h"

namespace {

void BM_SimulateMapFile(benchmark::State& state) {
    velmora::XMLConfig document(std::string(VELMORA_SOURCE_DIR) + "/examples/map.xml");
    std::unique_ptr<velmora::Process> model(velmora::load_process(&document));
    const unsigned n = static_cast<unsigned>(state.range(0));
    for (auto _ : state) {
        std::unique_ptr<velmora::Trace> trace(model->simulate(1, n, 0.0, 7));
        benchmark::DoNotOptimize(trace->getSize());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

}  // namespace

BENCHMARK(BM_SimulateMapFile)->Arg(10000000)->Unit(benchmark::kMillisecond)->Iterations(5);
