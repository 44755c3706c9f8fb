// Multi-class traces: the text and binary readers, the text writer and the
// class-wise moments.
#include "traces/trace_mc.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <utility>

#include "core/libvelmora_settings.h"
#include "core/misc_string.h"

namespace velmora {

namespace {

const std::size_t RECORD_SIZE = 16;

// The one failure of this module that ends the program instead of raising.
[[noreturn]] void cannotOpen(const std::string& file) {
    std::printf("error: couldn't open %s\n", file.c_str());
    std::exit(-1);
}

std::string kindOf(unsigned char kind) {
    if (kind == 'r' || kind == 'R') return "r";
    if (kind == 'w' || kind == 'W') return "w";
    return "?";
}

std::string addressingOf(unsigned char addressing) {
    if (addressing == 'L') return "LBA";
    if (addressing == 'C') return "CHS";
    if (addressing == 'S') return "SCSI";
    return "?";
}

// The lists of a moment function, under "ALL" and each class of the trace,
// before any sum. A class of that name would merge with the whole trace and
// count twice, and an order of UINT_MAX would leave lists of no entries.
template <typename List>
std::map<std::string, List> emptyLists(const std::vector<MCTElement>& elements, unsigned order, const List& zeros) {
    if (order + 1 == 0) throw Exception("trace_mc", __LINE__, "Invalid moment order.");
    std::map<std::string, List> lists;
    lists["ALL"] = zeros;
    for (const MCTElement& e : elements) {
        if (e.elementClass == "ALL")
            throw Exception("trace_mc", __LINE__, "The class name ALL is reserved for the whole trace.");
        lists[e.elementClass] = zeros;
    }
    return lists;
}

// Fills `record` from the descriptor, over short reads, until it is full or
// the file ends; gives the number of bytes read.
std::size_t readRecord(int fd, unsigned char* record) {
    std::size_t got = 0;
    while (got < RECORD_SIZE) {
        ssize_t r = ::read(fd, record + got, RECORD_SIZE - got);
        if (r < 0 && errno == EINTR) continue;
        if (r <= 0) break;
        got += static_cast<std::size_t>(r);
    }
    return got;
}

}  // namespace

MCTrace::MCTrace(std::string file, bool binary) { load(file, binary); }

void MCTrace::load(std::string file, bool binary) {
    elements.clear();
    if (binary) {
        int fd = ::open(file.c_str(), O_RDONLY);
        if (fd < 0) cannotOpen(file);
        unsigned char record[RECORD_SIZE];
        std::uint32_t previous = 0;
        bool first = true;
        std::size_t got;
        while ((got = readRecord(fd, record)) == RECORD_SIZE) {
            const std::uint32_t stamp = (std::uint32_t(record[12]) << 24) | (std::uint32_t(record[13]) << 16) |
                                        (std::uint32_t(record[14]) << 8) | std::uint32_t(record[15]);
            // Unsigned subtraction is the difference modulo 2^32, so a clock
            // that wrapped around still gives the elapsed time.
            const double value = (first || previous == 0) ? 0.0 : static_cast<double>(stamp - previous);
            elements.push_back(MCTElement{value, kindOf(record[0]) + addressingOf(record[3])});
            previous = stamp;
            first = false;
        }
        ::close(fd);
        if (got > 0)
            libvelmora_warning("trace_mc", __LINE__, "Incomplete record of " + toString(static_cast<unsigned>(got)) +
                                                         " bytes at the end of " + file + " dropped.");
        return;
    }

    std::ifstream in(file.c_str());
    if (!in.is_open()) cannotOpen(file);
    std::string line;
    std::getline(in, line);  // the count that save writes; not used
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        std::vector<std::string> tokens = splitString(line, ' ');
        // A line of blanks alone holds no value and is skipped like an empty one.
        if (tokens.empty()) continue;
        if (tokens.size() == 1)
            elements.push_back(MCTElement{toDouble(tokens[0]), "class1"});
        else
            elements.push_back(MCTElement{toDouble(tokens[1]), tokens[0]});
    }
}

void MCTrace::save(std::string file) {
    std::ofstream out(file.c_str(), std::ios::out | std::ios::trunc);
    if (!out.is_open()) cannotOpen(file);
    out << elements.size() << "\n";
    for (const MCTElement& e : elements) out << e.elementClass << " " << e.value << "\n";
}

unsigned MCTrace::getSize() { return static_cast<unsigned>(elements.size()); }

MCTElement MCTrace::getElement(unsigned index) {
    if (index >= elements.size()) throw Exception("trace_mc", __LINE__, "Invalid trace element.");
    return elements[index];
}

void MCTrace::addElement(MCTElement element) { elements.push_back(std::move(element)); }

std::map<std::string, std::vector<double>> MCTrace::getMoments(unsigned order) {
    // The divisor n - 1 would wrap around for an empty trace.
    if (elements.empty()) throw Exception("trace_mc", __LINE__, "Moments need at least one trace element.");
    std::map<std::string, std::vector<double>> moments =
        emptyLists(elements, order, std::vector<double>(order + 1, 0.0));
    std::vector<double>& all = moments["ALL"];
    for (std::size_t i = 0; i + 1 < elements.size(); ++i) {
        std::vector<double>& own = moments[elements[i].elementClass];
        for (unsigned k = 0; k <= order; ++k) {
            const double p = std::pow(elements[i].value, static_cast<double>(k));
            all[k] += p;
            own[k] += p;
        }
    }
    const double n1 = static_cast<double>(elements.size() - 1);
    for (auto& entry : moments)
        for (double& m : entry.second) m /= n1;
    return moments;
}

std::map<std::string, std::vector<std::vector<double>>> MCTrace::getJointMoments(unsigned order) {
    // The divisor n - 2 would wrap around below two elements.
    if (elements.size() < 2) throw Exception("trace_mc", __LINE__, "Joint moments need at least two trace elements.");
    std::map<std::string, std::vector<std::vector<double>>> moments = emptyLists(
        elements, order, std::vector<std::vector<double>>(order + 1, std::vector<double>(order + 1, 0.0)));
    std::vector<std::vector<double>>& all = moments["ALL"];
    for (std::size_t i = 0; i + 2 < elements.size(); ++i) {
        std::vector<std::vector<double>>& own = moments[elements[i].elementClass];
        const double x = elements[i].value, y = elements[i + 1].value;
        for (unsigned a = 0; a <= order; ++a)
            for (unsigned b = 0; b <= order; ++b) {
                const double p = std::pow(x, static_cast<double>(a)) * std::pow(y, static_cast<double>(b));
                all[a][b] += p;
                own[a][b] += p;
            }
    }
    const double n2 = static_cast<double>(elements.size() - 2);
    for (auto& entry : moments)
        for (std::vector<double>& row : entry.second)
            for (double& m : row) m /= n2;
    return moments;
}

}  // namespace velmora
