// Small routines shared by the samplers of several layers.
#ifndef VELMORA_NUMERICS_MISC_UTIL_H
#define VELMORA_NUMERICS_MISC_UTIL_H

#include <cstddef>

namespace velmora {

// The discrete choice of every sampler that picks by one uniform draw u: the
// first index i for which start + p[0] + ... + p[i] >= u, the running sum
// formed in index order exactly as the samplers always formed it, or `count`
// when no running sum reaches u (callers decide what rounding that leaves
// below u stands for). Allocates nothing.
// The entries come from entry(i), so that a list held in any form is read in
// place.
template <typename Entry>
std::size_t first_index_reaching(Entry entry, std::size_t count, double u, double start = 0.0) {
    double sum = start;
    for (std::size_t i = 0; i < count; ++i) {
        sum += entry(i);
        if (sum >= u) return i;
    }
    return count;
}

inline std::size_t first_index_reaching(const double* p, std::size_t count, double u, double start = 0.0) {
    return first_index_reaching([p](std::size_t i) { return p[i]; }, count, u, start);
}

}  // namespace velmora

#endif
