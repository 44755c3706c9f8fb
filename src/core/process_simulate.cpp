// The one generation loop of all processes: seed, then draw values into a new
// trace until the stop criterion holds.
#include <memory>

#include "core/libvelmora_settings.h"
#include "core/process.h"
#include "traces/trace.h"

namespace velmora {

Trace* Process::simulate(int stop, unsigned observations, double time, unsigned seed) {
    initRandomNumberGeneration(seed);
    // Held until the end, so that a failure while drawing frees what was built.
    std::unique_ptr<Trace> trace(new Trace());
    unsigned count = 0;
    double sum = 0.0;
    // Stop 1 counts, stop 2 sums, stop 0 needs both; the strict comparison
    // makes a sum equal to `time` end the time test.
    // A run by time whose sum has not grown over a whole check period can not
    // be expected to reach the limit (values of zero, or drifting downwards):
    // it is refused instead of running for ever.
    const unsigned checkPeriod = 10000000;
    double sumAtLastCheck = 0.0;
    while (((stop == 0 || stop == 1) && count < observations) || ((stop == 0 || stop == 2) && time > sum)) {
        double x = getNextRandomVariate();
        trace->appendElement(x);
        ++count;
        sum += x;
        bool onlyTimeGoesOn = (stop == 2 || (stop == 0 && count >= observations)) && time > sum;
        if (count % checkPeriod == 0 && onlyTimeGoesOn) {
            if (!(sum > sumAtLastCheck))
                throw Exception("process", __LINE__, "The generated values do not reach the time limit.");
            sumAtLastCheck = sum;
        }
    }
    return trace.release();
}

}  // namespace velmora
