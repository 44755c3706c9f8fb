// The stages from a trace to a correlated model: marginal, model, classes.
#include "fitting/tracefit.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <utility>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "core/process.h"
#include "distributions/dist.h"
#include "distributions/dist_erlang.h"
#include "distributions/dist_exponential.h"
#include "distributions/dist_hypererlang.h"
#include "distributions/dist_hyperexponential.h"
#include "distributions/dist_hypoexponential.h"
#include "distributions/dist_load.h"
#include "fitting/arta_capp_fit.h"
#include "fitting/artafit.h"
#include "fitting/cappfit.h"
#include "fitting/mepfit.h"
#include "markov/capp.h"
#include "markov/chep.h"
#include "markov/cph.h"
#include "markov/cph_randomization.h"
#include "markov/maps.h"
#include "numerics/matrix.h"
#include "timeseries/arima.h"
#include "timeseries/arta.h"
#include "traces/trace.h"

namespace velmora {

namespace {

[[noreturn]] void fail(int line, const std::string& message) { throw Exception("tracefit", line, message); }

const char* const kModelNames[] = {"auto", "arta", "capp", "chep", "map"};

bool endsWithXml(const std::string& s) {
    if (s.size() < 4) return false;
    std::string tail = s.substr(s.size() - 4);
    std::transform(tail.begin(), tail.end(), tail.begin(), [](unsigned char c) { return std::tolower(c); });
    return tail == ".xml";
}

bool isFamilyName(const std::string& s) {
    try {
        Dist::getDistType(s);
        return true;
    } catch (Exception&) {
        return false;
    }
}

bool readable(const std::string& file) { return std::ifstream(file.c_str()).is_open(); }

TraceFitMarginal marginalFromFile(const std::string& file, const std::vector<double>& data) {
    if (!readable(file)) fail(__LINE__, "Cannot read the marginal file '" + file + "'.");
    XMLConfig document(file);
    TraceFitMarginal m;
    m.source = "file";
    if (model_element(&document, "dist") != nullptr) {
        m.dist.reset(loadDistribution(&document));
        if (!m.dist) fail(__LINE__, "The dist model in '" + file + "' names no family.");
        m.assessment = distfit::assess(m.dist.get(), data);
    } else if (model_element(&document, "ph") != nullptr) {
        m.ph.reset(new CPH(&document));
        if (!m.ph->valid_ph())
            fail(__LINE__, "The ph model in '" + file + "' is not a valid phase-type distribution.");
        m.assessment = tracefit_assess_ph(*m.ph, data);
    } else {
        fail(__LINE__, "The file '" + file + "' holds no dist or ph model.");
    }
    return m;
}

CPH chainOf(const CPH& c) { return CPH(c.getT(), c.getTau()); }

// The hyper-Erlang that a mixture of Erlang branches (exponential, Erlang,
// hyper-exponential, hyper-Erlang) is; null for the other families.
std::unique_ptr<HyperErlang> asHyperErlang(Dist* d) {
    std::vector<unsigned> phases;
    std::vector<double> rates, probabilities;
    if (!d->erlangBranches(phases, rates, probabilities)) return nullptr;
    return std::make_unique<HyperErlang>(phases, rates, probabilities);
}

// The marginal as (T, tau), for the model named in a refusal.
CPH phaseTypeFor(const TraceFitMarginal& m, const std::string& model) {
    if (m.ph) return chainOf(*m.ph);
    if (!m.dist) fail(__LINE__, "No marginal distribution.");
    Dist* d = m.dist.get();
    if (auto* hypo = dynamic_cast<HypoExponential*>(d)) return chainOf(hypo->asCPH());
    std::unique_ptr<HyperErlang> h = asHyperErlang(d);
    if (h) return chainOf(h->asCPH());
    fail(__LINE__, "Model " + model + " needs a phase-type marginal (exponential, erlang, hypoexponential, "
                   "hyperexponential, hypererlang or a ph model file), not " + m.name() + ".");
}

}  // namespace

tracefit_model tracefit_model_from_name(const std::string& name) {
    for (unsigned i = 0; i < 5; ++i)
        if (name == kModelNames[i]) return static_cast<tracefit_model>(i);
    fail(__LINE__, "Unknown model class '" + name + "' (choose auto, arta, capp, chep or map).");
}

std::string tracefit_model_name(tracefit_model m) {
    const unsigned i = static_cast<unsigned>(m);
    if (i >= 5) fail(__LINE__, "Unknown model class.");
    return kModelNames[i];
}

const std::vector<std::string>& tracefit_default_families() {
    static const std::vector<std::string> families = {"normal",    "exponential", "gamma",
                                                      "lognormal", "weibull",     "hypererlang"};
    return families;
}

TraceFitMarginal::TraceFitMarginal() = default;
TraceFitMarginal::TraceFitMarginal(TraceFitMarginal&&) noexcept = default;
TraceFitMarginal& TraceFitMarginal::operator=(TraceFitMarginal&&) noexcept = default;
TraceFitMarginal::~TraceFitMarginal() = default;

std::string TraceFitMarginal::name() const {
    if (ph) return "ph";
    if (dist) return Dist::getDistType(dist->getType());
    return "none";
}

std::string TraceFitMarginal::parameterText() const {
    if (ph) return ph->toString(FORMAT_CONFIG);
    if (dist) return dist->toString(FORMAT_CONFIG);
    return "";
}

// A known family name wins over a file of the same name; a name ending in
// ".xml", or any other name that opens as a file, is a model file.
TraceFitMarginal tracefit_marginal(const std::vector<double>& data, const std::string& request, unsigned phases) {
    distfit::check_values(data, "the trace", false);
    if (request.empty()) {
        distfit::Selection s = distfit::best_family(data, tracefit_default_families(), phases);
        TraceFitMarginal m;
        m.source = "AIC choice";
        m.assessment = s.candidates[s.bestIndex].assessment;
        m.candidates = std::move(s.candidates);
        m.dist = std::move(s.best);
        return m;
    }
    if (!isFamilyName(request)) {
        if (endsWithXml(request) || readable(request)) return marginalFromFile(request, data);
        fail(__LINE__, "Unknown marginal '" + request + "': neither a distribution family nor a model file.");
    }
    TraceFitMarginal m;
    m.source = "fitted";
    if (request == "hypererlang") {
        // The phase count is chosen like the family: by AIC.
        distfit::Selection s = distfit::best_family(data, {request}, phases);
        m.assessment = s.candidates[s.bestIndex].assessment;
        m.candidates = std::move(s.candidates);
        m.dist = std::move(s.best);
    } else {
        m.dist = distfit::fit_distribution(request, data, 0);
        m.assessment = distfit::assess(m.dist.get(), data);
    }
    return m;
}

// The vector v(x) = tau exp(T x) is carried from one sorted value to the
// next by uniformization; the density is v(x) times the exit rates and the
// distribution function 1 minus the sum of v(x). The Poisson sums are not
// trimmed (eps 0): they keep every term that still counts in double
// precision, so that the small masses of late phases near 0, which make the
// density there, are not cut away. A value whose density falls below that
// precision, as near 0 for a long chain, still counts as density 0 and
// gives a log-likelihood of minus infinity.
distfit::Assessment tracefit_assess_ph(const CPH& ph, const std::vector<double>& data) {
    distfit::check_values(data, "ph", true);
    const Matrix T = ph.getT();
    const unsigned n = T.getNumberRows();
    const Vector exits = ph.getExitRates();
    double lambda = 0;
    for (unsigned i = 0; i < n; ++i) lambda = std::max(lambda, -T(i, i));
    if (!(lambda > 0) || !std::isfinite(lambda)) fail(__LINE__, "The phase-type distribution has no exit.");

    Matrix P(n, n, MATRIX_IDENTITY);
    for (unsigned i = 0; i < n; ++i)
        for (unsigned j = 0; j < n; ++j) P(i, j) += T(i, j) / lambda;
    const Vector tau = ph.getTau();
    Matrix v(1, n);
    for (unsigned j = 0; j < n; ++j) v(0, j) = tau(j);
    Matrix scratch;
    Matrix result;

    std::vector<double> sorted(data);
    std::sort(sorted.begin(), sorted.end());
    const double count = static_cast<double>(sorted.size());
    distfit::Assessment a;
    a.family = "ph";
    double previous = 0;
    for (std::size_t k = 0; k < sorted.size(); ++k) {
        const double x = sorted[k];
        if (x > previous) {
            map_ph_randomization(&P, &v, &scratch, &result, lambda, x - previous, 0);
            v = result;
            previous = x;
        }
        double density = 0;
        double survival = 0;
        for (unsigned j = 0; j < n; ++j) {
            density += v(0, j) * exits(j);
            survival += v(0, j);
        }
        a.logLikelihood += std::log(density);
        const double F = 1 - survival;
        a.ks = std::max(a.ks, std::max(F - k / count, (k + 1) / count - F));
    }
    unsigned nonZero = 0;
    for (unsigned i = 0; i < n; ++i) {
        if (tau(i) != 0) ++nonZero;
        for (unsigned j = 0; j < n; ++j)
            if (T(i, j) != 0) ++nonZero;
    }
    a.parameters = nonZero > 0 ? nonZero - 1 : 0;
    const std::vector<double> moments = ph.getMoments(1, 3);
    for (unsigned i = 0; i < 3 && i < moments.size(); ++i) a.modelMoments[i] = moments[i];
    distfit::complete_assessment(a, data);
    return a;
}

Process* correlationFit(TraceFitMarginal& m, tracefit_model model, Trace* t, const TraceFitOrders& o);

// The fitted models are exact-mode models: their marginal is fitted and
// transformed with the exact forms, and they are written with 17 significant
// digits, so the file runs in sylvar as fitted.
Process* tracefit_correlation(TraceFitMarginal& m, tracefit_model model, Trace* t, const TraceFitOrders& o) {
    if (m.dist) m.dist->setExact(true);
    Process* result = correlationFit(m, model, t, o);
    if (result != nullptr) result->setExactNumerics(true);
    return result;
}

Process* correlationFit(TraceFitMarginal& m, tracefit_model model, Trace* t, const TraceFitOrders& o) {
    if (t == nullptr) fail(__LINE__, "No trace.");
    if (!m.dist && !m.ph) fail(__LINE__, "No marginal distribution.");
    switch (model) {
        case TRACEFIT_AUTO: {
            Process* result = m.dist ? fit_arta_chep_capp(m.dist.get(), t, o.lags, o.pMin, o.pMax, o.qMin, o.qMax)
                                     : fit_arta_chep_capp(m.ph.get(), t, o.lags, o.pMin, o.pMax, o.qMin, o.qMax);
            // The fit owns the marginal now, or has deleted it.
            m.dist.release();
            m.ph.release();
            return result;
        }
        case TRACEFIT_ARTA: {
            if (m.ph && m.ph->getOrder() != 1)
                fail(__LINE__, "Model arta needs a distribution family as marginal, not a ph model of order " +
                                   std::to_string(m.ph->getOrder()) + ".");
            std::unique_ptr<Dist> exponential;
            if (m.ph) exponential = std::make_unique<Exponential>(-m.ph->getT()(0, 0));
            Dist* d = m.ph ? exponential.get() : m.dist.get();
            ARTAFit fitter(t, d, o.lags, o.pMin, o.pMax, o.qMin, o.qMax);
            Process* result = fitter.fit_arta_model();
            exponential.release();
            m.dist.release();
            m.ph.reset();
            return result;
        }
        case TRACEFIT_CHEP: {
            if (m.ph || !m.dist)
                fail(__LINE__, "Model chep needs a hyper-Erlang marginal (or an exponential, erlang or "
                               "hyperexponential one), not " + m.name() + ".");
            if (m.dist->getType() == DIST_HYPERERLANG) {
                Process* result =
                    cappfit::fit_chep(static_cast<HyperErlang*>(m.dist.get()), t, o.lags, o.pMin, o.pMax, o.qMin,
                                      o.qMax);
                m.dist.release();
                return result;
            }
            std::unique_ptr<HyperErlang> h = asHyperErlang(m.dist.get());
            if (!h)
                fail(__LINE__, "Model chep needs a hyper-Erlang marginal (or an exponential, erlang or "
                               "hyperexponential one), not " + m.name() + ".");
            Process* result = cappfit::fit_chep(h.get(), t, o.lags, o.pMin, o.pMax, o.qMin, o.qMax);
            h.release();
            m.dist.reset();
            return result;
        }
        case TRACEFIT_CAPP: {
            const CPH chain = phaseTypeFor(m, "capp");
            auto c = std::make_unique<CPH>(chain.getT(), chain.getTau());
            Process* result = cappfit::fit_capp(c.get(), t, o.lags, o.pMin, o.pMax, o.qMin, o.qMax);
            c.release();
            m.dist.reset();
            m.ph.reset();
            return result;
        }
        case TRACEFIT_MAP: {
            const CPH chain = phaseTypeFor(m, "map");
            if (o.lags > t->getSize() - std::min(t->getSize(), 2u))
                fail(__LINE__, "The trace is too short for " + std::to_string(o.lags) + " lags.");
            map_markovian_rep rep =
                mapfit::mapfit_fit_autocorrelation(chain.getT(), chain.getTau(), t->getAutocorrelations(1, o.lags));
            Process* result = new MAP(rep.D0, rep.D1);
            m.dist.reset();
            m.ph.reset();
            return result;
        }
    }
    fail(__LINE__, "Unknown model class.");
}

std::string tracefit_model_class(Process* model) {
    if (model == nullptr) return "none";
    if (chep* c = dynamic_cast<chep*>(model)) return c->getType() == CHEP_TYPE_1 ? "CHEP type 1" : "CHEP type 2";
    if (MEP* e = dynamic_cast<MEP*>(model))
        return model->getProcessTypeString() + " of order " + std::to_string(e->getOrder());
    return model->getProcessTypeString();
}

bool tracefit_base_orders(Process* model, unsigned* p, unsigned* q) {
    ARIMA* base = nullptr;
    if (ARTA* a = dynamic_cast<ARTA*>(model)) base = a->getBaseProcess();
    if (capp* c = dynamic_cast<capp*>(model)) base = c->getBaseProcess();
    if (base == nullptr) return false;
    *p = static_cast<unsigned>(base->getARCoefficients().size());
    *q = static_cast<unsigned>(base->getMACoefficients().size());
    return true;
}

}  // namespace velmora
