// What every binding function does at the border between Python and the
// library: turns Python arguments into checked C++ values, releases the GIL
// for the library's work, and sends the library's messages to Python's
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

// Runs `work` with the GIL released; what the library reports meanwhile on
// this thread (progress, warnings, debug lines) is caught and then passed to
// the logger "velmora" (warnings as warnings, debug lines as debug, the rest
// as info) once the GIL is back. The library keeps no shared state, so calls
// from several Python threads run side by side.
template <class Work>
auto run_in_library(Work&& work) -> decltype(work());

// Sends the library's messages to the capture of the thread that reports
// them, or, on a thread without one, to standard output as the library
// would. Installed once by the module.
void install_message_sink();

// The capture behind run_in_library: the messages of this thread go to a
// string for its lifetime.
class MessageCapture {
public:
    MessageCapture();
    ~MessageCapture();
    MessageCapture(const MessageCapture&) = delete;
    MessageCapture& operator=(const MessageCapture&) = delete;
    std::string text() const { return buffer; }

private:
    std::string buffer;
    std::string* saved;
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
