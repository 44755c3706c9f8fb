// Maximum-likelihood fitting of Markovian arrival processes with Erlang
// branches by the EM algorithm, for plain traces (MAP) and for traces whose
// events carry a class (marked MAP).
//
// The model is a hidden Markov chain over B branches: interval k is an
// Erlang of its branch's order r_b and rate lambda_b, and the branch of the
// next interval (and, for a marked trace, the class of the event that ends
// interval k) is drawn from the branch's row of the transition matrices
// P_c, sum over c and j of P_c[b][j] = 1. As a MAP of order N = sum r_b the
// branches are chains of r_b phases; the last phase of branch i ends the
// interval and enters the first phase of branch j with rate lambda_i P_c[i][j].
// This structure (Horvath and Okamura, "A fast EM algorithm for fitting
// marked Markovian arrival processes with a new special structure", EPEW
// 2013) keeps both EM steps in closed form:
//
//   E-step: a forward-backward pass over the intervals, scaled at every
//   step, with the branch densities taken in log space and their largest
//   term factored out, so that neither tiny nor huge densities over- or
//   underflow; O(n B^2) per pass without allocation.
//   M-step: alpha = posterior of the first branch; P_c[i][j] = expected
//   transitions i -> j with class c over those leaving i; lambda_i = r_i
//   times the expected visits to i over the expected time spent in it.
//
// For a total order N the branch structures are the partitions of N: each
// gets a short run from a deterministic start, the best one further starts
// (other orders of its branches over the data's quantiles, jittered rates),
// and the best of those runs on until the log-likelihood gains less than the
// tolerance times its magnitude, or the iteration cap is met. On a long trace
// this search runs on a leading part and the result goes on over the whole.
//
// The joint log-likelihood reported is that of the model as a stationary
// process: the first branch is drawn from the stationary vector of the
// branch chain, which is what MAP::computeLikelihood takes too.
#ifndef VELMORA_FITTING_MAPEM_H
#define VELMORA_FITTING_MAPEM_H

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "markov/maps.h"
#include "markov/mep_structs.h"

namespace velmora {

class MCTrace;

namespace mapem {

// Orders accepted for a fit.
const unsigned kMaxOrder = 64;

struct Options {
    double tolerance = 1e-9;        // relative gain that ends the final run
    unsigned maxIterations = 2000;  // cap of the final run (iterations in all)
    unsigned probeIterations = 10;  // short run of each structure and start
    unsigned starts = 4;            // starts of the best structure, its first included
    // A longer trace is searched (short runs, starts, the run of the best
    // to convergence) on its first searchValues values; the best then goes
    // on over all values.
    std::size_t searchValues = 20000;
    // A run on n values stops after valueIterations / n iterations at the
    // latest, when that is below maxIterations (a long trace then ends
    // unconverged and says so); never before probeIterations.
    double valueIterations = 5e7;
    // Squared extrapolation between EM steps (SQUAREM); plain EM without.
    bool accelerate = true;
    // Above this many partitions of the order, only the balanced structures
    // (B branches of orders differing by at most one, B = 1 .. 8) are tried.
    std::size_t maxStructures = 64;
};

// A MAP whose events carry classes: D1 is the sum of the class matrices,
// so that it loads and generates as a plain MAP, and its XML text adds a
// `marks` element with each class's name and matrix:
//   <marks><class><name>read</name><d>...</d></class>...</marks>
class MarkedMAP : public MAP {
public:
    MarkedMAP(Matrix D0, std::vector<Matrix> classMatrices, std::vector<std::string> classNames);
    std::string toString(format f) override;
    const std::vector<Matrix>& getClassMatrices() const { return classMatrices; }
    const std::vector<std::string>& getClassNames() const { return classNames; }

private:
    std::vector<Matrix> classMatrices;
    std::vector<std::string> classNames;
};

// An Erlang-branch (marked) MAP and how the fit went.
struct Result {
    std::unique_ptr<MAP> map;              // D0 and D1 = sum of the class matrices (a MarkedMAP when marked)
    std::vector<Matrix> matrices;          // D0, D1 (a MAP) or D0, D_1, .., D_C (marked)
    std::vector<std::string> classes;      // class names in the order of D_1 .. D_C; empty for a MAP
    std::vector<unsigned> structure;       // Erlang order per branch
    std::vector<double> rates;             // Erlang rate per branch
    std::vector<std::vector<double>> transitions;  // per class, B x B row-major
    double logLikelihood = 0;              // joint, stationary start
    unsigned parameters = 0;               // B rates and B (B C - 1) transition probabilities
    std::size_t n = 0;
    double aic = 0;                        // 2k - 2 logL
    double bic = 0;                        // k ln n - 2 logL
    unsigned iterations = 0;               // of the kept start, short run included
    bool converged = false;
    unsigned structures = 0;               // structures tried
    Result();
    Result(const Result& other);  // the MAP copied, without a stream
    Result& operator=(const Result& other);
    Result(Result&&) noexcept;
    Result& operator=(Result&&) noexcept;
    ~Result();
    // The MMAP record D0, D_1, .., D_C (for a MAP: D0, D1).
    MMAP asMMAP() const;
};

// The best Erlang-branch MAP of total order `order` (1 .. 64). Throws from
// "mapem" for an order out of range, fewer values than parameters of the
// smallest structure, and non-positive or non-finite values (naming the first).
Result fit_map(const std::vector<double>& data, unsigned order, const Options& options = Options());
// The same for one given structure (Erlang orders per branch).
Result fit_map_structure(const std::vector<double>& data, const std::vector<unsigned>& structure,
                         const Options& options = Options());
// The best MAP of order 1 .. maxOrder by AIC; `candidates`, when not null,
// receives the best fit of every order.
Result fit_map_by_aic(const std::vector<double>& data, unsigned maxOrder, const Options& options = Options(),
                      std::vector<Result>* candidates = nullptr);

// The values of a multi-class trace, their class indices and the class
// names in ascending order, from which the index counts.
struct MarkedValues {
    std::vector<double> values;
    std::vector<unsigned> classOf;
    std::vector<std::string> names;
};
// Throws from "mapem" for a trace of fewer than two classes.
MarkedValues marked_values(MCTrace& trace);
// The same from a multi-class trace file ("class value" per line after a
// first line that is skipped); a file that can't be opened throws.
MarkedValues read_marked_values(const std::string& file);
Result fit_mmap(const MarkedValues& marked, unsigned order, const Options& options = Options());
Result fit_mmap_by_aic(const MarkedValues& marked, unsigned maxOrder, const Options& options = Options(),
                       std::vector<Result>* candidates = nullptr);

// A marked MAP from a multi-class trace; value k ends with an event of its
// element's class. Classes are numbered in the ascending order of their
// names. Besides the checks of fit_map it refuses a trace of one class.
Result fit_mmap(MCTrace& trace, unsigned order, const Options& options = Options());
// The best marked MAP of order 1 .. maxOrder by AIC.
Result fit_mmap_by_aic(MCTrace& trace, unsigned maxOrder, const Options& options = Options(),
                       std::vector<Result>* candidates = nullptr);
// The same from values and class indices 0 .. classes - 1.
Result fit_mmap(const std::vector<double>& data, const std::vector<unsigned>& classOf, unsigned classes,
                unsigned order, const Options& options = Options());

// Joint log-likelihood of the Erlang-branch model (first branch from the
// stationary vector) on values with classes (empty classOf: all class 0).
double log_likelihood(const Result& fit, const std::vector<double>& data, const std::vector<unsigned>& classOf);

// The share of each class among the events of the stationary process.
std::vector<double> class_frequencies(const Result& fit);

// An Erlang-branch model from its parameters (no fit figures): branch
// orders, rates, and per class a B x B row-major transition matrix, the rows
// summed over the classes being 1. Throws for parameters that are not a model.
Result model(const std::vector<unsigned>& structure, const std::vector<double>& rates,
             const std::vector<std::vector<double>>& transitions);
// n intervals of such a model as a stationary process and the classes of
// the events that end them, from a generator seeded with `seed`.
std::pair<std::vector<double>, std::vector<unsigned>> simulate(const Result& model, std::size_t n,
                                                               unsigned long seed);

// All partitions of n into parts in non-increasing order, the largest first
// part first: 1, 1, 2, 3, 5, 7, 11, ... of them for n = 0, 1, 2, ...
std::vector<std::vector<unsigned>> partitions(unsigned n);

}  // namespace mapem
}  // namespace velmora

#endif
