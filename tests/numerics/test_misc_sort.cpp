// Heap sort: ascending order, duplicates, and the guarded steps.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "core/libvelmora_settings.h"
#include "numerics/misc_sort.h"

using namespace velmora;

TEST(HeapSort, SortsAscending) {
    std::vector<std::vector<double>> cases = {
        {}, {5}, {3, 1, 2, 2}, {1, 2, 3, 4, 5}, {5, 4, 3, 2, 1}, {-1, 7, -1, 0, 7, 7, -3.5},
    };
    std::mt19937 gen(3);
    std::vector<double> random(101);
    for (double& v : random) v = static_cast<double>(gen() % 20);
    cases.push_back(random);
    for (const std::vector<double>& c : cases) {
        std::vector<double> expected = c;
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(heapSort(c), expected);
    }
    EXPECT_EQ(heapSort({3, 1, 2, 2}), (std::vector<double>{1, 2, 2, 3}));
}

TEST(HeapSort, HeapifyPutsTheLargestOnTop) {
    std::vector<double> v = {1, 5, 2, 8, 3};
    heapSort_heapify(&v);
    EXPECT_EQ(v, (std::vector<double>{8, 5, 2, 1, 3}));
    // The right child is taken only when strictly greater than the left.
    std::vector<double> w = {0, 4, 4};
    heapSort_siftDown(&w, 0, 3);
    EXPECT_EQ(w, (std::vector<double>{4, 0, 4}));
}

TEST(HeapSort, SiftDownRefusesRangesOutsideTheList) {
    std::vector<double> v = {1, 2};
    for (auto range : {std::make_pair(-1, 2), std::make_pair(0, 3), std::make_pair(0, -1)}) {
        try {
            heapSort_siftDown(&v, range.first, range.second);
            ADD_FAILURE() << range.first << " " << range.second;
        } catch (Exception& e) {
            EXPECT_EQ(e.message, "Invalid heap range.");
        }
    }
}
