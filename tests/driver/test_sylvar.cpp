// Runs the sylvar program itself and checks what it prints.
#include <sys/stat.h>
#include <unistd.h>

#include "config/conf.h"
#include "core/process.h"
#include "fitting/process_factory.h"
#include "support/test_support.h"
#include "traces/trace.h"

using namespace velmora;
using namespace velmora_test;

namespace {
std::string failure(const std::string& module, const std::string& message) {
    return "Error in: " + module + ", line N: " + message + "\n\n\nUse parameter --help for usage information.\n";
}

std::string modelPath(const std::string& name) { return std::string(VELMORA_SOURCE_DIR) + "/examples/" + name; }

std::string report(unsigned seed, int stop, const std::string& time, unsigned observations, bool traceFormat,
                   const std::string& trace) {
    return "Parameter file loaded.\nSeed: " + std::to_string(seed) + "\nstop: " + std::to_string(stop) +
           "\ntime: " + time + "\nobservations: " + std::to_string(observations) +
           "\ntraceFormat: " + (traceFormat ? "1" : "0") + "\ntrace: " + trace + "\n\n";
}

std::vector<std::string> lines(const std::string& path) {
    std::ifstream in(path);
    std::vector<std::string> result;
    for (std::string line; std::getline(in, line);) result.push_back(line);
    return result;
}
}  // namespace

// Failures end through the handler, with status 0; --help alone is silent.
TEST(Sylvar, BadArgumentsAndModelFilesAreReportedWithTheirModule) {
    std::string malformed = writeFile("bad.xml", "<velmora><map></velmora>");
    std::string unknown = writeFile("unknown.xml", "<velmora><mep><d0>-1</d0></mep></velmora>");
    struct Case { std::string arguments, expected; } cases[] = {
        {"", ""},
        {"--help", ""},
        {"--help -x=1", failure("conf", "Invalid command line parameter.")},
        {"-seed=4", failure("process", "Error loading model.")},  // arguments, but no model file named
        {"-model=" + malformed, failure("conf", "XML parse error.")},
        {"-MODEL=" + unknown, failure("process", "Error loading model.")},
        {"-model=" + unknown + " -paramfile=" + malformed, failure("conf", "XML parse error.")},  // paramfile wins
    };
    for (const auto& c : cases) {
        SylvarRun run = runSylvar(c.arguments);
        EXPECT_EQ(withoutLineNumber(run.out), c.expected) << c.arguments;
        EXPECT_EQ(run.status, 0);
    }
}

TEST(Sylvar, RunPrintsReportModelSummaryAndTraceSummary) {
    for (const char* model : {"map.xml", "ph.xml", "arma.xml", "arta.xml", "dist.xml"}) {
        std::string trace = tempPath(std::string("run_") + model + ".txt");
        SylvarRun run = runSylvar("-model=" + modelPath(model) + " -trace=" + trace + " -seed=7");
        // The same road through the library gives the expected text.
        XMLConfig document(modelPath(model));
        Process* process = load_process(&document);
        Trace* generated = process->simulate(1, 1000, 10000.0, 7);
        EXPECT_EQ(run.out, report(7, 1, "10000", 1000, false, trace) + process->getSummary() + "\n" +
                               generated->getSummary() + "\n") << model;
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(lines(trace).size(), 1000u);
        delete generated;
        delete process;
    }
}

TEST(Sylvar, StopCriteriaCountedLayoutAndAnEmptyTrace) {
    // Without a trace only the report is printed; only "1" selects the counted layout.
    SylvarRun run = runSylvar("-MODEL=" + modelPath("map.xml") + " -traceFormat=true -seed=3 -seed=4");
    EXPECT_EQ(run.out, report(3, 1, "10000", 1000, false, ""));
    std::string trace = tempPath("stop.txt");
    run = runSylvar("-model=" + modelPath("map.xml") + " -trace=" + trace + " -time=50 -traceFormat=1");
    EXPECT_EQ(run.out.rfind(report(13, 2, "50", 1000, true, trace), 0), 0u);  // the report comes first
    std::vector<std::string> written = lines(trace);
    ASSERT_GE(written.size(), 2u);
    EXPECT_EQ(std::stoul(written[0]), written.size() - 1);
    double sum = 0.0;
    for (size_t i = 1; i < written.size(); ++i) sum += std::stod(written[i]);
    EXPECT_GE(sum, 50.0 * (1 - 1e-5));
    EXPECT_LT(sum - std::stod(written.back()), 50.0 * (1 + 1e-5));
    run = runSylvar("-model=" + modelPath("map.xml") + " -trace=" + trace + " -time=1 -observations=30");
    EXPECT_EQ(run.out.rfind(report(13, 0, "1", 30, false, trace), 0), 0u);
    EXPECT_GE(lines(trace).size(), 30u);
    // No values: the trace file is empty, and its summary fails after the model summary.
    run = runSylvar("-model=" + modelPath("map.xml") + " -trace=" + trace + " -observations=0");
    EXPECT_EQ(withoutLineNumber(run.out.substr(run.out.find("Error in:"))), failure("trace", "Invalid trace element."));
    EXPECT_TRUE(run.status == 0 && std::ifstream(trace).good() && lines(trace).empty());
}

// Six-digit trace files of long runs still agree with the models' analytic figures.
TEST(Sylvar, GeneratedTracesReproduceTheModelsStatistics) {
    // Tolerances of the mean, the relative variance and the autocorrelations; a variance of 0 comes from the moments.
    struct Case { const char *model, *observations; double meanTolerance, varianceTolerance, correlationTolerance;
                  unsigned lags; double variance; } cases[] = {
        {"map.xml", "100000", 0.035, 0.1, 0.025, 5, 0.0},
        {"arma.xml", "1000000", 0.01, 0.01, 0.005, 10, 0.0},
        // Triangular (0.5, 4, 1) gives its first moment only: variance (a² + b² + c² − ab − ac − bc)/18.
        {"arta.xml", "1000000", 0.01, 0.01, 0.007, 5, 10.75 / 18},
    };
    for (const auto& c : cases) {
        std::string path = tempPath(std::string("long_") + c.model + ".txt");
        SylvarRun run = runSylvar("-model=" + modelPath(c.model) + " -trace=" + path + " -seed=7 -observations=" +
                               c.observations);
        ASSERT_EQ(run.status, 0);
        Trace trace(path, false);
        ASSERT_EQ(trace.getSize(), std::stoul(c.observations)) << c.model;

        XMLConfig document(modelPath(c.model));
        std::unique_ptr<Process> process(load_process(&document));
        std::vector<double> moments = process->getMoments(1, 2);
        ASSERT_GE(moments.size(), c.variance > 0 ? 1u : 2u) << c.model;
        double variance = c.variance > 0 ? c.variance : moments[1] - moments[0] * moments[0];
        EXPECT_NEAR(trace.getMoments(1, 1)[0], moments[0], c.meanTolerance) << c.model;
        EXPECT_NEAR(trace.getVariance() / variance, 1.0, c.varianceTolerance) << c.model;
        std::vector<double> expected = process->getAutocorrelations(1, c.lags);
        std::vector<double> sample = trace.getAutocorrelations(1, c.lags);
        for (unsigned l = 0; l < c.lags; ++l)
            EXPECT_NEAR(sample[l], expected[l], c.correlationTolerance) << c.model << " lag " << l + 1;
    }
}

// Models that cannot mean anything are refused before anything is drawn,
// naming the element; the trace file is not written.
TEST(Sylvar, ModelsThatCannotRunAreRefusedNamingTheElement) {
    const std::string map = readFile(modelPath("map.xml"));
    auto dist = [](const std::string& family) {
        return "<velmora><dist><" + family + "</dist></velmora>";
    };
    auto replaced = [](std::string text, const std::string& from, const std::string& to) {
        return text.replace(text.find(from), from.size(), to);
    };
    struct Case { std::string model, expected; } cases[] = {
        {dist("expodist><mean>nan</mean></expodist>"),
         failure("dist", "The value 'nan' of <mean> in <expodist> is not a finite number.")},
        {dist("expodist><mean>abc</mean></expodist>"),
         failure("dist", "The value 'abc' of <mean> in <expodist> is not a finite number.")},
        {dist("expodist><mean>0</mean></expodist>"),
         failure("dist", "The value '0' of <mean> in <expodist> must be positive.")},
        {dist("chisquaredist><deg>-1</deg></chisquaredist>"),
         failure("dist", "The value '-1' of <deg> in <chisquaredist> must be positive.")},
        {replaced(readFile(modelPath("arta.xml")), "<ar>0.5 0.2 </ar>", "<ar>1.5 </ar>"),
         failure("arima", "The arima element cannot generate: its AR part is not stationary (a root of the AR "
                          "polynomial lies on or inside the unit circle).")},
        {replaced(map, "<d1>2.7", "<d1>-2.7"),
         failure("maps", "The map element is no Markovian arrival process: row 1 of d1 has a negative entry.")},
        {replaced(map, "<d1>2.7", "<d1>2.6"),
         failure("maps", "The map element is no Markovian arrival process: row 1 of d0 + d1 sums to -0.1.")},
        {"<velmora><ph><d0>-1 2 0 -1</d0><pi>1 0</pi></ph></velmora>",
         failure("cph", "The ph element is no phase-type distribution: row 1 of d0 sums to 1.")},
    };
    const std::string trace = tempPath("refused_trace.txt");
    for (const Case& c : cases) {
        std::remove(trace.c_str());
        const std::string model = writeFile("refused.xml", c.model);
        SylvarRun run = runSylvar("-model=" + model + " -trace=" + trace);
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(withoutLineNumber(run.out), c.expected) << c.model;
        EXPECT_FALSE(std::ifstream(trace).good()) << c.model;
    }
}

// Tabs, rows without a closing blank and CRLF line ends read as the
// example does: the same trace.
TEST(Sylvar, MatrixTextTakesAnyWhitespaceAndCrlfFiles) {
    const std::string map = readFile(modelPath("map.xml"));
    std::string tabs = map, bare, crlf;
    for (char& c : tabs)
        if (c == ' ') c = '\t';
    for (std::size_t i = 0; i < map.size(); ++i) {
        if (map[i] == ' ' && i + 1 < map.size() && map[i + 1] == '\n') continue;
        bare += map[i];
        crlf += map[i] == '\n' ? std::string("\r\n") : std::string(1, map[i]);
    }
    const std::string expected = tempPath("ws_expected.txt");
    runSylvar("-model=" + modelPath("map.xml") + " -trace=" + expected + " -seed=3");
    for (const std::string& text : {tabs, bare, crlf}) {
        const std::string got = tempPath("ws_got.txt");
        SylvarRun run = runSylvar("-model=" + writeFile("ws.xml", text) + " -trace=" + got + " -seed=3");
        EXPECT_EQ(readFile(got), readFile(expected)) << run.out;
    }
}

// A device, FIFO or directory is refused, the model itself is never
// overwritten, and a link is written through.
TEST(Sylvar, TheTraceIsWrittenToRegularFilesOnly) {
    const std::string model = writeFile("self.xml", readFile(modelPath("map.xml")));
    const std::string fifo = tempPath("trace_fifo");
    std::remove(fifo.c_str());
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    struct Case { std::string trace, refusal; } cases[] = {
        {"/dev/full", "it is a device"},
        {fifo, "it is a FIFO"},
        {testing::TempDir(), "it is a directory"},
        {model, "it is the input '" + model + "'"},
    };
    for (const Case& c : cases) {
        SylvarRun run = runSylvar("-model=" + model + " -trace=" + c.trace);
        EXPECT_NE(run.out.find("Cannot write the trace file '" + c.trace + "': " + c.refusal + "."), std::string::npos)
            << run.out;
    }
    EXPECT_EQ(readFile(model), readFile(modelPath("map.xml")));
    // The file of a replication is checked as well: here the first is the model.
    const std::string first = writeFile("rep_1.xml", readFile(modelPath("map.xml")));
    SylvarRun run = runSylvar("-model=" + first + " -trace=" + tempPath("rep.xml") + " -replications=2");
    EXPECT_NE(run.out.find("Cannot write the trace file '" + first + "': it is the input '" + first + "'."),
              std::string::npos) << run.out;
    EXPECT_EQ(readFile(first), readFile(modelPath("map.xml")));
    const std::string target = writeFile("link_target.txt", "");
    const std::string link = tempPath("trace_link.txt");
    std::remove(link.c_str());
    ASSERT_EQ(symlink(target.c_str(), link.c_str()), 0);
    runSylvar("-model=" + model + " -trace=" + link + " -observations=5");
    EXPECT_EQ(lines(target).size(), 5u);
    std::remove(fifo.c_str());
    std::remove(link.c_str());
}

// Replications: one line each, then the figures across them; replication k's
// file is the single run with seed + k - 1. Failures to write end the run.
TEST(Sylvar, ReplicationsAndTraceFilesThatCannotBeWritten) {
    const std::string trace = tempPath("reps.txt");
    SylvarRun run = runSylvar("-model=" + modelPath("map.xml") + " -trace=" + trace +
                              " -seed=5 -observations=2000 -replications=3 -threads=2");
    EXPECT_NE(run.out.find("Replication 3: seed 7, trace " + tempPath("reps_3.txt") + ", 2000 values, mean "),
              std::string::npos);
    EXPECT_NE(run.out.find("Across 3 replications (mean [95 % confidence interval]):\nMean: "), std::string::npos);
    EXPECT_NE(run.out.find("Autocorrelation at lag 10: "), std::string::npos);
    const std::string single = tempPath("single_7.txt");
    runSylvar("-model=" + modelPath("map.xml") + " -trace=" + single + " -seed=7 -observations=2000");
    EXPECT_EQ(readFile(tempPath("reps_3.txt")), readFile(single));

    struct Case { std::string arguments, expected; } cases[] = {
        {"-trace=/nonexistent/t.txt",
         failure("trace_stream", "Cannot open trace file /nonexistent/t.txt for writing: No such file or directory.")},
        {"-trace=/dev/full -observations=100000",
         failure("main_sylvar", "Cannot write the trace file '/dev/full': it is a device.")},
        {"-trace=x.txt -replications=0", failure("main_sylvar", "Invalid number of replications; give 1 or more.")},
        {"-trace=x.txt -replications=2 -threads=-1", failure("main_sylvar", "Invalid number of threads; give 1 or more.")},
    };
    for (const auto& c : cases) {
        run = runSylvar("-model=" + modelPath("map.xml") + " " + c.arguments);
        const std::size_t error = run.out.find("Error in: ");
        ASSERT_NE(error, std::string::npos) << c.arguments;
        EXPECT_EQ(withoutLineNumber(run.out.substr(error)), c.expected) << c.arguments;
        EXPECT_EQ(run.status, 0);
    }
}
