// The deterministic distribution: all mass at one value.
#ifndef VELMORA_DISTRIBUTIONS_DIST_DETERMINISTIC_H
#define VELMORA_DISTRIBUTIONS_DIST_DETERMINISTIC_H

#include "distributions/dist.h"

namespace velmora {

class Deterministic : public Dist {
public:
    explicit Deterministic(double val);

    double getVal() const;
    // Stores only: every value is valid.
    void setVal(double val);

    double generateVariate() override;
    double evalPDF(double x) override;
    double evalCDF(double x) override;
    double evalInverseCDF(double p) override;
    std::string toString(format f) override;
    DistStats getProperties(unsigned n) override;
    void paramCheck() override;
    // The exact view; see Dist.
    double exactLogPDF(double x) override;
    double exactQuantile(double p) override;
    unsigned parameterCount() const override;
    bool isDiscrete() const override;
    static Dist* fromConfig(Config* c);

private:
    double val;
};

}  // namespace velmora

#endif
