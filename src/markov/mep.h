// The matrix exponential process: correlated intervals given by two square
// matrices D0 (transitions without an event) and D1 (transitions with an
// event). This class holds the analytical side only: the text forms, the
// chain embedded at the events, the steady-state vectors, moments, joint
// moments of consecutive intervals and autocorrelations. Generation and the
// distribution curves come with the Markovian arrival process (MAP).
#ifndef VELMORA_MARKOV_MEP_H
#define VELMORA_MARKOV_MEP_H

#include <string>
#include <vector>

#include "core/process.h"
#include "numerics/matrix.h"

namespace velmora {

class Config;
class XMLConfig;

class MEP : public Process {
public:
    MEP(Matrix D0, Matrix D1);
    MEP(std::string file, format f);
    explicit MEP(Config* config);
    explicit MEP(XMLConfig* document);

    std::string getProcessDescription() override;
    void load(std::string file, format f) override;
    void save(std::string file, format f) override;
    std::string toString(format f) override;
    std::string getSummary() override;
    std::string getSummary(unsigned moments, unsigned jointMoments, unsigned lags) override;
    std::vector<double> getMoments(unsigned first, unsigned last) const override;
    Matrix getJointMoments(unsigned first, unsigned last) const override;
    std::vector<double> getAutocorrelations(unsigned first, unsigned last) const override;
    Distribution computeDistribution(double lower, double upper) override;
    double evalCDF(double x) override;
    double evalCCDF(double x) override;
    double evalPDF(double x) override;
    double computeLikelihood(Trace* trace) override;
    void initRandomNumberGeneration(unsigned seed) override;
    double getNextRandomVariate() override;

    virtual void load(Config* config);
    virtual void load(XMLConfig* document);
    virtual Matrix getD0() const;
    virtual Matrix getD1() const;
    // Transition matrix of the chain embedded at the events, (-D0)^-1 D1.
    virtual Matrix getP() const;
    virtual unsigned getOrder() const;
    // Phase distribution right after an event, as a 1 x n matrix.
    virtual Matrix steady_state_vector_embedded_dtmc() const;
    // Phase distribution of the continuous-time chain D0 + D1, as 1 x n.
    virtual Matrix steady_state_vector() const;
    virtual double getVariance() const;

protected:
    Matrix D0;
    Matrix D1;
    std::string modelName;
    // Raised whenever D0 or D1 are replaced, so that subclasses can tell
    // whether tables derived from the matrices are still current.
    unsigned long matrixRevision = 0;
};

}  // namespace velmora

#endif
