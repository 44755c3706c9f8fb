// The text summary of a trace and the two passes that gather its figures.
//
// Asked one by one, the statistics of the default summary make more than
// sixty passes over a trace of n values and call pow 38 n times. Here each
// pow(x[t], k) is called once per element and order and serves both the raw
// and the joint moments, the mean is taken once, and the variance and all
// lags share one pass around it; nothing of the trace's length is stored.
// The results stay bit for bit those of the single statistics: each
// accumulator still adds its terms in index order, and each term is the same
// expression of the same operands.
// The powers of the moments are those of the library's pow with the order as
// a run-time double, as in the single statistics: a known order 2 would let
// the compiler write x * x, which differs from the library's pow in the last
// bit for some x (about one in a thousand). integer_powers gives these same
// bits, most of them without calling pow. The variance's pow(d, 2.0), a constant order,
// is a product in both places alike. A build for a target with fused
// multiply-add needs -ffp-contract=off to keep this, since the compiler
// could fuse a product into its sum in one path and not in the other.
#include "traces/trace_summary.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <limits>
#include <sstream>

#include "core/libvelmora_settings.h"
#include "numerics/misc_math.h"
#include "traces/trace.h"

namespace velmora {

SummaryPasses::SummaryPasses(unsigned moments, unsigned jointMoments, unsigned lags)
    : rawCount(static_cast<std::size_t>(moments) + 1),
      side(static_cast<std::size_t>(jointMoments) + 1),
      powerCount(std::max(rawCount, side)),
      lags(lags),
      rawSum(rawCount, 0.0),
      jointSum(side * side, 0.0),
      blockPowers(kBlock * powerCount),
      previous(powerCount) {}

// First pass: extremes, the plain sum for the mean, the power sums, and the
// joint sums of each pair (x[t - 1], x[t]) from the powers of both. The
// powers of a block of values are formed first and summed after: summing
// each value's powers right after writing them would read them back before
// the writes have settled, which costs more than forming them.
void SummaryPasses::first(const double* x, std::size_t count) {
    for (std::size_t start = 0; start < count; start += kBlock) {
        const std::size_t m = std::min(kBlock, count - start);
        for (std::size_t t = 0; t < m; ++t) {
            // pow(v, 0) is 1 for every v, and pow(v, 1) is v, the exact result
            // being representable; the higher orders need the library's pow.
            double* const row = &blockPowers[t * powerCount];
            row[0] = 1.0;
            if (powerCount > 1) row[1] = x[start + t];
            integer_powers(x[start + t], row, powerCount);
        }
        for (std::size_t t = 0; t < m; ++t) {
            const double v = x[start + t];
            const double* const power = &blockPowers[t * powerCount];
            if (n == 0) smallest = largest = v;
            if (v < smallest) smallest = v;
            if (v > largest) largest = v;
            sum += v;
            for (std::size_t k = 0; k < rawCount; ++k) rawSum[k] += power[k];
            if (n > 0) {
                const double* const before = t > 0 ? power - powerCount : previous.data();
                for (std::size_t i = 0; i < side; ++i)
                    for (std::size_t j = 0; j < side; ++j) jointSum[i * side + j] += before[i] * power[j];
            }
            ++n;
        }
        std::copy(&blockPowers[(m - 1) * powerCount], &blockPowers[m * powerCount], previous.begin());
    }
}

// Second pass: squares and lagged products of the deviations. The product of
// lag l is added when its later value arrives; each lag's sum still takes its
// terms in the order of their earlier index. Lags at or beyond n have no
// pairs and keep no sum. The deviations of a block follow those of the last
// `reach` values before it, so that every lag reads its partner in place.
void SummaryPasses::second(const double* x, std::size_t count) {
    if (seen == 0) {
        mean = sum / static_cast<double>(n);
        reach = static_cast<std::size_t>(std::min<std::uint64_t>(lags, n - 1));
        lagSum.assign(reach + 1, 0.0);
        recent.assign(reach + kBlock, 0.0);
    }
    double* const deviation = recent.data() + reach;  // deviation[-l] is l values back
    for (std::size_t start = 0; start < count; start += kBlock) {
        const std::size_t m = std::min(kBlock, count - start);
        for (std::size_t t = 0; t < m; ++t) deviation[t] = x[start + t] - mean;
        for (std::size_t t = 0; t < m; ++t, ++seen) {
            const double* const here = deviation + t;  // partners lie up to `reach` before it
            const double d = *here;
            squares += std::pow(d, 2.0);
            const std::size_t last = seen < reach ? static_cast<std::size_t>(seen) : reach;
            lagSum[0] += d * d;
            for (std::size_t l = 1; l <= last; ++l) lagSum[l] += *(here - l) * d;
        }
        std::copy(recent.data() + m, recent.data() + m + reach, recent.data());
    }
}

SummaryFigures SummaryPasses::figures() const {
    SummaryFigures f;
    f.smallest = smallest;
    f.largest = largest;
    f.moments.resize(rawCount);
    for (std::size_t k = 0; k < rawCount; ++k) f.moments[k] = rawSum[k] / static_cast<double>(n);
    f.variance = squares / static_cast<double>(n - 1);
    f.jointMoments = Matrix(static_cast<unsigned>(side), static_cast<unsigned>(side), MATRIX_ZERO);
    for (std::size_t i = 0; i < side; ++i)
        for (std::size_t j = 0; j < side; ++j)
            f.jointMoments(static_cast<unsigned>(i), static_cast<unsigned>(j)) =
                jointSum[i * side + j] / static_cast<double>(n - 1);
    for (std::size_t l = 0; l <= lags; ++l) {
        const double lagged = l <= reach ? lagSum[l] : 0.0;
        f.autocovariances.push_back(lagged / static_cast<double>(n));
        f.autocorrelations.push_back(l < n ? lagged / (static_cast<double>(n - l - 1) * f.variance)
                                           : std::numeric_limits<double>::quiet_NaN());
    }
    return f;
}

SummaryFigures summaryFigures(const std::vector<double>& values, unsigned moments, unsigned jointMoments,
                              unsigned lags) {
    SummaryPasses passes(moments, jointMoments, lags);
    passes.first(values.data(), values.size());
    passes.second(values.data(), values.size());
    return passes.figures();
}

std::string summaryText(std::uint64_t count, const SummaryFigures& f, const Distribution& d) {
    std::ostringstream out;
    out << "Trace statistics: " << '\n';
    out << "===========================" << '\n';
    out << "Number of elements: " << count << '\n';
    out << "Smallest value: " << f.smallest << '\n';
    out << "Largest value: " << f.largest << '\n';
    for (std::size_t k = 0; k < f.moments.size(); ++k) out << "Moment " << k << ": " << f.moments[k] << '\n';
    out << "Variance: " << f.variance << '\n';
    for (unsigned r = 0; r < f.jointMoments.getNumberRows(); ++r)
        for (unsigned c = 0; c < f.jointMoments.getNumberCols(); ++c)
            out << "Joint moment " << r << ", " << c << ": " << f.jointMoments(r, c) << '\n';
    for (std::size_t l = 0; l < f.autocovariances.size(); ++l)
        out << "Autocovariance at lag " << l << ": " << f.autocovariances[l] << '\n';
    for (std::size_t l = 0; l < f.autocorrelations.size(); ++l)
        out << "Autocorrelation at lag " << l << ": " << f.autocorrelations[l] << '\n';

    out << std::fixed << std::setprecision(5);
    out << '\n';
    out << "t\t\tpdf\t\tcdf" << '\n';
    out << "=\t\t===\t\t===" << '\n';
    for (std::size_t i = 0; i < d.cdf.size(); ++i)
        out << d.cdf[i].first << "\t\t" << d.pdf[2 * i].second << "\t\t" << d.cdf[i].second << '\n';
    return out.str();
}

std::string Trace::getSummary(unsigned moments, unsigned jointMoments, unsigned lags) {
    if (values.empty()) throw Exception("trace", __LINE__, "Invalid trace element.");
    const SummaryFigures f = summaryFigures(values, moments, jointMoments, lags);
    return summaryText(values.size(), f,
                       computeDistribution(f.smallest, f.largest, (f.largest - f.smallest) / 1000.0));
}

std::string Trace::getSummary() { return getSummary(5, 3, 5); }

}  // namespace velmora
