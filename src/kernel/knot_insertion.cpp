// SPDX-License-Identifier: MIT
// Knot insertion: the new points divide the old legs in the ratio of t to the knots around it.
// Source: W. Boehm, Inserting new knots into B-spline curves, Computer-Aided Design 12 (1980).
#include "kernel/knot_insertion.h"

#include <algorithm>

namespace knotwork::detail {

namespace {

// p += alpha (next - p).
void blend(double* row, const double* next, double alpha, long long width) {
  if (alpha == 1.0) {  // the end of the domain: keep its point to the bit
    std::copy_n(next, width, row);
  } else if (alpha != 0.0) {
    for (long long c = 0; c < width; ++c) row[c] += alpha * (next[c] - row[c]);
  }
}

}  // namespace

void insertRow(double* rows, long long count, long long width, const KnotRecord& knots, int s,
               double t) {
  std::copy_backward(rows + (s - 1) * width, rows + count * width, rows + (count + 1) * width);
  const int m = knots.degree();
  // alpha_i = (t - knot(i - m)) / (knot(i + 1) - knot(i - m)); a leg without length stays a point.
  for (int i = s; i < s + m; ++i) {
    const double low = *knots.at(i - m);
    const double length = *knots.at(i + 1) - low;
    blend(rows + i * width, rows + (i + 1) * width, length > 0.0 ? (t - low) / length : 0.0, width);
  }
}

}  // namespace knotwork::detail
