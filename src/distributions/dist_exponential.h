// The exponential distribution with a given rate.
#ifndef VELMORA_DISTRIBUTIONS_DIST_EXPONENTIAL_H
#define VELMORA_DISTRIBUTIONS_DIST_EXPONENTIAL_H

#include <vector>

#include "distributions/dist.h"

namespace velmora {

class Exponential : public Dist {
public:
    explicit Exponential(double rate);

    double getRate() const;
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

    static double exponential_pdf(double x, double rate);
    static double exponential_cdf(double x, double rate);
    static double exponential_inverse_cdf(double p, double rate);
    static double exponential_ccdf(double x, double rate);
    static DistStats exponential_stats(double rate, unsigned n);

private:
    double rate;
};

}  // namespace velmora

#endif
