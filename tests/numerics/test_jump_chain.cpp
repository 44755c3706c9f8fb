// The possible jumps of a row of running sums and the states that reach an end.
#include <gtest/gtest.h>

#include "numerics/jump_chain.h"

using namespace velmora;

TEST(JumpChain, RunningSumsAndTheJumpsADrawCanTake) {
    // The diagonal entry 0 is left out: the sums are 2 and 2 - 1.5.
    const double row[] = {-9, 2, -1.5};
    double sum = 0, sums[3];
    unsigned targets[3];
    ASSERT_EQ(write_jump_sums(row, 3, 0, 1.0, &sum, sums, targets), 2u);
    EXPECT_EQ(std::vector<double>(sums, sums + 2), std::vector<double>({2, 0.5}));
    EXPECT_EQ(std::vector<unsigned>(targets, targets + 2), std::vector<unsigned>({1, 2}));
    EXPECT_EQ(sum, 0.5);
    struct Case { std::vector<double> sums; std::vector<unsigned char> possible; bool passes; } cases[] = {
        {{0.2, 0.5, 0.9}, {1, 1, 1}, true},
        {{0.5, 1.0, 1.2}, {1, 1, 0}, false},  // nothing is left behind a sum of 1
        {{2, 0.5}, {1, 0}, false},            // a large first sum hides the rest
        {{-0.5, 0.3, 0.3}, {0, 1, 0}, true},  // only a sum that rises above 0 and the maximum
        {{}, {}, true},
    };
    for (const Case& c : cases) {
        std::vector<unsigned char> possible(c.sums.size(), 9);
        EXPECT_EQ(mark_possible_jumps(c.sums.data(), static_cast<unsigned>(c.sums.size()), possible.data()),
                  c.passes);
        EXPECT_EQ(possible, c.possible);
    }
}

TEST(JumpChain, StatesReachingAnEndFollowTheEdges) {
    // 0 -> 1 -> 2 (an end), 3 -> 3 and 4 <-> 3: only the chain reaches the end.
    const std::vector<std::vector<unsigned>> next = {{1}, {2}, {}, {3, 4}, {3}};
    EXPECT_EQ(states_reaching(next, {0, 0, 1, 0, 0}), std::vector<unsigned char>({1, 1, 1, 0, 0}));
    EXPECT_EQ(states_reaching(next, {0, 0, 0, 0, 1}), std::vector<unsigned char>({0, 0, 0, 1, 1}));
    EXPECT_EQ(states_reaching(next, {0, 0, 0, 0, 0}), std::vector<unsigned char>(5, 0));
}
