// The gamma distribution with shape alpha and scale beta.
#ifndef VELMORA_DISTRIBUTIONS_DIST_GAMMA_H
#define VELMORA_DISTRIBUTIONS_DIST_GAMMA_H

#include "distributions/dist.h"

namespace velmora {

class Gamma : public Dist {
public:
    Gamma(double alpha, double beta);

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

    static double gamma_pdf(double x, double alpha, double beta);
    static double gamma_cdf(double x, double alpha, double beta);
    // Tests the parameters before p.
    static double gamma_inverse_cdf(double p, double alpha, double beta);
    static double gamma_ccdf(double x, double alpha, double beta);
    static DistStats gamma_stats(double alpha, double beta, unsigned n);

private:
    double alpha;
    double beta;
};

}  // namespace velmora

#endif
