// The marginal and correlation fitters on arbitrary values, the way
// sylvar-fit runs them: three control bytes pick the family, the model class
// and the phases, the rest is up to 64 doubles in machine order.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "core/libvelmora_settings.h"
#include "core/process.h"
#include "fitting/tracefit.h"
#include "fuzz_support.h"
#include "traces/trace.h"

using namespace velmora;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 3) return 0;
    fuzz_limit_budget();
    static const char* const families[] = {"", "normal", "exponential", "gamma", "lognormal", "weibull",
                                           "hypererlang", "chisquare"};
    const std::string family = families[data[0] % 8];
    const tracefit_model model = static_cast<tracefit_model>(data[1] % 5);
    const unsigned phases = 1 + data[2] % 4;
    data += 3;
    size -= 3;
    std::vector<double> values;
    for (std::size_t at = 0; at + sizeof(double) <= size && values.size() < 64; at += sizeof(double)) {
        double x;
        std::memcpy(&x, data + at, sizeof x);
        values.push_back(x);
    }
    try {
        TraceFitMarginal marginal = tracefit_marginal(values, family, phases);
        Trace trace(values);
        // One lag and one base order: a correlation fit runs tens of
        // thousands of integrals, each far slower under the sanitizers.
        TraceFitOrders orders;
        orders.lags = 1;
        orders.pMax = 1;
        orders.qMax = 0;
        std::unique_ptr<Process> fitted(tracefit_correlation(marginal, model, &trace, orders));
        if (fitted) fitted->getSummary(2, 1, 1);
    } catch (const Exception&) {
    }
    return 0;
}
