// The ARMA base process of an ARTA (or a type-2 CHEP) fitted by maximum
// likelihood to the normal scores of the data: the exact Gaussian
// log-likelihood of the scores (innovations algorithm) under an ARMA(p, q)
// with process variance 1, maximised by Nelder-Mead over the partial
// autocorrelations of the AR and of the MA polynomial, each the tanh of a
// free variable (Jones 1980; Monahan 1984). Every point of the search is
// thus stationary and invertible, and so is the result. The order is
// chosen by AIC over a range of p and q.
#ifndef VELMORA_FITTING_ARMAML_H
#define VELMORA_FITTING_ARMAML_H

#include <memory>
#include <vector>

namespace velmora {

class ARIMA;

namespace armaml {

struct Fit {
    std::unique_ptr<ARIMA> model;  // mean 0, process variance 1
    unsigned p = 0, q = 0;
    double logLikelihood = 0;      // of the scores
    double aic = 0;                // 2 (p + q) - 2 logL
    bool fitted = false;
    Fit();
    Fit(Fit&&) noexcept;
    Fit& operator=(Fit&&) noexcept;
    ~Fit();
};

// ARMA(p, q) by maximum likelihood on the scores z (p, q at most 20; at
// least p + q + 1 scores, all finite).
Fit fit(const std::vector<double>& z, unsigned p, unsigned q);

// The fit of lowest AIC over p = pMin .. pMax and q = qMin .. qMax;
// `table`, when not null, receives every order's fit (without its model).
Fit fit_by_aic(const std::vector<double>& z, unsigned pMin, unsigned pMax, unsigned qMin, unsigned qMax,
               std::vector<Fit>* table = nullptr);

// Coefficients c_1 .. c_k of a polynomial 1 - c_1 z - ... - c_k z^k with
// every root outside the unit circle, from partial autocorrelations in
// (-1, 1) by the Durbin-Levinson recursion.
std::vector<double> from_partial_autocorrelations(const std::vector<double>& r);

}  // namespace armaml
}  // namespace velmora

#endif
