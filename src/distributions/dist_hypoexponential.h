// The hypo-exponential distribution: a series of exponential phases with
// their own rates, passed one after another.
#ifndef VELMORA_DISTRIBUTIONS_DIST_HYPOEXPONENTIAL_H
#define VELMORA_DISTRIBUTIONS_DIST_HYPOEXPONENTIAL_H

#include <vector>

#include "distributions/dist.h"
#include "numerics/matrix.h"

namespace velmora {

class CPH;

class HypoExponential : public Dist {
public:
    explicit HypoExponential(std::vector<double> rates);

    unsigned getPhases() const;
    std::vector<double> getRates() const;
    // The rates without a copy, for generators that draw from a path per value.
    const std::vector<double>& getRateList() const { return rates; }
    void setRates(std::vector<double> rates);

    double generateVariate() override;
    double evalPDF(double x) override;
    // The distribution functions and the quantile throw "Not implemented.".
    double evalCDF(double x) override;
    double evalInverseCDF(double p) override;
    std::string toString(format f) override;
    DistStats getProperties(unsigned n) override;
    void paramCheck() override;
    // The exact view; see Dist.
    double exactCDF(double x) override;
    double exactQuantile(double p) override;
    unsigned parameterCount() const override;
    static Dist* fromConfig(Config* c);

    // The chain of the phases in their order, entered in the first.
    CPH asCPH();

    // No negative rate.
    static bool hypo_exponential_check_params(const std::vector<double>& rates);
    // Needs pairwise different rates: equal rates divide by 0.
    static double hypo_exponential_pdf(double x, const std::vector<double>& rates);
    static double hypo_exponential_cdf(double x, const std::vector<double>& rates);
    static double hypo_exponential_ccdf(double x, const std::vector<double>& rates);
    // The raw moments are those of the equivalent phase-type distribution.
    static DistStats hypo_exponential_stats(const std::vector<double>& rates, unsigned n);

private:
    std::vector<double> rates;
};

// Series chains as one phase-type distribution: the chains side by side on
// the diagonal in their order, chain b entered in its first state with
// probability entry[b]; each state is left at its rate for the next state of
// its chain, the last one to absorption. Every chain has at least one state.
// The Erlang (one chain of equal rates), the hypo-exponential (one chain) and
// the hyper-Erlang (one Erlang chain per branch) take their forms from here;
// building it needs no family object, and so no stream.
struct SeriesChainsForm {
    Matrix T;
    Vector tau;
};
SeriesChainsForm series_chains_form(const std::vector<std::vector<double>>& chains, const std::vector<double>& entry);

}  // namespace velmora

#endif
