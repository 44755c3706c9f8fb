// A distribution seen as a process: the stream of independent, identically
// distributed variates of one family. It forwards the distribution
// functions, moments and variates to the family, and adds the file handling,
// the summary, the sampled curves and what holds for an independent stream:
// autocorrelation 0 at every lag and no joint moments.
#ifndef VELMORA_DISTRIBUTIONS_DIST_PROCESS_H
#define VELMORA_DISTRIBUTIONS_DIST_PROCESS_H

#include <memory>
#include <string>
#include <vector>

#include "core/process.h"
// The family is held by a unique_ptr: the compiler-written destructor needs
// its class.
#include "distributions/dist.h"

namespace velmora {

class Config;
class Matrix;
class Trace;
class XMLConfig;

class DistProcess : public Process {
public:
    // Takes ownership of d.
    explicit DistProcess(Dist* d);
    DistProcess(std::string file, format f);
    explicit DistProcess(Config* c);
    explicit DistProcess(XMLConfig* c);
    // A family can't be copied through its base class, so neither can the
    // process.
    DistProcess(const DistProcess&) = delete;
    DistProcess& operator=(const DistProcess&) = delete;

    std::string getProcessDescription() override;
    void load(std::string file, format f) override;
    void save(std::string file, format f) override;
    std::string toString(format f) override;
    std::string getSummary() override;
    // The three orders are ignored: the summary holds the family, its mean
    // and its variance.
    std::string getSummary(unsigned moments, unsigned jointMoments, unsigned lags) override;
    std::vector<double> getMoments(unsigned from, unsigned to) const override;
    Matrix getJointMoments(unsigned first, unsigned last) const override;
    std::vector<double> getAutocorrelations(unsigned from, unsigned to) const override;
    // The three curves on 1000 steps of (high - low)/1000; a point at which
    // the family throws is recorded as (0, 0).
    Distribution computeDistribution(double low, double high) override;
    double evalCDF(double x) override;
    double evalCCDF(double x) override;
    double evalPDF(double x) override;
    // The log-likelihood of the trace.
    double computeLikelihood(Trace* trace) override;
    void initRandomNumberGeneration(unsigned seed) override;
    double getNextRandomVariate() override;

    void load(Config* c);
    void load(XMLConfig* c);

    Dist* getDistribution();

private:
    // The family, or an exception when none has been loaded.
    Dist* requireDist() const;

    std::unique_ptr<Dist> dist;
};

}  // namespace velmora

#endif
