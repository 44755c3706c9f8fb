// Process::simulate: seed, then draw values into a new trace until the stop
// criterion holds, within the memory budget. It lives with the traces it
// builds; the streaming loop beside it is Process::generate.
#include <memory>
#include <string>

#include "core/libvelmora_settings.h"
#include "core/process.h"
#include "traces/trace.h"

namespace velmora {

Trace* Process::simulate(int stop, unsigned observations, double time, unsigned seed) {
    const unsigned limit = simulation_value_limit();
    const bool byCount = stop == 0 || stop == 1;
    const bool bySum = stop == 0 || stop == 2;
    if (byCount && observations > limit)
        throw Exception("process", __LINE__, "The number of observations exceeds the memory budget of " +
                                                 simulation_budget_text() + ".");
    initRandomNumberGeneration(seed);
    // Held until the end, so that a failure while drawing frees what was built.
    std::unique_ptr<Trace> trace(new Trace());
    unsigned count = 0;
    double sum = 0.0;
    // Stop 1 counts, stop 2 sums, stop 0 needs both; the strict comparison
    // makes a sum equal to `time` end the time test. A run by sum whose values
    // never reach the time (zeros, a downward drift) ends at the budget, and
    // the count, bounded by the limit, never wraps.
    while ((byCount && count < observations) || (bySum && time > sum)) {
        if (count == limit)
            throw Exception("process", __LINE__, "The generated values exceed the memory budget of " +
                                                     simulation_budget_text() + " before reaching the time limit.");
        double x = getNextRandomVariate();
        trace->appendElement(x);
        ++count;
        sum += x;
    }
    return trace.release();
}

}  // namespace velmora
