// Uniformization (randomization) of a continuous-time chain: the transient
// vector v exp(D0 t) as the Poisson-weighted sum of v P^k with P = I + D0/lambda.
// The Poisson weights are kept relative to the weight 1 at the mode and run
// outwards until a term no longer changes their sum; then the right tail
// below eps times the sum is trimmed.
#include "markov/cph_randomization.h"

#include <cmath>

#include "core/libvelmora_settings.h"
#include "numerics/matrix.h"

namespace velmora {

void map_ph_randomization_params(double q, double eps, double* weightSum, double* leftWeight, int* left,
                                 int* right) {
    // The limits are ints and the sum has about q terms: larger or
    // meaningless means are refused rather than overflowing the limits.
    if (!(q >= 0 && q < 1e9)) throw Exception("cph", __LINE__, "Invalid mean for uniformization.");
    const int m = static_cast<int>(q);
    double S = 1;
    double w = 1;
    int L = m;
    while (L > 0 && S + w > S) {
        w = (L / q) * w;
        S = S + w;
        L = L - 1;
    }
    *left = L;
    *leftWeight = w;

    w = 1;
    int R = m;
    while (w + S > S) {
        R = R + 1;
        w = (q / R) * w;
        S = S + w;
    }
    *weightSum = S;

    const double T = eps * S;
    double A = 0;
    // R > 0 stops the trimming at the first weight; only an eps of 1 or more
    // could get there, and the weight of 0 below it would never end the loop.
    if (w > 0)
        while (R > 0 && A + w < T) {
            A = A + w;
            w = (R / q) * w;
            R = R - 1;
        }
    *right = R;
}

// Makes m a matrix of the shape of `shape` if it isn't one already; in the
// steady state of a tabulation this does nothing.
static void matchShape(Matrix* m, const Matrix* shape) {
    if (m->getNumberRows() != shape->getNumberRows() || m->getNumberCols() != shape->getNumberCols())
        *m = Matrix(shape->getNumberRows(), shape->getNumberCols());
}

void map_ph_randomization(Matrix* P, Matrix* v, Matrix* scratch, Matrix* result, double lambda, double t,
                          double eps) {
    const unsigned rows = v->getNumberRows();
    const unsigned cols = v->getNumberCols();
    matchShape(result, v);
    const double q = lambda * t;

    if (q == 0) {
        for (unsigned r = 0; r < rows; r++) (*result)[r] = (*v)[r];
    } else {
        for (unsigned r = 0; r < rows; r++) {
            std::vector<double>& out = (*result)[r];
            for (unsigned j = 0; j < cols; j++) out[j] = 0.0;
        }
        double W, w;
        int L, R;
        map_ph_randomization_params(q, eps, &W, &w, &L, &R);
        matchShape(scratch, v);
        const unsigned n = P->getNumberRows();
        // The products below read P as a cols x cols matrix.
        if (n != cols || P->getNumberCols() != cols)
            throw Exception("cph", __LINE__, "These Matrices cannot be multiplied.");

        int k = 0;
        while (k <= R) {
            if (k >= L) {
                const double f = w / W;
                for (unsigned r = 0; r < rows; r++) {
                    const std::vector<double>& in = (*v)[r];
                    std::vector<double>& out = (*result)[r];
                    for (unsigned j = 0; j < cols; j++) out[j] += f * in[j];
                }
                w = (q / (k + 1)) * w;
            }
            k = k + 1;
            if (k > R) break;
            for (unsigned r = 0; r < rows; r++) row_times_matrix((*v)[r].data(), *P, (*scratch)[r].data());
            for (unsigned r = 0; r < rows; r++) (*v)[r] = (*scratch)[r];
        }
    }

    double s = 0;
    for (unsigned r = 0; r < rows; r++) {
        const std::vector<double>& in = (*result)[r];
        std::vector<double>& out = (*v)[r];
        for (unsigned j = 0; j < cols; j++) {
            s += in[j];
            out[j] = in[j];
        }
    }
    if (std::fabs(1 - s) > 0.001) {
        const double f = 1 / s;
        for (unsigned r = 0; r < rows; r++) {
            std::vector<double>& out = (*v)[r];
            for (unsigned j = 0; j < cols; j++) out[j] *= f;
        }
    }
}

}  // namespace velmora
