// Exact forms shared by several families: Erlang mixtures (exponential,
// Erlang, hyper-exponential and hyper-Erlang are one or more Erlang branches)
// in log space, the gamma distribution function and its quantile, and raw
// moments from central ones.
#ifndef VELMORA_DISTRIBUTIONS_DIST_EXACT_H
#define VELMORA_DISTRIBUTIONS_DIST_EXACT_H

#include <vector>

#include "distributions/dist.h"

namespace velmora {
namespace exact {

// log sum_i p_i r_i^k_i x^(k_i - 1) exp(-r_i x) / (k_i - 1)!, with the
// largest term factored out so that no branch underflows.
double erlang_mixture_logpdf(double x, const std::vector<unsigned>& k, const std::vector<double>& r,
                             const std::vector<double>& p);
// sum_i p_i P(k_i, r_i x) and its complement sum_i p_i Q(k_i, r_i x).
double erlang_mixture_cdf(double x, const std::vector<unsigned>& k, const std::vector<double>& r,
                          const std::vector<double>& p);
double erlang_mixture_ccdf(double x, const std::vector<unsigned>& k, const std::vector<double>& r,
                           const std::vector<double>& p);
// Mean, variance, cv and the raw moments sum_i p_i k_i (k_i + 1) ... / r_i^j
// in doubles (no factorial).
DistStats erlang_mixture_stats(const std::vector<unsigned>& k, const std::vector<double>& r,
                               const std::vector<double>& p, unsigned n);

// The gamma law of shape a and scale b: log-density, distribution function
// and quantile (Newton on the distribution function from the chi-squared
// start, falling back to bisection), and its statistics.
double gamma_logpdf(double x, double a, double b);
double gamma_cdf(double x, double a, double b);
double gamma_ccdf(double x, double a, double b);
double gamma_quantile(double p, double a, double b);
DistStats gamma_stats(double a, double b, unsigned n);

// E^-1(Phi(z)) of an Erlang law, Phi by Algorithm AS 66 and kept below 1:
// the exact transform of a standard normal value to an Erlang branch.
double erlang_normal_transform(double z, unsigned phases, double rate);

// Raw moments of orders 1..3 from mean, variance and skewness.
std::vector<double> raw_from_central(double mean, double variance, double skewness);

}  // namespace exact
}  // namespace velmora

#endif
