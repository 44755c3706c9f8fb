// Rewritings of an acyclic phase-type distribution into an equivalent one
// with one more phase and more paths, which widen the range of
// autocorrelations a capp on it can reach. The step: the last phase of a
// series, of rate d, is the same distribution as a phase of rate 2d alone
// (probability 1/2) or a phase of rate d followed by one of rate 2d
// (probability 1/2). Every function returns a new CPH of the same
// distribution.
#ifndef VELMORA_MARKOV_CAPP_TRANSFORM_H
#define VELMORA_MARKOV_CAPP_TRANSFORM_H

#include "markov/cph.h"

namespace velmora {

class Erlang;
class Exponential;
class HyperErlang;

namespace capptrans {

CPH transform(Exponential e);
CPH transform(Erlang e);
// One branch: as its Erlang; more: the series canonical form, same order.
CPH transform(HyperErlang h);
// Exponential and Erlang chains go to transform_erlang, a chain in series
// canonical form gets one more phase, any other acyclic chain is brought
// into that form first (same order). A cyclic chain throws.
CPH transform(CPH c);
// The Erlang(k, lambda) as a chain of k + 1 phases, the last with rate
// 2 lambda, entered at phase 0 or 1 with probability 1/2 each.
CPH transform_erlang(unsigned k, double lambda);
// A chain in series canonical form of order n gets phase n of the doubled
// last rate; the flow into the old last phase splits evenly between it and
// the new one. Throws for a chain not in that form.
CPH transform_add_state(CPH c);

}  // namespace capptrans

}  // namespace velmora

#endif
