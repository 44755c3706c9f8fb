#include "reporting/fit_report.h"

#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <sstream>

#include "core/libvelmora_settings.h"
#include "core/misc_string.h"
#include "core/process.h"
#include "fitting/modelchoice.h"
#include "reporting/likelihood_report.h"
#include "reporting/plotter.h"
#include "traces/trace.h"

namespace velmora {

namespace {

std::string indent(const std::string& text) {
    std::istringstream in(text);
    std::string line;
    std::string out;
    while (std::getline(in, line))
        if (!line.empty()) out += "  " + line + "\n";
    return out;
}

std::string candidateName(const distfit::Candidate& c) {
    return c.phases > 0 ? c.family + "(" + std::to_string(c.phases) + ")" : c.family;
}

void marginalSection(std::ostream& s, const TraceFitResult& r) {
    char line[256];
    s << "Marginal   " << r.marginalName;
    if (r.marginalSource == "AIC choice")
        s << ", the lowest AIC of " << r.candidates.size() << " candidates";
    else if (r.marginalSource == "file")
        s << ", read from the model file";
    else
        s << ", fitted to the values";
    if (r.assessment.family == "hypererlang" && !r.candidates.empty()) s << " (phase count chosen by AIC)";
    s << "\n" << indent(r.marginalParameters);
    const distfit::Assessment& a = r.assessment;
    s << "  log-likelihood  " << formatNumber(a.logLikelihood, "%.10g") << "\n";
    s << "  AIC             " << formatNumber(a.aic, "%.10g") << " (" << a.parameters << " parameters)\n";
    s << "  KS distance     " << formatNumber(a.ks, "%.5f") << "\n";
    std::snprintf(line, sizeof line, "  %-8s %14s %14s %11s\n", "moment", "trace", "model", "difference");
    s << line;
    const char* names[] = {"E[X]", "E[X^2]", "E[X^3]"};
    for (unsigned i = 0; i < 3; ++i) {
        const double t = a.dataMoments[i];
        const double m = a.modelMoments[i];
        const std::string diff =
            std::isnan(m) || t == 0 ? "-" : formatNumber(100 * (m - t) / std::fabs(t), "%+.2f %%");
        std::snprintf(line, sizeof line, "  %-8s %14s %14s %11s\n", names[i], formatNumber(t).c_str(),
                      formatNumber(m).c_str(), diff.c_str());
        s << line;
    }
}

// Fitted candidates by ascending AIC, then those that could not be fitted.
void candidateSection(std::ostream& s, const std::vector<distfit::Candidate>& candidates) {
    if (candidates.size() <= 1) return;
    char line[256];
    s << "\nCandidates (lowest AIC first)\n";
    std::snprintf(line, sizeof line, "  %-16s %16s %16s %9s\n", "family", "log-likelihood", "AIC", "KS");
    s << line;
    std::vector<const distfit::Candidate*> order;
    for (const auto& c : candidates) order.push_back(&c);
    std::stable_sort(order.begin(), order.end(), [](const distfit::Candidate* x, const distfit::Candidate* y) {
        if (x->fitted != y->fitted) return x->fitted;
        return x->fitted && x->assessment.aic < y->assessment.aic;
    });
    for (const distfit::Candidate* c : order) {
        if (!c->fitted) {
            s << "  " << candidateName(*c) << ": not fitted (" << c->reason << ")\n";
            continue;
        }
        std::snprintf(line, sizeof line, "  %-16s %16s %16s %9s\n", candidateName(*c).c_str(),
                      formatNumber(c->assessment.logLikelihood, "%.8g").c_str(),
                      formatNumber(c->assessment.aic, "%.8g").c_str(), formatNumber(c->assessment.ks, "%.5f").c_str());
        s << line;
    }
}

void modelSection(std::ostream& s, const TraceFitResult& r) {
    char line[256];
    s << "\nModel      " << r.modelClass;
    if (r.hasOrders) s << " on an ARMA(" << r.p << ", " << r.q << ") base process";
    s << "\n";
    if (!std::isnan(r.jointLogLikelihood))
        s << "  joint log-likelihood  " << formatNumber(r.jointLogLikelihood, "%.10g") << "\n";
    std::snprintf(line, sizeof line, "  %-5s %12s %12s %12s\n", "lag", "trace", "model", "difference");
    s << line;
    for (std::size_t i = 0; i < r.targets.size(); ++i) {
        const double f = i < r.fitted.size() ? r.fitted[i] : NAN;
        std::snprintf(line, sizeof line, "  %-5zu %12s %12s %12s\n", i + 1, formatNumber(r.targets[i], "%.6f").c_str(),
                      formatNumber(f, "%.6f").c_str(), formatNumber(f - r.targets[i], "%+.6f").c_str());
        s << line;
    }
}

bool madeFile(const std::string& path) {
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode) && st.st_size > 0;
}

}  // namespace

std::string fit_report(const TraceFitResult& r, const FitReportRun& run) {
    std::ostringstream s;
    s << "sylvar-fit, " << libVelmora_name_full() << "\n\n";
    // A fit of values held in memory (a library or Python caller) has no
    // file names and no timings to show.
    s << "Trace      " << (run.trace.empty() ? std::string("in memory") : run.trace) << ", " << r.values
      << " values\n\n";
    marginalSection(s, r);
    candidateSection(s, r.candidates);
    modelSection(s, r);
    if (!r.likelihoodCandidates.empty())
        s << "\n" << likelihood_table(r.likelihoodCandidates, r.likelihoodChosen, r.likelihoodCriterion);
    if (!run.out.empty()) {
        s << "\nWritten    " << run.out << "\n";
        for (const std::string& p : run.plots) s << "           " << p << "\n";
    }
    if (!run.times.empty()) s << (run.out.empty() ? "\n" : "") << "Time       " << run.times << "\n";
    return s.str();
}

// Such a miss comes from targets that the marginal cannot reach, or that no
// ARMA base process of the orders tried follows.
std::string fit_miss_warning(const TraceFitResult& r, double threshold) {
    const std::size_t n = std::min(r.targets.size(), r.fitted.size());
    if (n == 0) return "";
    std::size_t worst = 0;
    for (std::size_t i = 1; i < n; ++i)
        if (std::fabs(r.fitted[i] - r.targets[i]) > std::fabs(r.fitted[worst] - r.targets[worst])) worst = i;
    if (!(std::fabs(r.fitted[worst] - r.targets[worst]) > threshold)) return "";
    return "warning: the model's autocorrelation at lag " + std::to_string(worst + 1) + " is " +
           formatNumber(r.fitted[worst], "%.4f") + ", the trace's " + formatNumber(r.targets[worst], "%.4f") +
           " (see the table of lags)";
}

// The CDF is drawn from 0 (or the smallest value, when it lies below) to the
// 99th percentile, where the body of the distribution lies.
std::vector<std::string> fit_plots(const std::string& base, Trace& trace, const TraceFitResult& r, unsigned lags) {
    std::vector<double> sorted(trace.getSize());
    for (unsigned i = 0; i < trace.getSize(); ++i) sorted[i] = trace.getElement(i);
    if (sorted.empty() || !r.model) throw Exception("fit_report", __LINE__, "Nothing to plot.");
    std::sort(sorted.begin(), sorted.end());
    const double lower = std::min(0.0, sorted.front());
    const double upper = sorted[static_cast<std::size_t>(0.99 * static_cast<double>(sorted.size() - 1))];
    Plotter::ProcessList list = {{&trace, "trace"}, {r.model.get(), "model"}};
    const std::vector<std::string> files = {base + "_acf.png", base + "_cdf.png"};
    for (const std::string& f : files) std::remove(f.c_str());
    Plotter::plot_autocorrelations(list, 1, lags, base + "_acf", "png", 2, "");
    Plotter::plot_cdf(list, base + "_cdf", "png", lower, upper, 2, "");
    for (const std::string& f : files)
        if (!madeFile(f))
            throw Exception("fit_report", __LINE__, "gnuplot did not make " + f + " (is gnuplot installed?)");
    return files;
}

}  // namespace velmora
