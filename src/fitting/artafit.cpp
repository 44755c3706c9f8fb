// ARTA fitting: golden section inversion of the correlation mapping, then
// ARMA fits over the requested orders.
#include "fitting/artafit.h"

#include <cmath>
#include <memory>
#include <sstream>
#include <string>
#include <utility>

#include "core/libvelmora_settings.h"
#include "fitting/arimafit.h"
#include "timeseries/arima.h"
#include "timeseries/arta.h"
#include "timeseries/normal_grid_integral.h"
#include "traces/trace.h"

namespace velmora {

thread_local double artafit_compute_ac_main_ac = 0.0;
thread_local std::map<double, double> artafit_autocorrelation_cache;
thread_local Dist* artafit_compute_ac_dist = nullptr;

namespace {

ARTAFit::OrderRange orderRange(unsigned min, unsigned max) {
    if (min > max) throw Exception("artafit", __LINE__, "Invalid range of ARMA orders.");
    return ARTAFit::OrderRange{min, max, min};
}

Trace* requireTrace(Trace* t) {
    if (t == nullptr) throw Exception("artafit", __LINE__, "No trace.");
    return t;
}

void checkTargets(const std::vector<double>& target) {
    if (target.empty()) throw Exception("artafit", __LINE__, "No target autocorrelations.");
    for (double r : target)
        if (!(r > -1 && r < 1)) throw Exception("artafit", __LINE__, "Target autocorrelations must lie in (-1, 1).");
}

// The integrand evaluations one search may spend per target lag, some four
// times the most that the fits of the tests and examples need. A marginal whose
// values span a hundred orders of magnitude and more keeps every integral
// near its own limit; the search then ends with a message.
const unsigned long long kSearchEvaluationsPerLag = 1ull << 23;

// The search of one arta_find_arma_autocorrelation, which its objective
// carries: the marginal's transformed values are held while it runs and
// released however it ends.
struct Search {
    Search(Dist* d, std::size_t lags)
        : dist(d),
          evaluationStart(normal_grid_evaluation_count()),
          evaluationLimit(kSearchEvaluationsPerLag * (lags == 0 ? 1 : lags)) {
        arta_process_hold_marginal(d);
    }
    ~Search() { arta_process_release_marginal(); }
    Search(const Search&) = delete;
    Search& operator=(const Search&) = delete;

    // The squared distance of the mapped rho from the target, each rho
    // mapped once per search.
    double distance(double rho) {
        double v;
        const auto hit = cache.find(rho);
        if (hit != cache.end()) {
            v = hit->second;
        } else {
            v = arta_process_compute_autocorrelations(dist, {rho})[0];
            cache[rho] = v;
            if (normal_grid_evaluation_count() - evaluationStart > evaluationLimit)
                throw Exception("artafit", __LINE__,
                                "The search of the base autocorrelations took more than " +
                                    std::to_string(evaluationLimit) +
                                    " integrand evaluations: the marginal's values span too many orders of magnitude.");
        }
        return std::pow(target - v, 2.0);
    }

    Dist* dist;
    double target = 0.0;
    std::map<double, double> cache;  // keyed by the exact base autocorrelation
    unsigned long long evaluationStart;
    unsigned long long evaluationLimit;
};

// The candidates of one fit all hold the caller's marginal. Whatever is
// left here when the fit ends, by return or by failure, gives the marginal
// up before it is deleted, so the marginal is deleted by the winner or by
// the caller only.
struct Candidates {
    Candidates() = default;
    Candidates(const Candidates&) = delete;
    Candidates& operator=(const Candidates&) = delete;
    ~Candidates() {
        for (ARTA* a : list) {
            if (a == nullptr) continue;
            a->releaseDistribution();
            delete a;
        }
    }
    ARTA* keep(ARTA* winner) {
        for (ARTA*& a : list)
            if (a == winner) a = nullptr;
        return winner;
    }
    std::vector<ARTA*> list;
};

}  // namespace

ARTAFit::ARTAFit(Trace* t, Dist* d, unsigned lags, unsigned p, unsigned q)
    : ARTAFit(t, d, lags, p, p, q, q) {}

ARTAFit::ARTAFit(std::vector<double> ac, Dist* d, unsigned p, unsigned q) : ARTAFit(std::move(ac), d, p, p, q, q) {}

ARTAFit::ARTAFit(Trace* t, Dist* d, unsigned lags, unsigned pMin, unsigned pMax, unsigned qMin, unsigned qMax)
    : trace(requireTrace(t)), dist(d), lags(lags), pRange(orderRange(pMin, pMax)), qRange(orderRange(qMin, qMax)) {}

ARTAFit::ARTAFit(std::vector<double> ac, Dist* d, unsigned pMin, unsigned pMax, unsigned qMin, unsigned qMax)
    : trace(nullptr),
      dist(d),
      lags(static_cast<unsigned>(ac.size())),
      ac(std::move(ac)),
      pRange(orderRange(pMin, pMax)),
      qRange(orderRange(qMin, qMax)) {}

ARTA* ARTAFit::fit_arta_model() {
    if (dist == nullptr) throw Exception("artafit", __LINE__, "No marginal distribution.");
    std::vector<double> target = ac;
    if (trace != nullptr) {
        // Lag l is estimated from n - l pairs with a divisor n - l - 1.
        if (static_cast<unsigned long long>(lags) + 2 > trace->getSize())
            throw Exception("artafit", __LINE__, "Too many lags for the trace.");
        target = trace->getAutocorrelations(1, lags);
    }
    checkTargets(target);
    const std::vector<double> rho = arta_find_arma_autocorrelation(target);

    Candidates candidates;
    // Written so that a range ending at the largest unsigned can't wrap.
    for (unsigned p = pRange.min;; ++p) {
        for (unsigned q = qRange.min;; ++q) {
            std::ostringstream order;
            order << "ARMA(" << p << ", " << q << ")";
            libvelmora_debugmsg("artafit", __LINE__, order.str());
            pRange.current = p;
            qRange.current = q;
            const std::unique_ptr<ARIMA> m(ARIMAFit::fit_arma_model(rho, p, q));
            const double s2 = m->getVariance() / m->getAutocovariance(0);
            // The constructor owns the marginal from its first line; the
            // normalisation it runs has just succeeded for s2, so only a
            // failing allocation could take the marginal with it.
            // A base without a positive variance has no stationary solution
            // and can't be normalised; it would never be chosen.
            if (s2 > 0 && s2 < HUGE_VAL) {
                candidates.list.push_back(nullptr);
                candidates.list.back() =
                    new ARTA(dist, m->getARCoefficients(), m->getMACoefficients(), 0.0, std::sqrt(s2));
            }
            if (q == qRange.max) break;
        }
        if (p == pRange.max) break;
    }

    ARTA* best = select_best_arta_model(candidates.list);
    if (best == nullptr) throw Exception("artafit", __LINE__, "No stationary ARMA model has been found.");
    return candidates.keep(best);
}

std::vector<double> ARTAFit::arta_find_arma_autocorrelation(std::vector<double> ac) {
    Search search(dist, ac.size());
    const std::vector<double> rho = ARIMAFit::invert_autocorrelations(
        ac, &search.target, [&search](double r) { return search.distance(r); });
    // The record of the last search on this thread.
    artafit_compute_ac_main_ac = search.target;
    artafit_compute_ac_dist = dist;
    return rho;
}

double ARTAFit::eval_autocorrelation(double rho) {
    if (artafit_compute_ac_dist == nullptr) throw Exception("artafit", __LINE__, "No marginal distribution.");
    const double v = arta_process_compute_autocorrelations(artafit_compute_ac_dist, {rho})[0];
    return std::pow(artafit_compute_ac_main_ac - v, 2.0);
}

std::vector<double> ARTAFit::arta_compute_autocorrelation_from_arma(std::vector<double> rho) {
    return arta_process_compute_autocorrelations(dist, std::move(rho));
}

ARTA* ARTAFit::select_best_arta_model(std::vector<ARTA*> models) {
    ARTA* best = nullptr;
    double bestError = 0;
    for (ARTA* model : models) {
        if (model == nullptr) continue;
        ARIMA* base = model->getBaseProcess();
        if (!base->isStationary()) continue;
        const double err = ARIMAFit::autocorrelation_error(base->getAutocorrelations(1, lags),
                                                           ARIMAFit::libvelmora_arimafit_desired_ac);
        // Strict: of equal errors the earlier model stays.
        if (best == nullptr || err < bestError) {
            best = model;
            bestError = err;
        }
    }
    return best;
}

}  // namespace velmora
