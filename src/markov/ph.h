// Phase-type distributions seen as processes: the time to absorption of a
// finite continuous-time Markov chain with sub-generator T and initial vector
// tau. PH holds the data and what all phase-type models share (text files,
// summary, uncorrelated autocorrelations, the random stream); the concrete
// class CPH does the mathematics.
#ifndef VELMORA_MARKOV_PH_H
#define VELMORA_MARKOV_PH_H

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/process.h"
#include "numerics/matrix.h"
#include "numerics/random.h"

namespace velmora {

class Dist;
class Config;
class XMLConfig;
class XMLElement;

class PH : public Process {
public:
    PH();
    // A column vector tau is transposed; no validity check.
    PH(Matrix T, Vector tau);

    std::string getProcessDescription() override;
    void load(std::string file, format f) override;
    void save(std::string file, format f) override;
    std::string toString(format f) override = 0;
    std::string getSummary() override;
    std::string getSummary(unsigned moments, unsigned jointMoments, unsigned lags) override;
    std::vector<double> getMoments(unsigned first, unsigned last) const override = 0;
    Matrix getJointMoments(unsigned first, unsigned last) const override = 0;
    // A phase-type stream is uncorrelated: 1 at lag 0, 0 elsewhere.
    std::vector<double> getAutocorrelations(unsigned first, unsigned last) const override;
    Distribution computeDistribution(double lower, double upper) override = 0;
    double evalCDF(double x) override = 0;
    double evalCCDF(double x) override = 0;
    double evalPDF(double x) override = 0;
    double computeLikelihood(Trace* trace) override = 0;
    void initRandomNumberGeneration(unsigned seed) override;
    double getNextRandomVariate() override = 0;

    virtual void load(Config* config) = 0;
    virtual void load(XMLConfig* document) = 0;
    virtual void load(XMLElement* element) = 0;
    virtual double getVariance() const = 0;
    virtual bool valid_ph() const = 0;
    // The ways through an acyclic chain, each a probability and a
    // hypo-exponential distribution owned by the caller.
    virtual std::vector<std::pair<double, Dist*>> getElementarySeries() = 0;

    // Plain reads and writes, without checks; setTau keeps the orientation
    // it is given.
    unsigned getOrder() const;
    Matrix getT() const;
    void setT(Matrix T);
    Vector getTau() const;
    void setTau(Vector tau);
    // The mass at zero, 1 - sum of tau.
    double getTau0() const;

    // Valid, and T lower or upper triangular.
    bool isAcyclic() const;

protected:
    Matrix T;
    Vector tau;
    // Empty until the first initRandomNumberGeneration. A copy gets a stream
    // of its own in the original's state: both continue with the same values.
    std::optional<Rand> rng;
};

}  // namespace velmora

#endif
