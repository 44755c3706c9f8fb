// The contract of everything that generates a stream of values and answers
// for its statistics, the one generation loop and the two model factories.
#ifndef VELMORA_CORE_PROCESS_H
#define VELMORA_CORE_PROCESS_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace velmora {

class Matrix;
class Trace;
class Config;
class XMLConfig;
class XMLElement;

// Fixed underlying type: values outside the list reach the "unsupported
// format" checks of the models without undefined behaviour.
enum format : int { FORMAT_CONFIG = 0, FORMAT_XML = 1 };

enum process_type : int {
    PROCESS_MAP = 0,
    PROCESS_MEP = 1,
    PROCESS_CPH = 2,
    PROCESS_ARIMA = 3,
    PROCESS_ARTA = 4,
    PROCESS_TRACE = 5,
    PROCESS_DIST = 6,
    PROCESS_CHEP = 7,
    PROCESS_CAPP = 8,
    PROCESS_XML = 9
};

// Sampled distribution curves: (x, value) pairs.
struct Distribution {
    std::vector<std::pair<double, double>> pdf;
    std::vector<std::pair<double, double>> cdf;
    std::vector<std::pair<double, double>> ccdf;
};

// Receives generated values in blocks: `count` values from `values` on.
using ValueSink = std::function<void(const double* values, std::size_t count)>;

class Process {
public:
    Process();
    Process(const Process& other) = default;
    Process& operator=(const Process& other) = default;
    virtual ~Process() = default;

    virtual std::string getProcessDescription() = 0;
    virtual void load(std::string file, format f) = 0;
    virtual void save(std::string file, format f) = 0;
    virtual std::string toString(format f) = 0;
    virtual std::string getSummary() = 0;
    virtual std::string getSummary(unsigned moments, unsigned jointMoments, unsigned lags) = 0;
    virtual std::vector<double> getMoments(unsigned first, unsigned last) const = 0;
    virtual Matrix getJointMoments(unsigned first, unsigned last) const = 0;
    virtual std::vector<double> getAutocorrelations(unsigned first, unsigned last) const = 0;
    virtual Distribution computeDistribution(double lower, double upper) = 0;
    virtual double evalCDF(double x) = 0;
    virtual double evalCCDF(double x) = 0;
    virtual double evalPDF(double x) = 0;
    virtual double computeLikelihood(Trace* trace) = 0;
    virtual void initRandomNumberGeneration(unsigned seed) = 0;
    virtual double getNextRandomVariate() = 0;

    process_type getProcessType();
    std::string getProcessTypeString();

    // The numerics policy. Models whose numerics approximate (ARTA, CAPP and
    // CHEP: the four-decimal normal table, Stirling's gamma function, a
    // capped quantile) switch to exact forms in their transform, moments and
    // autocorrelations, and write their element with 17 significant digits
    // and <numerics>exact</numerics>; other models are exact already and
    // keep the flag only.
    virtual void setExactNumerics(bool exact);
    bool hasExactNumerics() const;

    // Seeds the process, then draws values until the stop criterion holds:
    // 1 by count, 2 by sum, 0 by both; any other value gives an empty trace.
    // The trace grows at most to simulation_value_limit() values: a count
    // above it is refused before anything is drawn, and a run by sum that
    // reaches it ends with an Exception naming the budget.
    Trace* simulate(int stop, unsigned observations, double time, unsigned seed);

    // The same draws without a trace: seeds the process, then hands the
    // values to `sink` in blocks, in order, until the stop criterion holds,
    // and returns their number. Nothing of the run's length is kept, so there
    // is no budget: a run by sum whose values never reach `time` ends only
    // when the sink throws. A block is valid only during the call.
    std::uint64_t generate(int stop, std::uint64_t observations, double time, unsigned seed,
                           const ValueSink& sink);

protected:
    process_type type;
    std::string typeName;
    bool rngInitialized;
    bool exactNumerics = false;
};

// "<numerics>exact</numerics>\n" for exact numerics, else nothing.
std::string numerics_element_text(bool exact);

// Curves of a process on lower, lower + step, ... up to upper, through its
// evalCDF, evalCCDF and evalPDF. The walk also ends once adding the step no
// longer moves x: one point for lower = upper, and no endless walk for a step
// lost in rounding or an infinite bound; a NaN bound gives empty curves.
Distribution tabulate_distribution(Process& process, double lower, double upper, double step);

// The memory that the values of one trace built by simulate may take. By
// default an eighth of the memory the system gives the program (the physical
// memory, or a smaller control-group limit): a vector that grows by doubling
// holds up to three times its values for a moment, and the caller's
// statistics need room as well. set_simulation_memory_budget(0) restores the
// default.
std::size_t simulation_memory_budget();
void set_simulation_memory_budget(std::size_t bytes);
// The number of values that fit into the budget, never more than the largest
// count a trace can index.
unsigned simulation_value_limit();
// The budget as the messages give it: "N MiB (M values)".
std::string simulation_budget_text();

}  // namespace velmora

#endif
