// The search over branch structures and starts of the Erlang-branch MAP EM,
// and the model it returns. The two EM steps are in mapem_kernel.cpp.
#include "fitting/mapem.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <map>
#include <sstream>

#include "core/libvelmora_settings.h"
#include "fitting/mapem_kernel.h"
#include "numerics/random.h"
#include "traces/trace_mc.h"

namespace velmora {
namespace mapem {

using detail::Data;
using detail::Params;
using detail::Work;

namespace {

const double kMinusInf = -std::numeric_limits<double>::infinity();
// Above maxStructures partitions, balanced structures of 1 .. this many
// branches are tried.
const unsigned kMaxBranchesBalanced = 8;
// Seed of the jittered starts: a fit is a function of its data.
const unsigned long kJitterSeed = 20130916;
// Weight of the diagonal in the start of the branch transition matrix.
const double kStartStay = 0.5;
// The largest step of the squared extrapolation.
const double kMaxStep = 100;

[[noreturn]] void fail(int line, const std::string& message) { throw Exception("mapem", line, message); }

void checkOrder(unsigned order) {
    if (order == 0 || order > kMaxOrder)
        fail(__LINE__, "Invalid MAP order " + std::to_string(order) + ": it must be 1 to " +
                           std::to_string(kMaxOrder) + ".");
}

unsigned parameterCount(unsigned branches, unsigned classes) { return branches * branches * classes; }

Data makeData(const std::vector<double>& values, const std::vector<unsigned>& classOf, unsigned classes) {
    if (values.empty()) fail(__LINE__, "Cannot fit a MAP to an empty trace.");
    Data d;
    d.classes = classes;
    d.x = values;
    d.logx.resize(values.size());
    for (std::size_t k = 0; k < values.size(); ++k) {
        const double v = values[k];
        if (!std::isfinite(v) || !(v > 0)) {
            std::ostringstream s;
            s << "Cannot fit a MAP: value " << (k + 1) << " (" << v << ") is not a positive finite number.";
            fail(__LINE__, s.str());
        }
        d.logx[k] = std::log(v);
    }
    if (classOf.empty()) {
        d.cls.assign(values.size(), 0);
    } else {
        if (classOf.size() != values.size()) fail(__LINE__, "The class list and the values differ in length.");
        for (unsigned c : classOf)
            if (c >= classes) fail(__LINE__, "A class index is beyond the number of classes.");
        d.cls = classOf;
    }
    return d;
}

// One start of one structure and how far its EM has come.
struct Fit {
    Params p;
    double logLikelihood = kMinusInf;  // at p, first branch from p.alpha
    double previous = kMinusInf;
    unsigned iterations = 0;
    bool converged = false;
};

// theta' = theta0 - 2 s r + s^2 v of the squared extrapolation, with the
// rates in log scale; transition probabilities and the first-branch vector
// cut at 0 and each row brought back to sum 1.
void extrapolate(const Params& p0, const Params& p1, const Params& p2, Params& out) {
    double rr = 0, vv = 0;
    auto add = [&](double a, double b, double c) {
        const double r = b - a, v = c - 2 * b + a;
        rr += r * r;
        vv += v * v;
    };
    const unsigned B = p0.branches();
    for (unsigned i = 0; i < B; ++i) add(std::log(p0.lambda[i]), std::log(p1.lambda[i]), std::log(p2.lambda[i]));
    for (std::size_t e = 0; e < p0.P.size(); ++e) add(p0.P[e], p1.P[e], p2.P[e]);
    for (unsigned i = 0; i < B; ++i) add(p0.alpha[i], p1.alpha[i], p2.alpha[i]);
    double step = vv > 0 ? -std::sqrt(rr / vv) : -1.0;
    step = std::max(-kMaxStep, std::min(-1.0, step));
    auto point = [step](double a, double b, double c) {
        const double r = b - a, v = c - 2 * b + a;
        return a - 2 * step * r + step * step * v;
    };
    out = p0;
    for (unsigned i = 0; i < B; ++i)
        out.lambda[i] = std::exp(point(std::log(p0.lambda[i]), std::log(p1.lambda[i]), std::log(p2.lambda[i])));
    for (std::size_t e = 0; e < p0.P.size(); ++e) out.P[e] = std::max(0.0, point(p0.P[e], p1.P[e], p2.P[e]));
    double total = 0;
    for (unsigned i = 0; i < B; ++i) total += (out.alpha[i] = std::max(0.0, point(p0.alpha[i], p1.alpha[i], p2.alpha[i])));
    for (unsigned i = 0; i < B; ++i) out.alpha[i] = total > 0 ? out.alpha[i] / total : p2.alpha[i];
    const std::size_t BB = static_cast<std::size_t>(B) * B, C = p0.P.size() / BB;
    for (unsigned i = 0; i < B; ++i) {
        double row = 0;
        for (std::size_t c = 0; c < C; ++c)
            for (unsigned j = 0; j < B; ++j) row += out.P[c * BB + i * B + j];
        for (std::size_t c = 0; c < C; ++c)
            for (unsigned j = 0; j < B; ++j) {
                double& x = out.P[c * BB + i * B + j];
                x = row > 0 ? x / row : p2.P[c * BB + i * B + j];
            }
    }
}

// EM from the fit's parameters until the gain test is met or `limit`
// iterations are done in all; called again, it goes on where it stopped.
// A cycle is two EM steps and, when accelerated, the squared extrapolation
// of Varadhan and Roland (SQUAREM, scheme S3, Scandinavian Journal of
// Statistics 2008) from them, kept only if its likelihood is at least that
// after the first step, and followed by one EM step; the gain test compares
// the likelihood at the start of successive cycles.
void run(const Data& d, Fit& f, Work& w, unsigned limit, double tolerance, bool accelerate) {
    Params p0, p1, p2, px;
    for (;;) {
        const double ll = detail::expectation(d, f.p, w);
        f.logLikelihood = ll;
        if (ll == kMinusInf) return;
        if (f.previous != kMinusInf && ll - f.previous <= tolerance * std::fabs(ll)) {
            f.converged = true;
            return;
        }
        if (f.iterations >= limit) return;
        f.previous = ll;
        if (accelerate) p0 = f.p;
        detail::maximisation(d, f.p, w);
        ++f.iterations;
        if (!accelerate || f.iterations + 2 > limit) continue;
        p1 = f.p;
        const double ll1 = detail::expectation(d, p1, w);
        if (ll1 == kMinusInf) continue;
        detail::maximisation(d, f.p, w);
        ++f.iterations;
        p2 = f.p;
        extrapolate(p0, p1, p2, px);
        const double llx = detail::expectation(d, px, w);
        if (std::isfinite(llx) && llx >= ll1) {
            f.p = px;
            detail::maximisation(d, f.p, w);
            ++f.iterations;
        }
    }
}

// The deterministic start: branch i (orders as given) with its mean at the
// quantile (i + 1/2) / B of the data, the first branch uniform, and each
// class's transition matrix its share of the events times a matrix that
// keeps the branch with kStartStay and spreads the rest evenly.
Params start(const std::vector<unsigned>& orders, const std::vector<double>& sorted,
             const std::vector<double>& classShare) {
    Params p;
    p.r = orders;
    const unsigned B = p.branches();
    const unsigned C = static_cast<unsigned>(classShare.size());
    p.lambda.resize(B);
    for (unsigned i = 0; i < B; ++i) {
        const double q = (i + 0.5) / B;
        const std::size_t at = std::min(sorted.size() - 1, static_cast<std::size_t>(q * sorted.size()));
        p.lambda[i] = orders[i] / sorted[at];
    }
    p.alpha.assign(B, 1.0 / B);
    p.P.assign(static_cast<std::size_t>(C) * B * B, 0);
    for (unsigned c = 0; c < C; ++c)
        for (unsigned i = 0; i < B; ++i)
            for (unsigned j = 0; j < B; ++j)
                p.P[(static_cast<std::size_t>(c) * B + i) * B + j] =
                    classShare[c] * ((1 - kStartStay) / B + (i == j ? kStartStay : 0.0));
    return p;
}

// The structures tried for a total order: every partition, or for orders
// with too many partitions the balanced ones (B parts differing by at most 1).
std::vector<std::vector<unsigned>> structuresOf(unsigned order, std::size_t maxStructures) {
    std::vector<std::vector<unsigned>> all;
    if (order <= 40) {
        all = partitions(order);
        if (all.size() <= maxStructures) return all;
        all.clear();
    }
    for (unsigned B = 1; B <= std::min(order, kMaxBranchesBalanced); ++B) {
        std::vector<unsigned> s(B, order / B);
        for (unsigned i = 0; i < order % B; ++i) ++s[i];
        all.push_back(s);
    }
    return all;
}

struct Search {
    Fit best;
    unsigned structures = 0;
};

// Short runs of every structure, further starts of the best, and the best
// of those on to convergence.
// The iteration cap of a run on n values: maxIterations, lowered so that the
// run stays within valueIterations values times iterations, but never below
// the short runs.
unsigned capFor(std::size_t n, const Options& o) {
    const double byWork = o.valueIterations / static_cast<double>(n);
    const double cap = std::max<double>(std::min(o.probeIterations, o.maxIterations), std::min<double>(o.maxIterations, byWork));
    return static_cast<unsigned>(cap);
}

Data prefixOf(const Data& full, std::size_t count) {
    Data d;
    d.classes = full.classes;
    d.x.assign(full.x.begin(), full.x.begin() + count);
    d.logx.assign(full.logx.begin(), full.logx.begin() + count);
    d.cls.assign(full.cls.begin(), full.cls.begin() + count);
    return d;
}

Search search(const Data& full, const std::vector<std::vector<unsigned>>& candidates, const Options& o) {
    if (o.probeIterations == 0 || o.maxIterations == 0 || !(o.tolerance >= 0) || o.starts == 0 ||
        o.searchValues == 0 || !(o.valueIterations > 0))
        fail(__LINE__, "Invalid EM options: iterations, starts and counts must be positive, the tolerance not negative.");
    // A long trace is searched on its first searchValues values, which keep
    // their order and so their correlation.
    const bool shortened = full.size() > o.searchValues;
    const Data prefix = shortened ? prefixOf(full, o.searchValues) : Data();
    const Data& d = shortened ? prefix : full;
    std::vector<double> sorted(d.x);
    std::sort(sorted.begin(), sorted.end());
    std::vector<double> share(d.classes, 0);
    for (unsigned c : d.cls) share[c] += 1;
    for (double& s : share) s /= static_cast<double>(d.size());

    Search out;
    Work w;
    const unsigned probe = std::min(o.probeIterations, o.maxIterations);
    unsigned fewest = std::numeric_limits<unsigned>::max();
    for (const auto& s : candidates) {
        const unsigned k = parameterCount(static_cast<unsigned>(s.size()), d.classes);
        fewest = std::min(fewest, k);
        if (k > full.size()) continue;
        ++out.structures;
        std::vector<unsigned> ascending(s.rbegin(), s.rend());
        Fit f;
        f.p = start(ascending, sorted, share);
        w.resize(d.size(), f.p.branches(), d.classes);
        run(d, f, w, probe, o.tolerance, o.accelerate);
        if (f.logLikelihood > out.best.logLikelihood || out.best.p.r.empty()) out.best = f;
    }
    if (out.structures == 0) {
        std::ostringstream s;
        s << "Cannot fit a MAP: " << full.size() << " values are fewer than the " << fewest
          << " parameters of the smallest model.";
        fail(__LINE__, s.str());
    }
    if (out.best.logLikelihood == kMinusInf)
        fail(__LINE__, "Cannot fit a MAP: no structure gives the values a positive density.");

    // Further starts of the best structure: the other orders of its
    // branches over the quantiles, then jittered rates around its first start.
    const std::vector<unsigned> kept = out.best.p.r;
    const unsigned B = static_cast<unsigned>(kept.size());
    w.resize(d.size(), B, d.classes);
    std::vector<unsigned> order = kept;
    std::sort(order.begin(), order.end());
    Rand jitter(kJitterSeed);
    unsigned made = 1;
    bool permuting = std::next_permutation(order.begin(), order.end());
    while (made < o.starts) {
        Fit f;
        if (permuting) {
            f.p = start(order, sorted, share);
            permuting = std::next_permutation(order.begin(), order.end());
        } else {
            std::vector<unsigned> ascending = kept;
            std::sort(ascending.begin(), ascending.end());
            f.p = start(ascending, sorted, share);
            for (double& l : f.p.lambda) l *= std::exp(2 * jitter.drawRandomNumber() - 1);
        }
        ++made;
        run(d, f, w, probe, o.tolerance, o.accelerate);
        if (f.logLikelihood > out.best.logLikelihood) out.best = f;
    }
    run(d, out.best, w, out.best.iterations + capFor(d.size(), o), o.tolerance, o.accelerate);
    if (shortened) {
        Fit& f = out.best;
        f.previous = kMinusInf;
        f.converged = false;
        w.resize(full.size(), B, full.classes);
        run(full, f, w, f.iterations + capFor(full.size(), o), o.tolerance, o.accelerate);
    }
    return out;
}

// The matrices and the MAP of an Erlang-branch model, without fit figures.
void fillModel(const Params& p, unsigned C, Result& r) {
    const unsigned B = p.branches();
    const std::size_t BB = static_cast<std::size_t>(B) * B;
    unsigned N = 0;
    std::vector<unsigned> offset(B);
    for (unsigned i = 0; i < B; ++i) {
        offset[i] = N;
        N += p.r[i];
    }
    Matrix D0(N, N);
    std::vector<Matrix> events(C, Matrix(N, N));
    for (unsigned i = 0; i < B; ++i) {
        const double l = p.lambda[i];
        for (unsigned q = 0; q < p.r[i]; ++q) {
            D0[offset[i] + q][offset[i] + q] = -l;
            if (q + 1 < p.r[i]) D0[offset[i] + q][offset[i] + q + 1] = l;
        }
        const unsigned last = offset[i] + p.r[i] - 1;
        for (unsigned c = 0; c < C; ++c)
            for (unsigned j = 0; j < B; ++j) events[c][last][offset[j]] = l * p.P[c * BB + i * B + j];
    }
    Matrix D1(N, N);
    for (unsigned c = 0; c < C; ++c) D1 = D1 + events[c];
    if (C == 1) {
        r.map = std::make_unique<MAP>(D0, D1);
    } else {
        std::vector<std::string> names = r.classes;
        for (unsigned c = static_cast<unsigned>(names.size()); c < C; ++c) names.push_back("class" + std::to_string(c + 1));
        r.map = std::make_unique<MarkedMAP>(D0, events, names);
    }
    r.matrices.assign(1, D0);
    if (C == 1) r.matrices.push_back(D1);
    else
        for (auto& e : events) r.matrices.push_back(e);
    r.structure = p.r;
    r.rates = p.lambda;
    r.transitions.clear();
    for (unsigned c = 0; c < C; ++c) r.transitions.emplace_back(p.P.begin() + c * BB, p.P.begin() + (c + 1) * BB);
    r.parameters = parameterCount(B, C);
}

Params paramsOf(const Result& fit) {
    Params p;
    p.r = fit.structure;
    p.lambda = fit.rates;
    for (const auto& t : fit.transitions) p.P.insert(p.P.end(), t.begin(), t.end());
    return p;
}

Result makeResult(const Data& d, Search&& s, std::vector<std::string> classes) {
    Result r;
    const Params& p = s.best.p;
    const unsigned B = p.branches();
    const unsigned C = d.classes;
    r.classes = std::move(classes);
    fillModel(p, C, r);
    Work w;
    w.resize(d.size(), B, C);
    r.logLikelihood = detail::log_likelihood(d, p, detail::stationary(p, C), w);
    r.n = d.size();
    r.aic = 2.0 * r.parameters - 2 * r.logLikelihood;
    r.bic = r.parameters * std::log(static_cast<double>(r.n)) - 2 * r.logLikelihood;
    r.iterations = s.best.iterations;
    r.converged = s.best.converged;
    r.structures = s.structures;
    if (!r.converged) {
        std::ostringstream m;
        m << "The MAP EM stopped after " << r.iterations
          << " iterations without meeting its convergence test; more iterations may improve the result.";
        libvelmora_warning("mapem", __LINE__, m.str());
    }
    return r;
}

}  // namespace

MarkedMAP::MarkedMAP(Matrix D0, std::vector<Matrix> classes, std::vector<std::string> names)
    : MAP(D0, [&] {
          Matrix sum(D0.getNumberRows(), D0.getNumberCols());
          for (const Matrix& m : classes) sum = sum + m;
          return sum;
      }()),
      classMatrices(std::move(classes)),
      classNames(std::move(names)) {}

std::string MarkedMAP::toString(format f) {
    std::string text = MAP::toString(f);
    if (f != FORMAT_XML) return text;
    std::ostringstream marks;
    marks << "<marks>" << std::endl;
    for (std::size_t c = 0; c < classMatrices.size(); ++c) {
        marks << "<class>" << std::endl;
        marks << "<name>" << classNames[c] << "</name>" << std::endl;
        marks << "<d>" << classMatrices[c].toString(10) << std::endl;
        marks << "</d>" << std::endl;
        marks << "</class>" << std::endl;
    }
    marks << "</marks>" << std::endl;
    const std::string::size_type end = text.rfind("</map>");
    return text.substr(0, end) + marks.str() + text.substr(end);
}

namespace {
std::unique_ptr<MAP> copyOf(const MAP* m) {
    if (m == nullptr) return nullptr;
    if (auto* marked = dynamic_cast<const MarkedMAP*>(m)) return std::make_unique<MarkedMAP>(*marked);
    return std::make_unique<MAP>(*m);
}
}  // namespace

Result::Result() = default;
Result::Result(const Result& other)
    : map(copyOf(other.map.get())),
      matrices(other.matrices),
      classes(other.classes),
      structure(other.structure),
      rates(other.rates),
      transitions(other.transitions),
      logLikelihood(other.logLikelihood),
      parameters(other.parameters),
      n(other.n),
      aic(other.aic),
      bic(other.bic),
      iterations(other.iterations),
      converged(other.converged),
      structures(other.structures) {}
Result& Result::operator=(const Result& other) {
    if (this != &other) *this = Result(other);
    return *this;
}
Result::Result(Result&&) noexcept = default;
Result& Result::operator=(Result&&) noexcept = default;
Result::~Result() = default;

MMAP Result::asMMAP() const { return MMAP(matrices); }

std::vector<std::vector<unsigned>> partitions(unsigned n) {
    std::vector<std::vector<unsigned>> out;
    std::vector<unsigned> a{n};
    if (n == 0) return {{}};
    // Each partition from the one before: take one from the last part above
    // 1 and spread what follows it in parts no larger.
    for (;;) {
        out.push_back(a);
        std::size_t k = a.size();
        unsigned rest = 0;
        while (k > 0 && a[k - 1] == 1) {
            ++rest;
            --k;
        }
        if (k == 0) break;
        const unsigned part = --a[k - 1];
        ++rest;
        a.resize(k);
        while (rest > part) {
            a.push_back(part);
            rest -= part;
        }
        if (rest > 0) a.push_back(rest);
    }
    return out;
}

Result fit_map(const std::vector<double>& data, unsigned order, const Options& options) {
    checkOrder(order);
    const Data d = makeData(data, {}, 1);
    return makeResult(d, search(d, structuresOf(order, options.maxStructures), options), {});
}

Result fit_map_structure(const std::vector<double>& data, const std::vector<unsigned>& structure,
                         const Options& options) {
    unsigned order = 0;
    for (unsigned r : structure) {
        if (r == 0) fail(__LINE__, "A branch of a MAP structure has no phases.");
        order += r;
    }
    checkOrder(order);
    const Data d = makeData(data, {}, 1);
    return makeResult(d, search(d, {structure}, options), {});
}

namespace {

Result byAic(const Data& d, unsigned maxOrder, const Options& options, const std::vector<std::string>& names,
             std::vector<Result>* candidates) {
    checkOrder(maxOrder);
    Result best;
    for (unsigned order = 1; order <= maxOrder; ++order) {
        Result r = makeResult(d, search(d, structuresOf(order, options.maxStructures), options), names);
        const bool better = !best.map || r.aic < best.aic;
        if (candidates != nullptr) candidates->push_back(r);
        if (better) best = std::move(r);
    }
    return best;
}

}  // namespace

Result fit_map_by_aic(const std::vector<double>& data, unsigned maxOrder, const Options& options,
                      std::vector<Result>* candidates) {
    checkOrder(maxOrder);
    return byAic(makeData(data, {}, 1), maxOrder, options, {}, candidates);
}

MarkedValues read_marked_values(const std::string& file) {
    // The multi-class reader ends the program on a file it can't open.
    if (!std::ifstream(file.c_str()).is_open()) fail(__LINE__, "Cannot open the trace '" + file + "'.");
    MCTrace trace(file, false);
    return marked_values(trace);
}

MarkedValues marked_values(MCTrace& trace) {
    std::map<std::string, unsigned> index;
    const unsigned n = trace.getSize();
    MarkedValues m;
    m.values.resize(n);
    std::vector<std::string> label(n);
    for (unsigned k = 0; k < n; ++k) {
        const MCTElement e = trace.getElement(k);
        m.values[k] = e.value;
        label[k] = e.elementClass;
        index.emplace(e.elementClass, 0);
    }
    for (auto& [name, at] : index) {
        at = static_cast<unsigned>(m.names.size());
        m.names.push_back(name);
    }
    if (m.names.size() < 2)
        fail(__LINE__, "Cannot fit a marked MAP: the trace has " + std::to_string(m.names.size()) + " class" +
                           (m.names.size() == 1 ? "" : "es") + ", at least two are needed.");
    m.classOf.resize(n);
    for (unsigned k = 0; k < n; ++k) m.classOf[k] = index[label[k]];
    return m;
}

Result fit_mmap_by_aic(const MarkedValues& m, unsigned maxOrder, const Options& options,
                       std::vector<Result>* candidates) {
    checkOrder(maxOrder);
    if (m.names.size() < 2) fail(__LINE__, "Cannot fit a marked MAP to a trace of one class.");
    const Data d = makeData(m.values, m.classOf, static_cast<unsigned>(m.names.size()));
    return byAic(d, maxOrder, options, m.names, candidates);
}

Result fit_mmap_by_aic(MCTrace& trace, unsigned maxOrder, const Options& options, std::vector<Result>* candidates) {
    return fit_mmap_by_aic(marked_values(trace), maxOrder, options, candidates);
}

Result fit_mmap(const MarkedValues& m, unsigned order, const Options& options) {
    checkOrder(order);
    if (m.names.size() < 2) fail(__LINE__, "Cannot fit a marked MAP to a trace of one class.");
    const Data d = makeData(m.values, m.classOf, static_cast<unsigned>(m.names.size()));
    return makeResult(d, search(d, structuresOf(order, options.maxStructures), options), m.names);
}

Result fit_mmap(const std::vector<double>& data, const std::vector<unsigned>& classOf, unsigned classes,
                unsigned order, const Options& options) {
    checkOrder(order);
    if (classes < 2) fail(__LINE__, "Cannot fit a marked MAP to a trace of one class.");
    const Data d = makeData(data, classOf, classes);
    std::vector<std::string> names;
    for (unsigned c = 0; c < classes; ++c) names.push_back("class" + std::to_string(c + 1));
    return makeResult(d, search(d, structuresOf(order, options.maxStructures), options), names);
}

Result fit_mmap(MCTrace& trace, unsigned order, const Options& options) {
    return fit_mmap(marked_values(trace), order, options);
}

double log_likelihood(const Result& fit, const std::vector<double>& data, const std::vector<unsigned>& classOf) {
    const unsigned C = static_cast<unsigned>(fit.transitions.size());
    const Data d = makeData(data, classOf, C);
    const Params p = paramsOf(fit);
    Work w;
    w.resize(d.size(), p.branches(), C);
    return detail::log_likelihood(d, p, detail::stationary(p, C), w);
}

std::vector<double> class_frequencies(const Result& fit) {
    const Params p = paramsOf(fit);
    const unsigned B = p.branches();
    const unsigned C = static_cast<unsigned>(fit.transitions.size());
    const std::vector<double> pi = detail::stationary(p, C);
    std::vector<double> share(C, 0);
    for (unsigned c = 0; c < C; ++c)
        for (unsigned i = 0; i < B; ++i)
            for (unsigned j = 0; j < B; ++j) share[c] += pi[i] * fit.transitions[c][static_cast<std::size_t>(i) * B + j];
    return share;
}

Result model(const std::vector<unsigned>& structure, const std::vector<double>& rates,
             const std::vector<std::vector<double>>& transitions) {
    const std::size_t B = structure.size();
    if (B == 0 || rates.size() != B || transitions.empty()) fail(__LINE__, "An Erlang-branch model needs a branch.");
    Params p;
    p.r = structure;
    p.lambda = rates;
    unsigned order = 0;
    for (std::size_t i = 0; i < B; ++i) {
        if (structure[i] == 0 || !(rates[i] > 0) || !std::isfinite(rates[i]))
            fail(__LINE__, "Each branch needs phases and a positive finite rate.");
        order += structure[i];
    }
    checkOrder(order);
    for (const auto& t : transitions) {
        if (t.size() != B * B) fail(__LINE__, "A transition matrix has not B x B entries.");
        p.P.insert(p.P.end(), t.begin(), t.end());
    }
    for (std::size_t i = 0; i < B; ++i) {
        double s = 0;
        for (std::size_t c = 0; c < transitions.size(); ++c)
            for (std::size_t j = 0; j < B; ++j) {
                const double v = transitions[c][i * B + j];
                if (!(v >= 0)) fail(__LINE__, "A transition probability is negative.");
                s += v;
            }
        if (std::fabs(s - 1) > 1e-9) fail(__LINE__, "A row of the transition matrices does not sum to 1.");
    }
    Result r;
    fillModel(p, static_cast<unsigned>(transitions.size()), r);
    return r;
}

std::pair<std::vector<double>, std::vector<unsigned>> simulate(const Result& m, std::size_t n, unsigned long seed) {
    const Params p = paramsOf(m);
    const unsigned B = p.branches();
    const unsigned C = static_cast<unsigned>(m.transitions.size());
    const std::vector<double> pi = detail::stationary(p, C);
    Rand rng(seed);
    auto pick = [&rng](const double* weights, std::size_t count) {
        const double u = rng.drawRandomNumber();
        double sum = 0;
        for (std::size_t k = 0; k < count; ++k) {
            sum += weights[k];
            if (u <= sum) return k;
        }
        return count - 1;
    };
    // Row i of the joint choice of class and next branch, class-major.
    std::vector<double> rows(static_cast<std::size_t>(B) * C * B);
    for (unsigned i = 0; i < B; ++i)
        for (unsigned c = 0; c < C; ++c)
            for (unsigned j = 0; j < B; ++j)
                rows[(static_cast<std::size_t>(i) * C + c) * B + j] = p.P[(static_cast<std::size_t>(c) * B + i) * B + j];
    std::pair<std::vector<double>, std::vector<unsigned>> out;
    out.first.reserve(n);
    out.second.reserve(n);
    std::size_t b = pick(pi.data(), B);
    for (std::size_t k = 0; k < n; ++k) {
        double x = 0;
        for (unsigned q = 0; q < p.r[b]; ++q) x += rng.exponential(p.lambda[b]);
        const std::size_t choice = pick(rows.data() + b * C * B, static_cast<std::size_t>(C) * B);
        out.first.push_back(x);
        out.second.push_back(static_cast<unsigned>(choice / B));
        b = choice % B;
    }
    return out;
}

}  // namespace mapem
}  // namespace velmora
