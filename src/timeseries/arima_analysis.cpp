// Analysis and generation of ARMA models: process mean and variance, the
// stationarity test through the zeros of the AR polynomial (Jenkins-Traub
// cpoly), autocovariances from the (p+1)-equation system of the first p + 1
// lags with the psi-weights of the causal representation on the right-hand
// side (Brockwell and Davis, Time Series: Theory and Methods, 3.3), the
// autocorrelations of fractional noise (Hosking 1981), the normal marginal
// and the generator with a multivariate-normal warm start of the AR state.
#include <cmath>
#include <cstdlib>
#include <utility>
#include <vector>

#include "core/libvelmora_settings.h"
#include "core/misc_string.h"
#include "distributions/dist_normal.h"
#include "numerics/matrix.h"
#include "numerics/misc_linalg.h"
#include "numerics/misc_numerical.h"
#include "numerics/random.h"
#include "timeseries/arima.h"

namespace velmora {

double ARIMA::processMean() const {
    // Summed from the first coefficient on, like the row sum of a one-row matrix.
    double s = 0;
    for (double phi : ar) s += phi;
    return s != 1 ? mean + intercept / (1 - s) : mean;
}

std::pair<double, double> ARIMA::compute_mean_and_variance() const {
    if (d != 0) throw Exception("arima", __LINE__, "Computation of distribution only supported for ARMA processes.");
    const double mu = processMean();
    return std::make_pair(mu, computeAutocovariances(0)[0]);
}

bool ARIMA::isStationary() const {
    const unsigned p = ar.size();
    if (p == 0) return true;
    // 1 - phi_1 z - ... - phi_p z^p, highest power first.
    std::vector<double> re(p + 1), im(p + 1, 0.0);
    for (unsigned i = 0; i < p; ++i) re[i] = -ar[p - 1 - i];
    re[p] = 1;
    std::vector<double> zr, zi;
    cpoly(re, im, &zr, &zi);
    double smallest = cmod(zr[0], zi[0]);
    for (unsigned i = 1; i < zr.size(); ++i) {
        const double m = cmod(zr[i], zi[i]);
        if (m < smallest) smallest = m;
    }
    return smallest > 1;
}

std::vector<double> ARIMA::computeAutocovariances(unsigned h) const {
    if (d != 0) throw Exception("arima", __LINE__, "Computation of autocovariance is only implemented for ARMA models.");
    const unsigned p = ar.size();
    const unsigned q = ma.size();
    auto theta = [&](unsigned j) { return j == 0 ? 1.0 : ma[j - 1]; };
    auto phi = [&](unsigned k) { return k <= p ? ar[k - 1] : 0.0; };

    // psi_0 .. psi_q of the causal representation.
    std::vector<double> psi(q + 1);
    psi[0] = 1;
    for (unsigned j = 1; j <= q; ++j) {
        double sum = theta(j);
        for (unsigned k = 1; k <= j; ++k) sum += phi(k) * psi[j - k];
        psi[j] = sum;
    }

    // gamma(i) - sum_k phi_k gamma(|i - k|) = sigma^2 sum_{j >= i} theta_j psi_{j-i}, i = 0..p.
    Matrix A(p + 1, p + 1);
    for (unsigned i = 0; i <= p; ++i) {
        A(i, i) = 1;
        for (unsigned k = 1; k <= p; ++k) A(i, static_cast<unsigned>(std::abs(static_cast<int>(i) - static_cast<int>(k)))) -= ar[k - 1];
    }
    Vector b(p + 1, false);
    const unsigned limit = p > q + 1 ? p : q + 1;
    for (unsigned i = 0; i <= p; ++i) {
        if (i >= limit) continue;
        double sum = 0;
        for (unsigned j = i; j <= q; ++j) sum += theta(j) * psi[j - i];
        b[i] = variance * sum;
    }
    std::vector<double> gamma = gauss_jordan_solve(A, b).asVector();

    if (h < p) {
        gamma.resize(h + 1);
        return gamma;
    }
    gamma.resize(static_cast<std::size_t>(h) + 1);
    for (unsigned k = p + 1; k <= h && k > p; ++k) {
        double sum = 0;
        for (unsigned j = 1; j <= p; ++j) sum += ar[j - 1] * gamma[k - j];
        double tail = 0;
        for (unsigned i = k; i <= q; ++i) tail += theta(i) * psi[i - k];
        gamma[k] = sum + variance * tail;
    }
    return gamma;
}

std::vector<double> ARIMA::computeAutocorrelations(unsigned h) const {
    if (d >= 0 && ar.empty() && ma.empty()) {
        // Fractional noise: rho(k) = prod_{i=1..k} (d + i - 1)/(i - d); white noise for d = 0.
        std::vector<double> rho(static_cast<std::size_t>(h) + 1);
        rho[0] = 1;
        for (unsigned k = 1; k <= h && k != 0; ++k) {
            double numerator = 1, denominator = 1;
            for (unsigned i = 1; i <= k; ++i) {
                numerator *= d + i - 1;
                denominator *= i - d;
            }
            rho[k] = numerator / denominator;
        }
        return rho;
    }
    if (d != 0) throw Exception("arima", __LINE__, "Not implemented.");
    std::vector<double> rho = computeAutocovariances(h);
    const double gamma0 = rho[0];
    for (double& r : rho) r /= gamma0;
    return rho;
}

double ARIMA::getAutocovariance(unsigned k) const { return computeAutocovariances(k)[k]; }

double ARIMA::getAutocorrelation(unsigned k) const { return computeAutocorrelations(k)[k]; }

std::vector<double> ARIMA::getAutocovariances(unsigned from, unsigned to) const {
    if (from > to) return {};
    std::vector<double> gamma = computeAutocovariances(to);
    return std::vector<double>(gamma.begin() + from, gamma.end());
}

std::vector<double> ARIMA::getAutocorrelations(unsigned from, unsigned to) const {
    if (from > to) return {};
    std::vector<double> rho = computeAutocorrelations(to);
    return std::vector<double>(rho.begin() + from, rho.end());
}

std::vector<double> ARIMA::getMoments(unsigned from, unsigned to) const {
    const std::pair<double, double> mv = compute_mean_and_variance();
    const DistStats stats = Normal::normal_stats(mv.first, std::sqrt(mv.second), to);
    std::vector<double> moments;
    if (from == 0) {
        moments.push_back(1.0);
        from = 1;
    }
    // A 64-bit counter, so that to = UINT_MAX ends the loop.
    for (unsigned long long i = from; i <= to; ++i)
        if (i - 1 < stats.moments.size()) moments.push_back(stats.moments[i - 1]);
    return moments;
}

double ARIMA::evalCDF(double x) {
    const std::pair<double, double> mv = compute_mean_and_variance();
    return Normal::normal_cdf(x, mv.first, std::sqrt(mv.second));
}

double ARIMA::evalCCDF(double x) {
    const std::pair<double, double> mv = compute_mean_and_variance();
    return Normal::normal_ccdf(x, mv.first, std::sqrt(mv.second));
}

double ARIMA::evalPDF(double x) {
    const std::pair<double, double> mv = compute_mean_and_variance();
    return Normal::normal_pdf(x, mv.first, std::sqrt(mv.second));
}

Distribution ARIMA::computeDistribution(double lower, double upper) {
    if (lower > upper) throw Exception("arima", __LINE__, "Invalid range for distribution.");
    return tabulate_distribution(*this, lower, upper, (upper - lower) / 100);
}

Matrix ARIMA::constructCovarianceMatrix() const {
    const unsigned p = ar.size();
    if (p == 0) return Matrix();
    const std::vector<double> gamma = getAutocovariances(0, p - 1);
    Matrix C(p, p);
    for (unsigned i = 0; i < p; ++i)
        for (unsigned j = 0; j < p; ++j) C(i, j) = gamma[i > j ? i - j : j - i];
    return C;
}

std::vector<double> ARIMA::initAR(Rand* stream) {
    const unsigned p = ar.size();
    if (p == 0) return {};
    const Matrix covariance = constructCovarianceMatrix();
    Vector mu(p, false);
    for (unsigned i = 0; i < p; ++i) mu[i] = mean;
    // Past p values of the stationary process, newest first.
    return stream->multivariate_normal(mu, covariance).asVector();
}

std::vector<double> ARIMA::initMA(Rand* stream) {
    const unsigned q = ma.size();
    std::vector<double> start(q);
    for (unsigned j = 0; j < q; ++j) start[j] = stream->normal(0, std::sqrt(variance));
    return start;
}

void ARIMA::initRandomNumberGeneration(unsigned seed) {
    if (d != 0) throw Exception("arima", __LINE__, "Random Number Generation only supported for ARMA models.");
    rngInitialized = true;
    rng.emplace(seed);
    arState.clear();
    arState = initAR(&*rng);
    maState.clear();
    maState = initMA(&*rng);
}

double ARIMA::getNextRandomVariate() {
    if (!rngInitialized || !rng)
        throw Exception("arima", __LINE__, "Initialize Random Number Generation first.");
    const double sigma = std::sqrt(variance);
    const double mu = processMean();
    const double e = rng->normal(0, sigma);

    // After a setter has lengthened a coefficient list the state keeps its
    // old length; the missing past values count as 0.
    const std::size_t np = ar.size() < arState.size() ? ar.size() : arState.size();
    const std::size_t nq = ma.size() < maState.size() ? ma.size() : maState.size();
    const double* phi = ar.data();
    const double* theta = ma.data();
    double* past = arState.data();
    double* shocks = maState.data();
    double y = e;
    for (std::size_t i = 0; i < np; ++i) y += phi[i] * past[i];
    for (std::size_t j = 0; j < nq; ++j) y += theta[j] * shocks[j];

    // Drop the oldest entry and put the new one in front, in place.
    for (std::size_t i = arState.size(); i > 1; --i) past[i - 1] = past[i - 2];
    if (!arState.empty()) past[0] = y;
    for (std::size_t j = maState.size(); j > 1; --j) shocks[j - 1] = shocks[j - 2];
    if (!maState.empty()) shocks[0] = e;
    return y + mu;
}

void normalise_base_variance(ARIMA& base, const char* source) {
    const double variance = base.getAutocovariance(0);
    if (variance == 0 || std::isnan(variance))
        throw Exception(source, __LINE__, "The base process has no variance to normalise (" + toString(variance) + ").");
    base.setVariance(base.getVariance() / variance);
}

}  // namespace velmora
