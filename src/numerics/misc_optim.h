// Derivative-free minimisers: the Nelder-Mead downhill simplex search
// (Nelder and Mead 1965) in the form of Nash, Compact Numerical Methods for
// Computers, Algorithm 19, and the golden section search for one variable.
// The goal functions are callables that carry their own context (a lambda
// over the caller's problem, or a plain function), so searches on several
// threads never meet. Neither routine prints anything, and what the goal
// function throws passes through.
#ifndef VELMORA_NUMERICS_MISC_OPTIM_H
#define VELMORA_NUMERICS_MISC_OPTIM_H

#include <vector>

#include "numerics/function_ref.h"

namespace velmora {

class Matrix;

// Nelder-Mead search from a start point. The polytope is an (n+1) x (n+2)
// matrix: column j holds vertex j in rows 0..n-1 and its value in row n, and
// column n+1 is work space for the centroid. Vertex j > 0 is the start point
// moved along coordinate j-1 by the largest of 0.1 |start[i]| (0.1 if all are
// zero), grown by powers of ten until the coordinate really changes.
//
// The search ends when the lowest value is within (|f0| + intol) intol of the
// highest (f0 the value at the start), when the lowest value is at or below
// abstol (pass a large negative number to switch that off), when a shrink
// leaves the polytope no smaller, or when more than maxit evaluations have
// been made, tested at the end of each pass. alpha, beta and gamma are the
// reflection, contraction and expansion coefficients; ties between vertices
// go to the earlier column.
//
// fail: 0 on convergence, 1 after more than maxit evaluations, 10 after a
// shrink that did not reduce the size. fncount counts every call of fn.
// result receives the best vertex (resized to n if it has another length);
// any output pointer may be null when its value isn't wanted.
void nmmin(std::vector<double> start, std::vector<double>* result, double* minimum, FunctionRef<double(std::vector<double>)> fn,
           int* fail, double abstol, double intol, double alpha, double beta, double gamma, int* fncount,
           unsigned maxit);

// The same search from a polytope whose vertex coordinates the caller has
// filled in (vertex 0 in column 0); row n and column n+1 are overwritten.
// A polytope of other than (n+1) x (n+2) entries, n >= 0, throws.
void nmmin(Matrix polytope, std::vector<double>* result, double* minimum, FunctionRef<double(std::vector<double>)> fn,
           int* fail, double abstol, double intol, double alpha, double beta, double gamma, int* fncount,
           unsigned maxit);

// Abscissa of a minimum of a unimodal fn on [a, b] by golden section: the
// bracket shrinks by the factor 0.618... per evaluation until it is no wider
// than tol. The search also stops when the bracket can shrink no further in
// double precision, so a tol of 0 ends as well.
double golden_section_search(FunctionRef<double(double)> fn, double a, double b, double tol);

}  // namespace velmora

#endif
