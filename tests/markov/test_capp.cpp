// CAPP: the example model's paths worked by hand, both text forms read back,
// the correlation map against its closed forms and identities, generated
// traces against the analytic autocorrelations, and the refusals as sylvar
// reports them.
#include <cstdio>

#include "config/conf.h"
#include "markov/capp.h"
#include "markov_helpers.h"
#include "timeseries/arima.h"
#include "traces/trace.h"

using namespace velmora;
using namespace markov_test;

namespace {

const std::string kExample = std::string(VELMORA_SOURCE_DIR) + "/examples/capp.xml";

std::unique_ptr<capp> example() {
    XMLConfig document(kExample);
    return std::unique_ptr<capp>(static_cast<capp*>(load_process(&document)));
}

// Standard output of sylvar with these arguments.
std::string sylvar(const std::string& arguments) {
    std::string out;
    FILE* pipe = popen((std::string(SYLVAR_PATH) + " " + arguments).c_str(), "r");
    char buffer[4096];
    for (size_t n; pipe != nullptr && (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) out.append(buffer, n);
    if (pipe != nullptr) pclose(pipe);
    return out;
}

std::string cappDocument(const std::string& inner) { return "<velmora><capp>" + inner + "</capp></velmora>"; }
std::string phElement(const std::string& d0, const std::string& pi) {
    return "<ph><d0>" + d0 + "</d0><pi>" + pi + "</pi></ph>";
}
const std::string kArima = "<arima><ar>0.5</ar><variance>1</variance></arima>";

}  // namespace

// Paths of the example by hand: start phase, jumps and exits of
// T = [[-4, 1, 1], [0, -1, 0.5], [0, 0, -0.25]], tau = (0.5, 0.3, 0.2).
TEST(CAPP, ExamplePathsAndDescription) {
    std::unique_ptr<capp> c = example();
    EXPECT_EQ(c->getProcessType(), PROCESS_CAPP);
    EXPECT_EQ(c->getProcessDescription(), "CAPP(3,1,0)");
    const double p[] = {0.25, 0.15, 0.0625, 0.2, 0.125, 0.15, 0.0625};
    const double m[] = {0.25, 1, 1.25, 4, 4.25, 5, 5.25};
    ASSERT_EQ(c->getPaths().size(), 7u);
    double mean = 0;
    for (unsigned i = 0; i < 7; i++) {
        EXPECT_NEAR(c->getPaths()[i].first, p[i], 1e-15) << i;
        EXPECT_NEAR(c->getPathMeans()[i], m[i], 1e-15) << i;
        mean += p[i] * m[i];
    }
    EXPECT_NEAR(c->getMoments(1, 1)[0], mean, 1e-12);  // the paths make up the marginal
    EXPECT_NEAR(c->getBaseProcess()->getAutocovariance(0), 1.0, 1e-12);  // normalised base
    double lo, hi;
    capp::computeIntegrationBounds(c->getPaths(), 2, &lo, &hi);
    EXPECT_NEAR(lo, 0.4, 1e-15);
    EXPECT_NEAR(hi, 0.4625, 1e-15);
}

TEST(CAPP, BothTextFormsReadBack) {
    std::unique_ptr<capp> c = example();
    for (format f : {FORMAT_CONFIG, FORMAT_XML}) {
        std::string path = tempPath("capp_" + std::to_string(f));
        c->save(path, f);
        capp back(path, f);
        EXPECT_EQ(back.toString(f), c->toString(f)) << f;
        EXPECT_EQ(back.getPaths().size(), 7u);
    }
    // The key-value reader hands the marginal to the CPH reader under its name.
    Config config;
    config.setValue("capp", writeFile("capp.txt", c->toString(FORMAT_CONFIG)), true);
    std::unique_ptr<Process> loaded(load_process(&config));
    EXPECT_EQ(loaded->getProcessDescription(), "CAPP(3,1,0)");
    EXPECT_EQ(config.getValue("model"), "cph");
    const std::string head = "model = capp\nT = -4 1 1 \n0 -1 0.5 \n0 0 -0.25 \ntau = 0.5 0.3 0.2 \norder = 1, 0\n";
    EXPECT_EQ(c->toString(FORMAT_CONFIG).substr(0, head.size()), head);
}

TEST(CAPP, SummaryBlocks) {
    std::string summary = example()->getSummary();
    const std::string head = "CAPP statistics:\n========================\nACPH Distribution:\n----------------------\n";
    EXPECT_EQ(summary.substr(0, head.size()), head);
    size_t block = summary.find("CAPP Autocorrelation:\n---------------------\n");
    ASSERT_NE(block, std::string::npos);
    size_t lags = 0, joint = 0;
    for (size_t at = summary.find("Autocorrelation at lag ", block); at != std::string::npos;
         at = summary.find("Autocorrelation at lag ", at + 1))
        lags++;
    for (size_t at = summary.find("JM("); at != std::string::npos; at = summary.find("JM(", at + 1)) joint++;
    EXPECT_EQ(lags, 11u);
    EXPECT_EQ(joint, 16u);
    EXPECT_EQ(summary.substr(summary.find("JM(0, 0): "), 11), "JM(0, 0): 1");
}

// At rho = 1 the share of the path means in the variance; at 0 nothing; next
// to +-1 the rectangles approach the closed forms; the pair probabilities
// sum to 1; a single path carries no correlation.
TEST(CAPP, CorrelationMapClosedFormsAndIdentities) {
    std::unique_ptr<capp> c = example();
    const cph_path_list& paths = c->getPaths();
    const std::vector<double>& m = c->getPathMeans();
    const double mean = c->getMoments(1, 1)[0], var = c->getACPH()->getVariance();
    double shared = 0;
    for (size_t i = 0; i < paths.size(); i++) shared += paths[i].first * m[i] * m[i];
    std::vector<double> r = capp::compute_autocorrelation(mean, var, {1.0, 0.0, 0.99999, -1.0, -0.99999}, paths, m);
    EXPECT_NEAR(r[0], (shared - mean * mean) / var, 1e-12);
    EXPECT_LT(r[0], 1.0);
    EXPECT_NEAR(r[1], 0.0, 1e-9);
    EXPECT_NEAR(r[2], r[0], 2e-3);
    EXPECT_NEAR(r[4], r[3], 2e-3);
    EXPECT_LT(r[3], 0.0);
    double total = 0;
    for (unsigned i = 0; i < paths.size(); i++)
        for (unsigned j = 0; j < paths.size(); j++) total += capp::solveIntegral(paths, 0.6, i, j);
    EXPECT_NEAR(total, 1.0, 1e-9);

    capp single(new CPH(mat({{-1, 1}, {0, -2}}), row({1, 0})), new ARIMA({0.9}, {}, 0, 0, 1, 0, ""));
    for (double a : single.getAutocorrelations(1, 3)) EXPECT_NEAR(a, 0.0, 1e-8);
}

// The generator follows the analytic autocorrelations: lags 1..5 of 400 000
// values at seed 11, and sylvar's 100 000 values against its own summary.
TEST(CAPP, GeneratedTracesFollowTheAutocorrelations) {
    std::unique_ptr<capp> c = example();
    std::unique_ptr<Trace> trace(c->simulate(1, 400000, 0, 11));
    std::vector<double> expected = c->getAutocorrelations(1, 5), sample = trace->getAutocorrelations(1, 5);
    for (unsigned k = 0; k < 5; k++) EXPECT_NEAR(sample[k], expected[k], 0.01) << "lag " << k + 1;
    EXPECT_NEAR(trace->getMoments(1, 1)[0], c->getMoments(1, 1)[0], 0.05);
    // Equal seeds, equal values.
    c->initRandomNumberGeneration(3);
    double first = c->getNextRandomVariate();
    c->initRandomNumberGeneration(3);
    EXPECT_EQ(c->getNextRandomVariate(), first);

    std::string path = tempPath("capp_trace.txt");
    std::string out = sylvar("-model=" + kExample + " -trace=" + path + " -seed=7 -observations=100000");
    size_t block = out.find("CAPP Autocorrelation:");
    ASSERT_NE(block, std::string::npos) << out;
    const std::string key = "Autocorrelation at lag 1: ";
    double summary = std::stod(out.substr(out.find(key, block) + key.size()));
    Trace written(path, false);
    ASSERT_EQ(written.getSize(), 100000u);
    EXPECT_NEAR(written.getAutocorrelations(1, 1)[0], summary, 0.03);
    EXPECT_GT(summary, 0.2);
}

TEST(CAPP, BadModelsAreReportedBySylvar) {
    // Dense order 20: 2^20 - 1 paths.
    std::string dense, start = "1";
    for (unsigned i = 0; i < 20; i++) {
        for (unsigned j = 0; j < 20; j++) dense += (j < i ? "0" : j == i ? std::to_string(-double(21 - i)) : "1") + " ";
        if (i > 0) start += " 0";
    }
    struct Case { const char* name; std::string document, expected; } cases[] = {
        {"cyclic", cappDocument(phElement("-1 1 1 -2", "1 0") + kArima),
         "capp: CAPP requires acyclic phase-type distribution."},
        {"invalid tau", cappDocument(phElement("-1 1 0 -2", "0.5 0") + kArima),
         "capp: CAPP requires acyclic phase-type distribution."},
        {"no arima", cappDocument(phElement("-1", "1")), "capp: Invalid CAPP."},
        {"no ph", cappDocument(kArima), "capp: Invalid CAPP."},
        {"ph without d0", cappDocument("<ph><pi>1</pi></ph>" + kArima), "cph: Not a PH description."},
        {"too many paths", cappDocument(phElement(dense, start) + kArima),
         "cph: Acyclic phase-type distribution has more than 65535 paths."},
        {"no way to absorption", cappDocument(phElement("0", "1") + kArima),
         "capp: No path to absorption in the phase-type distribution."},
    };
    for (const Case& c : cases) {
        std::string out = sylvar("-model=" + writeFile("bad.xml", c.document) + " -trace=" + tempPath("bad.txt"));
        std::string module = c.expected.substr(0, c.expected.find(':'));
        std::string message = c.expected.substr(c.expected.find(": ") + 2);
        EXPECT_NE(out.find("Error in: " + module + ", line "), std::string::npos) << c.name << "\n" << out;
        EXPECT_NE(out.find(": " + message + "\n\n\nUse parameter --help"), std::string::npos) << c.name << "\n" << out;
    }
}

TEST(CAPP, RefusalsOfTheLibraryInterface) {
    std::unique_ptr<capp> c = example();
    XMLConfig other(writeFile("other.xml", "<other><capp></capp></other>"));
    Config arta;
    arta.setValue("model", "arta", true);
    XMLElement notCapp("arta", "");
    struct Case { const char* name; std::function<void()> action; std::string expected; } cases[] = {
        {"root", [&] { capp x(&other); }, "Not a CAPP."},
        {"element tag", [&] { c->load(&notCapp); }, "Not a CAPP."},
        {"model key", [&] { capp x(&arta); }, "Not a CAPP model."},
        {"load format", [&] { c->load(kExample, static_cast<format>(2)); }, "Unsupported file format."},
        {"text format", [&] { c->toString(static_cast<format>(2)); }, "Output format not supported for CAPPs."},
        {"save format", [&] { c->save(tempPath("capp_bad"), static_cast<format>(-1)); },
         "Output format not supported for CAPPs."},
        {"likelihood", [&] { c->computeLikelihood(nullptr); }, "Not implemented."},
        {"range", [&] { c->computeDistribution(2, 1); }, "Invalid range for distribution."},
        {"cyclic marginal", [] { capp(new CPH(denseT(), denseTau()), new ARIMA()); },
         "CAPP requires acyclic phase-type distribution."},
    };
    for (Case& k : cases) EXPECT_EQ(messageOf(k.action, "capp"), k.expected) << k.name;
    // A failed load leaves no marginal behind, and says so.
    EXPECT_EQ(messageOf([&] { c->getMoments(1, 1); }, "capp"), "No phase-type distribution.");
    capp fresh(new CPH(mat({{-2}}), row({1})), new ARIMA());
    EXPECT_EQ(messageOf([&] { fresh.getNextRandomVariate(); }, "capp"), "Initialize Random Number Generation first.");
}
