// Speed and accuracy of the Erlang-branch MAP EM. The generating models are
// Erlang-branch MAPs of order 4 (a one-phase branch of rate 5 and a
// three-phase branch of rate 1.5), plain and with two classes of events.
// Counters: the fitted joint log-likelihood less the generating model's on
// the same values (at least 0 is the mark of a maximum-likelihood fit), the
// largest distance of the autocorrelations at lags 1-5, the largest
// distance of the class frequencies, iterations and structures.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "fitting/mapem.h"

namespace {

using namespace velmora;

mapem::Result plainModel() {
    return mapem::model({1, 3}, {5.0, 1.5}, {{0.8, 0.2, 0.7, 0.3}});
}

mapem::Result markedModel() {
    return mapem::model({1, 3}, {5.0, 1.5}, {{0.6, 0.1, 0.1, 0.0}, {0.2, 0.1, 0.5, 0.4}});
}

void report(benchmark::State& state, const mapem::Result& fit, const mapem::Result& truth,
            const std::vector<double>& x, const std::vector<unsigned>& cls) {
    state.counters["gain"] = fit.logLikelihood - mapem::log_likelihood(truth, x, cls);
    const std::vector<double> a = fit.map->getAutocorrelations(1, 5), b = truth.map->getAutocorrelations(1, 5);
    double acf = 0;
    for (std::size_t k = 0; k < a.size(); ++k) acf = std::max(acf, std::fabs(a[k] - b[k]));
    state.counters["acf"] = acf;
    state.counters["iterations"] = fit.iterations;
    state.counters["structures"] = fit.structures;
}

// Fits `order` to n values of the model drawn with `seed` and reports.
void fitAndReport(benchmark::State& state, const mapem::Result& truth, std::size_t n, unsigned long seed,
                  unsigned order) {
    const auto data = mapem::simulate(truth, n, seed);
    const bool marked = truth.transitions.size() > 1;
    const std::vector<unsigned> none;
    const std::vector<unsigned>& classes = marked ? data.second : none;
    mapem::Result fit;
    for (auto _ : state)
        fit = marked ? mapem::fit_mmap(data.first, data.second, 2, order) : mapem::fit_map(data.first, order);
    report(state, fit, truth, data.first, classes);
    if (!marked) return;
    // The class shares of the fitted model against those of the data.
    const std::vector<double> model = mapem::class_frequencies(fit);
    double worst = 0;
    for (unsigned c = 0; c < 2; ++c) {
        const double share = std::count(data.second.begin(), data.second.end(), c) / double(data.second.size());
        worst = std::max(worst, std::fabs(model[c] - share));
    }
    state.counters["classes"] = worst;
}

// Order 5 on 1 000 values: all seven structures.
void BM_Order5On1000(benchmark::State& state) { fitAndReport(state, plainModel(), 1000, 11, 5); }
BENCHMARK(BM_Order5On1000)->Unit(benchmark::kMillisecond)->Iterations(5);

// Order 4 on 100 000 values: the fit against the generating model.
void BM_Order4On100000(benchmark::State& state) { fitAndReport(state, plainModel(), 100000, 7, 4); }
BENCHMARK(BM_Order4On100000)->Unit(benchmark::kMillisecond)->Iterations(1);

// Order 6 on 1 000 000 values: all eleven structures.
void BM_Order6On1000000(benchmark::State& state) { fitAndReport(state, plainModel(), 1000000, 5, 6); }
BENCHMARK(BM_Order6On1000000)->Unit(benchmark::kMillisecond)->Iterations(1);

// Two classes, order 4 on 100 000 values.
void BM_Marked4On100000(benchmark::State& state) { fitAndReport(state, markedModel(), 100000, 3, 4); }
BENCHMARK(BM_Marked4On100000)->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace
