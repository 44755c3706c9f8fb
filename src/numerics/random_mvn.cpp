// Multivariate normal variates: mean + L z, where L is the lower Cholesky
// factor of the covariance matrix and z a vector of independent standard
// normal values drawn in index order.
#include <vector>

#include "numerics/matrix.h"
#include "numerics/misc_linalg.h"
#include "numerics/random.h"

namespace velmora {

Vector Rand::multivariate_normal(const Vector& mean, const Matrix& covariance) {
    const unsigned n = covariance.getNumberRows();
    const Matrix L = CholeskyDecomposition(covariance);
    std::vector<double> z(n);
    for (unsigned i = 0; i < n; ++i) z[i] = normal(0.0, 1.0);
    Vector x(n, mean.isRowVector());
    for (unsigned i = 0; i < n; ++i) {
        const std::vector<double>& row = L[i];
        double sum = 0.0;
        for (unsigned j = 0; j <= i; ++j) sum += row[j] * z[j];
        x[i] = mean[i] + sum;
    }
    return x;
}

}  // namespace velmora
