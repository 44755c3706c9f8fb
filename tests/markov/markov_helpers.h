// Helpers shared by the Markov model tests: short matrix literals, the
// models the reference figures are for, files, and the failure an action raises.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "core/libvelmora_settings.h"
#include "numerics/matrix.h"

namespace markov_test {

using velmora::Matrix;
using velmora::Vector;

inline Matrix mat(std::vector<std::vector<double>> rows) { return Matrix(std::move(rows)); }
inline Vector row(std::vector<double> v) { return Vector(v, true); }

// Dense order-3 MAP/MEP with rows closing to 0.
inline Matrix order3D0() { return mat({{-3.0, 1.0, 0.5}, {0.2, -1.5, 0.3}, {0.1, 0.4, -0.8}}); }
inline Matrix order3D1() { return mat({{1.2, 0.2, 0.1}, {0.1, 0.8, 0.1}, {0.0, 0.1, 0.2}}); }

// Dense order-3 phase-type generator with cycles and its start vector.
inline Matrix denseT() { return mat({{-3, 1, 0.5}, {0.5, -2, 1}, {0.2, 0.3, -1.5}}); }
inline Vector denseTau() { return row({0.5, 0.3, 0.2}); }

inline std::string writeFile(const std::string& name, const std::string& text) {
    std::string path = testing::TempDir() + name;
    std::ofstream(path.c_str(), std::ios::binary) << text;
    return path;
}

inline std::string readFile(const std::string& path) {
    std::ifstream in(path.c_str(), std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

// "<source>: <message>" of the Exception that f raises.
inline std::string failureOf(const std::function<void()>& f) {
    try {
        f();
    } catch (velmora::Exception& e) {
        return e.file + ": " + e.message;
    }
    return "no failure";
}

// Entrywise relative comparison.
inline void expectRelative(const Matrix& got, const Matrix& expected, double tol, const std::string& what) {
    ASSERT_EQ(got.getNumberRows(), expected.getNumberRows()) << what;
    ASSERT_EQ(got.getNumberCols(), expected.getNumberCols()) << what;
    for (unsigned i = 0; i < got.getNumberRows(); i++)
        for (unsigned j = 0; j < got.getNumberCols(); j++)
            EXPECT_NEAR(got(i, j), expected(i, j), tol * std::fabs(expected(i, j))) << what << " at " << i << "," << j;
}

}  // namespace markov_test
