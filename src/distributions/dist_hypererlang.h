// The hyper-Erlang distribution: a mixture of Erlang branches, branch i with
// phases[i] phases of rate rates[i], taken with probability probabilities[i].
#ifndef VELMORA_DISTRIBUTIONS_DIST_HYPERERLANG_H
#define VELMORA_DISTRIBUTIONS_DIST_HYPERERLANG_H

#include <utility>
#include <vector>

#include "distributions/dist.h"

namespace velmora {

class CPH;
class Erlang;

class HyperErlang : public Dist {
public:
    HyperErlang(std::vector<unsigned> phases, std::vector<double> rates, std::vector<double> probabilities);

    // The number of states of the equivalent phase-type distribution: the
    // sum of the phases.
    unsigned getOrder() const;
    // The number of branches: the length of the rates.
    unsigned getBranches() const;
    std::vector<unsigned> getPhases() const;
    std::vector<double> getRates() const;
    std::vector<double> getProbabilities() const;
    // Each setter checks the whole object, so the branches can't be resized
    // one vector at a time.
    void setPases(std::vector<unsigned> phases);
    void setRates(std::vector<double> rates);
    void setProbabilities(std::vector<double> probabilities);

    double generateVariate() override;
    double evalPDF(double x) override;
    double evalCDF(double x) override;
    // Throws "Not implemented.".
    double evalInverseCDF(double p) override;
    std::string toString(format f) override;
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
    static Dist* fromXML(XMLElement* family);

    // The Erlang chains of the branches side by side on the diagonal, in
    // branch order, each entered in its first state with the branch's
    // probability.
    CPH asCPH();
    // Per branch in order: its probability and a new Erlang of its phases and
    // rate, owned by the caller.
    std::vector<std::pair<double, Erlang*>> getErlangDists();
    // Orders the branches by ascending mean phases/rate; equal means keep
    // their order.
    void sortBranches();

    // Equal lengths, no negative rate or probability, and probabilities
    // summing to 1 within 0.00001.
    static bool hyper_erlang_check_params(const std::vector<unsigned>& phases, const std::vector<double>& rates,
                                          const std::vector<double>& probabilities);
    static double hyper_erlang_pdf(double x, const std::vector<unsigned>& phases, const std::vector<double>& rates,
                                   const std::vector<double>& probabilities);
    static double hyper_erlang_cdf(double x, const std::vector<unsigned>& phases, const std::vector<double>& rates,
                                   const std::vector<double>& probabilities);
    // Throws "Not implemented.".
    static double hyper_erlang_inverse_cdf(double p, const std::vector<unsigned>& phases,
                                           const std::vector<double>& rates, const std::vector<double>& probabilities);
    static double hyper_erlang_ccdf(double x, const std::vector<unsigned>& phases, const std::vector<double>& rates,
                                    const std::vector<double>& probabilities);
    // Mean, variance, cv and the raw moments; skewness and kurtosis are not
    // computed.
    static DistStats hyper_erlang_stats(const std::vector<unsigned>& phases, const std::vector<double>& rates,
                                        const std::vector<double>& probabilities, unsigned n);

private:
    std::vector<unsigned> phases;
    std::vector<double> rates;
    std::vector<double> probabilities;
};

}  // namespace velmora

#endif
