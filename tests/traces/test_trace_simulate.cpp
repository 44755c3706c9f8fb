// The generation loop shared by all processes, driven by a process that
// counts its calls and gives a fixed value each time.
#include "trace_helpers.h"
#include "traces/trace.h"

using namespace trace_test;

namespace {

// Everything but the two generation calls comes from Trace.
class StepProcess : public velmora::Trace {
public:
    explicit StepProcess(double step, unsigned failAfter = 0) : step(step), failAfter(failAfter) {}
    void initRandomNumberGeneration(unsigned seed) override {
        seeds.push_back(seed);
        draws = 0;
        rngInitialized = true;
    }
    double getNextRandomVariate() override {
        if (!rngInitialized) throw velmora::Exception("step", __LINE__, "not seeded");
        ++draws;
        if (failAfter != 0 && draws > failAfter) throw velmora::Exception("step", __LINE__, "exhausted");
        return step;
    }
    double step;
    unsigned failAfter, draws = 0;
    std::vector<unsigned> seeds;
};

}  // namespace

TEST(Simulate, StopRulesDecideTheLength) {
    struct Case { int stop; unsigned observations; double time; double step; unsigned expected; } cases[] = {
        {1, 7, 100.0, 1.0, 7},   // by count only
        {1, 0, 100.0, 1.0, 0},
        {2, 7, 10.0, 1.0, 10},   // a sum equal to the time ends the run
        {2, 7, 10.5, 1.0, 11},   // the value that passes the time stays
        {2, 7, 0.0, 1.0, 0},
        {0, 10, 0.0, 1.0, 10},   // both: the later of the two limits
        {0, 0, 4.5, 1.0, 5},     // no count asked: the sum alone
        {0, 3, 4.5, 1.0, 5},
        {0, 8, 4.5, 1.0, 8},
        {3, 10, 10.0, 1.0, 0},   // any other stop value gives an empty trace
        {-1, 10, 10.0, 1.0, 0},
        {2, 0, 1.0, 0.25, 4},
    };
    for (const Case& c : cases) {
        StepProcess process(c.step);
        std::unique_ptr<velmora::Trace> trace(process.simulate(c.stop, c.observations, c.time, 42));
        EXPECT_EQ(trace->getSize(), c.expected) << "stop " << c.stop << " observations " << c.observations
                                                << " time " << c.time;
        EXPECT_EQ(process.draws, c.expected);
        // Every run seeds first, also one that draws nothing.
        EXPECT_EQ(process.seeds, std::vector<unsigned>{42});
        EXPECT_EQ(contentsOf(*trace), std::vector<double>(c.expected, c.step));
    }
}

TEST(Simulate, FailedDrawsAndTracesReachTheCaller) {
    StepProcess process(1.0, 3);
    EXPECT_EQ(failureOf([&] { delete process.simulate(1, 10, 0.0, 7); }), "step: exhausted");
    // A trace replays itself.
    velmora::Trace source(std::vector<double>{0.5, 1.5, 2.5});
    std::unique_ptr<velmora::Trace> copy(source.simulate(2, 0, 2.0, 0));
    EXPECT_EQ(contentsOf(*copy), (std::vector<double>{0.5, 1.5}));
}

// A run by time that adds nothing is stopped after ten million values; a run
// by count alone ends at its count whatever the sum of its values, also when
// the count is a multiple of that period.
TEST(Simulate, OnlyRunsByTimeAreRefusedForASumThatDoesNotGrow) {
    for (double step : {0.0, -1.0}) {
        StepProcess process(step);
        EXPECT_EQ(failureOf([&] { delete process.simulate(2, 1000, 1.0, 3); }),
                  "process: The generated values do not reach the time limit.");
        EXPECT_EQ(process.draws, 10000000u);
    }
    for (int stop : {1, 0}) {
        StepProcess process(0.0);
        // With stop 0 the time test is already met: a sum of 0 is not below -1.
        std::unique_ptr<velmora::Trace> trace(process.simulate(stop, 10000000, -1.0, 3));
        EXPECT_EQ(trace->getSize(), 10000000u) << "stop " << stop;
    }
}
