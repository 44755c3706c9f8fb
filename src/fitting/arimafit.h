// Fitting of ARMA(p, q) models to autocorrelations alone: a Nelder-Mead
// search over the p AR and q MA coefficients minimises the squared relative
// errors of the model's autocorrelations at lags 1..L, plus a penalty on AR
// roots on or inside the unit circle whose weight grows tenfold with every
// evaluation that pays it. Mean, variance and marginal play no part.
#ifndef VELMORA_FITTING_ARIMAFIT_H
#define VELMORA_FITTING_ARIMAFIT_H

#include <utility>
#include <vector>

#include "numerics/function_ref.h"

namespace velmora {

class ARIMA;

namespace ARIMAFit {

// The problem of the last fit on this thread, with the penalty weight it
// ended with: a record that fit_arma_model fills when it returns, one per
// thread. The fit itself carries its problem in its objective; only
// arma_sum_of_squares reads the record.
extern thread_local std::vector<double> libvelmora_arimafit_desired_ac;  // lag 1 first
extern thread_local std::pair<unsigned, unsigned> libvelmora_arimafit_arma_dim;  // (p, q)
extern thread_local double libvelmora_arimafit_arma_penalty;

// The best ARMA(p, q) for the target autocorrelations ac (lag 1 first), with
// white-noise variance 1, owned by the caller. It need not be stationary:
// callers check. The list must not be empty and every target must lie in
// (-1, 1), or it throws.
ARIMA* fit_arma_model(std::vector<double> ac, unsigned p, unsigned q);

// Throws for an empty list or a target outside (-1, 1).
void check_autocorrelation_targets(const std::vector<double>& ac);

// The base autocorrelations that a correlated model maps onto the targets
// ac: for each non-zero target, *target is set to it and a golden section
// search (tolerance 1e-10) in (0, 1), or (-1, 0) for a negative target,
// minimises objective, the squared distance of the mapped base
// autocorrelation from *target. A zero target maps to 0 without a search.
std::vector<double> invert_autocorrelations(const std::vector<double>& ac, double* target,
                                            FunctionRef<double(double)> objective);

// A new ARIMA with the first p entries as AR and the next q as MA
// coefficients, mean 0, variance 1, method "unknown". Other than p + q
// entries throw.
ARIMA* construct_arma_model(std::vector<double> coefficients, unsigned p, unsigned q);

// The objective on the recorded problem: error of the autocorrelations
// against the recorded target, plus the stationarity penalty, which raises
// the recorded weight when it is paid. The root search can throw, and that ends the fit.
double arma_sum_of_squares(std::vector<double> coefficients);

// Sum over the lags of (rho(i)/target(i) - 1)^2, over as many lags as both
// lists have. A target of exactly 0 has no relative error; it contributes
// rho(i)^2, so a fit can still ask for no correlation at some lag.
double autocorrelation_error(const std::vector<double>& rho, const std::vector<double>& target);

}  // namespace ARIMAFit

}  // namespace velmora

#endif
