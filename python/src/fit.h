// The fits of the library as functions of the module velmora._velmora.
#ifndef VELMORA_PYTHON_FIT_H
#define VELMORA_PYTHON_FIT_H

#include <pybind11/pybind11.h>

namespace velmora_python {

void bind_fits(pybind11::module_& m);

}  // namespace velmora_python

#endif
