// SPDX-License-Identifier: MIT
// The triangle of a banded system with a border of full columns.
#pragma once

#include <cstddef>
#include <vector>

namespace knotwork::detail {

/// Which part of the system a column belongs to: the band; the border, where columns are full, as
/// those across the seam of a periodic system; or none, where its unknown is prescribed.
class ColumnRoles {
 public:
  explicit ColumnRoles(int columns) : border_(static_cast<std::size_t>(columns), kBand) {}

  void prescribe(int column) { at(column) = kPrescribed; }
  void moveToBorder(int column) {
    at(column) = static_cast<int>(borderColumns_.size());
    borderColumns_.push_back(column);
  }

  bool isInBand(int column) const { return role(column) == kBand; }
  bool isPrescribed(int column) const { return role(column) == kPrescribed; }
  /// The place of a border column in the border, negative for all others.
  int borderIndex(int column) const { return role(column); }

  int columns() const { return static_cast<int>(border_.size()); }
  const std::vector<int>& borderColumns() const { return borderColumns_; }

 private:
  static constexpr int kBand = -1, kPrescribed = -2;

  int& at(int column) { return border_[static_cast<std::size_t>(column)]; }
  int role(int column) const { return border_[static_cast<std::size_t>(column)]; }

  std::vector<int> border_;
  std::vector<int> borderColumns_;
};

/// [R11 R12 | c1; 0 R22 | c2]: R11 banded over the columns of the band, R12 and R22 over the
/// border.
///
/// A row holds `order` elements of the band from its own column on, then the border, then the
/// right-hand sides. A band column without a pivot has no row.
class BandTriangle {
 public:
  /// @param columnLengths  of the whole system's columns; what is left of a pivot at or below
  ///                       tolerance x length counts as zero.
  /// Throws std::bad_alloc.
  BandTriangle(const ColumnRoles& roles, int order, int dimension,
               const std::vector<double>& columnLengths, double tolerance);

  int columns() const { return roles_.columns(); }
  int border() const { return border_; }
  int dimension() const { return dimension_; }
  /// Numbers in a row: order + border + dimension.
  int width() const { return order_ + border_ + dimension_; }

  /// Rotates a row in and uses it up. Its band part starts at column `start`, which must not
  /// decrease from call to call: then no row of the triangle outgrows the band.
  void add(int start, double* row);

  bool hasPivot(int column) const { return *rowOf(column) != 0; }
  /// Sums of squares of what was left of the right-hand sides, one for each component.
  const std::vector<double>& residuals() const { return residuals_; }

  /// Element (i, j) of R22 and the right-hand sides below c1.
  double borderElement(int i, int j) const { return borderRow(i)[j]; }
  const double* borderRhs(int i) const { return borderRow(i) + border_; }
  /// R12 of a band column, and its right-hand sides.
  const double* borderPart(int column) const { return rowOf(column) + order_; }
  const double* rhs(int column) const { return rowOf(column) + order_ + border_; }

  /// Solves R11 y = y for `count` sides, stored column after column, each of columns() numbers;
  /// places outside the band become 0.
  void solve(int count, double* y) const;
  /// The same for R11' y = y.
  void solveTransposed(int count, double* y) const;

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
