// The walks of the phase-type and arrival samplers: from a state with sojourn
// rate r, a walk draws v uniform on [0, 1] and takes the first jump whose
// running sum of probabilities (row entry / r, in ascending order) reaches v.
// From these rows of running sums follows which jumps can be taken with
// positive probability and, through them, from which states an end
// (absorption, an event) can be reached, so that a walk that could never
// end is refused instead of running for ever.
#ifndef VELMORA_NUMERICS_JUMP_CHAIN_H
#define VELMORA_NUMERICS_JUMP_CHAIN_H

#include <vector>

namespace velmora {

// The running sums of one row part as the walk forms them: *sum +=
// row[j] / rate for j = 0..n-1 in ascending order, `skip` left out (n skips
// nothing), each stored in sums[k] with j in targets[k]. *sum carries the
// running sum in and out, so that a second part can continue it. Returns the
// number of entries written.
unsigned write_jump_sums(const double* row, unsigned n, unsigned skip, double rate, double* sum, double* sums,
                         unsigned* targets);

// Entry k can be the first to reach a draw v of [0, 1] only where its sum
// rises above every earlier sum of the row and above 0 while these stay
// below 1; the running maximum keeps this right for rows of mixed signs, in
// which a falling sum or a row total below 1 shows nothing. Sets possible[k]
// to 1 for these entries and to 0 for the others, and returns whether all
// sums stay below 1, that is, whether a draw can pass the whole row.
bool mark_possible_jumps(const double* sums, unsigned count, unsigned char* possible);

// The states from which a marked state can be reached along the edges
// s -> next[s][i]: `marked` (one entry per state, nonzero for an end)
// extended by every state with a way to one.
std::vector<unsigned char> states_reaching(const std::vector<std::vector<unsigned>>& next,
                                           std::vector<unsigned char> marked);

}  // namespace velmora

#endif
