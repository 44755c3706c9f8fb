// Trace storage, its two text layouts and replay as a stream.
// Numbers are written and read through the character conversions of the
// standard library: the text is byte for byte what stream insertion with six
// significant digits gives, and a line reads as stream extraction would read
// it, but without a stream per value, so that traces of millions of values
// load and save in about a second.
#include "traces/trace.h"
#include "traces/trace_stream.h"

#include <charconv>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "core/misc_string.h"

namespace velmora {

namespace {

inline char* writeNumber(char* out, double value) { return write_trace_number(out, value); }

inline bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Blanks that stream extraction skips in the classic locale.
inline bool isStreamSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

// The first number on a line, as toDouble reads it. Plain decimal text takes
// the fast conversion; anything else (a leading '+', text, an exponent without
// digits, a value out of range) goes through the stream so that the result
// stays the same in every case.
double readNumber(const char* begin, const char* end) {
    const char* p = begin;
    while (p < end && isStreamSpace(*p)) ++p;
    if (p < end) {
        const char* q = (*p == '-') ? p + 1 : p;
        if (q < end && (isDigit(*q) || *q == '.')) {
            double value = 0.0;
            std::from_chars_result r = std::from_chars(p, end, value, std::chars_format::general);
            // Stream extraction takes an 'e' without exponent digits as a
            // failed number; that case falls through to the stream.
            if (r.ec == std::errc() && (r.ptr == end || (*r.ptr != 'e' && *r.ptr != 'E'))) return value;
        }
    }
    return toDouble(std::string(begin, end));
}

}  // namespace

Trace::Trace() : position(0) {
    type = PROCESS_TRACE;
    typeName = "Trace";
}

Trace::Trace(std::vector<double> values) : values(std::move(values)), position(0) {
    type = PROCESS_TRACE;
    typeName = "Trace";
}

Trace::Trace(std::string file, bool traceFormat) : position(0) {
    type = PROCESS_TRACE;
    typeName = "Trace";
    load(file, traceFormat);
}

Trace::Trace(Config* config) : position(0) {
    type = PROCESS_TRACE;
    typeName = "Trace";
    load(config);
}

void Trace::load(std::string file, bool traceFormat) {
    values.clear();
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> in(std::fopen(file.c_str(), "rb"), &std::fclose);
    if (!in) throw Exception("trace", __LINE__, "Cannot open file.");

    std::string text;
    const std::size_t chunk = 1 << 20;
    std::size_t got = 0;
    do {
        std::size_t old = text.size();
        text.resize(old + chunk);
        got = std::fread(&text[old], 1, chunk, in.get());
        text.resize(old + got);
    } while (got == chunk);

    const char* p = text.data();
    const char* end = p + text.size();
    bool countLine = traceFormat;
    while (p < end) {
        const char* lineEnd = static_cast<const char*>(std::memchr(p, '\n', end - p));
        if (lineEnd == nullptr) lineEnd = end;
        if (countLine) {
            // The count is not used: the values are all lines that follow.
            countLine = false;
        } else if (lineEnd != p && *p != '#') {
            // A line of blanks alone holds no number and reads as 0, like any
            // other text that is not a number.
            values.push_back(readNumber(p, lineEnd));
        }
        p = lineEnd + 1;
    }
}

void Trace::load(std::string file, format) { load(file, false); }

void Trace::load(Config* config) {
    if (config->existsKey("model") && config->getValue("model") != "trace")
        throw Exception("trace", __LINE__, "Not a Trace.");
    if (!config->existsKey("trace")) throw Exception("trace", __LINE__, "No trace data given.");
    bool traceFormat = config->existsKey("traceFormat") && config->getValue("traceFormat") == "1";
    load(config->getValue("trace"), traceFormat);
}

void Trace::save(std::string file, bool traceFormat) {
    std::ofstream out(file.c_str(), std::ios::out | std::ios::trunc | std::ios::binary);
    if (!out.is_open()) throw Exception("trace", __LINE__, "Cannot open file.");
    if (traceFormat) out << values.size() << '\n';

    const std::size_t capacity = 1 << 16;
    std::unique_ptr<char[]> buffer(new char[capacity + MAX_NUMBER_TEXT + 1]);
    char* p = buffer.get();
    for (double v : values) {
        p = writeNumber(p, v);
        *p++ = '\n';
        if (static_cast<std::size_t>(p - buffer.get()) >= capacity) {
            out.write(buffer.get(), p - buffer.get());
            p = buffer.get();
        }
    }
    out.write(buffer.get(), p - buffer.get());
    out.flush();
    out.close();
    // A full disk or a failing device shows only here.
    if (!out) throw Exception("trace", __LINE__, "Cannot write file.");
}

void Trace::save(std::string file, format) { save(file, false); }

std::string Trace::toString(std::string separator) {
    std::string text;
    text.reserve(values.size() * (8 + separator.size()));
    char number[MAX_NUMBER_TEXT];
    for (double v : values) {
        text.append(number, writeNumber(number, v));
        text += separator;
    }
    return text;
}

std::string Trace::toString(format) { return toString(std::string("\n")); }

std::string Trace::getProcessDescription() { return typeName; }

void Trace::appendElement(double x) { values.push_back(x); }

double Trace::getElement(unsigned index) {
    if (index >= values.size()) throw Exception("trace", __LINE__, "Invalid trace element.");
    return values[index];
}

unsigned Trace::getSize() { return static_cast<unsigned>(values.size()); }

void Trace::initRandomNumberGeneration(unsigned) {
    rngInitialized = true;
    position = 0;
}

double Trace::getNextRandomVariate() {
    if (!rngInitialized) throw Exception("trace", __LINE__, "Initialize Random Number Generation first.");
    if (position < values.size()) return values[position++];
    throw Exception("trace", __LINE__, "End of trace reached.");
}

double Trace::computeLikelihood(Trace*) { throw Exception("trace", __LINE__, "Not implemented."); }

}  // namespace velmora
