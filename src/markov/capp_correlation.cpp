// Correlation of a CAPP process. Path i owns the interval (lo(i), hi(i)) of
// cumulative probability, and so the interval (q(lo), q(hi)) of normal
// quantiles of a base value. Two base values with correlation rho select
// paths i and j with the probability of the rectangle of the two intervals
// under the standard bivariate normal law, and since the values inside a
// path are independent of everything else,
//   E[X(t) X(t+k)] = sum over i, j of p(i, j; rho_k) m(i) m(j)
// with the path means m. The sum runs over the pairs i <= j, the pairs
// i < j counted twice, which costs n(n + 1)/2 rectangles for n paths.
//
// The quantiles of every path are computed once per call instead of once per
// pair: they are the same numbers, formed by the same running sum and
// clamping, so the rectangles and the sums are those of solveIntegral.
#include "markov/capp.h"

#include <algorithm>

#include "core/libvelmora_settings.h"
#include "distributions/dist_hypoexponential.h"
#include "distributions/dist_normal.h"
#include "numerics/matrix.h"
#include "numerics/misc_numerical_dist.h"
#include "timeseries/arima.h"

namespace velmora {

namespace {

// Bounds that reach the ends of (0, 1) are kept just inside, so that their
// quantiles stay finite.
struct Rectangle {
    double lo, hi;  // cumulative probabilities
    double qlo, qhi;  // their normal quantiles, after clamping
};

Rectangle rectangle(double lo, double hi) {
    Rectangle r{lo, hi, lo, hi};
    if (r.qlo <= 1e-10) r.qlo = 1e-10;
    if (r.qhi >= 0.9999999999) r.qhi = 0.9999999999;
    r.qlo = Normal::normal_inverse_cdf(r.qlo, 0, 1);
    r.qhi = Normal::normal_inverse_cdf(r.qhi, 0, 1);
    return r;
}

double pairProbability(const Rectangle& a, const Rectangle& b, double rho) {
    const double lower[2] = {a.qlo, b.qlo};
    const double upper[2] = {a.qhi, b.qhi};
    const int infin[2] = {2, 2};
    return mvbvn(lower, upper, infin, rho);
}

// The rectangles of all paths, by one running sum in path order: the sum up
// to path i - 1 is lo(i), and adding p(i) gives hi(i).
std::vector<Rectangle> rectangles(const cph_path_list& paths) {
    std::vector<Rectangle> result;
    result.reserve(paths.size());
    double sum = 0;
    for (const std::pair<double, HypoExponential*>& path : paths) {
        const double lo = sum;
        sum += path.first;
        result.push_back(rectangle(lo, sum));
    }
    return result;
}

// Length of the overlap of (a, b) and (c, d), 0 if they are apart.
double overlap(double a, double b, double c, double d) {
    const double length = std::min(b, d) - std::max(a, c);
    return length > 0 ? length : 0.0;
}

// s = sum_{i<j} 2 p(i,j) m(i) m(j) + sum_i p(i,i) m(i) m(i), in this order.
template <typename Pair>
double pairSum(std::size_t n, const double* m, Pair p) {
    double s = 0;
    for (std::size_t i = 0; i < n; i++)
        for (std::size_t j = i + 1; j < n; j++) s = s + 2 * p(i, j) * m[i] * m[j];
    for (std::size_t i = 0; i < n; i++) s = s + p(i, i) * m[i] * m[i];
    return s;
}

}  // namespace

void capp::computeIntegrationBounds(const cph_path_list& paths, unsigned i, double* lo, double* hi) {
    if (i >= paths.size()) throw Exception("capp", __LINE__, "Path index out of range.");
    double sum = 0;
    for (unsigned k = 0; k < i; k++) sum += paths[k].first;
    *lo = sum;
    *hi = sum + paths[i].first;
}

double capp::solveIntegral(const cph_path_list& paths, double rho, unsigned i, unsigned j) {
    double lo1, hi1, lo2, hi2;
    computeIntegrationBounds(paths, i, &lo1, &hi1);
    computeIntegrationBounds(paths, j, &lo2, &hi2);
    return pairProbability(rectangle(lo1, hi1), rectangle(lo2, hi2), rho);
}

// At rho = 1 both values take the same path; at rho = -1 the second takes
// the path that holds 1 - u, so a pair's probability is the overlap of one
// interval with the other's mirror image.
std::vector<double> capp::compute_autocorrelation(double mean, double var, std::vector<double> ac,
                                                  const cph_path_list& paths, const std::vector<double>& pathMeans) {
    const std::size_t n = paths.size();
    if (pathMeans.size() != n) throw Exception("capp", __LINE__, "Path means and paths do not match.");
    const std::vector<Rectangle> r = rectangles(paths);
    const double* m = pathMeans.data();
    std::vector<double> result;
    result.reserve(ac.size());
    for (double rho : ac) {
        double s;
        if (rho == 1.0) {
            s = pairSum(n, m, [&paths](std::size_t i, std::size_t j) { return i == j ? paths[i].first : 0.0; });
        } else if (rho == -1.0) {
            s = pairSum(n, m, [&r](std::size_t i, std::size_t j) {
                return overlap(r[i].lo, r[i].hi, 1 - r[j].hi, 1 - r[j].lo);
            });
        } else {
            s = pairSum(n, m, [&r, rho](std::size_t i, std::size_t j) { return pairProbability(r[i], r[j], rho); });
        }
        result.push_back((s - mean * mean) / var);
    }
    return result;
}

std::vector<double> capp::getAutocorrelations(unsigned from, unsigned to) const {
    std::vector<double> result;
    if (from == 0) {
        result.push_back(1.0);
        from = 1;
    }
    const std::vector<double> rho = base->getAutocorrelations(from, to);
    CPH* c = requireMarginal();
    const double mean = c->getMoments(1, 1)[0];
    const double var = c->getVariance();
    const std::vector<double> mapped = compute_autocorrelation(mean, var, rho, paths, pathMeans);
    result.insert(result.end(), mapped.begin(), mapped.end());
    return result;
}

// The pair probabilities at the lag-1 correlation are the same for every
// entry and are formed once; the sum over the pairs (a, b), a the earlier
// value, keeps its order.
Matrix capp::getJointMoments(unsigned from, unsigned to) const {
    requireMarginal();
    if (from > to) throw Exception("capp", __LINE__, "Invalid range of joint moments.");
    const double rho1 = base->getAutocorrelation(1);
    const std::size_t n = paths.size();
    const std::vector<Rectangle> r = rectangles(paths);
    std::vector<double> pair(n * n);
    for (std::size_t a = 0; a < n; a++)
        for (std::size_t b = 0; b < n; b++) pair[a * n + b] = pairProbability(r[a], r[b], rho1);
    std::vector<std::vector<double>> moments(n);
    for (std::size_t a = 0; a < n; a++) moments[a] = paths[a].second->asCPH().getMoments(from, to);

    const unsigned size = to - from + 1;
    Matrix result(size, size);
    for (unsigned i = 0; i < size; i++)
        for (unsigned j = 0; j < size; j++) {
            double s = 0;
            for (std::size_t a = 0; a < n; a++)
                for (std::size_t b = 0; b < n; b++) s += moments[a][i] * pair[a * n + b] * moments[b][j];
            result(i, j) = s;
        }
    return result;
}

}  // namespace velmora
