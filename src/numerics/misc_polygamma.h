// Digamma psi(x) = d/dx log Gamma(x) and trigamma psi'(x), for x > 0: the
// recurrences psi(x) = psi(x + 1) - 1/x and psi'(x) = psi'(x + 1) + 1/x^2
// carry x to 10 or above, where the asymptotic (Bernoulli) series with terms
// up to x^-12 (digamma) and x^-13 (trigamma) is accurate to about 2e-14
// relative. The maximum-likelihood equations of the gamma and beta families
// rest on them. x <= 0 and NaN give NaN.
#ifndef VELMORA_NUMERICS_MISC_POLYGAMMA_H
#define VELMORA_NUMERICS_MISC_POLYGAMMA_H

namespace velmora {

double digamma(double x);
double trigamma(double x);

}  // namespace velmora

#endif
