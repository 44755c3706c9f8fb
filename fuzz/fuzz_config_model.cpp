// The key-value reader, the model factory on it, the summary and a short
// trace.
#include <cstddef>
#include <cstdint>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "core/process.h"
#include "fuzz_support.h"
#include "fitting/process_factory.h"

using namespace velmora;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_limit_budget();
    const std::string file = fuzz_input_file(data, size, ".conf");
    Process* p = nullptr;
    try {
        // As sylvar's command line names it: the file names its own model.
        Config config;
        config.setValue("paramfile", file, true);
        p = load_process(&config);
    } catch (const Exception&) {
        return 0;
    }
    fuzz_exercise(p);
    return 0;
}
