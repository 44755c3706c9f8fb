// Helpers shared by the distribution tests: the reference hyper-Erlang and
// reading a family's text.
#pragma once

#include "config/conf.h"
#include "distributions/dist.h"
#include "distributions/dist_hypererlang.h"
#include "distributions/dist_load.h"
#include "support/test_support.h"

namespace disttest {

using namespace velmora_test;

// The message of the Exception thrown by f, most often from the dist module.
inline std::string failure(const std::function<void()>& f, const std::string& source = "dist") {
    return messageOf(f, source);
}

// The hyper-Erlang of the reference tables and variate tests.
const std::vector<unsigned> mixPhases = {2, 1, 3};
const std::vector<double> mixRates = {1, 5, 2.5}, mixProbabilities = {0.3, 0.5, 0.2};
inline velmora::HyperErlang mixture() { return velmora::HyperErlang(mixPhases, mixRates, mixProbabilities); }

// One computed value against its reference figure.
struct Near { const char* what; double value, expected, tolerance; };

// Reads key-value lines through a file, as a model file is read.
inline std::unique_ptr<velmora::Dist> readConfig(const std::string& text) {
    velmora::Config c(writeFile("load_kv.cfg", text));
    return std::unique_ptr<velmora::Dist>(velmora::loadDistribution(&c));
}

// Reads the text of one `dist` element inside a `velmora` document.
inline std::unique_ptr<velmora::Dist> readXml(const std::string& dist) {
    velmora::XMLConfig document(writeFile("load_doc.xml", "<velmora>\n" + dist + "</velmora>\n"));
    return std::unique_ptr<velmora::Dist>(velmora::loadDistribution(&document));
}

// The same family with the same parameters, as far as its text shows.
inline void expectSame(velmora::Dist* read, velmora::Dist* expected, const std::string& what) {
    ASSERT_NE(read, nullptr) << what;
    EXPECT_EQ(read->getType(), expected->getType()) << what;
    EXPECT_EQ(read->toString(velmora::FORMAT_CONFIG), expected->toString(velmora::FORMAT_CONFIG)) << what;
}

}  // namespace disttest
