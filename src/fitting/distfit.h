// Marginal fitting: a distribution family fitted to measured values, the
// figures that say how well it fits, and the choice among families.
//
// Estimators: maximum likelihood where it has a closed form or a
// one-dimensional root (exponential, normal, lognormal, gamma, Weibull,
// uniform, geometric, beta, Pearson V, chi-square over whole k); moments
// where they are the usual estimator (Erlang, two-stage hypo-exponential,
// two-branch hyper-exponential, triangular); the EM algorithm of Thuemmler,
// Buchholz and Telek (IEEE TDSC 2006) for the hyper-Erlang family.
//
// Values are plain doubles; NaN or infinite values, empty data and data
// outside a family's support are refused with an Exception from "distfit"
// that names the reason, as are families that cannot be fitted from values
// (hypo-geometric has no probability function; Johnson and Pearson VI are
// not offered).
#ifndef VELMORA_FITTING_DISTFIT_H
#define VELMORA_FITTING_DISTFIT_H

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace velmora {

class Dist;
class HyperErlang;

namespace distfit {

// The largest total phase count fitted. The fitters evaluate every family
// through its exact view, so no factorial limits the phases.
const unsigned kMaxPhases = 64;

// How the hyper-Erlang EM went, for the structure it kept and over all.
struct EMReport {
    std::vector<unsigned> structure;  // phases per branch of the kept result
    double logLikelihood = 0;         // of the kept result on the full data
    unsigned iterations = 0;          // of the kept structure
    bool converged = false;           // whether the kept structure met the test
    unsigned structures = 0;          // structures tried (partitions of phases)
    unsigned unconverged = 0;         // of those, how many hit the iteration cap
    std::size_t bins = 0;             // aggregated points the EM ran on
};

// The EM's limits: an iteration stops the structure when the aggregated
// log-likelihood gains less than `tolerance` times its magnitude, and after
// `maxIterations` at the latest (then the structure counts as not converged).
struct EMOptions {
    unsigned maxIterations = 2000;
    double tolerance = 1e-10;
    // Inputs longer than this are aggregated into at most `bins` weighted
    // points on a logarithmic grid; shorter ones are used value by value.
    std::size_t bins = 2000;
};

// The checks every fit starts with: at least one value, all finite, and
// with `nonNegative` none below 0; a failure names the first offending value
// and `family`. Gives the smallest and the largest value.
struct Range {
    double min;
    double max;
};
Range check_values(const std::vector<double>& data, const std::string& family, bool nonNegative);

// A new Dist of the named family (the registry's type name), fitted to
// `data`. `phases` is the total phase count of a hyper-Erlang (1..kMaxPhases,
// required) and, when not 0, the fixed phase count of an Erlang (otherwise
// 1/cv^2, rounded). Other families ignore it.
std::unique_ptr<Dist> fit_distribution(const std::string& family, const std::vector<double>& data,
                                       unsigned phases = 0);

// The best hyper-Erlang of `phases` total phases (1..kMaxPhases). Up to 13
// phases (101 partitions) EM runs for every partition of `phases` into
// branch phase counts; beyond, the structure grows one phase at a time from
// the best of 8 (every partition): each branch one phase longer, or a new one-phase branch,
// each continuing from the previous parameters, the best kept (so the search
// costs a few EM runs per phase instead of thousands of partitions). Every
// structure starts several times (orderings of its branches over two
// spreads of quantiles), and a fit whose branches collapse into identical
// ones (or lose all weight) is kept only when no structure avoids it. A kept
// structure that did not converge is reported through the warning channel
// and in `report`, which may be null.
std::unique_ptr<HyperErlang> fit_hypererlang(const std::vector<double>& data, unsigned phases);
std::unique_ptr<HyperErlang> fit_hypererlang(const std::vector<double>& data, unsigned phases, EMReport* report,
                                             const EMOptions& options = EMOptions());
// The best fits of every order 1..phases in one search, as the choice among
// orders needs them: up to 13 phases each order as fit_hypererlang finds it;
// beyond, orders up to 8 over every partition and the others grown one from
// the other.
std::vector<std::unique_ptr<HyperErlang>> fit_hypererlang_orders(const std::vector<double>& data, unsigned phases,
                                                                 const EMOptions& options = EMOptions());

// How well a distribution describes data. The log-likelihood, the
// Kolmogorov-Smirnov distance and the model moments are those of the exact
// distribution with the object's parameters: families whose density or
// distribution function in the toolkit rests on an approximation (Stirling's
// gamma function, the four-decimal normal table) are evaluated here in
// closed form instead, so that families compare fairly. A figure a family
// cannot give (no distribution function, a moment that does not exist) is
// NaN.
struct Assessment {
    std::string family;       // type name
    unsigned parameters = 0;  // free parameters counted for AIC and BIC
    std::size_t n = 0;        // number of values
    double logLikelihood = 0;
    double aic = 0;  // 2k - 2 logL
    double bic = 0;  // k ln n - 2 logL
    double ks = 0;   // sup |F(x) - F_n(x)| over the data's steps
    std::array<double, 3> modelMoments{};  // raw moments E[X], E[X^2], E[X^3]
    std::array<double, 3> dataMoments{};   // the same of the data
};

// Throws for a null d, empty data or non-finite values.
Assessment assess(Dist* d, const std::vector<double>& data);

// The raw moments E[X], E[X^2], E[X^3] of the data, each sum in data order
// divided by the count.
std::array<double, 3> raw_moments(const std::vector<double>& data);

// The Kolmogorov-Smirnov distance sup |F(x) - F_n(x)| of ascending data
// from a model: cdf[k] is the model's distribution function at sorted[k]
// (equal values have equal entries), and below[k], when given, its limit
// from the left there (for a discrete model; a continuous one has none to
// give). Each run of equal values is one step of F_n.
double ks_distance(const std::vector<double>& sorted, const std::vector<double>& cdf,
                   const std::vector<double>* below = nullptr);

// Completes an assessment of `data` whose family, parameter count,
// log-likelihood, KS distance and model moments are set: the count of
// values, AIC, BIC and the data's raw moments. For models assessed outside
// `assess`, such as a phase-type distribution.
void complete_assessment(Assessment& a, const std::vector<double>& data);

// The number of free parameters counted for d: one per real parameter of the
// family, 2m - 1 for a hyper-Erlang of m branches, 3 for a two-branch
// hyper-exponential; whole-number parameters (Erlang phases, chi-square
// degrees) count as one.
unsigned parameter_count(Dist* d);

// One candidate of a family choice: its phases (hyper-Erlang and Erlang
// only, else 0), its assessment when it could be fitted, else the reason.
struct Candidate {
    std::string family;
    unsigned phases = 0;
    bool fitted = false;
    std::string reason;
    Assessment assessment;
};

struct Selection {
    std::unique_ptr<Dist> best;  // the fitted family of lowest AIC
    std::size_t bestIndex = 0;   // its place in `candidates`
    std::vector<Candidate> candidates;
    Selection();
    Selection(Selection&&) noexcept;
    Selection& operator=(Selection&&) noexcept;
    ~Selection();
};

// Fits every named family (a hyper-Erlang once for each of 1..maxPhases
// phases, by fit_hypererlang_orders) and keeps the one of lowest AIC. A family that refuses the data is
// recorded with its reason and skipped; when none can be fitted, or the data
// themselves are refused, it throws. An unknown family name throws.
Selection best_family(const std::vector<double>& data, const std::vector<std::string>& candidates,
                      unsigned maxPhases);

}  // namespace distfit
}  // namespace velmora

#endif
