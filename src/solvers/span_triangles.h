// SPDX-License-Identifier: MIT
// Rows that start at the same column, rotated into one triangle as they come.
#pragma once

#include <cstddef>
#include <vector>

namespace knotwork::detail {

/// One upper triangle [R | Q'b] for each span, that is for each first column, of order x (order +
/// dimension) numbers; a row whose diagonal element is 0 is empty. What a new row leaves of its
/// right-hand side belongs to the residual alone.
class SpanTriangles {
 public:
  /// Throws std::bad_alloc.
  SpanTriangles(int spans, int order, int dimension);

  int spans() const { return static_cast<int>(residuals_.size()) / dimension_; }
  int width() const { return order_ + dimension_; }

  /// Rotates a row of width() numbers into the triangle of its span, and uses it up. Calls for
  /// different spans may run at the same time.
  void add(int span, double* row);

  /// Row i of a span's triangle, from its column 0 on.
  const double* row(int span, int i) const { return triangles_.data() + offset(span, i); }
  /// Sums of squares of what is left of the right-hand sides, one for each component.
  const double* residuals(int span) const {
    return residuals_.data() + static_cast<std::ptrdiff_t>(span) * dimension_;
  }

 private:
  std::ptrdiff_t offset(int span, int i) const {
    return (static_cast<std::ptrdiff_t>(span) * order_ + i) * width();
  }

  int order_, dimension_;
  std::vector<double> triangles_;
  std::vector<double> residuals_;
};

}  // namespace knotwork::detail
