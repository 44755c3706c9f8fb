// Uniformization of an absorbing or arrival structure: with P = I + D0/lambda,
// v exp(D0 t) = sum over k of Poisson(lambda t; k) v P^k, the sum truncated
// where the Poisson weights stop counting.
#ifndef VELMORA_MARKOV_CPH_RANDOMIZATION_H
#define VELMORA_MARKOV_CPH_RANDOMIZATION_H

namespace velmora {

class Matrix;

// Truncation points of the Poisson sum for the mean q: left and right limits,
// the weight at the left limit and the sum of all weights counted, relative to
// the weight 1 at the mode trunc(q). The right tail below eps times the sum is
// trimmed. q must be finite, not negative and below 1e9
// ("Invalid mean for uniformization.").
void map_ph_randomization_params(double q, double eps, double* weightSum, double* leftWeight, int* left,
                                 int* right);

// result = v exp(lambda t (P - I)) for the row matrix v; `scratch` is a work
// matrix. Afterwards v holds result, renormalised to sum 1 when its sum
// differs from 1 by more than 0.001; result itself is never rescaled.
// `result` and `scratch` take the shape of v if they don't have it yet.
void map_ph_randomization(Matrix* P, Matrix* v, Matrix* scratch, Matrix* result, double lambda, double t,
                          double eps);

}  // namespace velmora

#endif
