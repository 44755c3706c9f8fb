// The continuous phase-type distribution (T, tau): moments through the
// powers of the inverse of -T, distribution curves by uniformization on a
// fixed grid, generation by walking the absorbing chain, and the structural
// tests (acyclic, exponential, Erlang, series canonical form).
#ifndef VELMORA_MARKOV_CPH_H
#define VELMORA_MARKOV_CPH_H

#include <string>
#include <utility>
#include <vector>

#include "markov/ph.h"
#include "markov/cph_randomization.h"

namespace velmora {

class MAP;

class CPH : public PH {
public:
    CPH();
    // A column vector tau is transposed; no validity check.
    CPH(Matrix T, Vector tau);
    CPH(std::string file, format f);
    explicit CPH(Config* config);
    explicit CPH(XMLConfig* document);

    using PH::load;
    std::string toString(format f) override;
    std::vector<double> getMoments(unsigned first, unsigned last) const override;
    // Joint moments of the renewal MAP of this distribution.
    Matrix getJointMoments(unsigned first, unsigned last) const override;
    Distribution computeDistribution(double lower, double upper) override;
    // Curves of the absorbing (D1 = exit rates times the initial vector) or
    // arrival structure (D0, D1) started with the row pi, on the grid
    // h = 0.001 from 0: points (i+1)h at or beyond `lower` up to the first
    // grid point at or beyond `upper`, with the point 0 when lower <= 0.
    // It uses no member, so MAP calls it as CPH::computeDistribution.
    static Distribution computeDistribution(double lower, double upper, Matrix D0, Matrix pi, Matrix D1);
    // The first point of computeDistribution(x, x): values on the grid.
    double evalCDF(double x) override;
    double evalCCDF(double x) override;
    double evalPDF(double x) override;
    // Likelihood of the trace under the renewal MAP of this distribution.
    double computeLikelihood(Trace* trace) override;
    double getNextRandomVariate() override;

    void load(Config* config) override;
    void load(XMLConfig* document) override;
    void load(XMLElement* element) override;
    double getVariance() const override;
    bool valid_ph() const override;
    std::vector<std::pair<double, Dist*>> getElementarySeries() override;

    // (-T) 1 as a column: the exit rate of each phase.
    Vector getExitRates() const;
    bool isExponential() const;
    bool isErlang() const;

    // The renewal MAP: D0 = T, D1 = exit rates times tau.
    MAP asMAP() const;

    // Every phase but the last leaves only to the next one, with
    // non-decreasing rates.
    bool hasSeriesCF() const;
};

}  // namespace velmora

#endif
