// The hyper-Erlang distribution: the density and the distribution function
// as probability-weighted sums of the Erlang branches (the latter through the
// Poisson sums), the raw moments sum p_i (m+k_i-1)!/(k_i-1)! / r_i^m in
// floating point, and the phase-type form with the branches' chains on the
// diagonal. The probabilities must sum to 1 within 0.00001; the key-value
// reader normalises them when they are further off than 0.005, the XML reader
// wants them to sum to 1 exactly.
//
// A branch of 0 phases passes the parameter check; the formulas then meet
// the wrapped factorial of -1, which is 0, and their result is whatever
// floating-point arithmetic makes of the division; asCPH refuses it as the
// Erlang of the branch does.
#include "distributions/dist_hypererlang.h"

#include <algorithm>

#include <limits>

#include <cmath>
#include <memory>

#include "core/libvelmora_settings.h"
#include "distributions/dist_erlang.h"
#include "distributions/dist_hypoexponential.h"
#include "distributions/dist_read.h"
#include "numerics/misc_math.h"
#include "numerics/random.h"
#include "distributions/dist_exact.h"
#include "numerics/misc_numerical_dist.h"

namespace velmora {

using namespace distread;

static void checkParameters(const std::vector<unsigned>& phases, const std::vector<double>& rates,
                            const std::vector<double>& probabilities) {
    if (!HyperErlang::hyper_erlang_check_params(phases, rates, probabilities))
        throw Exception("dist", __LINE__, "Invalid parameters for Hyper-Erlang distribution.");
}

HyperErlang::HyperErlang(std::vector<unsigned> phases, std::vector<double> rates, std::vector<double> probabilities)
    : Dist(DIST_HYPERERLANG),
      phases(std::move(phases)),
      rates(std::move(rates)),
      probabilities(std::move(probabilities)) {
    paramCheck();
}

unsigned HyperErlang::getOrder() const {
    unsigned order = 0;
    for (unsigned k : phases) order += k;
    return order;
}

unsigned HyperErlang::getBranches() const { return static_cast<unsigned>(rates.size()); }
std::vector<unsigned> HyperErlang::getPhases() const { return phases; }
std::vector<double> HyperErlang::getRates() const { return rates; }
std::vector<double> HyperErlang::getProbabilities() const { return probabilities; }

void HyperErlang::setPases(std::vector<unsigned> value) { setChecked(phases, std::move(value)); }
void HyperErlang::setRates(std::vector<double> value) { setChecked(rates, std::move(value)); }
void HyperErlang::setProbabilities(std::vector<double> value) { setChecked(probabilities, std::move(value)); }

double HyperErlang::generateVariate() { return rng.hyper_erlang(phases, rates, probabilities); }
double HyperErlang::evalPDF(double x) { return hyper_erlang_pdf(x, phases, rates, probabilities); }
double HyperErlang::evalCDF(double x) { return hyper_erlang_cdf(x, phases, rates, probabilities); }
double HyperErlang::evalInverseCDF(double p) { return hyper_erlang_inverse_cdf(p, phases, rates, probabilities); }

// In exact numerics the XML reader wants probabilities that sum to exactly 1,
// which 17 digits of a fitted vector rarely do: the last one is written
// nudged (by an ulp or two) until the running sum is 1.
std::string HyperErlang::toString(format f) {
    std::vector<double> written = probabilities;
    for (int i = 0; exact && !written.empty() && i < 8 && sumOf(written) != 1; ++i) written.back() += 1 - sumOf(written);
    std::string k = formatList(phases), r = formatList(rates, true), p = formatList(written, true);
    return layoutText(f, type, "hypererlangdist",
                      {{"branches", formatNumber(getBranches())}, {"phases", k}, {"rates", r}, {"prob", p}},
                      {{"prob", p}, {"phases", k}, {"rates", r}});
}

Dist* HyperErlang::fromConfig(Config* c) {
    std::vector<unsigned> phases;
    if (c->existsKey("phases")) phases = phaseList(c->getValue("phases"));
    std::vector<double> rates;
    if (c->existsKey("rates")) rates = doubleList(c->getValue("rates"));
    std::vector<double> probabilities;
    if (c->existsKey("prob")) {
        probabilities = doubleList(c->getValue("prob"));
        // Far off, the list is normalised; a sum within 0.005 but off by more
        // than the family's own tolerance is left for its check to refuse.
        double sum = sumOf(probabilities);
        if (std::fabs(sum - 1) > 0.005)
            for (double& p : probabilities) p /= sum;
    }
    long long branches =
        c->existsKey("branches") ? c->getValueAsInt("branches") : static_cast<long long>(phases.size());
    if (static_cast<long long>(phases.size()) != branches || static_cast<long long>(rates.size()) != branches ||
        static_cast<long long>(probabilities.size()) != branches)
        throw Exception("dist", __LINE__, "Dimensions for Hyper-Erlang vectors do not match.");
    return new HyperErlang(phases, rates, probabilities);
}

Dist* HyperErlang::fromXML(XMLElement* family) {
    std::vector<double> probabilities;
    if (XMLElement* child = family->getChildElement("prob")) {
        probabilities = doubleList(child->getValue());
        // Exact comparison: the XML form admits no slack at all.
        if (sumOf(probabilities) != 1)
            throw Exception("dist", __LINE__, "Sum of initial probabilities for Hyper-Erlang must equal 1.");
    }
    std::vector<unsigned> phases;
    if (XMLElement* child = family->getChildElement("phases")) phases = phaseList(child->getValue());
    std::vector<double> rates;
    if (XMLElement* child = family->getChildElement("rates")) rates = doubleList(child->getValue());
    if (phases.size() != rates.size() || rates.size() != probabilities.size())
        throw Exception("dist", __LINE__, "Dimensions for Hyper-Erlang vectors do not match.");
    return new HyperErlang(phases, rates, probabilities);
}

DistStats HyperErlang::getProperties(unsigned n) { return hyper_erlang_stats(phases, rates, probabilities, n); }

void HyperErlang::paramCheck() { checkParameters(phases, rates, probabilities); }

// Each branch is the chain of its Erlang, entered in its first state with
// the branch's probability. The chains are built from the rates rather than
// through Erlang objects, which would each seed a stream of their own; a
// branch is refused exactly as its Erlang would refuse it.

// An Erlang that refuses its rate (0) leaves no object behind: the branches
// are handed over only once all of them stand.
std::vector<std::pair<double, Erlang*>> HyperErlang::getErlangDists() {
    std::vector<std::unique_ptr<Erlang>> branches;
    for (size_t i = 0; i < rates.size(); i++) branches.push_back(std::make_unique<Erlang>(phases[i], rates[i]));
    std::vector<std::pair<double, Erlang*>> result;
    result.reserve(branches.size());
    for (size_t i = 0; i < branches.size(); i++) result.emplace_back(probabilities[i], branches[i].release());
    return result;
}

// Selection sort: a later branch replaces the candidate only when the
// candidate's mean is strictly greater, so equal means keep their order.
void HyperErlang::sortBranches() {
    const size_t m = rates.size();
    for (size_t i = 0; i + 1 < m; i++) {
        size_t best = i;
        for (size_t j = i + 1; j < m; j++)
            if (phases[best] / rates[best] > phases[j] / rates[j]) best = j;
        std::swap(rates[i], rates[best]);
        std::swap(probabilities[i], probabilities[best]);
        std::swap(phases[i], phases[best]);
    }
}

// The check lives beside the stream, whose hyper-Erlang variates use it too.
bool HyperErlang::hyper_erlang_check_params(const std::vector<unsigned>& phases, const std::vector<double>& rates,
                                            const std::vector<double>& probabilities) {
    return hyper_erlang_params_valid(phases, rates, probabilities);
}

double HyperErlang::hyper_erlang_pdf(double x, const std::vector<unsigned>& phases, const std::vector<double>& rates,
                                     const std::vector<double>& probabilities) {
    checkParameters(phases, rates, probabilities);
    if (x < 0) return 0;
    double sum = 0;
    for (size_t i = 0; i < rates.size(); i++) {
        const double k = phases[i];
        sum += probabilities[i] * std::pow(rates[i] * x, k - 1) * rates[i] * std::exp(-rates[i] * x) /
               static_cast<double>(fac(phases[i] - 1));
    }
    return sum;
}

double HyperErlang::hyper_erlang_cdf(double x, const std::vector<unsigned>& phases, const std::vector<double>& rates,
                                     const std::vector<double>& probabilities) {
    checkParameters(phases, rates, probabilities);
    if (x < 0) return 0;
    double sum = 0;
    for (size_t i = 0; i < rates.size(); i++) {
        const double rx = rates[i] * x;
        sum += probabilities[i] * std::exp(-rx) * poisson_partial_sum(rx, phases[i]);
    }
    return 1 - sum;
}

double HyperErlang::hyper_erlang_inverse_cdf(double, const std::vector<unsigned>&, const std::vector<double>&,
                                             const std::vector<double>&) {
    throw Exception("dist", __LINE__, "Not implemented.");
}

double HyperErlang::hyper_erlang_ccdf(double x, const std::vector<unsigned>& phases, const std::vector<double>& rates,
                                      const std::vector<double>& probabilities) {
    return 1 - hyper_erlang_cdf(x, phases, rates, probabilities);
}

DistStats HyperErlang::hyper_erlang_stats(const std::vector<unsigned>& phases, const std::vector<double>& rates,
                                          const std::vector<double>& probabilities, unsigned n) {
    checkParameters(phases, rates, probabilities);
    DistStats stats;
    double mean = 0, second = 0;
    for (size_t i = 0; i < rates.size(); i++) mean += probabilities[i] * phases[i] / rates[i];
    for (size_t i = 0; i < rates.size(); i++)
        second += probabilities[i] * phases[i] * (phases[i] + 1.0) / (rates[i] * rates[i]);
    stats.mean = mean;
    stats.variance = second - mean * mean;
    stats.cv = stats.sdOverMean();
    for (unsigned m = 1; m <= n; m++) {
        double moment = 0;
        for (size_t i = 0; i < rates.size(); i++)
            moment += probabilities[i] * static_cast<double>(fac(m + phases[i] - 1)) /
                      static_cast<double>(fac(phases[i] - 1)) / std::pow(rates[i], static_cast<double>(m));
        stats.moments.push_back(moment);
    }
    return stats;
}

// ---- exact view
double HyperErlang::exactLogPDF(double x) { return exact::erlang_mixture_logpdf(x, phases, rates, probabilities); }
double HyperErlang::exactCDF(double x) { return exact::erlang_mixture_cdf(x, phases, rates, probabilities); }
double HyperErlang::exactCCDF(double x) { return exact::erlang_mixture_ccdf(x, phases, rates, probabilities); }
double HyperErlang::exactQuantile(double p) {
    checkProbability(p);
    return invertExactCDF(p, 0, exactStats(0).mean);
}
DistStats HyperErlang::exactStats(unsigned n) { return exact::erlang_mixture_stats(phases, rates, probabilities, n); }
bool HyperErlang::erlangBranches(std::vector<unsigned>& phases, std::vector<double>& rates,
                        std::vector<double>& probabilities) const {
    phases = this->phases;
    rates = this->rates;
    probabilities = this->probabilities;
    return true;
}
unsigned HyperErlang::parameterCount() const { return 2 * getBranches() - 1; }

}  // namespace velmora
