// The beta distribution on (0, 1) with shapes alpha1 and alpha2: density,
// statistics and variates; no distribution or quantile function.
#ifndef VELMORA_DISTRIBUTIONS_DIST_BETA_H
#define VELMORA_DISTRIBUTIONS_DIST_BETA_H

#include "distributions/dist.h"

namespace velmora {

class Beta : public Dist {
public:
    Beta(double alpha1, double alpha2);

    double getAlpha1() const;
    double getAlpha2() const;
    void setAlpha1(double alpha1);
    void setAlpha2(double alpha2);

    double generateVariate() override;
    double evalPDF(double x) override;
    double evalCDF(double x) override;         // throws "Not implemented!"
    double evalInverseCDF(double p) override;  // throws "Not implemented."
    std::string toString(format f) override;
    DistStats getProperties(unsigned n) override;
    void paramCheck() override;
    // The exact view; see Dist.
    double exactLogPDF(double x) override;
    double exactQuantile(double p) override;
    DistStats exactStats(unsigned n) override;
    unsigned parameterCount() const override;
    bool hasExactCDF() const override;
    static Dist* fromConfig(Config* c);

    static double beta_pdf(double x, double a, double b);
    static DistStats beta_stats(double a, double b, unsigned n);

private:
    double alpha1;
    double alpha2;
};

}  // namespace velmora

#endif
