// Hyper-Erlang fitting by the EM algorithm of Thuemmler, Buchholz and Telek
// (IEEE Transactions on Dependable and Secure Computing, 2006).
//
// For a fixed structure (branch i has k_i phases) the E-step gives each value
// x_j its posterior branch probabilities
//   w_ij = p_i f_i(x_j) / sum_l p_l f_l(x_j),
//   log f_i(x) = k_i log r_i - lgamma(k_i) + (k_i - 1) log x - r_i x,
// computed in log space (largest term factored out), so that no density
// underflows whatever the phases and the spread of the data. The M-step sets
// p_i to the mean of w_ij and r_i = k_i sum_j w_ij / sum_j w_ij x_j. Every
// partition of the total phase count into branch counts is tried; the one of
// highest likelihood is kept. The start is deterministic: equal branch
// probabilities and branch means at spread quantiles of the data; the
// orderings of a structure's phase counts over those quantiles (at most 24)
// run 20 iterations each, and the best goes on until the likelihood's gain
// falls below the tolerance or the iteration cap is reached.
//
// Long inputs are aggregated first: a grid of equal widths on the log scale,
// each non-empty bin a weighted point with the bin's mean of x and of log x.
// Both means are exact sufficient statistics of a single Erlang branch, so
// the likelihood of a bin is exact within a branch and only the posterior is
// taken at the bin's representative point; an iteration then costs
// O(bins x branches). The final log-likelihood is computed on the full data.
#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <sstream>

#include "core/libvelmora_settings.h"
#include "distributions/dist_hypererlang.h"
#include "fitting/distfit.h"
#include "numerics/misc_math.h"

namespace velmora {
namespace distfit {

namespace {

const double kMinusInf = -std::numeric_limits<double>::infinity();

// Per structure, at most this many orderings of the branch phase counts
// (in lexicographic order) compete, each for this many iterations.
const unsigned kOrderings = 24;
const unsigned kWarmUp = 20;

// Weighted points the EM runs on, ascending in x. A point at 0 has log x of
// -infinity, which only branches of one phase (density rate at 0) survive.
struct Points {
    std::vector<double> weight, x, logx;
    void add(double w, double xv, double lx) {
        weight.push_back(w);
        x.push_back(xv);
        logx.push_back(lx);
    }
};

Points aggregate(const std::vector<double>& data, std::size_t maxBins) {
    Points p;
    if (data.size() <= maxBins) {
        std::vector<double> sorted(data);
        std::sort(sorted.begin(), sorted.end());
        for (double x : sorted) p.add(1, x, x > 0 ? std::log(x) : kMinusInf);
        return p;
    }
    double zeros = 0, lo = std::numeric_limits<double>::infinity(), hi = kMinusInf;
    for (double x : data) {
        if (x > 0) {
            lo = std::min(lo, x);
            hi = std::max(hi, x);
        } else {
            zeros += 1;
        }
    }
    if (zeros > 0) p.add(zeros, 0, kMinusInf);
    if (!(hi > 0)) return p;
    lo = std::log(lo);
    hi = std::log(hi);
    const std::size_t bins = std::max<std::size_t>(1, maxBins - (zeros > 0 ? 1 : 0));
    const double width = (hi - lo) / static_cast<double>(bins);
    std::vector<double> count(bins, 0), sumX(bins, 0), sumLog(bins, 0);
    for (double x : data) {
        if (!(x > 0)) continue;
        const double lx = std::log(x);
        std::size_t b = width > 0 ? static_cast<std::size_t>((lx - lo) / width) : 0;
        if (b >= bins) b = bins - 1;
        count[b] += 1;
        sumX[b] += x;
        sumLog[b] += lx;
    }
    for (std::size_t b = 0; b < bins; ++b)
        if (count[b] > 0) p.add(count[b], sumX[b] / count[b], sumLog[b] / count[b]);
    return p;
}

// All partitions of n into non-increasing parts, largest first part first.
void partitions(unsigned n, unsigned largest, std::vector<unsigned>& prefix, std::vector<std::vector<unsigned>>& out) {
    if (n == 0) {
        out.push_back(prefix);
        return;
    }
    for (unsigned part = std::min(n, largest); part >= 1; --part) {
        prefix.push_back(part);
        partitions(n - part, part, prefix, out);
        prefix.pop_back();
    }
}

struct Fit {
    std::vector<unsigned> phases;
    std::vector<double> rates, probabilities;
    double logLikelihood = kMinusInf;  // on the points
    unsigned iterations = 0;
    bool converged = false;
};

// Buffers of one structure, sized once so that iterations don't allocate.
struct Work {
    std::vector<double> km1, lconst, term, w, wx;
    void resize(std::size_t m) {
        km1.assign(m, 0);
        lconst.assign(m, 0);
        term.assign(m, 0);
        w.assign(m, 0);
        wx.assign(m, 0);
    }
};

// A deterministic start: equal probabilities, and branch i's mean at the
// weighted quantile (i + offset)/(m - 1 + 2 offset) of the points (the whole
// mean where that quantile is 0), so the branches start spread over the data;
// offset 1/2 gives the quantiles (i + 1/2)/m, offset 1 (i + 1)/(m + 1).
void start(const Points& pts, double total, double mean, double offset, Fit& f) {
    const std::size_t m = f.phases.size();
    f.probabilities.assign(m, 1.0 / static_cast<double>(m));
    f.rates.assign(m, 0);
    double cum = 0;
    std::size_t j = 0;
    for (std::size_t i = 0; i < m; ++i) {
        const double target = (static_cast<double>(i) + offset) / (static_cast<double>(m) - 1 + 2 * offset) * total;
        while (j + 1 < pts.x.size() && cum + pts.weight[j] < target) cum += pts.weight[j++];
        const double q = pts.x[j] > 0 ? pts.x[j] : mean;
        f.rates[i] = f.phases[i] / q;
    }
}

// One E-step at the current parameters: the log-likelihood of the points
// and, in work.w and work.wx, sum_j w_ij and sum_j w_ij x_j.
double expectation(const Points& pts, const Fit& f, Work& work) {
    const std::size_t m = f.phases.size();
    for (std::size_t i = 0; i < m; ++i) {
        const double k = f.phases[i];
        work.km1[i] = k - 1;
        work.lconst[i] = std::log(f.probabilities[i]) + k * std::log(f.rates[i]) - log_gamma(k);
        work.w[i] = 0;
        work.wx[i] = 0;
    }
    double ll = 0;
    const std::size_t n = pts.x.size();
    const double* weight = pts.weight.data();
    const double* xs = pts.x.data();
    const double* logs = pts.logx.data();
    const double* rates = f.rates.data();
    double* term = work.term.data();
    for (std::size_t j = 0; j < n; ++j) {
        const double x = xs[j], lx = logs[j];
        double top = kMinusInf;
        for (std::size_t i = 0; i < m; ++i) {
            const double shape = work.km1[i] > 0 ? work.km1[i] * lx : 0.0;
            term[i] = work.lconst[i] + shape - rates[i] * x;
            if (term[i] > top) top = term[i];
        }
        if (top == kMinusInf) return kMinusInf;  // no branch has density here
        double sum = 0;
        for (std::size_t i = 0; i < m; ++i) {
            term[i] = std::exp(term[i] - top);
            sum += term[i];
        }
        ll += weight[j] * (top + std::log(sum));
        const double scale = weight[j] / sum;
        for (std::size_t i = 0; i < m; ++i) {
            const double post = scale * term[i];
            work.w[i] += post;
            work.wx[i] += post * x;
        }
    }
    return ll;
}

void maximisation(Fit& f, const Work& work) {
    const std::size_t m = f.phases.size();
    double total = 0;
    for (std::size_t i = 0; i < m; ++i) total += work.w[i];
    for (std::size_t i = 0; i < m; ++i) {
        f.probabilities[i] = work.w[i] / total;
        // A branch that has lost all weight keeps its rate; its probability is 0.
        if (work.w[i] > 0 && work.wx[i] > 0) f.rates[i] = f.phases[i] * work.w[i] / work.wx[i];
    }
}

// EM from f's current parameters until the test is met or f.iterations
// reaches `limit`; called again, it goes on where it stopped.
void runEM(const Points& pts, unsigned limit, double tolerance, Fit& f, Work& work) {
    double previous = kMinusInf;
    for (bool first = true;; first = false) {
        const double ll = expectation(pts, f, work);
        f.logLikelihood = ll;
        if (ll == kMinusInf) return;  // the structure cannot produce the data
        if (!first && ll - previous <= tolerance * std::fabs(ll)) {
            f.converged = true;
            return;
        }
        if (f.iterations >= limit) return;
        maximisation(f, work);
        ++f.iterations;
        previous = ll;
    }
}

// sum_j log sum_i p_i f_i(x_j) over every value, in the same log space.
double fullLogLikelihood(const std::vector<double>& data, const Fit& f) {
    const std::size_t m = f.phases.size();
    std::vector<double> lconst(m), term(m);
    for (std::size_t i = 0; i < m; ++i) {
        const double k = f.phases[i];
        lconst[i] = std::log(f.probabilities[i]) + k * std::log(f.rates[i]) - log_gamma(k);
    }
    double ll = 0;
    for (double x : data) {
        const double lx = x > 0 ? std::log(x) : kMinusInf;
        double top = kMinusInf;
        for (std::size_t i = 0; i < m; ++i) {
            const double shape = f.phases[i] > 1 ? (f.phases[i] - 1.0) * lx : 0.0;
            term[i] = lconst[i] + shape - f.rates[i] * x;
            top = std::max(top, term[i]);
        }
        if (top == kMinusInf) return kMinusInf;
        double sum = 0;
        for (std::size_t i = 0; i < m; ++i) sum += std::exp(term[i] - top);
        ll += top + std::log(sum);
    }
    return ll;
}

// A fit whose branches collapse is a smaller structure in disguise: a branch
// without weight, or two branches of equal phases whose rates agree to 1e-3.
bool collapsed(const Fit& f) {
    for (std::size_t i = 0; i < f.phases.size(); ++i) {
        if (!(f.probabilities[i] > 1e-9)) return true;
        for (std::size_t j = i + 1; j < f.phases.size(); ++j)
            if (f.phases[i] == f.phases[j] && std::fabs(f.rates[i] - f.rates[j]) <= 1e-3 * std::max(f.rates[i], f.rates[j]))
                return true;
    }
    return false;
}

// Whether a is a better fit to keep than b: a collapsed fit only over
// another collapsed one or none.
bool better(const Fit& a, const Fit& b) {
    if (b.phases.empty()) return true;
    const bool ca = collapsed(a), cb = collapsed(b);
    if (ca != cb) return cb;
    return a.logLikelihood > b.logLikelihood;
}

struct Search {
    const Points& pts;
    const EMOptions& options;
    double total = 0, mean = 0;
    unsigned structures = 0, unconverged = 0;
    Work work;

    Search(const Points& p, const EMOptions& o) : pts(p), options(o) {
        double sum = 0;
        for (std::size_t j = 0; j < pts.x.size(); ++j) {
            total += pts.weight[j];
            sum += pts.weight[j] * pts.x[j];
        }
        mean = sum / total;
    }

    void finish(Fit& lead) {
        if (!lead.converged) runEM(pts, options.maxIterations, options.tolerance, lead, work);
        if (!lead.converged && lead.logLikelihood != kMinusInf) ++unconverged;
        ++structures;
    }

    // One structure from several starts: the orderings of its phase counts
    // over two spreads of quantiles compete for a few iterations, and the
    // leader, preferring fits that don't collapse, goes on to convergence.
    Fit fromStarts(const std::vector<unsigned>& s) {
        std::vector<unsigned> order(s.rbegin(), s.rend());
        work.resize(s.size());
        const unsigned warmUp = std::min(kWarmUp, options.maxIterations);
        Fit f, lead;
        unsigned tried = 0;
        do {
            for (double offset : {0.5, 1.0, 0.1}) {
                f.phases = order;
                f.iterations = 0;
                f.converged = false;
                start(pts, total, mean, offset, f);
                runEM(pts, warmUp, options.tolerance, f, work);
                if (lead.phases.empty() || better(f, lead)) lead = f;
                if (s.size() == 1) break;
            }
        } while (++tried < kOrderings && std::next_permutation(order.begin(), order.end()));
        finish(lead);
        return lead;
    }

    // Every partition of n phases into branches.
    Fit everyPartition(unsigned n) {
        std::vector<std::vector<unsigned>> all;
        std::vector<unsigned> prefix;
        partitions(n, n, prefix, all);
        Fit best;
        for (const auto& s : all) {
            Fit lead = fromStarts(s);
            if (better(lead, best)) best = lead;
        }
        return best;
    }

    // The structures one phase larger than `from`: each branch one phase
    // longer at the same mean, or a new one-phase branch at the mean taking
    // a tenth of the weight; each continues from `from`'s parameters, and a
    // fresh multi-start of the same structures competes as well.
    Fit grown(const Fit& from) {
        Fit best;
        const std::size_t m = from.phases.size();
        for (std::size_t i = 0; i <= m; ++i) {
            Fit f = from;
            if (i < m) {
                f.rates[i] *= (f.phases[i] + 1.0) / f.phases[i];
                f.phases[i] += 1;
            } else {
                for (double& p : f.probabilities) p *= 0.9;
                f.phases.push_back(1);
                f.rates.push_back(1 / mean);
                f.probabilities.push_back(0.1);
            }
            f.iterations = 0;
            f.converged = false;
            work.resize(f.phases.size());
            runEM(pts, options.maxIterations, options.tolerance, f, work);
            if (!f.converged && f.logLikelihood != kMinusInf) ++unconverged;
            ++structures;
            if (better(f, best)) best = f;
        }
        return best;
    }
};

// The largest order searched over every partition when one order is asked
// for: 13 has 101 of them; the counts grow fast beyond (32 has 8349). When
// every order up to a limit is asked for, the orders beyond kOrdersFullSearch
// grow from the one before, which keeps the choice among 32 orders within
// seconds.
const unsigned kFullSearch = 13;
const unsigned kOrdersFullSearch = 8;

HyperErlang* toDist(const Fit& f) { return new HyperErlang(f.phases, f.rates, f.probabilities); }

void checkRequest(const std::vector<double>& data, unsigned phases, const EMOptions& options) {
    if (phases == 0) throw Exception("distfit", __LINE__, "Cannot fit hypererlang: the number of phases must be at least 1.");
    if (phases > kMaxPhases)
        throw Exception("distfit", __LINE__,
                        "Cannot fit hypererlang with " + std::to_string(phases) + " phases: at most " +
                            std::to_string(kMaxPhases) + " are supported.");
    if (options.maxIterations == 0 || options.bins == 0 || !(options.tolerance >= 0))
        throw Exception("distfit", __LINE__, "Invalid EM options: iterations and bins must be positive, the tolerance not negative.");
    const Range r = check_values(data, "hypererlang", true);
    if (r.min == r.max)
        throw Exception("distfit", __LINE__, "Cannot fit hypererlang to constant data; only the deterministic "
                                             "family fits such data.");
}

// The best fit of every order 1..phases, in order.
std::vector<Fit> fitOrders(unsigned phases, Search& search) {
    std::vector<Fit> fits;
    const unsigned full = phases <= kFullSearch ? phases : kOrdersFullSearch;
    for (unsigned n = 1; n <= phases; ++n) {
        if (n <= full) {
            Fit best = search.everyPartition(n);
            // The grown structures start where the fresh starts rarely go:
            // from a fit that already separates its branches.
            if (n > 1) {
                Fit g = search.grown(fits.back());
                if (better(g, best)) best = g;
            }
            fits.push_back(best);
        } else {
            fits.push_back(search.grown(fits.back()));
        }
    }
    return fits;
}

std::unique_ptr<HyperErlang> finishFit(const std::vector<double>& data, const Fit& best, const Search& search,
                                       EMReport* report) {
    if (best.logLikelihood == kMinusInf)
        throw Exception("distfit", __LINE__, "Cannot fit hypererlang: no structure has a positive density at every value.");
    const double ll = fullLogLikelihood(data, best);
    if (!best.converged) {
        std::ostringstream s;
        s << "The hyper-Erlang EM stopped after " << best.iterations
          << " iterations without meeting its convergence test; the result may be improved by more iterations.";
        libvelmora_warning("distfit", __LINE__, s.str());
    }
    if (report != nullptr) {
        report->structure = best.phases;
        report->logLikelihood = ll;
        report->iterations = best.iterations;
        report->converged = best.converged;
        report->structures = search.structures;
        report->unconverged = search.unconverged;
        report->bins = search.pts.x.size();
    }
    return std::unique_ptr<HyperErlang>(toDist(best));
}

}  // namespace

std::unique_ptr<HyperErlang> fit_hypererlang(const std::vector<double>& data, unsigned phases) {
    return fit_hypererlang(data, phases, nullptr);
}

std::unique_ptr<HyperErlang> fit_hypererlang(const std::vector<double>& data, unsigned phases, EMReport* report,
                                             const EMOptions& options) {
    checkRequest(data, phases, options);
    const Points pts = aggregate(data, options.bins);
    Search search(pts, options);
    return finishFit(data, fitOrders(phases, search).back(), search, report);
}

std::vector<std::unique_ptr<HyperErlang>> fit_hypererlang_orders(const std::vector<double>& data, unsigned phases,
                                                                 const EMOptions& options) {
    checkRequest(data, phases, options);
    const Points pts = aggregate(data, options.bins);
    Search search(pts, options);
    std::vector<std::unique_ptr<HyperErlang>> result;
    for (const Fit& f : fitOrders(phases, search)) result.push_back(finishFit(data, f, search, nullptr));
    return result;
}

}  // namespace distfit
}  // namespace velmora
