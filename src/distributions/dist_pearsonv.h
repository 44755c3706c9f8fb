// The Pearson type V (inverse gamma) distribution with shape alpha and scale
// beta: density and variates only.
#ifndef VELMORA_DISTRIBUTIONS_DIST_PEARSONV_H
#define VELMORA_DISTRIBUTIONS_DIST_PEARSONV_H

#include "distributions/dist.h"

namespace velmora {

class PearsonV : public Dist {
public:
    PearsonV(double alpha, double beta);

    double getAlpha() const;
    double getBeta() const;
    void setAlpha(double alpha);
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
    double exactCDF(double x) override;
    double exactCCDF(double x) override;
    DistStats exactStats(unsigned n) override;
    unsigned parameterCount() const override;
    static Dist* fromConfig(Config* c);

    static double pearsonV_pdf(double x, double alpha, double beta);

private:
    double alpha;
    double beta;
};

}  // namespace velmora

#endif
