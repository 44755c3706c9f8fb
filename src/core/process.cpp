// The process base and the tabulation of its distribution curves; the model
// factories, which reach up to every model class, are in process_factory.cpp.
#include "core/process.h"

#include "core/libvelmora_settings.h"

namespace velmora {

Process::Process() : type(PROCESS_XML), typeName(), rngInitialized(false) {}

process_type Process::getProcessType() { return type; }

std::string Process::getProcessTypeString() { return typeName; }

void Process::setExactNumerics(bool exact) { exactNumerics = exact; }
bool Process::hasExactNumerics() const { return exactNumerics; }

std::string numerics_element_text(bool exact) { return exact ? "<numerics>exact</numerics>\n" : ""; }

Distribution tabulate_distribution(Process& process, double lower, double upper, double step) {
    Distribution result;
    double x = lower;
    while (x <= upper) {
        result.cdf.emplace_back(x, process.evalCDF(x));
        result.ccdf.emplace_back(x, process.evalCCDF(x));
        result.pdf.emplace_back(x, process.evalPDF(x));
        const double next = x + step;
        if (!(next > x)) break;
        x = next;
    }
    return result;
}

}  // namespace velmora
