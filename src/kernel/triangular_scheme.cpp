// SPDX-License-Identifier: MIT
// Weighted sums of control points and of the legs between them.
#include "kernel/triangular_scheme.h"

namespace knotwork::detail {

namespace {

// A control point that carries a good part of the weight: the middle one, mostly.
int anchor(const double* weights, int degree) {
  const int middle = degree / 2;
  if (weights[middle] >= 0.125) return middle;
  return static_cast<int>(std::max_element(weights, weights + degree + 1) - weights);
}

// The point is reckoned from an anchor, whose rounding is small beside its share. Weights of 0 are
// left out: adding 0 * (...) would lose signed zeros and meet infinities.
template <int kWidth>
void combinePoints(const Rows& points, int nearest, const double* weights, double* out, int column,
                   int degree) {
  const double* const origin = points[nearest] + column;
  double sum[kWidth];
  for (int c = 0; c < kWidth; ++c) sum[c] = origin[c];
  for (int i = 0; i <= degree; ++i) {
    if (i == nearest || weights[i] == 0.0) continue;
    const double* const p = points[i] + column;
    for (int c = 0; c < kWidth; ++c) sum[c] += weights[i] * (p[c] - origin[c]);
  }
  for (int c = 0; c < kWidth; ++c) out[column + c] = sum[c];
}

template <int kWidth>
void combineLegs(const Rows& points, const double* weights, double* out, int column, int degree) {
  double sum[kWidth] = {};
  for (int i = 0; i < degree; ++i) {
    const double* const p = points[i] + column;
    const double* const next = points[i + 1] + column;
    for (int c = 0; c < kWidth; ++c) sum[c] += weights[i] * (next[c] - p[c]);
  }
  for (int c = 0; c < kWidth; ++c) out[column + c] = sum[c];
}

template <int kWidth>
void combineColumns(const Rows& points, int q, int nearest, const double* weights, double* out,
                    int column, int degree) {
  if (q == 0) {
    combinePoints<kWidth>(points, nearest, weights, out, column, degree);
  } else {
    combineLegs<kWidth>(points, weights, out, column, degree);
  }
}

}  // namespace

void combine(const Rows& points, int q, const double* weights, double* out, int width, int degree) {
  const int nearest = q > 0 ? 0 : anchor(weights, degree);
  int column = 0;
  for (; column + 4 <= width; column += 4) {
    combineColumns<4>(points, q, nearest, weights, out, column, degree);
  }
  switch (width - column) {
    case 3:
      return combineColumns<3>(points, q, nearest, weights, out, column, degree);
    case 2:
      return combineColumns<2>(points, q, nearest, weights, out, column, degree);
    case 1:
      return combineColumns<1>(points, q, nearest, weights, out, column, degree);
    default:
      return;
  }
}

}  // namespace knotwork::detail
