// The hypo-exponential distribution: the density as the partial-fraction sum
// sum_i r_i e^(-r_i x) prod_{j != i} r_j / (r_j - r_i), which holds for
// pairwise different rates only (equal rates divide by 0 and the result is
// whatever floating-point arithmetic makes of it). Mean, variance and
// skewness come from the sums of 1/r_i^m; the raw moments from the
// equivalent phase-type distribution.
#include "distributions/dist_hypoexponential.h"

#include <algorithm>

#include <limits>

#include <cmath>

#include "core/libvelmora_settings.h"
#include "distributions/dist_read.h"
#include "numerics/misc_linalg.h"
#include "numerics/matrix.h"
#include "numerics/random.h"
#include "distributions/dist_exact.h"
#include "numerics/misc_numerical_dist.h"

namespace velmora {

using namespace distread;

static void checkParameters(const std::vector<double>& rates) {
    if (!HypoExponential::hypo_exponential_check_params(rates))
        throw Exception("dist", __LINE__, "Invalid parameters for Hypo-Exponential distribution.");
}

HypoExponential::HypoExponential(std::vector<double> rates)
    : Dist(DIST_HYPOEXPONENTIAL), rates(std::move(rates)) {
    paramCheck();
}

unsigned HypoExponential::getPhases() const { return static_cast<unsigned>(rates.size()); }
std::vector<double> HypoExponential::getRates() const { return rates; }

void HypoExponential::setRates(std::vector<double> value) { setChecked(rates, std::move(value)); }

double HypoExponential::generateVariate() { return rng.hypo_exponential(rates); }
double HypoExponential::evalPDF(double x) { return hypo_exponential_pdf(x, rates); }
double HypoExponential::evalCDF(double x) { return hypo_exponential_cdf(x, rates); }
double HypoExponential::evalInverseCDF(double) { throw Exception("dist", __LINE__, "Not implemented."); }

std::string HypoExponential::toString(format f) {
    std::string k = formatNumber(getPhases()), r = formatList(rates, true);
    return layoutText(f, type, "hypoexpdist", {{"phases", k}, {"rates", r}}, {{"phases", k}, {"rates", r}});
}

// The count of phases is read and has no effect: the rates alone count.
Dist* HypoExponential::fromConfig(Config* c) {
    std::vector<double> rates;
    if (c->existsKey("rates")) rates = doubleList(c->getValue("rates"));
    return new HypoExponential(rates);
}

DistStats HypoExponential::getProperties(unsigned n) { return hypo_exponential_stats(rates, n); }

void HypoExponential::paramCheck() { checkParameters(rates); }

SeriesChainsForm series_chains_form(const std::vector<std::vector<double>>& chains, const std::vector<double>& entry) {
    unsigned long long total = 0;
    for (const std::vector<double>& chain : chains) total += chain.size();
    check_dense_order(total, "A phase-type form");
    const unsigned order = static_cast<unsigned>(total);
    Matrix T(order, order);
    Vector tau(order, true);
    unsigned offset = 0;
    for (size_t b = 0; b < chains.size(); b++) {
        const std::vector<double>& chain = chains[b];
        const unsigned m = static_cast<unsigned>(chain.size());
        for (unsigned j = 0; j < m; j++) {
            T(offset + j, offset + j) = -chain[j];
            if (j + 1 < m) T(offset + j, offset + j + 1) = chain[j];
        }
        tau[offset] = entry[b];
        offset += m;
    }
    return {T, tau};
}

bool HypoExponential::hypo_exponential_check_params(const std::vector<double>& rates) {
    for (double rate : rates)
        if (rate < 0) return false;
    return true;
}

double HypoExponential::hypo_exponential_pdf(double x, const std::vector<double>& rates) {
    checkParameters(rates);
    if (x < 0) return 0;
    const size_t m = rates.size();
    double sum = 0;
    for (size_t i = 0; i < m; i++) {
        double product = 1;
        for (size_t j = 0; j < m; j++)
            if (j != i) product *= rates[j] / (rates[j] - rates[i]);
        sum += rates[i] * std::exp(-rates[i] * x) * product;
    }
    return sum;
}

double HypoExponential::hypo_exponential_cdf(double, const std::vector<double>&) {
    throw Exception("dist", __LINE__, "Not implemented.");
}

double HypoExponential::hypo_exponential_ccdf(double, const std::vector<double>&) {
    throw Exception("dist", __LINE__, "Not implemented.");
}

// Kurtosis is not computed and is reported as 0.
DistStats HypoExponential::hypo_exponential_stats(const std::vector<double>& rates, unsigned n) {
    checkParameters(rates);
    double s1 = 0, s2 = 0, s3 = 0;
    for (double rate : rates) {
        s1 += 1 / rate;
        s2 += 1 / (rate * rate);
        s3 += 1 / (rate * rate * rate);
    }
    DistStats stats;
    stats.mean = s1;
    stats.variance = s2;
    stats.skewness = 2 * s3 / std::pow(s2, 1.5);
    stats.cv = std::sqrt(s2 / (s1 * s1));
    stats.kurtosis = 0;
    // Without phases the value is always 0, and so is every moment.
    if (rates.empty())
        stats.moments.assign(n, 0.0);
    else if (n > 0)
        {
        const SeriesChainsForm form = series_chains_form({rates}, {1.0});
        stats.moments = phase_type_moments(form.T, form.tau, 1, n);
    }
    return stats;
}

// ---- exact view
// 1 - sum_i c_i exp(-r_i x), c_i = prod_{j != i} r_j / (r_j - r_i), for
// pairwise different rates as the density's formula needs.
double HypoExponential::exactCDF(double x) {
    if (x <= 0) return 0.0;
    const std::vector<double> r = getRates();
    double s = 0;
    for (std::size_t i = 0; i < r.size(); ++i) {
        double c = 1;
        for (std::size_t j = 0; j < r.size(); ++j)
            if (j != i) c *= r[j] / (r[j] - r[i]);
        s += c * std::exp(-r[i] * x);
    }
    return 1 - s;
}
double HypoExponential::exactQuantile(double p) {
    checkProbability(p);
    return invertExactCDF(p, 0, getProperties(0).mean);
}
unsigned HypoExponential::parameterCount() const { return getPhases(); }

}  // namespace velmora
