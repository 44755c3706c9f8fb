// The distribution readers: defaults, units and value mapping of the
// key-value and XML forms, the vector families' own steps, every message,
// and the text of each family read back to the same object.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "config/conf.h"
#include "dist_helpers.h"
#include "distributions/dist.h"
#include "distributions/dist_load.h"

using namespace velmora;
using disttest::failure;
using disttest::writeFile;

namespace {

// Reads key-value lines through a file, as a model file is read.
std::unique_ptr<Dist> readConfig(const std::string& text) {
    Config c(writeFile("load_kv.cfg", text));
    return std::unique_ptr<Dist>(loadDistribution(&c));
}

// Reads the text of one `dist` element inside a `velmora` document.
std::unique_ptr<Dist> readXml(const std::string& dist) {
    XMLConfig document(writeFile("load_doc.xml", "<velmora>\n" + dist + "</velmora>\n"));
    return std::unique_ptr<Dist>(loadDistribution(&document));
}

template <class D, class... A>
std::shared_ptr<Dist> make(A... args) {
    return std::make_shared<D>(args...);
}

using U = std::vector<unsigned>;
using V = std::vector<double>;

void expectSame(Dist* read, Dist* expected, const std::string& what) {
    ASSERT_NE(read, nullptr) << what;
    EXPECT_EQ(read->getType(), expected->getType()) << what;
    EXPECT_EQ(read->toString(FORMAT_CONFIG), expected->toString(FORMAT_CONFIG)) << what;
}

}  // namespace

TEST(DistLoad, ReadersTakeDefaultsUnitsAndListsOfTheirFamilyOnly) {
    EXPECT_EQ(readConfig("rate = 2\n"), nullptr);
    struct Case {
        bool xml;
        const char* text;
        std::shared_ptr<Dist> expected;
    };
    const Case cases[] = {
        {false, "distribution = uniform\n", make<Uniform>(0.0, 1.0)},
        {false, "distribution = uniform\nrate = 5\nb = 3\n", make<Uniform>(0.0, 3.0)},
        {false, "distribution = triangular\n", make<Triangular>(0.0, 1.0, 0.5)},
        {false, "distribution = chisquare\n", make<ChiSquare>(2u)},
        {false, "distribution = erlang\n", make<Erlang>(1u, 1.0)},
        {false, "distribution = gamma\nalpha = 2\n", make<Gamma>(2.0, 1.0)},
        // Variance and sigma squared in the key-value form.
        {false, "distribution = normal\nmean = 1\nvar = 4\n", make<Normal>(1.0, 2.0)},
        {false, "distribution = lognormal\nmu = 1\nsigma2 = 0.25\n", make<Lognormal>(1.0, 0.5)},
        // Off by 0.003: within the reader's and the family's tolerance.
        {false, "distribution = hyperexponential\nphases = 2\nprob = 0.5 0.503\nrates = 1 2\n",
         make<HyperExponential>(V{1, 2}, V{0.5, 0.503})},
        // The count of phases has no effect.
        {false, "distribution = hypoexponential\nphases = 7\nrates = 1 2 3\n", make<HypoExponential>(V{1, 2, 3})},
        // Probabilities far from 1 are normalised.
        {false, "distribution = hypererlang\nphases = 2 1\nrates = 1 5\nprob = 2 2\n",
         make<HyperErlang>(U{2, 1}, V{1, 5}, V{0.5, 0.5})},
        // Standard deviation and mean in the XML form.
        {true, "<dist><normaldist><std>4</std></normaldist></dist>", make<Normal>(0.0, 4.0)},
        {true, "<dist><expodist><mean>0.5</mean></expodist></dist>", make<Exponential>(2.0)},
        {true, "<dist><expodist></expodist></dist>", make<Exponential>(1.0)},
        {true, "<dist><triangulardist><b>3</b></triangulardist></dist>", make<Triangular>(0.0, 3.0, 0.5)},
        // The order of the reader's list decides, not the document's.
        {true, "<dist><gammadist><shape>2</shape></gammadist><uniformdist><b>2</b></uniformdist></dist>",
         make<Uniform>(0.0, 2.0)},
        {true, "<dist><betadist></betadist><erlangdist><phases>2</phases></erlangdist></dist>",
         make<Erlang>(2u, 1.0)},
    };
    for (const Case& c : cases)
        expectSame((c.xml ? readXml(c.text) : readConfig(c.text)).get(), c.expected.get(), c.text);
}

TEST(DistLoad, EveryFaultHasItsMessage) {
    struct Case {
        const char* what;
        std::function<void()> read;
        const char* message;
    };
    const char* notDist = "Not a distribution.";
    const char* unsupported = "Unsupported distribution.";
    const char* hyperExpSum = "Sum of initial probabilities for Hyper-Exponential must equal 1.";
    const char* hyperExpDims = "Dimensions for Hyper-Exponential vectors do not match.";
    const char* hyperErl = "Invalid parameters for Hyper-Erlang distribution.";
    const char* hyperErlDims = "Dimensions for Hyper-Erlang vectors do not match.";
    auto kv = [](const char* text) { return [text] { readConfig(text); }; };
    auto xml = [](const char* text) { return [text] { readXml(text); }; };
    auto xmlFile = [](const char* text) {
        return [text] {
            XMLConfig d(writeFile("load_other.xml", text));
            delete loadDistribution(&d);
        };
    };
    const Case cases[] = {
        {"type name with a capital", kv("distribution = Normal\n"), "Unknown distribution"},
        {"default that does not fit", kv("distribution = uniform\na = 2\n"), "Invalid range for uniform distribution"},
        {"hyperexp sum", kv("distribution = hyperexponential\nphases = 2\nprob = 0.5 0.6\nrates = 1 2\n"), hyperExpSum},
        {"hyperexp single probability", kv("distribution = hyperexponential\nphases = 1\nprob = 1\nrates = 1\n"),
         hyperExpSum},
        {"hyperexp count", kv("distribution = hyperexponential\nphases = 3\nprob = 0.5 0.5\nrates = 1 2\n"),
         hyperExpDims},
        {"hyperexp negative rate", kv("distribution = hyperexponential\nphases = 2\nprob = 0.5 0.5\nrates = 1 -2\n"),
         "Invalid parameters for Hyper-Exponential distribution."},
        {"hypoexp negative rate", kv("distribution = hypoexponential\nrates = 1 -2\n"),
         "Invalid parameters for Hypo-Exponential distribution."},
        {"hypererlang sum within the reader's slack",
         kv("distribution = hypererlang\nphases = 1 1\nrates = 1 2\nprob = 0.499 0.499\n"), hyperErl},
        {"hypererlang lengths", kv("distribution = hypererlang\nphases = 2 1\nrates = 1\nprob = 0.5 0.5\n"),
         hyperErlDims},
        {"hypererlang branches",
         kv("distribution = hypererlang\nbranches = 3\nphases = 2 1\nrates = 1 2\nprob = 1 1\n"), hyperErlDims},
        {"erlang negative phases", kv("distribution = erlang\nphases = -1\n"), "Negative number of phases."},
        {"hypererlangdist negative phases",
         xml("<dist><hypererlangdist><prob>1</prob><phases>-2</phases><rates>1</rates></hypererlangdist></dist>"),
         "Negative number of phases."},
        {"erlang rate 0", kv("distribution = erlang\nrate = 0\n"), "Invalid rate for erlang distribution"},
        {"johnson", kv("distribution = johnson\n"), "Distribution family johnson is not available yet."},
        {"geometric", kv("distribution = geometric\np = 0.3\n"), "Distribution family geometric is not available yet."},
        {"hypogeometric", kv("distribution = hypogeometric\np = 0.3 0.5\n"),
         "Distribution family hypogeometric is not available yet."},
        {"root is not velmora", xmlFile("<model><dist><expodist></expodist></dist></model>"), notDist},
        {"velmora without dist", xmlFile("<velmora><arima></arima></velmora>"), notDist},
        {"element is not dist",
         [] {
             std::unique_ptr<XMLElement> e(
                 XMLConfig::parseXML("<distribution><expodist></expodist></distribution>", nullptr));
             delete loadDistribution(e.get());
         },
         notDist},
        {"empty dist", xml("<dist></dist>"), unsupported},
        {"johnson element", xml("<dist><johnsondist><type>SU</type></johnsondist></dist>"),
         "Distribution family johnson is not available yet."},
        // The XML form admits no slack in the sum.
        {"hypererlangdist sum",
         xml("<dist><hypererlangdist><prob>0.4 0.5</prob><phases>1 1</phases><rates>1 2</rates></hypererlangdist>"
             "</dist>"),
         "Sum of initial probabilities for Hyper-Erlang must equal 1."},
        {"hypererlangdist lengths",
         xml("<dist><hypererlangdist><prob>0.5 0.5</prob><phases>1</phases><rates>1 2</rates></hypererlangdist>"
             "</dist>"),
         hyperErlDims},
        {"hypererlangdist empty", xml("<dist><hypererlangdist></hypererlangdist></dist>"), hyperErl},
        {"gammadist shape", xml("<dist><gammadist><shape>-1</shape></gammadist></dist>"),
         "Invalid parameters for gamma distribution."},
    };
    for (const Case& c : cases) EXPECT_EQ(failure(c.read), c.message) << c.what;
}

TEST(DistLoad, TextOfEveryFamilyReadsBackToTheSameObject) {
    struct Case {
        std::shared_ptr<Dist> dist;
        bool xmlReadable;  // false: the XML form is written, but not read
    };
    const Case cases[] = {
        {make<Deterministic>(2.5), false},  // no XML form at all
        {make<Uniform>(1.0, 3.0), true},
        {make<Exponential>(2.0), true},
        {make<Normal>(1.0, 2.0), true},
        {make<Lognormal>(0.5, 0.75), true},
        {make<Erlang>(3u, 2.0), true},
        {make<HyperExponential>(V{1, 2.5}, V{0.25, 0.75}), false},
        {make<HypoExponential>(V{1, 2}), false},
        {make<HyperErlang>(U{2, 1}, V{1, 5}, V{0.3, 0.7}), true},
        {make<Weibull>(2.0, 3.0), true},
        {make<Gamma>(2.0, 0.5), true},
        {make<Beta>(2.0, 3.0), false},
        {make<PearsonV>(3.0, 2.0), false},
        {make<PearsonVI>(2.0, 3.0, 1.5), false},
        {make<Triangular>(0.0, 2.0, 0.5), true},
        {make<ChiSquare>(4u), true},
    };
    for (const Case& c : cases) {
        std::string text = c.dist->toString(FORMAT_CONFIG);
        expectSame(readConfig(text).get(), c.dist.get(), text);
        if (c.dist->getType() == DIST_DETERMINISTIC) continue;
        text = c.dist->toString(FORMAT_XML);
        if (c.xmlReadable)
            expectSame(readXml(text).get(), c.dist.get(), text);
        else
            EXPECT_EQ(failure([&] { readXml(text); }), "Unsupported distribution.") << text;
    }
}
