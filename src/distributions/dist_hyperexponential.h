// The hyper-exponential distribution: exponential branches of their own
// rates, taken with given probabilities. It carries the parameters of a
// mixture: it has a density and a distribution function, but no quantile,
// statistics or variates.
#ifndef VELMORA_DISTRIBUTIONS_DIST_HYPEREXPONENTIAL_H
#define VELMORA_DISTRIBUTIONS_DIST_HYPEREXPONENTIAL_H

#include <vector>

#include "distributions/dist.h"

namespace velmora {

class HyperExponential : public Dist {
public:
    HyperExponential(std::vector<double> rates, std::vector<double> probabilities);

    unsigned getPhases() const;
    std::vector<double> getRates() const;
    std::vector<double> getProbabilities() const;
    void setRates(std::vector<double> rates);
    void setProbabilities(std::vector<double> probabilities);

    // Throws "Not implemented.".
    double generateVariate() override;
    double evalPDF(double x) override;
    double evalCDF(double x) override;
    // Throws "Not implemented.".
    double evalInverseCDF(double p) override;
    std::string toString(format f) override;
    // Throws "Not implemented.".
    DistStats getProperties(unsigned n) override;
    void paramCheck() override;
    // The exact view; see Dist.
    double exactLogPDF(double x) override;
    double exactCDF(double x) override;
    double exactCCDF(double x) override;
    double exactQuantile(double p) override;
    DistStats exactStats(unsigned n) override;
    unsigned parameterCount() const override;
    bool erlangBranches(std::vector<unsigned>& phases, std::vector<double>& rates,
                        std::vector<double>& probabilities) const override;
    static Dist* fromConfig(Config* c);

    // Equal lengths, no negative element, and probabilities summing to 1
    // within 0.005.
    static bool hyper_exponential_check_params(const std::vector<double>& rates,
                                               const std::vector<double>& probabilities);
    static double hyper_exponential_pdf(double x, const std::vector<double>& rates,
                                        const std::vector<double>& probabilities);
    static double hyper_exponential_cdf(double x, const std::vector<double>& rates,
                                        const std::vector<double>& probabilities);
    static double hyper_exponential_ccdf(double x, const std::vector<double>& rates,
                                         const std::vector<double>& probabilities);

private:
    std::vector<double> rates;
    std::vector<double> probabilities;
};

}  // namespace velmora

#endif
