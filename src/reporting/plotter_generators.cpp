// The generators of the plotter: each one asks every process for one
// statistic and writes a LaTeX table, a text table, or data files and a
// gnuplot script, which it then hands to the external gnuplot program.
//
// Output files are opened without a check: a file that can't be opened only
// loses its writes. The result of gnuplot is not looked at, so a missing
// gnuplot leaves the data and the script and nothing else.
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <sstream>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "core/misc_string.h"
#include "numerics/matrix.h"
#include "reporting/plotter.h"
#include "traces/trace.h"

namespace velmora {

namespace {

typedef Plotter::ProcessList ProcessList;

// One statistic of the shown processes, row by row, with the labels of the
// two table layouts.
struct Table {
    std::string latexHeader;
    std::string textHeader;
    std::vector<std::string> names;
    std::vector<std::string> labels;
    std::vector<std::vector<double>> rows;
};

void requireProcesses(const ProcessList& list) {
    if (list.empty()) throw Exception("plotter", __LINE__, "No processes to plot.");
}

// A list handed over by the caller may hold an entry without a process (a
// request of a type that builds nothing); it is refused before any file is
// written.
void requireEntries(const ProcessList& list) {
    for (std::size_t i = 0; i < list.size(); i++)
        if (list[i].first == nullptr)
            throw Exception("plotter", __LINE__, "Entry " + std::to_string(i) + " has no process.");
}

// Processes that answer with fewer rows than the first one can't fill their
// column; they are refused rather than read past their end.
void requireRows(std::size_t got, std::size_t needed, std::size_t index) {
    if (got < needed)
        throw Exception("plotter", __LINE__,
                        "Process " + std::to_string(index) + " gives fewer values than process 0.");
}

std::string fixedText(double x) {
    std::ostringstream out;
    out << std::fixed << std::setprecision(6) << x;
    return out.str();
}

void writeLatex(const std::string& file, const Table& table) {
    std::ofstream out(file);
    out << std::fixed << std::setprecision(6);
    out << "\\begin{tabular}[t]{|r|" << std::string(table.names.size(), 'r') << "|}\n";
    out << "\\hline\n";
    out << table.latexHeader;
    for (const std::string& name : table.names) out << " & \\textbf{" << name << "}";
    out << "\\\\\n";
    out << " \\hline\n";
    for (std::size_t r = 0; r < table.rows.size(); r++) {
        out << table.labels[r];
        for (double value : table.rows[r]) out << " & " << value;
        out << "\\\\\n";
    }
    out << "\\hline\n\\end{tabular}\n";
}

void writeText(const std::string& file, const Table& table, bool closingEmptyLine) {
    std::ofstream out(file);
    out << std::fixed << std::setprecision(6);
    out << table.textHeader;
    for (const std::string& name : table.names) out << " \t " << name;
    out << "\n";
    for (std::size_t r = 0; r < table.rows.size(); r++) {
        out << table.labels[r];
        for (double value : table.rows[r]) out << " \t " << value;
        out << "\n";
    }
    if (closingEmptyLine) out << "\n";
}

std::string terminalLines(const std::string& format, const std::string& base) {
    if (format == "ps")
        return "set terminal postscript enhanced color landscape \"Times-Roman\" 18\nset output \"" + base + ".ps\"\n";
    if (format == "png") return "set terminal png size 1024,768\nset output \"" + base + ".png\"\n";
    if (format == "epslatex") return "set terminal epslatex color colortext\nset output \"" + base + ".tex\"\n";
    return "set terminal pdf\nset output \"" + base + ".pdf\"\n";
}

// The text of the template, read before any file is written so that a
// missing template leaves no half-made output.
std::string templateText(const std::string& templateFile) {
    return templateFile.empty() ? std::string() : Plotter::loadGnuplotTemplate(templateFile);
}

// The script: the generator's own lines, the terminal, the template, the plot
// line. The command is fixed; its result is deliberately ignored.
void writeScriptAndRun(const std::string& base, const std::string& format, const std::string& ownLines,
                       const std::string& templ, bool withTemplate, const std::string& plotLine) {
    {
        std::ofstream out(base);
        out << ownLines << terminalLines(format, base);
        if (withTemplate) out << templ << "\n";
        out << plotLine;
    }
    std::string command = "gnuplot \"" + base + "\"";
    int ignored = std::system(command.c_str());
    (void)ignored;
}

// "[a:b]", widened by one at each end for a single lag or order; the bounds
// are signed, so a single order 0 gives "[-1:1]".
std::string rangeText(unsigned first, unsigned last) {
    long long a = first, b = last;
    if (first == last) {
        a -= 1;
        b += 1;
    }
    return "[" + std::to_string(a) + ":" + std::to_string(b) + "]";
}

// Tables, or the data file base.dat (label, then each value followed by a
// tab) with a script whose column c + 2 is shown column c.
void emitSeries(const Table& table, unsigned first, const std::string& base, const std::string& format,
                bool textEmptyLine, const std::string& ownLines, unsigned linewidth,
                const std::string& templateFile) {
    if (format == "latex") {
        writeLatex(base + ".tex", table);
        return;
    }
    if (format == "txt") {
        writeText(base + ".txt", table, textEmptyLine);
        return;
    }
    std::string templ = templateText(templateFile);
    {
        std::ofstream data(base + ".dat");
        for (std::size_t r = 0; r < table.rows.size(); r++) {
            data << static_cast<unsigned long long>(first) + r << "\t";
            for (double value : table.rows[r]) data << value << "\t";
            data << "\n";
        }
    }
    std::ostringstream plot;
    plot << "plot ";
    for (std::size_t c = 0; c < table.names.size(); c++) {
        if (c > 0) plot << ", ";
        plot << "\"" << base << ".dat\" using 1:" << c + 2 << " title \"" << table.names[c] << "\"" << " lw "
             << linewidth;
    }
    plot << "\n";
    writeScriptAndRun(base, format, ownLines, templ, !templateFile.empty(), plot.str());
}

// Moments and joint moments differ only in their statistic and their words.
void plotMomentSeries(bool joint, ProcessList list, unsigned first, unsigned last, const std::string& base,
                      bool relative, const std::string& format, unsigned linewidth, const std::string& templateFile) {
    requireProcesses(list);
    if (first > last) throw Exception("plotter", __LINE__, "Invalid range for moments.");
    requireEntries(list);
    if (list.size() < 2) relative = false;

    std::vector<std::vector<double>> values;  // [process][row]
    std::size_t count = 0;
    if (joint) {
        for (std::size_t p = 0; p < list.size(); p++) {
            Matrix m = list[p].first->getJointMoments(first, last);
            if (p == 0) count = m.getNumberRows();
            requireRows(std::min(m.getNumberRows(), m.getNumberCols()), count, p);
            std::vector<double> diagonal;
            for (unsigned i = 0; i < count; i++) diagonal.push_back(m(i, i));
            values.push_back(diagonal);
        }
    } else {
        for (std::size_t p = 0; p < list.size(); p++) {
            values.push_back(list[p].first->getMoments(first, last));
            if (p == 0 || values[p].size() < count) count = values[p].size();
        }
        count = std::min<std::size_t>(count, static_cast<std::size_t>(last) + 1);
    }

    const std::size_t start = relative ? 1 : 0;
    Table table;
    table.latexHeader = joint ? "\\textbf{Joint Moment}" : "\\textbf{Moment}";
    table.textHeader = joint ? "Joint Moment" : "Moment";
    for (std::size_t p = start; p < list.size(); p++) table.names.push_back(list[p].second);
    for (std::size_t i = 0; i < count; i++) {
        std::string label = std::to_string(static_cast<unsigned long long>(first) + i);
        table.labels.push_back(joint ? label + ", " + label : label);
        std::vector<double> row;
        for (std::size_t p = start; p < list.size(); p++)
            row.push_back(relative ? values[p][i] / values[0][i] : values[p][i]);
        table.rows.push_back(row);
    }

    std::ostringstream lines;
    lines << "set title \"" << (joint ? "Joint Moments " : "Moments ") << first << "-" << last << "\"\n"
          << (joint ? "set xlabel \"joint moment\"\n" : "set xlabel \"moment\"\n")
          << "set xrange " << rangeText(first, last) << "\n"
          << "set border\n"
          << "set style data linespoints\n"
          << "set ylabel \"\"\n";
    emitSeries(table, first, base, format, false, lines.str(), linewidth, templateFile);
}

}  // namespace

// ---------------------------------------------------------------------------
// Short forms

void Plotter::plot_autocorrelations(unsigned first, unsigned last, std::string base) {
    plot_autocorrelations(processes, first, last, base, getOption("format"), optionLinewidth(),
                          getOption("template"));
}

void Plotter::plot_moments(unsigned first, unsigned last, std::string base) {
    plot_moments(processes, first, last, base, toBool(getOption("relative")), getOption("format"),
                 optionLinewidth(), getOption("template"));
}

void Plotter::plot_joint_moments(unsigned first, unsigned last, std::string base) {
    plot_joint_moments(processes, first, last, base, toBool(getOption("relative")), getOption("format"),
                       optionLinewidth(), getOption("template"));
}

void Plotter::plot_cdf(std::string base, double lower, double upper) {
    plot_cdf(processes, base, getOption("format"), lower, upper, optionLinewidth(), getOption("template"));
}

void Plotter::plot_ccdf(std::string base, double lower, double upper) {
    plot_ccdf(processes, base, getOption("format"), lower, upper, optionLinewidth(), getOption("template"));
}

void Plotter::plot_pdf(std::string base, double lower, double upper) {
    plot_pdf(processes, base, getOption("format"), lower, upper, optionLinewidth(), getOption("template"));
}

void Plotter::plot_likelihood(std::string base) {
    plot_likelihood(processes, base, getOption("format"), optionLinewidth(), getOption("template"));
}

// ---------------------------------------------------------------------------
// Long forms

void Plotter::plot_autocorrelations(ProcessList list, unsigned first, unsigned last, std::string base,
                                    std::string format, unsigned linewidth, std::string templateFile) {
    requireProcesses(list);
    if (first > last) throw Exception("plotter", __LINE__, "Invalid range for autocorrelation.");
    requireEntries(list);

    std::vector<std::vector<double>> values;  // [process][lag]
    for (std::size_t p = 0; p < list.size(); p++) {
        values.push_back(list[p].first->getAutocorrelations(first, last));
        requireRows(values[p].size(), values[0].size(), p);
    }
    Table table;
    table.latexHeader = "\\textbf{lag}";
    table.textHeader = "lag";
    for (const auto& entry : list) table.names.push_back(entry.second);
    for (std::size_t i = 0; i < values[0].size(); i++) {
        table.labels.push_back(std::to_string(static_cast<unsigned long long>(first) + i));
        std::vector<double> row;
        for (const auto& series : values) row.push_back(series[i]);
        table.rows.push_back(row);
    }

    std::ostringstream lines;
    lines << "set title \"Autocorrelations for lags " << first << "-" << last << "\"\n"
          << "set xlabel \"lag\"\n"
          << "set xrange " << rangeText(first, last) << "\n"
          << "set border\n"
          << "set style data " << (first == last ? "linespoints" : "lines") << "\n"
          << "set ylabel \"autocorrelation\"\n";
    emitSeries(table, first, base, format, true, lines.str(), linewidth, templateFile);
}

void Plotter::plot_moments(ProcessList list, unsigned first, unsigned last, std::string base, bool relative,
                           std::string format, unsigned linewidth, std::string templateFile) {
    plotMomentSeries(false, list, first, last, base, relative, format, linewidth, templateFile);
}

void Plotter::plot_joint_moments(ProcessList list, unsigned first, unsigned last, std::string base, bool relative,
                                 std::string format, unsigned linewidth, std::string templateFile) {
    plotMomentSeries(true, list, first, last, base, relative, format, linewidth, templateFile);
}

void Plotter::plot_cdf(ProcessList list, std::string base, std::string format, double lower, double upper,
                       unsigned linewidth, std::string templateFile) {
    plot_distribution("cdf", list, base, format, lower, upper, linewidth, templateFile);
}

void Plotter::plot_ccdf(ProcessList list, std::string base, std::string format, double lower, double upper,
                        unsigned linewidth, std::string templateFile) {
    plot_distribution("ccdf", list, base, format, lower, upper, linewidth, templateFile);
}

void Plotter::plot_pdf(ProcessList list, std::string base, std::string format, double lower, double upper,
                       unsigned linewidth, std::string templateFile) {
    plot_distribution("pdf", list, base, format, lower, upper, linewidth, templateFile);
}

void Plotter::plot_distribution(std::string kind, ProcessList list, std::string base, std::string format,
                                double lower, double upper, unsigned linewidth, std::string templateFile) {
    // The kind picks one of the three curves; any other word has none.
    if (kind != "cdf" && kind != "ccdf" && kind != "pdf")
        throw Exception("plotter", __LINE__, "Unknown distribution kind \"" + kind + "\".");
    requireProcesses(list);
    if (lower > upper) throw Exception("plotter", __LINE__, "Invalid range for distribution.");
    requireEntries(list);

    if (format == "latex" || format == "txt") {
        Table table;
        table.latexHeader = "\\textbf{x}";
        table.textHeader = "x";
        for (const auto& entry : list) table.names.push_back(entry.second);
        double step = (upper - lower) / 20.0;
        if (step == 0) step = 0.1;
        // The walk also ends once the step no longer moves x (a step lost in
        // rounding, an infinite bound), so it can't run forever.
        for (double x = lower; x <= upper;) {
            table.labels.push_back(fixedText(x));
            std::vector<double> row;
            for (const auto& entry : list) {
                Process* p = entry.first;
                row.push_back(kind == "cdf" ? p->evalCDF(x) : kind == "ccdf" ? p->evalCCDF(x) : p->evalPDF(x));
            }
            table.rows.push_back(row);
            double next = x + step;
            if (!(next > x)) break;
            x = next;
        }
        if (format == "latex")
            writeLatex(base + ".tex", table);
        else
            writeText(base + ".txt", table, true);
        return;
    }

    std::string templ = templateText(templateFile);
    double smallest = 0, largest = 0;
    std::ostringstream plot;
    plot << "plot ";
    for (std::size_t i = 0; i < list.size(); i++) {
        Process* p = list[i].first;
        Distribution d = p->computeDistribution(lower, upper);
        const auto& curve = kind == "cdf" ? d.cdf : kind == "ccdf" ? d.ccdf : d.pdf;
        const std::string name = base + "_" + p->getProcessTypeString() + "_" + std::to_string(i);
        std::ofstream data(name + ".dat");
        bool started = false;
        for (const auto& point : curve) {
            if (point.second < smallest) smallest = point.second;
            if (point.second > largest) largest = point.second;
            if (point.second != 0) started = true;
            if (started) data << point.first << "\t" << point.second << "\n";
        }
        if (i > 0) plot << ", ";
        plot << "\"" << name << ".dat\" using 1:2 title \"" << list[i].second << "\"" << " lw " << linewidth;
    }
    plot << "\n";

    const char* title = kind == "cdf"    ? "cumulative distribution function"
                        : kind == "ccdf" ? "complementary cumulative distribution function"
                                         : "probability density function";
    std::ostringstream lines;
    lines << "set title \"" << title << "\"\n"
          << "set xlabel \"t\"\n"
          << "set border\n"
          << "set style data " << (lower == upper ? "linespoints" : "lines") << "\n"
          << "set ylabel \"" << (kind == "pdf" ? "density" : "distribution") << "\"\n"
          << "set yrange [" << smallest << ":" << largest + largest / 100 << "]\n";
    writeScriptAndRun(base, format, lines.str(), templ, !templateFile.empty(), plot.str());
}

// Likelihoods are tables only, so the width and the template play no part.
void Plotter::plot_likelihood(ProcessList list, std::string base, std::string format, unsigned, std::string) {
    requireEntries(list);
    ProcessList traces, models;
    for (const auto& entry : list)
        (entry.first->getProcessType() == PROCESS_TRACE ? traces : models).push_back(entry);
    if (traces.empty() || models.empty())
        throw Exception("plotter", __LINE__,
                        "At least one trace and one model are required for likelihood computation.");

    // One row for each trace, trace by trace; only a Trace carries the type
    // PROCESS_TRACE.
    std::vector<std::vector<double>> likelihood;
    for (const auto& trace : traces) {
        std::vector<double> row;
        for (const auto& model : models)
            row.push_back(model.first->computeLikelihood(static_cast<Trace*>(trace.first)));
        likelihood.push_back(row);
    }
    Table table;
    table.latexHeader = "\\textbf{Likelihood}";
    table.textHeader = "Likelihood";
    for (const auto& trace : traces) table.names.push_back(trace.second);
    for (std::size_t m = 0; m < models.size(); m++) {
        table.labels.push_back(models[m].second);
        std::vector<double> row;
        for (std::size_t t = 0; t < traces.size(); t++) row.push_back(likelihood[t][m]);
        table.rows.push_back(row);
    }
    if (format == "latex")
        writeLatex(base + ".tex", table);
    else if (format == "txt")
        writeText(base + ".txt", table, false);
    else
        throw Exception("plotter", __LINE__, "Only Latex output is supported for likelihood.");
}

}  // namespace velmora
