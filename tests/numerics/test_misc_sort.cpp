// Heap sort: ascending order, duplicates, and the guarded steps.
#include <random>

#include "numerics/misc_sort.h"
#include "support/test_support.h"

using namespace velmora;
using velmora_test::failureOf;

TEST(HeapSort, SortsAscending) {
    std::vector<std::vector<double>> cases = {{}, {5}, {3, 1, 2, 2}, {5, 4, 3, 2, 1}, {-1, 7, -1, 0, 7, 7, -3.5}};
    std::mt19937 gen(3);
    std::vector<double> random(101);
    for (double& v : random) v = static_cast<double>(gen() % 20);
    cases.push_back(random);
    for (const std::vector<double>& c : cases) {
        std::vector<double> expected = c;
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(heapSort(c), expected);
    }
}

TEST(HeapSort, StepsBuildTheHeapAndRefuseRangesOutsideTheList) {
    std::vector<double> v = {1, 5, 2, 8, 3};
    heapSort_heapify(&v);
    EXPECT_EQ(v, (std::vector<double>{8, 5, 2, 1, 3}));
    // The right child is taken only when strictly greater than the left.
    std::vector<double> w = {0, 4, 4};
    heapSort_siftDown(&w, 0, 3);
    EXPECT_EQ(w, (std::vector<double>{4, 0, 4}));
    for (auto range : {std::make_pair(-1, 2), std::make_pair(0, 4), std::make_pair(0, -1)})
        EXPECT_EQ(failureOf([&] { heapSort_siftDown(&w, range.first, range.second); }),
                  "misc_sort: Invalid heap range.") << range.first << " " << range.second;
}
