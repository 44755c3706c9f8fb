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
    void initRandomNumberGeneration(unsigned seed) override { seeds.push_back(seed), draws = 0, rngInitialized = true; }
    double getNextRandomVariate() override {
        if (!rngInitialized) throw velmora::Exception("step", __LINE__, "not seeded");
        if (++draws > failAfter && failAfter != 0) throw velmora::Exception("step", __LINE__, "exhausted");
        return step;
    }
    double step;
    unsigned failAfter, draws = 0;
    std::vector<unsigned> seeds;
};
}  // namespace

TEST(Simulate, StopRulesDecideTheLength) {
    struct Case { int stop; unsigned observations; double time; double step; unsigned expected; } cases[] = {
        {1, 7, 100.0, 1.0, 7}, {1, 0, 100.0, 1.0, 0},  // by count only
        {2, 7, 10.0, 1.0, 10},                         // a sum equal to the time ends the run
        {2, 7, 10.5, 1.0, 11},                         // the value that passes the time stays
        {2, 7, 0.0, 1.0, 0}, {2, 0, 1.0, 0.25, 4},
        {0, 10, 0.0, 1.0, 10},                         // both: the later of the two limits
        {0, 0, 4.5, 1.0, 5},                           // no count asked: the sum alone
        {0, 3, 4.5, 1.0, 5}, {0, 8, 4.5, 1.0, 8},
        {3, 10, 10.0, 1.0, 0}, {-1, 10, 10.0, 1.0, 0},  // any other stop value gives an empty trace
    };
    for (const Case& c : cases) {
        StepProcess process(c.step);
        std::unique_ptr<velmora::Trace> trace(process.simulate(c.stop, c.observations, c.time, 42));
        SCOPED_TRACE("stop " + std::to_string(c.stop) + " observations " + std::to_string(c.observations));
        EXPECT_EQ(process.draws, c.expected);
        EXPECT_EQ(process.seeds, std::vector<unsigned>{42});  // every run seeds first, also one that draws nothing
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

// A count above the budget is refused before the first draw, a run by sum that can't reach its time
// ends at it, and a sum that dips on its way up is not refused before the budget.
TEST(Simulate, TheMemoryBudgetBoundsTheTraceAndNothingElse) {
    velmora::set_simulation_memory_budget(1000 * sizeof(double) + 7);
    EXPECT_EQ(velmora::simulation_value_limit(), 1000u);
    const std::string refusal = "process: The generated values exceed the memory budget of 0 MiB (1000 values) "
                                "before reaching the time limit.";
    for (double step : {0.0, -1.0}) {
        StepProcess process(step);
        EXPECT_EQ(failureOf([&] { delete process.simulate(2, 5, 1.0, 3); }), refusal);
        EXPECT_EQ(process.draws, 1000u);
    }
    for (int stop : {0, 1}) {
        StepProcess process(1.0);
        EXPECT_EQ(failureOf([&] { delete process.simulate(stop, 1001, 0.0, 3); }),
                  "process: The number of observations exceeds the memory budget of 0 MiB (1000 values).");
        EXPECT_TRUE(process.seeds.empty());
        std::unique_ptr<velmora::Trace> full(process.simulate(stop, 1000, 0.0, 3));
        EXPECT_EQ(full->getSize(), 1000u);
    }
    // Down by 900, then up by 10 a value: the sum reaches 50 at value 995.
    std::vector<double> walk(900, -1.0);
    walk.resize(999, 10.0);
    velmora::Trace wandering(walk);
    std::unique_ptr<velmora::Trace> replayed(wandering.simulate(2, 0, 50.0, 0));
    EXPECT_EQ(replayed->getSize(), 995u);
    velmora::set_simulation_memory_budget(0);
    EXPECT_GE(velmora::simulation_value_limit(), 1000000u);  // the default: an eighth of the memory
}
