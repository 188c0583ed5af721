// SPDX-License-Identifier: MIT
// B-spline basis functions on a long-form knot vector.
// Source: C. de Boor, A Practical Guide to Splines; L. Piegl and W. Tiller, The NURBS Book, ch. 2.
#pragma once

#include <cstddef>
#include <vector>

namespace knotfit {

/// The degree + 1 basis functions that do not vanish at a parameter, or one of their derivatives.
struct BasisRow {
  std::size_t first = 0;       ///< index of the first of them
  std::vector<double> values;  ///< degree + 1 values
};

/// @return index i with knots[i] <= u < knots[i + 1], at the end of the domain the last span that
/// is not empty; parameters outside the domain belong to its first or last span.
std::size_t spanOf(const std::vector<double>& knots, int degree, double u);

/// @return the basis functions' derivative of order `order` at u; zeros above the degree.
BasisRow basisRow(const std::vector<double>& knots, int degree, double u, int order = 0);

/// @return mean of the degree knots that belong to control point i.
double greville(const std::vector<double>& knots, int degree, std::size_t i);

}  // namespace knotfit
