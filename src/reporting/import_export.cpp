// Readers and writers of the side formats. The sparse readers take the
// file's significant lines in turn; where the file ends before the format
// does, they stop with "Parse error." rather than search on.
#include "reporting/import_export.h"

#include <fstream>
#include <sstream>
#include <vector>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "core/misc_string.h"
#include "distributions/dist_load.h"

namespace velmora {

namespace {

[[noreturn]] void parseError(int line) { throw Exception("import_export", line, "Parse error."); }

std::ifstream openFile(const std::string& file) {
    std::ifstream in(file);
    if (!in) throw Exception("import_export", __LINE__, "Cannot open file.");
    return in;
}

// The lines of a sparse file that are not empty after trimming blanks and
// do not begin with "#", trimmed. The "#" test looks at the line as it
// stands, so an indented "#" line is significant.
class SignificantLines {
public:
    explicit SignificantLines(const std::string& file) {
        std::ifstream in = openFile(file);
        std::string line;
        while (std::getline(in, line)) {
            std::string trimmed = trimString(line);
            if (!trimmed.empty() && line[0] != '#') lines.push_back(trimmed);
        }
    }

    std::string take() {
        if (next == lines.size()) parseError(__LINE__);
        return lines[next++];
    }

    // A count read from the file: a negative one, or one that more lines
    // than are left would have to follow, is a parse error, found before the
    // result is sized by it.
    unsigned count(int value) const {
        if (value < 0 || static_cast<size_t>(value) > lines.size() - next) parseError(__LINE__);
        return static_cast<unsigned>(value);
    }

private:
    std::vector<std::string> lines;
    size_t next = 0;
};

// The result-file block after one of the comment lines: m lines, or fewer
// where the file ends.
void readBlock(std::istream& in, int m, std::vector<std::string>& block) {
    std::string line;
    for (int i = 0; i < m && std::getline(in, line); i++) block.push_back(line);
}

}  // namespace

// The four comment lines must match to the character; every other line is
// skipped, and a block seen before the count of branches takes no lines.
Dist* import::import_gfit(std::string file) {
    std::ifstream in = openFile(file);
    int m = 0;
    std::vector<std::string> phases, rates, probabilities;
    std::string line;
    while (std::getline(in, line)) {
        if (line == "# number of different Erlang branches, m") {
            if (std::getline(in, line)) m = toInt(line);
        } else if (line == "# number of phases of i-th Erlang branch, i = 1,...,m") {
            readBlock(in, m, phases);
        } else if (line == "# lambda values of i-th Erlang branch, i = 1,...,m") {
            readBlock(in, m, rates);
        } else if (line == "# initial probabilities of i-th Erlang branch, i = 1,...,m") {
            readBlock(in, m, probabilities);
        }
    }
    Config c;
    c.setValue("model", "distribution", true);
    c.setValue("distribution", "hypererlang", true);
    c.setValue("phases", toString(phases), true);
    c.setValue("prob", toString(probabilities), true);
    c.setValue("rates", toString(rates), true);
    return loadDistribution(&c);
}

Matrix import::import_sparse_matrix(std::string file, bool extraHeaderLine) {
    SignificantLines lines(file);
    for (int i = extraHeaderLine ? 3 : 2; i > 0; i--) lines.take();
    const unsigned n = lines.count(toInt(lines.take()));
    Matrix m(n, n);
    for (unsigned i = 0; i < n; i++) {
        std::vector<std::string> row = splitString(lines.take(), ' ');
        const unsigned entries = lines.count(toInt(row[0]));
        if (row.size() > 1) m(i, i) = toDouble(row[1]);
        for (unsigned e = 0; e < entries; e++) {
            std::vector<std::string> entry = splitString(lines.take(), ' ');
            if (entry.size() != 2) parseError(__LINE__);
            m(i, toInt(entry[0])) = toDouble(entry[1]);
        }
    }
    return m;
}

Vector import::import_sparse_vector(std::string file, bool headerLine) {
    SignificantLines lines(file);
    if (headerLine) lines.take();
    const unsigned n = lines.count(toInt(lines.take()));
    Vector v(n, false);
    for (unsigned i = 0; i < n; i++) v[i] = toDouble(lines.take());
    return v;
}

// A value that is not a number counts as non-zero and is written.
std::string io_export::export_sparse_matrix(Matrix m, bool header, int diagonalMode) {
    std::ostringstream out;
    const unsigned rows = m.getNumberRows();
    if (header) out << 1 << std::endl << 1 << std::endl << 0 << std::endl << rows << std::endl;
    for (unsigned i = 0; i < rows; i++) {
        const std::vector<double>& row = m[i];
        std::ostringstream entries;
        unsigned count = 0;
        for (size_t j = 0; j < row.size(); j++) {
            if (row[j] == 0 || (j == i && diagonalMode != 1)) continue;
            entries << j << " " << row[j] << std::endl;
            count++;
        }
        out << count;
        if (diagonalMode == 2) out << " " << m(i, i);
        out << std::endl << entries.str();
    }
    return out.str();
}

std::string io_export::export_sparse_matrices(Matrix D0, Matrix D1) {
    std::ostringstream out;
    out << 2 << std::endl << 1 << std::endl << 0 << std::endl << D0.getNumberRows() << std::endl << 0 << std::endl;
    out << export_sparse_matrix(D0, false, 2);
    out << 1 << std::endl;
    out << export_sparse_matrix(D1, false, 1);
    return out.str();
}

}  // namespace velmora
