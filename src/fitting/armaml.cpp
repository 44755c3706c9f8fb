// ARMA by exact Gaussian likelihood over partial autocorrelations.
#include "fitting/armaml.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "core/libvelmora_settings.h"
#include "fitting/likelihood.h"
#include "numerics/misc_optim.h"
#include "timeseries/arima.h"

namespace velmora {
namespace armaml {

namespace {

const unsigned kMaxOrder = 20;
// Partial autocorrelations stay within this of +-1, so that the
// innovations settle and the result is clearly invertible.
const double kEdge = 0.995;

[[noreturn]] void fail(int line, const std::string& message) { throw Exception("armaml", line, message); }

// The problem of the running search. nmmin's goal takes no context, so the
// search reaches its data through this pointer, one per thread.
struct Problem {
    const std::vector<double>* z;
    unsigned p, q;
};
thread_local const Problem* current = nullptr;

void coefficients(const std::vector<double>& u, unsigned p, unsigned q, std::vector<double>& ar,
                  std::vector<double>& ma) {
    std::vector<double> r(p);
    for (unsigned i = 0; i < p; ++i) r[i] = kEdge * std::tanh(u[i]);
    ar = from_partial_autocorrelations(r);
    r.assign(q, 0);
    for (unsigned j = 0; j < q; ++j) r[j] = kEdge * std::tanh(u[p + j]);
    ma = from_partial_autocorrelations(r);
    for (double& t : ma) t = -t;
}

double negativeLogLikelihood(std::vector<double> u) {
    std::vector<double> ar, ma;
    coefficients(u, current->p, current->q, ar, ma);
    const double ll = likelihood::unit_variance_arma(ar, ma, *current->z);
    return std::isfinite(ll) ? -ll : std::numeric_limits<double>::max();
}

double lagOneCorrelation(const std::vector<double>& z) {
    double m = 0;
    for (double v : z) m += v;
    m /= static_cast<double>(z.size());
    double c0 = 0, c1 = 0;
    for (std::size_t k = 0; k < z.size(); ++k) {
        c0 += (z[k] - m) * (z[k] - m);
        if (k > 0) c1 += (z[k] - m) * (z[k - 1] - m);
    }
    return c0 > 0 ? c1 / c0 : 0.0;
}

}  // namespace

Fit::Fit() = default;
Fit::Fit(Fit&&) noexcept = default;
Fit& Fit::operator=(Fit&&) noexcept = default;
Fit::~Fit() = default;

std::vector<double> from_partial_autocorrelations(const std::vector<double>& r) {
    std::vector<double> c, previous;
    for (std::size_t k = 0; k < r.size(); ++k) {
        previous = c;
        c.push_back(r[k]);
        for (std::size_t j = 0; j < k; ++j) c[j] = previous[j] - r[k] * previous[k - 1 - j];
    }
    return c;
}

Fit fit(const std::vector<double>& z, unsigned p, unsigned q) {
    if (p > kMaxOrder || q > kMaxOrder) fail(__LINE__, "ARMA orders above 20 are not fitted.");
    if (z.size() < p + q + 1u)
        fail(__LINE__, "Cannot fit an ARMA(" + std::to_string(p) + ", " + std::to_string(q) + ") to " +
                           std::to_string(z.size()) + " values: fewer than its parameters and one.");
    for (double v : z)
        if (!std::isfinite(v)) fail(__LINE__, "Cannot fit an ARMA to scores that are not finite.");
    Fit out;
    out.p = p;
    out.q = q;
    std::vector<double> best(p + q, 0.0);
    double bestValue = std::numeric_limits<double>::max();
    const Problem problem{&z, p, q};
    const Problem* outer = current;
    current = &problem;
    // Two starts: white noise, and the first AR partial autocorrelation at
    // the lag-1 correlation of the scores.
    std::vector<std::vector<double>> starts(1, std::vector<double>(p + q, 0.0));
    if (p > 0) {
        std::vector<double> s(p + q, 0.0);
        s[0] = std::atanh(std::max(-0.9, std::min(0.9, lagOneCorrelation(z))) / kEdge);
        starts.push_back(s);
    }
    if (p + q == 0) {
        bestValue = negativeLogLikelihood({});
    } else {
        for (const auto& s : starts) {
            std::vector<double> result;
            double value = 0;
            int failed = 0, count = 0;
            nmmin(s, &result, &value, negativeLogLikelihood, &failed, -1e300, 1e-12, 1.0, 0.5, 2.0, &count,
                  1000 * (p + q));
            if (value < bestValue) {
                bestValue = value;
                best = result;
            }
        }
    }
    current = outer;
    std::vector<double> ar, ma;
    coefficients(best, p, q, ar, ma);
    out.logLikelihood = -bestValue;
    out.aic = 2.0 * (p + q) - 2 * out.logLikelihood;
    out.fitted = bestValue < std::numeric_limits<double>::max();
    // Process variance 1: the white-noise variance 1 / gamma(0) of unit noise.
    ARIMA unit(ar, ma, 0, 0, 1, 0, "maximum likelihood");
    const double gamma0 = unit.computeAutocovariances(0)[0];
    out.model = std::make_unique<ARIMA>(ar, ma, 0, 0, 1 / gamma0, 0, "maximum likelihood");
    return out;
}

Fit fit_by_aic(const std::vector<double>& z, unsigned pMin, unsigned pMax, unsigned qMin, unsigned qMax,
               std::vector<Fit>* table) {
    if (pMin > pMax || qMin > qMax) fail(__LINE__, "Empty range of ARMA orders.");
    Fit best;
    for (unsigned p = pMin; p <= pMax; ++p)
        for (unsigned q = qMin; q <= qMax; ++q) {
            Fit f = fit(z, p, q);
            if (table != nullptr) {
                Fit row;
                row.p = f.p;
                row.q = f.q;
                row.logLikelihood = f.logLikelihood;
                row.aic = f.aic;
                row.fitted = f.fitted;
                table->push_back(std::move(row));
            }
            if (f.fitted && (!best.fitted || f.aic < best.aic)) best = std::move(f);
        }
    if (!best.fitted) fail(__LINE__, "No ARMA order could be fitted to the scores.");
    return best;
}

}  // namespace armaml
}  // namespace velmora
