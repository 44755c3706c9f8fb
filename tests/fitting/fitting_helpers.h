// Autocorrelations of ARMA models from their closed forms, for the fitting tests.
#pragma once

#include <vector>

#include "support/test_support.h"

namespace fitting_test {

using velmora_test::failureOf;

// rho(1) .. rho(lags) from rho(1) and the Yule-Walker recursion
// rho(k) = phi_1 rho(k-1) + phi_2 rho(k-2), which holds beyond lag q for
// AR(1), AR(2) and ARMA(1, 1).
inline std::vector<double> yuleWalker(double rho1, double phi1, double phi2, unsigned lags) {
    std::vector<double> rho{1.0, rho1};
    for (unsigned k = 2; k <= lags; ++k) rho.push_back(phi1 * rho[k - 1] + phi2 * rho[k - 2]);
    return std::vector<double>(rho.begin() + 1, rho.begin() + 1 + lags);
}

}  // namespace fitting_test
