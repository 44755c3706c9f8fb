// Matrix and Vector: construction, the two text forms, checked access and the failures with their messages.
#include "support/test_support.h"

using namespace velmora;
using velmora_test::failureOf;

namespace {
const std::string INDEX = "matrix: Invalid row or col index.";
const std::string COUNTS = "matrix: Invalid value for number of rows or cols.";
const std::string NOT_A_MATRIX = "matrix: Not a matrix.";

Matrix m22() { return Matrix({{1, 2}, {3, 4}}); }
}  // namespace

TEST(Matrix, EveryRefusalAndIndexCheckCarriesItsMessage) {
    Matrix m = m22(), r({{1, 2, 3}});
    Vector row({1, 2}, true), row3({10, 20, 30}, true);
    struct Case { std::function<void()> f; std::string failure; } cases[] = {
        {[] { Matrix(0, 2, MATRIX_ZERO); }, COUNTS},
        {[] { Vector(0, true, VECTOR_ZERO); }, COUNTS},
        {[] { Matrix(2, 3, MATRIX_IDENTITY); }, "matrix: Cannot create identity matrix."},
        {[] { Matrix({{1, 2}, {3}}); }, NOT_A_MATRIX},
        {[] { Matrix({1, 2, 3}, 2, 2, true); }, "matrix: Invalid matrix dimensions."},
        {[&] { m.resize(0, 3); }, COUNTS},
        {[&] { m.setDiag({1, 1, 1}); }, "matrix: Invalid number of diagonal elements."},
        {[&] { m * r; }, "matrix: These Matrices cannot be multiplied."},
        {[&] { m + r; }, "matrix: These Matrices cannot be added."},
        {[&] { m - r; }, "matrix: These Matrices cannot be subtracted."},
        {[&] { r ^ 2; }, "matrix: Operation not permitted."},
        {[] { Matrix() ^ 1; }, "matrix: Operation not permitted."},
        {[] { Matrix({{1, 2}, {2, 4}}) ^ -1; }, "misc_linalg: Singular matrix."},
        {[&] { row * row; }, "matrix: Cannot multiply vectors."},
        {[&] { m * row; }, "matrix: These Matrices cannot be multiplied."},
        {[&] { row + row.transpose(); }, "matrix: Cannot add vectors."},
        {[&] { row - row.transpose(); }, "matrix: Cannot add vectors."},
        {[&] { row3 + row; }, INDEX},  // sums run over the left operand
        {[&] { row3.setSubvector(2, row); }, "matrix: Invalid vector index."},
    };
    int n = 0;
    for (const Case& c : cases) EXPECT_EQ(failureOf(c.f), c.failure) << "case " << n++;
    // Every checked access.
    Matrix empty;
    Vector col({1, 2, 3}, false);
    std::function<void()> access[] = {
        [&] { m.getValue(0, 2); }, [&] { m.setValue(2, 0, 1); }, [&] { m.addValue(0, 5, 1); },
        [&] { m(-1, 0); }, [&] { m(2u, 0u); }, [&] { m[-1]; }, [&] { m[std::size_t(2)]; }, [&] { m.getRowSum(2); },
        [&] { m.getCol(2); }, [&] { m.setRow(0, std::vector<double>{1, 2, 3}); }, [&] { m.setRow(0, empty); },
        [&] { m.setCol(2, std::vector<double>{1, 2}); }, [&] { m.getSubmatrix(1, 0, 0, 1); },
        [&] { m.setSubmatrix(1, 1, m22()); }, [&] { empty.getSmallestValueAbs(); },
        [&] { empty.getLargestValueDiag(); }, [&] { col[3]; }, [&] { col.setValue(3, 1); },
    };
    n = 0;
    for (auto& f : access) EXPECT_EQ(failureOf(f), INDEX) << "access " << n++;
    EXPECT_EQ(m, m22());  // failures leave the operand unchanged
}

TEST(Matrix, ConstructorsOperationsAndPowersGiveTheirMatrices) {
    // Products sum in index order: (1e16 + 1) - 1e16 is 0. Powers multiply from the right and invert for
    // negative exponents.
    Matrix m = m22(), p({{2, 1}, {1, 1}});
    const std::pair<Matrix, Matrix> cases[] = {
        {Matrix(2, 2, MATRIX_IDENTITY), Matrix({{1, 0}, {0, 1}})}, {Matrix(1, 3, MATRIX_ONES), Matrix({{1, 1, 1}})},
        {Matrix({1, 2, 3, 4, 5, 6}, 2, 3, true), Matrix({{1, 2, 3}, {4, 5, 6}})},
        {Matrix({1, 2, 3, 4, 5, 6}, 2, 3, false), Matrix({{1, 3, 5}, {2, 4, 6}})},
        {Matrix({1, 2}, MATRIX_COLUMN), Matrix({{1}, {2}})},
        {Matrix({1, 2}, MATRIX_DIAGONAL), Matrix({{1, 0}, {0, 2}})},
        {m.downshift(), Matrix({{0, 0}, {1, 2}})}, {Matrix({{1, 2, 3}}).transpose(), Matrix({{1}, {2}, {3}})},
        {2.0 * m, Matrix({{2, 4}, {6, 8}})}, {m / 2.0, Matrix({{0.5, 1}, {1.5, 2}})},
        {-m + m * 3.0, Matrix({{2, 4}, {6, 8}})}, {m - m, Matrix(2, 2, MATRIX_ZERO)},
        {m * m, Matrix({{7, 10}, {15, 22}})},
        {Matrix({{1e16, 1, -1e16}}) * Matrix({{1}, {1}, {1}}), Matrix({{0}})},
        {p ^ 0, Matrix(2, 2, MATRIX_IDENTITY)}, {p ^ 3, p * p * p}, {p ^ -2, Matrix({{2, -3}, {-3, 5}})},
        {p.inverse(), Matrix({{1, -1}, {-1, 2}})},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) EXPECT_EQ(cases[i].first, cases[i].second) << "case " << i;
    EXPECT_FALSE(m == Matrix({{1, 2}}));
    EXPECT_FALSE(m == Matrix({{1, 2}, {3, 4.000000000000001}}));
    Matrix small({{0.5, -0.49}, {-0.5, 1e-9}});
    small.eliminateSmallValues(0.5);
    EXPECT_EQ(small, Matrix({{0.5, 0}, {-0.5, 0}}));
}

TEST(Matrix, TextFormReadsWithItsLineFeedQuirkAndWritesBack) {
    struct Case { std::string text; Matrix expected; } cases[] = {
        {"  1   2  \n3 4 ", Matrix({{1, 2}, {3, 4}})},  // extra blanks add no tokens
        {"0.5 -1e-3", Matrix({{0.5, -0.001}})},
        {"1 x\n3 4", Matrix({{1, 0}, {3, 4}})},  // what can't be read counts as 0
        // An empty line inside the text does not stand by itself: its line feed heads the next line.
        {"1 2\n\n3 4", Matrix({{1, 2}, {3, 4}})},
        {"\n1 2\n3 4", Matrix({{1, 2}, {3, 4}})},
        {"1\n\n\n3", Matrix({{1}, {0}, {3}})},  // a lone line feed reads as 0
        {"1\t2", Matrix({{1}})},  // tabs don't separate
    };
    for (const Case& c : cases) EXPECT_EQ(Matrix(c.text), c.expected) << c.text;
    struct Bad { std::string text, failure; } bad[] = {
        {"1 2\n3", NOT_A_MATRIX},
        {"1 2\n3 4\n", NOT_A_MATRIX},  // the final line feed leaves an empty last line
        {"", COUNTS},
        {" \n1 2", COUNTS},
    };
    for (const Bad& c : bad) EXPECT_EQ(failureOf([&] { Matrix m(c.text); }), c.failure) << c.text;
    // Written with the given significant digits, the form reads back.
    Matrix m({{1.0 / 3, -2}, {1e-12, 123456789}});
    EXPECT_EQ(m.toString(3), "0.333 -2 \n1e-12 1.23e+08 \n");
    std::string text = m.toString(17);
    EXPECT_EQ(Matrix(text.substr(0, text.size() - 1)), m);
    EXPECT_EQ(Matrix().toString(6), "");
}

TEST(Matrix, BlockAccessAndResizeTouchTheRightEntries) {
    Matrix m({{1, 2, 3}, {4, 5, 6}, {7, 8, 9}});
    EXPECT_EQ(m.getSubmatrix(1, 2, 0, 1), Matrix({{4, 5}, {7, 8}}));
    EXPECT_EQ(m.getCol(1), (std::vector<double>{2, 5, 8}));
    EXPECT_EQ(Matrix({{1, 2, 3}, {4, 5, 6}}).getDiag(), (std::vector<double>{1, 5}));
    m[1][2] = 60;
    m(2, 0) = 70;
    m.addValue(0, 0, 0.5);
    m.setSubmatrix(1, 1, Matrix({{-1}, {-2}}));
    EXPECT_EQ(m, Matrix({{1.5, 2, 3}, {4, -1, 60}, {70, -2, 9}}));
    m.setRow(0, Matrix({{7, 7, 7}, {0, 0, 0}}));
    m.setCol(2, Matrix({{1, 9}, {2, 9}, {3, 9}}));
    m.setRow(1, std::vector<double>{0});  // a shorter list overwrites the leading entries only
    EXPECT_EQ(m, Matrix({{7, 7, 1}, {0, -1, 2}, {70, -2, 3}}));
    m.setDiag({1, 1, 1});
    EXPECT_EQ(m.getDiag(), (std::vector<double>{1, 1, 1}));
    Matrix r = m22();
    r.resize(3, 1);
    EXPECT_EQ(r, Matrix({{1}, {3}, {0}}));
    r.resize(2, 3);
    EXPECT_EQ(r, Matrix({{1, 0, 0}, {3, 0, 0}}));
}

TEST(Matrix, ScalarQueriesAndShapeTestsAreExact) {
    Matrix m({{-1, 2, -7}, {4, -0.5, 3}});
    const std::pair<double, double> scalars[] = {  // largest, smallest, by magnitude, on the diagonal, sum
        {m.getLargestValue(), 4}, {m.getSmallestValue(), -7}, {m.getLargestValueAbs(), 7},
        {m.getSmallestValueAbs(), 0.5}, {m.getLargestValueDiag(), -0.5}, {m.getLargestValueAbsDiag(), 1},
        {m.getSum(), 0.5}};
    for (const auto& s : scalars) EXPECT_EQ(s.first, s.second);
    EXPECT_EQ(m.getRowSums(), Matrix({{-6}, {6.5}}));
    EXPECT_TRUE(Matrix({{1, 0}, {2, 3}}).isLowerTriangular());
    EXPECT_FALSE(Matrix({{1, 1e-300}, {2, 3}}).isLowerTriangular());
    EXPECT_FALSE(Matrix({{1, 5}, {1e-300, 3}}).isUpperTriangular());
    // The subgenerator test has no tolerance either.
    struct Case { Matrix m; bool expected; } cases[] = {
        {Matrix({{-1, 1}, {2, -3}}), true},
        {Matrix(2, 2, MATRIX_ZERO), true},
        {Matrix({{-1, 1.0000001}, {0, -1}}), false},  // row sum above 0
        {Matrix({{0.5, -0.5}, {0, 0}}), false},       // diagonal above 0
        {Matrix({{-1, 0}, {-1e-300, 0}}), false},     // negative off-diagonal entry
        {Matrix({{-1, 1, 0}}), false},                // not square
        {Matrix(), false},
    };
    for (const Case& c : cases) EXPECT_EQ(c.m.isSubgeneratorMatrix(), c.expected) << c.m.toString(6);
}

TEST(Matrix, RowTimesMatrixSumsInAscendingOrder) {
    struct Case { std::vector<double> v; Matrix P; std::vector<double> expected; } cases[] = {
        {{1, 2}, Matrix({{3, 4}, {5, 6}}), {13, 16}},
        {{2}, Matrix({{1, -1, 0.5}}), {2, -2, 1}},
        // (1 + 1e16) - 1e16 in this order loses the 1; the reverse order keeps it.
        {{1, 1e16, -1e16}, Matrix({{1}, {1}, {1}}), {0}},
    };
    for (const Case& c : cases) {
        std::vector<double> out(c.expected.size(), -7.0);
        row_times_matrix(c.v.data(), c.P, out.data());
        EXPECT_EQ(out, c.expected);
    }
}

TEST(Vector, OrientationSingleIndexAccessAndArithmeticWithMatricesAndVectors) {
    EXPECT_EQ(Vector(3, true, VECTOR_ONES).toMatrix(), Matrix({{1, 1, 1}}));
    Vector col({1, 2, 3}, false);
    EXPECT_EQ(col.toMatrix(), Matrix({{1}, {2}, {3}}));
    col[1] = 5;  // the brackets give the entry, not a row
    col(2) += 1;
    col.addValue(0, 0.5);
    EXPECT_EQ(col.asVector(), (std::vector<double>{1.5, 5, 4}));
    Vector t = col.transpose();
    EXPECT_TRUE(t.isRowVector());
    EXPECT_FALSE(t == col);  // orientation counts
    EXPECT_EQ(t.toString(6), "1.5 5 4 \n");

    Vector w({1, 2, 1}, true);
    w.normalize();
    EXPECT_EQ(w.asVector(), (std::vector<double>{0.25, 0.5, 0.25}));
    Vector s(4, false, VECTOR_ZERO);
    s.setSubvector(2, Vector({7, 8}, true));
    EXPECT_EQ(s.asVector(), (std::vector<double>{0, 0, 7, 8}));

    // A column vector keeps column 0 of its product, a row vector row 0; sums run over the left operand.
    Matrix m = m22();
    Vector v({1, -2}, true), row({1, 1}, true), ones({1, 1}, false), a({1, 2}, true), b({10, 20, 30}, true);
    const std::pair<Vector, Vector> cases[] = {
        {1.0 + v, Vector({2, -1}, true)}, {3.0 * v, Vector({3, -6}, true)}, {-v / 2.0, Vector({-0.5, 1}, true)},
        {row * m, Vector({4, 6}, true)}, {m * ones, Vector({3, 7}, false)},
        {Vector({1, 2}, false) * Matrix({{3, 4}}), Vector({3, 6}, false)},
        {Matrix({{3}, {4}}) * Vector({1, 2}, true), Vector({3, 6}, true)},
        {a + b, Vector({11, 22}, true)}, {a - b, Vector({-9, -18}, true)},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) EXPECT_EQ(cases[i].first, cases[i].second) << "case " << i;
    EXPECT_EQ(row * ones, Matrix({{2}}));
    EXPECT_EQ(Vector({1, 2}, false) * Vector({3, 4}, true), Matrix({{3, 4}, {6, 8}}));
}
