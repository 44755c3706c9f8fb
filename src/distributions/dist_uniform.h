// The continuous uniform distribution on [a, b], 0 <= a <= b.
#ifndef VELMORA_DISTRIBUTIONS_DIST_UNIFORM_H
#define VELMORA_DISTRIBUTIONS_DIST_UNIFORM_H

#include "distributions/dist.h"

namespace velmora {

class Uniform : public Dist {
public:
    Uniform(double a, double b);

    double getA() const;
    double getB() const;
    void setA(double a);
    void setB(double b);

    double generateVariate() override;
    double evalPDF(double x) override;
    double evalCDF(double x) override;
    double evalInverseCDF(double p) override;
    std::string toString(format f) override;
    DistStats getProperties(unsigned n) override;
    void paramCheck() override;
    // The exact view; see Dist.
    double exactQuantile(double p) override;
    unsigned parameterCount() const override;
    static Dist* fromConfig(Config* c);
    static Dist* fromXML(XMLElement* family);

    static double uniform_pdf(double x, double a, double b);
    static double uniform_cdf(double x, double a, double b);
    static double uniform_inverse_cdf(double p, double a, double b);
    static double uniform_ccdf(double x, double a, double b);
    static DistStats uniform_stats(double a, double b, unsigned n);

private:
    double a;
    double b;
};

}  // namespace velmora

#endif
