// The candidates table: fixed columns, numbers with ten significant digits.
#include "reporting/likelihood_report.h"

#include <cstdio>
#include <sstream>

namespace velmora {

std::string likelihood_table(const std::vector<modelchoice::Candidate>& candidates, std::size_t chosen,
                             const std::string& criterion) {
    std::ostringstream s;
    char line[320];
    s << "Candidates by joint likelihood (the lowest " << criterion << " is written)\n";
    std::snprintf(line, sizeof line, "  %-8s %-30s %16s %6s %16s %16s\n", "model", "detail", "log-likelihood",
                  "params", "AIC", "BIC");
    s << line;
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        const modelchoice::Candidate& c = candidates[i];
        if (!c.fitted) {
            s << "  " << c.name << ": not fitted (" << c.reason << ")\n";
            continue;
        }
        std::snprintf(line, sizeof line, "  %-8s %-30s %16.10g %6u %16.10g %16.10g%s\n", c.name.c_str(),
                      c.detail.c_str(), c.logLikelihood, c.parameters, c.aic, c.bic, i == chosen ? "  <-" : "");
        s << line;
    }
    return s.str();
}

}  // namespace velmora
