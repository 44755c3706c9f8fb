// The ARMA base fitted by likelihood: 20 ARMA(1, 1) series (phi 0.7,
// theta 0.4, 10 000 values each, standardised like normal scores), each
// fitted as an ARMA(1, 1). Counters: the RMSE of theta and of phi, and how
// many fits put |theta| at 0.99 or beyond.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "fitting/armaml.h"
#include "numerics/random.h"
#include "timeseries/arima.h"

namespace {

using namespace velmora;

std::vector<double> series(unsigned long seed) {
    Rand r(seed);
    std::vector<double> x;
    double previous = 0, shock = 0;
    for (unsigned k = 0; k < 10100; ++k) {
        const double e = r.normal(0, 1);
        previous = 0.7 * previous + e + 0.4 * shock;
        shock = e;
        if (k >= 100) x.push_back(previous);
    }
    double m = 0, v = 0;
    for (double t : x) m += t;
    m /= x.size();
    for (double t : x) v += (t - m) * (t - m);
    for (double& t : x) t = (t - m) / std::sqrt(v / x.size());
    return x;
}

void BM_Arma11TwentySeries(benchmark::State& state) {
    std::vector<std::vector<double>> all;
    for (unsigned s = 0; s < 20; ++s) all.push_back(series(100 + s));
    double theta = 0, phi = 0, edge = 0;
    for (auto _ : state) {
        theta = phi = edge = 0;
        for (const auto& x : all) {
            const armaml::Fit f = armaml::fit(x, 1, 1);
            const double t = f.model->getMACoefficients()[0], p = f.model->getARCoefficients()[0];
            theta += (t - 0.4) * (t - 0.4);
            phi += (p - 0.7) * (p - 0.7);
            edge += std::fabs(t) >= 0.99;
        }
    }
    state.counters["theta_rmse"] = std::sqrt(theta / 20);
    state.counters["phi_rmse"] = std::sqrt(phi / 20);
    state.counters["boundary"] = edge;
}
BENCHMARK(BM_Arma11TwentySeries)->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace
