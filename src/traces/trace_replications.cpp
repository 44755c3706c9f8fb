// Replications on a pool of threads that take the next replication from a
// shared counter; results land in their replication's slot, so the study
// does not depend on which thread ran what.
#include "traces/trace_replications.h"

#include <atomic>
#include <cmath>
#include <exception>
#include <limits>
#include <mutex>
#include <sstream>
#include <thread>

#include "core/libvelmora_settings.h"
#include "numerics/misc_numerical_dist.h"
#include "traces/trace_stream.h"
#include "traces/trace_summary.h"

namespace velmora {

namespace {

ReplicationInterval interval(const std::vector<double>& x) {
    const double n = static_cast<double>(x.size());
    double sum = 0.0;
    for (double v : x) sum += v;
    ReplicationInterval r;
    r.mean = sum / n;
    if (x.size() < 2) {
        r.lower = r.upper = std::numeric_limits<double>::quiet_NaN();
        return r;
    }
    double squares = 0.0;
    for (double v : x) squares += (v - r.mean) * (v - r.mean);
    const double half = student_t_quantile(0.975, static_cast<unsigned>(x.size() - 1)) *
                        std::sqrt(squares / (n - 1.0) / n);
    r.lower = r.mean - half;
    r.upper = r.mean + half;
    return r;
}

ReplicationRun runOne(Process& process, int stop, std::uint64_t observations, double time, unsigned seed,
                      unsigned k, const std::string& trace, bool traceFormat, const std::atomic<bool>& failed) {
    ReplicationRun run;
    run.index = k;
    run.seed = replication_seed(seed, k);
    run.trace = trace.empty() ? std::string() : replication_trace_name(trace, k);
    SummaryPasses passes(0, 0, REPLICATION_LAGS);
    run.count = stream_run(process, stop, observations, time, run.seed, run.trace, traceFormat, passes, nullptr,
                           [&failed] {
                               if (failed) throw Exception("trace_replications", __LINE__, "Stopped.");
                           });
    if (run.count == 0)
        throw Exception("trace_replications", __LINE__,
                        "Replication " + std::to_string(k) + " generated no values.");
    const SummaryFigures f = passes.figures();
    run.mean = passes.average();
    run.variance = f.variance;
    run.autocorrelations.assign(f.autocorrelations.begin() + 1, f.autocorrelations.end());
    return run;
}

}  // namespace

unsigned replication_seed(unsigned seed, unsigned k) { return seed + (k - 1u); }

std::string replication_trace_name(const std::string& trace, unsigned k) {
    const std::size_t slash = trace.rfind('/');
    const std::size_t dot = trace.rfind('.');
    const bool hasExtension = dot != std::string::npos && (slash == std::string::npos || dot > slash + 1);
    const std::string number = "_" + std::to_string(k);
    return hasExtension ? trace.substr(0, dot) + number + trace.substr(dot) : trace + number;
}

ReplicationStudy run_replications(const std::function<std::unique_ptr<Process>()>& makeProcess, int stop,
                                  std::uint64_t observations, double time, unsigned seed, unsigned replications,
                                  unsigned threads, const std::string& trace, bool traceFormat) {
    if (replications == 0) throw Exception("trace_replications", __LINE__, "Invalid number of replications.");
    if (threads == 0) threads = std::max(1u, std::thread::hardware_concurrency());
    if (threads > replications) threads = replications;

    ReplicationStudy study;
    study.runs.resize(replications);
    std::atomic<unsigned> next{1};
    std::atomic<bool> failed{false};
    std::mutex lock;  // guards makeProcess and firstFailure
    std::exception_ptr firstFailure;
    auto work = [&] {
        for (unsigned k = next++; k <= replications && !failed; k = next++) {
            try {
                std::unique_ptr<Process> process;
                {
                    std::lock_guard<std::mutex> guard(lock);
                    process = makeProcess();
                }
                study.runs[k - 1] = runOne(*process, stop, observations, time, seed, k, trace, traceFormat, failed);
            } catch (...) {
                std::lock_guard<std::mutex> guard(lock);
                if (!failed) firstFailure = std::current_exception();
                failed = true;
            }
        }
    };
    std::vector<std::thread> pool;
    for (unsigned i = 1; i < threads; ++i) pool.emplace_back(work);
    work();
    for (std::thread& t : pool) t.join();
    if (firstFailure) std::rethrow_exception(firstFailure);

    std::vector<double> figure(replications);
    for (unsigned k = 0; k < replications; ++k) figure[k] = study.runs[k].mean;
    study.mean = interval(figure);
    for (unsigned k = 0; k < replications; ++k) figure[k] = study.runs[k].variance;
    study.variance = interval(figure);
    for (unsigned l = 0; l < REPLICATION_LAGS; ++l) {
        for (unsigned k = 0; k < replications; ++k) figure[k] = study.runs[k].autocorrelations[l];
        study.autocorrelations.push_back(interval(figure));
    }
    return study;
}

std::string ReplicationStudy::toString() const {
    std::ostringstream out;
    for (const ReplicationRun& r : runs) {
        out << "Replication " << r.index << ": seed " << r.seed;
        if (!r.trace.empty()) out << ", trace " << r.trace;
        out << ", " << r.count << " values, mean " << r.mean << ", variance " << r.variance
            << ", autocorrelation at lag 1 " << r.autocorrelations[0] << '\n';
    }
    out << '\n' << "Across " << runs.size() << " replications (mean [95 % confidence interval]):" << '\n';
    auto line = [&out](const std::string& name, const ReplicationInterval& i) {
        out << name << ": " << i.mean << " [" << i.lower << ", " << i.upper << "]" << '\n';
    };
    line("Mean", mean);
    line("Variance", variance);
    for (std::size_t l = 0; l < autocorrelations.size(); ++l)
        line("Autocorrelation at lag " + std::to_string(l + 1), autocorrelations[l]);
    return out.str();
}

}  // namespace velmora
