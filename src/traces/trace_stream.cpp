// The streamed run: values go to the trace file and to the first pass of the
// summary as they are drawn, and to a store that replays them, exactly, for
// the second pass and the distribution table, which need the mean and the
// extremes of the whole run. A counted trace file needs its count before
// the values, so it is written during the replay.
#include "traces/trace_stream.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "core/libvelmora_settings.h"
#include "traces/trace_summary.h"

namespace velmora {

namespace {

const std::size_t WRITE_CAPACITY = std::size_t(1) << 16;

std::string reason() { return std::strerror(errno); }

}  // namespace

TraceWriter::TraceWriter(const std::string& file) : file(file), buffer(WRITE_CAPACITY + MAX_NUMBER_TEXT + 1) {
    descriptor = ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    if (descriptor < 0)
        throw Exception("trace_stream", __LINE__, "Cannot open trace file " + file + " for writing: " + reason() + ".");
}

TraceWriter::~TraceWriter() {
    if (descriptor >= 0) ::close(descriptor);
}

void TraceWriter::flush() {
    const char* p = buffer.data();
    std::size_t left = used;
    while (left > 0) {
        const ssize_t written = ::write(descriptor, p, left);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0)
            throw Exception("trace_stream", __LINE__,
                            "Cannot write trace file " + file + ": " + (written < 0 ? reason() : "nothing written") +
                                "; the values before the failure stay in the file.");
        p += written;
        left -= static_cast<std::size_t>(written);
    }
    used = 0;
}

void TraceWriter::writeCount(std::uint64_t count) {
    const std::string line = std::to_string(count) + '\n';
    std::memcpy(buffer.data() + used, line.data(), line.size());
    used += line.size();
}

void TraceWriter::write(const double* values, std::size_t count) {
    char* p = buffer.data() + used;
    for (std::size_t k = 0; k < count; ++k) {
        p = write_trace_number(p, values[k]);
        *p++ = '\n';
        if (static_cast<std::size_t>(p - buffer.data()) >= WRITE_CAPACITY) {
            used = static_cast<std::size_t>(p - buffer.data());
            flush();
            p = buffer.data();
        }
    }
    used = static_cast<std::size_t>(p - buffer.data());
}

void TraceWriter::close() {
    flush();
    const int result = ::close(descriptor);
    descriptor = -1;
    if (result != 0)
        throw Exception("trace_stream", __LINE__,
                        "Cannot write trace file " + file + ": " + reason() +
                            "; the values before the failure stay in the file.");
}

ValueStore::ValueStore(std::size_t inMemory) : inMemory(inMemory) {}

ValueStore::~ValueStore() {
    if (spill != nullptr) std::fclose(spill);
}

void ValueStore::add(const double* values, std::size_t count) {
    // Reserved once: pages the run does not fill are never touched, and
    // the values are not copied again as the vector grows.
    if (held.capacity() == 0) held.reserve(inMemory);
    const std::size_t room = inMemory - held.size();
    const std::size_t kept = count < room ? count : room;
    held.insert(held.end(), values, values + kept);
    if (kept == count) return;
    if (spill == nullptr) {
        const char* dir = std::getenv("TMPDIR");
        std::string pattern = std::string(dir != nullptr && *dir != '\0' ? dir : "/tmp") + "/velmora_valuesXXXXXX";
        const int fd = ::mkstemp(&pattern[0]);
        if (fd < 0)
            throw Exception("trace_stream", __LINE__,
                            "Cannot create a temporary file in " + pattern.substr(0, pattern.rfind('/')) + ": " +
                                reason() + ".");
        ::unlink(pattern.c_str());
        spill = ::fdopen(fd, "w+b");
        if (spill == nullptr) {
            ::close(fd);
            throw Exception("trace_stream", __LINE__, "Cannot open a temporary file: " + reason() + ".");
        }
    }
    if (std::fwrite(values + kept, sizeof(double), count - kept, spill) != count - kept)
        throw Exception("trace_stream", __LINE__,
                        "Cannot write the run's values to a temporary file: " + reason() + ".");
}

void ValueStore::replay(const ValueSink& sink) {
    if (!held.empty()) sink(held.data(), held.size());
    if (spill == nullptr) return;
    if (std::fflush(spill) != 0 || std::fseek(spill, 0, SEEK_SET) != 0)
        throw Exception("trace_stream", __LINE__,
                        "Cannot write the run's values to a temporary file: " + reason() + ".");
    std::vector<double> block(WRITE_CAPACITY);
    std::size_t got;
    while ((got = std::fread(block.data(), sizeof(double), block.size(), spill)) > 0) sink(block.data(), got);
    if (std::ferror(spill))
        throw Exception("trace_stream", __LINE__, "Cannot read back the run's temporary file: " + reason() + ".");
}

std::uint64_t stream_run(Process& process, int stop, std::uint64_t observations, double time, unsigned seed,
                         const std::string& file, bool traceFormat, SummaryPasses& passes, BinCounts* bins,
                         const std::function<void()>& check) {
    std::unique_ptr<TraceWriter> writer;
    if (!file.empty()) writer.reset(new TraceWriter(file));
    TraceWriter* const out = traceFormat ? nullptr : writer.get();
    ValueStore store(STREAM_VALUES_IN_MEMORY);
    const std::uint64_t count =
        process.generate(stop, observations, time, seed, [&](const double* values, std::size_t n) {
            if (check) check();
            if (out != nullptr) out->write(values, n);
            passes.first(values, n);
            store.add(values, n);
        });
    if (writer && traceFormat) writer->writeCount(count);
    if (count > 0) {
        // The extremes are known now: the distribution table counts during
        // the replay as well.
        if (bins != nullptr) {
            const double smallest = passes.smallestValue(), largest = passes.largestValue();
            *bins = BinCounts(smallest, largest, (largest - smallest) / 1000.0);
        }
        TraceWriter* const late = traceFormat ? writer.get() : nullptr;
        store.replay([&](const double* values, std::size_t n) {
            if (late != nullptr) late->write(values, n);
            passes.second(values, n);
            if (bins != nullptr) bins->add(values, n);
        });
    }
    if (writer) writer->close();
    return count;
}

StreamedTrace stream_trace(Process& process, int stop, std::uint64_t observations, double time, unsigned seed,
                           const std::string& file, bool traceFormat) {
    SummaryPasses passes(5, 3, 5);
    BinCounts bins(0.0, 0.0, 1.0);
    const std::uint64_t count = stream_run(process, stop, observations, time, seed, file, traceFormat, passes, &bins);
    if (count == 0) return StreamedTrace{0, std::string()};
    return StreamedTrace{count, summaryText(count, passes.figures(), bins.distribution())};
}

}  // namespace velmora
