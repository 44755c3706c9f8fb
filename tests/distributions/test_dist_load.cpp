// The distribution readers: defaults, units and value mapping of the
// key-value and XML forms, the vector families' own steps, every message,
// and the text of each family read back to the same object.
#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <memory>
#include <string>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "distributions/dist.h"
#include "distributions/dist_load.h"

using namespace velmora;

namespace {

std::string writeFile(const std::string& name, const std::string& text) {
    std::string path = testing::TempDir() + "dist_load_" + name;
    std::ofstream(path.c_str(), std::ios::binary) << text;
    return path;
}

// Reads key-value lines through a file, as a model file is read.
std::unique_ptr<Dist> readConfig(const std::string& text) {
    Config c(writeFile("kv.cfg", text));
    return std::unique_ptr<Dist>(loadDistribution(&c));
}

// Reads the text of one `dist` element inside a `velmora` document.
std::unique_ptr<Dist> readXml(const std::string& dist) {
    XMLConfig document(writeFile("doc.xml", "<velmora>\n" + dist + "</velmora>\n"));
    return std::unique_ptr<Dist>(loadDistribution(&document));
}

std::string failure(const std::function<void()>& f) {
    try {
        f();
    } catch (Exception& e) {
        EXPECT_EQ(e.file, "dist") << e.message;
        return e.message;
    }
    return "(no exception)";
}

struct ReadCase {
    const char* text;
    std::shared_ptr<Dist> expected;
};

template <class D, class... A>
std::shared_ptr<Dist> make(A... args) {
    return std::make_shared<D>(args...);
}

void expectSame(Dist* read, Dist* expected, const std::string& what) {
    ASSERT_NE(read, nullptr) << what;
    EXPECT_EQ(read->getType(), expected->getType()) << what;
    EXPECT_EQ(read->toString(FORMAT_CONFIG), expected->toString(FORMAT_CONFIG)) << what;
}

}  // namespace

TEST(DistLoad, KeyValueConfigurationWithoutDistributionGivesNull) { EXPECT_EQ(readConfig("rate = 2\n"), nullptr); }

TEST(DistLoad, KeyValueReaderTakesDefaultsUnitsAndListsOfItsFamilyOnly) {
    const ReadCase cases[] = {
        {"distribution = uniform\n", make<Uniform>(0.0, 1.0)},
        {"distribution = uniform\nrate = 5\nb = 3\n", make<Uniform>(0.0, 3.0)},
        {"distribution = triangular\n", make<Triangular>(0.0, 1.0, 0.5)},
        {"distribution = chisquare\n", make<ChiSquare>(2u)},
        {"distribution = chisquare\nk = 5\n", make<ChiSquare>(5u)},
        {"distribution = deterministic\nval = 3.5\n", make<Deterministic>(3.5)},
        {"distribution = exponential\nrate = 2\n", make<Exponential>(2.0)},
        {"distribution = normal\nmean = 1\nvar = 4\n", make<Normal>(1.0, 2.0)},
        {"distribution = lognormal\nmu = 1\nsigma2 = 0.25\n", make<Lognormal>(1.0, 0.5)},
        {"distribution = erlang\nphases = 3\nrate = 2\n", make<Erlang>(3u, 2.0)},
        {"distribution = erlang\n", make<Erlang>(1u, 1.0)},
        {"distribution = weibull\nalpha = 2\nbeta = 3\n", make<Weibull>(2.0, 3.0)},
        {"distribution = gamma\nalpha = 2\n", make<Gamma>(2.0, 1.0)},
        {"distribution = beta\nalpha1 = 2\nalpha2 = 3\n", make<Beta>(2.0, 3.0)},
        {"distribution = pearsonV\nalpha = 3\nbeta = 2\n", make<PearsonV>(3.0, 2.0)},
        {"distribution = pearsonVI\nalpha1 = 2\nalpha2 = 3\nbeta = 1.5\n", make<PearsonVI>(2.0, 3.0, 1.5)},
        {"distribution = hyperexponential\nphases = 2\nprob = 0.5 0.5\nrates = 1 2\n",
         make<HyperExponential>(std::vector<double>{1, 2}, std::vector<double>{0.5, 0.5})},
        // Off by 0.003: within the reader's and the family's tolerance.
        {"distribution = hyperexponential\nphases = 2\nprob = 0.5 0.503\nrates = 1 2\n",
         make<HyperExponential>(std::vector<double>{1, 2}, std::vector<double>{0.5, 0.503})},
        // The count of phases has no effect.
        {"distribution = hypoexponential\nphases = 7\nrates = 1 2 3\n",
         make<HypoExponential>(std::vector<double>{1, 2, 3})},
        // Probabilities far from 1 are normalised.
        {"distribution = hypererlang\nphases = 2 1\nrates = 1 5\nprob = 2 2\n",
         make<HyperErlang>(std::vector<unsigned>{2, 1}, std::vector<double>{1, 5}, std::vector<double>{0.5, 0.5})},
        {"distribution = hypererlang\nbranches = 2\nphases = 2 1\nrates = 1 5\nprob = 0.3 0.7\n",
         make<HyperErlang>(std::vector<unsigned>{2, 1}, std::vector<double>{1, 5}, std::vector<double>{0.3, 0.7})},
    };
    for (const ReadCase& c : cases) expectSame(readConfig(c.text).get(), c.expected.get(), c.text);
}

TEST(DistLoad, SameNumberMeansDifferentThingsInTheTwoForms) {
    std::unique_ptr<Dist> kv = readConfig("distribution = normal\nvar = 4\n");
    std::unique_ptr<Dist> xml = readXml("<dist><normaldist><std>4</std></normaldist></dist>");
    EXPECT_EQ(static_cast<Normal*>(kv.get())->getSD(), 2);
    EXPECT_EQ(static_cast<Normal*>(xml.get())->getSD(), 4);
    std::unique_ptr<Dist> rate = readConfig("distribution = exponential\nrate = 2\n");
    std::unique_ptr<Dist> mean = readXml("<dist><expodist><mean>0.5</mean></expodist></dist>");
    EXPECT_EQ(static_cast<Exponential*>(rate.get())->getRate(), static_cast<Exponential*>(mean.get())->getRate());
}

TEST(DistLoad, XmlReaderTakesItsOwnTagsAndTheFirstFamilyOfItsList) {
    const ReadCase cases[] = {
        {"<dist><uniformdist><a>1</a><b>4</b></uniformdist></dist>", make<Uniform>(1.0, 4.0)},
        {"<dist><expodist></expodist></dist>", make<Exponential>(1.0)},
        {"<dist><normaldist><mean>1</mean><std>2</std></normaldist></dist>", make<Normal>(1.0, 2.0)},
        {"<dist><lognormaldist><mu>1</mu><sigma>0.5</sigma></lognormaldist></dist>", make<Lognormal>(1.0, 0.5)},
        {"<dist><erlangdist><phases>4</phases><rate>3</rate></erlangdist></dist>", make<Erlang>(4u, 3.0)},
        {"<dist><hypererlangdist><prob>0.5 0.5</prob><phases>2 3</phases><rates>1 4</rates></hypererlangdist></dist>",
         make<HyperErlang>(std::vector<unsigned>{2, 3}, std::vector<double>{1, 4}, std::vector<double>{0.5, 0.5})},
        {"<dist><weibulldist><shape>2</shape><scale>3</scale></weibulldist></dist>", make<Weibull>(2.0, 3.0)},
        {"<dist><gammadist><shape>2.5</shape><scale>0.5</scale></gammadist></dist>", make<Gamma>(2.5, 0.5)},
        {"<dist><triangulardist><b>3</b></triangulardist></dist>", make<Triangular>(0.0, 3.0, 0.5)},
        {"<dist><chisquaredist><deg>5</deg></chisquaredist></dist>", make<ChiSquare>(5u)},
        // The order of the reader's list decides, not the document's.
        {"<dist><gammadist><shape>2</shape></gammadist><uniformdist><b>2</b></uniformdist></dist>",
         make<Uniform>(0.0, 2.0)},
        {"<dist><betadist></betadist><erlangdist><phases>2</phases></erlangdist></dist>", make<Erlang>(2u, 1.0)},
    };
    for (const ReadCase& c : cases) expectSame(readXml(c.text).get(), c.expected.get(), c.text);
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
    const char* hyperErlDims = "Dimensions for Hyper-Erlang vectors do not match.";
    const char* hyperErlSum = "Sum of initial probabilities for Hyper-Erlang must equal 1.";
    auto kv = [](const char* text) { return [text] { readConfig(text); }; };
    auto xml = [](const char* text) { return [text] { readXml(text); }; };
    const Case cases[] = {
        {"type name with a capital", kv("distribution = Normal\n"), "Unknown distribution"},
        {"default that does not fit", kv("distribution = uniform\na = 2\n"), "Invalid range for uniform distribution"},
        {"hyperexp sum", kv("distribution = hyperexponential\nphases = 2\nprob = 0.5 0.6\nrates = 1 2\n"), hyperExpSum},
        {"hyperexp single probability", kv("distribution = hyperexponential\nphases = 1\nprob = 1\nrates = 1\n"),
         hyperExpSum},
        {"hyperexp count", kv("distribution = hyperexponential\nphases = 3\nprob = 0.5 0.5\nrates = 1 2\n"),
         hyperExpDims},
        {"hyperexp without prob", kv("distribution = hyperexponential\nrates = 1\n"), hyperExpDims},
        {"hyperexp negative rate", kv("distribution = hyperexponential\nphases = 2\nprob = 0.5 0.5\nrates = 1 -2\n"),
         "Invalid parameters for Hyper-Exponential distribution."},
        {"hypoexp negative rate", kv("distribution = hypoexponential\nrates = 1 -2\n"),
         "Invalid parameters for Hypo-Exponential distribution."},
        {"hypererlang sum within the reader's slack",
         kv("distribution = hypererlang\nphases = 1 1\nrates = 1 2\nprob = 0.499 0.499\n"),
         "Invalid parameters for Hyper-Erlang distribution."},
        {"hypererlang lengths", kv("distribution = hypererlang\nphases = 2 1\nrates = 1\nprob = 0.5 0.5\n"),
         hyperErlDims},
        {"hypererlang branches",
         kv("distribution = hypererlang\nbranches = 3\nphases = 2 1\nrates = 1 2\nprob = 1 1\n"), hyperErlDims},
        {"erlang negative phases", kv("distribution = erlang\nphases = -1\n"), "Negative number of phases."},
        {"hypererlangdist negative phases", xml("<dist><hypererlangdist><prob>1</prob><phases>-2</phases>"
                                                "<rates>1</rates></hypererlangdist></dist>"),
         "Negative number of phases."},
        {"erlang rate 0", kv("distribution = erlang\nrate = 0\n"), "Invalid rate for erlang distribution"},
        {"johnson", kv("distribution = johnson\n"), "Distribution family johnson is not available yet."},
        {"geometric", kv("distribution = geometric\np = 0.3\n"), "Distribution family geometric is not available yet."},
        {"hypogeometric", kv("distribution = hypogeometric\np = 0.3 0.5\n"),
         "Distribution family hypogeometric is not available yet."},
        {"root is not velmora",
         [] {
             XMLConfig d(writeFile("other.xml", "<model><dist><expodist></expodist></dist></model>"));
             delete loadDistribution(&d);
         },
         notDist},
        {"velmora without dist",
         [] {
             XMLConfig d(writeFile("nodist.xml", "<velmora><arima></arima></velmora>"));
             delete loadDistribution(&d);
         },
         notDist},
        {"element is not dist",
         [] {
             std::unique_ptr<XMLElement> e(
                 XMLConfig::parseXML("<distribution><expodist></expodist></distribution>", nullptr));
             delete loadDistribution(e.get());
         },
         notDist},
        {"empty dist", xml("<dist></dist>"), unsupported},
        {"written-only family", xml("<dist><betadist><alpha1>2</alpha1></betadist></dist>"), unsupported},
        {"johnson element", xml("<dist><johnsondist><type>SU</type></johnsondist></dist>"),
         "Distribution family johnson is not available yet."},
        {"hypererlangdist sum",
         xml("<dist><hypererlangdist><prob>0.4 0.5</prob><phases>1 1</phases>"
             "<rates>1 2</rates></hypererlangdist></dist>"),
         hyperErlSum},
        {"hypererlangdist lengths",
         xml("<dist><hypererlangdist><prob>0.5 0.5</prob><phases>1</phases>"
             "<rates>1 2</rates></hypererlangdist></dist>"),
         hyperErlDims},
        {"hypererlangdist empty", xml("<dist><hypererlangdist></hypererlangdist></dist>"),
         "Invalid parameters for Hyper-Erlang distribution."},
        {"gammadist shape", xml("<dist><gammadist><shape>-1</shape></gammadist></dist>"),
         "Invalid parameters for gamma distribution."},
    };
    for (const Case& c : cases) EXPECT_EQ(failure(c.read), c.message) << c.what;
}

TEST(DistLoad, TextOfEveryFamilyReadsBackToTheSameObject) {
    const std::shared_ptr<Dist> families[] = {
        make<Deterministic>(2.5),
        make<Uniform>(1.0, 3.0),
        make<Exponential>(2.0),
        make<Normal>(1.0, 2.0),
        make<Lognormal>(0.5, 0.75),
        make<Erlang>(3u, 2.0),
        make<HyperExponential>(std::vector<double>{1, 2.5}, std::vector<double>{0.25, 0.75}),
        make<HypoExponential>(std::vector<double>{1, 2}),
        make<HyperErlang>(std::vector<unsigned>{2, 1}, std::vector<double>{1, 5}, std::vector<double>{0.3, 0.7}),
        make<Weibull>(2.0, 3.0),
        make<Gamma>(2.0, 0.5),
        make<Beta>(2.0, 3.0),
        make<PearsonV>(3.0, 2.0),
        make<PearsonVI>(2.0, 3.0, 1.5),
        make<Triangular>(0.0, 2.0, 0.5),
        make<ChiSquare>(4u),
    };
    for (const auto& d : families) {
        std::string text = d->toString(FORMAT_CONFIG);
        expectSame(readConfig(text).get(), d.get(), text);
    }
}

TEST(DistLoad, XmlTextReadsBackWhereTheReaderKnowsTheFamily) {
    const std::shared_ptr<Dist> readable[] = {
        make<Uniform>(1.0, 3.0),
        make<Exponential>(2.0),
        make<Normal>(1.0, 2.0),
        make<Lognormal>(0.5, 0.75),
        make<Erlang>(3u, 2.0),
        make<HyperErlang>(std::vector<unsigned>{2, 1}, std::vector<double>{1, 5}, std::vector<double>{0.3, 0.7}),
        make<Weibull>(2.0, 3.0),
        make<Gamma>(2.0, 0.5),
        make<Triangular>(0.0, 2.0, 0.5),
        make<ChiSquare>(4u),
    };
    for (const auto& d : readable) {
        std::string text = d->toString(FORMAT_XML);
        expectSame(readXml(text).get(), d.get(), text);
    }
    // Written, but not read.
    const std::shared_ptr<Dist> writtenOnly[] = {
        make<HyperExponential>(std::vector<double>{1, 2.5}, std::vector<double>{0.25, 0.75}),
        make<HypoExponential>(std::vector<double>{1, 2}),
        make<Beta>(2.0, 3.0),
        make<PearsonV>(3.0, 2.0),
        make<PearsonVI>(2.0, 3.0, 1.5),
    };
    for (const auto& d : writtenOnly) {
        std::string text = d->toString(FORMAT_XML);
        EXPECT_EQ(failure([&] { readXml(text); }), "Unsupported distribution.") << text;
    }
}
