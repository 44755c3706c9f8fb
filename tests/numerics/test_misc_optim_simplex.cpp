// Linear programs: optima and end states against scipy.optimize.linprog, the
// small cases that show each end of the solver, the limits that stop it, and
// warm starts from the basis of an earlier solve.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "numerics/misc_optim_simplex.h"
#include "support/test_support.h"

using namespace velmora;
using velmora_test::failureOf;

namespace {

typedef std::vector<double> Vec;

// Problem `seed` with m rows and n columns, integer data from the generator
// state = (1103515245 state + 12345) mod 2^31, value lo + (state >> 8) mod
// (hi - lo + 1). A point x0 in {0..4}^n, then per row the coefficients in
// -4..9, the type in 0..2 and a right side that x0 meets (seed <= 1000) or
// a free one in -9..30; then the costs in -9..9. Odd seeds minimise.
struct Problem {
    std::vector<simplex_constraint> rows;
    Vec c, x0;
    bool minimise;
};
Problem generated(unsigned long long seed, int m, int n) {
    unsigned long long state = seed;
    auto rnd = [&](int lo, int hi) {
        state = (state * 1103515245ULL + 12345ULL) % 2147483648ULL;
        return static_cast<double>(lo + static_cast<int>((state >> 8) % static_cast<unsigned>(hi - lo + 1)));
    };
    Problem p{{}, Vec(n), Vec(n), seed % 2 == 1};
    for (double& v : p.x0) v = rnd(0, 4);
    for (int i = 0; i < m; ++i) {
        simplex_constraint row{0, Vec(n), 0.0};
        double ax = 0;
        for (int j = 0; j < n; ++j) ax += (row.coefficients[j] = rnd(-4, 9)) * p.x0[j];
        row.type = static_cast<int>(rnd(0, 2));
        row.rhs = seed > 1000 ? rnd(-9, 30) : row.type == 0 ? ax : row.type == 1 ? ax - rnd(0, 5) : ax + rnd(0, 5);
        p.rows.push_back(row);
    }
    for (double& v : p.c) v = rnd(-9, 9);
    return p;
}

// The solver on the arrays that simplex_solve hands it, kept for warm starts.
struct Arrays {
    int m, n;
    Vec A, t, b, c, xb, pi, rc, work;
    std::vector<int> ib;
    double value = 0, errors[4];
    int status[4];
    explicit Arrays(const Problem& p)
        : m(static_cast<int>(p.rows.size())), n(static_cast<int>(p.c.size())), A(m * n), t(m), b(m), c(p.c),
          xb(m + 2), pi(m), rc(m + n), work((m + 5) * m + 6), ib(m) {
        for (int i = 0; i < m; ++i) {
            for (int j = 0; j < n; ++j) A[j * m + i] = p.rows[i].coefficients[j];
            t[i] = p.rows[i].type == 0 ? 0 : p.rows[i].type == 1 ? -1 : 1;
            b[i] = p.rows[i].rhs;
        }
    }
    int solve(bool minimise, int start = 0, int pivotLimit = 10000, int stallLimit = -1) {
        int options[19] = {m, n, m, n, minimise ? 0 : 1, (m + 5) * m + 6, start, 1, 0, pivotLimit, stallLimit, -1, 1};
        options[18] = 72;
        double tolerances[4] = {-1, -1, -1, -1};
        lpprim::lpprim(A.data(), t.data(), b.data(), c.data(), options, tolerances, &value, xb.data(), ib.data(),
                       pi.data(), rc.data(), errors, status, work.data());
        return status[0];
    }
};

}  // namespace

TEST(Simplex, OptimaAndEndsAgreeWithScipy) {
    // scipy.optimize.linprog(method="highs"), scipy 1.10.1, bounds (0, None);
    // its status 0 optimal, 2 infeasible, 3 unbounded.
    struct Case { unsigned seed; int m, n, scipyStatus; double optimum; } cases[] = {
        {1, 10, 5, 0, -18.999999999999972}, {3, 9, 1, 0, -4}, {7, 3, 2, 0, -7.4000000000000012},
        {11, 10, 4, 0, -16.000000000000018}, {14, 5, 3, 0, -10.775000000000006}, {23, 6, 4, 3, 0},
        {17, 10, 10, 0, -109.36029715529494}, {33, 10, 10, 0, -19.210465158255811},
        {56, 10, 12, 0, 176.23295730667024}, {91, 10, 14, 0, -84.755009579722667}, {104, 9, 14, 3, 0},
        {108, 10, 11, 0, 99.744682956013619}, {135, 10, 13, 0, 12.852502882773953}, {171, 10, 11, 3, 0},
        {181, 10, 15, 0, -171.6485033365756}, {213, 10, 15, 0, -122.52296577200957},
        {230, 10, 12, 0, 23.587261146496811}, {258, 10, 11, 0, -14.289884083064413},
        {309, 8, 14, 0, -364.20174081238036}, {335, 10, 15, 0, -121.81446751507028},
        {375, 8, 13, 0, -774.78217821782198}, {1008, 10, 12, 0, 19.310673904010905}, {1021, 7, 15, 3, 0},
        {1039, 9, 15, 2, 0}, {1062, 10, 13, 0, -18.653430555788219}, {1080, 9, 13, 0, 0.44264249038470971},
        {1113, 10, 15, 2, 0}, {1250, 10, 13, 0, -0.39618879126810214},
    };
    for (const Case& k : cases) {
        const Problem p = generated(k.seed, k.m, k.n);
        Arrays lp(p);
        EXPECT_EQ(lp.solve(p.minimise), k.scipyStatus == 0 ? 1 : k.scipyStatus) << "problem " << k.seed;
        if (k.scipyStatus != 0) {
            EXPECT_EQ(failureOf([&] { simplex_solve(p.rows, p.c, p.minimise); }), "misc_optim_simplex: Simplex failed.");
            continue;
        }
        const std::pair<Vec, double> s = simplex_solve(p.rows, p.c, p.minimise);
        EXPECT_NEAR(s.second, k.optimum, 1e-9 * (1 + std::fabs(k.optimum))) << "problem " << k.seed;
    }
}

TEST(Simplex, SolutionsAreFeasibleAndAtLeastAsGoodAsTheKnownPoint) {
    // Every problem has the feasible point x0, so a failure must be unboundedness.
    for (unsigned seed = 1; seed <= 300; ++seed) {
        const Problem p = generated(seed, 1 + seed % 10, 1 + seed * 7 % 15);
        if (Arrays(p).solve(p.minimise) == 3) continue;
        const std::pair<Vec, double> s = simplex_solve(p.rows, p.c, p.minimise);
        double cx = 0, cx0 = 0;
        for (std::size_t j = 0; j < p.c.size(); ++j) {
            EXPECT_GE(s.first[j], 0.0);
            cx += p.c[j] * s.first[j];
            cx0 += p.c[j] * p.x0[j];
        }
        for (const simplex_constraint& r : p.rows) {
            double ax = 0;
            for (std::size_t j = 0; j < p.c.size(); ++j) ax += r.coefficients[j] * s.first[j];
            const double gap = r.type == 0 ? std::fabs(ax - r.rhs) : r.type == 1 ? r.rhs - ax : ax - r.rhs;
            EXPECT_LE(gap, 1e-9) << "problem " << seed;
        }
        EXPECT_NEAR(cx, s.second, 1e-9 * (1 + std::fabs(cx))) << "problem " << seed;
        EXPECT_LE(p.minimise ? cx - cx0 : cx0 - cx, 1e-9) << "problem " << seed;
    }
}

TEST(Simplex, SmallCasesShowEachEnd) {
    const simplex_constraint sum{0, {1, 1}, 1};
    std::pair<Vec, double> s = simplex_solve({sum}, {1, 0}, false);
    EXPECT_EQ(s.first, Vec({1, 0}));
    EXPECT_EQ(s.second, 1);
    EXPECT_EQ(simplex_solve({sum}, {1, 0}, true).second, 0);
    // The second equation is redundant: an artificial stays basic at level zero.
    s = simplex_solve({sum, sum}, {2, 1}, false);
    EXPECT_EQ(s.first, Vec({1, 0}));
    EXPECT_EQ(s.second, 2);

    const Problem infeasible{{{1, {1}, 2}, {2, {1}, 1}}, {1}, {}, true};
    const Problem unbounded{{{0, {1, -1}, 0}}, {1, 0}, {}, false};
    EXPECT_EQ(Arrays(infeasible).solve(true), 2);
    EXPECT_EQ(Arrays(unbounded).solve(false), 3);
    for (const Problem* p : {&infeasible, &unbounded})
        EXPECT_EQ(failureOf([&] { simplex_solve(p->rows, p->c, p->minimise); }), "misc_optim_simplex: Simplex failed.");

    const std::string invalid = "misc_optim_simplex: Invalid constraints for simplex algorithm.";
    const double nan = std::nan("");
    const struct { std::vector<simplex_constraint> rows; Vec c; } bad[] = {
        {{{0, {1, 1}, 1}, {0, {1, 1, 1}, 1}}, {1, 1}}, {{{0, {1, 1}, 1}}, {1, 1, 1}}, {{}, {1}},
        {{{0, {}, 1}}, {}}, {{{3, {1}, 1}}, {1}}, {{{0, {nan}, 1}}, {1}}, {{{0, {1}, 1}}, {nan}},
    };
    for (const auto& k : bad) EXPECT_EQ(failureOf([&] { simplex_solve(k.rows, k.c, true); }), invalid);
}

TEST(Simplex, LimitsEndTheSearch) {
    const Problem p = generated(181, 10, 15);
    Arrays lp(p);
    EXPECT_EQ(lp.solve(p.minimise, 0, 3), 4);
    EXPECT_EQ(lp.status[1], 3);
    // With a limit of one, the first pivot that leaves the objective where it
    // was ends the search; this problem of integer data has such a pivot.
    EXPECT_EQ(Arrays(generated(17, 10, 10)).solve(true, 0, 10000, 1), 5);
}

TEST(Simplex, WarmStartsReachTheOptimumOfTheChangedProblem) {
    // Start 1 reinverts the basis; 2 takes new costs and right sides, 3 new
    // right sides, 4 new costs, all from the inverse of the earlier solve.
    for (int start = 1; start <= 4; ++start) {
        Problem p = generated(213, 10, 15);
        Arrays lp(p);
        ASSERT_EQ(lp.solve(p.minimise), 1);
        for (std::size_t i = 0; i < p.rows.size() && (start == 2 || start == 3); ++i) lp.b[i] = p.rows[i].rhs += 0.5 * (i % 3);
        for (std::size_t j = 0; j < p.c.size() && (start == 2 || start == 4); ++j) lp.c[j] = p.c[j] += 0.25 * (j % 4);
        ASSERT_EQ(lp.solve(p.minimise, start), 1) << "start " << start;
        EXPECT_NEAR(lp.value, simplex_solve(p.rows, p.c, p.minimise).second, 1e-9) << "start " << start;
        if (start == 1) {
            EXPECT_EQ(lp.status[1], 0);
        }
    }
}
