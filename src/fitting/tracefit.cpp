// The stages from a trace to a correlated model: marginal, model, classes.
#include "fitting/process_factory.h"
#include "fitting/tracefit.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <utility>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "core/misc_string.h"
#include "core/process.h"
#include "config/process_files.h"
#include "distributions/dist.h"
#include "distributions/dist_erlang.h"
#include "distributions/dist_exponential.h"
#include "distributions/dist_hypererlang.h"
#include "distributions/dist_hyperexponential.h"
#include "distributions/dist_hypoexponential.h"
#include "distributions/dist_load.h"
#include "distributions/dist_process.h"
#include "fitting/arta_capp_fit.h"
#include "fitting/artafit.h"
#include "fitting/cappfit.h"
#include "fitting/mapem.h"
#include "fitting/mepfit.h"
#include "fitting/modelchoice.h"
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

const char* const kModelNames[] = {"auto", "arta", "capp", "chep", "map", "arta-acf", "map-acf", "mmap"};
const unsigned kModelCount = sizeof kModelNames / sizeof kModelNames[0];

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

// Probabilities that the XML readers, which sum them left to right and
// want exactly 1, accept: scaled by their sum, with the last one taking up
// what rounding leaves.
std::vector<double> summingToOne(std::vector<double> p) {
    double sum = 0;
    for (double x : p) sum += x;
    if (p.empty() || !(sum > 0) || !std::isfinite(sum)) return p;
    for (double& x : p) x /= sum;
    double head = 0;
    for (std::size_t i = 0; i + 1 < p.size(); ++i) head += p[i];
    double& last = p.back();
    last = std::max(0.0, 1 - head);
    for (int step = 0; step < 8 && head + last != 1; ++step)
        last = std::nextafter(last, head + last > 1 ? 0.0 : 2.0);
    return p;
}

// A fitted mixture is written as it is held, so its probabilities must pass
// the readers' check as they are.
void normaliseMixture(Dist* d) {
    if (d == nullptr) return;
    if (d->getType() == DIST_HYPERERLANG) {
        HyperErlang* h = static_cast<HyperErlang*>(d);
        h->setProbabilities(summingToOne(h->getProbabilities()));
    } else if (d->getType() == DIST_HYPEREXPONENTIAL) {
        HyperExponential* h = static_cast<HyperExponential*>(d);
        h->setProbabilities(summingToOne(h->getProbabilities()));
    }
}

// Values whose first three moments overflow leave nothing to fit: every
// fit and every autocorrelation of them is infinite or NaN.
void checkMoments(const std::vector<double>& data) {
    double s1 = 0, s2 = 0, s3 = 0, largest = 0;
    for (double x : data) {
        s1 += x;
        s2 += x * x;
        s3 += x * x * x;
        largest = std::max(largest, std::fabs(x));
    }
    if (!std::isfinite(s1) || !std::isfinite(s2) || !std::isfinite(s3))
        fail(__LINE__, "The values are too large: their moments overflow (the largest is " +
                           formatNumber(largest, "%g") + ").");
}

}  // namespace

tracefit_model tracefit_model_from_name(const std::string& name) {
    for (unsigned i = 0; i < kModelCount; ++i)
        if (tolower(name) == kModelNames[i]) return static_cast<tracefit_model>(i);
    fail(__LINE__, "Unknown model class '" + name + "' (choose auto, arta, capp, chep, map, arta-acf, map-acf or mmap).");
}

std::string tracefit_model_name(tracefit_model m) {
    const unsigned i = static_cast<unsigned>(m);
    if (i >= kModelCount) fail(__LINE__, "Unknown model class.");
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

// A known family name (in any case) wins over a file of the same name; a
// name ending in ".xml", or any other name that opens as a file, is a model
// file.
TraceFitMarginal tracefit_marginal(const std::vector<double>& data, const std::string& request, unsigned phases) {
    distfit::check_values(data, "the trace", false);
    checkMoments(data);
    if (request.empty()) {
        distfit::Selection s = distfit::best_family(data, tracefit_default_families(), phases);
        TraceFitMarginal m;
        m.source = "AIC choice";
        m.assessment = s.candidates[s.bestIndex].assessment;
        m.candidates = std::move(s.candidates);
        m.dist = std::move(s.best);
        normaliseMixture(m.dist.get());
        return m;
    }
    const std::string family = tolower(request);
    if (!isFamilyName(family)) {
        if (endsWithXml(request) || readable(request)) return marginalFromFile(request, data);
        fail(__LINE__, "Unknown marginal '" + request + "': neither a distribution family nor a model file.");
    }
    TraceFitMarginal m;
    m.source = "fitted";
    if (family == "hypererlang") {
        // The phase count is chosen like the family: by AIC.
        distfit::Selection s = distfit::best_family(data, {family}, phases);
        m.assessment = s.candidates[s.bestIndex].assessment;
        m.candidates = std::move(s.candidates);
        m.dist = std::move(s.best);
    } else {
        m.dist = distfit::fit_distribution(family, data, 0);
        m.assessment = distfit::assess(m.dist.get(), data);
    }
    normaliseMixture(m.dist.get());
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
    distfit::Assessment a;
    a.family = "ph";
    double previous = 0;
    std::vector<double> cdf(sorted.size());
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
        cdf[k] = 1 - survival;
    }
    a.ks = distfit::ks_distance(sorted, cdf);
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

namespace {

// The fitters take their marginal as a raw pointer and own it once they
// succeed (or delete it, having replaced it); when they fail it stays here.
template <class T, class Fit>
std::unique_ptr<Process> handOver(std::unique_ptr<T>& marginal, Fit&& fit) {
    std::unique_ptr<Process> result(fit(marginal.get()));
    (void)marginal.release();
    return result;
}

std::unique_ptr<Process> correlationFit(TraceFitMarginal& m, tracefit_model model, Trace* t,
                                        const TraceFitOrders& o);

}  // namespace

namespace {

// The marginal as a distribution family, taken out of m: a ph model only of
// order 1, as an exponential; `model` names the class that needs it.
std::unique_ptr<Dist> familyOf(TraceFitMarginal& m, const std::string& model) {
    if (m.ph && m.ph->getOrder() != 1)
        fail(__LINE__, "Model " + model + " needs a distribution family as marginal, not a ph model of order " +
                           std::to_string(m.ph->getOrder()) + ".");
    std::unique_ptr<Dist> d = m.ph ? std::make_unique<Exponential>(-m.ph->getT()(0, 0)) : std::move(m.dist);
    m.ph.reset();
    return d;
}

}  // namespace

// The fitted models are exact-mode models: their marginal is fitted and
// transformed with the exact forms, and they are written with 17 significant
// digits, so the file runs in sylvar as fitted.
std::unique_ptr<Process> tracefit_correlation(TraceFitMarginal& m, tracefit_model model, Trace* t,
                                              const TraceFitOrders& o) {
    if (m.dist) m.dist->setExact(true);
    std::unique_ptr<Process> result = correlationFit(m, model, t, o);
    if (result) result->setExactNumerics(true);
    return result;
}

namespace {

std::unique_ptr<Process> correlationFit(TraceFitMarginal& m, tracefit_model model, Trace* t,
                                        const TraceFitOrders& o) {
    if (t == nullptr) fail(__LINE__, "No trace.");
    if (!m.dist && !m.ph) fail(__LINE__, "No marginal distribution.");
    if (model == TRACEFIT_ARTA_ACF) model = TRACEFIT_ARTA;
    if (model == TRACEFIT_MAP_ACF) model = TRACEFIT_MAP;
    switch (model) {
        case TRACEFIT_ARTA_ACF:
        case TRACEFIT_MAP_ACF:
        case TRACEFIT_MMAP:
            fail(__LINE__, "Model mmap is fitted by likelihood from a multi-class trace (tracefit).");
        case TRACEFIT_AUTO:
            if (m.dist)
                return handOver(m.dist, [&](Dist* d) {
                    return fit_arta_chep_capp(d, t, o.lags, o.pMin, o.pMax, o.qMin, o.qMax);
                });
            return handOver(m.ph, [&](CPH* c) {
                return fit_arta_chep_capp(c, t, o.lags, o.pMin, o.pMax, o.qMin, o.qMax);
            });
        case TRACEFIT_ARTA: {
            std::unique_ptr<Dist> d = familyOf(m, "arta");
            std::unique_ptr<Process> result = handOver(d, [&](Dist* marginal) {
                return ARTAFit(t, marginal, o.lags, o.pMin, o.pMax, o.qMin, o.qMax).fit_arta_model();
            });
            m.ph.reset();
            return result;
        }
        case TRACEFIT_CHEP: {
            if (m.dist && m.dist->getType() == DIST_HYPERERLANG)
                return handOver(m.dist, [&](Dist* d) {
                    return cappfit::fit_chep(static_cast<HyperErlang*>(d), t, o.lags, o.pMin, o.pMax, o.qMin, o.qMax);
                });
            std::unique_ptr<HyperErlang> h = m.dist ? asHyperErlang(m.dist.get()) : nullptr;
            if (!h)
                fail(__LINE__, "Model chep needs a hyper-Erlang marginal (or an exponential, erlang or "
                               "hyperexponential one), not " + m.name() + ".");
            std::unique_ptr<Process> result = handOver(h, [&](HyperErlang* e) {
                return cappfit::fit_chep(e, t, o.lags, o.pMin, o.pMax, o.qMin, o.qMax);
            });
            m.dist.reset();
            return result;
        }
        case TRACEFIT_CAPP: {
            const CPH chain = phaseTypeFor(m, "capp");
            auto c = std::make_unique<CPH>(chain.getT(), chain.getTau());
            std::unique_ptr<Process> result = handOver(c, [&](CPH* ph) {
                return cappfit::fit_capp(ph, t, o.lags, o.pMin, o.pMax, o.qMin, o.qMax);
            });
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
            m.dist.reset();
            m.ph.reset();
            return std::make_unique<MAP>(rep.D0, rep.D1);
        }
    }
    fail(__LINE__, "Unknown model class.");
}

}  // namespace

std::string tracefit_model_class(Process* model) {
    if (model == nullptr) return "none";
    if (chep* c = dynamic_cast<chep*>(model)) return c->getType() == CHEP_TYPE_1 ? "CHEP type 1" : "CHEP type 2";
    if (dynamic_cast<DistProcess*>(model) != nullptr) return "renewal model (independent values of the marginal)";
    if (auto* marked = dynamic_cast<mapem::MarkedMAP*>(model)) {
        std::string names;
        for (const std::string& n : marked->getClassNames()) names += " " + n;
        return "marked MAP of order " + std::to_string(marked->getOrder()) + ", classes" + names;
    }
    if (MEP* e = dynamic_cast<MEP*>(model))
        return model->getProcessTypeString() + " of order " + std::to_string(e->getOrder());
    return model->getProcessTypeString();
}

namespace {

ARIMA* baseOf(Process* model) {
    if (ARTA* a = dynamic_cast<ARTA*>(model)) return a->getBaseProcess();
    if (capp* c = dynamic_cast<capp*>(model)) return c->getBaseProcess();
    return nullptr;
}

// Whether an AR root lies within 1.001 of the unit circle: the roots of
// phi(z) have modulus above 1.001 exactly when those of phi(1.001 z) lie
// outside the unit circle.
bool nearUnitRoot(const ARIMA& base) {
    std::vector<double> ar = base.getARCoefficients();
    double power = 1;
    for (double& phi : ar) phi *= (power *= 1.001);
    return !ARIMA(ar, {}, 0, 0, 1, 0, "").isStationary();
}

}  // namespace

bool tracefit_base_orders(Process* model, unsigned* p, unsigned* q) {
    ARIMA* base = baseOf(model);
    if (base == nullptr) return false;
    *p = static_cast<unsigned>(base->getARCoefficients().size());
    *q = static_cast<unsigned>(base->getMACoefficients().size());
    return true;
}

TraceFitResult::TraceFitResult() : jointLogLikelihood(std::numeric_limits<double>::quiet_NaN()) {}
TraceFitResult::TraceFitResult(TraceFitResult&&) noexcept = default;
TraceFitResult& TraceFitResult::operator=(TraceFitResult&&) noexcept = default;
TraceFitResult::~TraceFitResult() = default;

namespace {

// The candidates of a MAP fit by EM: every order tried, the chosen by AIC.
void mapCandidates(const std::vector<mapem::Result>& orders, const mapem::Result& kept, TraceFitResult& r) {
    for (std::size_t i = 0; i < orders.size(); ++i) {
        r.likelihoodCandidates.push_back(modelchoice::map_candidate(orders[i]));
        if (orders[i].aic == kept.aic && orders[i].structure == kept.structure) r.likelihoodChosen = i;
    }
    if (orders.empty()) r.likelihoodCandidates.push_back(modelchoice::map_candidate(kept));
    r.likelihoodCriterion = "AIC";
}

// The fits by likelihood: AUTO, ARTA, MAP and MMAP.
void fitByLikelihood(TraceFitMarginal& marginal, const TraceFitRequest& request, const std::vector<double>& data,
                     TraceFitResult& r) {
    const TraceFitOrders& o = request.orders;
    const modelchoice::Orders orders{o.pMin, o.pMax, o.qMin, o.qMax};
    const unsigned marginalParameters = r.assessment.parameters;
    switch (request.model) {
        case TRACEFIT_AUTO: {
            std::unique_ptr<Dist> d = familyOf(marginal, "auto");
            modelchoice::Choice choice =
                modelchoice::choose(std::move(d), marginalParameters, data, orders,
                                    request.mapOrder > 0 ? request.mapOrder : request.phases);
            r.model = std::move(choice.model);
            r.likelihoodCandidates = std::move(choice.candidates);
            r.likelihoodChosen = choice.chosen;
            r.likelihoodCriterion = "BIC";
            r.jointLogLikelihood = choice.logLikelihood;
            return;
        }
        case TRACEFIT_ARTA: {
            std::unique_ptr<Dist> d = familyOf(marginal, "arta");
            modelchoice::ArtaBase fit = modelchoice::fit_arta_base(d.get(), marginalParameters, data, orders);
            for (std::size_t i = 0; i < fit.table.size(); ++i) {
                modelchoice::Candidate c;
                c.name = "ARTA";
                c.detail = "ARMA(" + std::to_string(fit.table[i].p) + ", " + std::to_string(fit.table[i].q) + ") base";
                c.fitted = fit.table[i].fitted;
                // The orders compare on the scores: the marginal's part is the same for all.
                c.logLikelihood = fit.table[i].logLikelihood - fit.base.logLikelihood + fit.candidate.logLikelihood;
                c.parameters = marginalParameters + fit.table[i].p + fit.table[i].q;
                modelchoice::complete(c, data.size());
                if (fit.table[i].p == fit.base.p && fit.table[i].q == fit.base.q) r.likelihoodChosen = i;
                r.likelihoodCandidates.push_back(c);
            }
            r.likelihoodCriterion = "AIC";
            r.jointLogLikelihood = fit.candidate.logLikelihood;
            r.model = modelchoice::make_arta(std::move(d), fit.base);
            return;
        }
        case TRACEFIT_MAP:
        case TRACEFIT_MMAP: {
            std::vector<mapem::Result> all;
            mapem::Result kept;
            if (request.model == TRACEFIT_MAP) {
                kept = request.mapOrder > 0 ? mapem::fit_map(data, request.mapOrder)
                                            : mapem::fit_map_by_aic(data, request.phases, mapem::Options(), &all);
            } else {
                const mapem::MarkedValues marked{data, request.classOf, request.classNames};
                kept = request.mapOrder > 0 ? mapem::fit_mmap(marked, request.mapOrder)
                                            : mapem::fit_mmap_by_aic(marked, request.phases, mapem::Options(), &all);
            }
            mapCandidates(all, kept, r);
            r.jointLogLikelihood = kept.logLikelihood;
            r.model = std::move(kept.map);
            return;
        }
        default:
            fail(__LINE__, "Not a fit by likelihood.");
    }
}

}  // namespace

TraceFitResult tracefit(Trace& trace, const TraceFitRequest& request,
                        const std::function<void(const std::string&)>& stage) {
    const unsigned lags = request.orders.lags;
    if (trace.getSize() < static_cast<std::size_t>(lags) + 2)
        fail(__LINE__, "The trace holds " + std::to_string(trace.getSize()) + " values; " + std::to_string(lags) +
                           " lags need at least " + std::to_string(lags + 2) + ".");
    std::vector<double> data(trace.getSize());
    for (unsigned i = 0; i < trace.getSize(); ++i) data[i] = trace.getElement(i);

    TraceFitResult r;
    r.values = data.size();
    if (stage) stage("marginal");
    TraceFitMarginal marginal = tracefit_marginal(data, request.marginal, request.phases);
    r.marginalName = marginal.name();
    r.marginalSource = marginal.source;
    r.marginalParameters = marginal.parameterText();
    r.assessment = marginal.assessment;
    r.candidates = std::move(marginal.candidates);

    if (stage) stage("correlation");
    switch (request.model) {
        case TRACEFIT_AUTO:
        case TRACEFIT_ARTA:
        case TRACEFIT_MAP:
        case TRACEFIT_MMAP:
            fitByLikelihood(marginal, request, data, r);
            break;
        default:
            r.model = tracefit_correlation(marginal, request.model, &trace, request.orders);
            break;
    }
    // An AR root next to the unit circle that an MA root nearly cancels
    // matches the lags fitted but lets the values drift far from the mean
    // over a long run. Such a fit is made again with AR terms only, on the
    // same marginal fitted anew (the first one now belongs to the model).
    // The fits by likelihood have invertible MA parts, which can't cancel.
    ARIMA* base = baseOf(r.model.get());
    if (r.likelihoodCandidates.empty() && base != nullptr && !base->getMACoefficients().empty() &&
        nearUnitRoot(*base) && request.orders.qMin == 0) {
        libvelmora_infomsg("The base process nearly has a unit root that its MA part cancels; fitting AR orders only.");
        TraceFitOrders arOnly = request.orders;
        arOnly.qMax = 0;
        TraceFitMarginal again = tracefit_marginal(data, request.marginal, request.phases);
        r.model = tracefit_correlation(again, request.model, &trace, arOnly);
    }
    // Every fitted model runs with the exact numerics, the ones it was fitted with.
    r.model->setExactNumerics(true);
    r.modelClass = tracefit_model_class(r.model.get());
    r.hasOrders = tracefit_base_orders(r.model.get(), &r.p, &r.q);
    r.targets = trace.getAutocorrelations(1, lags);
    r.fitted = r.model->getAutocorrelations(1, lags);
    return r;
}

std::string tracefit_model_file_text(Process& model) {
    FullPrecisionText exact;
    const std::string text = processFileText(model, FORMAT_XML);
    // The document's first element is the model; a second one (the capp
    // that a chep's text carries behind its own) is left out.
    const std::string head = "<velmora>\n<";
    const std::string::size_type open = text.find(head);
    const std::string::size_type tagEnd = open == std::string::npos ? open : text.find('>', open + head.size());
    if (tagEnd == std::string::npos) fail(__LINE__, "The model's text holds no element.");
    const std::string close = "</" + text.substr(open + head.size(), tagEnd - open - head.size()) + ">\n";
    const std::string::size_type end = text.find(close, tagEnd);
    if (end == std::string::npos) fail(__LINE__, "The model's text does not close its element.");
    return text.substr(0, end + close.size()) + "</velmora>\n";
}

namespace {

bool close(double got, double want, double scale) {
    return std::fabs(got - want) <= 1e-9 * scale || (std::isnan(got) && std::isnan(want));
}

}  // namespace

// Moments relative to their own size, autocorrelations relative to 1.
void tracefit_check_model_file(Process& model, const std::string& file) {
    XMLConfig document(file);
    std::unique_ptr<Process> read(load_process(&document));
    const std::vector<double> want = model.getMoments(1, 3), got = read->getMoments(1, 3);
    for (std::size_t i = 0; i < want.size() && i < got.size(); ++i)
        if (!close(got[i], want[i], std::fabs(want[i])))
            fail(__LINE__, "The model file does not hold the fitted model: its moment " + std::to_string(i + 1) +
                               " is " + formatNumber(got[i], "%.17g") + ", the fit's " +
                               formatNumber(want[i], "%.17g") + ".");
    const std::vector<double> wantAc = model.getAutocorrelations(1, 10), gotAc = read->getAutocorrelations(1, 10);
    for (std::size_t i = 0; i < wantAc.size() && i < gotAc.size(); ++i)
        if (!close(gotAc[i], wantAc[i], std::max(1.0, std::fabs(wantAc[i]))))
            fail(__LINE__, "The model file does not hold the fitted model: its autocorrelation at lag " +
                               std::to_string(i + 1) + " is " + formatNumber(gotAc[i], "%.17g") + ", the fit's " +
                               formatNumber(wantAc[i], "%.17g") + ".");
}

}  // namespace velmora
