// CAPP: the example model's paths worked by hand, both text forms read back,
// the correlation map against its closed forms and identities, generated
// traces against the analytic autocorrelations, and the refusals.

#include "config/conf.h"
#include "fitting/process_factory.h"
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

}  // namespace

// Paths of T = [[-4, 1, 1], [0, -1, 0.5], [0, 0, -0.25]], tau = (0.5, 0.3, 0.2)
// by hand; both text forms give the same model back.
TEST(CAPP, ExamplePathsTextFormsAndSummary) {
    std::unique_ptr<capp> c = example();
    EXPECT_EQ(c->getProcessDescription(), "CAPP(3,1,0)");
    const double p[] = {0.25, 0.15, 0.0625, 0.2, 0.125, 0.15, 0.0625}, m[] = {0.25, 1, 1.25, 4, 4.25, 5, 5.25};
    ASSERT_EQ(c->getPaths().size(), 7u);
    for (unsigned i = 0; i < 7; i++) {
        EXPECT_NEAR(c->getPaths()[i].first, p[i], 1e-15) << i;
        EXPECT_NEAR(c->getPathMeans()[i], m[i], 1e-15) << i;
    }
    double lo, hi;
    capp::computeIntegrationBounds(c->getPaths(), 2, &lo, &hi);
    EXPECT_EQ(std::make_pair(lo, hi), std::make_pair(0.4, 0.4625));
    EXPECT_NEAR(c->getBaseProcess()->getAutocovariance(0), 1.0, 1e-12);

    for (format f : {FORMAT_CONFIG, FORMAT_XML}) {
        std::string path = tempPath("capp_" + std::to_string(f));
        c->save(path, f);
        EXPECT_EQ(capp(path, f).toString(f), c->toString(f)) << f;
    }
    const std::string head = "model = capp\nT = -4 1 1 \n0 -1 0.5 \n0 0 -0.25 \ntau = 0.5 0.3 0.2 \norder = 1, 0\n";
    EXPECT_EQ(c->toString(FORMAT_CONFIG).substr(0, head.size()), head);
    Config config;  // the factory's key-value road; the marginal is read under the name "cph"
    config.setValue("capp", writeFile("capp.txt", c->toString(FORMAT_CONFIG)), true);
    EXPECT_EQ(std::unique_ptr<Process>(load_process(&config))->getProcessType(), PROCESS_CAPP);
    EXPECT_EQ(config.getValue("model"), "cph");

    std::string summary = c->getSummary();
    auto count = [&summary](const std::string& what) {
        size_t n = 0;
        for (size_t at = summary.find(what); at != std::string::npos; at = summary.find(what, at + 1)) n++;
        return n;
    };
    EXPECT_EQ(count("Autocorrelation at lag "), 10u + 11u);  // the base block has ten lags
    EXPECT_EQ(count("JM("), 16u);
    EXPECT_NE(summary.find("JM(0, 0): 1\n"), std::string::npos);
}

// At rho = 1 the share of the path means in the variance, at 0 nothing; next
// to +-1 the rectangles approach the closed forms; the pair probabilities
// sum to 1; a single path carries no correlation.
TEST(CAPP, CorrelationMapClosedFormsAndIdentities) {
    std::unique_ptr<capp> c = example();
    const cph_path_list& paths = c->getPaths();
    const std::vector<double>& m = c->getPathMeans();
    const double mean = c->getMoments(1, 1)[0], var = c->getACPH()->getVariance();
    double shared = 0, total = 0;
    for (size_t i = 0; i < paths.size(); i++) shared += paths[i].first * m[i] * m[i];
    std::vector<double> r = capp::compute_autocorrelation(mean, var, {1.0, 0.0, 0.99999, -1.0, -0.99999}, paths, m);
    EXPECT_NEAR(r[0], (shared - mean * mean) / var, 1e-12);
    EXPECT_NEAR(r[1], 0.0, 1e-9);
    EXPECT_NEAR(r[2], r[0], 2e-3);
    EXPECT_NEAR(r[4], r[3], 2e-3);
    EXPECT_LT(r[3], 0.0);
    for (unsigned i = 0; i < paths.size(); i++)
        for (unsigned j = 0; j < paths.size(); j++) total += capp::solveIntegral(paths, 0.6, i, j);
    EXPECT_NEAR(total, 1.0, 1e-9);

    capp single(new CPH(mat({{-1, 1}, {0, -2}}), row({1, 0})), new ARIMA({0.9}, {}, 0, 0, 1, 0, ""));
    for (double a : single.getAutocorrelations(1, 3)) EXPECT_NEAR(a, 0.0, 1e-8);
}

// Lags 1..5 of 400 000 values at seed 11 (sampling error about 0.003), and
// sylvar's 100 000 values against its own summary.
TEST(CAPP, GeneratedTracesFollowTheAutocorrelations) {
    std::unique_ptr<capp> c = example();
    std::unique_ptr<Trace> trace(c->simulate(1, 400000, 0, 11));
    std::vector<double> expected = c->getAutocorrelations(1, 5), sample = trace->getAutocorrelations(1, 5);
    for (unsigned k = 0; k < 5; k++) EXPECT_NEAR(sample[k], expected[k], 0.01) << "lag " << k + 1;
    EXPECT_NEAR(trace->getMoments(1, 1)[0], c->getMoments(1, 1)[0], 0.05);

    std::string path = tempPath("capp_trace.txt");
    std::string out = runSylvar("-model=" + kExample + " -trace=" + path + " -seed=7 -observations=100000").out;
    const std::string key = "Autocorrelation at lag 1: ";
    size_t block = out.find("CAPP Autocorrelation:");
    ASSERT_NE(block, std::string::npos) << out;
    double summary = std::stod(out.substr(out.find(key, block) + key.size()));
    EXPECT_GT(summary, 0.2);
    EXPECT_NEAR(Trace(path, false).getAutocorrelations(1, 1)[0], summary, 0.03);
}

TEST(CAPP, BadModelsAreReportedBySylvar) {
    auto document = [](const std::string& d0, const std::string& pi, bool arima = true) {
        return "<velmora><capp><ph><d0>" + d0 + "</d0><pi>" + pi + "</pi></ph>" +
               (arima ? "<arima><ar>0.5</ar></arima>" : "") + "</capp></velmora>";
    };
    std::string dense, start = "1";  // dense order 20: 2^20 - 1 paths
    for (unsigned i = 0; i < 20; i++) {
        for (unsigned j = 0; j < 20; j++) dense += (j < i ? "0" : j == i ? std::to_string(i - 21.0) : "1") + " ";
        if (i > 0) start += " 0";
    }
    const std::string acyclic = "capp, line N: CAPP requires acyclic phase-type distribution.";
    struct Case { std::string document, expected; } cases[] = {
        {document("-1 1 1 -2", "1 0"), acyclic},
        {document("-1 1 0 -2", "0.5 0"), acyclic},
        {document("-1", "1", false), "capp, line N: Invalid CAPP."},
        {"<velmora><capp><arima></arima></capp></velmora>", "capp, line N: Invalid CAPP."},
        {"<velmora><capp><ph><pi>1</pi></ph><arima></arima></capp></velmora>", "cph, line N: Not a PH description."},
        {document(dense, start), "cph, line N: Acyclic phase-type distribution has more than 4095 paths."},
        {document("0", "1"), "capp, line N: No path to absorption in the phase-type distribution."},
    };
    for (const Case& c : cases) {
        std::string out =
            runSylvar("-model=" + writeFile("bad.xml", c.document) + " -trace=" + tempPath("bad.txt")).out;
        size_t at = out.find("Error in: ");
        ASSERT_NE(at, std::string::npos) << c.document << "\n" << out;
        EXPECT_EQ(withoutLineNumber(out.substr(at + 10)),
                  c.expected + "\n\n\nUse parameter --help for usage information.\n");
    }
}

TEST(CAPP, RefusalsOfTheLibraryInterface) {
    std::unique_ptr<capp> c = example();
    XMLConfig other(writeFile("other.xml", "<other><capp></capp></other>"));
    Config arta;
    arta.setValue("model", "arta", true);
    XMLElement notCapp("arta", "");
    const format bad = static_cast<format>(2);
    struct Case { std::function<void()> action; std::string expected; } cases[] = {
        {[&] { capp x(&other); }, "Not a CAPP."},
        {[&] { capp x(&arta); }, "Not a CAPP model."},
        {[&] { c->load(kExample, bad); }, "Unsupported file format."},
        {[&] { c->save(tempPath("capp_bad"), bad); }, "Output format not supported for CAPPs."},
        {[&] { c->computeLikelihood(nullptr); }, "Not implemented."},
        {[&] { c->computeDistribution(2, 1); }, "Invalid range for distribution."},
        {[] { capp(new CPH(denseT(), denseTau()), new ARIMA()); }, "CAPP requires acyclic phase-type distribution."},
        {[] { capp(new CPH(mat({{-2}}), row({1})), new ARIMA()).getNextRandomVariate(); },
         "Initialize Random Number Generation first."},
        // A failed load leaves no marginal behind, and says so.
        {[&] { c->load(&notCapp); }, "Not a CAPP."},
        {[&] { c->getMoments(1, 1); }, "No phase-type distribution."},
    };
    for (Case& k : cases) EXPECT_EQ(messageOf(k.action, "capp"), k.expected);
}
