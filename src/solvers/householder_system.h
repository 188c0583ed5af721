// SPDX-License-Identifier: MIT
// The factored system of the Householder solver, and what is done to it.
//
// Notation: r rows, c columns, of which the last k rows are constraints (all of them when r < c);
// m0 = r - c, L = r - k, n = c - k. The row reflections H turn the unknowns, x = H y, so that the
// constraint rows see the last k entries of y only, and form a triangle there. The column
// reflections then bring the least-squares rows to a triangle in rows m0 .. L - 1; rows 0 .. m0 - 1
// hold what cannot be met. Row q keeps its triangle to the right of column u = q - m0, the diagonal
// in sigma[q], and in place (q, u) the entry that its reflection changed.
//
// Source: G. H. Golub, C. F. Van Loan, Matrix Computations, 5.1 (reflections), 5.4 (column pivoting
// with downdated norms), 6.2 (constraints by a transformation of the unknowns).
#pragma once

#include <cstddef>

#include "knotwork/vector/double_vec.h"

class TsolverReporter;

namespace knotwork::detail {

struct HouseholderShape {
  int rows, cols, constraints;

  bool isWide() const { return rows < cols; }
  int firstPivotRow() const { return isWide() ? 0 : rows - cols; }
  int leastSquaresRows() const { return isWide() ? 0 : rows - constraints; }
  int freeColumns() const { return isWide() ? 0 : cols - constraints; }
};

/// A system to factor: views on the solver's storage, max(rows, cols) places each.
struct HouseholderSystem : HouseholderShape {
  double* f;  // rows x cols, column by column
  double *beta, *sigma, *norms;
  int *rowPerm, *colPerm;
  double skip;  // products of at most this magnitude are not applied

  double* column(int j) const { return f + static_cast<std::ptrdiff_t>(j) * rows; }
  double& at(int i, int j) const { return column(j)[i]; }
};

/// The same system, factored.
struct HouseholderFactors : HouseholderShape {
  const double* f;
  const double *beta, *sigma;
  const int *rowPerm, *colPerm;
  double skip;

  const double* column(int j) const { return f + static_cast<std::ptrdiff_t>(j) * rows; }
  double at(int i, int j) const { return column(j)[i]; }
};

/// Room to work in, max(rows, cols) places each.
struct HouseholderWorkspace {
  double *values, *products;
  int *places, *rows;
};

/// Brings the system to its triangles. @return whether no pivot is a NaN or negligible, that is 0
/// or below 1e-13 times the largest squared norm of a constraint row or a free column; negligible
/// pivots become 0.
bool factorHouseholder(const HouseholderSystem& system, const HouseholderWorkspace& work,
                       TsolverReporter& reporter);

/// Solves for points of the dimension: component c of side i is b(i * dimension + c), and likewise
/// for the unknowns x. `b`, contiguous, may be used up; `x`, contiguous, must be 0 on entry. Every
/// component gets the bits that it gets alone. @return false if memory ran out.
[[nodiscard]] bool solveHouseholder(const HouseholderFactors& factors, DoubleVec& b, DoubleVec& x,
                                    int dimension);

}  // namespace knotwork::detail
