// The geometric distribution on the positive integers: the number of trials
// up to and including the first success of probability p. Arguments are
// doubles, floored to the integer k.
#ifndef VELMORA_DISTRIBUTIONS_DIST_GEOMETRIC_H
#define VELMORA_DISTRIBUTIONS_DIST_GEOMETRIC_H

#include "distributions/dist.h"

namespace velmora {

class Geometric : public Dist {
public:
    explicit Geometric(double p);

    double getP() const;
    void setP(double p);

    double generateVariate() override;
    // P(K = k); 0 below k = 1.
    double evalPDF(double x) override;
    double evalCDF(double x) override;
    // floor(log(1 - q) / log(1 - p)), which is not always the smallest k
    // with evalCDF(k) >= q.
    double evalInverseCDF(double q) override;
    std::string toString(format f) override;
    // One raw moment; asking for more throws.
    DistStats getProperties(unsigned n) override;
    // p in [0, 1]; 0 and 1 are accepted.
    void paramCheck() override;
    // The exact view; see Dist.
    double exactLogPDF(double x) override;
    double exactCDF(double x) override;
    double exactQuantile(double p) override;
    DistStats exactStats(unsigned n) override;
    unsigned parameterCount() const override;
    bool isDiscrete() const override;
    static Dist* fromConfig(Config* c);

private:
    double p;
};

}  // namespace velmora

#endif
