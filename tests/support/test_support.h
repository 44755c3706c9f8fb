// Helpers shared by every test program: files in the program's own temporary folder, the failure an action
// raises, and entrywise matrix comparison.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <functional>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "core/libvelmora_settings.h"
#include "numerics/matrix.h"

namespace velmora_test {

inline std::string tempPath(const std::string& name) { return testing::TempDir() + name; }

// Writes text to the temporary file of that name and gives its path.
inline std::string writeFile(const std::string& name, const std::string& text) {
    std::string path = tempPath(name);
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
    return path;
}

inline std::string readFile(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

// "<source>: <message>" of the Exception that f raises.
inline std::string failureOf(const std::function<void()>& f) {
    try { f(); } catch (velmora::Exception& e) { return e.file + ": " + e.message; }
    return "no failure";
}

// The message of the Exception that f raises, which must name the source.
inline std::string messageOf(const std::function<void()>& f, const std::string& source) {
    try { f(); } catch (velmora::Exception& e) {
        EXPECT_EQ(e.file, source) << e.message;
        return e.message;
    }
    return "no failure";
}

// Entrywise within tol, or within tol * |expected| when relative.
inline void expectNear(const velmora::Matrix& got, const velmora::Matrix& expected, double tol,
                       const std::string& what, bool relative = false) {
    ASSERT_EQ(got.getNumberRows(), expected.getNumberRows()) << what;
    ASSERT_EQ(got.getNumberCols(), expected.getNumberCols()) << what;
    for (unsigned i = 0; i < got.getNumberRows(); i++)
        for (unsigned j = 0; j < got.getNumberCols(); j++)
            EXPECT_NEAR(got(i, j), expected(i, j), relative ? tol * std::fabs(expected(i, j)) : tol)
                << what << " at " << i << "," << j;
}

inline void expectRelative(const velmora::Matrix& got, const velmora::Matrix& expected, double tol,
                           const std::string& what) {
    expectNear(got, expected, tol, what, true);
}
}  // namespace velmora_test
