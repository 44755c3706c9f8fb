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

// The deterministic start: equal probabilities, and branch i's mean at the
// weighted quantile (i + 1/2)/m of the points (the whole mean where that
// quantile is 0), so the branches start spread over the data.
void start(const Points& pts, double total, double mean, Fit& f) {
    const std::size_t m = f.phases.size();
    f.probabilities.assign(m, 1.0 / static_cast<double>(m));
    f.rates.assign(m, 0);
    double cum = 0;
    std::size_t j = 0;
    for (std::size_t i = 0; i < m; ++i) {
        const double target = (static_cast<double>(i) + 0.5) / static_cast<double>(m) * total;
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

}  // namespace

HyperErlang* fit_hypererlang(const std::vector<double>& data, unsigned phases) {
    return fit_hypererlang(data, phases, nullptr);
}

HyperErlang* fit_hypererlang(const std::vector<double>& data, unsigned phases, EMReport* report,
                             const EMOptions& options) {
    const std::string family = "hypererlang";
    if (phases == 0) throw Exception("distfit", __LINE__, "Cannot fit hypererlang: the number of phases must be at least 1.");
    if (phases > kMaxPhases)
        throw Exception("distfit", __LINE__,
                        "Cannot fit hypererlang with " + std::to_string(phases) +
                            " phases: at most 13 are supported, since the family's formulas use the factorial in "
                            "32-bit arithmetic, exact only up to 12!.");
    if (options.maxIterations == 0 || options.bins == 0 || !(options.tolerance >= 0))
        throw Exception("distfit", __LINE__, "Invalid EM options: iterations and bins must be positive, the tolerance not negative.");
    const Range r = check_values(data, family, true);
    if (r.min == r.max)
        throw Exception("distfit", __LINE__, "Cannot fit hypererlang to constant data; only the deterministic "
                                             "family fits such data.");

    const Points pts = aggregate(data, options.bins);
    double total = 0, sum = 0;
    for (std::size_t j = 0; j < pts.x.size(); ++j) {
        total += pts.weight[j];
        sum += pts.weight[j] * pts.x[j];
    }
    std::vector<std::vector<unsigned>> structures;
    std::vector<unsigned> prefix;
    partitions(phases, phases, prefix, structures);

    Fit best, f, lead;
    Work work;
    unsigned unconverged = 0;
    const unsigned warmUp = std::min(kWarmUp, options.maxIterations);
    for (const auto& s : structures) {
        // Which branch starts at which quantile decides the optimum EM
        // reaches, so the orderings of the branch phase counts compete for
        // a few iterations and the leader goes on to convergence.
        std::vector<unsigned> order(s.rbegin(), s.rend());
        work.resize(s.size());
        unsigned tried = 0;
        do {
            f.phases = order;
            f.iterations = 0;
            f.converged = false;
            start(pts, total, sum / total, f);
            runEM(pts, warmUp, options.tolerance, f, work);
            if (tried == 0 || f.logLikelihood > lead.logLikelihood) lead = f;
        } while (++tried < kOrderings && std::next_permutation(order.begin(), order.end()));
        if (!lead.converged) runEM(pts, options.maxIterations, options.tolerance, lead, work);
        if (!lead.converged && lead.logLikelihood != kMinusInf) ++unconverged;
        if (best.phases.empty() || lead.logLikelihood > best.logLikelihood) best = lead;
    }
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
        report->structures = static_cast<unsigned>(structures.size());
        report->unconverged = unconverged;
        report->bins = pts.x.size();
    }
    return new HyperErlang(best.phases, best.rates, best.probabilities);
}

}  // namespace distfit
}  // namespace velmora
