// Sample statistics of a trace: raw and joint moments, variance,
// autocovariances and autocorrelations, the empirical distribution on a grid
// anchored at multiples of the bin width, and the target files of the
// fitters. Every sum runs in index order and every power goes through pow, so
// that results are reproducible to the last bit. The text summary gathers the
// same figures in fewer passes (trace_summary.cpp).
#include <cmath>
#include <fstream>
#include <limits>

#include "core/libvelmora_settings.h"
#include "numerics/matrix.h"
#include "traces/trace.h"
#include "traces/trace_summary.h"

namespace velmora {

namespace {

// The divisor n - 1 of the variance and the joint moments. The size subtracts
// as an unsigned count, so an empty trace divides by a huge number.
inline double lessOne(std::size_t n) { return static_cast<double>(n - 1); }

double mean(const std::vector<double>& values) {
    double sum = 0.0;
    for (double v : values) sum += v;
    return sum / static_cast<double>(values.size());
}

// The sum of (x[t] - m) * (x[t + lag] - m) over all pairs; no pairs at a lag
// at or beyond the size.
double laggedSum(const std::vector<double>& values, double m, unsigned lag) {
    std::size_t n = values.size();
    if (lag >= n) return 0.0;
    const double* x = values.data();
    double sum = 0.0;
    for (std::size_t t = 0; t + lag < n; ++t) sum += (x[t] - m) * (x[t + lag] - m);
    return sum;
}

std::ofstream openForWriting(const std::string& file) {
    std::ofstream out(file.c_str(), std::ios::out | std::ios::trunc);
    if (!out.is_open()) throw Exception("trace", __LINE__, "Cannot open file.");
    return out;
}

}  // namespace

std::vector<double> Trace::getMoments(unsigned order) const {
    std::size_t count = static_cast<std::size_t>(order) + 1;
    std::vector<double> moments(count);
    const double* x = values.data();
    std::size_t n = values.size();
    for (std::size_t k = 0; k < count; ++k) {
        double power = static_cast<double>(k);
        double sum = 0.0;
        for (std::size_t t = 0; t < n; ++t) sum += std::pow(x[t], power);
        moments[k] = sum / static_cast<double>(n);
    }
    return moments;
}

std::vector<double> Trace::getMoments(unsigned first, unsigned last) const {
    if (first > last) return std::vector<double>();
    std::vector<double> all = getMoments(last);
    return std::vector<double>(all.begin() + first, all.end());
}

double Trace::getVariance() const {
    double m = mean(values);
    double sum = 0.0;
    for (double v : values) sum += std::pow(v - m, 2.0);
    return sum / lessOne(values.size());
}

Matrix Trace::getJointMoments(unsigned size) const {
    // size 0 would ask for orders 0 to -1: an empty range.
    if (size == 0) throw Exception("trace", __LINE__, "Invalid range for joint moments.");
    return getJointMoments(0, size - 1, 0, size - 1);
}

Matrix Trace::getJointMoments(unsigned first, unsigned last) const {
    return getJointMoments(first, last, first, last);
}

Matrix Trace::getJointMoments(unsigned firstRow, unsigned lastRow, unsigned firstCol, unsigned lastCol) const {
    if (lastRow < firstRow || lastCol < firstCol)
        throw Exception("trace", __LINE__, "Invalid range for joint moments.");
    Matrix result(lastRow - firstRow + 1, lastCol - firstCol + 1, MATRIX_ZERO);
    const double* x = values.data();
    std::size_t n = values.size();
    double divisor = lessOne(n);
    for (unsigned r = 0; r <= lastRow - firstRow; ++r) {
        double i = static_cast<double>(firstRow + r);
        for (unsigned c = 0; c <= lastCol - firstCol; ++c) {
            double j = static_cast<double>(firstCol + c);
            double sum = 0.0;
            for (std::size_t t = 0; t + 1 < n; ++t) sum += std::pow(x[t], i) * std::pow(x[t + 1], j);
            result(r, c) = sum / divisor;
        }
    }
    return result;
}

std::vector<double> Trace::getAutocovariances(unsigned first, unsigned last) const {
    std::vector<double> result;
    if (first > last) return result;
    result.reserve(static_cast<std::size_t>(last - first) + 1);
    double m = mean(values);
    double n = static_cast<double>(values.size());
    // Counted up to and including `last` without passing the largest unsigned.
    for (unsigned l = first;; ++l) {
        result.push_back(laggedSum(values, m, l) / n);
        if (l == last) break;
    }
    return result;
}

std::vector<double> Trace::getAutocorrelations(unsigned first, unsigned last) const {
    std::vector<double> result;
    if (first > last) return result;
    result.reserve(static_cast<std::size_t>(last - first) + 1);
    double m = mean(values);
    double variance = getVariance();
    std::size_t n = values.size();
    for (unsigned l = first;; ++l) {
        if (l < n) {
            result.push_back(laggedSum(values, m, l) / (static_cast<double>(n - l - 1) * variance));
        } else {
            // No two values lie this far apart, so there is no estimate.
            result.push_back(std::numeric_limits<double>::quiet_NaN());
        }
        if (l == last) break;
    }
    return result;
}

BinCounts::BinCounts(double lower, double upper, double width) : lower(lower), width(width) {
    double ratio = std::fabs(lower - upper) / width;
    // A ratio that is no number (zero width over an empty range, infinite
    // bounds) gives no bins; a negative or zero width over a real range, or
    // more than ten million bins (three curves of that many points fill
    // half a gigabyte), is refused.
    const double maxBins = 1e7;
    if (!std::isnan(ratio)) {
        if (!(ratio >= 0.0) || ratio > maxBins)
            throw Exception("trace", __LINE__, "Invalid bin width.");
        b = static_cast<unsigned>(ratio);
    }
    this->upper = upper;
    counter.assign(static_cast<std::size_t>(b) + 2, 0);
    above = static_cast<double>(b) + 1.0;
    lowerCell = std::trunc(lower / width);
}

void BinCounts::add(const double* values, std::size_t size) {
    for (std::size_t k = 0; k < size; ++k) {
        const double v = values[k];
        if (v < lower) {
            ++counter[0];
        } else if (v > upper) {
            ++counter[b + 1];
        } else {
            // The grid is anchored at multiples of the width. When the bin
            // count lost a bin to truncation, an element near `upper` may fall
            // past the list; it is counted with those above the range.
            double index = std::trunc(v / width) - lowerCell + 1.0;
            if (index >= 1.0 && index <= above)
                ++counter[static_cast<std::size_t>(index)];
            else
                ++counter[b + 1];
        }
        ++total;
    }
}

Distribution BinCounts::distribution() const {
    Distribution d;
    double n = static_cast<double>(total);
    double c = counter[0] / n;
    d.pdf.reserve(2 * static_cast<std::size_t>(b) + 1);
    d.cdf.reserve(static_cast<std::size_t>(b) + 1);
    d.ccdf.reserve(static_cast<std::size_t>(b) + 1);
    d.cdf.emplace_back(lower, c);
    d.ccdf.emplace_back(lower, 1 - c);
    for (unsigned i = 0; i < b; ++i) {
        double f = counter[i + 1] / n;
        c += f;
        double density = f / width;
        double xl = i * width + lower;
        double xr = (i + 1.0) * width + lower;
        d.pdf.emplace_back(xl, density);
        d.pdf.emplace_back(xr, density);
        d.cdf.emplace_back(xr, c);
        d.ccdf.emplace_back(xr, 1 - c);
    }
    d.pdf.emplace_back(b * width + lower, counter[b] / n / width);
    return d;
}

Distribution Trace::computeDistribution(double lower, double upper, double width) {
    BinCounts counts(lower, upper, width);
    counts.add(values.data(), values.size());
    return counts.distribution();
}

Distribution Trace::computeDistribution(double lower, double upper) { return computeDistribution(lower, upper, 0.04); }

double Trace::evalCDF(double x) {
    if (x < 0) return 0.0;
    return computeDistribution(x - 1, x, 1.0).cdf.back().second;
}

double Trace::evalCCDF(double x) { return 1 - evalCDF(x); }

double Trace::evalPDF(double x) {
    if (x < 0) return 0.0;
    return computeDistribution(x - 1, x, 1.0).pdf.back().second;
}

double Trace::getSmallestValue() const {
    if (values.empty()) throw Exception("trace", __LINE__, "Invalid trace element.");
    double result = values[0];
    for (double v : values)
        if (v < result) result = v;
    return result;
}

double Trace::getLargestValue() const {
    if (values.empty()) throw Exception("trace", __LINE__, "Invalid trace element.");
    double result = values[0];
    for (double v : values)
        if (v > result) result = v;
    return result;
}

double Trace::getSmallestValueAbs() const {
    if (values.empty()) throw Exception("trace", __LINE__, "Invalid trace element.");
    double result = std::fabs(values[0]);
    for (double v : values)
        if (std::fabs(v) < result) result = std::fabs(v);
    return result;
}

double Trace::getLargestValueAbs() const {
    if (values.empty()) throw Exception("trace", __LINE__, "Invalid trace element.");
    double result = std::fabs(values[0]);
    for (double v : values)
        if (std::fabs(v) > result) result = std::fabs(v);
    return result;
}

void Trace::saveMoments(std::string file, unsigned order, std::string weightsFile) {
    std::vector<double> m = getMoments(order);
    {
        std::ofstream out = openForWriting(file);
        out << order << '\n';
        for (std::size_t k = 1; k < m.size(); ++k) out << m[k] << '\n';
    }
    if (weightsFile.empty()) return;
    std::ofstream weights = openForWriting(weightsFile);
    weights << order << '\n';
    for (std::size_t k = 1; k < m.size(); ++k) weights << 1 / m[k] << '\n';
}

void Trace::saveJointMoments(std::string file, unsigned order, std::string weightsFile) {
    Matrix joint = getJointMoments(1, order, 1, order);
    {
        std::ofstream out = openForWriting(file);
        out << order << '\n' << order << '\n' << joint.toString(10);
    }
    if (weightsFile.empty()) return;
    std::ofstream weights = openForWriting(weightsFile);
    weights << order << '\n' << order << '\n';
    for (unsigned r = 0; r < joint.getNumberRows(); ++r) {
        for (unsigned c = 0; c < joint.getNumberCols(); ++c) weights << 1 / joint(r, c) << ' ';
        weights << '\n';
    }
}

void Trace::saveAutocorrelations(std::string file, unsigned order, std::string weightsFile) {
    std::vector<double> acf = getAutocorrelations(1, order);
    {
        std::ofstream out = openForWriting(file);
        out << order << '\n';
        for (double a : acf) out << a << '\n';
    }
    if (weightsFile.empty()) return;
    std::ofstream weights = openForWriting(weightsFile);
    weights << order << '\n';
    for (std::size_t l = 0; l < acf.size(); ++l) weights << 1 << '\n';
}

}  // namespace velmora
