// Runs sylvar-fit on traces that sylvar generated and checks the road back.
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>

#include "support/test_support.h"
#include "fitting/mapem.h"
#include "numerics/random.h"
#include "traces/trace.h"

using namespace velmora;
using namespace velmora_test;

namespace {
std::string example(const std::string& name) { return std::string(VELMORA_SOURCE_DIR) + "/examples/" + name; }

bool exists(const std::string& path) {
    struct stat st;
    return ::stat(path.c_str(), &st) == 0;
}

// Sixty values in a repeating pattern of eleven, whose autocorrelations
// swing between about -0.5 and 0.5.
std::string patternTrace() {
    std::string values;
    for (unsigned i = 0; i < 60; ++i) values += std::to_string(0.5 + (i * 37 % 11) / 4.0) + "\n";
    return writeFile("fit_trace.txt", values);
}

std::string generate(const std::string& model, const std::string& trace, unsigned seed) {
    const std::string path = tempPath(trace);
    SylvarRun run = runSylvar("-model=" + model + " -trace=" + path + " -observations=200000 -seed=" +
                              std::to_string(seed));
    EXPECT_EQ(run.status, 0) << run.out;
    return path;
}
}  // namespace

// The road of the README: 200 000 values of a known model, the fit, 200 000
// values of the fitted model; mean within 2 %, lags 1 and 2 within 0.05.
TEST(SylvarFit, RoundTripThroughTheFittedModelKeepsMeanAndCorrelation) {
    struct Case { std::string model, arguments, modelLine; } cases[] = {
        {example("chep.xml"), "-model=chep -marginal=hypererlang", "Model      C"},
        {example("map.xml"), "-model=map-acf -marginal=hypererlang", "Model      MAP of order "},
        {example("map.xml"), "-model=map -order=3", "Model      MAP of order 3"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.model);
        const std::string original = generate(c.model, "original.txt", 3);
        const std::string fitted = tempPath("fitted.xml");
        std::remove(fitted.c_str());
        SylvarFitRun fit = runSylvarFit("-trace=" + original + " -out=" + fitted + " " + c.arguments);
        ASSERT_EQ(fit.status, 0) << fit.err;
        EXPECT_EQ(fit.err, "") << "progress is shown on a terminal only";
        EXPECT_NE(fit.out.find(c.modelLine), std::string::npos) << fit.out;
        EXPECT_NE(fit.out.find("Written    " + fitted + "\n"), std::string::npos) << fit.out;
        const std::string again = generate(fitted, "again.txt", 5);

        Trace a(original, false), b(again, false);
        const double meanA = a.getMoments(1)[1], meanB = b.getMoments(1)[1];
        EXPECT_NEAR(meanB, meanA, 0.02 * meanA);
        const std::vector<double> acA = a.getAutocorrelations(1, 2), acB = b.getAutocorrelations(1, 2);
        EXPECT_NEAR(acB[0], acA[0], 0.05);
        EXPECT_NEAR(acB[1], acA[1], 0.05);
    }
}

// Every failure is one line on standard error, status 1, nothing on standard
// output and no model file.
TEST(SylvarFit, FailuresAreOneLineOnStandardErrorAndLeaveNoModelFile) {
    const std::string trace = patternTrace();
    const std::string shortTrace = writeFile("fit_short.txt", "1\n2\n3\n4\n5\n");
    const std::string noModel = writeFile("fit_nomodel.xml", "<velmora><foo>1</foo></velmora>");
    const std::string missing = tempPath("fit_missing.txt");
    const std::string negative = writeFile("fit_negative.txt", "1\n-2\n3\n4\n5\n6\n7\n8\n9\n10\n11\n12\n");
    const std::string out = tempPath("fit_never.xml");
    const std::string t = "-trace=" + trace + " -out=" + out;
    struct Case { std::string arguments, error; } cases[] = {
        {"", "no trace given (-trace=FILE; see sylvar-fit --help)"},
        {"-trace=" + trace, "no model file given (-out=FILE; see sylvar-fit --help)"},
        {"-trace=" + missing + " -out=" + out, "cannot read the trace: " + missing + ": No such file or directory."},
        {"-trace=" + shortTrace + " -out=" + out, "cannot read the trace: The trace holds 5 values; 10 lags need at least 12."},
        {t + " -marginal=gama",
         "the marginal fit failed: Unknown marginal 'gama': neither a distribution family nor a model file."},
        {t + " -model=arma",
         "Unknown model class 'arma' (choose auto, arta, capp, chep, map, arta-acf, map-acf or mmap)."},
        {t + " -model=map -order=0", "-order must be a whole number from 1 to 64, not '0'"},
        {t + " -model=map -order=65", "-order must be a whole number from 1 to 64, not '65'"},
        {t + " -model=mmap",
         "cannot read the trace: Cannot fit a marked MAP: the trace has 1 class, at least two are needed."},
        {"-trace=" + negative + " -out=" + out + " -model=map -marginal=normal",
         "the correlation fit failed: Cannot fit a MAP: value 2 (-2) is not a positive finite number."},
        {t + " -marginal=" + noModel, "the marginal fit failed: The file '" + noModel + "' holds no dist or ph model."},
        {"-trace=" + trace + " -out=/nonexistent-dir/m.xml",
         "cannot write the model file '/nonexistent-dir/m.xml': No such file or directory"},
        {"-trace=" + trace + " -out=" + trace, "cannot write the model file '" + trace + "': it is the input '" + trace + "'"},
        {"-trace=" + trace + " -out=" + testing::TempDir(),
         "cannot write the model file '" + testing::TempDir() + "': it is a directory"},
        {t + " -model=chep -marginal=gamma", "the correlation fit failed: Model chep needs a hyper-Erlang marginal "
                                             "(or an exponential, erlang or hyperexponential one), not gamma."},
        {t + " -model=map-acf -marginal=lognormal",
         "the correlation fit failed: Model map needs a phase-type marginal (exponential, erlang, hypoexponential, "
         "hyperexponential, hypererlang or a ph model file), not lognormal."},
        {t + " -model=arta -marginal=" + example("ph.xml"),
         "the correlation fit failed: Model arta needs a distribution family as marginal, not a ph model of order 3."},
        {t + " -lags=x", "-lags must be a whole number from 1 to 100000, not 'x'"},
        {t + " -phases=65", "-phases must be a whole number from 1 to 64, not '65'"},
        {t + " -pmin=4", "-pmin is above -pmax"},
        {t + " -seed=1", "unknown option -seed (see sylvar-fit --help)"},
        {t + " trace", "Invalid command line parameter. Arguments are -key=value; see sylvar-fit --help"},
    };
    for (const Case& c : cases) {
        SylvarFitRun run = runSylvarFit(c.arguments);
        EXPECT_EQ(run.status, 1) << c.arguments;
        EXPECT_EQ(run.out, "") << c.arguments;
        EXPECT_EQ(run.err, "sylvar-fit: " + c.error + "\n") << c.arguments;
        EXPECT_FALSE(exists(out)) << c.arguments;
    }
}

// A single-path chain gives a MAP without correlation: written, with a warning.
TEST(SylvarFit, AModelThatMissesTheTraceIsWrittenWithAWarning) {
    const std::string out = tempPath("fit_missed.xml");
    SylvarFitRun run = runSylvarFit("-trace=" + patternTrace() + " -out=" + out + " -model=map-acf -marginal=" +
                                    example("ph.xml"));
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "sylvar-fit: warning: the model's autocorrelation at lag 3 is 0.0000, the trace's 0.5172 "
                       "(see the table of lags)\n");
    EXPECT_TRUE(exists(out));
}

TEST(SylvarFit, HelpGoesToStandardOutput) {
    SylvarFitRun run = runSylvarFit("-trace=x --help");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out.rfind("Usage: sylvar-fit -trace=FILE -out=MODEL.xml [options]\n", 0), 0u) << run.out;
    EXPECT_EQ(run.err, "");
}

namespace {
// The values of a trace file times a factor, written with full precision.
std::string scaled(const std::string& trace, double factor, const std::string& name) {
    Trace t(trace, false);
    std::string text;
    char line[40];
    for (unsigned i = 0; i < t.getSize(); ++i) {
        std::snprintf(line, sizeof line, "%.17g\n", t.getElement(i) * factor);
        text += line;
    }
    return writeFile(name, text);
}

// 2000 gamma(2, 1.5) values of the library's own generator.
std::string gammaTrace(unsigned seed) {
    const std::string model = writeFile("fit_gamma.xml", "<velmora><dist><gammadist><shape>2</shape><scale>1.5"
                                                         "</scale></gammadist></dist></velmora>");
    const std::string path = tempPath("fit_gamma_" + std::to_string(seed) + ".txt");
    runSylvar("-model=" + model + " -trace=" + path + " -observations=2000 -seed=" + std::to_string(seed));
    return path;
}
}  // namespace

// Each file runs in sylvar as fitted: mean within 1.5 % of the trace's and
// lag 1 within 0.01 of the fitted model's on 200 000 values, whatever the
// unit of the trace; the file holds the model alone, in full precision.
TEST(SylvarFit, FilesRunAsFittedInAnyUnit) {
    const std::string chep = generate(example("chep.xml"), "fit_unit.txt", 4);
    struct Case { std::string trace, arguments; } cases[] = {
        {scaled(chep, 1e7, "fit_ns.txt"), "-Marginal=HyperErlang"},
        {scaled(chep, 1e-3, "fit_ks.txt"), "-marginal=hypererlang -MODEL=Chep"},
        {gammaTrace(3), ""},
        {gammaTrace(5), ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.trace + " " + c.arguments);
        const std::string out = tempPath("fit_unit.xml");
        SylvarFitRun fit = runSylvarFit("-trace=" + c.trace + " -out=" + out + " " + c.arguments);
        ASSERT_EQ(fit.status, 0) << fit.err;
        const std::string text = readFile(out);
        EXPECT_FALSE(text.find("<chep>") != std::string::npos && text.find("<capp>") != std::string::npos)
            << "one model element";
        const std::size_t lag1 = fit.out.find("\n  1  ");
        ASSERT_NE(lag1, std::string::npos);
        std::istringstream row(fit.out.substr(lag1));
        double lag = 0, target = 0, fittedLag1 = 0;
        row >> lag >> target >> fittedLag1;
        const std::string again = generate(out, "fit_unit_again.txt", 5);
        Trace a(c.trace, false), b(again, false);
        EXPECT_NEAR(b.getMoments(1)[1], a.getMoments(1)[1], 0.015 * a.getMoments(1)[1]);
        EXPECT_NEAR(b.getAutocorrelations(1, 1)[0], fittedLag1, 0.01);
    }
}

// An output is a regular file: a device or FIFO is refused (and left as it
// is), a link is written through; a closed or full standard output fails.
TEST(SylvarFit, OutputsNeverClobber) {
    const std::string trace = patternTrace();
    const std::string fifo = tempPath("fit_fifo");
    std::remove(fifo.c_str());
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const std::string t = "-trace=" + trace + " -marginal=exponential -model=arta -out=";
    EXPECT_EQ(runSylvarFit(t + "/dev/null").err,
              "sylvar-fit: cannot write the model file '/dev/null': it is a device\n");
    EXPECT_EQ(runSylvarFit(t + fifo).err, "sylvar-fit: cannot write the model file '" + fifo + "': it is a FIFO\n");
    struct stat st;
    EXPECT_TRUE(::stat(fifo.c_str(), &st) == 0 && S_ISFIFO(st.st_mode));
    const std::string target = writeFile("fit_link_target.xml", "");
    const std::string link = tempPath("fit_link.xml");
    std::remove(link.c_str());
    ASSERT_EQ(symlink(target.c_str(), link.c_str()), 0);
    EXPECT_EQ(runSylvarFit(t + link).status, 0);
    EXPECT_TRUE(::lstat(link.c_str(), &st) == 0 && S_ISLNK(st.st_mode));
    EXPECT_NE(readFile(target).find("<arta>"), std::string::npos);
    EXPECT_EQ(runSylvarFit(t + tempPath("fit_closed.xml") + " >&-").err, "sylvar-fit: standard output is closed\n");
    SylvarFitRun full = runSylvarFit(t + tempPath("fit_full.xml") + " >/dev/full");
    EXPECT_EQ(full.status, 1);
    EXPECT_NE(full.err.find("sylvar-fit: cannot write the report to standard output (the model file is written)\n"),
              std::string::npos);
    const std::string nanTrace = writeFile("fit_nan.txt", "1\n2\nnan\n");
    EXPECT_EQ(runSylvarFit("-trace=" + nanTrace + " -out=" + tempPath("x.xml")).err,
              "sylvar-fit: cannot read the trace: " + nanTrace + ":3: 'nan' is not a finite number\n");
    std::remove(fifo.c_str());
    std::remove(link.c_str());
}

// The fits by likelihood: independent values give the renewal model (a dist
// element), a two-class trace a marked MAP; sylvar generates from both.
TEST(SylvarFit, FitsByLikelihoodWriteModelsThatSylvarRuns) {
    std::string independent, marked = "3000\n";
    Rand r(9);
    for (unsigned k = 0; k < 5000; ++k) independent += std::to_string(std::exp(0.3 + 0.8 * r.normal(0, 1))) + "\n";
    const auto values = mapem::simulate(mapem::model({1, 2}, {4.0, 1.0}, {{0.5, 0.1, 0.1, 0.3}, {0.1, 0.3, 0.2, 0.4}}),
                                        3000, 2);
    for (std::size_t k = 0; k < values.first.size(); ++k)
        marked += (values.second[k] ? "write " : "read ") + std::to_string(values.first[k]) + "\n";
    const struct {
        std::string trace, arguments, modelLine, element;
    } cases[] = {
        {writeFile("fit_independent.txt", independent), "-model=auto -phases=2",
         "Model      renewal model (independent values of the marginal)", "<dist>"},
        {writeFile("fit_marked.txt", marked), "-model=mmap -order=3", "Model      marked MAP of order 3, classes read write",
         "<marks>"},
    };
    for (const auto& c : cases) {
        const std::string out = tempPath("fit_likelihood.xml");
        std::remove(out.c_str());
        SylvarFitRun fit = runSylvarFit("-trace=" + c.trace + " -out=" + out + " " + c.arguments);
        ASSERT_EQ(fit.status, 0) << fit.err;
        EXPECT_NE(fit.out.find(c.modelLine), std::string::npos) << fit.out;
        EXPECT_NE(fit.out.find("Candidates by joint likelihood"), std::string::npos) << fit.out;
        EXPECT_NE(readFile(out).find(c.element), std::string::npos);
        generate(out, "from_likelihood_fit.txt", 4);
    }
}
