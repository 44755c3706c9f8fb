// The continuous phase-type distribution (T, tau): moments through the
// powers of the inverse of -T, distribution curves by uniformization on a
// fixed grid, generation by walking the absorbing chain, the structural
// tests (acyclic, exponential, Erlang, series canonical form) and, for an
// acyclic chain, its paths and its series canonical form.
#ifndef VELMORA_MARKOV_CPH_H
#define VELMORA_MARKOV_CPH_H

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "markov/ph.h"
#include "markov/cph_randomization.h"

namespace velmora {

class HypoExponential;
class MAP;

// The ways through an acyclic chain: the probability of each and a
// hypo-exponential distribution with the rates of the visited phases in the
// order of the visit. The distributions are made with new and belong to the
// holder of the list, who frees them with delete_paths.
using cph_path_list = std::vector<std::pair<double, HypoExponential*>>;

// Deletes every distribution of the list once and empties it.
void delete_paths(cph_path_list& paths);

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

    // Every path of an acyclic distribution, ordered by ascending mean (a
    // selection ordering: among equal means the order is that of the
    // exchanges, not the order found). Throws for a cyclic or invalid chain,
    // and once more than path_limit paths are found.
    cph_path_list generatePaths() const;
    // A working path: probability and rate list.
    using working_path = std::pair<double, std::vector<double>>;
    // The paths that continue each of `paths` from `state`, depth-first with
    // the successors ascending; the path that ends at `state` comes after
    // those through its successors.
    std::vector<working_path> generatePath(std::vector<working_path> paths, unsigned state) const;
    // The equivalent series chain of the same order: phases by ascending
    // rate, each leaving only to the next, entered where a path's tail of
    // the rates begins.
    CPH seriesCanonicalForm() const;

    // Every path is stored with its whole rate list, and a dense chain of
    // order n has 2^n - 1 paths: the enumeration stops with an Exception once
    // it holds more paths than this. The limit lets every acyclic chain up to
    // order 12 through; a CAPP on 4095 paths already needs about 8 million
    // bivariate normal probabilities per lag of its correlation.
    static constexpr std::size_t path_limit = 4095;
    // The work list of the canonical form grows about as 4^n for a dense
    // chain of n distinct rates (742 899 entries at order 12, 2 674 439 at
    // order 13); beyond this many entries, a few hundred megabytes, the form
    // stops with an Exception. Order 12 passes here as well.
    static constexpr std::size_t canonical_form_limit = std::size_t(1) << 21;

private:
    // Throws unless T is a sub-generator within 1e-9 and tau has finite
    // non-negative entries, naming the parts as the file does.
    void requirePhaseType(const char* matrixName, const char* vectorName) const;
};

}  // namespace velmora

#endif
