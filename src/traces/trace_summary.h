// The figures of a trace's text summary, gathered in two passes over the
// values instead of one pass for each statistic, order and lag: the first
// pass takes the extremes, the mean, the raw moments and the joint moments
// of consecutive pairs, the second the variance and the lagged sums around
// the mean. Each figure is bit for bit what the statistic of the same name
// gives on its own (Trace::getMoments, getVariance, getJointMoments,
// getAutocovariances, getAutocorrelations).
#ifndef VELMORA_TRACES_TRACE_SUMMARY_H
#define VELMORA_TRACES_TRACE_SUMMARY_H

#include <vector>

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

}  // namespace velmora

#endif
