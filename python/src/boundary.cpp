#include "boundary.h"

#include <sys/stat.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <iostream>

#include "core/libvelmora_settings.h"

namespace velmora_python {

py::object& error_type() {
    // Leaked on purpose: the type lives as long as the interpreter, and a
    // static py::object would be released after it has gone.
    static py::object* type = new py::object();
    return *type;
}

void raise_error(const std::string& message) {
    PyErr_SetString(error_type().ptr(), message.c_str());
    throw py::error_already_set();
}

namespace {

std::string shape_text(const py::array& a) {
    std::string s = "(";
    for (py::ssize_t i = 0; i < a.ndim(); ++i) s += (i ? ", " : "") + std::to_string(a.shape(i));
    return s + (a.ndim() == 1 ? ",)" : ")");
}

std::string number_text(double x) {
    std::ostringstream s;
    s << x;
    return s.str();
}

}  // namespace

std::vector<double> values_from(py::handle obj, const char* what, std::size_t least) {
    const std::string name = what;
    if (obj.is_none() || py::isinstance<py::str>(obj) || py::isinstance<py::bytes>(obj))
        raise_error(name + " must be a sequence of numbers, not " + std::string(py::str(obj.get_type().attr("__name__"))));
    using Array = py::array_t<double, py::array::c_style | py::array::forcecast>;
    // ensure gives a null array, with the error cleared, for what NumPy cannot convert.
    Array a = Array::ensure(obj);
    if (!a) {
        PyErr_Clear();
        raise_error(name + " must be a sequence of numbers");
    }
    if (a.ndim() != 1)
        raise_error(name + " must be one-dimensional, not of shape " + shape_text(a));
    const std::size_t n = static_cast<std::size_t>(a.shape(0));
    if (n < least)
        raise_error(name + " holds " + std::to_string(n) + " value" + (n == 1 ? "" : "s") + "; at least " +
                    std::to_string(least) + " are needed");
    const double* data = a.data();
    for (std::size_t i = 0; i < n; ++i)
        if (!std::isfinite(data[i]))
            raise_error(name + "[" + std::to_string(i) + "] is " + number_text(data[i]) +
                        "; the values must be finite");
    return std::vector<double>(data, data + n);
}

long long count_from(py::handle obj, const char* what, long long least, long long most) {
    const std::string name = what;
    if (py::isinstance<py::bool_>(obj) || !PyIndex_Check(obj.ptr()))
        raise_error(name + " must be a whole number, not " + std::string(py::str(obj.get_type().attr("__name__"))));
    int overflow = 0;
    py::object index = py::reinterpret_steal<py::object>(PyNumber_Index(obj.ptr()));
    if (!index) throw py::error_already_set();
    const long long v = PyLong_AsLongLongAndOverflow(index.ptr(), &overflow);
    if (overflow == 0 && v == -1 && PyErr_Occurred()) throw py::error_already_set();
    if (overflow != 0 || v < least || v > most)
        raise_error(name + " must be from " + std::to_string(least) + " to " + std::to_string(most) + ", not " +
                    std::string(py::str(obj)));
    return v;
}

unsigned seed_from(py::handle obj) {
    return static_cast<unsigned>(count_from(obj, "seed", 0, 4294967295LL));
}

std::string path_from(py::handle obj) {
    py::object os = py::module_::import("os");
    py::object path = os.attr("fsdecode")(os.attr("fspath")(obj));
    const std::string text = path.cast<std::string>();
    if (text.empty()) raise_error("the file name is empty");
    if (text.find('\0') != std::string::npos) raise_error("the file name holds a NUL character");
    return text;
}

namespace {

[[noreturn]] void raise_os_error(int number, const std::string& path) {
    errno = number;
    PyErr_SetFromErrnoWithFilename(PyExc_OSError, path.c_str());
    throw py::error_already_set();
}

}  // namespace

void require_readable(const std::string& path) {
    struct stat st;
    if (::stat(path.c_str(), &st) != 0) raise_os_error(errno, path);
    if (S_ISDIR(st.st_mode)) raise_os_error(EISDIR, path);
    std::FILE* f = std::fopen(path.c_str(), "r");
    if (f == nullptr) raise_os_error(errno, path);
    std::fclose(f);
}

void require_writable(const std::string& path) {
    struct stat st;
    if (::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) raise_os_error(EISDIR, path);
    std::FILE* f = std::fopen(path.c_str(), "a");
    if (f == nullptr) raise_os_error(errno, path);
    std::fclose(f);
}

namespace {

// The capture of the running call on this thread, if any.
thread_local std::string* threadCapture = nullptr;

}  // namespace

void install_message_sink() {
    velmora::set_message_sink([](velmora::MessageKind, const std::string& text) {
        if (threadCapture != nullptr)
            *threadCapture += text + "\n";
        else
            std::cout << text << std::endl;
    });
}

MessageCapture::MessageCapture() : saved(threadCapture) { threadCapture = &buffer; }

MessageCapture::~MessageCapture() { threadCapture = saved; }

void log_messages(const std::string& text) {
    // Called from destructors: nothing may escape.
    try {
        py::object logger = py::module_::import("logging").attr("getLogger")("velmora");
        std::istringstream in(text);
        std::string line;
        while (std::getline(in, line)) {
            if (line.empty()) continue;
            const char* level = line.compare(0, 7, "Warning") == 0 ? "warning"
                                : line.compare(0, 5, "DEBUG") == 0 ? "debug"
                                                                   : "info";
            logger.attr(level)("%s", line);
        }
    } catch (...) {
        PyErr_Clear();
    }
}

}  // namespace velmora_python
