// Possible jumps and reachable ends of the samplers' walks.
#include "numerics/jump_chain.h"

namespace velmora {

unsigned write_jump_sums(const double* row, unsigned n, unsigned skip, double rate, double* sum, double* sums,
                         unsigned* targets) {
    double a = *sum;
    unsigned k = 0;
    for (unsigned j = 0; j < n; j++) {
        if (j == skip) continue;
        a += row[j] / rate;
        sums[k] = a;
        targets[k++] = j;
    }
    *sum = a;
    return k;
}

bool mark_possible_jumps(const double* sums, unsigned count, unsigned char* possible) {
    double highest = 0;  // the largest sum so far, at least 0
    for (unsigned k = 0; k < count; k++) {
        possible[k] = sums[k] > highest && highest < 1;
        if (possible[k]) highest = sums[k];
    }
    return highest < 1;
}

std::vector<unsigned char> states_reaching(const std::vector<std::vector<unsigned>>& next,
                                           std::vector<unsigned char> marked) {
    const std::size_t n = next.size();
    std::vector<std::vector<unsigned>> previous(n);
    for (unsigned s = 0; s < n; s++)
        for (unsigned t : next[s]) previous[t].push_back(s);
    std::vector<unsigned> pending;
    for (unsigned s = 0; s < n; s++)
        if (marked[s]) pending.push_back(s);
    while (!pending.empty()) {
        const unsigned t = pending.back();
        pending.pop_back();
        for (unsigned s : previous[t])
            if (!marked[s]) {
                marked[s] = 1;
                pending.push_back(s);
            }
    }
    return marked;
}

}  // namespace velmora
