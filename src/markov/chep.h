// The correlated hyper-Erlang process: a capp whose marginal is a
// hyper-Erlang distribution, each Erlang branch playing the part of a path.
// Type 1 is a capp: the base value picks the branch and the value is a fresh
// Erlang draw. Type 2 picks the branch by an independent uniform draw and
// lets the base value pick the position inside it, through the branch's
// inverse distribution function; its autocorrelations need one double
// integral per pair of branches, run on the shared normal grid.
#ifndef VELMORA_MARKOV_CHEP_H
#define VELMORA_MARKOV_CHEP_H

#include <memory>
#include <string>
#include <vector>

#include "markov/capp.h"

namespace velmora {

class HyperErlang;

enum chep_type { CHEP_TYPE_1 = 0, CHEP_TYPE_2 = 1 };

class chep : public capp {
public:
    // Takes ownership of both and sorts the branches by ascending mean.
    chep(HyperErlang* h, ARIMA* base, chep_type t);
    chep(std::string file, format f);
    explicit chep(Config* config);
    explicit chep(XMLConfig* document);
    ~chep() override;

    chep_type getType() const;
    // Changes the type only; nothing has to be rebuilt.
    void setType(chep_type t);
    HyperErlang* getHyperErlang();

    std::string toString(format f) override;
    using capp::getSummary;
    std::string getSummary(unsigned moments, unsigned jointMoments, unsigned lags) override;
    // Type 2 throws "Not implemented.".
    Matrix getJointMoments(unsigned from, unsigned to) const override;
    std::vector<double> getAutocorrelations(unsigned from, unsigned to) const override;
    Distribution computeDistribution(double lower, double upper) override;
    double evalCDF(double x) override;
    double evalCCDF(double x) override;
    double evalPDF(double x) override;
    double getNextRandomVariate() override;
    // Exact numerics also for the hyper-Erlang: its exact statistics, and in
    // type 2 the branch's exact Erlang quantile of Phi by AS 66.
    void setExactNumerics(bool exact) override;

    using capp::load;
    void load(Config* config) override;
    void load(XMLConfig* document) override;
    void load(XMLElement* element) override;
    // Rebuilds the equivalent CPH, normalises the base and makes one path per
    // branch with the branch mean.
    void init() override;

    // One path per branch of h, in branch order, appended to paths (which
    // own their distributions), and the branch means phases/rate.
    static void appendBranchPaths(const HyperErlang& h, cph_path_list& paths, std::vector<double>& pathMeans);

    // The type-2 autocorrelation for each base autocorrelation in rho:
    //   (sum over branch pairs of p(i) p(j) I(i, j; rho) - mean^2) / var,
    // the pairs i < j counted twice, with I(i, j) = E[E_i^-1(Phi(Y)) E_j^-1(Phi(X))]
    // on the shared grid, each branch's inverse computed once per node. More
    // than 2000 integrals (branch pairs times lags) are refused.
    static std::vector<double> compute_type2_autocorrelation(HyperErlang* h, std::vector<double> rho);
    // The same by the straightforward nested evaluation of I(i, j); slower,
    // and equal to the grid form.
    static std::vector<double> compute_type2_autocorrelation_direct(HyperErlang* h, std::vector<double> rho);

private:
    chep();
    // Drops the marginal of both kinds, the paths and the base.
    void resetChepParts();
    HyperErlang* requireHyperErlang() const;

    std::unique_ptr<HyperErlang> hyperErlang;
    chep_type chepType = CHEP_TYPE_1;
    // The branches as read by the generator, filled by init().
    std::vector<unsigned> branchPhases;
    std::vector<double> branchRates;
    std::vector<double> branchProbabilities;
};

// The straightforward form of the type-2 integral: the outer integrand
// stores its variable and integrates the inner one, which evaluates
// E1^-1(Phi(a)) E2^-1(Phi(b)) phi2(a, b; rho) at (inner, stored outer), E1
// and E2 the Erlang branches branch1 and branch2 of the stored marginal.
double chep_compute_autocorrelation_outer_integral(double x, std::vector<double> params);
double chep_compute_autocorrelation_inner_integral(double y, std::vector<double> params);
double chep_compute_autocorrelation_double_integral(double a, double b);

// The problem of the last straightforward type-2 integral on this thread,
// read by the integrands above: a record, one per thread. The integrals
// themselves carry their problem and never read it.
extern thread_local HyperErlang* chep_compute_autocorrelation_double_integral_dist;
extern thread_local double chep_compute_autocorrelation_double_integral_acorr;
extern thread_local unsigned chep_compute_autocorrelation_double_integral_branch1;
extern thread_local unsigned chep_compute_autocorrelation_double_integral_branch2;
extern thread_local double chep_compute_autocorrelation_double_integral_val;

}  // namespace velmora

#endif
