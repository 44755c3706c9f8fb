// CAPP and CHEP fitting: range widening, inversion of the correlation
// mapping, ARMA fits of the base process.
#include "fitting/cappfit.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <sstream>
#include <string>
#include <utility>

#include "core/libvelmora_settings.h"
#include "distributions/dist_hypererlang.h"
#include "distributions/dist_hypoexponential.h"
#include "fitting/arimafit.h"
#include "markov/capp.h"
#include "markov/capp_transform.h"
#include "markov/chep.h"
#include "numerics/matrix.h"
#include "timeseries/arima.h"
#include "traces/trace.h"

namespace velmora {

namespace cappfit {

thread_local std::map<double, double> cappfit_autocorrelation_cache;
thread_local double compute_ac_acph_mean = 0.0;
thread_local double compute_ac_acph_var = 0.0;
thread_local const cph_path_list* compute_ac_hypo_exp_path = nullptr;
thread_local std::vector<double> compute_ac_hypo_exp_path_mean;
thread_local double compute_ac_main_ac = 0.0;

namespace {

// A path list that frees its distributions however the fit ends.
struct OwnedPaths {
    OwnedPaths() = default;
    OwnedPaths(const OwnedPaths&) = delete;
    OwnedPaths& operator=(const OwnedPaths&) = delete;
    ~OwnedPaths() { delete_paths(list); }
    cph_path_list list;
    std::vector<double> means;
};

std::vector<double> traceTargets(Trace* t, unsigned lags) {
    if (t == nullptr) throw Exception("cappfit", __LINE__, "No trace.");
    return t->getAutocorrelations(1, lags);
}

void printRange(const char* family, std::pair<double, double> range, double acMin, double acMax) {
    std::ostringstream possible, desired;
    possible << "possible autocorrelation for " << family << ": [" << range.first << ", " << range.second << "]";
    libvelmora_infomsg(possible.str());
    desired << "desired autocorrelation: [" << acMin << ", " << acMax << "]";
    libvelmora_infomsg(desired.str());
}

// The autocorrelations at base autocorrelations -1 and 1: the ends of the
// reachable range.
std::pair<double, double> reachableRange(double mean, double var, const OwnedPaths& paths) {
    const std::vector<double> r = capp::compute_autocorrelation(mean, var, {-1.0, 1.0}, paths.list, paths.means);
    return {r[0], r[1]};
}

// The capp autocorrelation at base autocorrelation rho, from the cache or
// computed and kept there.
double mappedAutocorrelation(double mean, double var, const cph_path_list& paths,
                             const std::vector<double>& pathMeans, std::map<double, double>& cache, double rho) {
    const auto hit = cache.find(rho);
    if (hit != cache.end()) return hit->second;
    const double v = capp::compute_autocorrelation(mean, var, {rho}, paths, pathMeans)[0];
    cache[rho] = v;
    return v;
}

// The search of one compute_base_process_autocorrelation, which its
// objective carries.
struct Search {
    double distance(double rho) {
        return std::pow(target - mappedAutocorrelation(mean, var, paths, pathMeans, cache, rho), 2.0);
    }
    double mean, var;
    const cph_path_list& paths;
    std::vector<double> pathMeans;
    double target;
    std::map<double, double> cache;  // each rho mapped once per search
};

// The record of a search on this thread while it runs, for
// eval_autocorrelation; cleared however the search ends.
struct RecordScope {
    explicit RecordScope(const Search& s) {
        cappfit_autocorrelation_cache.clear();
        compute_ac_acph_mean = s.mean;
        compute_ac_acph_var = s.var;
        compute_ac_hypo_exp_path = &s.paths;
        compute_ac_hypo_exp_path_mean = s.pathMeans;
    }
    ~RecordScope() {
        cappfit_autocorrelation_cache.clear();
        compute_ac_hypo_exp_path = nullptr;
    }
    RecordScope(const RecordScope&) = delete;
    RecordScope& operator=(const RecordScope&) = delete;
};

}  // namespace

capp* fit_chep(HyperErlang* h, Trace* t, unsigned lags, unsigned p, unsigned q) {
    return fit_chep(h, t, lags, p, p, q, q);
}

capp* fit_chep(HyperErlang* h, Trace* t, unsigned lags, unsigned pMin, unsigned pMax, unsigned qMin, unsigned qMax) {
    return fit_chep(h, traceTargets(t, lags), pMin, pMax, qMin, qMax);
}

capp* fit_chep(HyperErlang* h, std::vector<double> ac, unsigned p, unsigned q) {
    return fit_chep(h, std::move(ac), p, p, q, q);
}

capp* fit_chep(HyperErlang* h, std::vector<double> ac, unsigned pMin, unsigned pMax, unsigned qMin, unsigned qMax) {
    if (h == nullptr) throw Exception("cappfit", __LINE__, "No hyper-Erlang distribution.");
    ARIMAFit::check_autocorrelation_targets(ac);
    h->sortBranches();
    const DistStats stats = h->getProperties(0);
    const double mean = stats.mean;
    const double var = stats.variance;

    // One path per branch, as the chep builds them.
    OwnedPaths paths;
    chep::appendBranchPaths(*h, paths.list, paths.means);

    const double acMax = *std::max_element(ac.begin(), ac.end());
    const double acMin = *std::min_element(ac.begin(), ac.end());
    const std::pair<double, double> range = reachableRange(mean, var, paths);
    printRange("HErD", range, acMin, acMax);

    if (range.second < acMax || acMin < range.first) {
        const CPH scf = h->asCPH().seriesCanonicalForm();
        std::unique_ptr<CPH> c = std::make_unique<CPH>(scf.getT(), scf.getTau());
        capp* result = fit_capp(c.get(), ac, pMin, pMax, qMin, qMax);
        c.release();
        // The capp replaces the hyper-Erlang, which nothing holds any more.
        delete h;
        return result;
    }
    ARIMA* base = fit_baseprocess(mean, var, paths.list, paths.means, ac, pMin, pMax, qMin, qMax);
    // The chep owns both from its first line.
    return new chep(h, base, CHEP_TYPE_1);
}

capp* fit_capp(CPH* c, Trace* t, unsigned lags, unsigned p, unsigned q) { return fit_capp(c, t, lags, p, p, q, q); }

capp* fit_capp(CPH* c, Trace* t, unsigned lags, unsigned pMin, unsigned pMax, unsigned qMin, unsigned qMax) {
    return fit_capp(c, traceTargets(t, lags), pMin, pMax, qMin, qMax);
}

capp* fit_capp(CPH* c, std::vector<double> ac, unsigned p, unsigned q) { return fit_capp(c, std::move(ac), p, p, q, q); }

capp* fit_capp(CPH* c, std::vector<double> ac, unsigned pMin, unsigned pMax, unsigned qMin, unsigned qMax) {
    if (c == nullptr) throw Exception("cappfit", __LINE__, "No phase-type distribution.");
    if (!c->isAcyclic()) throw Exception("cappfit", __LINE__, "Acyclic Phase-type distribution expected.");
    ARIMAFit::check_autocorrelation_targets(ac);
    // The transformations keep the distribution, so these hold for every pass.
    const double mean = c->getMoments(1, 1)[0];
    const double var = c->getVariance();
    const double acMax = *std::max_element(ac.begin(), ac.end());
    const double acMin = *std::min_element(ac.begin(), ac.end());

    OwnedPaths paths;
    double low = 0, high = 0;
    for (unsigned i = 0; high < acMax || acMin < low; i++) {
        if (i > 10) throw Exception("cappfit", __LINE__, "AC not possible.");
        if (i != 0) {
            // One of the two adds a phase, the other restores the series
            // canonical form.
            const CPH widened = capptrans::transform(capptrans::transform(*c));
            c->setT(widened.getT());
            c->setTau(widened.getTau());
        }
        delete_paths(paths.list);
        paths.means.clear();
        paths.list = c->generatePaths();
        for (const std::pair<double, HypoExponential*>& path : paths.list)
            paths.means.push_back(path.second->getProperties(0).mean);
        const std::pair<double, double> range = reachableRange(mean, var, paths);
        low = range.first;
        high = range.second;
        printRange("ACPH", range, acMin, acMax);
    }
    // Targets of 0 alone need no range. The paths are made here all the same,
    // so that a chain with too many of them fails while it is still the
    // caller's, not inside the capp, which owns it from its first line.
    if (paths.list.empty()) paths.list = c->generatePaths();
    ARIMA* base = fit_baseprocess(mean, var, paths.list, paths.means, ac, pMin, pMax, qMin, qMax);
    return new capp(c, base);
}

ARIMA* fit_baseprocess(double mean, double var, const cph_path_list& paths, std::vector<double> pathMeans,
                       std::vector<double> ac, unsigned pMin, unsigned pMax, unsigned qMin, unsigned qMax) {
    if (pMin > pMax || qMin > qMax) throw Exception("cappfit", __LINE__, "Invalid range of ARMA orders.");
    libvelmora_infomsg("Compute base process autocorrelation...");
    const std::vector<double> rho = compute_base_process_autocorrelation(mean, var, paths, std::move(pathMeans), ac);
    libvelmora_infomsg("Fit ARMA model...");

    std::vector<std::unique_ptr<ARIMA>> candidates;
    // Written so that a range ending at the largest unsigned can't wrap.
    for (unsigned p = pMin;; ++p) {
        for (unsigned q = qMin;; ++q) {
            libvelmora_infomsg("ARMA(" + std::to_string(p) + "," + std::to_string(q) + ")...");
            try {
                candidates.emplace_back(ARIMAFit::fit_arma_model(rho, p, q));
            } catch (Exception&) {
                // This order gives no candidate.
            }
            if (q == qMax) break;
        }
        if (p == pMax) break;
    }

    // Of equal errors the earlier candidate stays; the others are freed
    // with the list. A base target of exactly 0 has no relative error and
    // counts with the square of the candidate's value instead.
    std::unique_ptr<ARIMA>* best = nullptr;
    double bestError = 0;
    for (std::unique_ptr<ARIMA>& m : candidates) {
        if (!m->isStationary()) continue;
        const double err =
            ARIMAFit::autocorrelation_error(m->getAutocorrelations(1, static_cast<unsigned>(ac.size())), rho);
        if (best == nullptr || err < bestError) {
            best = &m;
            bestError = err;
        }
    }
    if (best == nullptr) throw Exception("cappfit", __LINE__, "No stationary ARMA model has been found.");
    return best->release();
}

std::vector<double> compute_base_process_autocorrelation(double mean, double var, const cph_path_list& paths,
                                                         std::vector<double> pathMeans, std::vector<double> ac) {
    Search search{mean, var, paths, std::move(pathMeans), 0.0, {}};
    const RecordScope record(search);
    const std::vector<double> rho = ARIMAFit::invert_autocorrelations(
        ac, &search.target, [&search](double r) { return search.distance(r); });
    compute_ac_main_ac = search.target;
    return rho;
}

double eval_autocorrelation(double rho) {
    if (compute_ac_hypo_exp_path == nullptr) throw Exception("cappfit", __LINE__, "No search is running.");
    return std::pow(compute_ac_main_ac - mappedAutocorrelation(compute_ac_acph_mean, compute_ac_acph_var,
                                                               *compute_ac_hypo_exp_path, compute_ac_hypo_exp_path_mean,
                                                               cappfit_autocorrelation_cache, rho),
                    2.0);
}

}  // namespace cappfit

}  // namespace velmora
