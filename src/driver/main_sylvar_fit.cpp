// sylvar-fit: fits a correlated model to a measured trace and writes it as
// a model file that sylvar generates from. The report goes to standard
// output; progress, the fitters' own lines and errors go to standard error.
// Any failure ends the program with status 1 and leaves no model file.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <new>
#include <sstream>
#include <string>
#include <utility>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "core/output_file.h"
#include "core/stage_timer.h"
#include "driver/sylvar_fit_usage.inc"
#include "fitting/mapem.h"
#include "fitting/tracefit.h"
#include "reporting/fit_report.h"
#include "traces/trace.h"
#include "traces/trace_read.h"

using namespace velmora;

namespace {

// The largest distance of a fitted autocorrelation from the trace's that
// passes without a warning.
const double kMissWarning = 0.05;

// A failure with the one line that reports it.
struct Failure {
    std::string message;
};

struct Options {
    std::string trace, out, plot;
    bool traceFormat = false;
    TraceFitRequest request;
    bool quiet = ::isatty(STDERR_FILENO) == 0;
    bool debug = false;
};

// A whole number in [low, high], strictly: no sign, no trailing text.
unsigned count(Config& c, const std::string& key, unsigned low, unsigned high) {
    const std::string v = c.getValue(key);
    const bool digits = v.find_first_not_of("0123456789") == std::string::npos && v.size() <= 9;
    if (!digits || std::stoul(v) < low || std::stoul(v) > high)
        throw Failure{"-" + key + " must be a whole number from " + std::to_string(low) + " to " +
                      std::to_string(high) + ", not '" + v + "'"};
    return static_cast<unsigned>(std::stoul(v));
}

Options parseArguments(int argc, char** argv) {
    Config c;
    try {
        c.loadConfigFromCommandLine(argc, argv, false);
    } catch (Exception& e) {
        throw Failure{e.message + " Arguments are -key=value; see sylvar-fit --help"};
    }
    const std::string known =
        " trace traceformat out model marginal phases order lags pmin pmax qmin qmax plot progress debug ";
    for (const std::string& key : c.getKeys())
        if (known.find(" " + key + " ") == std::string::npos)
            throw Failure{"unknown option -" + key + " (see sylvar-fit --help)"};
    Options o;
    TraceFitOrders& r = o.request.orders;
    if (c.existsKey("trace")) o.trace = c.getValue("trace");
    if (c.existsKey("out")) o.out = c.getValue("out");
    if (c.existsKey("plot")) o.plot = c.getValue("plot");
    if (c.existsKey("traceformat")) o.traceFormat = count(c, "traceformat", 0, 1) == 1;
    if (c.existsKey("model")) o.request.model = tracefit_model_from_name(c.getValue("model"));
    if (c.existsKey("marginal")) o.request.marginal = c.getValue("marginal");
    if (c.existsKey("phases")) o.request.phases = count(c, "phases", 1, distfit::kMaxPhases);
    if (c.existsKey("order")) o.request.mapOrder = count(c, "order", 1, mapem::kMaxOrder);
    if (c.existsKey("lags")) r.lags = count(c, "lags", 1, 100000);
    if (c.existsKey("pmin")) r.pMin = count(c, "pmin", 0, 20);
    if (c.existsKey("pmax")) r.pMax = count(c, "pmax", 0, 20);
    if (c.existsKey("qmin")) r.qMin = count(c, "qmin", 0, 20);
    if (c.existsKey("qmax")) r.qMax = count(c, "qmax", 0, 20);
    if (c.existsKey("progress")) o.quiet = count(c, "progress", 0, 1) == 0;
    if (c.existsKey("debug")) o.debug = count(c, "debug", 0, 1) == 1;
    if (o.trace.empty()) throw Failure{"no trace given (-trace=FILE; see sylvar-fit --help)"};
    if (o.out.empty()) throw Failure{"no model file given (-out=FILE; see sylvar-fit --help)"};
    if (r.pMin > r.pMax) throw Failure{"-pmin is above -pmax"};
    if (r.qMin > r.qMax) throw Failure{"-qmin is above -qmax"};
    if (o.debug) o.quiet = false;
    return o;
}

// The library's messages (the fitters' progress, warnings and debug lines)
// go on, indented, to standard error while the fit runs; debug messages
// only when asked for, nothing in quiet mode.
class ProgressSink {
public:
    explicit ProgressSink(const Options& o) {
        set_message_sink([&o](MessageKind kind, const std::string& text) {
            if (o.quiet || (kind == MessageKind::Debug && !o.debug)) return;
            std::istringstream in(text);
            for (std::string line; std::getline(in, line);)
                if (!line.empty()) std::cerr << "  " << line << "\n";
        });
    }
    ~ProgressSink() { set_message_sink(nullptr); }
    ProgressSink(const ProgressSink&) = delete;
    ProgressSink& operator=(const ProgressSink&) = delete;
};

// What a stage does, and what its failure is called.
std::pair<std::string, std::string> stageTexts(const Options& o, const std::string& stage) {
    const std::string& m = o.request.marginal;
    if (stage == "read") return {"reading the trace " + o.trace, "cannot read the trace: "};
    if (stage == "marginal")
        return {m.empty() ? "choosing the marginal family by AIC" : "fitting the marginal (" + m + ")",
                "the marginal fit failed: "};
    if (stage == "correlation")
        return {"fitting the correlation (model " + tracefit_model_name(o.request.model) + ", " +
                    std::to_string(o.request.orders.lags) + " lags)",
                "the correlation fit failed: "};
    if (stage == "plots") return {"rendering " + o.plot + "_acf.png and " + o.plot + "_cdf.png", "the plots failed: "};
    return {"writing " + o.out, "cannot write the model file: "};
}

int run(const Options& o) {
    const std::string problem = output_file_problem(o.out, {o.trace, o.request.marginal});
    if (!problem.empty()) throw Failure{"cannot write the model file '" + o.out + "': " + problem};
    StageTimer timer;
    auto stage = [&](const std::string& name) {
        if (!timer.current().empty()) timer.end();
        timer.begin(name);
        if (!o.quiet) std::cerr << "sylvar-fit: " << stageTexts(o, name).first << std::endl;
    };
    FitReportRun report{o.trace, o.out, {}, ""};
    TraceFitResult result;
    try {
        ProgressSink progress(o);
        stage("read");
        Trace trace;
        TraceFitRequest request = o.request;
        if (request.model == TRACEFIT_MMAP) {
            mapem::MarkedValues marked = mapem::read_marked_values(o.trace);
            trace = Trace(marked.values);
            request.classOf = std::move(marked.classOf);
            request.classNames = std::move(marked.names);
        } else {
            trace = Trace(read_trace_values(o.trace, o.traceFormat));
        }
        result = tracefit(trace, request, stage);
        if (!o.plot.empty()) {
            stage("plots");
            report.plots = fit_plots(o.plot, trace, result, o.request.orders.lags);
        }
        stage("write");
        write_file_atomically(o.out, tracefit_model_file_text(*result.model),
                              [&](const std::string& written) { tracefit_check_model_file(*result.model, written); });
        timer.end();
    } catch (Exception& e) {
        throw Failure{stageTexts(o, timer.current()).second + e.message};
    }
    report.times = timer.summary();
    std::cout << fit_report(result, report) << std::flush;
    const std::string warning = fit_miss_warning(result, kMissWarning);
    if (!warning.empty()) std::cerr << "sylvar-fit: " << warning << std::endl;
    if (!std::cout) throw Failure{"cannot write the report to standard output (the model file is written)"};
    return 0;
}

int fail(std::string message) {  // one line, whatever the message holds
    std::replace(message.begin(), message.end(), '\n', ' ');
    std::cerr << "sylvar-fit: " << message << std::endl;
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--help" || arg == "-help" || arg == "-h") {
            std::cout << kSylvarFitUsage << std::flush;
            return std::cout ? 0 : fail("cannot write to standard output");
        }
    }
    // Without standard output, a file opened later would take its place.
    if (::fcntl(STDOUT_FILENO, F_GETFD) == -1) return fail("standard output is closed");
    try {
        return run(parseArguments(argc, argv));
    } catch (Failure& f) {
        return fail(f.message);
    } catch (Exception& e) {
        return fail(e.message);
    } catch (std::bad_alloc&) {
        return fail("out of memory");
    }
}
