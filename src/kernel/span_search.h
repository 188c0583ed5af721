// SPDX-License-Identifier: MIT
// Finding the span of a parameter, and the end of the span from which evaluation starts.
#pragma once

#include <cstddef>

#include "knotwork/kernel/knot_record.h"

namespace knotwork::detail {

/// @return how many of n non-decreasing knots are <= t: by bisection, then by counting the last
///         few. No step branches on t: scattered parameters mislead every guess of a processor.
inline int knotsUpTo(const double* knots, int n, double t) {
  constexpr int kFew = 16;
  const double* base = knots;
  while (n > kFew) {
    const int half = n / 2;
    base += half & -static_cast<int>(base[half - 1] <= t);
    n -= half;
  }
  int count = static_cast<int>(base - knots);
  for (int i = 0; i < n; ++i) count += base[i] <= t;
  return count;
}

/// @param knot  knot 0 of a record of degree > 0 with n spans.
/// @return      the span nearest to j that is not empty: the last up to it, else the first after.
inline int nearestSpan(const double* knot, int n, int j) {
  int k = j;
  while (k > 0 && !(knot[k] < knot[k + 1])) --k;
  if (knot[k] < knot[k + 1]) return k;
  for (k = j; k < n - 1 && !(knot[k] < knot[k + 1]); ++k) {
  }
  return k;
}

/// @param knot  knot 0 of a record of degree > 0 with n spans.
/// @return      the span of t: where even knots would have it, if that is right, else by bisection.
inline int findSpan(const double* knot, int n, double t) {
  const double place = (t - knot[0]) / (knot[n] - knot[0]) * n;
  if (place >= 0.0 && place < n) {
    const int j = static_cast<int>(place);
    if (knot[j] <= t && t < knot[j + 1]) return j;
  }
  const int j = knotsUpTo(knot + 1, n - 1, t);
  return knot[j] < knot[j + 1] ? j : nearestSpan(knot, n, j);
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
  const int j = findSpan(knot, n, t);
  const int far = knot[j + 1] - t < t - knot[j];
  return {j, knot + j + far, 1 - 2 * far};
}

}  // namespace knotwork::detail
