// Products of dense matrices at the orders of the larger Markovian models,
// and the checked element-by-element loop they replace, for comparison.
#include <benchmark/benchmark.h>

#include <random>

#include "numerics/matrix.h"
#include "numerics/misc_linalg.h"

using namespace velmora;

static Matrix randomMatrix(unsigned n, unsigned seed) {
    std::mt19937_64 gen(seed);
    std::uniform_real_distribution<double> u(-1, 1);
    Matrix m(n, n, MATRIX_ZERO);
    for (unsigned i = 0; i < n; i++)
        for (unsigned j = 0; j < n; j++) m[i][j] = u(gen);
    return m;
}

static void BM_MatrixProduct(benchmark::State& state) {
    unsigned n = static_cast<unsigned>(state.range(0));
    Matrix a = randomMatrix(n, 1), b = randomMatrix(n, 2);
    for (auto _ : state) benchmark::DoNotOptimize(a * b);
}
BENCHMARK(BM_MatrixProduct)->Arg(10)->Arg(50);

static void BM_MatrixProductCheckedLoop(benchmark::State& state) {
    unsigned n = static_cast<unsigned>(state.range(0));
    Matrix a = randomMatrix(n, 1), b = randomMatrix(n, 2);
    for (auto _ : state) {
        Matrix c(n, n, MATRIX_ZERO);
        for (unsigned i = 0; i < n; i++)
            for (unsigned j = 0; j < n; j++) {
                double sum = 0;
                for (unsigned k = 0; k < n; k++) sum += a.getValue(i, k) * b.getValue(k, j);
                c.setValue(i, j, sum);
            }
        benchmark::DoNotOptimize(c);
    }
}
BENCHMARK(BM_MatrixProductCheckedLoop)->Arg(10)->Arg(50);

static void BM_RowVectorTimesMatrix(benchmark::State& state) {
    Matrix a = randomMatrix(50, 1);
    Vector v(50, true, VECTOR_ONES);
    for (auto _ : state) benchmark::DoNotOptimize(v * a);
}
BENCHMARK(BM_RowVectorTimesMatrix);

static void BM_Inverse(benchmark::State& state) {
    Matrix a = randomMatrix(static_cast<unsigned>(state.range(0)), 3);
    for (auto _ : state) benchmark::DoNotOptimize(a.inverse());
}
BENCHMARK(BM_Inverse)->Arg(10)->Arg(50);

static void BM_SteadyState(benchmark::State& state) {
    unsigned n = static_cast<unsigned>(state.range(0));
    Matrix g = randomMatrix(n, 4);
    for (unsigned i = 0; i < n; i++) {
        double sum = 0;
        for (unsigned j = 0; j < n; j++)
            if (i != j) sum += (g[i][j] = g[i][j] < 0 ? -g[i][j] : g[i][j]);
        g[i][i] = -sum;
    }
    for (auto _ : state) benchmark::DoNotOptimize(compute_steady_state_probability_vector(g, false));
}
BENCHMARK(BM_SteadyState)->Arg(10)->Arg(50);
