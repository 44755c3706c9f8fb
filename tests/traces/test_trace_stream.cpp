// Streamed runs against the runs that hold a whole trace: the same file, the
// same summary to the character, whatever the blocks and wherever the values
// wait for the second pass; replications against single runs.
#include <thread>

#include "distributions/dist_exponential.h"
#include "distributions/dist_process.h"
#include "numerics/misc_numerical_dist.h"
#include "trace_helpers.h"
#include "traces/trace_replications.h"
#include "traces/trace_stream.h"
#include "traces/trace_summary.h"

using namespace trace_test;
using namespace velmora;

namespace {
// Out of line: inlined, GCC 12 warns about the destructor it cannot see through.
[[gnu::noinline]] std::unique_ptr<Process> exponential() { return std::unique_ptr<Process>(new DistProcess(new Exponential(0.5))); }
}  // namespace

// The lagged sums carry their last deviations from block to block, and the
// store's temporary file gives back the exact doubles.
TEST(Stream, SummaryDoesNotDependOnBlocksOrWhereValuesWait) {
    std::unique_ptr<Process> process = exponential();
    std::unique_ptr<Trace> held(process->simulate(1, 1000, 0.0, 5));
    const std::vector<double> values = contentsOf(*held);
    const std::string whole = held->getSummary();
    for (std::size_t block : {1u, 2u, 7u, 1000u}) {
        for (std::size_t inMemory : {0u, 3u, 5000u}) {
            ValueStore store(inMemory);
            SummaryPasses passes(5, 3, 5);
            for (std::size_t i = 0; i < values.size(); i += block) {
                const std::size_t n = std::min(block, values.size() - i);
                passes.first(values.data() + i, n);
                store.add(values.data() + i, n);
            }
            BinCounts bins(passes.smallestValue(), passes.largestValue(),
                           (passes.largestValue() - passes.smallestValue()) / 1000.0);
            std::vector<double> replayed;
            store.replay([&](const double* x, std::size_t n) {
                passes.second(x, n);
                bins.add(x, n);
                replayed.insert(replayed.end(), x, x + n);
            });
            EXPECT_EQ(replayed, values);
            EXPECT_EQ(summaryText(passes.count(), passes.figures(), bins.distribution()), whole)
                << "block " << block << ", in memory " << inMemory;
        }
    }
}

// Both layouts and every stop rule: the file Trace::save writes and the
// summary Trace::getSummary gives.
TEST(Stream, RunWritesTheSavedFileAndTheHeldSummary) {
    struct Case { int stop; unsigned observations; double time; bool counted; } cases[] = {
        {1, 500, 0.0, false}, {1, 500, 0.0, true}, {2, 0, 300.0, false}, {2, 0, 300.0, true}, {0, 10, 50.0, true}};
    for (const Case& c : cases) {
        std::unique_ptr<Process> process = exponential();
        std::unique_ptr<Trace> held(process->simulate(c.stop, c.observations, c.time, 9));
        held->save(tempPath("held.txt"), c.counted);
        StreamedTrace run = stream_trace(*process, c.stop, c.observations, c.time, 9, tempPath("streamed.txt"), c.counted);
        EXPECT_EQ(readFile(tempPath("streamed.txt")), readFile(tempPath("held.txt"))) << c.stop << c.counted;
        EXPECT_EQ(run.count, held->getSize());
        EXPECT_EQ(run.summary, held->getSummary());
    }
    // No values: an empty file, or the count 0, and no summary.
    std::unique_ptr<Process> process = exponential();
    StreamedTrace none = stream_trace(*process, 1, 0, 0.0, 9, tempPath("none.txt"), true);
    EXPECT_EQ(none.count, 0u);
    EXPECT_EQ(readFile(tempPath("none.txt")), "0\n");
}

TEST(Stream, FailuresToOpenOrWriteNameTheFileAndTheReason) {
    std::unique_ptr<Process> process = exponential();
    EXPECT_EQ(failureOf([&] { stream_trace(*process, 1, 10, 0.0, 1, "/nonexistent/x.txt", false); }),
              "trace_stream: Cannot open trace file /nonexistent/x.txt for writing: No such file or directory.");
    // A device that is always full: the first block that reaches it fails.
    EXPECT_EQ(failureOf([&] { stream_trace(*process, 1, 100000, 0.0, 1, "/dev/full", false); }),
              "trace_stream: Cannot write trace file /dev/full: No space left on device; the values before the "
              "failure stay in the file.");
}

TEST(Replications, SeedsAndTraceNamesFollowTheDocumentedRule) {
    EXPECT_EQ(replication_seed(13, 1), 13u);
    EXPECT_EQ(replication_seed(13, 4), 16u);
    EXPECT_EQ(replication_seed(4294967295u, 2), 0u);  // modulo 2^32
    struct Case { const char* trace; unsigned k; const char* expected; } cases[] = {
        {"out.txt", 1, "out_1.txt"},  {"dir/out.trace.txt", 12, "dir/out.trace_12.txt"},
        {"out", 3, "out_3"},          {"a.b/out", 2, "a.b/out_2"},
        {"dir/.hidden", 2, "dir/.hidden_2"}};
    for (const Case& c : cases) EXPECT_EQ(replication_trace_name(c.trace, c.k), c.expected) << c.trace;
}

// Replication k is the single run with its derived seed, value for value, on
// any number of threads; the study does not depend on the threads.
TEST(Replications, EachReplicationIsTheSingleRunWithItsSeed) {
    const std::string trace = tempPath("rep.txt");
    ReplicationStudy one = run_replications(exponential, 1, 2000, 0.0, 21, 3, 1, trace, false);
    std::vector<std::string> files;
    for (unsigned k = 1; k <= 3; ++k) files.push_back(readFile(replication_trace_name(trace, k)));
    ReplicationStudy three = run_replications(exponential, 1, 2000, 0.0, 21, 3, 3, trace, false);
    ASSERT_EQ(three.runs.size(), 3u);
    for (unsigned k = 1; k <= 3; ++k) {
        std::unique_ptr<Process> process = exponential();
        stream_trace(*process, 1, 2000, 0.0, 20 + k, tempPath("single.txt"), false);
        EXPECT_EQ(readFile(replication_trace_name(trace, k)), readFile(tempPath("single.txt"))) << k;
        EXPECT_EQ(files[k - 1], readFile(tempPath("single.txt"))) << k;
        std::unique_ptr<Trace> held(process->simulate(1, 2000, 0.0, 20 + k));
        EXPECT_EQ(three.runs[k - 1].variance, held->getVariance());
        EXPECT_EQ(three.runs[k - 1].autocorrelations, held->getAutocorrelations(1, 10));
    }
    EXPECT_EQ(one.toString(), three.toString());
    // An exponential of rate 0.5 has mean 2 and uncorrelated values.
    EXPECT_LT(three.mean.lower, 2.0);
    EXPECT_GT(three.mean.upper, 2.0);
}

TEST(Replications, AFailingReplicationEndsTheStudy) {
    EXPECT_EQ(failureOf([] { run_replications(exponential, 1, 10, 0.0, 1, 4, 2, "/nonexistent/r.txt", false); })
                  .substr(0, 38),
              "trace_stream: Cannot open trace file /");
    EXPECT_EQ(failureOf([] { run_replications(exponential, 1, 10, 0.0, 1, 0, 2, "", false); }),
              "trace_replications: Invalid number of replications.");
}
