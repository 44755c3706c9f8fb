// Vector: a Matrix of one row or one column that remembers which of the two
// it is. Single-index access goes through the checked Matrix access. Also two
// small routines shared by the Markovian models: the product of a raw row
// with a matrix and the square matrix read from a flat list.
#include <cmath>
#include <utility>

#include "core/libvelmora_settings.h"
#include "core/misc_string.h"
#include "numerics/matrix.h"

namespace velmora {

static std::vector<std::vector<double>> asRows(std::vector<double> data, bool isRow) {
    std::vector<std::vector<double>> rows;
    if (data.empty()) return rows;
    if (isRow) {
        rows.push_back(std::move(data));
    } else {
        rows.reserve(data.size());
        for (double v : data) rows.emplace_back(1, v);
    }
    return rows;
}

Vector::Vector() : isRow(false) {}

Vector::Vector(unsigned n, bool isRow_, VectorType type)
    : Matrix(isRow_ ? 1 : n, isRow_ ? n : 1, type == VECTOR_ONES ? MATRIX_ONES : MATRIX_ZERO),
      isRow(isRow_) {}

// An empty list gives an empty vector of the given orientation.
Vector::Vector(std::vector<double> data, bool isRow_)
    : Matrix(asRows(std::move(data), isRow_)), isRow(isRow_) {}

Vector::Vector(std::initializer_list<double> data, bool isRow_)
    : Vector(std::vector<double>(data), isRow_) {}

unsigned Vector::getNumberEntries() const { return getNumberRows() * getNumberCols(); }

bool Vector::isRowVector() const { return isRow; }

Matrix Vector::toMatrix() const { return Matrix(rows); }

double& Vector::element(unsigned long long i) { return isRow ? entry(0, i) : entry(i, 0); }

const double& Vector::element(unsigned long long i) const {
    return isRow ? entry(0, i) : entry(i, 0);
}

double Vector::getValue(unsigned i) const { return element(i); }
void Vector::setValue(unsigned i, double value) { element(i) = value; }
void Vector::addValue(unsigned i, double value) { element(i) += value; }
double& Vector::operator()(unsigned i) { return element(i); }
double& Vector::operator()(int i) { return element(checkedIndex(i)); }
const double& Vector::operator()(unsigned i) const { return element(i); }
const double& Vector::operator()(int i) const { return element(checkedIndex(i)); }
double& Vector::operator[](unsigned i) { return element(i); }
double& Vector::operator[](int i) { return element(checkedIndex(i)); }
const double& Vector::operator[](unsigned i) const { return element(i); }
const double& Vector::operator[](int i) const { return element(checkedIndex(i)); }

void Vector::normalize() {
    double sum = getSum();
    for (std::vector<double>& row : rows)
        for (double& v : row) v /= sum;
}

double Vector::getSum() const { return Matrix::getSum(); }

std::vector<double> Vector::asVector() const {
    if (isRow) return rows.empty() ? std::vector<double>() : rows[0];
    std::vector<double> result;
    result.reserve(rows.size());
    for (const std::vector<double>& row : rows) result.push_back(row[0]);
    return result;
}

Vector Vector::transpose() const { return Vector(asVector(), !isRow); }

void Vector::setSubvector(unsigned start, Vector v) {
    unsigned n = v.getNumberEntries();
    if (static_cast<unsigned long long>(start) + n > getNumberEntries())
        throw Exception("matrix", __LINE__, "Invalid vector index.");
    for (unsigned i = 0; i < n; i++) element(start + i) = v.element(i);
}

Vector Vector::operator+(double value) const {
    Vector result(*this);
    for (std::vector<double>& row : result.rows)
        for (double& v : row) v += value;
    return result;
}

Vector Vector::operator*(double factor) const {
    Vector result(*this);
    for (std::vector<double>& row : result.rows)
        for (double& v : row) v *= factor;
    return result;
}

Vector Vector::operator/(double divisor) const {
    Vector result(*this);
    for (std::vector<double>& row : result.rows)
        for (double& v : row) v /= divisor;
    return result;
}

bool Vector::operator==(const Vector& other) const {
    return isRow == other.isRow && Matrix::operator==(other);
}

bool Vector::operator==(const Matrix& other) const { return Matrix::operator==(other); }

// The product of the plain matrices, of which a row vector keeps row 0 and a
// column vector column 0.
static Vector productVector(const Matrix& product, bool isRow) {
    return Vector(isRow ? product.getRow(0) : product.getCol(0), isRow);
}

Vector Vector::operator*(const Matrix& m) const {
    return productVector(Matrix::operator*(m), isRow);
}

Matrix Vector::operator*(const Vector& other) const {
    if (isRow == other.isRow) throw Exception("matrix", __LINE__, "Cannot multiply vectors.");
    return Matrix::operator*(other);
}

Vector Vector::operator+(const Vector& other) const {
    if (isRow != other.isRow) throw Exception("matrix", __LINE__, "Cannot add vectors.");
    Vector result(*this);
    for (unsigned i = 0; i < getNumberEntries(); i++) result.element(i) += other.element(i);
    return result;
}

Vector Vector::operator-(const Vector& other) const {
    if (isRow != other.isRow) throw Exception("matrix", __LINE__, "Cannot add vectors.");
    Vector result(*this);
    for (unsigned i = 0; i < getNumberEntries(); i++) result.element(i) -= other.element(i);
    return result;
}

Vector operator*(const Matrix& m, const Vector& v) {
    return productVector(m * v.toMatrix(), v.isRowVector());
}

Vector operator+(double value, Vector v) { return v + value; }

Vector operator*(double factor, Vector v) { return v * factor; }

Vector operator-(Vector v) { return v * -1.0; }

void row_times_matrix(const double* v, const Matrix& P, double* out) {
    const unsigned n = P.getNumberRows();
    const unsigned cols = P.getNumberCols();
    for (unsigned j = 0; j < cols; j++) out[j] = 0.0;
    for (unsigned k = 0; k < n; k++) {
        const double x = v[k];
        const double* row = P[k].data();
        for (unsigned j = 0; j < cols; j++) out[j] += x * row[j];
    }
}

Matrix square_matrix_from_list(const std::string& text) {
    // Any blanks, tabs or line ends (CRLF too) separate the entries.
    std::vector<double> values;
    std::string::size_type at = 0;
    const char* const blanks = " \t\n\r\v\f";
    while ((at = text.find_first_not_of(blanks, at)) != std::string::npos) {
        const std::string::size_type end = text.find_first_of(blanks, at);
        values.push_back(toDouble(text.substr(at, end == std::string::npos ? end : end - at)));
        at = end;
    }
    const unsigned order = static_cast<unsigned>(std::sqrt(static_cast<double>(values.size())));
    return Matrix(values, order, order, true);
}

std::string generator_problem(const Matrix& Q, const Matrix* D1, bool sub, double tol, const std::string& name,
                              const std::string& name1) {
    const unsigned n = Q.getNumberRows();
    if (n == 0 || Q.getNumberCols() != n) return name + " is not square";
    if (D1 != nullptr && (D1->getNumberRows() != n || D1->getNumberCols() != n))
        return name1 + " is not of the order of " + name;
    for (unsigned i = 0; i < n; ++i) {
        double sum = 0;
        const std::string row = "row " + std::to_string(i + 1);
        for (unsigned j = 0; j < n; ++j) {
            const double q = Q(i, j);
            const double d = D1 != nullptr ? (*D1)(i, j) : 0.0;
            if (!std::isfinite(q) || !std::isfinite(d)) return row + " holds a value that is not finite";
            if (i != j && q < 0) return row + " of " + name + " has a negative entry off the diagonal";
            if (d < 0) return row + " of " + name1 + " has a negative entry";
            sum += q + d;
        }
        const double slack = tol * std::fabs(Q(i, i));
        if (sum > slack || (!sub && sum < -slack))
            return row + " of " + (D1 != nullptr ? name + " + " + name1 : name) + " sums to " + toString(sum);
    }
    return "";
}

}  // namespace velmora
