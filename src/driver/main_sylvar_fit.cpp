// sylvar-fit: fits a correlated model to a measured trace and writes it as
// a model file that sylvar generates from. The report goes to standard
// output; progress, the fitters' own lines and errors go to standard error.
// Any failure ends the program with status 1 and leaves no model file.
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <new>
#include <sstream>
#include <streambuf>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "core/libvelmora_settings.h"
#include "core/process.h"
#include "fitting/distfit.h"
#include "fitting/tracefit.h"
#include "reporting/plotter.h"
#include "traces/trace.h"

using namespace velmora;

namespace {

const char* const kUsage =
    "Usage: sylvar-fit -trace=FILE -out=MODEL.xml [options]\n"
    "\n"
    "Fits a correlated model to the values of a measured trace and writes it as a\n"
    "model file, from which 'sylvar -model=MODEL.xml' generates synthetic traces.\n"
    "\n"
    "Options (each as -key=value):\n"
    "  -trace=FILE         the measured values, one per line (required)\n"
    "  -traceFormat=0|1    1: the first line holds the number of values (default 0)\n"
    "  -out=FILE           the model file to write (required); it is written only\n"
    "                      when every stage succeeded\n"
    "  -model=CLASS        auto (default): the marginal's family chooses ARTA, CAPP\n"
    "                      or CHEP; arta, capp, chep or map force the class\n"
    "  -marginal=WHAT      a family fitted to the values (normal, exponential,\n"
    "                      gamma, lognormal, weibull, erlang, hypererlang, ...), or\n"
    "                      an XML model file holding a dist or ph model; by default\n"
    "                      the family of lowest AIC among normal, exponential,\n"
    "                      gamma, lognormal, weibull and hypererlang\n"
    "  -phases=N           largest total phase count of a hyper-Erlang, 1..64\n"
    "                      (default 6); the count is chosen by AIC\n"
    "  -lags=N             autocorrelation lags to fit, lag 1 first (default 10)\n"
    "  -pmin=N -pmax=N     AR orders of the base process tried (default 1..3)\n"
    "  -qmin=N -qmax=N     MA orders of the base process tried (default 0..1)\n"
    "  -plot=BASE          also render BASE_acf.png and BASE_cdf.png with gnuplot:\n"
    "                      autocorrelations and distribution of trace and model\n"
    "                      (their scripts and data files stay beside them)\n"
    "  -progress=0|1       stage lines and the fitters' progress on standard error\n"
    "                      (default: 1 when standard error is a terminal)\n"
    "  -debug=1            the fitters' debug lines as well (implies -progress=1)\n"
    "  --help              this text\n"
    "\n"
    "CAPP and MAP need a phase-type marginal (exponential, erlang, hypoexponential,\n"
    "hyperexponential, hypererlang or a ph file), CHEP a hyper-Erlang one.\n"
    "The fit report goes to standard output. On any failure one line goes to\n"
    "standard error, no model file is written, and the exit status is 1.\n"
    "\n"
    "Example:\n"
    "  sylvar -model=examples/chep.xml -trace=measured.txt -observations=200000\n"
    "  sylvar-fit -trace=measured.txt -out=fitted.xml -marginal=hypererlang\n"
    "  sylvar -model=fitted.xml -trace=synthetic.txt -observations=200000\n";

// The largest distance of a fitted autocorrelation from the trace's that
// passes without a warning.
const double kMissWarning = 0.05;

// A failure with the one line that reports it.
struct Failure {
    std::string message;
};

struct Options {
    std::string trace;
    bool traceFormat = false;
    std::string out;
    tracefit_model model = TRACEFIT_AUTO;
    std::string marginal;
    unsigned phases = 6;
    TraceFitOrders orders;
    std::string plot;
    bool quiet = ::isatty(STDERR_FILENO) == 0;
    bool debug = false;
};

unsigned parseCount(const std::string& key, const std::string& value, unsigned low, unsigned high) {
    char* end = nullptr;
    errno = 0;
    const unsigned long v = std::strtoul(value.c_str(), &end, 10);
    if (value.empty() || !std::isdigit(static_cast<unsigned char>(value[0])) || *end != '\0' || errno != 0 ||
        v < low || v > high)
        throw Failure{"-" + key + " must be a whole number from " + std::to_string(low) + " to " +
                      std::to_string(high) + ", not '" + value + "'"};
    return static_cast<unsigned>(v);
}

bool parseFlag(const std::string& key, const std::string& value) { return parseCount(key, value, 0, 1) == 1; }

// Keys are read case-insensitively, as sylvar reads them.
Options parseArguments(int argc, char** argv) {
    Options o;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const std::string::size_type eq = arg.find('=');
        if (arg.size() < 2 || arg[0] != '-' || eq == std::string::npos || eq < 2)
            throw Failure{"invalid argument '" + arg + "' (arguments are -key=value; see sylvar-fit --help)"};
        std::string key = arg.substr(1, eq - 1);
        std::transform(key.begin(), key.end(), key.begin(), [](unsigned char c) { return std::tolower(c); });
        const std::string value = arg.substr(eq + 1);
        if (value.empty()) throw Failure{"-" + key + " has no value"};
        if (key == "trace") o.trace = value;
        else if (key == "traceformat") o.traceFormat = parseFlag(key, value);
        else if (key == "out") o.out = value;
        else if (key == "model") {
            try {
                o.model = tracefit_model_from_name(value);
            } catch (Exception&) {
                throw Failure{"unknown model class '" + value + "' (choose auto, arta, capp, chep or map)"};
            }
        } else if (key == "marginal") o.marginal = value;
        else if (key == "phases") o.phases = parseCount(key, value, 1, distfit::kMaxPhases);
        else if (key == "lags") o.orders.lags = parseCount(key, value, 1, 100000);
        else if (key == "pmin") o.orders.pMin = parseCount(key, value, 0, 20);
        else if (key == "pmax") o.orders.pMax = parseCount(key, value, 0, 20);
        else if (key == "qmin") o.orders.qMin = parseCount(key, value, 0, 20);
        else if (key == "qmax") o.orders.qMax = parseCount(key, value, 0, 20);
        else if (key == "plot") o.plot = value;
        else if (key == "progress") o.quiet = !parseFlag(key, value);
        else if (key == "debug") o.debug = parseFlag(key, value);
        else throw Failure{"unknown option -" + key + " (see sylvar-fit --help)"};
    }
    if (o.trace.empty()) throw Failure{"no trace given (-trace=FILE; see sylvar-fit --help)"};
    if (o.out.empty()) throw Failure{"no model file given (-out=FILE; see sylvar-fit --help)"};
    if (o.orders.pMin > o.orders.pMax) throw Failure{"-pmin is above -pmax"};
    if (o.orders.qMin > o.orders.qMax) throw Failure{"-qmin is above -qmax"};
    if (o.debug) o.quiet = false;
    return o;
}

// Standard output of the library (the fitters' progress, warnings and debug
// lines) goes on to standard error, indented, while a stage runs. Each of
// the library's messages ends with a flush, so a debug message of several
// lines is recognised as a whole by its first word; debug messages pass only
// when asked for, and nothing passes in quiet mode.
class ProgressBuffer : public std::streambuf {
public:
    ProgressBuffer(std::streambuf* target, bool quiet, bool debug) : target(target), quiet(quiet), debug(debug) {}
    ~ProgressBuffer() override { emit(); }

protected:
    int overflow(int c) override {
        if (c != traits_type::eof()) pending.push_back(static_cast<char>(c));
        return traits_type::not_eof(c);
    }
    std::streamsize xsputn(const char* s, std::streamsize n) override {
        pending.append(s, static_cast<std::size_t>(n));
        return n;
    }
    int sync() override {
        emit();
        return target->pubsync();
    }

private:
    void emit() {
        const bool isDebug = pending.compare(0, 5, "DEBUG") == 0;
        if (!quiet && (debug || !isDebug)) {
            std::istringstream in(pending);
            std::string line;
            while (std::getline(in, line)) {
                if (line.empty()) continue;
                target->sputn("  ", 2);
                target->sputn(line.data(), static_cast<std::streamsize>(line.size()));
                target->sputc('\n');
            }
        }
        pending.clear();
    }
    std::streambuf* target;
    bool quiet;
    bool debug;
    std::string pending;
};

// Points std::cout at a ProgressBuffer for its lifetime.
class ProgressRedirect {
public:
    ProgressRedirect(bool quiet, bool debug) : buffer(std::cerr.rdbuf(), quiet, debug) {
        saved = std::cout.rdbuf(&buffer);
    }
    ~ProgressRedirect() {
        std::cout.flush();
        std::cout.rdbuf(saved);
    }
    ProgressRedirect(const ProgressRedirect&) = delete;
    ProgressRedirect& operator=(const ProgressRedirect&) = delete;

private:
    ProgressBuffer buffer;
    std::streambuf* saved;
};

class Stages {
public:
    explicit Stages(bool quiet) : quiet(quiet), start(Clock::now()) {}
    void begin(const std::string& name, const std::string& what) {
        current = name;
        if (!quiet) std::cerr << "sylvar-fit: " << what << std::endl;
        began = Clock::now();
    }
    void end() { times.emplace_back(current, seconds(began)); }
    const std::string& name() const { return current; }
    std::string summary() const {
        std::ostringstream s;
        for (const auto& t : times) s << t.first << " " << format(t.second) << ", ";
        s << "total " << format(seconds(start));
        return s.str();
    }

private:
    using Clock = std::chrono::steady_clock;
    static double seconds(Clock::time_point from) {
        return std::chrono::duration<double>(Clock::now() - from).count();
    }
    static std::string format(double s) {
        char buf[32];
        std::snprintf(buf, sizeof buf, "%.2f s", s);
        return buf;
    }
    bool quiet;
    Clock::time_point start;
    Clock::time_point began;
    std::string current;
    std::vector<std::pair<std::string, double>> times;
};

bool isDirectory(const std::string& path) {
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

// The model goes to a temporary file beside the target and is renamed onto
// it, so that a failure never leaves a partial model file behind.
std::string temporaryName(const std::string& out) { return out + ".part" + std::to_string(::getpid()); }

bool sameFile(const std::string& a, const std::string& b) {
    struct stat sa, sb;
    return ::stat(a.c_str(), &sa) == 0 && ::stat(b.c_str(), &sb) == 0 && sa.st_dev == sb.st_dev &&
           sa.st_ino == sb.st_ino;
}

void checkWritable(const std::string& out, const std::string& trace) {
    if (sameFile(out, trace)) throw Failure{"the model file '" + out + "' is the trace itself"};
    if (isDirectory(out)) throw Failure{"cannot write the model file '" + out + "': it is a directory"};
    const std::string tmp = temporaryName(out);
    std::FILE* f = std::fopen(tmp.c_str(), "w");
    if (f == nullptr) throw Failure{"cannot write the model file '" + out + "': " + std::strerror(errno)};
    std::fclose(f);
    std::remove(tmp.c_str());
}

void writeModel(Process* model, const std::string& out) {
    const std::string tmp = temporaryName(out);
    try {
        model->save(tmp, FORMAT_XML);
    } catch (...) {
        std::remove(tmp.c_str());
        throw;
    }
    std::ifstream check(tmp.c_str());
    if (!check.is_open() || check.peek() == std::ifstream::traits_type::eof()) {
        std::remove(tmp.c_str());
        throw Failure{"cannot write the model file '" + out + "'"};
    }
    if (std::rename(tmp.c_str(), out.c_str()) != 0) {
        const std::string reason = std::strerror(errno);
        std::remove(tmp.c_str());
        throw Failure{"cannot write the model file '" + out + "': " + reason};
    }
}

// A value that rounds to zero is shown without a minus sign.
std::string number(double x, const char* form = "%.6g") {
    if (std::isnan(x)) return "-";
    char buf[64];
    std::snprintf(buf, sizeof buf, form, x);
    std::string text = buf;
    if (std::isfinite(x) && text[0] == '-' && text.find_first_of("123456789") == std::string::npos)
        text[0] = std::strchr(form, '+') != nullptr ? '+' : ' ';
    if (text[0] == ' ') text.erase(0, 1);
    return text;
}

std::string indent(const std::string& text) {
    std::istringstream in(text);
    std::string line;
    std::string out;
    while (std::getline(in, line))
        if (!line.empty()) out += "  " + line + "\n";
    return out;
}

struct Report {
    std::string traceName;
    std::size_t values = 0;
    std::string marginalName;
    std::string marginalSource;
    std::string parameters;
    distfit::Assessment assessment;
    std::vector<distfit::Candidate> candidates;
    std::string modelClass;
    bool hasOrders = false;
    unsigned p = 0, q = 0;
    std::vector<double> targets;
    std::vector<double> fitted;
    std::string out;
    std::vector<std::string> plots;
    std::string times;
};

std::string candidateName(const distfit::Candidate& c) {
    return c.phases > 0 ? c.family + "(" + std::to_string(c.phases) + ")" : c.family;
}

std::string reportText(const Report& r) {
    std::ostringstream s;
    char line[256];
    s << "sylvar-fit, " << libVelmora_name_full() << "\n\n";
    s << "Trace      " << r.traceName << ", " << r.values << " values\n\n";

    s << "Marginal   " << r.marginalName;
    if (r.marginalSource == "AIC choice")
        s << ", the lowest AIC of " << r.candidates.size() << " candidates";
    else if (r.marginalSource == "file")
        s << ", read from the model file";
    else
        s << ", fitted to the values";
    if (r.assessment.family == "hypererlang" && !r.candidates.empty())
        s << " (phase count chosen by AIC)";
    s << "\n" << indent(r.parameters);
    const distfit::Assessment& a = r.assessment;
    s << "  log-likelihood  " << number(a.logLikelihood, "%.10g") << "\n";
    s << "  AIC             " << number(a.aic, "%.10g") << " (" << a.parameters << " parameters)\n";
    s << "  KS distance     " << number(a.ks, "%.5f") << "\n";
    std::snprintf(line, sizeof line, "  %-8s %14s %14s %11s\n", "moment", "trace", "model", "difference");
    s << line;
    const char* names[] = {"E[X]", "E[X^2]", "E[X^3]"};
    for (unsigned i = 0; i < 3; ++i) {
        const double t = a.dataMoments[i];
        const double m = a.modelMoments[i];
        const std::string diff = std::isnan(m) || t == 0 ? "-" : number(100 * (m - t) / std::fabs(t), "%+.2f %%");
        std::snprintf(line, sizeof line, "  %-8s %14s %14s %11s\n", names[i], number(t).c_str(), number(m).c_str(),
                      diff.c_str());
        s << line;
    }
    if (r.candidates.size() > 1) {
        s << "\nCandidates (lowest AIC first)\n";
        std::snprintf(line, sizeof line, "  %-16s %16s %16s %9s\n", "family", "log-likelihood", "AIC", "KS");
        s << line;
        std::vector<const distfit::Candidate*> order;
        for (const auto& c : r.candidates) order.push_back(&c);
        std::stable_sort(order.begin(), order.end(), [](const distfit::Candidate* x, const distfit::Candidate* y) {
            if (x->fitted != y->fitted) return x->fitted;
            return x->fitted && x->assessment.aic < y->assessment.aic;
        });
        for (const distfit::Candidate* c : order) {
            if (c->fitted) {
                std::snprintf(line, sizeof line, "  %-16s %16s %16s %9s\n", candidateName(*c).c_str(),
                              number(c->assessment.logLikelihood, "%.8g").c_str(),
                              number(c->assessment.aic, "%.8g").c_str(), number(c->assessment.ks, "%.5f").c_str());
                s << line;
            } else {
                s << "  " << candidateName(*c) << ": not fitted (" << c->reason << ")\n";
            }
        }
    }

    s << "\nModel      " << r.modelClass;
    if (r.hasOrders) s << " on an ARMA(" << r.p << ", " << r.q << ") base process";
    s << "\n";
    std::snprintf(line, sizeof line, "  %-5s %12s %12s %12s\n", "lag", "trace", "model", "difference");
    s << line;
    for (std::size_t i = 0; i < r.targets.size(); ++i) {
        const double f = i < r.fitted.size() ? r.fitted[i] : NAN;
        std::snprintf(line, sizeof line, "  %-5zu %12s %12s %12s\n", i + 1, number(r.targets[i], "%.6f").c_str(),
                      number(f, "%.6f").c_str(), number(f - r.targets[i], "%+.6f").c_str());
        s << line;
    }
    s << "\nWritten    " << r.out << "\n";
    for (const std::string& p : r.plots) s << "           " << p << "\n";
    s << "Time       " << r.times << "\n";
    return s.str();
}

bool fileExists(const std::string& path) {
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode) && st.st_size > 0;
}

// The CDF is drawn from 0 (or the smallest value, when it lies below) to the
// 99th percentile, where the body of the distribution lies.
std::vector<std::string> renderPlots(const std::string& base, Trace* trace, std::vector<double> sorted,
                                     Process* model, unsigned lags) {
    std::sort(sorted.begin(), sorted.end());
    const double lower = std::min(0.0, sorted.front());
    const double upper = sorted[static_cast<std::size_t>(0.99 * (sorted.size() - 1))];
    Plotter::ProcessList list = {{trace, "trace"}, {model, "model"}};
    const std::vector<std::string> files = {base + "_acf.png", base + "_cdf.png"};
    for (const std::string& f : files) std::remove(f.c_str());
    Plotter::plot_autocorrelations(list, 1, lags, base + "_acf", "png", 2, "");
    Plotter::plot_cdf(list, base + "_cdf", "png", lower, upper, 2, "");
    for (const std::string& f : files)
        if (!fileExists(f)) throw Failure{"gnuplot did not make " + f + " (is gnuplot installed?)"};
    return files;
}

// One line, whatever the message holds.
int fail(std::string message) {
    std::replace(message.begin(), message.end(), '\n', ' ');
    std::cout.flush();
    std::cerr << "sylvar-fit: " << message << std::endl;
    return 1;
}

// A model that misses the trace's autocorrelations widely is still written,
// with a warning that points at the report's table. Such a miss comes from
// targets that the marginal cannot reach, or that no ARMA base process of
// the orders tried follows.
void warnOfMisses(const Report& r) {
    std::size_t worst = 0;
    for (std::size_t i = 1; i < r.targets.size() && i < r.fitted.size(); ++i)
        if (std::fabs(r.fitted[i] - r.targets[i]) > std::fabs(r.fitted[worst] - r.targets[worst])) worst = i;
    if (r.fitted.empty() || !(std::fabs(r.fitted[worst] - r.targets[worst]) > kMissWarning)) return;
    std::cerr << "sylvar-fit: warning: the model's autocorrelation at lag " << worst + 1 << " is "
              << number(r.fitted[worst], "%.4f") << ", the trace's " << number(r.targets[worst], "%.4f")
              << " (see the table of lags)" << std::endl;
}

// A library failure is reported with the stage it ended.
std::string stageContext(const std::string& stage) {
    if (stage == "read") return "cannot read the trace: ";
    if (stage == "marginal") return "the marginal fit failed: ";
    if (stage == "correlation") return "the correlation fit failed: ";
    if (stage == "plots") return "the plots failed: ";
    if (stage == "write") return "cannot write the model file: ";
    return "";
}

// The stages in order; the model file is written last, so that a failure in
// any stage leaves no model file.
void runStages(const Options& o, Stages& stages, Report& report) {
    Trace trace;
    stages.begin("read", "reading the trace " + o.trace);
    if (isDirectory(o.trace) || !std::ifstream(o.trace.c_str()).is_open())
        throw Failure{"cannot read the trace '" + o.trace + "'"};
    trace.load(o.trace, o.traceFormat);
    report.values = trace.getSize();
    if (report.values < static_cast<std::size_t>(o.orders.lags) + 2)
        throw Failure{"the trace '" + o.trace + "' holds " + std::to_string(report.values) + " values; " +
                      std::to_string(o.orders.lags) + " lags need at least " + std::to_string(o.orders.lags + 2)};
    std::vector<double> data(trace.getSize());
    for (unsigned i = 0; i < trace.getSize(); ++i) data[i] = trace.getElement(i);
    stages.end();

    stages.begin("marginal", o.marginal.empty() ? "choosing the marginal family by AIC"
                                                : "fitting the marginal (" + o.marginal + ")");
    TraceFitMarginal marginal = tracefit_marginal(data, o.marginal, o.phases);
    report.marginalName = marginal.name();
    report.marginalSource = marginal.source;
    report.parameters = marginal.parameterText();
    report.assessment = marginal.assessment;
    report.candidates = marginal.candidates;
    stages.end();

    stages.begin("correlation", "fitting the correlation (model " + tracefit_model_name(o.model) + ", " +
                                    std::to_string(o.orders.lags) + " lags)");
    std::unique_ptr<Process> model(tracefit_correlation(marginal, o.model, &trace, o.orders));
    report.modelClass = tracefit_model_class(model.get());
    report.hasOrders = tracefit_base_orders(model.get(), &report.p, &report.q);
    report.targets = trace.getAutocorrelations(1, o.orders.lags);
    report.fitted = model->getAutocorrelations(1, o.orders.lags);
    stages.end();

    if (!o.plot.empty()) {
        stages.begin("plots", "rendering " + o.plot + "_acf.png and " + o.plot + "_cdf.png");
        report.plots = renderPlots(o.plot, &trace, data, model.get(), o.orders.lags);
        stages.end();
    }

    stages.begin("write", "writing " + o.out);
    writeModel(model.get(), o.out);
    stages.end();
}

int run(const Options& o) {
    checkWritable(o.out, o.trace);
    Stages stages(o.quiet);
    Report report;
    report.traceName = o.trace;
    report.out = o.out;
    {
        ProgressRedirect redirect(o.quiet, o.debug);
        try {
            runStages(o, stages, report);
        } catch (Exception& e) {
            throw Failure{stageContext(stages.name()) + e.message};
        }
    }
    report.times = stages.summary();
    std::cout << reportText(report) << std::flush;
    warnOfMisses(report);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--help" || arg == "-help" || arg == "-h") {
            std::cout << kUsage;
            return 0;
        }
    }
    try {
        const Options o = parseArguments(argc, argv);
        return run(o);
    } catch (Failure& f) {
        return fail(f.message);
    } catch (Exception& e) {
        return fail(e.message);
    } catch (std::bad_alloc&) {
        return fail("out of memory");
    }
}
