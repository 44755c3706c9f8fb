#include "traces/trace_read.h"

#include <sys/stat.h>

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>

#include "core/libvelmora_settings.h"

namespace velmora {

namespace {

[[noreturn]] void fail(int line, const std::string& message) { throw Exception("trace_read", line, message); }

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f'; }

// One line without its line end: a finite number between blanks, or
// nothing. A leading '+' is taken, as strtod takes it.
bool parseLine(const char* begin, const char* end, double* value) {
    while (begin < end && isBlank(*begin)) ++begin;
    while (end > begin && isBlank(end[-1])) --end;
    if (begin == end) return false;
    const char* p = (*begin == '+' && end - begin > 1 && end[-1] != '+') ? begin + 1 : begin;
    const std::from_chars_result r = std::from_chars(p, end, *value, std::chars_format::general);
    // Out of range (1e400) is not finite either.
    if (r.ec != std::errc() || r.ptr != end || !std::isfinite(*value)) throw std::string(begin, end);
    return true;
}

// What a line holds, for the message: at most 40 characters of it.
std::string shown(const std::string& text) {
    return text.size() <= 40 ? text : text.substr(0, 40) + "...";
}

// One line without its line end, numbered from 1: a byte-order mark may
// come before the first.
void takeLine(const std::string& file, std::string& line, std::size_t number, bool& countLine,
              std::vector<double>& values) {
    const char* b = line.data();
    const char* e = b + line.size();
    if (number == 1 && line.size() >= 3 && std::memcmp(b, "\xEF\xBB\xBF", 3) == 0) b += 3;
    double value = 0;
    bool holds = false;
    if (b == e || *b != '#') {
        try {
            holds = parseLine(b, e, &value);
        } catch (const std::string& text) {
            if (!countLine)
                fail(__LINE__, file + ":" + std::to_string(number) + ": '" + shown(text) + "' is not a finite number");
            holds = true;
        }
    }
    line.clear();
    if (!holds) return;
    if (countLine)
        countLine = false;
    else
        values.push_back(value);
}

}  // namespace

std::vector<double> read_trace_values(const std::string& file, bool counted) {
    struct stat st;
    if (::stat(file.c_str(), &st) != 0) fail(__LINE__, file + ": " + std::strerror(errno) + ".");
    if (!S_ISREG(st.st_mode)) fail(__LINE__, file + ": not a regular file.");
    if (static_cast<unsigned long long>(st.st_size) > kMaxTraceFileBytes)
        fail(__LINE__, file + ": " + std::to_string(st.st_size) + " bytes, more than the " +
                           std::to_string(kMaxTraceFileBytes) + " a trace may hold.");
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> in(std::fopen(file.c_str(), "rb"), &std::fclose);
    if (!in) fail(__LINE__, file + ": " + std::strerror(errno) + ".");

    std::vector<double> values;
    std::string line;
    std::size_t number = 0;  // of the line being read
    std::size_t total = 0;
    bool countLine = counted;
    char buffer[1 << 16];
    for (std::size_t got; (got = std::fread(buffer, 1, sizeof buffer, in.get())) > 0;) {
        total += got;
        // The file may grow while it is read.
        if (total > kMaxTraceFileBytes)
            fail(__LINE__, file + ": more than " + std::to_string(kMaxTraceFileBytes) + " bytes.");
        for (std::size_t i = 0; i < got; ++i) {
            if (buffer[i] == '\n') {
                takeLine(file, line, ++number, countLine, values);
            } else {
                if (line.size() >= kMaxTraceLine)
                    fail(__LINE__, file + ":" + std::to_string(number + 1) + ": a line longer than " +
                                       std::to_string(kMaxTraceLine) + " characters.");
                line.push_back(buffer[i]);
            }
        }
    }
    if (std::ferror(in.get())) fail(__LINE__, file + ": " + std::strerror(errno) + ".");
    if (!line.empty()) takeLine(file, line, ++number, countLine, values);
    return values;
}

}  // namespace velmora
