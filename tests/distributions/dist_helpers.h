// Helpers shared by the distribution tests: the message of a thrown
// Exception, reference cases, files in the test's temporary folder, samples
// and the Kolmogorov-Smirnov distance.
#ifndef VELMORA_TESTS_DIST_HELPERS_H
#define VELMORA_TESTS_DIST_HELPERS_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/libvelmora_settings.h"
#include "config/conf.h"
#include "distributions/dist.h"
#include "distributions/dist_hypererlang.h"
#include "distributions/dist_load.h"

namespace disttest {

// The message of the Exception thrown by f, checking the source it names.
inline std::string failure(const std::function<void()>& f, const std::string& source = "dist") {
    try {
        f();
    } catch (velmora::Exception& e) {
        EXPECT_EQ(e.file, source) << e.message;
        return e.message;
    }
    return "(no exception)";
}

// The hyper-Erlang of the reference tables and variate tests.
const std::vector<unsigned> mixPhases = {2, 1, 3};
const std::vector<double> mixRates = {1, 5, 2.5}, mixProbabilities = {0.3, 0.5, 0.2};
inline velmora::HyperErlang mixture() { return velmora::HyperErlang(mixPhases, mixRates, mixProbabilities); }

// One computed value against its reference figure.
struct Near {
    const char* what;
    double value, expected, tolerance;
};

inline std::string writeFile(const std::string& name, const std::string& text) {
    std::string path = testing::TempDir() + "dist_" + name;
    std::ofstream(path.c_str(), std::ios::binary) << text;
    return path;
}

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

const unsigned sampleSize = 20000;
// The 0.1 % critical value of the two-sided KS distance, 1.95 / sqrt(n).
const double ksCritical = 1.95 / std::sqrt(static_cast<double>(sampleSize));

inline std::vector<double> sample(velmora::Dist& d, unsigned seed) {
    d.setSeed(seed);
    std::vector<double> x(sampleSize);
    for (double& v : x) v = d.generateVariate();
    return x;
}

// sup |F_n - F| of the sample against the family's distribution function.
inline double ksDistance(std::vector<double> x, velmora::Dist& d) {
    std::sort(x.begin(), x.end());
    double n = x.size(), distance = 0;
    for (size_t i = 0; i < x.size(); i++) {
        double f = d.evalCDF(x[i]);
        distance = std::max(distance, std::max(f - i / n, (i + 1) / n - f));
    }
    return distance;
}

}  // namespace disttest

#endif
