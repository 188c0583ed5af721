// SPDX-License-Identifier: MIT
// Sequential accumulation: each row of a span meets the rows of its triangle from the first column
// on. A rotation clears its element there; a row that meets an empty place stays there. What is
// left of a row's right-hand side once its elements are cleared is orthogonal to all columns, so
// its square is the row's share of the residual.
//
// Source: C. L. Lawson, R. J. Hanson, Solving Least Squares Problems (1974), ch. 27, with
// rotations (ch. 10) for its blocks of reflections: rows come one by one.
#include "solvers/span_triangles.h"

#include <algorithm>

#include "solvers/rotation.h"

namespace knotwork::detail {

SpanTriangles::SpanTriangles(int spans, int order, int dimension)
    : order_(order),
      dimension_(dimension),
      triangles_(static_cast<std::size_t>(spans) * static_cast<std::size_t>(order) *
                 static_cast<std::size_t>(order + dimension)),
      residuals_(static_cast<std::size_t>(spans) * static_cast<std::size_t>(dimension)) {}

void SpanTriangles::add(int span, double* row) {
  for (int j = 0; j < order_; ++j) {
    if (row[j] == 0) continue;
    double* const r = triangles_.data() + offset(span, j);
    if (r[j] == 0) {
      std::copy(row + j, row + width(), r + j);
      return;
    }
    // (r, row) = (c r + s row, c row - s r), which is 0 in column j of the row
    const Rotation g = rotationOf(r[j], row[j]);
    r[j] = g.length;
    rotate(g, width() - j - 1, r + j + 1, row + j + 1);
  }
  double* const squares = residuals_.data() + static_cast<std::ptrdiff_t>(span) * dimension_;
  for (int c = 0; c < dimension_; ++c) squares[c] += row[order_ + c] * row[order_ + c];
}

}  // namespace knotwork::detail
