// SPDX-License-Identifier: MIT
// Finding the span of a parameter, and the end of the span from which evaluation starts.
#pragma once

#include <cstddef>

#include "knotwork/kernel/knot_record.h"

namespace knotwork::detail {

/// @return how many of n non-decreasing knots are <= t.
inline int knotsUpTo(const double* knots, int n, double t) {
  const double* base = knots;
  while (n > 1) {
    const int half = n / 2;
    base += base[half - 1] <= t ? half : 0;
    n -= half;
  }
  return static_cast<int>(base - knots) + (n == 1 && *base <= t ? 1 : 0);
}

/// @param knot  knot 0 of a record of degree > 0 with n spans. @return the span of t nearest to j
/// that
///              is not empty: the last one before it, else the first one after it.
inline int nearestSpan(const double* knot, int n, int j) {
  int k = j;
  while (k > 0 && !(knot[k] < knot[k + 1])) --k;
  if (knot[k] < knot[k + 1]) return k;
  for (k = j; k < n - 1 && !(knot[k] < knot[k + 1]); ++k) {
  }
  return k;
}

/// A span seen from one of its ends: knot[step * x] is the x-th knot from the end onwards, x = 1
/// being the far end, x <= 0 the near end and what lies behind it.
struct NearEnd {
  int span;
  const double* knot;
  std::ptrdiff_t step;
};

/// @return the span of t in a record with spans, from the end that is nearer to t.
inline NearEnd nearEnd(const KnotRecord& knots, double t) {
  const int n = knots.spans();
  if (knots.degree() == 0) return {knots.span(t), nullptr, 1};
  const double* const knot = knots.at(0);
  int j = knotsUpTo(knot + 1, n - 1, t);
  if (!(knot[j] < knot[j + 1])) j = nearestSpan(knot, n, j);
  const double left = t - knot[j];
  const double right = knot[j + 1] - t;
  return right >= left ? NearEnd{j, knot + j, 1} : NearEnd{j, knot + j + 1, -1};
}

}  // namespace knotwork::detail
