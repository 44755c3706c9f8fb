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

// Key-value lines after "distribution = ", and the families inside one `dist` element.
std::unique_ptr<Dist> kv(const std::string& text) { return readConfig("distribution = " + text); }
std::unique_ptr<Dist> xml(const std::string& text) { return readXml("<dist>" + text + "</dist>"); }

}  // namespace

TEST(DistLoad, ReadersTakeDefaultsUnitsAndListsOfTheirFamilyOnly) {
    EXPECT_EQ(readConfig("rate = 2\n"), nullptr);
    struct Case {
        bool xml;
        const char* text;
        std::shared_ptr<Dist> expected;
    };
    const Case cases[] = {
        {false, "uniform\n", make<Uniform>(0.0, 1.0)},
        {false, "uniform\nrate = 5\nb = 3\n", make<Uniform>(0.0, 3.0)},
        {false, "triangular\n", make<Triangular>(0.0, 1.0, 0.5)},
        {false, "chisquare\n", make<ChiSquare>(2u)},
        {false, "erlang\n", make<Erlang>(1u, 1.0)},
        {false, "gamma\nalpha = 2\n", make<Gamma>(2.0, 1.0)},
        // Variance and sigma squared in the key-value form.
        {false, "normal\nmean = 1\nvar = 4\n", make<Normal>(1.0, 2.0)},
        {false, "lognormal\nmu = 1\nsigma2 = 0.25\n", make<Lognormal>(1.0, 0.5)},
        // Off by 0.003: within the reader's and the family's tolerance.
        {false, "hyperexponential\nphases = 2\nprob = 0.5 0.503\nrates = 1 2\n",
         make<HyperExponential>(V{1, 2}, V{0.5, 0.503})},
        // The count of phases has no effect.
        {false, "hypoexponential\nphases = 7\nrates = 1 2 3\n", make<HypoExponential>(V{1, 2, 3})},
        // Probabilities far from 1 are normalised.
        {false, "hypererlang\nphases = 2 1\nrates = 1 5\nprob = 2 2\n",
         make<HyperErlang>(U{2, 1}, V{1, 5}, V{0.5, 0.5})},
        // Standard deviation and mean in the XML form.
        {true, "<normaldist><std>4</std></normaldist>", make<Normal>(0.0, 4.0)},
        {true, "<expodist><mean>0.5</mean></expodist>", make<Exponential>(2.0)},
        {true, "<expodist></expodist>", make<Exponential>(1.0)},
        {true, "<triangulardist><b>3</b></triangulardist>", make<Triangular>(0.0, 3.0, 0.5)},
        // The order of the reader's list decides, not the document's.
        {true, "<gammadist><shape>2</shape></gammadist><uniformdist><b>2</b></uniformdist>", make<Uniform>(0.0, 2.0)},
        {true, "<betadist></betadist><erlangdist><phases>2</phases></erlangdist>", make<Erlang>(2u, 1.0)},
    };
    for (const Case& c : cases) expectSame((c.xml ? xml(c.text) : kv(c.text)).get(), c.expected.get(), c.text);
}

TEST(DistLoad, EveryFaultHasItsMessage) {
    const char* notDist = "Not a distribution.";
    const char* hyperExpSum = "Sum of initial probabilities for Hyper-Exponential must equal 1.";
    const char* hyperErl = "Invalid parameters for Hyper-Erlang distribution.";
    const char* hyperErlDims = "Dimensions for Hyper-Erlang vectors do not match.";
    const char* negative = "Negative number of phases.";
    const char* johnson = "Distribution family johnson is not available yet.";
    struct Case {
        bool xml;
        const char* text;
        const char* message;
    };
    const Case cases[] = {
        {false, "Normal\n", "Unknown distribution"},
        {false, "uniform\na = 2\n", "Invalid range for uniform distribution"},  // a default that does not fit
        {false, "hyperexponential\nphases = 2\nprob = 0.5 0.6\nrates = 1 2\n", hyperExpSum},
        // A single probability is not read as a list: its sum is 0.
        {false, "hyperexponential\nphases = 1\nprob = 1\nrates = 1\n", hyperExpSum},
        {false, "hyperexponential\nphases = 3\nprob = 0.5 0.5\nrates = 1 2\n",
         "Dimensions for Hyper-Exponential vectors do not match."},
        {false, "hyperexponential\nphases = 2\nprob = 0.5 0.5\nrates = 1 -2\n",
         "Invalid parameters for Hyper-Exponential distribution."},
        // Within the reader's slack, but not the family's.
        {false, "hypererlang\nphases = 1 1\nrates = 1 2\nprob = 0.499 0.499\n", hyperErl},
        {false, "hypererlang\nphases = 2 1\nrates = 1\nprob = 0.5 0.5\n", hyperErlDims},
        {false, "hypererlang\nbranches = 3\nphases = 2 1\nrates = 1 2\nprob = 1 1\n", hyperErlDims},
        {false, "erlang\nphases = -1\n", negative},
        {false, "hypererlang\nphases = 1 -2\nrates = 1 1\nprob = 1 1\n", negative},
        {false, "erlang\nrate = 0\n", "Invalid rate for erlang distribution"},
        {false, "johnson\n", johnson},
        {false, "geometric\np = 0.3\n", "Distribution family geometric is not available yet."},
        {false, "hypogeometric\np = 0.3 0.5\n", "Distribution family hypogeometric is not available yet."},
        {true, "", "Unsupported distribution."},
        {true, "<johnsondist><type>SU</type></johnsondist>", johnson},
        // The XML form admits no slack in the sum.
        {true, "<hypererlangdist><prob>0.4 0.5</prob><phases>1 1</phases><rates>1 2</rates></hypererlangdist>",
         "Sum of initial probabilities for Hyper-Erlang must equal 1."},
        {true, "<hypererlangdist><prob>0.5 0.5</prob><phases>1</phases><rates>1 2</rates></hypererlangdist>",
         hyperErlDims},
        {true, "<hypererlangdist></hypererlangdist>", hyperErl},
    };
    for (const Case& c : cases)
        EXPECT_EQ(failure([&] { c.xml ? xml(c.text) : kv(c.text); }), c.message) << c.text;
    // Documents and elements that hold no distribution.
    for (const char* text : {"<model><dist><expodist></expodist></dist></model>", "<velmora><arima></arima></velmora>"})
        EXPECT_EQ(failure([&] {
                      XMLConfig d(writeFile("load_other.xml", text));
                      delete loadDistribution(&d);
                  }),
                  notDist)
            << text;
    std::unique_ptr<XMLElement> e(XMLConfig::parseXML("<distribution><expodist></expodist></distribution>", nullptr));
    EXPECT_EQ(failure([&] { delete loadDistribution(e.get()); }), notDist);
}
