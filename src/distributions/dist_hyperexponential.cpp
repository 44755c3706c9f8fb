// The hyper-exponential distribution: the density sum p_i r_i e^(-r_i x) and
// the distribution function sum p_i (1 - e^(-r_i x)). The probabilities may
// miss 1 by up to 0.005, a looser bound than the hyper-Erlang family's; the
// key-value reader holds them to the same bound.
#include "distributions/dist_hyperexponential.h"

#include <algorithm>

#include <limits>

#include <cmath>

#include "core/libvelmora_settings.h"
#include "distributions/dist_read.h"
#include "distributions/dist_exact.h"
#include "numerics/misc_numerical_dist.h"

namespace velmora {

using namespace distread;

static void checkParameters(const std::vector<double>& rates, const std::vector<double>& probabilities) {
    if (!HyperExponential::hyper_exponential_check_params(rates, probabilities))
        throw Exception("dist", __LINE__, "Invalid parameters for Hyper-Exponential distribution.");
}

HyperExponential::HyperExponential(std::vector<double> rates, std::vector<double> probabilities)
    : Dist(DIST_HYPEREXPONENTIAL), rates(std::move(rates)), probabilities(std::move(probabilities)) {
    paramCheck();
}

unsigned HyperExponential::getPhases() const { return static_cast<unsigned>(rates.size()); }
std::vector<double> HyperExponential::getRates() const { return rates; }
std::vector<double> HyperExponential::getProbabilities() const { return probabilities; }

void HyperExponential::setRates(std::vector<double> value) { setChecked(rates, std::move(value)); }
void HyperExponential::setProbabilities(std::vector<double> value) { setChecked(probabilities, std::move(value)); }

double HyperExponential::generateVariate() { throw Exception("dist", __LINE__, "Not implemented."); }
double HyperExponential::evalPDF(double x) { return hyper_exponential_pdf(x, rates, probabilities); }
double HyperExponential::evalCDF(double x) { return hyper_exponential_cdf(x, rates, probabilities); }
double HyperExponential::evalInverseCDF(double) { throw Exception("dist", __LINE__, "Not implemented."); }

// The XML form carries the count and the rates, not the probabilities.
std::string HyperExponential::toString(format f) {
    std::string k = formatNumber(getPhases()), r = formatList(rates, true);
    return layoutText(f, type, "hyperexpdist", {{"phases", k}, {"rates", r}, {"prob", formatList(probabilities, true)}},
                      {{"phases", k}, {"rates", r}});
}

Dist* HyperExponential::fromConfig(Config* c) {
    int phases = keyInt(c, "phases", 1);
    std::vector<double> probabilities;
    if (c->existsKey("prob")) {
        // A single element is neither converted nor summed: the list counts
        // as empty, with sum 0.
        std::vector<std::string> pieces = splitString(c->getValue("prob"), ' ');
        if (pieces.size() > 1)
            for (const std::string& piece : pieces) probabilities.push_back(toDouble(piece));
        if (std::fabs(sumOf(probabilities) - 1) > 0.005)
            throw Exception("dist", __LINE__, "Sum of initial probabilities for Hyper-Exponential must equal 1.");
    }
    std::vector<double> rates;
    if (c->existsKey("rates")) rates = doubleList(c->getValue("rates"));
    if (static_cast<long long>(probabilities.size()) != phases || static_cast<long long>(rates.size()) != phases)
        throw Exception("dist", __LINE__, "Dimensions for Hyper-Exponential vectors do not match.");
    return new HyperExponential(rates, probabilities);
}

DistStats HyperExponential::getProperties(unsigned) { throw Exception("dist", __LINE__, "Not implemented."); }

void HyperExponential::paramCheck() { checkParameters(rates, probabilities); }

bool HyperExponential::hyper_exponential_check_params(const std::vector<double>& rates,
                                                      const std::vector<double>& probabilities) {
    if (rates.size() != probabilities.size()) return false;
    double sum = 0;
    for (size_t i = 0; i < rates.size(); i++) {
        if (rates[i] < 0 || probabilities[i] < 0) return false;
        sum += probabilities[i];
    }
    return std::fabs(sum - 1) <= 0.005;
}

double HyperExponential::hyper_exponential_pdf(double x, const std::vector<double>& rates,
                                               const std::vector<double>& probabilities) {
    checkParameters(rates, probabilities);
    if (x < 0) return 0;
    double sum = 0;
    for (size_t i = 0; i < rates.size(); i++) sum += probabilities[i] * rates[i] * std::exp(-rates[i] * x);
    return sum;
}

double HyperExponential::hyper_exponential_cdf(double x, const std::vector<double>& rates,
                                               const std::vector<double>& probabilities) {
    checkParameters(rates, probabilities);
    if (x < 0) return 0;
    double sum = 0;
    for (size_t i = 0; i < rates.size(); i++) sum += probabilities[i] * (1 - std::exp(-rates[i] * x));
    return sum;
}

double HyperExponential::hyper_exponential_ccdf(double x, const std::vector<double>& rates,
                                                const std::vector<double>& probabilities) {
    return 1 - hyper_exponential_cdf(x, rates, probabilities);
}

// ---- exact view
double HyperExponential::exactLogPDF(double x) {
    return exact::erlang_mixture_logpdf(x, std::vector<unsigned>(getRates().size(), 1), getRates(), getProbabilities());
}
double HyperExponential::exactCDF(double x) {
    return exact::erlang_mixture_cdf(x, std::vector<unsigned>(getRates().size(), 1), getRates(), getProbabilities());
}
double HyperExponential::exactCCDF(double x) {
    return exact::erlang_mixture_ccdf(x, std::vector<unsigned>(getRates().size(), 1), getRates(), getProbabilities());
}
double HyperExponential::exactQuantile(double p) {
    checkProbability(p);
    return invertExactCDF(p, 0, exactStats(0).mean);
}
DistStats HyperExponential::exactStats(unsigned n) {
    return exact::erlang_mixture_stats(std::vector<unsigned>(getRates().size(), 1), getRates(), getProbabilities(), n);
}
bool HyperExponential::erlangBranches(std::vector<unsigned>& phases, std::vector<double>& rates,
                        std::vector<double>& probabilities) const {
    rates = getRates();
    phases.assign(rates.size(), 1);
    probabilities = getProbabilities();
    return true;
}
unsigned HyperExponential::parameterCount() const { return 2 * getPhases() - 1; }

}  // namespace velmora
