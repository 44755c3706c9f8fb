// The Johnson translation system: a standard normal Z carried to X by
// Z = gamma + delta f((X - xi) / lambda), with one transformation f per
// family: log-normal (SL), bounded (SB), unbounded (SU) and normal (SN).
#ifndef VELMORA_DISTRIBUTIONS_DIST_JOHNSON_H
#define VELMORA_DISTRIBUTIONS_DIST_JOHNSON_H

#include <string>
#include <vector>

#include "distributions/dist.h"

namespace velmora {

// Declared without its values in numerics/random.h, for Rand::johnson.
enum dist_johnson_family : int { JOHNSON_SL = 0, JOHNSON_SB = 1, JOHNSON_SU = 2, JOHNSON_SN = 3 };

class Johnson : public Dist {
public:
    Johnson(double gamma, double delta, double lambda, double xi, dist_johnson_family family);

    double getGamma() const;
    double getDelta() const;
    double getLambda() const;
    double getXi() const;
    dist_johnson_family getJohnsonType() const;
    void setGamma(double gamma);
    void setDelta(double delta);
    void setLambda(double lambda);
    void setXi(double xi);
    // Stores the family without a check.
    void setJohnsonType(dist_johnson_family family);

    double generateVariate() override;
    double evalPDF(double x) override;
    double evalCDF(double x) override;
    double evalInverseCDF(double p) override;
    std::string toString(format f) override;
    DistStats getProperties(unsigned n) override;
    // Any four numbers are accepted: the body is empty.
    void paramCheck() override;
    // The exact view; see Dist.
    double exactCDF(double x) override;
    double exactQuantile(double p) override;
    unsigned parameterCount() const override;
    static Dist* fromConfig(Config* c);
    static Dist* fromXML(XMLElement* family);

    // "SL", "SB", "SU", "SN" and back; anything else throws.
    static dist_johnson_family getJohnsonType(std::string name);
    static std::string getJohnsonType(dist_johnson_family f);

    static double johnson_pdf(double x, dist_johnson_family f, double gamma, double delta, double lambda, double xi);
    // The standard normal table of Normal, so four decimals in steps of 0.01 in z.
    static double johnson_cdf(double x, dist_johnson_family f, double gamma, double delta, double lambda, double xi);
    static double johnson_inverse_cdf(double p, dist_johnson_family f, double gamma, double delta, double lambda,
                                      double xi);
    static double johnson_ccdf(double x, dist_johnson_family f, double gamma, double delta, double lambda, double xi);
    // f(z) of the family.
    static double johnson_transformation(double z, dist_johnson_family f);
    // Closed forms for SL, SU and SN; SB by Romberg integration over the range
    // between its 0.1 and 99.9 percentiles. At most four raw moments.
    static DistStats johnson_stats(dist_johnson_family f, double gamma, double delta, double lambda, double xi,
                                   unsigned n);

    // x^k times the SB density (k = 1), or (x - mean)^k (k = 2, 3, 4), with
    // params = (gamma, delta, lambda, xi) and, from the variance on, the mean.
    static double MeanJFcn(double x, std::vector<double> params);
    static double VarianceJFcn(double x, std::vector<double> params);
    static double ThirdMomJFcn(double x, std::vector<double> params);
    static double FourthMomJFcn(double x, std::vector<double> params);

private:
    double gamma;
    double delta;
    double lambda;
    double xi;
    dist_johnson_family family;
};

}  // namespace velmora

#endif
