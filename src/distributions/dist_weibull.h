// The Weibull distribution with shape alpha and scale beta.
#ifndef VELMORA_DISTRIBUTIONS_DIST_WEIBULL_H
#define VELMORA_DISTRIBUTIONS_DIST_WEIBULL_H

#include "distributions/dist.h"

namespace velmora {

class Weibull : public Dist {
public:
    Weibull(double alpha, double beta);

    double getAlpha() const;
    double getBeta() const;
    void setAlpha(double alpha);
    void setBeta(double beta);

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

    static double weibull_pdf(double x, double alpha, double beta);
    static double weibull_cdf(double x, double alpha, double beta);
    static double weibull_inverse_cdf(double p, double alpha, double beta);
    static double weibull_ccdf(double x, double alpha, double beta);
    // Skewness and kurtosis are not computed.
    static DistStats weibull_stats(double alpha, double beta, unsigned n);

private:
    double alpha;
    double beta;
};

}  // namespace velmora

#endif
