// The figures of a trace's text summary, gathered in two passes over the
// values instead of one pass for each statistic, order and lag: the first
// pass takes the extremes, the mean, the raw moments and the joint moments
// of consecutive pairs, the second the variance and the lagged sums around
// the mean. Each figure is bit for bit what the statistic of the same name
// gives on its own (Trace::getMoments, getVariance, getJointMoments,
// getAutocovariances, getAutocorrelations).
#ifndef VELMORA_TRACES_TRACE_SUMMARY_H
#define VELMORA_TRACES_TRACE_SUMMARY_H

#include <cstdint>
#include <string>
#include <vector>

#include "core/process.h"
#include "numerics/matrix.h"

namespace velmora {

struct SummaryFigures {
    double smallest = 0.0;
    double largest = 0.0;
    std::vector<double> moments;  // raw moments of orders 0 to `moments`
    double variance = 0.0;
    Matrix jointMoments{1, 1};    // orders 0 to `jointMoments` for rows and columns
    std::vector<double> autocovariances;   // lags 0 to `lags`
    std::vector<double> autocorrelations;  // lags 0 to `lags`
};

// The values must not be empty: the extremes of an empty trace are undefined.
SummaryFigures summaryFigures(const std::vector<double>& values, unsigned moments, unsigned jointMoments,
                              unsigned lags);

// The same two passes over values that arrive in blocks: every block once to
// first() in order, then every block again to second() in the same order.
// The lagged sums keep the last `lags` deviations between blocks, so that the
// figures do not depend on where the blocks split the values.
class SummaryPasses {
public:
    SummaryPasses(unsigned moments, unsigned jointMoments, unsigned lags);
    void first(const double* x, std::size_t n);
    void second(const double* x, std::size_t n);
    // Valid after the second pass; needs at least one value.
    SummaryFigures figures() const;
    std::uint64_t count() const { return n; }
    // Known after the first pass.
    double smallestValue() const { return smallest; }
    double largestValue() const { return largest; }
    double average() const { return sum / static_cast<double>(n); }

private:
    static constexpr std::size_t kBlock = 64;  // values whose powers are formed together
    std::size_t rawCount, side, powerCount, lags;
    std::vector<double> rawSum, jointSum, blockPowers, previous;
    double smallest = 0.0, largest = 0.0, sum = 0.0, mean = 0.0, squares = 0.0;
    std::uint64_t n = 0, seen = 0;
    std::size_t reach = 0;
    std::vector<double> lagSum, recent;  // recent: the last `reach` deviations, then a block
};

// The counts of values on a grid anchored at multiples of the width, from
// lower to upper, and the empirical distribution they give.
class BinCounts {
public:
    BinCounts(double lower, double upper, double width);
    void add(const double* values, std::size_t size);
    Distribution distribution() const;

private:
    double lower, upper = 0.0, width, above = 0.0, lowerCell = 0.0;
    unsigned b = 0;
    std::vector<std::uint64_t> counter;
    std::uint64_t total = 0;
};

// The text of a trace's summary from its figures and its distribution on the
// grid of width (largest - smallest) / 1000.
std::string summaryText(std::uint64_t count, const SummaryFigures& f, const Distribution& d);

}  // namespace velmora

#endif
