// From a measured trace to a correlated model in three steps, the road that
// sylvar-fit walks and that a library user can walk stage by stage: a
// marginal distribution (read from a model file, fitted for a named family,
// or the family of lowest AIC among the usual ones), then a correlated model
// on it (the class chosen by the marginal's family, or forced), then the
// autocorrelations of the model against those of the trace.
#ifndef VELMORA_FITTING_TRACEFIT_H
#define VELMORA_FITTING_TRACEFIT_H

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "fitting/distfit.h"

namespace velmora {

class CPH;
class Dist;
class Process;
class Trace;

namespace modelchoice {
struct Candidate;
}

// The correlated model classes. In tracefit_correlation, TRACEFIT_AUTO lets
// the marginal's family choose between ARTA, CAPP and CHEP, and ARTA and MAP
// are fitted to autocorrelations (as are ARTA_ACF and MAP_ACF). In tracefit,
// AUTO, ARTA and MAP are fitted by likelihood instead: AUTO compares the
// renewal model, ARTA and MAP by joint BIC, ARTA fits its ARMA base to the
// normal scores by likelihood, MAP is the Erlang-branch MAP by EM; MMAP is
// the marked MAP by EM from the classes of the request.
enum tracefit_model {
    TRACEFIT_AUTO,
    TRACEFIT_ARTA,
    TRACEFIT_CAPP,
    TRACEFIT_CHEP,
    TRACEFIT_MAP,
    TRACEFIT_ARTA_ACF,
    TRACEFIT_MAP_ACF,
    TRACEFIT_MMAP
};

// "auto", "arta", "capp", "chep", "map", "arta-acf", "map-acf", "mmap"; any
// other name throws.
tracefit_model tracefit_model_from_name(const std::string& name);
std::string tracefit_model_name(tracefit_model m);

// The families the default choice compares: normal, exponential, gamma,
// lognormal, Weibull and the hyper-Erlang of 1 to `phases` phases.
const std::vector<std::string>& tracefit_default_families();

// A marginal: a distribution family, or a phase-type distribution read from
// a `ph` model file; exactly one of the two is set. `source` says where it
// came from ("AIC choice", "fitted", "file"), `candidates` lists what the
// AIC choice compared (empty otherwise), and `assessment` says how well it
// describes the trace's values.
struct TraceFitMarginal {
    std::unique_ptr<Dist> dist;
    std::unique_ptr<CPH> ph;
    std::string source;
    std::vector<distfit::Candidate> candidates;
    distfit::Assessment assessment;
    TraceFitMarginal();
    TraceFitMarginal(TraceFitMarginal&&) noexcept;
    TraceFitMarginal& operator=(TraceFitMarginal&&) noexcept;
    ~TraceFitMarginal();
    // The family's type name, or "ph" for a phase-type file.
    std::string name() const;
    // The parameters in the key-value text form (a phase-type marginal: its
    // order, T and tau).
    std::string parameterText() const;
};

// The marginal from `request`: empty for the AIC choice among the default
// families, a family's type name for that family (a hyper-Erlang: the best
// of 1 to `phases` phases by AIC), or the name of an XML model file that
// holds a `dist` or a `ph` model; a name ending in ".xml" is always taken
// for a file. Throws with a clear message for an unknown family, a file
// that can't be read or holds neither model, and data a family refuses.
TraceFitMarginal tracefit_marginal(const std::vector<double>& data, const std::string& request, unsigned phases);

// The assessment of a phase-type distribution, by uniformization over the
// sorted values: log-likelihood, AIC and BIC with one parameter per non-zero
// entry of T and of tau less one, Kolmogorov-Smirnov distance and moments.
distfit::Assessment tracefit_assess_ph(const CPH& ph, const std::vector<double>& data);

// The correlated model fitted to the trace's autocorrelations at lags
// 1..lags with ARMA base processes of the orders pMin..pMax and qMin..qMax.
// The classes need: ARTA a family (or a phase-type of order 1), CHEP a
// hyper-Erlang (or an exponential, Erlang or hyper-exponential, taken as
// one), CAPP and MAP a phase-type form (those four families, a
// hypo-exponential, or a ph file); otherwise it throws, naming the class and
// the marginal. On success the marginal belongs to the model (or was
// replaced by an equivalent one) and `m` holds none; on failure `m` keeps it.
struct TraceFitOrders {
    unsigned lags = 10;
    unsigned pMin = 1;
    unsigned pMax = 3;
    unsigned qMin = 0;
    unsigned qMax = 1;
};
std::unique_ptr<Process> tracefit_correlation(TraceFitMarginal& m, tracefit_model model, Trace* t,
                                              const TraceFitOrders& orders);

// What a fitted model is ("ARTA", "CAPP", "CHEP type 1", "MAP of order 6",
// ...), and the orders of its ARMA base process when it has one (p and q
// are then set and the result is true).
std::string tracefit_model_class(Process* model);
bool tracefit_base_orders(Process* model, unsigned* p, unsigned* q);

// What the whole fit is asked for: the marginal request of
// tracefit_marginal, its largest hyper-Erlang phase count, the model class
// and the orders.
struct TraceFitRequest {
    std::string marginal;
    unsigned phases = 6;
    tracefit_model model = TRACEFIT_AUTO;
    TraceFitOrders orders;
    // The order of a MAP fitted by EM; 0: the order of lowest AIC up to `phases`.
    unsigned mapOrder = 0;
    // For TRACEFIT_MMAP: the class of each value and the class names.
    std::vector<unsigned> classOf;
    std::vector<std::string> classNames;
};

// The result of a whole fit. It owns the model; the marginal is described
// as it was chosen (its distribution now lives inside the model).
struct TraceFitResult {
    std::unique_ptr<Process> model;
    std::size_t values = 0;            // the trace's length
    std::string marginalName;          // TraceFitMarginal::name()
    std::string marginalSource;        // "AIC choice", "fitted" or "file"
    std::string marginalParameters;    // TraceFitMarginal::parameterText()
    distfit::Assessment assessment;
    std::vector<distfit::Candidate> candidates;
    std::string modelClass;            // tracefit_model_class
    bool hasOrders = false;            // an ARMA base process of orders p, q
    unsigned p = 0;
    unsigned q = 0;
    std::vector<double> targets;       // the trace's autocorrelations, lag 1 first
    std::vector<double> fitted;        // the model's at the same lags
    // The joint log-likelihood of the trace under the model; NaN while the
    // model class has none.
    double jointLogLikelihood;
    // The models compared by joint likelihood (the candidate classes, or a
    // class's orders), the one chosen, and the criterion ("BIC", "AIC").
    std::vector<modelchoice::Candidate> likelihoodCandidates;
    std::size_t likelihoodChosen = 0;
    std::string likelihoodCriterion;
    TraceFitResult();
    TraceFitResult(TraceFitResult&&) noexcept;
    TraceFitResult& operator=(TraceFitResult&&) noexcept;
    ~TraceFitResult();
};

// The marginal, then the correlated model, then the autocorrelations of
// both. `stage`, when set, is called with "marginal" and "correlation" as
// each begins, so that a caller can time them or say what failed.
TraceFitResult tracefit(Trace& trace, const TraceFitRequest& request,
                        const std::function<void(const std::string&)>& stage = {});

// The text of a model file holding the model alone (one model element) with
// every number in full precision, so that the file reads back to the model.
std::string tracefit_model_file_text(Process& model);

// Reads the model file with the model readers and compares its moments 1-3
// and autocorrelations at lags 1-10 with those of `model` (relative 1e-9);
// throws, naming the first that differs, when they don't agree.
void tracefit_check_model_file(Process& model, const std::string& file);

}  // namespace velmora

#endif
