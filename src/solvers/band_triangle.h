// SPDX-License-Identifier: MIT
// The triangle of a banded system with a border of full columns.
#pragma once

#include <cstddef>
#include <vector>

#include "solvers/column_roles.h"
#include "solvers/triangle.h"

namespace knotwork::detail {

/// R11 is banded over the columns of the band.
///
/// A row holds `order` elements of the band from its own column on, then the border, then the
/// right-hand sides. A band column without a pivot has no row.
class BandTriangle : public Triangle {
 public:
  /// @param columnLengths  of the whole system's columns; what is left of a pivot at or below
  ///                       tolerance x length counts as zero.
  /// Throws std::bad_alloc.
  BandTriangle(const ColumnRoles& roles, int order, int dimension,
               const std::vector<double>& columnLengths, double tolerance);

  int columns() const override { return roles_.columns(); }
  int border() const override { return border_; }
  int dimension() const { return dimension_; }
  /// Numbers in a row: order + border + dimension.
  int width() const { return order_ + border_ + dimension_; }

  /// Rotates a row in and uses it up. Its band part starts at column `start`, which must not
  /// decrease from call to call: then no row of the triangle outgrows the band.
  void add(int start, double* row);

  bool hasPivot(int column) const { return *rowOf(column) != 0; }
  /// Sums of squares of what was left of the right-hand sides, one for each component.
  const std::vector<double>& residuals() const { return residuals_; }

  double borderElement(int i, int j) const override { return borderRow(i)[j]; }
  const double* borderRhs(int i) const override { return borderRow(i) + border_; }
  const double* borderPart(int column) const override { return rowOf(column) + order_; }
  const double* rhs(int column) const override { return rowOf(column) + order_ + border_; }
  void solve(int count, double* y) const override;
  void solveTransposed(int count, double* y) const override;

 private:
  const double* rowOf(int column) const {
    return rows_.data() + static_cast<std::ptrdiff_t>(column) * width();
  }
  const double* borderRow(int i) const {
    return borderRows_.data() + static_cast<std::ptrdiff_t>(i) * (border_ + dimension_);
  }
  bool isNegligible(int column, double element) const;
  void addToBorder(double* row);

  const ColumnRoles& roles_;
  int order_, border_, dimension_;
  const std::vector<double>& columnLengths_;
  double tolerance_;
  std::vector<double> rows_, borderRows_;
  std::vector<double> residuals_;
};

}  // namespace knotwork::detail
