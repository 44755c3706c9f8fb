// Fits that compare by joint likelihood, and the choice among them: the
// renewal model of a marginal (independent values), an ARTA on that
// marginal whose ARMA base is fitted by likelihood to the normal scores
// (its order by AIC), and an Erlang-branch MAP by EM (its order by AIC).
// The model of lowest joint BIC is chosen, so that on long traces of
// independent values a spurious correlation does not pay for its
// parameters.
#ifndef VELMORA_FITTING_MODELCHOICE_H
#define VELMORA_FITTING_MODELCHOICE_H

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "fitting/armaml.h"
#include "fitting/mapem.h"

namespace velmora {

class ARTA;
class Dist;
class Process;

namespace modelchoice {

// One candidate model with its joint figures on the trace.
struct Candidate {
    std::string name;  // "renewal", "ARTA", "MAP"
    std::string detail;  // "lognormal", "ARMA(1, 0) base", "order 3, branches 1 2"
    bool fitted = false;
    std::string reason;  // why it was not fitted
    double logLikelihood = 0;
    unsigned parameters = 0;
    double aic = 0;  // 2k - 2 logL
    double bic = 0;  // k ln n - 2 logL
};

// Fills aic and bic from the log-likelihood and the parameter count.
void complete(Candidate& c, std::size_t n);

struct Orders {
    unsigned pMin = 1, pMax = 3, qMin = 0, qMax = 1;
};

// The ARMA base of an ARTA on `marginal`, fitted by likelihood to the
// normal scores of the data; `candidate` gets the joint figures (the
// marginal's parameters plus p + q), `table` every order tried.
struct ArtaBase {
    armaml::Fit base;
    Candidate candidate;
    std::vector<armaml::Fit> table;
};
ArtaBase fit_arta_base(Dist* marginal, unsigned marginalParameters, const std::vector<double>& data,
                       const Orders& orders);
// An ARTA of the marginal (taken over) and that base.
std::unique_ptr<ARTA> make_arta(std::unique_ptr<Dist> marginal, const armaml::Fit& base);

Candidate renewal_candidate(Dist* marginal, unsigned marginalParameters, const std::vector<double>& data);
Candidate map_candidate(const mapem::Result& fit);

// The comparison of -model=auto. `mapMaxOrder` 0 leaves the MAP out.
struct Choice {
    std::unique_ptr<Process> model;  // the chosen model, its marginal taken over
    std::vector<Candidate> candidates;
    std::size_t chosen = 0;
    double logLikelihood = 0;  // of the chosen model
    Choice();
    Choice(Choice&&) noexcept;
    Choice& operator=(Choice&&) noexcept;
    ~Choice();
};
Choice choose(std::unique_ptr<Dist> marginal, unsigned marginalParameters, const std::vector<double>& data,
              const Orders& orders, unsigned mapMaxOrder, const mapem::Options& options = mapem::Options());

}  // namespace modelchoice
}  // namespace velmora

#endif
