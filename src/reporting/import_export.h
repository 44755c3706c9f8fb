// Side formats of other tools: the result files of a hyper-Erlang fitter, and
// a sparse text form of matrices and vectors. Free functions without state.
//
// The sparse matrix text, line by line: two header lines (a third one where
// the reader is told so), the order n, then per row a row line "k" or
// "k diagonal" followed by k entry lines "column value", columns counted
// from 0. Readers skip lines that are blank or begin with "#".
#ifndef VELMORA_REPORTING_IMPORT_EXPORT_H
#define VELMORA_REPORTING_IMPORT_EXPORT_H

#include <string>

#include "numerics/matrix.h"

namespace velmora {

class Dist;

namespace import {

// The hyper-Erlang distribution of a fitter's result file, read through the
// key-value distribution reader; the caller owns it.
Dist* import_gfit(std::string file);
// A square matrix from the sparse text; extraHeaderLine skips a third header
// line. A file that ends early or an entry line without exactly two pieces
// throws "Parse error.".
Matrix import_sparse_matrix(std::string file, bool extraHeaderLine);
// A column vector: an optional header line, the length n, then n values, one
// per line.
Vector import_sparse_vector(std::string file, bool headerLine);

}  // namespace import

namespace io_export {

// diagonalMode 1 writes the diagonal as an entry line (when it is not 0),
// mode 2 behind the count in the row line (always), any other mode not at
// all. With header, four lines 1, 1, 0 and the order come first; such a text
// reads back with import_sparse_matrix(file, true).
std::string export_sparse_matrix(Matrix m, bool header, int diagonalMode);
// A pair of matrices: the lines 2, 1, 0, the order and 0, D0 with its
// diagonal in the row lines, the line 1, then D1 with its diagonal in the
// entries.
std::string export_sparse_matrices(Matrix D0, Matrix D1);

}  // namespace io_export

}  // namespace velmora

#endif
