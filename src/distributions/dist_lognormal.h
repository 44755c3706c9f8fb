// The lognormal distribution: log X is normal with mean mu and deviation sigma.
#ifndef VELMORA_DISTRIBUTIONS_DIST_LOGNORMAL_H
#define VELMORA_DISTRIBUTIONS_DIST_LOGNORMAL_H

#include "distributions/dist.h"

namespace velmora {

class Lognormal : public Dist {
public:
    Lognormal(double mu, double sigma);

    double getMu() const;
    double getSigma() const;
    void setMu(double mu);
    void setSigma(double sigma);

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
    static Dist* fromConfig(Config* c);
    static Dist* fromXML(XMLElement* family);

    static double lognormal_pdf(double x, double mu, double sigma);
    static double lognormal_cdf(double x, double mu, double sigma);
    static double lognormal_inverse_cdf(double p, double mu, double sigma);
    static double lognormal_ccdf(double x, double mu, double sigma);
    static DistStats lognormal_stats(double mu, double sigma, unsigned n);

private:
    double mu;
    double sigma;
};

}  // namespace velmora

#endif
