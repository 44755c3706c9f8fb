// The matrix, trace and multi-class trace readers and the statistics of what
// they read. The first byte picks the reader, the rest is the text or file.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "core/libvelmora_settings.h"
#include "fuzz_support.h"
#include "numerics/matrix.h"
#include "traces/trace.h"
#include "traces/trace_mc.h"

using namespace velmora;

namespace {

void readTrace(const std::string& file, bool counted) {
    Trace t(file, counted);
    if (t.getSize() == 0) return;
    t.getMoments(1, 4);
    t.getAutocorrelations(0, 3);
    t.getSummary(3, 2, 3);
}

void readMCTrace(const std::string& file, bool binary) {
    MCTrace t(file, binary);
    t.getMoments(2);
    t.getJointMoments(2);
}

void readMatrix(const std::uint8_t* data, std::size_t size) {
    Matrix m(std::string(reinterpret_cast<const char*>(data), size));
    if (m.getNumberRows() == 0) return;
    m.getSum();
    if (m.getNumberRows() == m.getNumberCols() && m.getNumberRows() <= 64) m.inverse();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    fuzz_limit_budget();
    const unsigned reader = data[0] % 5;
    data++;
    size--;
    try {
        if (reader == 4) {
            readMatrix(data, size);
            return 0;
        }
        const std::string file = fuzz_input_file(data, size, ".txt");
        if (reader < 2)
            readTrace(file, reader == 1);
        else
            readMCTrace(file, reader == 3);
    } catch (const Exception&) {
    }
    return 0;
}
