// SPDX-License-Identifier: MIT
// Orthogonal reduction of rows that begin further and further to the right.
#pragma once

#include <cstddef>
#include <vector>

namespace knotwork::detail {

/// Rows [a | b] of a matrix and its right-hand sides, brought to echelon form by reflections. A
/// reflection takes no row that begins behind its column, so zeros on the left cost nothing.
///
/// The room that it takes is kept for the next matrix.
class Staircase {
 public:
  /// Begins a matrix of `columns` columns with `sides` right-hand sides, and no rows.
  void begin(int columns, int sides);

  /// @return columns + sides numbers, all 0, of a new row that begins at column `lead`: at least as
  /// far to the right as the row before it. Throws std::bad_alloc.
  double* addRow(int lead);

  /// Reduces the rows. A column whose part that is left is not longer than tolerance x its entry in
  /// `lengths` counts as zero: it gets no pivot, and hides nothing of what rows tell about others.
  /// `lengths` may be null if the tolerance is 0. Throws std::bad_alloc.
  void reduce(const double* lengths, double tolerance);

  int columns() const { return columns_; }
  int width() const { return width_; }
  /// After `reduce`, the number of rows with a pivot.
  int rows() const { return static_cast<int>(leads_.size()); }
  /// The column that row i begins at; after `reduce` they ascend strictly.
  int lead(int i) const { return leads_[static_cast<std::size_t>(i)]; }
  const double* row(int i) const { return rows_.data() + offset(i); }
  /// For each side, the sum of squares that the reduced rows without a pivot have left.
  const std::vector<double>& residuals() const { return residuals_; }

 private:
  std::ptrdiff_t offset(int i) const { return static_cast<std::ptrdiff_t>(i) * width_; }
  double* mutableRow(int i) { return rows_.data() + offset(i); }
  bool reflectColumn(int column, int top, int bottom, int end, double negligible);
  void addReflection(int top);
  void applyPanel(int first);
  void finish(const std::vector<int>& pivots);

  int columns_ = 0, width_ = 0;
  std::vector<double> rows_, residuals_;
  std::vector<int> leads_;

  // Of the panel at work: I - V T V' is the product of its reflections I - tau v v'.
  int panelRows_ = 0, panelTop_ = 0;
  std::vector<double> v_, taus_, products_, t_, column_;
};

}  // namespace knotwork::detail
