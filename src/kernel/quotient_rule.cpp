// SPDX-License-Identifier: MIT
// The quotient rule, order by order: S_ij = (A_ij - sum C(i,a) C(j,b) w_ab S_(i-a)(j-b)) / w_00.
// Source: L. Piegl, W. Tiller, The NURBS Book, ch. 4.
#include "kernel/quotient_rule.h"

#include <cstddef>

namespace knotwork::detail {

namespace {

// x -= factor * y over the coordinates of a point.
void subtract(double* x, double factor, const double* y, int dim) {
  for (int c = 0; c < dim; ++c) x[c] -= factor * y[c];
}

}  // namespace

void quotientRule(double* out, int dim, int uOrder, int vOrder) {
  const auto block = [=](int i, int j) {
    return out + (static_cast<std::ptrdiff_t>(uOrder + 1) * j + i) * (dim + 1);
  };
  const double weight = block(0, 0)[dim];
  for (int j = 0; j <= vOrder; ++j) {
    for (int i = 0; i <= uOrder; ++i) {
      double* const point = block(i, j);
      double cj = 1.0;  // C(j, b): each factor follows from the one before, exactly below 2^53
      for (int b = 0; b <= j; cj = cj * (j - b) / (b + 1), ++b) {
        double ci = 1.0;  // C(i, a)
        for (int a = 0; a <= i; ci = ci * (i - a) / (a + 1), ++a) {
          if (a + b > 0) subtract(point, cj * ci * block(a, b)[dim], block(i - a, j - b), dim);
        }
      }
      for (int c = 0; c < dim; ++c) point[c] /= weight;
    }
  }
}

}  // namespace knotwork::detail
