// The phase-type forms of the families that are chains of exponential
// states: the Erlang, the hypo-exponential and the hyper-Erlang. They live
// with CPH, which the distributions below it do not know; their failures
// keep the source name of the families ("dist").
#include <vector>

#include "core/libvelmora_settings.h"
#include "distributions/dist_erlang.h"
#include "distributions/dist_hypererlang.h"
#include "distributions/dist_hypoexponential.h"
#include "markov/cph.h"

namespace velmora {

namespace {

CPH fromChains(const std::vector<std::vector<double>>& chains, const std::vector<double>& entry) {
    const SeriesChainsForm form = series_chains_form(chains, entry);
    return CPH(form.T, form.tau);
}

}  // namespace

CPH Erlang::asCPH() {
    if (phases == 0) throw Exception("dist", __LINE__, "Invalid number of phases for Erlang distribution.");
    return fromChains({std::vector<double>(phases, rate)}, {1.0});
}

// A series without phases has no phase-type form.
CPH HypoExponential::asCPH() {
    if (rates.empty())
        throw Exception("dist", __LINE__, "Hypo-Exponential distribution without phases has no phase-type form.");
    return fromChains({rates}, {1.0});
}

CPH HyperErlang::asCPH() {
    std::vector<std::vector<double>> chains;
    for (size_t i = 0; i < rates.size(); i++) {
        if (rates[i] <= 0) throw Exception("dist", __LINE__, "Invalid rate for erlang distribution");
        if (phases[i] == 0) throw Exception("dist", __LINE__, "Invalid number of phases for Erlang distribution.");
        chains.emplace_back(phases[i], rates[i]);
    }
    return fromChains(chains, probabilities);
}

}  // namespace velmora
