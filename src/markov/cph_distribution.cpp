// Distribution curves of a phase-type distribution or of the stationary
// interval of an arrival process, tabulated by uniformization on a grid of
// width 0.001 anchored at 0: each grid step carries the transient vector one
// width further, so the matrix exponential is never formed.
#include <cmath>

#include "core/libvelmora_settings.h"
#include "markov/cph.h"
#include "numerics/misc_linalg.h"

namespace velmora {

static const double gridWidth = 0.001;
static const double uniformizationEps = 1e-12;

// Sum of row 0 of m times the column c, in index order.
static double rowTimesColumn(const Matrix& m, const std::vector<double>& c) {
    const std::vector<double>& row = m[0];
    double sum = 0;
    for (unsigned j = 0; j < row.size(); j++) sum += row[j] * c[j];
    return sum;
}

Distribution CPH::computeDistribution(double lower, double upper, Matrix D0, Matrix pi, Matrix D1) {
    // NaN or infinite bounds would give no meaningful number of grid steps.
    if (lower > upper || std::isnan(lower) || std::isnan(upper) || std::isinf(upper))
        throw Exception("cph", __LINE__, "Invalid range for distribution.");
    // A singular D0 has no absorption time; it is refused before any step.
    gauss_jordan_inv(D0);
    if (pi.getNumberRows() != 1 || pi.getNumberCols() != D0.getNumberRows() || D1.getNumberRows() != D0.getNumberRows())
        throw Exception("cph", __LINE__, "These Matrices cannot be multiplied.");

    Distribution dist;
    const std::vector<double> exits = D1.getRowSums().getCol(0);
    const unsigned n = static_cast<unsigned>(exits.size());
    double c = 0;
    double d = rowTimesColumn(pi, exits);
    if (lower <= 0) {
        dist.pdf.push_back(std::make_pair(0.0, d));
        dist.cdf.push_back(std::make_pair(0.0, 0.0));
        dist.ccdf.push_back(std::make_pair(0.0, 1.0));
        lower = 0;
    }
    // A negative upper bound leaves no grid step.
    if (upper < 0) return dist;

    const double lambda = D0.getLargestValueAbsDiag();
    Matrix P = D0 / lambda + Matrix(n, n, MATRIX_IDENTITY);
    const unsigned long long N = static_cast<unsigned long long>(upper / gridWidth);
    Matrix result(1, n);
    Matrix scratch(1, n);
    // The step after N is normally at or beyond upper; should rounding of
    // upper / h leave it just below, one more step is taken.
    for (unsigned long long i = 0;; i++) {
        map_ph_randomization(&P, &pi, &scratch, &result, lambda, gridWidth, uniformizationEps);
        const std::vector<double>& r = result[0];
        c = 0;
        for (unsigned j = 0; j < n; j++) c += r[j];
        pi[0] = r;
        d = rowTimesColumn(pi, exits);
        const double x = static_cast<double>(i + 1) * gridWidth;
        if (lower <= x) {
            dist.cdf.push_back(std::make_pair(x, 1 - c));
            dist.ccdf.push_back(std::make_pair(x, c));
            dist.pdf.push_back(std::make_pair(x, d));
        }
        if (i >= N && x >= upper) break;
    }
    return dist;
}

Distribution CPH::computeDistribution(double lower, double upper) {
    Vector row = tau.isRowVector() ? tau : tau.transpose();
    Matrix pi = row.toMatrix();
    Matrix D1 = getExitRates().toMatrix() * pi;
    return computeDistribution(lower, upper, T, pi, D1);
}

double CPH::evalCDF(double x) { return computeDistribution(x, x).cdf[0].second; }

double CPH::evalCCDF(double x) { return 1 - evalCDF(x); }

double CPH::evalPDF(double x) { return computeDistribution(x, x).pdf[0].second; }

}  // namespace velmora
