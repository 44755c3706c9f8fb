// Fitting of capp and type-1 chep processes to a known acyclic phase-type
// or hyper-Erlang marginal and to autocorrelations, given as a list (lag 1
// first) or measured on a trace. The reachable range of autocorrelations is
// computed first and widened, where the targets lie outside it, by
// rewriting the marginal into equivalent chains with more paths; then each
// target is mapped back through the capp correlation mapping by a golden
// section search, and the stationary ARMA base process of the requested
// orders with the smallest relative error wins. Progress goes to the
// library's message sink.
#ifndef VELMORA_FITTING_CAPPFIT_H
#define VELMORA_FITTING_CAPPFIT_H

#include <map>
#include <vector>

#include "markov/cph.h"

namespace velmora {

class ARIMA;
class capp;
class HyperErlang;
class Trace;

namespace cappfit {

// Ownership: on success the marginal belongs to the result (fit_chep gives
// up a hyper-Erlang that a capp replaced). On failure it stays the
// caller's; fit_capp may have rewritten it in place by then. Empty target
// lists, targets outside (-1, 1) and a missing trace throw.
capp* fit_chep(HyperErlang* h, Trace* t, unsigned lags, unsigned p, unsigned q);
capp* fit_chep(HyperErlang* h, Trace* t, unsigned lags, unsigned pMin, unsigned pMax, unsigned qMin, unsigned qMax);
capp* fit_chep(HyperErlang* h, std::vector<double> ac, unsigned p, unsigned q);
// A type-1 chep, or a capp on the series canonical form when the targets
// lie beyond what the branches can reach.
capp* fit_chep(HyperErlang* h, std::vector<double> ac, unsigned pMin, unsigned pMax, unsigned qMin, unsigned qMax);

capp* fit_capp(CPH* c, Trace* t, unsigned lags, unsigned p, unsigned q);
capp* fit_capp(CPH* c, Trace* t, unsigned lags, unsigned pMin, unsigned pMax, unsigned qMin, unsigned qMax);
capp* fit_capp(CPH* c, std::vector<double> ac, unsigned p, unsigned q);
// Up to ten passes of two transformations each widen the range; a target
// still out of reach throws "AC not possible.".
capp* fit_capp(CPH* c, std::vector<double> ac, unsigned pMin, unsigned pMax, unsigned qMin, unsigned qMax);

// The best stationary ARMA base process over the orders, owned by the
// caller; an order whose fit throws gives no candidate.
ARIMA* fit_baseprocess(double mean, double var, const cph_path_list& paths, std::vector<double> pathMeans,
                       std::vector<double> ac, unsigned pMin, unsigned pMax, unsigned qMin, unsigned qMax);

// The base autocorrelation for each target; a target of 0 maps to 0.
std::vector<double> compute_base_process_autocorrelation(double mean, double var, const cph_path_list& paths,
                                                         std::vector<double> pathMeans, std::vector<double> ac);

// The objective on the recorded search: the squared distance of the capp
// autocorrelation at base autocorrelation rho from the recorded target, each
// rho mapped once while the record holds. The search itself carries its
// problem and does not call it.
double eval_autocorrelation(double rho);

// The record of the search on this thread, read by eval_autocorrelation:
// one per thread. The paths are set and the cache is filled only while
// compute_base_process_autocorrelation runs; the target is that of its last
// search afterwards.
extern thread_local std::map<double, double> cappfit_autocorrelation_cache;
extern thread_local double compute_ac_acph_mean;
extern thread_local double compute_ac_acph_var;
extern thread_local const cph_path_list* compute_ac_hypo_exp_path;  // not owned
extern thread_local std::vector<double> compute_ac_hypo_exp_path_mean;
extern thread_local double compute_ac_main_ac;

}  // namespace cappfit

}  // namespace velmora

#endif
