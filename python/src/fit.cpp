// The fits, as Python calls them. This file is the one place that knows the
// library's fit interfaces: each fit returns a plain dict of its figures,
// from which velmora/_results.py builds the result objects that users see.
#include "fit.h"

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "boundary.h"
#include "core/libvelmora_settings.h"
#include "core/process.h"
#include "distributions/dist.h"
#include "distributions/dist_hypererlang.h"
#include "distributions/dist_process.h"
#include "fitting/distfit.h"
#include "fitting/tracefit.h"
#include "reporting/fit_report.h"
#include "model.h"
#include "traces/trace.h"

namespace velmora_python {

namespace {

using velmora::distfit::Assessment;

// Bounds of the arguments: those of sylvar-fit.
const long long kMaxLags = 100000;
const long long kMaxOrder = 20;

py::array_t<double> to_array(const std::vector<double>& v) {
    return py::array_t<double>(static_cast<py::ssize_t>(v.size()), v.data());
}

py::dict assessment_dict(const Assessment& a) {
    py::dict d;
    d["family"] = a.family;
    d["parameters"] = a.parameters;
    d["n"] = a.n;
    d["loglik"] = a.logLikelihood;
    d["aic"] = a.aic;
    d["bic"] = a.bic;
    d["ks"] = a.ks;
    d["model_moments"] = std::vector<double>(a.modelMoments.begin(), a.modelMoments.end());
    d["data_moments"] = std::vector<double>(a.dataMoments.begin(), a.dataMoments.end());
    return d;
}

// A range of ARMA orders: a whole number fixes it, a pair (low, high) spans it.
void order_range(py::handle o, const char* what, unsigned& low, unsigned& high) {
    if (py::isinstance<py::sequence>(o) && !py::isinstance<py::str>(o)) {
        py::sequence s = py::reinterpret_borrow<py::sequence>(o);
        if (s.size() != 2) raise_error(std::string(what) + " must be a whole number or a pair (low, high)");
        low = static_cast<unsigned>(count_from(s[0], what, 0, kMaxOrder));
        high = static_cast<unsigned>(count_from(s[1], what, 0, kMaxOrder));
        if (low > high) raise_error(std::string(what) + ": the low order is above the high one");
        return;
    }
    low = high = static_cast<unsigned>(count_from(o, what, 0, kMaxOrder));
}

velmora::TraceFitOrders orders_from(py::handle order, py::handle lags) {
    velmora::TraceFitOrders orders;
    orders.lags = static_cast<unsigned>(count_from(lags, "lags", 1, kMaxLags));
    if (order.is_none()) return orders;
    if (!py::isinstance<py::sequence>(order) || py::isinstance<py::str>(order) || py::len(order) != 2)
        raise_error("order must be None or a pair (p, q) of ARMA orders, each a whole number or a pair (low, high)");
    py::sequence pq = py::reinterpret_borrow<py::sequence>(order);
    order_range(pq[0], "the AR order p", orders.pMin, orders.pMax);
    order_range(pq[1], "the MA order q", orders.qMin, orders.qMax);
    return orders;
}

py::dict fit_trace(py::handle values, const std::string& model, py::handle marginal, py::handle phases,
                   py::handle order, py::handle lags) {
    velmora::TraceFitRequest request;
    request.model = velmora::tracefit_model_from_name(model);
    request.orders = orders_from(order, lags);
    request.phases = static_cast<unsigned>(count_from(phases, "phases", 1, velmora::distfit::kMaxPhases));
    request.marginal = marginal.is_none() ? std::string() : path_from(marginal);
    const std::vector<double> data = values_from(values, "values", request.orders.lags + 2);

    std::string report;
    velmora::TraceFitResult r = run_in_library([&]() {
        velmora::Trace trace(data);
        velmora::TraceFitResult fit = velmora::tracefit(trace, request);
        report = velmora::fit_report(fit, velmora::FitReportRun());
        return fit;
    });

    py::dict d;
    d["model_class"] = r.modelClass;
    d["base_orders"] = r.hasOrders ? py::object(py::make_tuple(r.p, r.q)) : py::object(py::none());
    d["marginal_name"] = r.marginalName;
    d["marginal_source"] = r.marginalSource;
    d["marginal_parameters"] = r.marginalParameters;
    d["marginal"] = assessment_dict(r.assessment);
    py::list candidates;
    for (const auto& c : r.candidates) {
        py::dict cd;
        cd["family"] = c.family;
        cd["phases"] = c.phases;
        cd["fitted"] = c.fitted;
        cd["reason"] = c.reason;
        cd["assessment"] = c.fitted ? py::object(assessment_dict(c.assessment)) : py::object(py::none());
        candidates.append(cd);
    }
    d["candidates"] = candidates;
    d["acf_trace"] = to_array(r.targets);
    d["acf_model"] = to_array(r.fitted);
    d["joint_loglik"] =
        std::isfinite(r.jointLogLikelihood) ? py::object(py::float_(r.jointLogLikelihood)) : py::object(py::none());
    d["values"] = data.size();
    d["lags"] = request.orders.lags;
    d["report"] = report;
    d["model"] = wrap(std::move(r.model));
    return d;
}

py::dict fit_distribution(py::handle values, const std::string& family, py::handle phases) {
    const unsigned phaseCount = static_cast<unsigned>(count_from(phases, "phases", 0, velmora::distfit::kMaxPhases));
    const std::vector<double> data = values_from(values, "values");
    Assessment a;
    std::unique_ptr<velmora::Process> model = run_in_library([&]() {
        std::unique_ptr<velmora::Dist> dist = velmora::distfit::fit_distribution(family, data, phaseCount);
        a = velmora::distfit::assess(dist.get(), data);
        return std::unique_ptr<velmora::Process>(new velmora::DistProcess(dist.release()));
    });
    py::dict d = assessment_dict(a);
    d["model"] = wrap(std::move(model));
    return d;
}

py::dict fit_hypererlang(py::handle values, py::handle phases, py::handle maxIterations, double tolerance) {
    const unsigned phaseCount = static_cast<unsigned>(count_from(phases, "phases", 1, velmora::distfit::kMaxPhases));
    velmora::distfit::EMOptions options;
    options.maxIterations = static_cast<unsigned>(count_from(maxIterations, "max_iterations", 1, 1000000));
    if (!(tolerance >= 0 && tolerance < 1)) raise_error("tolerance must be from 0 to below 1");
    options.tolerance = tolerance;
    const std::vector<double> data = values_from(values, "values");
    Assessment a;
    velmora::distfit::EMReport report;
    std::unique_ptr<velmora::Process> model = run_in_library([&]() {
        std::unique_ptr<velmora::HyperErlang> h(
            velmora::distfit::fit_hypererlang(data, phaseCount, &report, options));
        a = velmora::distfit::assess(h.get(), data);
        return std::unique_ptr<velmora::Process>(new velmora::DistProcess(h.release()));
    });
    py::dict d = assessment_dict(a);
    py::dict em;
    em["structure"] = report.structure;
    em["loglik"] = report.logLikelihood;
    em["iterations"] = report.iterations;
    em["converged"] = report.converged;
    em["structures"] = report.structures;
    em["unconverged"] = report.unconverged;
    em["bins"] = report.bins;
    d["em"] = em;
    d["model"] = wrap(std::move(model));
    return d;
}

}  // namespace

void bind_fits(py::module_& m) {
    m.def("fit_trace", &fit_trace, py::arg("values"), py::arg("model"), py::arg("marginal"), py::arg("phases"),
          py::arg("order"), py::arg("lags"), "The trace fit's figures as a dict; velmora.fit wraps it.");
    m.def("fit_distribution", &fit_distribution, py::arg("values"), py::arg("family"), py::arg("phases"),
          "A family fitted to values, as a dict; velmora.fit_distribution wraps it.");
    m.def("fit_hypererlang", &fit_hypererlang, py::arg("values"), py::arg("phases"), py::arg("max_iterations"),
          py::arg("tolerance"), "The hyper-Erlang EM, as a dict; velmora.fit_hypererlang wraps it.");
}

}  // namespace velmora_python
