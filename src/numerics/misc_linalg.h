// Dense linear algebra on Matrix and Vector: Gauss-Jordan elimination and
// inversion, the Golub-Reinsch singular value decomposition (V only), the
// Cholesky factor, the stationary vector of a Markov chain and reduced
// moments. Every function works on copies of its arguments.
#ifndef VELMORA_NUMERICS_MISC_LINALG_H
#define VELMORA_NUMERICS_MISC_LINALG_H

#include <vector>

#include "numerics/matrix.h"

namespace velmora {

// Reduced form of an n x m matrix (m >= n) by elimination with partial
// pivoting: the left n x n block becomes the identity and the columns from n
// on hold the solved right-hand sides. A pivot of absolute value at most
// 1e-17 raises "Singular matrix.".
Matrix gauss_jordan(Matrix A);

// Inverse of a square matrix through the reduced form of [A | I].
Matrix gauss_jordan_inv(Matrix A);

// The solution x of A x = b, as a column vector.
Vector gauss_jordan_solve(Matrix A, Vector b);

// Golub-Reinsch decomposition of the matrix padded with zeros to N x N:
// element 0 is V (right singular vectors in its columns), element 1 the
// 1 x N row of singular values, unsorted, q[j] belonging to column j of V.
std::vector<Matrix> SingularValueDecomposition(Matrix A);

// Lower triangular L with A = L L^T, for a symmetric positive definite A.
Matrix CholeskyDecomposition(Matrix A);

// Row vector x with x G = 0 (generator) or x (G - I) = 0 (stochastic matrix),
// summing to 1, as a 1 x n matrix.
Matrix compute_steady_state_probability_vector(Matrix G, bool stochastic = false);

// Row 0 of the result holds m[0][i] / i!; all other rows are zero.
Matrix compute_reduced_moments(Matrix m);
std::vector<double> compute_reduced_moments(std::vector<double> m);

// The moments first..last of the phase-type distribution with generator T
// and entry vector tau: i! tau (-T)^-i 1.
std::vector<double> phase_type_moments(const Matrix& T, const Vector& tau, unsigned first, unsigned last);

}  // namespace velmora

#endif
