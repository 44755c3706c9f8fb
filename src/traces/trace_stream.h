// Traces of any length in bounded memory: a writer that puts values into a
// trace file as they come, a store that keeps them for a second pass (in
// memory up to a limit, then in an anonymous temporary file, always as the
// exact doubles), and the run that draws, writes and summarises a model's
// values with both. The summary is the one Trace::getSummary gives for the
// same values, to the character.
#ifndef VELMORA_TRACES_TRACE_STREAM_H
#define VELMORA_TRACES_TRACE_STREAM_H

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "core/process.h"

namespace velmora {

// Room for the longest six-digit form, "-1.23457e-308", with margin.
const std::size_t MAX_NUMBER_TEXT = 32;

// Writes `value` as stream insertion with default settings does: printf's %g
// with precision 6, which is what to_chars with that precision gives.
inline char* write_trace_number(char* out, double value) {
    return std::to_chars(out, out + MAX_NUMBER_TEXT, value, std::chars_format::general, 6).ptr;
}

// One value per line, in the layout of Trace::save. Every failure to open or
// write throws, naming the file and the system's reason; what was written
// before a failure stays in the file.
class TraceWriter {
public:
    explicit TraceWriter(const std::string& file);
    ~TraceWriter();
    TraceWriter(const TraceWriter&) = delete;
    TraceWriter& operator=(const TraceWriter&) = delete;

    void writeCount(std::uint64_t count);  // the first line of the counted layout
    void write(const double* values, std::size_t count);
    void close();

private:
    void flush();
    std::string file;
    int descriptor;
    std::vector<char> buffer;
    std::size_t used = 0;
};

// Values kept for a second pass, in order. Up to `inMemory` values stay in
// memory; the rest go to a temporary file in $TMPDIR (or /tmp) that has no
// name and disappears with the store.
class ValueStore {
public:
    explicit ValueStore(std::size_t inMemory);
    ~ValueStore();
    ValueStore(const ValueStore&) = delete;
    ValueStore& operator=(const ValueStore&) = delete;

    void add(const double* values, std::size_t count);
    void replay(const ValueSink& sink);

private:
    std::size_t inMemory;
    std::vector<double> held;
    std::FILE* spill = nullptr;
};

// Values held in memory before a run spills to its temporary file: 16 MiB.
const std::size_t STREAM_VALUES_IN_MEMORY = std::size_t(1) << 21;

class SummaryPasses;
class BinCounts;

// The run under both: draws, writes to `file` (none when empty) and takes
// both passes of `passes`, and the distribution table into `bins` unless it
// is null. `check`, when set, is called before each block is used and may
// throw to end the run. Returns the number of values.
std::uint64_t stream_run(Process& process, int stop, std::uint64_t observations, double time, unsigned seed,
                         const std::string& file, bool traceFormat, SummaryPasses& passes, BinCounts* bins,
                         const std::function<void()>& check = nullptr);

struct StreamedTrace {
    std::uint64_t count;
    std::string summary;  // empty for a run without values
};

// Draws a run of `process` as Process::generate does, writes it to `file`
// (counted layout when traceFormat is true) and returns the number of values
// and the text of their summary, Trace::getSummary's for the same values.
StreamedTrace stream_trace(Process& process, int stop, std::uint64_t observations, double time, unsigned seed,
                           const std::string& file, bool traceFormat);

}  // namespace velmora

#endif
