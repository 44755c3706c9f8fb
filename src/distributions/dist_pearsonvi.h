// The Pearson type VI (beta prime) distribution with shapes alpha1, alpha2
// and scale beta: density and variates only.
#ifndef VELMORA_DISTRIBUTIONS_DIST_PEARSONVI_H
#define VELMORA_DISTRIBUTIONS_DIST_PEARSONVI_H

#include "distributions/dist.h"

namespace velmora {

class PearsonVI : public Dist {
public:
    PearsonVI(double alpha1, double alpha2, double beta);

    double getAlpha1() const;
    double getAlpha2() const;
    double getBeta() const;
    void setAlpha1(double alpha1);
    void setAlpha2(double alpha2);
    void setBeta(double beta);

    double generateVariate() override;
    double evalPDF(double x) override;
    double evalCDF(double x) override;             // throws "Not implemented!"
    double evalInverseCDF(double p) override;      // throws "Not implemented."
    std::string toString(format f) override;
    DistStats getProperties(unsigned n) override;  // throws "Not implemented."
    void paramCheck() override;
    // The exact view; see Dist.
    double exactLogPDF(double x) override;
    double exactQuantile(double p) override;
    DistStats exactStats(unsigned n) override;
    unsigned parameterCount() const override;
    bool hasExactCDF() const override;
    static Dist* fromConfig(Config* c);

    static double pearsonVI_pdf(double x, double alpha1, double alpha2, double beta);

private:
    double alpha1;
    double alpha2;
    double beta;
};

}  // namespace velmora

#endif
