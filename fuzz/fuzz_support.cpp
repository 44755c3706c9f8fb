// The shared parts of the fuzz targets.
#include "fuzz_support.h"

#include <unistd.h>

#include <cstdio>
#include <memory>

#include "core/libvelmora_settings.h"
#include "core/process.h"
#include "numerics/matrix.h"
#include "traces/trace.h"

namespace velmora {

std::string fuzz_input_file(const std::uint8_t* data, std::size_t size, const std::string& suffix) {
    const std::string name = "/tmp/velmora_fuzz_" + std::to_string(getpid()) + suffix;
    std::FILE* f = std::fopen(name.c_str(), "wb");
    if (f == nullptr) return name;
    if (size > 0) std::fwrite(data, 1, size, f);
    std::fclose(f);
    return name;
}

void fuzz_limit_budget() { set_simulation_memory_budget(std::size_t(64) << 20); }

void fuzz_exercise(Process* p) {
    std::unique_ptr<Process> owned(p);
    if (!owned) return;
    try {
        owned->getSummary(2, 2, 3);
    } catch (const Exception&) {
    }
    try {
        owned->getMoments(1, 3);
        owned->getAutocorrelations(0, 3);
    } catch (const Exception&) {
    }
    try {
        owned->toString(FORMAT_XML);
        owned->toString(FORMAT_CONFIG);
    } catch (const Exception&) {
    }
    try {
        std::unique_ptr<Trace> t(owned->simulate(1, 50, 0.0, 7));
        if (t) t->getSummary();
    } catch (const Exception&) {
    }
}

}  // namespace velmora
