// velmora._velmora: the library's models, fits and trace statistics for
// Python. The package velmora (velmora/__init__.py) is what users import; it
// wraps the dicts of the fits into result objects.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <string>
#include <vector>

#include "boundary.h"
#include "core/libvelmora_settings.h"
#include "fit.h"
#include "model.h"
#include "numerics/matrix.h"
#include "traces/trace.h"
#include "traces/trace_summary.h"

namespace velmora_python {

namespace {

// The statistics cost one pass for each lag: bounded so that a call on a
// long array ends soon.
const long long kMaxStatLags = 1000;
const long long kMaxStatOrder = 30;

py::array_t<double> to_array(const std::vector<double>& v) {
    return py::array_t<double>(static_cast<py::ssize_t>(v.size()), v.data());
}

py::dict stats(py::handle values, py::handle moments, py::handle jointMoments, py::handle lags) {
    const unsigned k = static_cast<unsigned>(count_from(moments, "moments", 0, kMaxStatOrder));
    const unsigned j = static_cast<unsigned>(count_from(jointMoments, "joint_moments", 0, kMaxStatOrder));
    const unsigned l = static_cast<unsigned>(count_from(lags, "lags", 0, kMaxStatLags));
    const std::vector<double> data = values_from(values, "values");
    velmora::SummaryFigures f;
    {
        // Plain arithmetic on the copy.
        py::gil_scoped_release release;
        f = velmora::summaryFigures(data, k, j, l);
    }
    const unsigned side = f.jointMoments.getNumberRows();
    py::array_t<double> joint({static_cast<py::ssize_t>(side), static_cast<py::ssize_t>(side)});
    for (unsigned r = 0; r < side; ++r)
        for (unsigned c = 0; c < side; ++c) joint.mutable_at(r, c) = f.jointMoments(r, c);
    py::dict d;
    d["n"] = data.size();
    d["smallest"] = f.smallest;
    d["largest"] = f.largest;
    d["moments"] = to_array(f.moments);
    d["variance"] = f.variance;
    d["joint_moments"] = joint;
    d["autocovariances"] = to_array(f.autocovariances);
    d["autocorrelations"] = to_array(f.autocorrelations);
    return d;
}

std::string trace_summary(py::handle values) {
    velmora::Trace trace(values_from(values, "values"));
    py::gil_scoped_release release;
    return trace.getSummary();
}

}  // namespace

}  // namespace velmora_python

PYBIND11_MODULE(_velmora, m) {
    namespace py = pybind11;
    using namespace velmora_python;
    m.doc() = "The compiled part of the package velmora; import velmora instead.";

    error_type() = py::reinterpret_steal<py::object>(
        PyErr_NewExceptionWithDoc("velmora.Error",
                                  "A failure of the library, or an argument it cannot take; the message says which.",
                                  PyExc_ValueError, nullptr));
    if (!error_type()) throw py::error_already_set();
    m.attr("Error") = error_type();
    install_message_sink();
    // The library's failures become velmora.Error with the library's message
    // and its source module as the attribute `source`.
    py::register_exception_translator([](std::exception_ptr p) {
        try {
            if (p) std::rethrow_exception(p);
        } catch (const velmora::Exception& e) {
            py::object err = error_type()(e.message);
            err.attr("source") = e.file;
            PyErr_SetObject(error_type().ptr(), err.ptr());
        }
    });

    bind_models(m);
    bind_fits(m);

    m.def("stats", &stats, py::arg("values"), py::arg("moments") = 5, py::arg("joint_moments") = 3,
          py::arg("lags") = 5, "The figures of a trace's summary as a dict; velmora.stats wraps it.");
    m.def("trace_summary", &trace_summary, py::arg("values"),
          "The text of a trace's summary, as sylvar prints it for its trace.");
    m.attr("library_name") = velmora::libVelmora_name_full();
}
