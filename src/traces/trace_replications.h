// Independent replications of a model's run, on several threads: each
// replication draws from its own instance of the model with its own seed,
// writes its own trace file and keeps the figures compared across them.
//
// Seeds: replication k (1 to R) draws with seed + k - 1 (modulo 2^32), so
// replication 1 is the single run with the same seed, and replication k is
// the single run with seed + k - 1, value for value.
// Trace files: replication k writes "<stem>_<k><extension>", where the
// extension is the last dot and what follows in the file name ("out.txt"
// gives "out_1.txt", "out_2.txt", ...; "out" gives "out_1", ...).
#ifndef VELMORA_TRACES_TRACE_REPLICATIONS_H
#define VELMORA_TRACES_TRACE_REPLICATIONS_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/process.h"

namespace velmora {

const unsigned REPLICATION_LAGS = 10;

unsigned replication_seed(unsigned seed, unsigned k);
std::string replication_trace_name(const std::string& trace, unsigned k);

struct ReplicationRun {
    unsigned index = 0;  // k, from 1
    unsigned seed = 0;
    std::string trace;   // empty when no file was written
    std::uint64_t count = 0;
    double mean = 0.0, variance = 0.0;
    std::vector<double> autocorrelations;  // lags 1 to REPLICATION_LAGS
};

// The mean of a figure over the replications and its 95 % confidence
// interval from Student's t with R - 1 degrees of freedom (NaN bounds for a
// single replication).
struct ReplicationInterval {
    double mean = 0.0, lower = 0.0, upper = 0.0;
};

struct ReplicationStudy {
    std::vector<ReplicationRun> runs;  // in order of k
    ReplicationInterval mean, variance;
    std::vector<ReplicationInterval> autocorrelations;  // lags 1 to REPLICATION_LAGS
    // One line per replication, then the intervals.
    std::string toString() const;
};

// Runs `replications` replications on at most `threads` threads (0: every
// core). `makeProcess` gives a fresh model for each replication; it is never
// called on two threads at once. With an empty `trace` no file is written.
// The first failure of any replication ends the study with its Exception.
ReplicationStudy run_replications(const std::function<std::unique_ptr<Process>()>& makeProcess, int stop,
                                  std::uint64_t observations, double time, unsigned seed, unsigned replications,
                                  unsigned threads, const std::string& trace, bool traceFormat);

}  // namespace velmora

#endif
