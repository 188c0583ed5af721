// SPDX-License-Identifier: MIT
// Rows in the order of their first columns meet a banded triangle. A row that starts at column s
// only meets rows that started at or before s, none of which reaches beyond column s + order - 1:
// so it is used up, or has found a place of its own, within `order` rotations and those of the
// border. Row j of R11 is kept from its diagonal on, with its elements in the border's columns and
// its right-hand sides behind; what a row has left there goes on into the full triangle of the
// border, and from that into the residual.
//
// Source: C. L. Lawson, R. J. Hanson, Solving Least Squares Problems (1974), ch. 27.
#include "solvers/band_triangle.h"

#include <algorithm>
#include <cmath>

#include "solvers/rotation.h"

namespace knotwork::detail {

BandTriangle::BandTriangle(const ColumnRoles& roles, int order, int dimension,
                           const std::vector<double>& columnLengths, double tolerance)
    : roles_(roles),
      order_(order),
      border_(static_cast<int>(roles.borderColumns().size())),
      dimension_(dimension),
      columnLengths_(columnLengths),
      tolerance_(tolerance),
      rows_(static_cast<std::size_t>(roles.columns()) * static_cast<std::size_t>(width())),
      borderRows_(static_cast<std::size_t>(border_) *
                  static_cast<std::size_t>(border_ + dimension)),
      residuals_(static_cast<std::size_t>(dimension)) {}

// What rotations leave of an element that should be 0 is of the size of rounding in its column.
bool BandTriangle::isNegligible(int column, double element) const {
  return std::abs(element) <= tolerance_ * columnLengths_[static_cast<std::size_t>(column)];
}

void BandTriangle::add(int start, double* row) {
  double* const tail = row + order_;
  const int tailWidth = border_ + dimension_;
  const int end = std::min(order_, columns() - start);
  for (int j = 0; j < end; ++j) {
    if (row[j] == 0) continue;
    const int column = start + j;
    double* const r = rows_.data() + static_cast<std::ptrdiff_t>(column) * width();
    if (r[0] == 0) {
      // A pivot of rounding errors would hide what the rest of the row tells about later columns.
      if (isNegligible(column, row[j])) continue;
      std::copy(row + j, row + end, r);
      std::copy(tail, tail + tailWidth, r + order_);
      return;
    }
    const Rotation g = rotationOf(r[0], row[j]);
    r[0] = g.length;
    rotate(g, end - j - 1, r + 1, row + j + 1);
    rotate(g, tailWidth, r + order_, tail);
  }
  addToBorder(tail);
}

void BandTriangle::addToBorder(double* row) {
  const int tailWidth = border_ + dimension_;
  for (int j = 0; j < border_; ++j) {
    if (row[j] == 0) continue;
    double* const r = borderRows_.data() + static_cast<std::ptrdiff_t>(j) * tailWidth;
    if (r[j] == 0) {
      std::copy(row + j, row + tailWidth, r + j);
      return;
    }
    const Rotation g = rotationOf(r[j], row[j]);
    r[j] = g.length;
    rotate(g, tailWidth - j - 1, r + j + 1, row + j + 1);
  }
  for (int c = 0; c < dimension_; ++c) {
    const double left = row[border_ + c];
    residuals_[static_cast<std::size_t>(c)] += left * left;
  }
}

// y_j = (y_j - sum over k > j of R_jk y_k) / R_jj, from the last column on
void BandTriangle::solve(int count, double* y) const {
  for (int side = 0; side < count; ++side, y += columns()) {
    for (int j = columns() - 1; j >= 0; --j) {
      const double* const r = rowOf(j);
      if (r[0] == 0) {
        y[j] = 0;
        continue;
      }
      double sum = y[j];
      const int end = std::min(order_, columns() - j);
      for (int k = 1; k < end; ++k) sum -= r[k] * y[j + k];
      y[j] = sum / r[0];
    }
  }
}

// y_j = (y_j - sum over i < j of R_ij y_i) / R_jj, row after row: y_j is taken out of those behind
void BandTriangle::solveTransposed(int count, double* y) const {
  for (int side = 0; side < count; ++side, y += columns()) {
    for (int j = 0; j < columns(); ++j) {
      const double* const r = rowOf(j);
      if (r[0] == 0) {
        y[j] = 0;
        continue;
      }
      y[j] /= r[0];
      const int end = std::min(order_, columns() - j);
      for (int k = 1; k < end; ++k) y[j + k] -= r[k] * y[j];
    }
  }
}

}  // namespace knotwork::detail
