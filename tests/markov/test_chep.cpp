// CHEP: the branches as paths, the text forms of both types, the type-2
// integral against its straightforward form and against ARTA, generated
// traces against the analytic autocorrelations, and the refusals.

#include "config/conf.h"
#include "distributions/dist_erlang.h"
#include "distributions/dist_hypererlang.h"
#include "core/process.h"
#include "fitting/process_factory.h"
#include "markov/chep.h"
#include "markov_helpers.h"
#include "timeseries/arima.h"
#include "timeseries/arta.h"
#include "traces/trace.h"

using namespace velmora;
using namespace markov_test;

namespace {

const std::string kExample1 = std::string(VELMORA_SOURCE_DIR) + "/examples/chep.xml";
const std::string kExample2 = std::string(VELMORA_SOURCE_DIR) + "/examples/chep_type2.xml";

// Branches given out of order: means 2, 0.5 and 4.
std::unique_ptr<chep> model(chep_type t, double ar = 0.8) {
    return std::make_unique<chep>(new HyperErlang({3, 1, 2}, {1.5, 2.0, 0.5}, {0.3, 0.5, 0.2}),
                                  new ARIMA({ar}, {}, 0, 0, 1, 0, ""), t);
}

double summaryLag1(const std::string& out) {
    const std::string key = "Autocorrelation at lag 1: ";
    size_t block = out.find("CHEP Autocorrelation:");
    return block == std::string::npos ? -99 : std::stod(out.substr(out.find(key, block) + key.size()));
}

}  // namespace

TEST(CHEP, BranchesAreSortedPathsAndTextFormsReadBack) {
    for (chep_type t : {CHEP_TYPE_1, CHEP_TYPE_2}) {
        std::unique_ptr<chep> c = model(t);
        EXPECT_EQ(c->getProcessDescription(), "CHEP(6,1,0)");
        const double p[] = {0.5, 0.3, 0.2}, m[] = {0.5, 2, 4};
        ASSERT_EQ(c->getPaths().size(), 3u);
        for (unsigned i = 0; i < 3; i++) {
            EXPECT_EQ(c->getPaths()[i].first, p[i]);
            EXPECT_EQ(c->getPathMeans()[i], m[i]);
        }
        EXPECT_NEAR(c->getBaseProcess()->getAutocovariance(0), 1.0, 1e-12);
        for (format f : {FORMAT_CONFIG, FORMAT_XML}) {
            std::string path = tempPath("chep_" + std::to_string(t) + std::to_string(f));
            c->save(path, f);
            chep back(path, f);
            EXPECT_EQ(back.getType(), t);
            EXPECT_EQ(back.toString(f), c->toString(f)) << f;
        }
        const std::string text = c->toString(FORMAT_CONFIG), xml = c->toString(FORMAT_XML);
        EXPECT_EQ(text.substr(0, 36), "model = chep\ndistribution = hypererl");
        EXPECT_EQ(text.find("type = type2\n") != std::string::npos, t == CHEP_TYPE_2);
        EXPECT_EQ(xml.find("<type>2</type>\n</chep>\n") != std::string::npos, t == CHEP_TYPE_2);
        // Type 1 carries the equivalent capp behind its own element.
        EXPECT_EQ(xml.find("</chep>\n<capp>\n") != std::string::npos, t == CHEP_TYPE_1);
    }
    // Any type text other than "type2" (or "2" in XML) is type 1.
    Config config;
    config.loadConfigFromFile(writeFile("chep_t1.txt", model(CHEP_TYPE_2)->toString(FORMAT_CONFIG)), true);
    config.setValue("type", "type1", true);
    EXPECT_EQ(chep(&config).getType(), CHEP_TYPE_1);
    std::string xml = model(CHEP_TYPE_2)->toString(FORMAT_XML);
    xml.replace(xml.find("<type>2"), 7, "<type>1");
    XMLConfig document(writeFile("chep_t1.xml", "<velmora>" + xml + "</velmora>"));
    EXPECT_EQ(chep(&document).getType(), CHEP_TYPE_1);

    std::unique_ptr<chep> c = model(CHEP_TYPE_1);
    const std::string summary = c->getSummary();
    EXPECT_EQ(summary.substr(0, 65), "CHEP statistics:\n========================\nMarginal Distribution:\n");
    EXPECT_NE(summary.find("mean: 1.65\nvariance: 3.9275\n"), std::string::npos);
    EXPECT_NE(summary.find("CHEP Joint Moments:\n"), std::string::npos);
    c->setType(CHEP_TYPE_2);
    EXPECT_EQ(messageOf([&] { c->getSummary(); }, "chep"), "Not implemented.");
}

// The grid form equals the straightforward nested Romberg on two marginals;
// one branch of type 2 is an ARTA with an Erlang marginal; one branch of
// type 1 carries no correlation; type 1 is the capp of the equivalent CPH.
TEST(CHEP, AutocorrelationsAgainstDirectFormArtaAndCapp) {
    const std::vector<double> rho = {0.9, 0.3, -0.5};
    HyperErlang a({3, 1, 2}, {1.5, 2.0, 0.5}, {0.3, 0.5, 0.2}), b({1, 4}, {1.0, 0.5}, {0.6, 0.4});
    for (HyperErlang* h : {&a, &b}) {
        h->sortBranches();
        std::vector<double> grid = chep::compute_type2_autocorrelation(h, rho);
        std::vector<double> direct = chep::compute_type2_autocorrelation_direct(h, rho);
        for (size_t k = 0; k < rho.size(); k++) EXPECT_NEAR(grid[k], direct[k], 1e-12) << k;
        EXPECT_GT(grid[0], grid[1]);
        EXPECT_LT(grid[2], 0.0);
    }
    HyperErlang one({3}, {2.0}, {1.0});
    Erlang erlang(3, 2.0);
    std::vector<double> type2 = chep::compute_type2_autocorrelation(&one, rho);
    std::vector<double> arta = arta_process_compute_autocorrelations(&erlang, rho);
    for (size_t k = 0; k < rho.size(); k++) EXPECT_NEAR(type2[k], arta[k], 1e-12) << k;

    chep single(new HyperErlang({3}, {2.0}, {1.0}), new ARIMA({0.9}, {}, 0, 0, 1, 0, ""), CHEP_TYPE_1);
    for (double r : single.getAutocorrelations(1, 3)) EXPECT_NEAR(r, 0.0, 1e-8);
    std::unique_ptr<chep> c = model(CHEP_TYPE_1);
    capp equivalent(new CPH(c->getACPH()->getT(), c->getACPH()->getTau()), new ARIMA({0.8}, {}, 0, 0, 1, 0, ""));
    std::vector<double> viaChep = c->getAutocorrelations(0, 4), viaCapp = equivalent.getAutocorrelations(0, 4);
    for (size_t k = 0; k < 5; k++) EXPECT_NEAR(viaChep[k], viaCapp[k], 1e-9) << k;
    expectNear(c->getJointMoments(1, 2), equivalent.getJointMoments(1, 2), 1e-9, "joint moments");
}

// Lags 1..3 of 400 000 values at seed 11, and sylvar's 100 000 values of the
// examples against the summary (type 1) and the analysis (type 2).
TEST(CHEP, GeneratedTracesFollowTheAutocorrelations) {
    for (chep_type t : {CHEP_TYPE_1, CHEP_TYPE_2}) {
        std::unique_ptr<chep> c = model(t);
        std::unique_ptr<Trace> trace(c->simulate(1, 400000, 0, 11));
        std::vector<double> expected = c->getAutocorrelations(1, 3), sample = trace->getAutocorrelations(1, 3);
        for (unsigned k = 0; k < 3; k++) EXPECT_NEAR(sample[k], expected[k], 0.015) << t << " lag " << k + 1;
    }
    std::string path = tempPath("chep_trace.txt");
    std::string out = runSylvar("-model=" + kExample1 + " -trace=" + path + " -seed=7 -observations=100000").out;
    EXPECT_GT(summaryLag1(out), 0.2) << out;
    EXPECT_NEAR(Trace(path, false).getAutocorrelations(1, 1)[0], summaryLag1(out), 0.03);

    XMLConfig document(kExample2);
    std::unique_ptr<Process> two(load_process(&document));
    const double expected = two->getAutocorrelations(1, 1)[0];
    out = runSylvar("-model=" + kExample2 + " -trace=" + path + " -seed=7 -observations=100000").out;
    EXPECT_NE(out.find("Error in: chep, line "), std::string::npos);  // the summary's joint moments
    EXPECT_NEAR(Trace(path, false).getAutocorrelations(1, 1)[0], expected, 0.03);
    std::string saved = tempPath("chep_saved.xml");
    two->save(saved, FORMAT_XML);
    runSylvar("-model=" + saved + " -trace=" + path + " -seed=3 -observations=100000");
    EXPECT_NEAR(Trace(path, false).getAutocorrelations(1, 1)[0], expected, 0.03);
}

TEST(CHEP, BadModelsAreReportedBySylvar) {
    const std::string arima = "<arima><ar>0.5</ar></arima>";
    auto dist = [](const std::string& body) { return "<dist>" + body + "</dist>"; };
    const std::string he = dist("<hypererlangdist><prob>1</prob><phases>2</phases><rates>1</rates></hypererlangdist>");
    struct Case { std::string document, expected; } cases[] = {
        {"<velmora><chep>" + he + "</chep></velmora>", "chep, line N: Invalid CHEP."},
        {"<velmora><chep>" + arima + "</chep></velmora>", "chep, line N: Invalid CHEP."},
        {"<velmora><chep>" + arima + dist("<uniformdist><min>0</min><max>1</max></uniformdist>") + "</chep></velmora>",
         "chep, line N: Invalid CHEP."},
        {"<velmora><chep>" + arima + dist("<hypererlangdist><prob>0.5</prob><phases>2</phases><rates>1</rates>"
                                          "</hypererlangdist>") + "</chep></velmora>",
         "dist, line N: Sum of initial probabilities for Hyper-Erlang must equal 1."},
        {"<velmora><chep>" + arima + dist("<unknowndist></unknowndist>") + "</chep></velmora>",
         "dist, line N: Unsupported distribution."},
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

TEST(CHEP, RefusalsOfTheLibraryInterface) {
    std::unique_ptr<chep> c = model(CHEP_TYPE_2);
    XMLConfig other(writeFile("other.xml", "<velmora><capp></capp></velmora>"));
    Config uniform, arta;
    uniform.setValue("distribution", "uniform", true);
    arta.loadConfigFromFile(writeFile("chep_arta.txt", c->toString(FORMAT_CONFIG)), true);
    arta.setValue("model", "arta", true);
    XMLElement notChep("capp", "");
    struct Case { std::function<void()> action; std::string expected; } cases[] = {
        {[&] { chep x(&other); }, "Not a CHEP."},
        {[&] { c->load(&notChep); }, "Not a CHEP."},
        {[&] { chep x(&arta); }, "Not an CHEP model."},
        {[&] { c->toString(static_cast<format>(2)); }, "Output format not supported for CHEPs."},
        {[&] { c->getJointMoments(1, 2); }, "Not implemented."},
        {[&] { c->getNextRandomVariate(); }, "Initialize Random Number Generation first."},
        {[] { chep(nullptr, new ARIMA(), CHEP_TYPE_1); }, "No hyper-Erlang distribution."},
        {[] { chep(new HyperErlang({1}, {1.0}, {1.0}), nullptr, CHEP_TYPE_1); }, "No base process."},
        // A failed load leaves no marginal behind.
        {[&] { c->load(&uniform); }, "CHEP requires Hyper-Erlang distribution."},
        {[&] { c->evalCDF(1); }, "No hyper-Erlang distribution."},
    };
    for (Case& k : cases) EXPECT_EQ(messageOf(k.action, "chep"), k.expected);
}

// Inputs that once crashed, hung or grew past memory; each now ends in a
// message at once.
TEST(CHEP, ModelsBeyondTheBoundsAreRefusedBeforeTheWork) {
    const std::string kv = "model = chep\ndistribution = hypererlang\nbranches = 2\nphases = 1 2\nrates = 1 2\n"
                           "prob = 0.5 0.5\nar = 0.5\n";
    auto branches = [](const std::string& phases, const std::string& prob, const std::string& rates) {
        std::string text = readFile(kExample1);
        text.replace(text.find("1 3 2 "), 6, phases);
        text.replace(text.find("0.500000 0.300000 0.200000 "), 27, prob);
        text.replace(text.find("2.000000 1.500000 0.500000 "), 27, rates);
        return writeFile("chep_large.xml", text);
    };
    // As sylvar's command line names it: the key of the class, the file as its value.
    auto load = [](const std::string& name, const std::string& text) {
        Config c;
        c.setValue("chep", writeFile(name, text), true);
        delete load_process(&c);
    };
    const std::string dense = "A phase-type form of ";
    struct Case { std::function<void()> action; std::string source, expected; } cases[] = {
        // The reader builds no distribution without the key.
        {[&] { load("chep_nodist.conf", "ar = 0.5\n"); }, "chep", "CHEP requires Hyper-Erlang distribution."},
        {[&] { load("chep_flat.conf", kv + "arma_variance = 0\ntype = type2\n"); }, "capp",
         "The base process has no variance to normalise (0)."},
        {[&] { chep(branches("1  230000 1.50 ", "0.3 0.3 0.4 ", "1 2 3 "), FORMAT_XML); }, "matrix",
         dense + "230002 phases needs matrices of 230002 x 230002 values (394.1 GiB each); the limit is 1000 phases "
                 "(7.6 MiB)."},
        {[&] { chep(branches("1000000 1000000 ", "0.5 0.5 ", "2 1.5 "), FORMAT_XML); }, "matrix",
         dense + "2000000 phases needs matrices of 2000000 x 2000000 values (29.1 TiB each); the limit is 1000 "
                 "phases (7.6 MiB)."},
    };
    for (Case& k : cases) EXPECT_EQ(messageOf(k.action, k.source), k.expected);
    // 32 branches: 528 pairs, one integral per pair and lag.
    HyperErlang wide(std::vector<unsigned>(32, 1), std::vector<double>(32, 1.0), std::vector<double>(32, 1.0 / 32));
    EXPECT_EQ(messageOf([&] { chep::compute_type2_autocorrelation(&wide, {0.5, 0.4, 0.3, 0.2}); }, "chep"),
              "The type-2 autocorrelations of 32 branches at 4 lags need 2112 double integrals; the limit is 2000.");
    // At the limit the model stands.
    EXPECT_NO_THROW(chep(branches("500 500 ", "0.5 0.5 ", "2 1.5 "), FORMAT_XML));
}
