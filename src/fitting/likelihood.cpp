// Joint log-likelihoods: the renewal sum, the Gaussian ARMA density by the
// innovations algorithm, and the Gaussian copula of ARTA and CHEP type 2.
//
// The innovations algorithm runs on the transformed series of Brockwell and
// Davis: W_t = X_t / sigma for t <= m = max(p, q), and W_t = phi(B) X_t /
// sigma after, whose covariances kappa(i, j) vanish beyond lag q once both
// times exceed m. Then the coefficients theta_{n, j} of the one-step
// predictors are 0 for j > q when n >= m, each row costs O(q^2), and the
// rows settle to the model's theta as v_n -> 1: once v_n is within 1e-14 of
// 1 the last row is kept, and each further value costs O(p + q).
#include "fitting/likelihood.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/libvelmora_settings.h"
#include "distributions/dist_hypererlang.h"
#include "fitting/distfit.h"
#include "markov/chep.h"
#include "numerics/misc_numerical_dist.h"
#include "timeseries/arima.h"
#include "timeseries/arta.h"

namespace velmora {
namespace likelihood {

namespace {

const double kMinusInf = -std::numeric_limits<double>::infinity();
const double kLog2Pi = 1.8378770664093454836;
// Phi^-1 of the smallest and largest probabilities apart from 0 and 1.
const double kScoreLimit = 8.3;

[[noreturn]] void fail(int line, const std::string& message) { throw Exception("likelihood", line, message); }

// The innovations algorithm for a zero-mean ARMA with coefficients phi,
// theta, white-noise variance sigma2 and autocovariances gamma(0..m).
double innovations(const std::vector<double>& phi, const std::vector<double>& theta, double sigma2,
                   const std::vector<double>& gamma, const std::vector<double>& x) {
    const std::size_t p = phi.size(), q = theta.size(), m = std::max(p, q), N = x.size();
    if (N == 0) return 0;
    // kappa(i, j) of W, 1-based times.
    auto kappa = [&](std::size_t i, std::size_t j) {
        if (i < j) std::swap(i, j);
        const std::size_t h = i - j;
        if (i <= m) return gamma[h] / sigma2;
        if (j <= m && i <= 2 * m) {
            double s = gamma[h];
            for (std::size_t r = 1; r <= p; ++r) s -= phi[r - 1] * gamma[r > h ? r - h : h - r];
            return s / sigma2;
        }
        if (j > m) {
            if (h > q) return 0.0;
            double s = h == 0 ? 1.0 : theta[h - 1];  // theta_0 theta_h
            for (std::size_t r = 1; r + h <= q; ++r) s += theta[r - 1] * theta[r + h - 1];
            return s;
        }
        return 0.0;
    };
    // Rows theta_{k, 1..L_k} and v_k of the last R times, in a ring.
    const std::size_t R = m + 1, width = std::max<std::size_t>(m, 1);
    std::vector<double> rows(R * width, 0.0), v(R, 0.0);
    std::vector<std::size_t> L(R, 0);
    std::vector<double> innovation(N, 0.0);
    double sumLogV = 0, sumSquares = 0;
    // Once settled, row n (and v_n, L_n) stay those of the settled row.
    const double* row = nullptr;
    double vn = 0;
    std::size_t Ln = 0;
    bool settled = false;
    for (std::size_t n = 0; n < N; ++n) {
        if (!settled) {
            // Row n: theta_{n, j}, j = 1 .. Ln, and v_n, which predict x[n].
            const std::size_t slot = n % R;
            double* out = rows.data() + slot * width;
            Ln = n < m ? n : q;
            for (std::size_t k = n - Ln; k < n; ++k) {
                const double* rk = rows.data() + (k % R) * width;
                double s = kappa(n + 1, k + 1);
                const std::size_t from = std::max(k - L[k % R], n - Ln);
                for (std::size_t j = from; j < k; ++j) s -= rk[k - j - 1] * out[n - j - 1] * v[j % R];
                out[n - k - 1] = s / v[k % R];
            }
            vn = kappa(n + 1, n + 1);
            for (std::size_t j = n - Ln; j < n; ++j) vn -= out[n - j - 1] * out[n - j - 1] * v[j % R];
            if (!(vn > 0)) return kMinusInf;
            v[slot] = vn;
            L[slot] = Ln;
            row = out;
            settled = n >= m && std::fabs(vn - 1) < 1e-14;
        }
        // x[n] given the past: its prediction and, divided by sigma2, its variance v_n.
        double prediction = 0;
        if (n >= m)
            for (std::size_t r = 1; r <= p; ++r) prediction += phi[r - 1] * x[n - r];
        for (std::size_t j = 1; j <= Ln; ++j) prediction += row[j - 1] * innovation[n - j];
        innovation[n] = x[n] - prediction;
        sumLogV += std::log(vn);
        sumSquares += innovation[n] * innovation[n] / vn;
    }
    return -0.5 * (static_cast<double>(N) * (kLog2Pi + std::log(sigma2)) + sumLogV + sumSquares / sigma2);
}

// Autocovariances gamma(0..m) of the ARMA with unit white-noise variance.
std::vector<double> unitAutocovariances(const std::vector<double>& ar, const std::vector<double>& ma) {
    ARIMA model(ar, ma, 0, 0, 1, 0, "likelihood");
    return model.computeAutocovariances(static_cast<unsigned>(std::max(ar.size(), ma.size())));
}

}  // namespace

double renewal(Dist* marginal, const std::vector<double>& data) {
    return distfit::assess(marginal, data).logLikelihood;
}

double gaussian_arma(const ARIMA& base, const std::vector<double>& z) {
    if (base.getDegreeOfDifferencing() != 0)
        fail(__LINE__, "The Gaussian likelihood needs an ARMA process (d = 0).");
    if (!base.isStationary()) fail(__LINE__, "The Gaussian likelihood needs a stationary AR part.");
    const std::vector<double> ar = base.getARCoefficients(), ma = base.getMACoefficients();
    const double sigma2 = base.getVariance();
    if (!(sigma2 > 0)) fail(__LINE__, "The Gaussian likelihood needs a positive white-noise variance.");
    const double mean = base.compute_mean_and_variance().first;
    std::vector<double> gamma = unitAutocovariances(ar, ma);
    for (double& g : gamma) g *= sigma2;
    std::vector<double> centred(z);
    for (double& v : centred) v -= mean;
    return innovations(ar, ma, sigma2, gamma, centred);
}

double unit_variance_arma(const std::vector<double>& ar, const std::vector<double>& ma, const std::vector<double>& z) {
    std::vector<double> gamma = unitAutocovariances(ar, ma);
    if (!(gamma[0] > 0) || !std::isfinite(gamma[0])) return kMinusInf;
    const double sigma2 = 1 / gamma[0];
    for (double& g : gamma) g *= sigma2;
    return innovations(ar, ma, sigma2, gamma, z);
}

std::vector<double> normal_scores(Dist* marginal, const std::vector<double>& data) {
    if (marginal == nullptr || !marginal->hasExactCDF())
        fail(__LINE__, "The marginal has no distribution function for normal scores.");
    std::vector<double> z(data.size());
    for (std::size_t k = 0; k < data.size(); ++k) {
        const double u = marginal->exactCDF(data[k]);
        const double s = u <= 0 ? -kScoreLimit : u >= 1 ? kScoreLimit : as::ppnd16(u);
        z[k] = std::min(kScoreLimit, std::max(-kScoreLimit, s));
    }
    return z;
}

double copula(Dist* marginal, const ARIMA& base, const std::vector<double>& data) {
    const double marginalPart = renewal(marginal, data);
    const std::vector<double> z = normal_scores(marginal, data);
    double independent = 0;
    for (double s : z) independent += -0.5 * (kLog2Pi + s * s);
    return marginalPart + gaussian_arma(base, z) - independent;
}

double arta(ARTA& model, const std::vector<double>& data) {
    return copula(model.getDistribution(), *model.getBaseProcess(), data);
}

double chep_type2(chep& model, const std::vector<double>& data) {
    if (model.getType() != CHEP_TYPE_2) fail(__LINE__, "The copula likelihood is that of a CHEP of type 2.");
    return copula(model.getHyperErlang(), *model.getBaseProcess(), data);
}

}  // namespace likelihood
}  // namespace velmora
