// The normal distribution, and the standard normal functions that the
// correlated models use directly.
#ifndef VELMORA_DISTRIBUTIONS_DIST_NORMAL_H
#define VELMORA_DISTRIBUTIONS_DIST_NORMAL_H

#include "distributions/dist.h"

namespace velmora {

class Normal : public Dist {
public:
    Normal(double mean, double sd);

    double getMean() const;
    double getSD() const;
    void setMean(double mean);
    void setSD(double sd);

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

    static double normal_pdf(double x, double m, double s);
    static double normal_cdf(double x, double m, double s);
    // Without a check of p: p <= 0 and p >= 1 give the mean.
    static double normal_inverse_cdf(double p, double m, double s);
    static double normal_ccdf(double x, double m, double s);
    // Kurtosis 3 (not the excess); at most eight raw moments.
    static DistStats normal_stats(double m, double s, unsigned n);

    // The standard normal distribution function from a table of Phi(i/100),
    // i = 0..349, rounded to four decimals: a step function in steps of 0.01.
    static double standard_normal_cdf(double z);
    static double standard_bivariate_normal_pdf(double x, double y, double rho);

private:
    double mean;
    double sd;
};

}  // namespace velmora

#endif
