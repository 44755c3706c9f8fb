// Matrix: construction, the two text forms, checked element and block access,
// and whole-matrix arithmetic. Products run over the raw rows; each entry is
// still the sum over the inner index in ascending order, started from 0.
#include "numerics/matrix.h"

#include <cmath>
#include <sstream>
#include <utility>

#include "core/libvelmora_settings.h"
#include "core/misc_string.h"
#include "numerics/misc_linalg.h"

namespace velmora {

static void throwIndex(int line) {
    throw Exception("matrix", line, "Invalid row or col index.");
}

static void checkCounts(unsigned rows, unsigned cols) {
    if (rows == 0 || cols == 0)
        throw Exception("matrix", __LINE__, "Invalid value for number of rows or cols.");
}

// Bytes in binary units with one decimal: "7.6 MiB", "394.2 GiB".
static std::string byteText(double bytes) {
    static const char* const units[] = {"bytes", "KiB", "MiB", "GiB", "TiB", "PiB"};
    unsigned u = 0;
    while (bytes >= 1024 && u + 1 < sizeof units / sizeof units[0]) {
        bytes /= 1024;
        u++;
    }
    std::ostringstream out;
    out.setf(std::ios::fixed);
    out.precision(u == 0 ? 0 : 1);
    out << bytes << ' ' << units[u];
    return out.str();
}

void check_dense_order(unsigned long long order, const std::string& what) {
    if (order <= kMaxDenseOrder) return;
    const double bytes = static_cast<double>(order) * static_cast<double>(order) * sizeof(double);
    const double limit = static_cast<double>(kMaxDenseOrder) * kMaxDenseOrder * sizeof(double);
    throw Exception("matrix", __LINE__,
                    what + " of " + std::to_string(order) + " phases needs matrices of " + std::to_string(order) +
                        " x " + std::to_string(order) + " values (" + byteText(bytes) + " each); the limit is " +
                        std::to_string(kMaxDenseOrder) + " phases (" + byteText(limit) + ").");
}

// ---------------------------------------------------------------------------
// Construction

Matrix::Matrix() {}

Matrix::Matrix(unsigned nrows, unsigned ncols, MatrixType type) {
    checkCounts(nrows, ncols);
    if (type == MATRIX_IDENTITY && nrows != ncols)
        throw Exception("matrix", __LINE__, "Cannot create identity matrix.");
    rows.assign(nrows, std::vector<double>(ncols, type == MATRIX_ONES ? 1.0 : 0.0));
    if (type == MATRIX_IDENTITY)
        for (unsigned i = 0; i < nrows; i++) rows[i][i] = 1.0;
}

Matrix::Matrix(std::vector<std::vector<double>> data) {
    for (const std::vector<double>& row : data)
        if (row.size() != data[0].size()) throw Exception("matrix", __LINE__, "Not a matrix.");
    // Rows without entries would make a matrix of rows and no columns; such
    // data gives the empty matrix instead.
    if (!data.empty() && !data[0].empty()) rows = std::move(data);
}

Matrix::Matrix(std::initializer_list<std::vector<double>> data)
    : Matrix(std::vector<std::vector<double>>(data)) {}

Matrix::Matrix(std::vector<double> data, unsigned nrows, unsigned ncols, bool rowMajor) {
    if (data.size() != static_cast<unsigned long long>(nrows) * ncols)
        throw Exception("matrix", __LINE__, "Invalid matrix dimensions.");
    checkCounts(nrows, ncols);
    rows.assign(nrows, std::vector<double>(ncols, 0.0));
    unsigned n = 0;
    if (rowMajor) {
        for (unsigned i = 0; i < nrows; i++)
            for (unsigned j = 0; j < ncols; j++) rows[i][j] = data[n++];
    } else {
        for (unsigned j = 0; j < ncols; j++)
            for (unsigned i = 0; i < nrows; i++) rows[i][j] = data[n++];
    }
}

Matrix::Matrix(std::string text) {
    // The search for the next line feed starts one character behind the
    // start of the line: the line feed of an empty line inside the text stays
    // at the head of the next line, where reading the number skips it.
    std::vector<std::string> lines;
    std::string::size_type start = 0;
    while (true) {
        std::string::size_type pos = text.find('\n', start + 1);
        if (pos == std::string::npos) {
            lines.push_back(start < text.size() ? text.substr(start) : std::string());
            break;
        }
        lines.push_back(text.substr(start, pos - start));
        start = pos + 1;
    }
    std::vector<std::vector<std::string>> tokens;
    for (const std::string& line : lines) tokens.push_back(splitString(line, ' '));

    unsigned ncols = static_cast<unsigned>(tokens[0].size());
    resize(static_cast<unsigned>(tokens.size()), ncols);
    for (unsigned i = 0; i < tokens.size(); i++) {
        if (tokens[i].size() != ncols) throw Exception("matrix", __LINE__, "Not a matrix.");
        std::vector<double> row(ncols);
        for (unsigned j = 0; j < ncols; j++) row[j] = toDouble(tokens[i][j]);
        setRow(i, row);
    }
}

Matrix::Matrix(std::vector<double> data, MatrixStructure structure) {
    // An empty list gives the empty matrix.
    if (data.empty()) return;
    unsigned n = static_cast<unsigned>(data.size());
    switch (structure) {
        case MATRIX_ROW:
            rows.push_back(std::move(data));
            break;
        case MATRIX_COLUMN:
            rows.assign(n, std::vector<double>(1, 0.0));
            for (unsigned i = 0; i < n; i++) rows[i][0] = data[i];
            break;
        case MATRIX_DIAGONAL:
            rows.assign(n, std::vector<double>(n, 0.0));
            for (unsigned i = 0; i < n; i++) rows[i][i] = data[i];
            break;
    }
}

// ---------------------------------------------------------------------------
// Sizes and scalar queries

unsigned Matrix::getNumberRows() const { return static_cast<unsigned>(rows.size()); }

unsigned Matrix::getNumberCols() const {
    return rows.empty() ? 0 : static_cast<unsigned>(rows[0].size());
}

unsigned Matrix::getNumberEntries() const { return getNumberRows() * getNumberCols(); }

double Matrix::getLargestValue() const {
    double result = getValue(0, 0);
    for (const std::vector<double>& row : rows)
        for (double v : row)
            if (v > result) result = v;
    return result;
}

double Matrix::getSmallestValue() const {
    double result = getValue(0, 0);
    for (const std::vector<double>& row : rows)
        for (double v : row)
            if (v < result) result = v;
    return result;
}

double Matrix::getLargestValueAbs() const {
    double result = std::fabs(getValue(0, 0));
    for (const std::vector<double>& row : rows)
        for (double v : row)
            if (std::fabs(v) > result) result = std::fabs(v);
    return result;
}

double Matrix::getSmallestValueAbs() const {
    double result = std::fabs(getValue(0, 0));
    for (const std::vector<double>& row : rows)
        for (double v : row)
            if (std::fabs(v) < result) result = std::fabs(v);
    return result;
}

double Matrix::getLargestValueDiag() const {
    double result = getValue(0, 0);
    unsigned n = min(getNumberRows(), getNumberCols());
    for (unsigned i = 1; i < n; i++)
        if (rows[i][i] > result) result = rows[i][i];
    return result;
}

double Matrix::getLargestValueAbsDiag() const {
    double result = std::fabs(getValue(0, 0));
    unsigned n = min(getNumberRows(), getNumberCols());
    for (unsigned i = 1; i < n; i++)
        if (std::fabs(rows[i][i]) > result) result = std::fabs(rows[i][i]);
    return result;
}

double Matrix::getRowSum(unsigned row) const {
    double sum = 0;
    for (double v : rowAt(row)) sum += v;
    return sum;
}

double Matrix::getSum() const {
    double sum = 0;
    for (const std::vector<double>& row : rows)
        for (double v : row) sum += v;
    return sum;
}

Matrix Matrix::getRowSums() const {
    Matrix result;
    result.rows.assign(rows.size(), std::vector<double>(1, 0.0));
    for (unsigned i = 0; i < rows.size(); i++) result.rows[i][0] = getRowSum(i);
    return result;
}

bool Matrix::isLowerTriangular() const {
    for (unsigned i = 0; i < rows.size(); i++)
        for (unsigned j = i + 1; j < rows[i].size(); j++)
            if (rows[i][j] != 0.0) return false;
    return true;
}

bool Matrix::isUpperTriangular() const { return transpose().isLowerTriangular(); }

bool Matrix::isSubgeneratorMatrix() const {
    if (rows.empty() || getNumberRows() != getNumberCols()) return false;
    // No tolerance: a row sum of 1e-300 already fails.
    for (unsigned i = 0; i < rows.size(); i++) {
        if (getRowSum(i) > 0) return false;
        for (unsigned j = 0; j < rows[i].size(); j++) {
            if (i == j) {
                if (rows[i][j] > 0) return false;
            } else if (rows[i][j] < 0) {
                return false;
            }
        }
    }
    return true;
}

std::string Matrix::toString(int precision) const {
    std::ostringstream out;
    out.precision(FullPrecisionText::active() ? FullPrecisionText::kDigits : precision);
    for (const std::vector<double>& row : rows) {
        for (double v : row) out << v << ' ';
        out << '\n';
    }
    return out.str();
}

// ---------------------------------------------------------------------------
// Element and block access

std::vector<double>& Matrix::rowAt(unsigned long long row) {
    if (row >= rows.size()) throwIndex(__LINE__);
    return rows[row];
}

const std::vector<double>& Matrix::rowAt(unsigned long long row) const {
    if (row >= rows.size()) throwIndex(__LINE__);
    return rows[row];
}

double& Matrix::entry(unsigned long long row, unsigned long long col) {
    if (row >= rows.size() || col >= rows[row].size()) throwIndex(__LINE__);
    return rows[row][col];
}

const double& Matrix::entry(unsigned long long row, unsigned long long col) const {
    if (row >= rows.size() || col >= rows[row].size()) throwIndex(__LINE__);
    return rows[row][col];
}

double Matrix::getValue(unsigned row, unsigned col) const { return entry(row, col); }
void Matrix::setValue(unsigned row, unsigned col, double value) { entry(row, col) = value; }
void Matrix::addValue(unsigned row, unsigned col, double value) { entry(row, col) += value; }

double& Matrix::operator()(unsigned row, unsigned col) { return entry(row, col); }
double& Matrix::operator()(int row, int col) { return entry(checkedIndex(row), checkedIndex(col)); }
const double& Matrix::operator()(unsigned row, unsigned col) const { return entry(row, col); }
const double& Matrix::operator()(int row, int col) const {
    return entry(checkedIndex(row), checkedIndex(col));
}

std::vector<double>& Matrix::operator[](unsigned row) { return rowAt(row); }
std::vector<double>& Matrix::operator[](int row) { return rowAt(checkedIndex(row)); }
const std::vector<double>& Matrix::operator[](unsigned row) const { return rowAt(row); }
const std::vector<double>& Matrix::operator[](int row) const { return rowAt(checkedIndex(row)); }

std::vector<double> Matrix::getRow(unsigned row) const { return rowAt(row); }

std::vector<double> Matrix::getCol(unsigned col) const {
    if (col >= getNumberCols()) throwIndex(__LINE__);
    std::vector<double> result(rows.size());
    for (unsigned i = 0; i < rows.size(); i++) result[i] = rows[i][col];
    return result;
}

std::vector<double> Matrix::getDiag() const {
    unsigned n = min(getNumberRows(), getNumberCols());
    std::vector<double> result(n);
    for (unsigned i = 0; i < n; i++) result[i] = rows[i][i];
    return result;
}

// A list shorter than the row overwrites the leading entries only and leaves
// the others as they were, so that all rows keep their length.
void Matrix::setRow(unsigned row, std::vector<double> values) {
    std::vector<double>& target = rowAt(row);
    if (values.size() > target.size()) throwIndex(__LINE__);
    for (unsigned j = 0; j < values.size(); j++) target[j] = values[j];
}

void Matrix::setRow(unsigned row, Matrix m) { setRow(row, m.getRow(0)); }

// Like setRow, a shorter list overwrites the leading entries of the column.
void Matrix::setCol(unsigned col, std::vector<double> values) {
    if (col >= getNumberCols() || values.size() > rows.size()) throwIndex(__LINE__);
    for (unsigned i = 0; i < values.size(); i++) rows[i][col] = values[i];
}

void Matrix::setCol(unsigned col, Matrix m) { setCol(col, m.getCol(0)); }

void Matrix::setDiag(std::vector<double> values) {
    unsigned n = min(getNumberRows(), getNumberCols());
    if (values.size() != n) throw Exception("matrix", __LINE__, "Invalid number of diagonal elements.");
    for (unsigned i = 0; i < n; i++) rows[i][i] = values[i];
}

Matrix Matrix::getSubmatrix(unsigned firstRow, unsigned lastRow, unsigned firstCol,
                            unsigned lastCol) const {
    if (firstRow > lastRow || firstCol > lastCol || lastRow >= getNumberRows() ||
        lastCol >= getNumberCols())
        throwIndex(__LINE__);
    Matrix result;
    result.rows.reserve(lastRow - firstRow + 1);
    for (unsigned i = firstRow; i <= lastRow; i++)
        result.rows.emplace_back(rows[i].begin() + firstCol, rows[i].begin() + lastCol + 1);
    return result;
}

void Matrix::setSubmatrix(unsigned row, unsigned col, Matrix m) {
    if (static_cast<unsigned long long>(row) + m.getNumberRows() > getNumberRows() ||
        static_cast<unsigned long long>(col) + m.getNumberCols() > getNumberCols())
        throwIndex(__LINE__);
    for (unsigned i = 0; i < m.rows.size(); i++)
        for (unsigned j = 0; j < m.rows[i].size(); j++) rows[row + i][col + j] = m.rows[i][j];
}

void Matrix::resize(unsigned nrows, unsigned ncols) {
    checkCounts(nrows, ncols);
    rows.resize(nrows);
    for (std::vector<double>& row : rows) row.resize(ncols, 0.0);
}

// ---------------------------------------------------------------------------
// Whole-matrix operations

Matrix Matrix::downshift() const {
    Matrix result(*this);
    for (unsigned i = getNumberRows(); i-- > 1;) result.rows[i] = rows[i - 1];
    if (!result.rows.empty()) result.rows[0].assign(getNumberCols(), 0.0);
    return result;
}

Matrix Matrix::transpose() const {
    Matrix result;
    unsigned nr = getNumberRows(), nc = getNumberCols();
    result.rows.assign(nc, std::vector<double>(nr, 0.0));
    for (unsigned i = 0; i < nr; i++)
        for (unsigned j = 0; j < nc; j++) result.rows[j][i] = rows[i][j];
    return result;
}

void Matrix::eliminateSmallValues(double eps) {
    for (std::vector<double>& row : rows)
        for (double& v : row)
            if (std::fabs(v) < eps) v = 0.0;
}

Matrix Matrix::operator*(double factor) const {
    Matrix result(*this);
    for (std::vector<double>& row : result.rows)
        for (double& v : row) v *= factor;
    return result;
}

Matrix Matrix::operator/(double divisor) const {
    Matrix result(*this);
    for (std::vector<double>& row : result.rows)
        for (double& v : row) v /= divisor;
    return result;
}

Matrix Matrix::operator*(const Matrix& other) const {
    unsigned n = getNumberRows(), inner = getNumberCols(), p = other.getNumberCols();
    if (inner != other.getNumberRows())
        throw Exception("matrix", __LINE__, "These Matrices cannot be multiplied.");
    Matrix result;
    result.rows.assign(n, std::vector<double>(p, 0.0));
    // Row by row, adding the terms of the inner index k in ascending order to
    // every entry of the result row: each entry sees exactly the operations
    // of sum = 0; sum += a[i][k] * b[k][j] for k = 0, 1, ..., so the result
    // is bit-identical to the plain triple loop.
    for (unsigned i = 0; i < n; i++) {
        double* c = result.rows[i].data();
        const double* a = rows[i].data();
        for (unsigned k = 0; k < inner; k++) {
            const double aik = a[k];
            const double* b = other.rows[k].data();
            for (unsigned j = 0; j < p; j++) c[j] += aik * b[j];
        }
    }
    return result;
}

Matrix Matrix::operator+(const Matrix& other) const {
    if (getNumberRows() != other.getNumberRows() || getNumberCols() != other.getNumberCols())
        throw Exception("matrix", __LINE__, "These Matrices cannot be added.");
    Matrix result(*this);
    for (unsigned i = 0; i < rows.size(); i++) {
        double* c = result.rows[i].data();
        const double* b = other.rows[i].data();
        for (unsigned j = 0; j < rows[i].size(); j++) c[j] += b[j];
    }
    return result;
}

Matrix Matrix::operator-(const Matrix& other) const {
    if (getNumberRows() != other.getNumberRows() || getNumberCols() != other.getNumberCols())
        throw Exception("matrix", __LINE__, "These Matrices cannot be subtracted.");
    Matrix result(*this);
    for (unsigned i = 0; i < rows.size(); i++) {
        double* c = result.rows[i].data();
        const double* b = other.rows[i].data();
        for (unsigned j = 0; j < rows[i].size(); j++) c[j] -= b[j];
    }
    return result;
}

bool Matrix::operator==(const Matrix& other) const {
    if (getNumberRows() != other.getNumberRows() || getNumberCols() != other.getNumberCols())
        return false;
    for (unsigned i = 0; i < rows.size(); i++)
        for (unsigned j = 0; j < rows[i].size(); j++)
            if (rows[i][j] != other.rows[i][j]) return false;
    return true;
}

Matrix Matrix::operator^(int n) const {
    // The empty matrix has no power: it counts as not square here.
    if (rows.empty() || getNumberRows() != getNumberCols())
        throw Exception("matrix", __LINE__, "Operation not permitted.");
    if (n == 0) return Matrix(getNumberRows(), getNumberCols(), MATRIX_IDENTITY);
    Matrix base = n < 0 ? inverse() : *this;
    // The magnitude as unsigned, so that the smallest int has one too.
    unsigned count = n < 0 ? 0u - static_cast<unsigned>(n) : static_cast<unsigned>(n);
    Matrix result(base);
    for (unsigned i = 1; i < count; i++) result = result * base;
    return result;
}

Matrix Matrix::inverse() const { return gauss_jordan_inv(*this); }

Matrix operator*(double factor, Matrix m) { return m * factor; }

Matrix operator-(Matrix m) { return m * -1.0; }

}  // namespace velmora
