// The report of a trace fit as sylvar-fit prints it: the marginal with its
// assessment and the candidates it was chosen from, the model with the
// autocorrelations of trace and model side by side, and what the run wrote;
// the warning for a model that misses the trace's autocorrelations; and the
// plots that compare the two.
#ifndef VELMORA_REPORTING_FIT_REPORT_H
#define VELMORA_REPORTING_FIT_REPORT_H

#include <string>
#include <vector>

#include "fitting/tracefit.h"

namespace velmora {

class Trace;

// What the run around the fit adds to the report.
struct FitReportRun {
    std::string trace;                // the trace's file name
    std::string out;                  // the model file written
    std::vector<std::string> plots;   // the plot files made
    std::string times;                // StageTimer::summary()
};

std::string fit_report(const TraceFitResult& r, const FitReportRun& run);

// "warning: the model's autocorrelation at lag 3 is 0.0000, the trace's
// 0.5172 (see the table of lags)" for the lag of the largest miss, when it
// exceeds `threshold`; "" otherwise.
std::string fit_miss_warning(const TraceFitResult& r, double threshold);

// Renders BASE_acf.png (lags 1..lags) and BASE_cdf.png of trace and model
// with gnuplot and gives their names; throws when gnuplot made none.
std::vector<std::string> fit_plots(const std::string& base, Trace& trace, const TraceFitResult& r, unsigned lags);

}  // namespace velmora

#endif
