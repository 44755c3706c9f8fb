// The files that programs write for their users: only regular files are
// written (a device, FIFO, socket or directory is refused), a symbolic link
// is written through to its target, and an output that is one of the run's
// inputs is refused, so that a run never destroys what it reads or
// replaces something that is not a file.
#ifndef VELMORA_CORE_OUTPUT_FILE_H
#define VELMORA_CORE_OUTPUT_FILE_H

#include <functional>
#include <string>
#include <vector>

namespace velmora {

// What stops `path` from being written, as the end of a sentence ("it is a
// directory", "it is a device", "it is a FIFO", "it is the input 'm.xml'",
// "No such file or directory", ...), or "" when nothing does. Links are
// followed; an output and an input are the same when they are the same file.
std::string output_file_problem(const std::string& path, const std::vector<std::string>& inputs);

// The file that a write to `path` changes: the end of its chain of symbolic
// links (even a dangling one), else `path` itself.
std::string output_file_target(const std::string& path);

// Writes `content` to a temporary file beside the target of `path`, calls
// `check` with the temporary file's name (it throws to refuse the file),
// and renames the file onto the target, so that a failure leaves the old
// file untouched and no partial one. Throws Exception, naming `path` and
// the reason, when a write, the check or the rename fails.
void write_file_atomically(const std::string& path, const std::string& content,
                           const std::function<void(const std::string&)>& check = {});

}  // namespace velmora

#endif
