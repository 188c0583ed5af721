// SPDX-License-Identifier: MIT
// Weighted sums of control points and of the legs between them.
#include "kernel/triangular_scheme.h"

#include <type_traits>

namespace knotwork::detail {

namespace {

// p_a + sum over i of w_i (p_i - p_a), from an anchor a, whose rounding is small beside its share.
// Weights of 0 are left out: adding 0 * (...) would lose signed zeros and meet infinities.
template <int kDegree, int kWidth, class Number>
void combinePoints(const Rows<Number>& points, int nearest, const Number* weights, Number* out,
                   int column, int anyDegree) {
  const int degree = kDegree != 0 ? kDegree : anyDegree;
  const Number* const origin = points[nearest] + column;
  Number sum[kWidth];
  for (int c = 0; c < kWidth; ++c) sum[c] = origin[c];
  for (int i = 0; i <= degree; ++i) {
    if (i == nearest || valueOf(weights[i]) == 0.0) continue;
    const Number* const p = points[i] + column;
    for (int c = 0; c < kWidth; ++c) sum[c] += weights[i] * leg(p[c], origin[c]);
  }
  for (int c = 0; c < kWidth; ++c) out[column + c] = sum[c];
}

// Sum over i of w_i (p_(i+1) - p_i).
template <int kDegree, int kWidth, class Number>
void combineLegs(const Rows<Number>& points, const Number* weights, Number* out, int column,
                 int anyDegree) {
  const int degree = kDegree != 0 ? kDegree : anyDegree;
  Number sum[kWidth] = {};
  for (int i = 0; i < degree; ++i) {
    const Number* const p = points[i] + column;
    const Number* const next = points[i + 1] + column;
    for (int c = 0; c < kWidth; ++c) sum[c] += weights[i] * leg(next[c], p[c]);
  }
  for (int c = 0; c < kWidth; ++c) out[column + c] = sum[c];
}

template <int kDegree, int kWidth, class Number>
void combineColumns(const Rows<Number>& points, int q, int nearest, const Number* weights,
                    Number* out, int column, int degree) {
  if (q == 0) {
    combinePoints<kDegree, kWidth>(points, nearest, weights, out, column, degree);
  } else {
    combineLegs<kDegree, kWidth>(points, weights, out, column, degree);
  }
}

// kDegree is the degree where it is known at compile time, so that the loops over it are unrolled.
template <int kDegree, class Number>
void combineWidth(const Rows<Number>& points, int q, const Number* weights, Number* out, int width,
                  int degree) {
  const int nearest = q > 0 ? 0 : anchor(weights, kDegree != 0 ? kDegree : degree);
  int column = 0;
  for (; column + 4 <= width; column += 4) {
    combineColumns<kDegree, 4>(points, q, nearest, weights, out, column, degree);
  }
  switch (width - column) {
    case 3:
      return combineColumns<kDegree, 3>(points, q, nearest, weights, out, column, degree);
    case 2:
      return combineColumns<kDegree, 2>(points, q, nearest, weights, out, column, degree);
    case 1:
      return combineColumns<kDegree, 1>(points, q, nearest, weights, out, column, degree);
    default:
      return;
  }
}

}  // namespace

template <class Number>
void combine(const Rows<Number>& points, int q, const Number* weights, Number* out, int width,
             int degree) {
  if constexpr (std::is_same_v<Number, double>) {
    switch (degree) {
      case 2:
        return combineWidth<2>(points, q, weights, out, width, degree);
      case 3:
        return combineWidth<3>(points, q, weights, out, width, degree);
      case 5:
        return combineWidth<5>(points, q, weights, out, width, degree);
      default:
        break;
    }
  }
  combineWidth<0>(points, q, weights, out, width, degree);
}

template void combine(const Rows<double>&, int, const double*, double*, int, int);
template void combine(const Rows<Bounded>&, int, const Bounded*, Bounded*, int, int);

}  // namespace knotwork::detail
