// The renewal, ARTA and MAP candidates and the choice by joint BIC.
#include "fitting/modelchoice.h"

#include <cmath>
#include <sstream>

#include "core/libvelmora_settings.h"
#include "distributions/dist.h"
#include "distributions/dist_process.h"
#include "fitting/likelihood.h"
#include "timeseries/arima.h"
#include "timeseries/arta.h"

namespace velmora {
namespace modelchoice {

void complete(Candidate& c, std::size_t n) {
    c.aic = 2.0 * c.parameters - 2 * c.logLikelihood;
    c.bic = c.parameters * std::log(static_cast<double>(n)) - 2 * c.logLikelihood;
}

Candidate renewal_candidate(Dist* marginal, unsigned marginalParameters, const std::vector<double>& data) {
    Candidate c;
    c.name = "renewal";
    c.detail = Dist::getDistType(marginal->getType());
    c.logLikelihood = likelihood::renewal(marginal, data);
    c.parameters = marginalParameters;
    c.fitted = std::isfinite(c.logLikelihood);
    if (!c.fitted) c.reason = "the marginal gives a value no density";
    complete(c, data.size());
    return c;
}

ArtaBase fit_arta_base(Dist* marginal, unsigned marginalParameters, const std::vector<double>& data,
                       const Orders& orders) {
    ArtaBase out;
    const std::vector<double> z = likelihood::normal_scores(marginal, data);
    out.base = armaml::fit_by_aic(z, orders.pMin, orders.pMax, orders.qMin, orders.qMax, &out.table);
    Candidate& c = out.candidate;
    c.name = "ARTA";
    c.detail = "ARMA(" + std::to_string(out.base.p) + ", " + std::to_string(out.base.q) + ") base";
    c.logLikelihood = likelihood::copula(marginal, *out.base.model, data);
    c.parameters = marginalParameters + out.base.p + out.base.q;
    c.fitted = std::isfinite(c.logLikelihood);
    if (!c.fitted) c.reason = "the marginal gives a value no density";
    complete(c, data.size());
    return out;
}

std::unique_ptr<ARTA> make_arta(std::unique_ptr<Dist> marginal, const armaml::Fit& base) {
    // The ARTA normalises its base to process variance 1, which the fit has already.
    return std::make_unique<ARTA>(marginal.release(), base.model->getARCoefficients(),
                                  base.model->getMACoefficients(), 0.0, 1.0);
}

Candidate map_candidate(const mapem::Result& fit) {
    Candidate c;
    c.name = "MAP";
    std::ostringstream s;
    unsigned order = 0;
    for (unsigned r : fit.structure) order += r;
    s << "order " << order << ", branches";
    for (unsigned r : fit.structure) s << " " << r;
    if (!fit.converged) s << ", not converged";
    c.detail = s.str();
    c.fitted = true;
    c.logLikelihood = fit.logLikelihood;
    c.parameters = fit.parameters;
    complete(c, fit.n);
    return c;
}

Choice::Choice() = default;
Choice::Choice(Choice&&) noexcept = default;
Choice& Choice::operator=(Choice&&) noexcept = default;
Choice::~Choice() = default;

Choice choose(std::unique_ptr<Dist> marginal, unsigned marginalParameters, const std::vector<double>& data,
              const Orders& orders, unsigned mapMaxOrder, const mapem::Options& options) {
    Choice out;
    out.candidates.push_back(renewal_candidate(marginal.get(), marginalParameters, data));

    ArtaBase arta;
    try {
        arta = fit_arta_base(marginal.get(), marginalParameters, data, orders);
        out.candidates.push_back(arta.candidate);
    } catch (Exception& e) {
        Candidate c;
        c.name = "ARTA";
        c.reason = e.message;
        out.candidates.push_back(c);
    }

    mapem::Result map;
    if (mapMaxOrder > 0) {
        try {
            map = mapem::fit_map_by_aic(data, mapMaxOrder, options);
            out.candidates.push_back(map_candidate(map));
        } catch (Exception& e) {
            Candidate c;
            c.name = "MAP";
            c.reason = e.message;
            out.candidates.push_back(c);
        }
    }

    bool any = false;
    for (std::size_t i = 0; i < out.candidates.size(); ++i) {
        const Candidate& c = out.candidates[i];
        if (c.fitted && (!any || c.bic < out.candidates[out.chosen].bic)) {
            out.chosen = i;
            any = true;
        }
    }
    if (!any) throw Exception("modelchoice", __LINE__, "No candidate model could be fitted to the trace.");
    const Candidate& best = out.candidates[out.chosen];
    out.logLikelihood = best.logLikelihood;
    if (best.name == "renewal") out.model = std::make_unique<DistProcess>(marginal.release());
    else if (best.name == "ARTA") out.model = make_arta(std::move(marginal), arta.base);
    else out.model = std::move(map.map);
    return out;
}

}  // namespace modelchoice
}  // namespace velmora
