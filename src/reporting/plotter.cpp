// The plotter object: its options, the loading of its processes from files,
// their display names and the reading of a gnuplot template.
#include "fitting/process_factory.h"
#include "reporting/plotter.h"

#include <fstream>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "core/misc_string.h"
#include "distributions/dist_process.h"
#include "markov/cph.h"
#include "markov/maps.h"
#include "markov/mep.h"
#include "timeseries/arima.h"
#include "timeseries/arta.h"
#include "traces/trace.h"

namespace velmora {

Plotter::Plotter() : options(new Config()) { initDefaults(); }

Plotter::Plotter(std::vector<Request> requests) : Plotter() { processes = loadProcesses(requests); }

Plotter::Plotter(ProcessList list) : Plotter() { processes = list; }

Plotter::~Plotter() {
    for (auto& entry : processes) delete entry.first;
}

void Plotter::initDefaults() {
    options->setValue("format", "ps", true);
    options->setValue("linewidth", "3", true);
    options->setValue("template", "", true);
    options->setValue("relative", "true", true);
}

void Plotter::setOption(std::string key, std::string value) { options->setValue(key, value, true); }

std::string Plotter::getOption(std::string key) {
    if (!options->existsKey(key)) return "";
    return options->getValue(key);
}

const Plotter::ProcessList& Plotter::getProcesses() const { return processes; }

// A negative width wraps to a large unsigned one, as any unsigned conversion;
// gnuplot is left to judge it.
unsigned Plotter::optionLinewidth() { return static_cast<unsigned>(toInt(getOption("linewidth"))); }

namespace {

Process* buildProcess(const std::string& file, process_type type) {
    switch (type) {
    case PROCESS_TRACE: return new Trace(file, true);
    case PROCESS_MAP: return new MAP(file, FORMAT_XML);
    case PROCESS_MEP: return new MEP(file, FORMAT_XML);
    case PROCESS_CPH: return new CPH(file, FORMAT_XML);
    case PROCESS_ARIMA: return new ARIMA(file, FORMAT_XML);
    case PROCESS_ARTA: return new ARTA(file, FORMAT_XML);
    case PROCESS_DIST: return new DistProcess(file, FORMAT_XML);
    case PROCESS_XML: {
        XMLConfig document(file);
        return load_process(&document);
    }
    // chep and capp are not part of the library yet: their requests fail
    // like a model file that doesn't load.
    case PROCESS_CHEP: throw Exception("plotter", __LINE__, "CHEP models are not available.");
    case PROCESS_CAPP: throw Exception("plotter", __LINE__, "CAPP models are not available.");
    }
    return nullptr;
}

bool knownType(process_type type) { return type >= PROCESS_MAP && type <= PROCESS_XML; }

}  // namespace

Plotter::ProcessList Plotter::loadProcesses(std::vector<Request> requests) {
    // Held here until the whole list is built, so that a failure part way
    // leaves nothing behind.
    std::vector<std::unique_ptr<Process>> built;
    for (const Request& request : requests) {
        const std::string& file = request.first;
        // A type outside the enumeration would leave an entry without a
        // process, which no generator can use: it is refused at once.
        if (!knownType(request.second.first))
            throw Exception("plotter", __LINE__, "Unknown process type for \"" + file + "\".");
        try {
            built.emplace_back(buildProcess(file, request.second.first));
        } catch (Exception&) {
            libvelmora_warning("Ignoring \"" + file + "\". (Error while loading model data.)");
            throw Exception("plotter", __LINE__, "Error while loading model data.");
        }
    }
    ProcessList result;
    for (std::size_t i = 0; i < built.size(); i++) result.emplace_back(built[i].release(), requests[i].second.second);
    return result;
}

Plotter::ProcessList Plotter::completeNames(ProcessList list) {
    ProcessList result;
    for (std::size_t i = 0; i < list.size(); i++) {
        Process* process = list[i].first;
        std::string name = list[i].second;
        if (name.empty()) {
            if (process == nullptr)
                throw Exception("plotter", __LINE__, "Entry " + std::to_string(i) + " has no process.");
            name = process->getProcessDescription();
            if (process->getProcessType() == PROCESS_TRACE) name += std::to_string(i);
        }
        result.emplace_back(process, name);
    }
    return result;
}

void Plotter::completeNames() { processes = completeNames(processes); }

std::string Plotter::loadGnuplotTemplate(std::string file) {
    std::ifstream in(file);
    if (!in.is_open()) throw Exception("plotter", __LINE__, "Cannot open file.");
    std::string text, line;
    while (std::getline(in, line)) text += line + "\n";
    return text;
}

}  // namespace velmora
