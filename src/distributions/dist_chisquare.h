// The chi-squared distribution with k degrees of freedom.
#ifndef VELMORA_DISTRIBUTIONS_DIST_CHISQUARE_H
#define VELMORA_DISTRIBUTIONS_DIST_CHISQUARE_H

#include "distributions/dist.h"

namespace velmora {

class ChiSquare : public Dist {
public:
    explicit ChiSquare(unsigned k);

    unsigned getK() const;
    void setK(unsigned k);

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

    static double chi2_pdf(double x, unsigned k);
    static double chi2_cdf(double x, unsigned k);
    static double chi2_inverse_cdf(double p, unsigned k);
    static double chi2_ccdf(double x, unsigned k);
    static DistStats chi2_stats(unsigned k, unsigned n);

private:
    unsigned k;
};

}  // namespace velmora

#endif
