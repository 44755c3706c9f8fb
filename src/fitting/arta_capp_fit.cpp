// Choice of the correlated model by the family of the marginal.
#include "fitting/arta_capp_fit.h"

#include <memory>
#include <utility>

#include "core/libvelmora_settings.h"
#include "distributions/dist_exponential.h"
#include "distributions/dist_hypererlang.h"
#include "distributions/dist_hyperexponential.h"
#include "distributions/dist_hypoexponential.h"
#include "fitting/artafit.h"
#include "fitting/cappfit.h"
#include "markov/capp.h"
#include "markov/cph.h"
#include "numerics/matrix.h"
#include "timeseries/arta.h"
#include "traces/trace.h"

namespace velmora {

namespace {

std::vector<double> traceTargets(Trace* t, unsigned lags) {
    if (t == nullptr) throw Exception("arta_capp_fit", __LINE__, "No trace.");
    return t->getAutocorrelations(1, lags);
}

template <typename Family>
Family* familyOf(Dist* d) {
    Family* f = dynamic_cast<Family*>(d);
    if (f == nullptr) throw Exception("arta_capp_fit", __LINE__, "The distribution does not match its family.");
    return f;
}

}  // namespace

Process* fit_arta_chep_capp(Dist* d, Trace* t, unsigned lags, unsigned p, unsigned q) {
    return fit_arta_chep_capp(d, t, lags, p, p, q, q);
}

Process* fit_arta_chep_capp(CPH* c, Trace* t, unsigned lags, unsigned p, unsigned q) {
    return fit_arta_chep_capp(c, t, lags, p, p, q, q);
}

Process* fit_arta_chep_capp(Dist* d, std::vector<double> ac, unsigned p, unsigned q) {
    return fit_arta_chep_capp(d, std::move(ac), p, p, q, q);
}

Process* fit_arta_chep_capp(CPH* c, std::vector<double> ac, unsigned p, unsigned q) {
    return fit_arta_chep_capp(c, std::move(ac), p, p, q, q);
}

Process* fit_arta_chep_capp(Dist* d, Trace* t, unsigned lags, unsigned pMin, unsigned pMax, unsigned qMin,
                            unsigned qMax) {
    return fit_arta_chep_capp(d, traceTargets(t, lags), pMin, pMax, qMin, qMax);
}

Process* fit_arta_chep_capp(CPH* c, Trace* t, unsigned lags, unsigned pMin, unsigned pMax, unsigned qMin,
                            unsigned qMax) {
    return fit_arta_chep_capp(c, traceTargets(t, lags), pMin, pMax, qMin, qMax);
}

Process* fit_arta_chep_capp(Dist* d, std::vector<double> ac, unsigned pMin, unsigned pMax, unsigned qMin,
                            unsigned qMax) {
    if (d == nullptr) throw Exception("arta_capp_fit", __LINE__, "No marginal distribution.");
    switch (d->getType()) {
        case DIST_HYPERERLANG:
            return cappfit::fit_chep(familyOf<HyperErlang>(d), ac, pMin, pMax, qMin, qMax);
        case DIST_HYPEREXPONENTIAL: {
            HyperExponential* he = familyOf<HyperExponential>(d);
            auto h = std::make_unique<HyperErlang>(std::vector<unsigned>(he->getPhases(), 1), he->getRates(),
                                                   he->getProbabilities());
            // The equivalent marginal is freed if the fit fails; the caller's
            // one, no longer needed, if it succeeds.
            Process* result = cappfit::fit_chep(h.get(), ac, pMin, pMax, qMin, qMax);
            h.release();
            delete d;
            return result;
        }
        case DIST_HYPOEXPONENTIAL: {
            const CPH equivalent = familyOf<HypoExponential>(d)->asCPH();
            std::unique_ptr<CPH> c = std::make_unique<CPH>(equivalent.getT(), equivalent.getTau());
            Process* result = cappfit::fit_capp(c.get(), ac, pMin, pMax, qMin, qMax);
            c.release();
            delete d;
            return result;
        }
        default: {
            ARTAFit fitter(ac, d, pMin, pMax, qMin, qMax);
            return fitter.fit_arta_model();
        }
    }
}

Process* fit_arta_chep_capp(CPH* c, std::vector<double> ac, unsigned pMin, unsigned pMax, unsigned qMin,
                            unsigned qMax) {
    if (c == nullptr) throw Exception("arta_capp_fit", __LINE__, "No phase-type distribution.");
    if (!c->valid_ph()) throw Exception("arta_capp_fit", __LINE__, "Not a valid PH distribution!");
    if (!c->isAcyclic()) throw Exception("arta_capp_fit", __LINE__, "Not an acyclic PH distribution!");
    if (c->getOrder() == 1) {
        std::unique_ptr<Dist> e = std::make_unique<Exponential>(-c->getT()(0, 0));
        ARTAFit fitter(ac, e.get(), pMin, pMax, qMin, qMax);
        Process* result = fitter.fit_arta_model();
        e.release();
        delete c;
        return result;
    }
    return cappfit::fit_capp(c, std::move(ac), pMin, pMax, qMin, qMax);
}

}  // namespace velmora
