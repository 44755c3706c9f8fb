// Dense linear algebra: Gauss-Jordan elimination with partial pivoting and an
// absolute pivot threshold, the singular value decomposition of Golub and
// Reinsch ("Singular value decomposition and least squares solutions",
// Numer. Math. 14, 1970) in the form that forms V and not U, the Cholesky
// factor, the stationary vector of a Markov chain and reduced moments.
#include "numerics/misc_linalg.h"

#include <cmath>

#include "core/libvelmora_settings.h"
#include "core/misc_string.h"
#include "numerics/misc_math.h"

namespace velmora {

Matrix gauss_jordan(Matrix A) {
    const double eps = 1e-17;
    const unsigned n = A.getNumberRows();
    const unsigned m = A.getNumberCols();
    // Fewer columns than rows leave no n x n block to reduce.
    if (m < n) throw Exception("misc_linalg", __LINE__, "Invalid matrix dimensions.");
    if (n == 0) return A;
    std::vector<double*> r(n);
    for (unsigned i = 0; i < n; i++) r[i] = A[i].data();

    for (unsigned i = 0; i < n; i++) {
        // Strict comparison: among equal candidates the topmost row wins.
        unsigned p = i;
        for (unsigned j = i + 1; j < n; j++)
            if (std::fabs(r[j][i]) > std::fabs(r[p][i])) p = j;
        if (p != i) {
            A[i].swap(A[p]);
            r[i] = A[i].data();
            r[p] = A[p].data();
        }
        if (std::fabs(r[i][i]) <= eps) throw Exception("misc_linalg", __LINE__, "Singular matrix.");
        for (unsigned j = i + 1; j < n; j++) {
            const double c = r[j][i] / r[i][i];
            for (unsigned k = i; k < m; k++) r[j][k] -= r[i][k] * c;
        }
    }

    for (unsigned i = n; i-- > 0;) {
        const double c = r[i][i];
        // k runs downwards so that the factor r[j][i] changes in the last
        // step only.
        for (unsigned j = 0; j < i; j++)
            for (unsigned k = m; k-- > i;) r[j][k] -= r[j][i] * r[i][k] / c;
        r[i][i] /= c;
        for (unsigned k = n; k < m; k++) r[i][k] /= c;
    }
    return A;
}

Matrix gauss_jordan_inv(Matrix A) {
    const unsigned n = A.getNumberRows();
    if (n == 0 || n != A.getNumberCols())
        throw Exception("misc_linalg", __LINE__, "Matrix cannot be inverted.");
    Matrix work(n, 2 * n, MATRIX_ZERO);
    work.setSubmatrix(0, 0, A);
    for (unsigned i = 0; i < n; i++) work[i][n + i] = 1.0;
    return gauss_jordan(work).getSubmatrix(0, n - 1, n, 2 * n - 1);
}

Vector gauss_jordan_solve(Matrix A, Vector b) {
    const unsigned n = A.getNumberRows();
    // Only a square system with a right-hand side of matching length has a
    // solution in column n of the reduced form.
    if (n == 0 || n != A.getNumberCols() || b.getNumberEntries() != n)
        throw Exception("misc_linalg", __LINE__, "Invalid system of linear equations.");
    Matrix work(n, n + 1, MATRIX_ZERO);
    work.setSubmatrix(0, 0, A);
    work.setCol(n, b.asVector());
    return Vector(gauss_jordan(work).getCol(n), false);
}

// Most singular values need two or three QR steps; 75 steps for one value
// means the iteration does not settle (as with NaN entries), and the
// decomposition gives up instead of looping for ever.
static const unsigned SVD_MAX_QR_STEPS = 75;

std::vector<Matrix> SingularValueDecomposition(Matrix A) {
    double eps = 1.5e-8;
    const double tol = 1e-20;
    const unsigned N = max(A.getNumberRows(), A.getNumberCols());
    A.resize(N, N);

    // Indices count from 1 as in the published procedure: W(i, j) is
    // A[i - 1][j - 1]; q and e hold their element i at index i.
    std::vector<double*> r(N);
    for (unsigned i = 0; i < N; i++) r[i] = A[i].data();
    auto W = [&r](unsigned i, unsigned j) -> double& { return r[i - 1][j - 1]; };
    std::vector<double> q(N + 1, 0.0), e(N + 1, 0.0);
    double g = 0, x = 0, s, f, h, y, z, c;

    // Householder reduction to bidiagonal form.
    for (unsigned i = 1; i <= N; i++) {
        e[i] = g;
        s = 0;
        for (unsigned k = i; k <= N; k++) s += W(k, i) * W(k, i);
        if (s < tol) {
            g = 0;
        } else {
            f = W(i, i);
            g = f >= 0 ? -std::sqrt(s) : std::sqrt(s);
            h = f * g - s;
            W(i, i) = f - g;
            for (unsigned j = i + 1; j <= N; j++) {
                s = 0;
                for (unsigned k = i; k <= N; k++) s += W(k, i) * W(k, j);
                f = s / h;
                for (unsigned k = i; k <= N; k++) W(k, j) += f * W(k, i);
            }
        }
        q[i] = g;
        s = 0;
        for (unsigned j = i + 1; j <= N; j++) s += W(i, j) * W(i, j);
        if (s < tol) {
            g = 0;
        } else {
            f = W(i, i + 1);
            g = f >= 0 ? -std::sqrt(s) : std::sqrt(s);
            h = f * g - s;
            W(i, i + 1) = f - g;
            for (unsigned j = i + 1; j <= N; j++) e[j] = W(i, j) / h;
            for (unsigned j = i + 1; j <= N; j++) {
                s = 0;
                for (unsigned k = i + 1; k <= N; k++) s += W(j, k) * W(i, k);
                for (unsigned k = i + 1; k <= N; k++) W(j, k) += s * e[k];
            }
        }
        y = std::fabs(q[i]) + std::fabs(e[i]);
        if (y > x) x = y;
    }

    // Accumulation of the right-hand transformations; V grows from the
    // bottom right corner of W.
    unsigned l = N + 1;
    for (unsigned i = N; i >= 1; i--) {
        if (g != 0 && i < N) {
            h = W(i, i + 1) * g;
            for (unsigned j = l; j <= N; j++) W(j, i) = W(i, j) / h;
            for (unsigned j = l; j <= N; j++) {
                s = 0;
                for (unsigned k = l; k <= N; k++) s += W(i, k) * W(k, j);
                for (unsigned k = l; k <= N; k++) W(k, j) += s * W(k, i);
            }
        }
        for (unsigned j = l; j <= N; j++) {
            W(i, j) = 0;
            W(j, i) = 0;
        }
        W(i, i) = 1;
        g = e[i];
        l = i;
    }

    // Diagonalisation of the bidiagonal form.
    eps *= x;
    for (unsigned k = N; k >= 1; k--) {
        for (unsigned step = 0;; step++) {
            // Splitting test. e[1] is zero, so l = 1 always ends at the test
            // of e; q[0] is never read.
            bool cancel = false;
            for (l = k; l >= 1; l--) {
                if (l == 1 || std::fabs(e[l]) <= eps) break;
                if (std::fabs(q[l - 1]) <= eps) {
                    cancel = true;
                    break;
                }
            }
            if (cancel) {
                // Cancellation of e[l]; the rotations of U are not formed.
                c = 0;
                s = 1;
                for (unsigned i = l; i <= k; i++) {
                    f = s * e[i];
                    e[i] = c * e[i];
                    if (std::fabs(f) <= eps) break;
                    g = q[i];
                    h = std::sqrt(f * f + g * g);
                    q[i] = h;
                    c = g / h;
                    s = -f / h;
                }
            }
            // Convergence test.
            z = q[k];
            if (l == k) break;
            if (step == SVD_MAX_QR_STEPS)
                throw Exception("misc_linalg", __LINE__,
                                "Singular value decomposition does not converge.");

            // Shift from the bottom 2 x 2 minor.
            x = q[l];
            y = q[k - 1];
            g = e[k - 1];
            h = e[k];
            f = ((y - z) * (y + z) + (g - h) * (g + h)) / (2 * h * y);
            g = std::sqrt(f * f + 1);
            f = ((x - z) * (x + z) + h * (y / (f < 0 ? f - g : f + g) - h)) / x;

            // QR step.
            c = 1;
            s = 1;
            for (unsigned i = l + 1; i <= k; i++) {
                g = e[i];
                y = q[i];
                h = s * g;
                g = c * g;
                z = std::sqrt(f * f + h * h);
                e[i - 1] = z;
                c = f / z;
                s = h / z;
                f = x * c + g * s;
                g = -x * s + g * c;
                h = y * s;
                y = y * c;
                for (unsigned j = 1; j <= N; j++) {
                    const double a = W(j, i - 1), b = W(j, i);
                    W(j, i - 1) = a * c + b * s;
                    W(j, i) = -a * s + b * c;
                }
                z = std::sqrt(f * f + h * h);
                q[i - 1] = z;
                c = f / z;
                s = h / z;
                f = c * g + s * y;
                x = -s * g + c * y;
            }
            e[l] = 0;
            e[k] = f;
            q[k] = x;
        }
        if (z < 0) {
            q[k] = -z;
            for (unsigned j = 1; j <= N; j++) W(j, k) = -W(j, k);
        }
    }

    std::vector<Matrix> result;
    result.push_back(A);
    result.push_back(Matrix(std::vector<double>(q.begin() + 1, q.end()), MATRIX_ROW));
    return result;
}

Matrix CholeskyDecomposition(Matrix A) {
    const unsigned n = A.getNumberCols();
    // Only a square matrix can be symmetric positive definite.
    if (n == 0 || A.getNumberRows() != n)
        throw Exception("misc_linalg", __LINE__, "Matrix is not square.");
    Matrix U(n, n, MATRIX_ZERO);
    for (unsigned i = 0; i < n; i++) {
        double sum = 0;
        for (unsigned k = 0; k < i; k++) sum += U[k][i] * U[k][i];
        U[i][i] = std::sqrt(A[i][i] - sum);
        for (unsigned j = i + 1; j < n; j++) {
            sum = 0;
            for (unsigned k = 0; k < i; k++) sum += U[k][i] * U[k][j];
            U[i][j] = (A[i][j] - sum) / U[i][i];
        }
    }
    return U.transpose();
}

Matrix compute_steady_state_probability_vector(Matrix G, bool stochastic) {
    Matrix M = stochastic ? G - Matrix(G.getNumberRows(), G.getNumberCols(), MATRIX_IDENTITY) : G;
    std::vector<Matrix> svd = SingularValueDecomposition(M.transpose());
    const Matrix& V = svd[0];
    const std::vector<double>& sv = svd[1][0];

    // The first of equal smallest values wins.
    unsigned j = 0;
    for (unsigned k = 1; k < sv.size(); k++)
        if (std::fabs(sv[j]) > std::fabs(sv[k])) j = k;

    std::vector<double> x = V.getCol(j);
    double sum = 0;
    for (double v : x) sum += v;
    if (sum != 1)
        for (double& v : x) v /= sum;
    // Rounding noise just below 0 is cleared; the vector is not normalised
    // again afterwards.
    for (double& v : x)
        if (v < 0 && v > -1e-6) v = 0.0;
    return Matrix(x, MATRIX_ROW);
}

Matrix compute_reduced_moments(Matrix m) {
    Matrix result;
    if (m.getNumberRows() == 0) return result;
    result = Matrix(m.getNumberRows(), m.getNumberCols(), MATRIX_ZERO);
    for (unsigned i = 0; i < m.getNumberCols(); i++)
        result[0][i] = m[0][i] / static_cast<double>(fac(i));
    return result;
}

std::vector<double> compute_reduced_moments(std::vector<double> m) {
    if (m.empty()) return m;
    return compute_reduced_moments(Matrix(m, MATRIX_ROW)).getRow(0);
}

std::vector<double> phase_type_moments(const Matrix& T, const Vector& tau, unsigned first, unsigned last) {
    std::vector<double> result;
    Matrix minusT = -T;
    Vector ones(T.getNumberRows(), false, VECTOR_ONES);
    for (unsigned long long i = first; i <= last; i++) {
        Matrix power = minusT ^ -static_cast<int>(i);
        double product = (tau * power * ones)[0][0];
        result.push_back(static_cast<double>(fac(static_cast<unsigned long>(i))) * product);
    }
    return result;
}

}  // namespace velmora
