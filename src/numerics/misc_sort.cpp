// Heap sort, ascending: a max-heap is built in place, then its top is moved
// behind the shrinking heap one element at a time.
#include "numerics/misc_sort.h"

#include <utility>

#include "core/libvelmora_settings.h"

namespace velmora {

std::vector<double> heapSort(std::vector<double> values) {
    heapSort_heapify(&values);
    for (int i = static_cast<int>(values.size()) - 1; i >= 1; i--) {
        std::swap(values[0], values[i]);
        heapSort_siftDown(&values, 0, i);
    }
    return values;
}

void heapSort_heapify(std::vector<double>* values) {
    const int size = static_cast<int>(values->size());
    for (int i = size / 2 - 1; i >= 0; i--) heapSort_siftDown(values, i, size);
}

void heapSort_siftDown(std::vector<double>* values, int start, int size) {
    // A heap range outside the list would read past its end.
    if (start < 0 || size < 0 || static_cast<std::size_t>(size) > values->size())
        throw Exception("misc_sort", __LINE__, "Invalid heap range.");
    std::vector<double>& v = *values;
    while (start <= size / 2 - 1) {
        int child = 2 * start + 1;
        // The right child only if it is strictly greater than the left one.
        if (child + 1 < size && v[child + 1] > v[child]) child++;
        if (!(v[child] > v[start])) break;
        std::swap(v[start], v[child]);
        start = child;
    }
}

}  // namespace velmora
