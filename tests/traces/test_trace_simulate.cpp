// The generation loop shared by all processes, driven by a process that
// counts its calls and gives a fixed value each time.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "core/libvelmora_settings.h"
#include "numerics/matrix.h"
#include "traces/trace.h"

namespace {

class StepProcess : public velmora::Process {
public:
    explicit StepProcess(double step, unsigned failAfter = 0) : step(step), failAfter(failAfter) {}

    std::string getProcessDescription() override { return "step"; }
    void load(std::string, velmora::format) override {}
    void save(std::string, velmora::format) override {}
    std::string toString(velmora::format) override { return ""; }
    std::string getSummary() override { return ""; }
    std::string getSummary(unsigned, unsigned, unsigned) override { return ""; }
    std::vector<double> getMoments(unsigned, unsigned) const override { return {}; }
    velmora::Matrix getJointMoments(unsigned, unsigned) const override { return velmora::Matrix(); }
    std::vector<double> getAutocorrelations(unsigned, unsigned) const override { return {}; }
    velmora::Distribution computeDistribution(double, double) override { return {}; }
    double evalCDF(double) override { return 0; }
    double evalCCDF(double) override { return 1; }
    double evalPDF(double) override { return 0; }
    double computeLikelihood(velmora::Trace*) override { return 0; }
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
    unsigned failAfter;
    unsigned draws = 0;
    std::vector<unsigned> seeds;
};

}  // namespace

TEST(Simulate, StopRulesDecideTheLength) {
    struct Case {
        int stop;
        unsigned observations;
        double time;
        double step;
        unsigned expected;
    };
    const Case cases[] = {
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
        for (unsigned i = 0; i < trace->getSize(); ++i) EXPECT_EQ(trace->getElement(i), c.step);
    }
}

TEST(Simulate, AFailedDrawReachesTheCaller) {
    StepProcess process(1.0, 3);
    try {
        std::unique_ptr<velmora::Trace> trace(process.simulate(1, 10, 0.0, 7));
        ADD_FAILURE() << "no failure";
    } catch (velmora::Exception& e) {
        EXPECT_EQ(e.message, "exhausted");
    }
}

TEST(Simulate, ATraceReplaysItself) {
    velmora::Trace source(std::vector<double>{0.5, 1.5, 2.5});
    std::unique_ptr<velmora::Trace> copy(source.simulate(2, 0, 2.0, 0));
    ASSERT_EQ(copy->getSize(), 2u);
    EXPECT_EQ(copy->getElement(1), 1.5);
}

TEST(Simulate, RunByTimeThatCannotReachItsLimitIsRefused) {
    for (double step : {0.0, -1.0}) {
        StepProcess process(step);
        try {
            delete process.simulate(2, 1000, 1.0, 3);
            FAIL() << step;
        } catch (velmora::Exception& e) {
            EXPECT_EQ(e.message, "The generated values do not reach the time limit.");
            EXPECT_EQ(process.draws, 10000000u);
        }
    }
}

// A run by count alone ends at its count whatever the sum of its values, also
// when the count is a multiple of the period at which a run by time checks
// that its sum still grows. Disabled until that check leaves runs by count
// alone: today the ten-millionth zero is refused.
TEST(Simulate, RunByCountIsNeverRefusedForItsSum) {
    for (int stop : {1, 0}) {
        StepProcess process(0.0);
        // With stop 0 the time test is already met: a sum of 0 is not below -1.
        std::unique_ptr<velmora::Trace> trace(process.simulate(stop, 10000000, -1.0, 3));
        EXPECT_EQ(trace->getSize(), 10000000u) << "stop " << stop;
    }
}
