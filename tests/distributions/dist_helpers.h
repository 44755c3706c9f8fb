// Small helpers shared by the distribution tests: the message of a thrown
// Exception, files in the test's temporary folder, samples and the
// Kolmogorov-Smirnov distance.
#ifndef VELMORA_TESTS_DIST_HELPERS_H
#define VELMORA_TESTS_DIST_HELPERS_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "core/libvelmora_settings.h"
#include "distributions/dist.h"

namespace disttest {

// The message of the Exception thrown by f, checking the source it names.
inline std::string failure(const std::function<void()>& f, const std::string& source = "dist") {
    try {
        f();
    } catch (velmora::Exception& e) {
        EXPECT_EQ(e.file, source) << e.message;
        return e.message;
    } catch (...) {
        return "(other exception)";
    }
    return "(no exception)";
}

inline std::string writeFile(const std::string& name, const std::string& text) {
    std::string path = testing::TempDir() + "dist_" + name;
    std::ofstream(path.c_str(), std::ios::binary) << text;
    return path;
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
