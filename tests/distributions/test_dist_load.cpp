// The distribution readers: defaults, units and value mapping of the
// key-value and XML forms, the vector families' own steps and every message.
// Each family's own text read back is tested with its layouts.
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
using namespace disttest;

namespace {

template <class D, class... A>
std::shared_ptr<Dist> make(A... args) {
    return std::make_shared<D>(args...);
}

using U = std::vector<unsigned>;
using V = std::vector<double>;

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
    const char* hyperErl = "Invalid parameters for Hyper-Erlang distribution.";
    const char* hyperErlDims = "Dimensions for Hyper-Erlang vectors do not match.";
    const char* negative = "Negative number of phases.";
    const char* johnson = "Distribution family johnson is not available yet.";
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
        // A single probability is not read as a list: its sum is 0.
        {"hyperexp single probability", kv("distribution = hyperexponential\nphases = 1\nprob = 1\nrates = 1\n"),
         hyperExpSum},
        {"hyperexp count", kv("distribution = hyperexponential\nphases = 3\nprob = 0.5 0.5\nrates = 1 2\n"),
         "Dimensions for Hyper-Exponential vectors do not match."},
        {"hyperexp negative rate", kv("distribution = hyperexponential\nphases = 2\nprob = 0.5 0.5\nrates = 1 -2\n"),
         "Invalid parameters for Hyper-Exponential distribution."},
        {"hypererlang sum within the reader's slack",
         kv("distribution = hypererlang\nphases = 1 1\nrates = 1 2\nprob = 0.499 0.499\n"), hyperErl},
        {"hypererlang lengths", kv("distribution = hypererlang\nphases = 2 1\nrates = 1\nprob = 0.5 0.5\n"),
         hyperErlDims},
        {"hypererlang branches",
         kv("distribution = hypererlang\nbranches = 3\nphases = 2 1\nrates = 1 2\nprob = 1 1\n"), hyperErlDims},
        {"erlang negative phases", kv("distribution = erlang\nphases = -1\n"), negative},
        {"hypererlang negative phases", kv("distribution = hypererlang\nphases = 1 -2\nrates = 1 1\nprob = 1 1\n"),
         negative},
        {"erlang rate 0", kv("distribution = erlang\nrate = 0\n"), "Invalid rate for erlang distribution"},
        {"johnson", kv("distribution = johnson\n"), johnson},
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
        {"johnson element", xml("<dist><johnsondist><type>SU</type></johnsondist></dist>"), johnson},
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
    };
    for (const Case& c : cases) EXPECT_EQ(failure(c.read), c.message) << c.what;
}
