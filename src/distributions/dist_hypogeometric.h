// The hypo-geometric distribution: the sum of independent geometric phases,
// one success probability per phase. It offers variates and its mean only.
#ifndef VELMORA_DISTRIBUTIONS_DIST_HYPOGEOMETRIC_H
#define VELMORA_DISTRIBUTIONS_DIST_HYPOGEOMETRIC_H

#include <vector>

#include "distributions/dist.h"

namespace velmora {

class HypoGeometric : public Dist {
public:
    explicit HypoGeometric(std::vector<double> p);

    std::vector<double> getP() const;
    void setP(std::vector<double> p);

    double generateVariate() override;
    // The distribution functions and the quantile throw "Not supported!".
    double evalPDF(double x) override;
    double evalCDF(double x) override;
    double evalInverseCDF(double p) override;
    double evalCCDF(double x) override;
    // The key-value form only: any other format throws.
    std::string toString(format f) override;
    // The mean and one raw moment; the other statistics are 0, and asking for
    // more moments throws.
    DistStats getProperties(unsigned n) override;
    // Every element in [0, 1]; an empty list is accepted.
    void paramCheck() override;
    // The exact view; see Dist.
    double exactLogPDF(double x) override;
    unsigned parameterCount() const override;
    bool isDiscrete() const override;
    static Dist* fromConfig(Config* c);

    // Sum of the phases' means 1/p; a p of 0 makes it infinite.
    double getMean();

private:
    std::vector<double> p;
};

}  // namespace velmora

#endif
