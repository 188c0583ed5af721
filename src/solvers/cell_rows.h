// SPDX-License-Identifier: MIT
// Rows that see the same unknowns, reduced to a triangle as they come.
#pragma once

#include <cstddef>
#include <vector>

#include "solvers/staircase.h"

namespace knotwork::detail {

/// For each cell the rows over the unknowns that it sees, at most twice as many as those: whenever
/// there are more, they are reduced to a triangle. A cell without rows takes no room.
///
/// Source: C. L. Lawson, R. J. Hanson, Solving Least Squares Problems (1974), ch. 27.
class CellRows {
 public:
  /// @param order  unknowns that a cell sees.
  /// Throws std::bad_alloc.
  CellRows(int cells, int order, int dimension);

  /// Adds a row of order + dimension numbers. `room` is for the reduction; calls for different
  /// cells, with rooms of their own, may run at the same time. Throws std::bad_alloc.
  void add(int cell, const double* row, Staircase& room);

  /// A cell's rows, one after the other.
  const std::vector<double>& rowsOf(int cell) const {
    return cells_[static_cast<std::size_t>(cell)].rows;
  }
  std::size_t width() const {
    return static_cast<std::size_t>(order_) + static_cast<std::size_t>(dimension_);
  }

  /// Adds to `squares`, for each component, the sum of squares that reductions have left.
  void addResiduals(std::vector<double>& squares) const;

 private:
  struct Cell {
    std::vector<double> rows;
    std::vector<double> residuals;
  };
  void reduce(Cell& cell, Staircase& room) const;

  int order_, dimension_;
  std::vector<Cell> cells_;
  std::vector<int> ownPlaces_;  // 0, 1, 2, ...
};

/// Adds rows over unknowns whose columns in the matrix are `places`, in the order of their first
/// entries that are not 0 and else in their own.
void addStaircaseRows(Staircase& matrix, const std::vector<double>& rows,
                      const std::vector<int>& places);

}  // namespace knotwork::detail
