// Heap sort of a list of doubles, ascending, with its two steps exposed.
#ifndef VELMORA_NUMERICS_MISC_SORT_H
#define VELMORA_NUMERICS_MISC_SORT_H

#include <vector>

namespace velmora {

std::vector<double> heapSort(std::vector<double> values);

// Builds a max-heap in place.
void heapSort_heapify(std::vector<double>* values);

// Moves values[start] down the max-heap formed by the first `size` entries.
void heapSort_siftDown(std::vector<double>* values, int start, int size);

}  // namespace velmora

#endif
