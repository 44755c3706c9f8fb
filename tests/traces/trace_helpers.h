// The values of a trace, for the trace tests.
#pragma once
#include "support/test_support.h"
#include "traces/trace.h"

namespace trace_test {
using namespace velmora_test;
inline std::vector<double> contentsOf(velmora::Trace& trace) {
    std::vector<double> v;
    for (unsigned i = 0; i < trace.getSize(); ++i) v.push_back(trace.getElement(i));
    return v;
}
}  // namespace trace_test
