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

class TsolverReporter;

namespace knotwork::detail {

// Views on the solver's storage; all lengths are max(rows, cols).
struct HouseholderSystem {
  double* f;  // rows x cols, column by column
  int rows, cols, constraints;
  double *beta, *sigma, *norms;
  int *rowPerm, *colPerm;
  double skip;  // products of at most this magnitude are not applied

  double* column(int j) const { return f + static_cast<std::ptrdiff_t>(j) * rows; }
  double& at(int i, int j) const { return column(j)[i]; }
  bool isWide() const { return rows < cols; }
  int firstPivotRow() const { return isWide() ? 0 : rows - cols; }
  int leastSquaresRows() const { return isWide() ? 0 : rows - constraints; }
  int freeColumns() const { return isWide() ? 0 : cols - constraints; }
};

// Room to work in, max(rows, cols) places each.
struct HouseholderWorkspace {
  double *values, *products;
  int *places, *rows;
};

// Brings the system to its triangles. @return whether no pivot is negligible, that is 0 or below
// 1e-13 times the largest squared norm of a constraint row or a free column; negligible pivots
// become 0.
bool factorHouseholder(const HouseholderSystem& system, const HouseholderWorkspace& work,
                       TsolverReporter& reporter);

// As many right-hand sides as are solved for at once.
inline constexpr int kFewSides = 4;
inline constexpr int kManySides = 8;

// Solves for `width` right-hand sides, up to kFewSides or just kManySides: entry i of side w is b[i
// * width + w], and likewise for the unknowns x. `b` is used up; `x` must be 0 on entry. Every side
// gets the bits that it gets alone.
void solveHouseholder(const HouseholderSystem& system, double* b, double* x, int width);

}  // namespace knotwork::detail
