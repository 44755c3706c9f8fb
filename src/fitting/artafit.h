// Fitting of ARTA processes to a known marginal and to autocorrelations,
// given as a list or measured on a trace, in two stages: each target is
// mapped back through the ARTA correlation mapping of the marginal by a
// golden section search, giving the autocorrelations the normal base process
// must have; then an ARMA model of every requested order is fitted to those,
// and the stationary one with the smallest relative error wins.
#ifndef VELMORA_FITTING_ARTAFIT_H
#define VELMORA_FITTING_ARTAFIT_H

#include <map>
#include <vector>

namespace velmora {

class ARTA;
class Dist;
class Trace;

class ARTAFit {
public:
    struct OrderRange {
        unsigned min;
        unsigned max;
        unsigned current;  // the last order tried
    };

    // The trace forms take lags 1..lags from t; the list forms take ac, lag 1
    // first. d stays the caller's until a fit returns: then the model owns it.
    // A missing trace or a range with min > max throws.
    ARTAFit(Trace* t, Dist* d, unsigned lags, unsigned p, unsigned q);
    ARTAFit(std::vector<double> ac, Dist* d, unsigned p, unsigned q);
    ARTAFit(Trace* t, Dist* d, unsigned lags, unsigned pMin, unsigned pMax, unsigned qMin, unsigned qMax);
    ARTAFit(std::vector<double> ac, Dist* d, unsigned pMin, unsigned pMax, unsigned qMin, unsigned qMax);

    // The best stationary model over all orders, owned by the caller and
    // holding the marginal; the other candidates are deleted without it. A
    // second fit hands the same marginal to a second model, so only one of
    // the two may then be deleted with it. Throws for no marginal, no
    // targets, more lags than the trace can estimate, targets outside
    // (-1, 1), and "No stationary ARMA model has been found." when no
    // candidate is stationary; after a failure the marginal stays the
    // caller's.
    ARTA* fit_arta_model();

    // Base autocorrelations for the targets ac, one golden section search
    // in (0, 1) or (-1, 0) per non-zero target; a zero target maps to 0. The
    // marginal's transformed values are computed once for all searches.
    std::vector<double> arta_find_arma_autocorrelation(std::vector<double> ac);

    // The objective on the recorded search: the squared distance of the
    // mapped rho from the recorded target. The searches of a fit carry their
    // own problem, with a cache that maps each rho once, and do not call it.
    static double eval_autocorrelation(double rho);

    // ARTA autocorrelations of this marginal for the base autocorrelations rho.
    std::vector<double> arta_compute_autocorrelation_from_arma(std::vector<double> rho);

    // The first of the stationary models with the smallest error of its base
    // autocorrelations at lags 1..lags against the target of the last ARMA
    // fit; null if none is stationary. The models stay the caller's.
    ARTA* select_best_arta_model(std::vector<ARTA*> models);

    Trace* trace;  // not owned; null for the list forms
    Dist* dist;    // handed on to the candidates
    unsigned lags;
    std::vector<double> ac;  // empty for the trace forms
    OrderRange pRange;
    OrderRange qRange;
};

// The problem of the last search on this thread (its last target and its
// marginal), read by eval_autocorrelation: a record, one per thread. The
// cache stays empty; each search keeps its own.
extern thread_local double artafit_compute_ac_main_ac;
extern thread_local std::map<double, double> artafit_autocorrelation_cache;
extern thread_local Dist* artafit_compute_ac_dist;

}  // namespace velmora

#endif
