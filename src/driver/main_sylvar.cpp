// sylvar: reads a model from an XML file, generates a trace from it and
// prints the summaries of the model and of the trace.
#include <cstring>
#include <iostream>
#include <memory>
#include <new>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "core/misc_string.h"
#include "core/output_file.h"
#include "core/process.h"
#include "fitting/process_factory.h"
#include "traces/trace_replications.h"
#include "traces/trace_stream.h"

using namespace velmora;

void sylvar_print_info() {}

void sylvar_print_help() {}

void sylvar_load_config(Config* config, bool& traceFormat, std::string& trace, unsigned& seed, double& time,
                        unsigned& observations, int& stop) {
    if (config->existsKey("traceFormat") && config->getValueAsInt("traceFormat") == 1) traceFormat = true;
    if (config->existsKey("trace")) trace = config->getValue("trace");
    if (config->existsKey("seed")) seed = static_cast<unsigned>(config->getValueAsInt("seed"));
    if (config->existsKey("time")) {
        time = config->getValueAsDouble("time");
        stop = 2;
    }
    if (config->existsKey("observations")) {
        observations = static_cast<unsigned>(config->getValueAsInt("observations"));
        if (stop == 2) stop = 0;
    }
    libvelmora_infomsg("Parameter file loaded.\nSeed: " + toString(seed) + "\n" + "stop: " + toString(stop) +
                       "\n" + "time: " + toString(time) + "\n" + "observations: " + toString(observations) +
                       "\n" + "traceFormat: " + toString(traceFormat) + "\n" + "trace: " + trace + "\n");
}

// -replications=R (default 1) and -threads=T (default 0: every core).
void sylvar_load_replications(Config* config, unsigned& replications, unsigned& threads) {
    if (config->existsKey("replications")) {
        const int r = config->getValueAsInt("replications");
        if (r < 1) throw Exception("main_sylvar", __LINE__, "Invalid number of replications; give 1 or more.");
        replications = static_cast<unsigned>(r);
    }
    if (config->existsKey("threads")) {
        const int t = config->getValueAsInt("threads");
        if (t < 1) throw Exception("main_sylvar", __LINE__, "Invalid number of threads; give 1 or more.");
        threads = static_cast<unsigned>(t);
    }
}

void sylvar_report_failure(Exception& e) {
    std::cout << e.toString() << std::endl << std::endl;
    std::cout << "Use parameter --help for usage information." << std::endl;
}

int main(int argc, char** argv) {
    sylvar_print_info();
    if (argc == 1 || (argc == 2 && std::strcmp(argv[1], "--help") == 0)) {
        sylvar_print_help();
        return 0;
    }
    try {
        std::unique_ptr<Config> config(new Config(argc, argv));
        // Without paramfile or model there is no document: load_process then
        // refuses the run with "Error loading model.".
        std::unique_ptr<XMLConfig> document;
        std::string modelFile;
        if (config->existsKey("paramfile"))
            modelFile = config->getValue("paramfile");
        else if (config->existsKey("model"))
            modelFile = config->getValue("model");
        if (!modelFile.empty()) document.reset(new XMLConfig(modelFile));
        std::unique_ptr<Process> process(load_process(document.get()));
        // -numerics=exact forces the exact numerics on any model file.
        bool exact = false;
        if (config->existsKey("numerics")) {
            const std::string numerics = config->getValue("numerics");
            if (numerics != "exact" && numerics != "specified")
                throw Exception("main_sylvar", __LINE__,
                                "Invalid -numerics value '" + numerics + "': it must be 'exact' or 'specified'.");
            exact = numerics == "exact";
            if (exact) process->setExactNumerics(true);
        }

        bool traceFormat = false;
        std::string trace;
        unsigned seed = 13;
        double time = 10000.0;
        unsigned observations = 1000;
        int stop = 1;
        sylvar_load_config(config.get(), traceFormat, trace, seed, time, observations, stop);
        if (trace.empty()) {
            sylvar_print_help();
            return 0;
        }
        // A device, FIFO or directory, or the model file itself, is never
        // (over)written; a link is written through.
        const std::string refusal = output_file_refusal(trace, {modelFile});
        if (!refusal.empty())
            throw Exception("main_sylvar", __LINE__, "Cannot write the trace file '" + trace + "': " + refusal + ".");

        unsigned replications = 1, threads = 0;
        sylvar_load_replications(config.get(), replications, threads);
        for (unsigned k = 1; replications > 1 && k <= replications; ++k) {
            const std::string name = replication_trace_name(trace, k);
            const std::string problem = output_file_refusal(name, {modelFile});
            if (!problem.empty())
                throw Exception("main_sylvar", __LINE__, "Cannot write the trace file '" + name + "': " + problem + ".");
        }
        if (replications > 1) {
            // Each replication loads its own instance of the model, so that no
            // two threads draw from one object.
            const ReplicationStudy study = run_replications(
                [&document, exact] {
                    std::unique_ptr<Process> copy(load_process(document.get()));
                    if (exact) copy->setExactNumerics(true);
                    return copy;
                },
                stop, observations,
                time, seed, replications, threads, trace, traceFormat);
            std::cout << process->getSummary() << std::endl;
            std::cout << study.toString() << std::endl;
            return 0;
        }
        document.reset();

        // Drawn, written and summarised as it goes: memory stays bounded
        // whatever the count or time.
        const StreamedTrace generated = stream_trace(*process, stop, observations, time, seed, trace, traceFormat);
        std::cout << process->getSummary() << std::endl;
        if (generated.count == 0) throw Exception("trace", __LINE__, "Invalid trace element.");
        std::cout << generated.summary << std::endl;
        config.reset();
        process.reset();
    } catch (Exception& e) {
        sylvar_report_failure(e);
        return 0;
    } catch (std::bad_alloc&) {
        // Memory that runs out anywhere ends the run like every other failure,
        // on standard output and with status 0.
        Exception e("main_sylvar", __LINE__, "Out of memory.");
        sylvar_report_failure(e);
        return 0;
    }
    return 0;
}
