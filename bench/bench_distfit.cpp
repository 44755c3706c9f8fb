// Cost of marginal fitting on 1 000 000 values. The hyper-Erlang EM with 8
// phases tries all 22 branch structures on the log-scale grid of 2000 bins,
// then computes the kept result's log-likelihood on every value; the counters
// are that figure per value, the iterations of the kept structure and the
// number of structures that hit the iteration cap. Every other fittable
// family is timed on variates of a member of its own.
#include <benchmark/benchmark.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "distributions/dist.h"
#include "distributions/dist_hypererlang.h"
#include "fitting/distfit.h"
#include "numerics/random.h"

namespace {

using namespace velmora;

const std::size_t kValues = 1000000;

std::vector<double> draw(unsigned seed, const std::function<double(Rand&)>& variate) {
    Rand rng(seed);
    std::vector<double> v(kValues);
    for (double& x : v) x = variate(rng);
    return v;
}

void BM_FitHyperErlang8Phases(benchmark::State& state) {
    const std::vector<double> data =
        draw(3, [](Rand& r) { return r.hyper_erlang({1, 2, 3}, {0.5, 4.0, 1.0}, {0.3, 0.3, 0.4}); });
    distfit::EMReport report;
    for (auto _ : state) {
        std::unique_ptr<HyperErlang> fit(distfit::fit_hypererlang(data, 8, &report));
        benchmark::DoNotOptimize(fit.get());
    }
    state.counters["llPerValue"] = report.logLikelihood / kValues;
    state.counters["iterations"] = report.iterations;
    state.counters["structures"] = report.structures;
    state.counters["unconverged"] = report.unconverged;
}
BENCHMARK(BM_FitHyperErlang8Phases)->Unit(benchmark::kMillisecond)->Iterations(3);

// The choice among 32 hyper-Erlang orders, as sylvar-fit -marginal=hypererlang
// -phases=32 makes it, on 100 000 lognormal(0, 0.2) values (squared cv 0.04,
// about 25 phases in one branch): orders up to 8 over every partition, the
// others grown one from the other. The counter is the KS distance of the
// order that AIC keeps.
void BM_ChooseHyperErlangUpTo32Phases(benchmark::State& state) {
    Rand rng(17);
    std::vector<double> data(100000);
    for (double& x : data) x = rng.lognormal(0, 0.2);
    double ks = 0;
    for (auto _ : state) {
        distfit::Selection s = distfit::best_family(data, {"hypererlang"}, 32);
        ks = s.candidates[s.bestIndex].assessment.ks;
        benchmark::DoNotOptimize(s.best.get());
    }
    state.counters["ks"] = ks;
}
BENCHMARK(BM_ChooseHyperErlangUpTo32Phases)->Unit(benchmark::kMillisecond)->Iterations(1);

struct Member {
    const char* family;
    std::function<double(Rand&)> variate;
};

const std::vector<Member>& members() {
    static const std::vector<Member> m = {
        {"exponential", [](Rand& r) { return r.exponential(2.0); }},
        {"normal", [](Rand& r) { return r.normal(5.0, 2.0); }},
        {"lognormal", [](Rand& r) { return r.lognormal(0.3, 0.8); }},
        {"gamma", [](Rand& r) { return r.gamma(2.5, 1.5); }},
        {"weibull", [](Rand& r) { return r.weibull(1.7, 2.0); }},
        {"uniform", [](Rand& r) { return r.uniform(1.0, 4.0); }},
        {"geometric", [](Rand& r) { return r.geometric(0.3); }},
        {"erlang", [](Rand& r) { return r.erlang(3, 2.0); }},
        {"hypoexponential", [](Rand& r) { return r.hypo_exponential({1.0, 3.0}); }},
        {"hyperexponential", [](Rand& r) { return r.hyper_erlang({1, 1}, {0.5, 5.0}, {0.3, 0.7}); }},
        {"beta", [](Rand& r) { return r.beta(2.0, 5.0); }},
        {"pearsonV", [](Rand& r) { return r.pearsonV(3.0, 2.0); }},
        {"triangular", [](Rand& r) { return r.triangular(1.0, 4.0, 2.0); }},
        {"chisquare", [](Rand& r) { return r.chi2(4); }},
    };
    return m;
}

void BM_FitFamily(benchmark::State& state) {
    const Member& m = members()[static_cast<std::size_t>(state.range(0))];
    state.SetLabel(m.family);
    const std::vector<double> data = draw(7, m.variate);
    for (auto _ : state) {
        std::unique_ptr<Dist> d(distfit::fit_distribution(m.family, data));
        benchmark::DoNotOptimize(d.get());
    }
}
BENCHMARK(BM_FitFamily)->DenseRange(0, 13)->Unit(benchmark::kMillisecond);

}  // namespace
