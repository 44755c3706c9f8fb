// The hypo-exponential distribution: a series of exponential phases with
// their own rates, passed one after another.
#ifndef VELMORA_DISTRIBUTIONS_DIST_HYPOEXPONENTIAL_H
#define VELMORA_DISTRIBUTIONS_DIST_HYPOEXPONENTIAL_H

#include <vector>

#include "distributions/dist.h"
// The phase-type form is returned by value: its class comes along.
#include "markov/cph.h"

namespace velmora {

class CPH;

class HypoExponential : public Dist {
public:
    explicit HypoExponential(std::vector<double> rates);

    unsigned getPhases() const;
    std::vector<double> getRates() const;
    void setRates(std::vector<double> rates);

    double generateVariate() override;
    double evalPDF(double x) override;
    // The distribution functions and the quantile throw "Not implemented.".
    double evalCDF(double x) override;
    double evalInverseCDF(double p) override;
    double evalCCDF(double x) override;
    std::string toString(format f) override;
    DistStats getProperties(unsigned n) override;
    void paramCheck() override;

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

}  // namespace velmora

#endif
