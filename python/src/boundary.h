// What every binding function does at the border between Python and the
// library: turns Python arguments into checked C++ values, holds the locks
// that keep threads apart, and sends the library's messages to Python's
// logging. Each check raises velmora.Error with a message that names the
// argument, so that no input reaches the library in a shape it cannot take.
#ifndef VELMORA_PYTHON_BOUNDARY_H
#define VELMORA_PYTHON_BOUNDARY_H

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <mutex>
#include <sstream>
#include <string>
#include <vector>

namespace velmora_python {

namespace py = pybind11;

// velmora.Error, set up by the module.
py::object& error_type();

// Raises velmora.Error with the message.
[[noreturn]] void raise_error(const std::string& message);

// A 1-D sequence of finite numbers, copied. `what` names the argument in the
// messages; `least` is the smallest accepted length.
std::vector<double> values_from(py::handle obj, const char* what, std::size_t least = 1);

// A whole number from `least` to `most`.
long long count_from(py::handle obj, const char* what, long long least, long long most);

// A seed: a whole number from 0 to 2^32 - 1.
unsigned seed_from(py::handle obj);

// A file name from a str, bytes or os.PathLike.
std::string path_from(py::handle obj);

// Raises the OSError of the system (FileNotFoundError, PermissionError,
// IsADirectoryError, ...) unless `path` is a file that can be read.
void require_readable(const std::string& path);
// The same for a file that can be written, created if missing.
void require_writable(const std::string& path);

// Many computations of the library keep their work in namespace-scope
// variables, so at most one of them runs at a time; generating from
// separate models keeps to each model's own state and does not take this
// lock. Always taken before a model's own lock.
std::mutex& library_lock();

// Runs `work` with the GIL released and the library lock held, with what
// the library writes to standard output caught and then passed to the
// logger "velmora" (warnings as warnings, debug lines as debug, the rest as
// info) once the GIL is back.
template <class Work>
auto run_in_library(Work&& work) -> decltype(work());

// The capture behind run_in_library: points std::cout at a string for its
// lifetime. Used only under the library lock.
class MessageCapture {
public:
    MessageCapture();
    ~MessageCapture();
    MessageCapture(const MessageCapture&) = delete;
    MessageCapture& operator=(const MessageCapture&) = delete;
    std::string text() const { return buffer.str(); }

private:
    std::ostringstream buffer;
    std::streambuf* saved;
};

// Sends captured library output to the logger "velmora". Needs the GIL.
void log_messages(const std::string& text);

template <class Work>
auto run_in_library(Work&& work) -> decltype(work()) {
    std::string messages;
    struct Flush {
        std::string& text;
        ~Flush() {
            if (!text.empty()) log_messages(text);
        }
    } flush{messages};
    py::gil_scoped_release release;
    std::lock_guard<std::mutex> lock(library_lock());
    MessageCapture capture;
    struct Keep {
        MessageCapture& from;
        std::string& to;
        ~Keep() { to = from.text(); }
    } keep{capture, messages};
    return work();
}

}  // namespace velmora_python

#endif
