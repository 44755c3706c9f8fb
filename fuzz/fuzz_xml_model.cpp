// The XML reader, the model factory on the document, and what sylvar does
// with the model: its summary and a short trace.
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
    const std::string file = fuzz_input_file(data, size, ".xml");
    Process* p = nullptr;
    try {
        XMLConfig document(file);
        p = load_process(&document);
    } catch (const Exception&) {
        return 0;
    }
    fuzz_exercise(p);
    return 0;
}
