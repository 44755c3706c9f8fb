// The triangular distribution with lower bound a, upper bound b and mode c.
#ifndef VELMORA_DISTRIBUTIONS_DIST_TRIANGULAR_H
#define VELMORA_DISTRIBUTIONS_DIST_TRIANGULAR_H

#include "distributions/dist.h"

namespace velmora {

class Triangular : public Dist {
public:
    Triangular(double a, double b, double c);

    double getA() const;
    double getB() const;
    double getC() const;
    void setA(double a);
    void setB(double b);
    void setC(double c);

    double generateVariate() override;
    double evalPDF(double x) override;
    double evalCDF(double x) override;
    double evalInverseCDF(double p) override;
    std::string toString(format f) override;
    DistStats getProperties(unsigned n) override;
    void paramCheck() override;
    // The exact view; see Dist.
    double exactQuantile(double p) override;
    DistStats exactStats(unsigned n) override;
    unsigned parameterCount() const override;
    static Dist* fromConfig(Config* c);
    static Dist* fromXML(XMLElement* family);

    static double triangular_pdf(double x, double a, double b, double c);
    static double triangular_cdf(double x, double a, double b, double c);
    static double triangular_inverse_cdf(double p, double a, double b, double c);
    static double triangular_ccdf(double x, double a, double b, double c);
    // Only the first raw moment; more are refused with a warning.
    static DistStats triangular_stats(double a, double b, double c, unsigned n);

private:
    double a;
    double b;
    double c;
};

}  // namespace velmora

#endif
