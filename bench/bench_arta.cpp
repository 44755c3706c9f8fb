// Cost of the ARTA autocorrelation integral: the direct nested evaluation,
// which computes both transformed values at every (outer, inner) pair,
// against the default form, which computes them once per Romberg grid node.
// The model is a gamma marginal (shape 2, scale 1.5) on an AR(2) base with
// coefficients 0.6 and 0.2; the inverse gamma distribution function is an
// iteration and dominates the direct form. Generation is timed as well.
#include <benchmark/benchmark.h>

#include <vector>

#include "distributions/dist.h"
#include "distributions/dist_gamma.h"
#include "timeseries/arima.h"
#include "timeseries/arta.h"

namespace {

using velmora::ARTA;
using velmora::Gamma;

// Lags 1 to 10, mapped as getAutocorrelations does, with the direct form.
std::vector<double> directAutocorrelations(ARTA& model) {
    velmora::Dist* d = model.getDistribution();
    const velmora::DistStats s = d->getProperties(0);
    std::vector<double> rho = model.getBaseProcess()->getAutocorrelations(1, 10);
    for (double& r : rho) {
        const bool small = r <= 0.001 && r >= -0.001;
        r = small ? 0.0
                  : (velmora::arta_process_compute_autocorrelation_joint_moments_direct(d, r, 1, 1) - s.mean * s.mean) /
                        s.variance;
    }
    return rho;
}

void BM_GammaTenLagsDirect(benchmark::State& state) {
    ARTA model(new Gamma(2.0, 1.5), {0.6, 0.2}, 0.0, 1.0);
    for (auto _ : state) benchmark::DoNotOptimize(directAutocorrelations(model));
}
BENCHMARK(BM_GammaTenLagsDirect)->Unit(benchmark::kMillisecond)->Iterations(2);

void BM_GammaTenLagsCached(benchmark::State& state) {
    ARTA model(new Gamma(2.0, 1.5), {0.6, 0.2}, 0.0, 1.0);
    for (auto _ : state) benchmark::DoNotOptimize(model.getAutocorrelations(1, 10));
}
BENCHMARK(BM_GammaTenLagsCached)->Unit(benchmark::kMillisecond);

// One joint moment at a strong correlation, where the levels go deepest.
void BM_GammaJointMomentRho09Direct(benchmark::State& state) {
    Gamma g(2.0, 1.5);
    for (auto _ : state)
        benchmark::DoNotOptimize(velmora::arta_process_compute_autocorrelation_joint_moments_direct(&g, 0.9, 1, 1));
}
BENCHMARK(BM_GammaJointMomentRho09Direct)->Unit(benchmark::kMillisecond)->Iterations(2);

void BM_GammaJointMomentRho09Cached(benchmark::State& state) {
    Gamma g(2.0, 1.5);
    for (auto _ : state)
        benchmark::DoNotOptimize(velmora::arta_process_compute_autocorrelation_joint_moments(&g, 0.9, 1, 1));
}
BENCHMARK(BM_GammaJointMomentRho09Cached)->Unit(benchmark::kMillisecond);

// Values per second of the generator with the gamma marginal.
void BM_GammaGeneration(benchmark::State& state) {
    ARTA model(new Gamma(2.0, 1.5), {0.6, 0.2}, 0.0, 1.0);
    model.initRandomNumberGeneration(5);
    for (auto _ : state) benchmark::DoNotOptimize(model.getNextRandomVariate());
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_GammaGeneration);

}  // namespace
