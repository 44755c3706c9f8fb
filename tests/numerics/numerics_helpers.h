// Helpers shared by the numerics tests: the failure an action raises, and
// entrywise comparison of matrices.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "core/libvelmora_settings.h"
#include "numerics/matrix.h"

namespace numerics_test {

// "<source>: <message>" of the Exception that f raises.
inline std::string failureOf(const std::function<void()>& f) {
    try {
        f();
    } catch (velmora::Exception& e) {
        return e.file + ": " + e.message;
    }
    return "no failure";
}

inline void expectNear(const velmora::Matrix& got, const velmora::Matrix& expected, double tol,
                       const std::string& what) {
    ASSERT_EQ(got.getNumberRows(), expected.getNumberRows()) << what;
    ASSERT_EQ(got.getNumberCols(), expected.getNumberCols()) << what;
    for (unsigned i = 0; i < got.getNumberRows(); i++)
        for (unsigned j = 0; j < got.getNumberCols(); j++)
            EXPECT_NEAR(got.getValue(i, j), expected.getValue(i, j), tol) << what << " at " << i << "," << j;
}

}  // namespace numerics_test
