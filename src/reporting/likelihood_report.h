// The fit report's table of candidate models compared by joint likelihood.
#ifndef VELMORA_REPORTING_LIKELIHOOD_REPORT_H
#define VELMORA_REPORTING_LIKELIHOOD_REPORT_H

#include <cstddef>
#include <string>
#include <vector>

#include "fitting/modelchoice.h"

namespace velmora {

// A heading naming the criterion ("BIC", "AIC"), then one row per candidate:
// model, detail, joint log-likelihood, parameters, AIC and BIC, the chosen
// one marked; a candidate that was not fitted shows its reason instead.
std::string likelihood_table(const std::vector<modelchoice::Candidate>& candidates, std::size_t chosen,
                             const std::string& criterion);

}  // namespace velmora

#endif
