// Cost of the two fits of sylvar-fit's round trip, stage by stage: 200 000
// values of examples/chep.xml and examples/map.xml (seed 3), a hyper-Erlang
// marginal of up to six phases chosen by AIC, then the model by the
// marginal's family (auto) or a MAP. The counter "lag1" is the distance of
// the fitted lag-1 autocorrelation from the trace's. The fitters' progress
// lines are silenced while they run.
#include <benchmark/benchmark.h>

#include <cmath>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "core/process.h"
#include "fitting/process_factory.h"
#include "fitting/tracefit.h"
#include "traces/trace.h"

namespace {

using namespace velmora;

std::unique_ptr<Trace> exampleTrace(const std::string& name) {
    XMLConfig document(std::string(VELMORA_SOURCE_DIR) + "/examples/" + name);
    std::unique_ptr<Process> model(load_process(&document));
    return std::unique_ptr<Trace>(model->simulate(1, 200000, 0, 3));
}

// The fitters' progress lines are dropped while they run.
class Silence {
public:
    Silence() { set_message_sink([](MessageKind, const std::string&) {}); }
    ~Silence() { set_message_sink(nullptr); }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;
};

void fitStages(benchmark::State& state, const std::string& example, tracefit_model model, bool marginalOnly) {
    std::unique_ptr<Trace> trace = exampleTrace(example);
    const std::vector<double>& data = trace->getValues();
    TraceFitOrders orders;
    double lag1 = 0;
    for (auto _ : state) {
        Silence quiet;
        TraceFitMarginal m = tracefit_marginal(data, "hypererlang", 6);
        if (marginalOnly) continue;
        std::unique_ptr<Process> fitted(tracefit_correlation(m, model, trace.get(), orders));
        lag1 = std::fabs(fitted->getAutocorrelations(1, 1)[0] - trace->getAutocorrelations(1, 1)[0]);
    }
    if (!marginalOnly) state.counters["lag1"] = lag1;
}

void BM_ChepExampleMarginal(benchmark::State& state) { fitStages(state, "chep.xml", TRACEFIT_AUTO, true); }
void BM_ChepExampleWholeFit(benchmark::State& state) { fitStages(state, "chep.xml", TRACEFIT_AUTO, false); }
void BM_MapExampleMarginal(benchmark::State& state) { fitStages(state, "map.xml", TRACEFIT_MAP, true); }
void BM_MapExampleWholeFit(benchmark::State& state) { fitStages(state, "map.xml", TRACEFIT_MAP, false); }
BENCHMARK(BM_ChepExampleMarginal)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_ChepExampleWholeFit)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_MapExampleMarginal)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_MapExampleWholeFit)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace
