// Joint log-likelihoods of a trace under the model classes that have one,
// so that fits of different classes compare on one scale:
//   - a renewal model, independent values of a marginal: the sum of the
//     marginal's exact log-densities (those distfit assesses with);
//   - an ARTA, and a type-2 CHEP taken as one, as a Gaussian copula on the
//     ARMA base: with z_t = Phi^-1(F(x_t)) the normal scores,
//       log L = sum_t log f(x_t) + log phi_Sigma(z) - sum_t log phi(z_t),
//     phi_Sigma the joint normal density of the base process (process
//     variance 1), evaluated by the innovations algorithm in O(n (p + q^2));
//   - a MAP: MAP::computeLikelihood (and mapem's closed form for its fits).
// For a CHEP of type 2 with several branches the copula form is an
// approximation: the branch drawn for each value is not seen in the data.
#ifndef VELMORA_FITTING_LIKELIHOOD_H
#define VELMORA_FITTING_LIKELIHOOD_H

#include <vector>

namespace velmora {

class ARIMA;
class ARTA;
class Dist;
class chep;

namespace likelihood {

// Sum of the exact log-densities of the marginal at the values.
double renewal(Dist* marginal, const std::vector<double>& data);

// Log-density of z under the stationary Gaussian ARMA `base` (its mean,
// coefficients and white-noise variance), by the innovations algorithm of
// the ARMA's transformed series (Brockwell and Davis, Time Series: Theory
// and Methods, 5.3). Throws for d != 0 and for a non-stationary AR part.
double gaussian_arma(const ARIMA& base, const std::vector<double>& z);

// The normal scores Phi^-1(F(x)) of the values under the marginal's exact
// distribution function, clamped to +-8.3 (F of 0 or 1 in double precision).
std::vector<double> normal_scores(Dist* marginal, const std::vector<double>& data);

// Gaussian copula with the marginal and the base process.
double copula(Dist* marginal, const ARIMA& base, const std::vector<double>& data);
double arta(ARTA& model, const std::vector<double>& data);
// Type 2 only (type 1 throws): the copula of the hyper-Erlang marginal.
double chep_type2(chep& model, const std::vector<double>& data);

// The Gaussian log-density of an ARMA(p, q) with unit process variance
// from the scores, for the fitter: the white-noise variance set so that
// gamma(0) = 1. Gives -infinity for a non-stationary AR part.
double unit_variance_arma(const std::vector<double>& ar, const std::vector<double>& ma, const std::vector<double>& z);

}  // namespace likelihood
}  // namespace velmora

#endif
