// The strict reading of a trace file, for fitting: every line is one finite
// number or blank, and anything else is refused with the file and the line,
// as "trace.txt:17: 'nan' is not a finite number". Blank lines, lines that
// begin with '#', CRLF line ends and a UTF-8 byte-order mark are accepted.
// The file must be a regular file of at most kMaxTraceFileBytes, and no line
// longer than kMaxTraceLine characters, so that reading ends in bounded
// time and memory whatever the file holds. (Trace::load keeps its lenient
// reading, where what is not a number reads as 0.)
#ifndef VELMORA_TRACES_TRACE_READ_H
#define VELMORA_TRACES_TRACE_READ_H

#include <cstddef>
#include <string>
#include <vector>

namespace velmora {

const std::size_t kMaxTraceFileBytes = std::size_t(1) << 30;
const std::size_t kMaxTraceLine = 4096;

// The values of the file, in order; with `counted`, the first line that
// holds anything is the count line and is passed over.
std::vector<double> read_trace_values(const std::string& file, bool counted);

}  // namespace velmora

#endif
