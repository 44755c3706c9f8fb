// The distribution readers: defaults, units and value mapping of the
// key-value and XML forms, the vector families' own steps and every message.
// Each family's own text read back is tested with its layouts.
#include "config/conf.h"
#include "dist_helpers.h"
#include "distributions/dist.h"
#include "distributions/dist_chisquare.h"
#include "distributions/dist_exponential.h"
#include "distributions/dist_hypererlang.h"
#include "distributions/dist_hyperexponential.h"
#include "distributions/dist_hypoexponential.h"
#include "distributions/dist_johnson.h"
#include "distributions/dist_geometric.h"
#include "distributions/dist_load.h"
#include "distributions/dist_normal.h"
#include "distributions/dist_triangular.h"
#include "distributions/dist_uniform.h"

using namespace velmora;
using namespace disttest;
using std::make_shared;

namespace {

using U = std::vector<unsigned>;
using V = std::vector<double>;

// Key-value lines after "distribution = ", and the families inside one `dist` element.
std::unique_ptr<Dist> kv(const std::string& text) { return readConfig("distribution = " + text); }
std::unique_ptr<Dist> xml(const std::string& text) { return readXml("<dist>" + text + "</dist>"); }

}  // namespace

TEST(DistLoad, ReadersTakeDefaultsUnitsAndListsOfTheirFamilyOnly) {
    EXPECT_EQ(readConfig("rate = 2\n"), nullptr);
    struct Case { bool xml; const char* text; std::shared_ptr<Dist> expected; } cases[] = {
        {false, "uniform\nrate = 5\n", make_shared<Uniform>(0.0, 1.0)},
        {false, "triangular\n", make_shared<Triangular>(0.0, 1.0, 0.5)},
        {false, "chisquare\n", make_shared<ChiSquare>(2u)},
        // Off by 0.003: within the reader's and the family's tolerance.
        {false, "hyperexponential\nphases = 2\nprob = 0.5 0.503\nrates = 1 2\n",
         make_shared<HyperExponential>(V{1, 2}, V{0.5, 0.503})},
        // The count of phases has no effect.
        {false, "hypoexponential\nphases = 7\nrates = 1 2 3\n", make_shared<HypoExponential>(V{1, 2, 3})},
        // Probabilities far from 1 are normalised.
        {false, "hypererlang\nphases = 2 1\nrates = 1 5\nprob = 2 2\n",
         make_shared<HyperErlang>(U{2, 1}, V{1, 5}, V{0.5, 0.5})},
        // The standard deviation in the XML form; the exponential's mean defaults to 1.
        {true, "<normaldist><std>4</std></normaldist>", make_shared<Normal>(0.0, 4.0)},
        {true, "<expodist></expodist>", make_shared<Exponential>(1.0)},
        // The Johnson defaults: SB with all four numbers 1; the scale is lambda.
        {false, "johnson\n", make_shared<Johnson>(1, 1, 1, 1, JOHNSON_SB)},
        {true, "<johnsondist><type>SU</type><scale>2</scale></johnsondist>",
         make_shared<Johnson>(1, 1, 2, 1, JOHNSON_SU)},
        {false, "geometric\n", make_shared<Geometric>(0.5)},
        // The order of the reader's list decides, not the document's.
        {true, "<gammadist></gammadist><uniformdist><b>2</b></uniformdist>", make_shared<Uniform>(0.0, 2.0)},
    };
    for (const Case& c : cases) expectSame((c.xml ? xml(c.text) : kv(c.text)).get(), c.expected.get(), c.text);
}

TEST(DistLoad, EveryFaultHasItsMessage) {
    const char* notDist = "Not a distribution.";
    const char* hyperExpSum = "Sum of initial probabilities for Hyper-Exponential must equal 1.";
    const char* hyperErlDims = "Dimensions for Hyper-Erlang vectors do not match.";
    const char* johnson = "Unknown type of Johnson distribution.";
    struct Case { bool xml; const char* text; const char* message; } cases[] = {
        {false, "Normal\n", "Unknown distribution"},
        {false, "hyperexponential\nphases = 2\nprob = 0.5 0.6\nrates = 1 2\n", hyperExpSum},
        // A single probability is not read as a list: its sum is 0.
        {false, "hyperexponential\nphases = 1\nprob = 1\nrates = 1\n", hyperExpSum},
        {false, "hyperexponential\nphases = 3\nprob = 0.5 0.5\nrates = 1 2\n",
         "Dimensions for Hyper-Exponential vectors do not match."},
        // Within the reader's slack, but not the family's.
        {false, "hypererlang\nphases = 1 1\nrates = 1 2\nprob = 0.499 0.499\n",
         "Invalid parameters for Hyper-Erlang distribution."},
        {false, "hypererlang\nphases = 2 1\nrates = 1\nprob = 0.5 0.5\n", hyperErlDims},
        {false, "erlang\nphases = -1\n", "Negative number of phases."},
        {false, "hypererlang\nphases = 1 1000001\nrates = 1 2\nprob = 0.5 0.5\n",
         "Number of phases above the limit of 1000000."},
        {true, "<erlangdist><phases>2147483647</phases></erlangdist>", "Number of phases above the limit of 1000000."},
        {false, "johnson\njohnson = sb\n", johnson},
        {false, "geometric\np = 1.5\n", "Invalid parameter for Geometric distribution."},
        {false, "hypogeometric\np = 0.3 -0.5\n", "Invalid parameter for HypoGeometric distribution."},
        {true, "", "Unsupported distribution."},
        {true, "<johnsondist><type>SX</type></johnsondist>", johnson},
        // Written, but not looked for by the XML reader.
        {true, "<geometric><p>0.5</p></geometric>", "Unsupported distribution."},
        // The XML form admits no slack in the sum.
        {true, "<hypererlangdist><prob>0.4 0.5</prob><phases>1 1</phases><rates>1 2</rates></hypererlangdist>",
         "Sum of initial probabilities for Hyper-Erlang must equal 1."},
        {true, "<hypererlangdist><prob>0.5 0.5</prob><phases>1</phases><rates>1 2</rates></hypererlangdist>",
         hyperErlDims},
    };
    for (const Case& c : cases)
        EXPECT_EQ(failure([&] { c.xml ? xml(c.text) : kv(c.text); }), c.message) << c.text;
    // A document without a dist element, and an element that is not one.
    EXPECT_EQ(failure([&] {
                  XMLConfig d(writeFile("load_other.xml", "<model><dist><expodist></expodist></dist></model>"));
                  delete loadDistribution(&d);
              }),
              notDist);
    std::unique_ptr<XMLElement> e(XMLConfig::parseXML("<distribution><expodist></expodist></distribution>", nullptr));
    EXPECT_EQ(failure([&] { delete loadDistribution(e.get()); }), notDist);
}
