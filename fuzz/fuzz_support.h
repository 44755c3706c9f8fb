// What the fuzz targets share: the input as a file of its own (the readers
// take file names), and a bounded run of a loaded model.
#ifndef VELMORA_FUZZ_FUZZ_SUPPORT_H
#define VELMORA_FUZZ_FUZZ_SUPPORT_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace velmora {

class Process;

// A file in the temporary folder, unique to the process, holding the bytes;
// the same name on every call. `suffix` keeps the readers' own checks of
// file names happy (".xml").
std::string fuzz_input_file(const std::uint8_t* data, std::size_t size, const std::string& suffix);

// A small budget for every run, so that a model that asks for more than a
// fuzzing run may take is refused with a message instead of growing.
void fuzz_limit_budget();

// The summary, a few statistics and a short generated trace of a model; an
// Exception ends the run quietly, anything else is a finding.
void fuzz_exercise(Process* p);

}  // namespace velmora

#endif
