// The plotter: options, loading by type, display names, the three output
// kinds (LaTeX, text, data and script) and real rendering by gnuplot.
#include <cstdlib>
#include <memory>

#include "markov/maps.h"
#include "numerics/matrix.h"
#include "reporting/plotter.h"
#include "support/test_support.h"
#include "timeseries/arta.h"
#include "traces/trace.h"

using namespace velmora;
using velmora_test::failureOf;
using velmora_test::readFile;
using velmora_test::tempPath;
using velmora_test::writeFile;

namespace {

// A process with fixed answers, so that the layouts are checked apart from
// the statistics: every series is `v`, the curves are v after two zeros, and
// the distribution function is x / 10.
class Fixed : public Process {
public:
    explicit Fixed(std::vector<double> v) : v(v) { type = PROCESS_DIST; typeName = "Fixed"; }
    std::string getProcessDescription() override { return "Fixed"; }
    void load(std::string, format) override {}  // nothing to read or write
    void save(std::string, format) override {}
    std::string toString(format) override { return ""; }
    std::string getSummary() override { return ""; }
    std::string getSummary(unsigned, unsigned, unsigned) override { return ""; }
    std::vector<double> getMoments(unsigned, unsigned) const override { return v; }
    Matrix getJointMoments(unsigned, unsigned) const override { return Matrix(v, MATRIX_DIAGONAL); }
    std::vector<double> getAutocorrelations(unsigned, unsigned) const override { return v; }
    Distribution computeDistribution(double, double) override {
        std::vector<std::pair<double, double>> c = {{0, 0}, {0.5, 0}, {1, v[0]}, {1.5, v[1]}};
        return Distribution{c, c, c};
    }
    double evalCDF(double x) override { return x / 10; }
    double evalCCDF(double x) override { return 1 - x / 10; }
    double evalPDF(double) override { return 0.1; }
    double computeLikelihood(Trace*) override { return v[0]; }
    void initRandomNumberGeneration(unsigned) override {}  // never drawn from
    double getNextRandomVariate() override { return 0; }
    std::vector<double> v;
};

const std::string examples = std::string(VELMORA_SOURCE_DIR) + "/examples/";

bool haveGnuplot() { return std::system("gnuplot --version >/dev/null 2>&1") == 0; }

}  // namespace

TEST(Plotter, OptionsDefaultsAndUnsetKeys) {
    Plotter plotter;
    plotter.setOption("format", "latex");
    EXPECT_EQ(plotter.getOption("format"), "latex");
    plotter.initDefaults();
    std::vector<std::string> got;
    for (const char* key : {"format", "linewidth", "template", "relative", "colour"})
        got.push_back(plotter.getOption(key));
    EXPECT_EQ(got, (std::vector<std::string>{"ps", "3", "", "true", ""}));
}

TEST(Plotter, LoadsEveryTypeAndCompletesNames) {
    std::string trace = writeFile("plotter_trace", "1\n2\n3\n");
    Plotter plotter({{trace, {PROCESS_TRACE, ""}},
                     {examples + "map.xml", {PROCESS_MAP, ""}},
                     {examples + "ph.xml", {PROCESS_CPH, "ph"}},
                     {examples + "arma.xml", {PROCESS_ARIMA, ""}},
                     {examples + "arta.xml", {PROCESS_ARTA, ""}},
                     {examples + "dist.xml", {PROCESS_DIST, ""}},
                     {examples + "map.xml", {PROCESS_XML, ""}},
                     {trace, {PROCESS_TRACE, ""}}});
    const Plotter::ProcessList& list = plotter.getProcesses();
    ASSERT_EQ(list.size(), 8u);
    EXPECT_EQ(list[0].second, "");  // names stay empty until completed
    EXPECT_EQ(static_cast<Trace*>(list[0].first)->getSize(), 2u);  // the first line is the count
    plotter.completeNames();
    std::vector<std::string> names;
    for (const auto& entry : plotter.getProcesses()) names.push_back(entry.second);
    EXPECT_EQ(names, (std::vector<std::string>{"Trace0", "MAP(3)", "ph", "ARIMA(2,0,1)", "ARTA(2)", "Dist", "MAP(3)",
                                               "Trace7"}));
}

TEST(Plotter, LoadingFailuresAndTemplates) {
    std::string bad = writeFile("plotter_bad.xml", "<velmora><nothing></nothing></velmora>");
    testing::internal::CaptureStdout();
    // The MAP built first is released with the failure.
    EXPECT_EQ(failureOf([&] { Plotter::loadProcesses({{examples + "map.xml", {PROCESS_MAP, ""}},
                                                      {bad, {PROCESS_XML, ""}}}); }),
              "plotter: Error while loading model data.");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Warning: Ignoring \"" + bad + "\". (Error while loading model data.)\n");
    testing::internal::CaptureStdout();
    EXPECT_EQ(failureOf([&] { Plotter::loadProcesses({{examples + "map.xml", {PROCESS_CHEP, ""}}}); }),
              "plotter: Error while loading model data.");
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(failureOf([&] { Plotter::loadProcesses({{bad, {static_cast<process_type>(12), ""}}}); }),
              "plotter: Unknown process type for \"" + bad + "\".");

    EXPECT_EQ(Plotter::loadGnuplotTemplate(writeFile("plotter_tpl", "set grid\r\n\nset key left")),
              "set grid\r\n\nset key left\n");
    EXPECT_EQ(failureOf([] { Plotter::loadGnuplotTemplate(tempPath("no_such_template")); }),
              "plotter: Cannot open file.");
}

TEST(Plotter, EveryRefusal) {
    Fixed a({0.5, 0.25});
    Trace trace({1, 2});
    Plotter::ProcessList one = {{&a, "a"}}, none, hole = {{&a, "a"}, {nullptr, "b"}};
    std::string base = tempPath("refused"), tpl = tempPath("no_such_template");
    struct Case { std::function<void()> action; const char* message; } cases[] = {
        {[&] { Plotter::plot_autocorrelations(none, 1, 2, base, "txt", 3, ""); }, "No processes to plot."},
        {[&] { Plotter::plot_autocorrelations(one, 2, 1, base, "txt", 3, ""); }, "Invalid range for autocorrelation."},
        {[&] { Plotter::plot_moments(none, 1, 2, base, true, "txt", 3, ""); }, "No processes to plot."},
        {[&] { Plotter::plot_moments(one, 3, 2, base, true, "txt", 3, ""); }, "Invalid range for moments."},
        {[&] { Plotter::plot_joint_moments(none, 1, 2, base, true, "txt", 3, ""); }, "No processes to plot."},
        {[&] { Plotter::plot_joint_moments(one, 3, 2, base, true, "txt", 3, ""); }, "Invalid range for moments."},
        {[&] { Plotter::plot_pdf(none, base, "txt", 0, 1, 3, ""); }, "No processes to plot."},
        {[&] { Plotter::plot_ccdf(one, base, "txt", 1, 0, 3, ""); }, "Invalid range for distribution."},
        {[&] { Plotter::plot_distribution("icdf", one, base, "txt", 0, 1, 3, ""); },
         "Unknown distribution kind \"icdf\"."},
        {[&] { Plotter::plot_cdf(one, base, "png", 0, 1, 3, tpl); }, "Cannot open file."},
        {[&] { Plotter::plot_moments(hole, 1, 2, base, false, "txt", 3, ""); }, "Entry 1 has no process."},
        {[&] { Plotter::completeNames({{nullptr, ""}}); }, "Entry 0 has no process."},
        {[&] { Plotter::plot_likelihood(one, base, "latex", 3, ""); },
         "At least one trace and one model are required for likelihood computation."},
        {[&] { Plotter::plot_likelihood({{&a, "a"}, {&trace, "t"}}, base, "png", 3, ""); },
         "Only Latex output is supported for likelihood."},
    };
    for (const Case& c : cases) EXPECT_EQ(failureOf(c.action), std::string("plotter: ") + c.message);
}

TEST(Plotter, ScriptAndDataOfAutocorrelationsWithTemplate) {
    Fixed a({0.5, 0.25}), b({1, 0.125});
    std::string base = tempPath("acf_script"), tpl = writeFile("acf_tpl", "set grid");
    Plotter::plot_autocorrelations({{&a, "a"}, {&b, "b"}}, 3, 3, base, "pdf", 2, tpl);
    const std::string script = readFile(base);
    EXPECT_EQ(script, "set title \"Autocorrelations for lags 3-3\"\nset xlabel \"lag\"\nset xrange [2:4]\n"
                      "set border\nset style data linespoints\nset ylabel \"autocorrelation\"\n"
                      "set terminal pdf\nset output \"" + base + ".pdf\"\nset grid\n\n"
                      "plot \"" + base + ".dat\" using 1:2 title \"a\" lw 2, \"" + base +
                      ".dat\" using 1:3 title \"b\" lw 2\n");
    EXPECT_EQ(readFile(base + ".dat"), "3\t0.5\t1\t\n4\t0.25\t0.125\t\n");
    // Any format outside the table is PDF output.
    Plotter::plot_autocorrelations({{&a, "a"}, {&b, "b"}}, 3, 3, base, "svg", 2, tpl);
    EXPECT_EQ(readFile(base), script);
}

TEST(Plotter, DistributionDataSkipsLeadingZerosAndScalesTheYRange) {
    Plotter plotter({{new Fixed({0.5, 0.25}), "a"}, {new Fixed({1, 0.125}), "b"}});
    plotter.setOption("format", "epslatex");
    plotter.setOption("linewidth", "thick");  // not a number: width 0
    std::string base = tempPath("dist_script");
    plotter.plot_cdf(base, 0, 2);
    std::string script = readFile(base);
    EXPECT_NE(script.find("set title \"cumulative distribution function\"\nset xlabel \"t\"\nset border\n"
                          "set style data lines\nset ylabel \"distribution\"\nset yrange [0:1.01]\n"
                          "set terminal epslatex color colortext\n"), std::string::npos) << script;
    EXPECT_NE(script.find("plot \"" + base + "_Fixed_0.dat\" using 1:2 title \"a\" lw 0, \"" + base +
                          "_Fixed_1.dat\" using 1:2 title \"b\" lw 0\n"), std::string::npos) << script;
    EXPECT_EQ(readFile(base + "_Fixed_0.dat"), "1\t0.5\n1.5\t0.25\n");
}

TEST(Plotter, LatexAndTextTables) {
    Fixed a({0.5, 0.25}), b({1, 0.125});
    std::string base = tempPath("tables");
    // Relative to the first process, which is not shown.
    Plotter::plot_moments({{&a, "ref"}, {&b, "b"}}, 1, 2, base, true, "latex", 3, "");
    EXPECT_EQ(readFile(base + ".tex"), "\\begin{tabular}[t]{|r|r|}\n\\hline\n\\textbf{Moment} & \\textbf{b}\\\\\n"
                                       " \\hline\n1 & 2.000000\\\\\n2 & 0.500000\\\\\n\\hline\n\\end{tabular}\n");
    // A single process is shown with plain values, even when relative.
    Plotter::plot_moments({{&a, "a"}}, 1, 2, base, true, "txt", 3, "");
    EXPECT_EQ(readFile(base + ".txt"), "Moment \t a\n1 \t 0.500000\n2 \t 0.250000\n");
    Plotter::plot_joint_moments({{&a, "a"}}, 4, 5, base, false, "txt", 3, "");
    EXPECT_EQ(readFile(base + ".txt"), "Joint Moment \t a\n4, 4 \t 0.500000\n5, 5 \t 0.250000\n");
    // Equal bounds: one row, and the table ends with an empty line.
    Plotter::plot_cdf({{&a, "a"}}, base, "txt", 2, 2, 3, "");
    EXPECT_EQ(readFile(base + ".txt"), "x \t a\n2.000000 \t 0.200000\n\n");
    // Models in rows, traces in columns.
    Trace trace({1, 2});
    Plotter::plot_likelihood({{&a, "m"}, {&trace, "t"}, {&b, "n"}}, base, "txt", 3, "");
    EXPECT_EQ(readFile(base + ".txt"), "Likelihood \t t\nm \t 0.500000\nn \t 1.000000\n");
}

// The acceptance run: a MAP and its trace to PNG, then moments to LaTeX; and
// an ARTA with them, all drawn by gnuplot.
TEST(Plotter, GnuplotRendersModelsAndTracesToPng) {
    if (!haveGnuplot()) GTEST_SKIP() << "gnuplot is not installed (apt-get install gnuplot-nox)";
    auto* map = new MAP(examples + "map.xml", FORMAT_XML);
    Trace* trace = map->simulate(1, 20000, 0, 1);
    Plotter plotter({{map, "MAP"}, {trace, "trace"}});
    plotter.setOption("format", "png");
    std::string dir = tempPath("png_");
    plotter.plot_autocorrelations(1, 10, dir + "acf");
    plotter.plot_cdf(dir + "cdf", 0, 3);
    plotter.setOption("format", "latex");
    plotter.plot_moments(1, 3, dir + "moments");
    EXPECT_NE(readFile(dir + "acf").find("set output \"" + dir + "acf.png\""), std::string::npos);
    std::string table = readFile(dir + "moments.tex");
    EXPECT_EQ(table.rfind("\\begin{tabular}[t]{|r|r|}\n", 0), 0u) << table;
    EXPECT_NE(table.find("\n3 & "), std::string::npos) << table;

    ARTA arta(examples + "arta.xml", FORMAT_XML);
    Plotter::ProcessList all = {{map, "MAP"}, {&arta, "ARTA"}, {trace, "trace"}};
    Plotter::plot_autocorrelations(all, 1, 10, dir + "all_acf", "png", 2, "");
    Plotter::plot_cdf(all, dir + "all_cdf", "png", 0, 4, 2, "");
    for (const char* png : {"acf.png", "cdf.png", "all_acf.png", "all_cdf.png"}) {
        std::string bytes = readFile(dir + png);
        EXPECT_GT(bytes.size(), 1000u) << png;
        EXPECT_EQ(bytes.substr(0, 8), "\x89PNG\r\n\x1a\n") << png;
    }
}
