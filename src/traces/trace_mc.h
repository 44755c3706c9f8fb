// A multi-class trace: values, as a rule inter-arrival times, each with the
// name of its class, for marked arrival processes. It reads a text file or a
// binary trace of 16-byte request records, writes the text form, and gives
// class-wise moments and lag-1 joint moments for the fitting of marked
// Markovian arrival processes.
//
// Unlike the rest of the toolkit, a file that can't be opened ends the
// program: "error: couldn't open <file>" goes to standard output and the
// process exits with status -1 (255 to the shell). Calls below the size
// limits of the moment functions, and element indices beyond the size, throw
// an Exception instead of reading out of range.
#ifndef VELMORA_TRACES_TRACE_MC_H
#define VELMORA_TRACES_TRACE_MC_H

#include <map>
#include <string>
#include <vector>

namespace velmora {

struct MCTElement {
    double value = 0.0;        // as a rule an inter-arrival time
    std::string elementClass;  // class label
};

class MCTrace {
public:
    MCTrace() = default;
    MCTrace(std::string file, bool binary);

    // Replaces the contents.
    //
    // Text (binary false): the first line is skipped unread; lines that are
    // empty or start with '#', and lines of blanks alone, are skipped; other
    // lines split at blanks: "class value ...", or a lone value of the class
    // "class1".
    //
    // Binary: records of 16 bytes, kind at offset 0 (r/R read, w/W write),
    // addressing at offset 3 (L, C, S for "LBA", "CHS", "SCSI"), a big-endian
    // unsigned 32-bit stamp at offset 12. The class is "r" or "w" and the
    // addressing, e.g. "rLBA"; an unknown letter in either place stands as
    // "?" ("?LBA", "r?"), so that every class stays one blank-free word of
    // the text form. The value is the stamp difference
    // to the previous record modulo 2^32, and 0 for the first record and
    // after a stamp of 0. A partial record at the end of the file has no
    // stamp: it is dropped with a warning.
    void load(std::string file, bool binary);
    // The count on the first line, then "class value" per line, values with
    // six significant digits.
    void save(std::string file);

    unsigned getSize();
    // A copy of the element; an index at or beyond the size throws
    // "Invalid trace element.".
    MCTElement getElement(unsigned index);
    void addElement(MCTElement element);

    // For "ALL" and for each class of the trace, entry k is the sum of
    // value^k over the elements of that class, the last element left out,
    // divided by n - 1 for all lists alike: so entry 0 of a class is its
    // share, and the class lists add up to "ALL". Needs n >= 1 (one element
    // gives 0 / 0); an empty trace throws, and so does a class named "ALL",
    // which would merge with the whole trace.
    std::map<std::string, std::vector<double>> getMoments(unsigned order);
    // Entry (a, b) sums x^a y^b over the pairs (x, y) of neighbours whose
    // first element starts at index 0 ... n - 3, under "ALL" and under the
    // class of x, divided by n - 2. Needs n >= 2 (two elements give 0 / 0);
    // fewer throw, as does a class named "ALL".
    std::map<std::string, std::vector<std::vector<double>>> getJointMoments(unsigned order);

private:
    std::vector<MCTElement> elements;
};

}  // namespace velmora

#endif
