// Side-by-side comparison of processes and traces: a list of named processes
// and a few options, and generators that write one statistic of all of them
// as a LaTeX table, a text table, or data files with a gnuplot script that is
// then run by the external gnuplot program.
#ifndef VELMORA_REPORTING_PLOTTER_H
#define VELMORA_REPORTING_PLOTTER_H

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "core/process.h"

namespace velmora {

class Config;

class Plotter {
public:
    // A named process; the plotter owns the processes of its own list.
    typedef std::vector<std::pair<Process*, std::string>> ProcessList;
    // (file, (type, name)): a model or trace file to load.
    typedef std::pair<std::string, std::pair<process_type, std::string>> Request;

    Plotter();
    explicit Plotter(std::vector<Request> requests);
    explicit Plotter(ProcessList processes);  // takes ownership of the processes
    // The list keeps the plain pointers that its users see, so deleting them
    // is the plotter's own work.
    ~Plotter();
    Plotter(const Plotter&) = delete;
    Plotter& operator=(const Plotter&) = delete;

    // Options, all held as text: format ("ps"), linewidth ("3"), template
    // (empty) and relative ("true"). Keys are stored as given, so they must
    // be lowercase to be found again.
    void initDefaults();
    void setOption(std::string key, std::string value);
    std::string getOption(std::string key);  // empty when the key is not set

    // The plotter's own list, in display order.
    const ProcessList& getProcesses() const;

    // Builds every request in order; the first failure reports the file with
    // a warning, deletes what was built and raises "Error while loading
    // model data.". Traces are read in the counted layout, models from XML.
    static ProcessList loadProcesses(std::vector<Request> requests);
    // Unnamed entries get their process's description; an unnamed trace gets
    // its index in the list appended.
    static ProcessList completeNames(ProcessList list);
    void completeNames();
    // The file's text with every line ended by one line feed.
    static std::string loadGnuplotTemplate(std::string file);

    // Short forms: the plotter's list and its options.
    void plot_autocorrelations(unsigned first, unsigned last, std::string base);
    void plot_moments(unsigned first, unsigned last, std::string base);
    void plot_joint_moments(unsigned first, unsigned last, std::string base);
    void plot_cdf(std::string base, double lower, double upper);
    void plot_ccdf(std::string base, double lower, double upper);
    void plot_pdf(std::string base, double lower, double upper);
    void plot_likelihood(std::string base);

    // Long forms. format "latex" writes base.tex, "txt" base.txt; any other
    // value writes data files and the script base, then runs gnuplot on it.
    // The processes of the list are used, not owned.
    static void plot_autocorrelations(ProcessList list, unsigned first, unsigned last, std::string base,
                                      std::string format, unsigned linewidth, std::string templateFile);
    static void plot_moments(ProcessList list, unsigned first, unsigned last, std::string base, bool relative,
                             std::string format, unsigned linewidth, std::string templateFile);
    static void plot_joint_moments(ProcessList list, unsigned first, unsigned last, std::string base, bool relative,
                                   std::string format, unsigned linewidth, std::string templateFile);
    static void plot_cdf(ProcessList list, std::string base, std::string format, double lower, double upper,
                         unsigned linewidth, std::string templateFile);
    static void plot_ccdf(ProcessList list, std::string base, std::string format, double lower, double upper,
                          unsigned linewidth, std::string templateFile);
    static void plot_pdf(ProcessList list, std::string base, std::string format, double lower, double upper,
                         unsigned linewidth, std::string templateFile);
    // kind is "cdf", "ccdf" or "pdf".
    static void plot_distribution(std::string kind, ProcessList list, std::string base, std::string format,
                                  double lower, double upper, unsigned linewidth, std::string templateFile);
    // Tables only ("latex" or "txt"): one row for each model, one column for
    // each trace.
    static void plot_likelihood(ProcessList list, std::string base, std::string format, unsigned linewidth,
                                std::string templateFile);

private:
    unsigned optionLinewidth();

    ProcessList processes;
    std::unique_ptr<Config> options;
};

}  // namespace velmora

#endif
