// The shared parts of the fuzz targets.
#include "fuzz_support.h"

#include <unistd.h>

#include <cstdio>
#include <memory>

#include "core/libvelmora_settings.h"
#include "core/process.h"
#include "distributions/dist_hypererlang.h"
#include "markov/chep.h"
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

namespace {

// The autocorrelations of ARTA and type-2 CHEP take one double integral per
// lag (and per pair of branches), a quarter of a second each under the
// sanitizers and up to some seconds for extreme marginals: one lag, and only
// small type-2 CHEPs, keep a run within the fuzzer's time limit.
bool affordable(Process* p) {
    chep* c = dynamic_cast<chep*>(p);
    return c == nullptr || c->getType() != CHEP_TYPE_2 || c->getHyperErlang()->getProbabilities().size() <= 4;
}

}  // namespace

void fuzz_exercise(Process* p) {
    std::unique_ptr<Process> owned(p);
    if (!owned) return;
    if (affordable(owned.get())) {
        try {
            owned->getSummary(2, 2, 1);
        } catch (const Exception&) {
        }
    }
    try {
        owned->getMoments(1, 3);
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
