// Dense matrices of doubles and one-row or one-column vectors: plain value
// types in which all Markovian models are written. Every element access
// through the interface is checked; the arithmetic works on the raw rows.
#ifndef VELMORA_NUMERICS_MATRIX_H
#define VELMORA_NUMERICS_MATRIX_H

#include <initializer_list>
#include <string>
#include <type_traits>
#include <vector>

namespace velmora {

enum MatrixType { MATRIX_ZERO = 0, MATRIX_ONES = 1, MATRIX_IDENTITY = 2 };

// How a list becomes a matrix.
enum MatrixStructure { MATRIX_ROW = 0, MATRIX_COLUMN = 1, MATRIX_DIAGONAL = 2 };

enum VectorType { VECTOR_ZERO = 0, VECTOR_ONES = 1 };

class Matrix {
public:
    Matrix();
    Matrix(unsigned rows, unsigned cols, MatrixType type = MATRIX_ZERO);
    Matrix(std::vector<std::vector<double>> data);
    // Matrix({{1, 2}, {3, 4}}): without it the braces could also make a string.
    Matrix(std::initializer_list<std::vector<double>> data);
    Matrix(std::vector<double> data, unsigned rows, unsigned cols, bool rowMajor);
    // Rows separated by one line feed, values by blanks.
    explicit Matrix(std::string text);
    Matrix(std::vector<double> data, MatrixStructure structure);
    Matrix(const Matrix& other) = default;
    Matrix& operator=(const Matrix& other) = default;
    Matrix(Matrix&& other) = default;
    Matrix& operator=(Matrix&& other) = default;

    // Sizes and scalar queries.
    unsigned getNumberRows() const;
    unsigned getNumberCols() const;
    unsigned getNumberEntries() const;
    double getLargestValue() const;
    double getSmallestValue() const;
    double getLargestValueAbs() const;
    double getSmallestValueAbs() const;
    double getLargestValueDiag() const;
    double getLargestValueAbsDiag() const;
    double getRowSum(unsigned row) const;
    double getSum() const;
    Matrix getRowSums() const;
    bool isLowerTriangular() const;
    bool isUpperTriangular() const;
    bool isSubgeneratorMatrix() const;
    // Each value with `precision` significant digits and one blank behind
    // it; every row ends in a line feed.
    std::string toString(int precision) const;

    // Checked element and block access ("Invalid row or col index.").
    double getValue(unsigned row, unsigned col) const;
    void setValue(unsigned row, unsigned col, double value);
    void addValue(unsigned row, unsigned col, double value);
    double& operator()(unsigned row, unsigned col);
    double& operator()(int row, int col);
    const double& operator()(unsigned row, unsigned col) const;
    const double& operator()(int row, int col) const;
    std::vector<double>& operator[](unsigned row);
    std::vector<double>& operator[](int row);
    const std::vector<double>& operator[](unsigned row) const;
    const std::vector<double>& operator[](int row) const;

    // Other integer types (size_t, long, mixed signedness) would be ambiguous
    // between the two forms above; these take them with the same checks.
    template <typename R, typename C,
              typename = std::enable_if_t<std::is_integral<R>::value && std::is_integral<C>::value>>
    double& operator()(R row, C col) {
        return entry(checkedIndex(row), checkedIndex(col));
    }
    template <typename R, typename C,
              typename = std::enable_if_t<std::is_integral<R>::value && std::is_integral<C>::value>>
    const double& operator()(R row, C col) const {
        return entry(checkedIndex(row), checkedIndex(col));
    }
    template <typename R, typename = std::enable_if_t<std::is_integral<R>::value>>
    std::vector<double>& operator[](R row) {
        return rowAt(checkedIndex(row));
    }
    template <typename R, typename = std::enable_if_t<std::is_integral<R>::value>>
    const std::vector<double>& operator[](R row) const {
        return rowAt(checkedIndex(row));
    }

    std::vector<double> getRow(unsigned row) const;
    std::vector<double> getCol(unsigned col) const;
    std::vector<double> getDiag() const;
    void setRow(unsigned row, std::vector<double> values);
    void setRow(unsigned row, Matrix m);
    void setCol(unsigned col, std::vector<double> values);
    void setCol(unsigned col, Matrix m);
    void setDiag(std::vector<double> values);
    Matrix getSubmatrix(unsigned firstRow, unsigned lastRow, unsigned firstCol, unsigned lastCol) const;
    void setSubmatrix(unsigned row, unsigned col, Matrix m);
    void resize(unsigned rows, unsigned cols);

    // Whole-matrix operations; each returns a new object. Operands are read
    // through const references, which for a value type only saves the copy.
    Matrix downshift() const;
    Matrix transpose() const;
    void eliminateSmallValues(double eps);
    Matrix operator*(double factor) const;
    Matrix operator/(double divisor) const;
    Matrix operator*(const Matrix& other) const;
    Matrix operator+(const Matrix& other) const;
    Matrix operator-(const Matrix& other) const;
    bool operator==(const Matrix& other) const;
    // Plain repeated multiplication from the right; a negative exponent
    // raises the inverse.
    Matrix operator^(int n) const;
    // Gauss-Jordan inverse of a copy.
    Matrix inverse() const;

protected:
    // A negative index becomes one that no matrix has, so the check fails.
    template <typename I>
    static unsigned long long checkedIndex(I index) {
        if (std::is_signed<I>::value && index < 0) return ~0ULL;
        return static_cast<unsigned long long>(index);
    }
    // Checked references to a row and to an entry.
    std::vector<double>& rowAt(unsigned long long row);
    const std::vector<double>& rowAt(unsigned long long row) const;
    double& entry(unsigned long long row, unsigned long long col);
    const double& entry(unsigned long long row, unsigned long long col) const;

    std::vector<std::vector<double>> rows;
};

Matrix operator*(double factor, Matrix m);
Matrix operator-(Matrix m);

class Vector : public Matrix {
public:
    Vector();
    Vector(unsigned n, bool isRow, VectorType type = VECTOR_ZERO);
    Vector(std::vector<double> data, bool isRow);
    // Vector({6}, false) is the one-entry vector, not six zeros.
    Vector(std::initializer_list<double> data, bool isRow);
    Vector(const Vector& other) = default;
    Vector& operator=(const Vector& other) = default;
    Vector(Vector&& other) = default;
    Vector& operator=(Vector&& other) = default;

    unsigned getNumberEntries() const;
    bool isRowVector() const;
    Matrix toMatrix() const;

    // Two-index access of the underlying matrix stays available.
    using Matrix::addValue;
    using Matrix::getValue;
    using Matrix::setValue;

    // Single-index access; the brackets give the entry, not a row.
    double getValue(unsigned i) const;
    void setValue(unsigned i, double value);
    void addValue(unsigned i, double value);
    double& operator()(unsigned i);
    double& operator()(int i);
    const double& operator()(unsigned i) const;
    const double& operator()(int i) const;
    double& operator[](unsigned i);
    double& operator[](int i);
    const double& operator[](unsigned i) const;
    const double& operator[](int i) const;
    template <typename I, typename = std::enable_if_t<std::is_integral<I>::value>>
    double& operator()(I i) {
        return element(checkedIndex(i));
    }
    template <typename I, typename = std::enable_if_t<std::is_integral<I>::value>>
    const double& operator()(I i) const {
        return element(checkedIndex(i));
    }
    template <typename I, typename = std::enable_if_t<std::is_integral<I>::value>>
    double& operator[](I i) {
        return element(checkedIndex(i));
    }
    template <typename I, typename = std::enable_if_t<std::is_integral<I>::value>>
    const double& operator[](I i) const {
        return element(checkedIndex(i));
    }

    void normalize();
    double getSum() const;
    std::vector<double> asVector() const;
    Vector transpose() const;
    void setSubvector(unsigned start, Vector v);

    Vector operator+(double value) const;
    Vector operator*(double factor) const;
    Vector operator/(double divisor) const;
    bool operator==(const Vector& other) const;
    bool operator==(const Matrix& other) const;
    // Row vector: row 0 of the product as a row; column vector: column 0.
    Vector operator*(const Matrix& m) const;
    // Inner (row times column) or outer (column times row) product.
    Matrix operator*(const Vector& other) const;
    Vector operator+(const Vector& other) const;
    Vector operator-(const Vector& other) const;
    // Entry-wise sums with a plain Matrix.
    using Matrix::operator+;
    using Matrix::operator-;

private:
    double& element(unsigned long long i);
    const double& element(unsigned long long i) const;

    bool isRow;
};

Vector operator*(const Matrix& m, const Vector& v);
Vector operator+(double value, Vector v);
Vector operator*(double factor, Vector v);
Vector operator-(Vector v);

// The largest order of the square matrices that models build from a count
// of phases (the phase-type form of an Erlang or hyper-Erlang, say): the
// dense algorithms on them take quadratic memory and cubic time, 8 MB per
// matrix and seconds per inverse at this order.
const unsigned kMaxDenseOrder = 1000;
// Throws for an order above kMaxDenseOrder, naming `what`, the order and the
// memory one matrix of it would take, before anything is allocated.
void check_dense_order(unsigned long long order, const std::string& what);

// out = v P on raw rows, for v of P's row count and out of its column count:
// every entry is summed from 0 over k in ascending order, v[0] P[0][j] +
// v[1] P[1][j] + ..., which keeps the products of the likelihood and the
// uniformization bit-identical wherever they are formed. out must not
// overlap v; the rows of P are read through the checked row access.
void row_times_matrix(const double* v, const Matrix& P, double* out);

// A square matrix from blank-separated values written row after row, the
// XML form of the Markovian models' matrices: the order is the integer part
// of the square root of the count, and a count that is no square is refused
// ("Invalid matrix dimensions.").
Matrix square_matrix_from_list(const std::string& text);

// What keeps `Q` (plus `D1`, when given) from being a generator of a Markov
// chain within `tol` (each row sum at most tol times its diagonal), or ""
// when nothing does: entries that are not finite, an off-diagonal entry or
// an entry of D1 below 0, or a row that sums above 0 (`sub`: a sub-generator, whose rows may sum below 0)
// or away from 0. `name` and `name1` name the matrices in the text.
std::string generator_problem(const Matrix& Q, const Matrix* D1, bool sub, double tol, const std::string& name,
                              const std::string& name1);

}  // namespace velmora

#endif
