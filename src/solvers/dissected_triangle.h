// SPDX-License-Identifier: MIT
// The triangle of a system over a grid of cells, as the fronts of its nested dissection leave it.
#pragma once

#include <functional>
#include <vector>

#include "solvers/dissection.h"
#include "solvers/staircase.h"
#include "solvers/triangle.h"

namespace knotwork::detail {

/// [R | c], R'R = A'A. Each node of the dissection stacks what its halves have left, or the rows of
/// its cell, reduces that and keeps the rows of its interior; the others go on to the node above.
///
/// Source: P. Matstoms, Sparse QR factorization in MATLAB (1994): the multifrontal method.
class DissectedTriangle : public Triangle {
 public:
  /// Adds the rows of a cell to a matrix that was begun for it; `columns` holds the ranks of the
  /// matrix's columns. Called for different cells at the same time.
  using AddCellRows =
      std::function<void(int cell, const std::vector<int>& columns, Staircase& matrix)>;
  /// Hears the part of the cells that is done.
  using OnProgress = std::function<void(double)>;

  /// @param lengths  of the whole system's columns, by rank; what is left of a pivot at or below
  ///                 tolerance x length counts as zero.
  /// Throws std::bad_alloc.
  DissectedTriangle(const Dissection& dissection, int dimension, const std::vector<double>& lengths,
                    double tolerance);

  /// Reduces all rows on at most `threads` threads; the bits do not depend on how many.
  /// `onProgress` is called on the calling one. Throws std::bad_alloc.
  void reduce(const AddCellRows& addCellRows, const OnProgress& onProgress, int threads);

  bool hasPivot(int column) const { return !pivotOf(column).row.empty(); }
  /// Sums of squares of what was left of the right-hand sides, one for each component.
  std::vector<double> residuals() const;

  int columns() const override { return dissection_.unknowns(); }
  const double* rhs(int column) const override;
  void solve(int count, double* y) const override;
  void solveTransposed(int count, double* y) const override;

 private:
  // What goes on from a node: rows over the columns behind its interior, and their sides.
  struct Rest {
    std::vector<int> leads;
    std::vector<double> values;
  };
  // A row of R and its sides, from the pivot on; the pivot of rank k is column k - columns[0] of
  // the node that eliminates it.
  struct Pivot {
    int node = -1;
    std::vector<double> row;
  };
  class Reduction;

  const Pivot& pivotOf(int column) const {
    return pivots_[static_cast<std::size_t>(dissection_.rank(column))];
  }
  template <class Visit>
  void visitRow(int rank, Visit visit) const;

  const Dissection& dissection_;
  int dimension_;
  const std::vector<double>& lengths_;
  double tolerance_;
  std::vector<Pivot> pivots_;      // by rank
  std::vector<double> residuals_;  // node after node
  std::vector<double> noSides_;    // of columns without a pivot
};

}  // namespace knotwork::detail
