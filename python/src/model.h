// A model as Python sees it: one library Process, owned, with the lock that
// keeps two Python threads from using it at once. Each model class of the
// library has its own Python class (velmora.MAP, velmora.ARTA, ...), all
// derived from velmora.Model; `wrap` picks the class by the process type.
#ifndef VELMORA_PYTHON_MODEL_H
#define VELMORA_PYTHON_MODEL_H

#include <pybind11/pybind11.h>

#include <memory>
#include <mutex>
#include <string>

#include "core/process.h"

namespace velmora_python {

namespace py = pybind11;

class Model {
public:
    explicit Model(std::unique_ptr<velmora::Process> process);
    virtual ~Model();
    Model(const Model&) = delete;
    Model& operator=(const Model&) = delete;

    // The process, for the owner of `lock` only.
    velmora::Process& process() { return *owned; }
    std::mutex lock;

private:
    std::unique_ptr<velmora::Process> owned;
};

// One Python class per process type.
template <velmora::process_type T>
class ModelOf : public Model {
public:
    using Model::Model;
};

// The Python object for a new process, of the class its type asks for.
py::object wrap(std::unique_ptr<velmora::Process> process);

// The model in an XML model text, as velmora.load reads it from a file.
py::object model_from_xml(const std::string& text);

void bind_models(py::module_& m);

}  // namespace velmora_python

#endif
