// Nelder-Mead against R's optim, which implements the same published routine, the ends of the search, and the
// golden section search.
#include "numerics/misc_optim.h"
#include "support/test_support.h"

using namespace velmora;
using velmora_test::failureOf;

namespace {
typedef std::vector<double> Vec;

double rosenbrock(Vec x) {
    const double a = x[1] - x[0] * x[0], b = 1 - x[0];
    return 100 * (a * a) + b * b;
}
double quadratic(Vec x) {
    return std::pow(x[0] - 1, 2) + 2 * std::pow(x[1] + 2, 2) + 3 * std::pow(x[2] - 0.5, 2) + 0.5 * x[0] * x[1];
}
double parabola(double x) { return (x - 1) * (x - 1); }

// Every point the goal function was called with, and a goal function whose value only grows with each call.
std::vector<Vec> calls;
double recordConstant(Vec x) { return calls.push_back(x), 4.0; }
double everLarger(Vec x) { return calls.push_back(x), static_cast<double>(calls.size()); }

struct SearchRun { Vec best; double minimum = 0; int fail = -1, count = -1; };

SearchRun search(Vec start, double (*fn)(Vec), double intol, unsigned maxit) {
    SearchRun r;
    nmmin(start, &r.best, &r.minimum, fn, &r.fail, -INFINITY, intol, 1.0, 0.5, 2.0, &r.count, maxit);
    return r;
}
}  // namespace

TEST(Nmmin, MatchesROptimNelderMeadCountsAndMinimum) {
    // R 4.2 optim(start, fn, method = "Nelder-Mead", control = list(reltol = intol, maxit = maxit)), abstol -Inf,
    // printed with %.17g.
    const struct { const char* what; double (*fn)(Vec); Vec start; double intol; unsigned maxit; double value;
                   int count, fail; Vec par; } cases[] = {
        {"rosenbrock 1e-8", rosenbrock, {-1.2, 1}, 1e-8, 5000, 8.8252410967227472e-08, 195, 0,
         {1.0002601387256695, 1.000505999303765}},
        {"rosenbrock 1e-12", rosenbrock, {-1.2, 1}, 1e-12, 5000, 1.5632221032592472e-11, 221, 0,
         {1.0000009841101052, 1.000001585288439}},
        {"rosenbrock maxit 1", rosenbrock, {-1.2, 1}, 1e-8, 1, 7.0952960000000038, 5, 1, {-1.0800000000000001, 1}},
        {"rosenbrock maxit 50", rosenbrock, {-1.2, 1}, 1e-8, 50, 3.1037095813242419, 51, 1,
         {-0.71460362434386515, 0.47018069267272222}},
        {"quadratic 1e-8", quadratic, {0, 0, 0}, 1e-8, 5000, -1.3225806016849417, 142, 0,
         {1.54833287963366, -2.1936374002797585, 0.50008617257222798}},
        {"quadratic 1e-12", quadratic, {0, 0, 0}, 1e-12, 5000, -1.3225806451591109, 188, 0,
         {1.5483859980916639, -2.193548639202942, 0.49999951464306458}},
    };
    for (const auto& c : cases) {
        const SearchRun r = search(c.start, c.fn, c.intol, c.maxit);
        EXPECT_EQ(r.count, c.count) << c.what;
        EXPECT_EQ(r.fail, c.fail) << c.what;
        EXPECT_EQ(r.minimum, c.value) << c.what;
        EXPECT_EQ(r.best, c.par) << c.what;
    }
}

TEST(Nmmin, PolytopeFormContinuesTheStartForm) {
    // The start form's own polytope handed in ready-made gives the same search.
    Matrix polytope(3, 4);
    const double vertices[3][2] = {{-1.2, 1}, {-1.2 + 0.12, 1}, {-1.2, 1 + 0.12}};
    for (unsigned j = 0; j < 3; ++j)
        for (unsigned i = 0; i < 2; ++i) polytope(i, j) = vertices[j][i];
    SearchRun r;
    nmmin(polytope, &r.best, &r.minimum, rosenbrock, &r.fail, -INFINITY, 1e-8, 1.0, 0.5, 2.0, &r.count, 5000);
    const SearchRun s = search({-1.2, 1}, rosenbrock, 1e-8, 5000);
    EXPECT_EQ(r.count, s.count);
    EXPECT_EQ(r.minimum, s.minimum);
    EXPECT_EQ(r.best, s.best);
    for (Matrix bad : {Matrix(), Matrix(2, 2), Matrix(3, 3)})
        EXPECT_EQ(failureOf([&] { nmmin(bad, &r.best, nullptr, rosenbrock, nullptr, 0, 1e-8, 1, 0.5, 2, nullptr, 9); }),
                  "misc_optim: Invalid polytope.");
}

TEST(Nmmin, StartPolytopeAndTheEndsOfTheSearch) {
    // A constant function: vertex j is the start moved along coordinate j-1, by 0.1 from an all-zero start and by a
    // tenth of the largest coordinate otherwise, and the search ends after building it.
    const struct { Vec start; std::vector<Vec> vertices; } starts[] = {
        {{0, 0}, {{0, 0}, {0.1, 0}, {0, 0.1}}},
        {{1e20, 1}, {{1e20, 1}, {1.1e20, 1}, {1e20, 1e19 + 1}}},
    };
    for (const auto& c : starts) {
        calls.clear();
        const SearchRun r = search(c.start, recordConstant, 1e-8, 100);
        EXPECT_EQ(calls, c.vertices);
        EXPECT_EQ(r.count, 3);
        EXPECT_EQ(r.fail, 0);
        EXPECT_EQ(r.best, c.start);
    }
    // Values that grow with every call force a shrink each pass, until the polytope collapses onto the start.
    calls.clear();
    const SearchRun collapsed = search({1, 2}, everLarger, 1e-8, 1000000);
    EXPECT_EQ(collapsed.fail, 10);
    EXPECT_EQ(collapsed.best, Vec({1, 2}));
    EXPECT_EQ(collapsed.minimum, 1);
    // An infinite coordinate can't be moved: the start polytope is still built, and the search ends.
    calls.clear();
    const SearchRun infinite = search({INFINITY, 0}, recordConstant, 1e-8, 100);
    EXPECT_EQ(infinite.fail, 0);
    EXPECT_EQ(infinite.count, 3);
}

TEST(GoldenSection, FindsTheMinimumAndAlwaysEnds) {
    EXPECT_NEAR(golden_section_search(parabola, 0, 3, 1e-6), 1, 1e-6);
    // A bracket already within tol: the better of the two inner points,
    // 3c = 1.1459 and 3c + c (3 - 3c) = 1.8541.
    EXPECT_NEAR(golden_section_search(parabola, 0, 3, 3), 3 * 0.3819660112501051, 1e-15);
    // No tolerance at all: the bracket shrinks to the spacing of doubles.
    EXPECT_NEAR(golden_section_search(parabola, 0, 3, 0), 1, 1e-7);
    EXPECT_NEAR(golden_section_search(parabola, -1, 0, 1e-10), 0, 1e-9);
}
