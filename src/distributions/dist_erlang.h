// The Erlang distribution: a fixed number of exponential phases of one rate.
#ifndef VELMORA_DISTRIBUTIONS_DIST_ERLANG_H
#define VELMORA_DISTRIBUTIONS_DIST_ERLANG_H

#include <vector>

#include "distributions/dist.h"

namespace velmora {

class CPH;

class Erlang : public Dist {
public:
    Erlang(unsigned phases, double rate);

    unsigned getPhases() const;
    double getRate() const;
    void setPhases(unsigned phases);
    void setRate(double rate);

    double generateVariate() override;
    double evalPDF(double x) override;
    double evalCDF(double x) override;
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

    // The chain of `phases` states, each left at `rate` for the next, entered
    // in the first.
    CPH asCPH();

    // The statics refuse a negative rate only; a rate of 0 passes them.
    static double erlang_pdf(double x, unsigned phases, double rate);
    static double erlang_cdf(double x, unsigned phases, double rate);
    // The gamma quantile with shape `phases` and scale 1/rate.
    static double erlang_inverse_cdf(double p, unsigned phases, double rate);
    static double erlang_ccdf(double x, unsigned phases, double rate);
    // The raw moments divide the two factorials in integer arithmetic, exact
    // while i + phases - 1 <= 12.
    static DistStats erlang_stats(unsigned phases, double rate, unsigned n);

private:
    unsigned phases;
    double rate;
};

}  // namespace velmora

#endif
