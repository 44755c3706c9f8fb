// Helpers shared by the Markov model tests: short matrix literals and the models the reference figures are for.
#pragma once
#include "support/test_support.h"

namespace markov_test {
using namespace velmora_test;
using velmora::Matrix, velmora::Vector;

inline Matrix mat(std::vector<std::vector<double>> rows) { return Matrix(std::move(rows)); }
inline Vector row(std::vector<double> v) { return Vector(v, true); }

// Dense order-3 MAP/MEP with rows closing to 0.
inline Matrix order3D0() { return mat({{-3.0, 1.0, 0.5}, {0.2, -1.5, 0.3}, {0.1, 0.4, -0.8}}); }
inline Matrix order3D1() { return mat({{1.2, 0.2, 0.1}, {0.1, 0.8, 0.1}, {0.0, 0.1, 0.2}}); }

// Dense order-3 phase-type generator with cycles and its start vector.
inline Matrix denseT() { return mat({{-3, 1, 0.5}, {0.5, -2, 1}, {0.2, 0.3, -1.5}}); }
inline Vector denseTau() { return row({0.5, 0.3, 0.2}); }
}  // namespace markov_test
