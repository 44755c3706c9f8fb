#include "model.h"

#include <pybind11/numpy.h>

#include <cctype>
#include <cmath>
#include <fstream>
#include <limits>
#include <sstream>
#include <vector>

#include "boundary.h"
#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "config/process_files.h"
#include "distributions/dist_process.h"
#include "fitting/process_factory.h"
#include "traces/trace.h"

namespace velmora_python {

using velmora::Process;

namespace {

// Lags and moment orders a caller may ask for: enough for any analysis, and
// few enough that the integrals behind the correlated models end soon.
const long long kMaxLag = 100000;
const long long kMaxMomentOrder = 30;

// Runs `f` on the model's process under the model's lock, the GIL released.
template <class F>
auto with_process(Model& self, F&& f) -> decltype(f(self.process())) {
    return run_in_library([&]() {
        std::lock_guard<std::mutex> hold(self.lock);
        return f(self.process());
    });
}

py::array_t<double> simulate(Model& self, py::handle n, py::handle seed) {
    const long long limit = velmora::simulation_value_limit();
    const long long count = count_from(n, "n", 0, std::numeric_limits<long long>::max());
    if (count > limit)
        raise_error("n = " + std::to_string(count) + " exceeds the memory budget of " + std::to_string(limit) +
                    " values");
    const unsigned s = seed_from(seed);
    py::array_t<double> out(static_cast<py::ssize_t>(count));
    double* data = out.mutable_data();
    {
        // Generation keeps to the model's own state, so separate models
        // generate on separate cores. The values are those of
        // Process::simulate by count: seed, then draw in order.
        py::gil_scoped_release release;
        std::lock_guard<std::mutex> hold(self.lock);
        Process& p = self.process();
        p.initRandomNumberGeneration(s);
        for (long long i = 0; i < count; ++i) data[i] = p.getNextRandomVariate();
    }
    return out;
}

// Lags 1..k for a whole number k, or the lags listed.
std::vector<unsigned> lags_from(py::handle lags) {
    std::vector<unsigned> wanted;
    if (PyIndex_Check(lags.ptr()) || py::isinstance<py::bool_>(lags)) {
        const long long k = count_from(lags, "lags", 1, kMaxLag);
        for (long long l = 1; l <= k; ++l) wanted.push_back(static_cast<unsigned>(l));
        return wanted;
    }
    if ((!py::isinstance<py::sequence>(lags) && !py::isinstance<py::array>(lags)) || py::isinstance<py::str>(lags) ||
        py::isinstance<py::bytes>(lags))
        raise_error("lags must be a whole number or a sequence of whole numbers");
    for (py::handle l : py::iterable(py::reinterpret_borrow<py::object>(lags)))
        wanted.push_back(static_cast<unsigned>(count_from(l, "each lag", 1, kMaxLag)));
    if (wanted.empty()) raise_error("lags is empty");
    return wanted;
}

py::array_t<double> acf(Model& self, py::handle lags) {
    const std::vector<unsigned> wanted = lags_from(lags);
    unsigned lo = wanted[0], hi = wanted[0];
    for (unsigned l : wanted) lo = std::min(lo, l), hi = std::max(hi, l);
    const std::vector<double> r = with_process(self, [&](Process& p) { return p.getAutocorrelations(lo, hi); });
    py::array_t<double> out(static_cast<py::ssize_t>(wanted.size()));
    for (std::size_t i = 0; i < wanted.size(); ++i) out.mutable_data()[i] = r.at(wanted[i] - lo);
    return out;
}

py::array_t<double> moments(Model& self, py::handle k) {
    const unsigned last = static_cast<unsigned>(count_from(k, "k", 1, kMaxMomentOrder));
    const std::vector<double> m = with_process(self, [&](Process& p) { return p.getMoments(1, last); });
    return py::array_t<double>(static_cast<py::ssize_t>(m.size()), m.data());
}

// f at every point of x, of x's shape; a float for a scalar. NaN gives NaN
// and the infinities the function's limits, without asking the model.
py::object evaluate(Model& self, py::handle x, double (Process::*f)(double), double atMinusInf, double atPlusInf) {
    using Array = py::array_t<double, py::array::c_style | py::array::forcecast>;
    const bool number_like = !py::isinstance<py::str>(x) && !py::isinstance<py::bytes>(x) && !x.is_none();
    Array a = number_like ? Array::ensure(x) : Array();
    if (!number_like || !a) {
        PyErr_Clear();
        raise_error("x must be a number or an array of numbers");
    }
    Array out(std::vector<py::ssize_t>(a.shape(), a.shape() + a.ndim()));
    const double* in = a.data();
    double* res = out.mutable_data();
    const py::ssize_t n = a.size();
    with_process(self, [&](Process& p) {
        for (py::ssize_t i = 0; i < n; ++i) {
            const double v = in[i];
            res[i] = std::isnan(v) ? v : std::isinf(v) ? (v < 0 ? atMinusInf : atPlusInf) : (p.*f)(v);
        }
        return 0;
    });
    if (a.ndim() == 0) return py::float_(res[0]);
    return std::move(out);
}

double loglik(Model& self, py::handle values) {
    velmora::Trace trace(values_from(values, "values"));
    return with_process(self, [&](Process& p) { return p.computeLikelihood(&trace); });
}

void save(Model& self, py::handle path) {
    const std::string file = path_from(path);
    require_writable(file);
    with_process(self, [&](Process& p) {
        p.save(file, velmora::FORMAT_XML);
        return 0;
    });
}

std::string to_xml(Model& self) {
    return with_process(self, [](Process& p) { return velmora::processFileText(p, velmora::FORMAT_XML); });
}

std::string summary(Model& self) {
    return with_process(self, [](Process& p) { return p.getSummary(); });
}

std::string kind(Model& self) {
    std::lock_guard<std::mutex> hold(self.lock);
    return self.process().getProcessTypeString();
}

std::string repr(py::handle obj) {
    Model& self = obj.cast<Model&>();
    const std::string cls = py::str(obj.get_type().attr("__name__"));
    std::string text;
    with_process(self, [&](Process& p) {
        text = p.getProcessDescription();
        if (auto* d = dynamic_cast<velmora::DistProcess*>(&p))
            if (d->getDistribution() != nullptr) text = velmora::Dist::getDistType(d->getDistribution()->getType());
        try {
            std::ostringstream s;
            s << ", mean " << p.getMoments(1, 1).at(0);
            text += s.str();
        } catch (velmora::Exception&) {
        }
        return 0;
    });
    return "<velmora." + cls + " " + text + ">";
}

std::string family(ModelOf<velmora::PROCESS_DIST>& self) {
    return with_process(self, [](Process& p) {
        velmora::Dist* d = static_cast<velmora::DistProcess&>(p).getDistribution();
        return d ? velmora::Dist::getDistType(d->getType()) : std::string("none");
    });
}

// The first character that is not blank decides: "<" begins an XML model
// file, anything else a key-value one.
bool looks_like_xml(const std::string& file) {
    std::ifstream in(file.c_str());
    char c;
    while (in.get(c))
        if (!std::isspace(static_cast<unsigned char>(c))) return c == '<';
    return false;
}

std::unique_ptr<Process> read_model_file(const std::string& file) {
    try {
        if (looks_like_xml(file)) {
            velmora::XMLConfig document(file);
            return std::unique_ptr<Process>(velmora::load_process(&document));
        }
        velmora::Config config;
        config.setValue("model", file, true);
        return std::unique_ptr<Process>(velmora::load_process(&config));
    } catch (velmora::Exception& e) {
        e.message = file + ": " + e.message;
        throw;
    }
}

py::object load(py::handle path) {
    const std::string file = path_from(path);
    require_readable(file);
    return wrap(run_in_library([&]() { return read_model_file(file); }));
}

template <velmora::process_type T>
void bind_kind(py::module_& m, const char* name, const char* doc) {
    py::class_<ModelOf<T>, Model, std::unique_ptr<ModelOf<T>>>(m, name, doc);
}

}  // namespace

Model::Model(std::unique_ptr<velmora::Process> process) : owned(std::move(process)) {}
Model::~Model() = default;

py::object wrap(std::unique_ptr<Process> process) {
    if (!process) raise_error("no model was built");
    switch (process->getProcessType()) {
        case velmora::PROCESS_MAP: return py::cast(std::make_unique<ModelOf<velmora::PROCESS_MAP>>(std::move(process)));
        case velmora::PROCESS_MEP: return py::cast(std::make_unique<ModelOf<velmora::PROCESS_MEP>>(std::move(process)));
        case velmora::PROCESS_CPH: return py::cast(std::make_unique<ModelOf<velmora::PROCESS_CPH>>(std::move(process)));
        case velmora::PROCESS_ARIMA:
            return py::cast(std::make_unique<ModelOf<velmora::PROCESS_ARIMA>>(std::move(process)));
        case velmora::PROCESS_ARTA: return py::cast(std::make_unique<ModelOf<velmora::PROCESS_ARTA>>(std::move(process)));
        case velmora::PROCESS_DIST: return py::cast(std::make_unique<ModelOf<velmora::PROCESS_DIST>>(std::move(process)));
        case velmora::PROCESS_CHEP: return py::cast(std::make_unique<ModelOf<velmora::PROCESS_CHEP>>(std::move(process)));
        case velmora::PROCESS_CAPP: return py::cast(std::make_unique<ModelOf<velmora::PROCESS_CAPP>>(std::move(process)));
        default: return py::cast(std::make_unique<Model>(std::move(process)));
    }
}

py::object model_from_xml(const std::string& text) {
    return wrap(run_in_library([&]() {
        std::unique_ptr<velmora::XMLConfig> document = velmora::XMLConfig::fromText(text);
        return std::unique_ptr<Process>(velmora::load_process(document.get()));
    }));
}

void bind_models(py::module_& m) {
    py::class_<Model, std::unique_ptr<Model>> model(m, "Model", R"doc(
A stochastic process of the toolkit: generates values and answers for its
statistics. Made by velmora.load, by the fits, or by unpickling; the classes
MAP, PH, ARIMA, ARTA, CAPP, CHEP, Dist and MEP derive from it.

A model may be used from several threads: calls on one model wait for each
other, and separate models generate values on separate cores at once.)doc");
    model
        .def("simulate", &simulate, py::arg("n"), py::arg("seed") = 13, R"doc(
simulate(n, seed=13) -> numpy.ndarray

n values of the process, as a 1-D float64 array: the values, in order, that
`sylvar -seed=SEED -observations=N` writes to its trace (13 is sylvar's
default seed). The stream restarts from the seed at each call.

n: whole number from 0 up to the memory budget of the library.
seed: whole number from 0 to 2**32 - 1.)doc")
        .def("acf", &acf, py::arg("lags"), R"doc(
acf(lags) -> numpy.ndarray

Autocorrelations of the process: at lags 1 to `lags` for a whole number, or
at each lag of a sequence (every lag from 1 to 100000).)doc")
        .def("moments", &moments, py::arg("k"), R"doc(
moments(k) -> numpy.ndarray

The raw moments E[X], E[X^2], ..., E[X^k] of the stationary values, k from 1 to 30.)doc")
        .def(
            "pdf", [](Model& self, py::handle x) { return evaluate(self, x, &Process::evalPDF, 0.0, 0.0); },
            py::arg("x"), R"doc(
pdf(x) -> float or numpy.ndarray

Density of the stationary values at x, a number or an array of any shape
(the result has its shape). NaN gives NaN, the infinities 0.)doc")
        .def(
            "cdf", [](Model& self, py::handle x) { return evaluate(self, x, &Process::evalCDF, 0.0, 1.0); },
            py::arg("x"), R"doc(
cdf(x) -> float or numpy.ndarray

Distribution function of the stationary values at x, a number or an array
of any shape. NaN gives NaN, -inf 0 and +inf 1.)doc")
        .def("loglik", &loglik, py::arg("values"), R"doc(
loglik(values) -> float

The log-likelihood of a sequence of values under the model, for the classes
that have one (MAP, PH, Dist); the others raise velmora.Error.)doc")
        .def("save", &save, py::arg("path"), R"doc(
save(path)

Writes the model as an XML model file, which velmora.load and sylvar read.
Raises OSError when the file cannot be written.)doc")
        .def("to_xml", &to_xml, R"doc(
to_xml() -> str

The text of the XML model file that save writes. Models pickle through it.)doc")
        .def("summary", &summary, R"doc(
summary() -> str

The model's summary, as sylvar prints it before the trace's.)doc")
        .def_property_readonly("kind", &kind, "The library's name of the model class (\"MAP\", \"ARTA\", ...).")
        .def("__repr__", &repr)
        .def(
            "__reduce__",
            [](Model& self) {
                return py::make_tuple(py::module_::import("velmora").attr("_from_xml"), py::make_tuple(to_xml(self)));
            },
            "Pickles the model as its XML text.");

    bind_kind<velmora::PROCESS_MAP>(m, "MAP", "Markovian arrival process (XML tag map).");
    bind_kind<velmora::PROCESS_MEP>(m, "MEP", "Matrix-exponential process.");
    bind_kind<velmora::PROCESS_CPH>(m, "PH", "Continuous phase-type distribution as a renewal process (XML tag ph).");
    bind_kind<velmora::PROCESS_ARIMA>(m, "ARIMA", "ARMA process with normal innovations (XML tag arima).");
    bind_kind<velmora::PROCESS_ARTA>(m, "ARTA", "ARMA process carried onto a marginal distribution (XML tag arta).");
    bind_kind<velmora::PROCESS_CHEP>(m, "CHEP", "Correlated hyper-Erlang process (XML tag chep).");
    bind_kind<velmora::PROCESS_CAPP>(m, "CAPP", "Correlated acyclic phase-type process (XML tag capp).");
    py::class_<ModelOf<velmora::PROCESS_DIST>, Model, std::unique_ptr<ModelOf<velmora::PROCESS_DIST>>>(
        m, "Dist", "A distribution family as a stream of independent values (XML tag dist).")
        .def_property_readonly("family", &family, "The family's name (\"gamma\", \"hypererlang\", ...).");

    m.def("load", &load, py::arg("path"), R"doc(
load(path) -> Model

Reads a model file: an XML model file (root element velmora, one model
element: ph, map, arima, arta, chep, capp or dist) or a key-value model file.
Raises OSError when the file cannot be read and velmora.Error, with the
library's message, when it holds no valid model.)doc");
    m.def("model_from_xml", &model_from_xml, py::arg("text"), R"doc(
model_from_xml(text) -> Model

The model of an XML model text, such as Model.to_xml gives.)doc");
}

}  // namespace velmora_python
