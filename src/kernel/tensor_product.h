// SPDX-License-Identifier: MIT
// Evaluation of a tensor product: the triangular scheme in v, then in u.
//
// In v the weights act on whole stretches of u control points, which stand in memory one after the
// other; what is left are a few curves in u, one for each order in v.
#pragma once

#include <algorithm>

#include "kernel/triangular_scheme.h"

namespace knotwork::detail {

/// One direction of a tensor product, and a parameter in it.
struct Direction {
  Direction(const KnotRecord& knots, double parameter, int highest)
      : degree(knots.degree()), end(nearEnd(knots, parameter)), t(parameter), order(highest) {}

  int degree;
  NearEnd end;
  double t;
  int order;  ///< highest order of derivatives
};

/// Partials of the stored coordinates. Those of orders above a degree are left alone.
///
/// @param first   first control point of the spans; of `coords` numbers, the next in u behind it.
/// @param stride  numbers from one control point to the next in v.
/// @param spare   room for schemeNumbers() of the higher degree.
/// @param rows    room for (v.order + 1) (u.degree + 1) control points.
/// @param out     partial (i, j) goes to ((u.order + 1) j + i) * coords.
template <class Number>
void evaluateTensorProduct(const Number* first, std::ptrdiff_t stride, int coords,
                           const Direction& u, const Direction& v, Number* spare, Number* rows,
                           Number* out) {
  const int stretch = (u.degree + 1) * coords;
  const Rows<Number> grid(first, stride, v.degree, v.end);
  forEachOrder(spare, v.degree, v.end, v.t, v.order, [&](int q, const Number* weights) {
    combine(grid, q, weights, rows + q * stretch, stretch, v.degree);
  });
  const std::ptrdiff_t orders = u.order + std::ptrdiff_t{1};
  forEachOrder(spare, u.degree, u.end, u.t, u.order, [&](int q, const Number* weights) {
    for (int j = 0; j <= std::min(v.order, v.degree); ++j) {
      const Rows<Number> row(rows + j * stretch, coords, u.degree, u.end);
      combine(row, q, weights, out + (j * orders + q) * coords, coords, u.degree);
    }
  });
}

}  // namespace knotwork::detail
