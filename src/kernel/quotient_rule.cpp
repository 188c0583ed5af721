// SPDX-License-Identifier: MIT
// The quotient rule, order by order: S_ij = (A_ij - sum C(i,a) C(j,b) w_ab S_(i-a)(j-b)) / w_00.
// Source: L. Piegl, W. Tiller, The NURBS Book, ch. 4.
#include "kernel/quotient_rule.h"

#include <cstddef>

namespace knotwork::detail {

namespace {

constexpr int kRows = 32;  // of Pascal's triangle kept; higher orders are hardly ever asked for

struct Pascal {
  double row[kRows][kRows] = {};
  constexpr Pascal() {
    for (int n = 0; n < kRows; ++n) {
      row[n][0] = 1.0;
      for (int k = 1; k <= n; ++k) row[n][k] = row[n - 1][k - 1] + (k < n ? row[n - 1][k] : 0.0);
    }
  }
};

constexpr Pascal kPascal;

double binomial(int n, int k) {
  if (n < kRows) return kPascal.row[n][k];
  double product = 1.0;
  for (int i = 1; i <= k; ++i) product = product * (n - k + i) / i;
  return product;
}

// kDim is the dimension where it is known at compile time, else 0.
template <int kDim, class Number>
void divideOut(Number* out, int anyDim, int uOrder, int vOrder) {
  const int dim = kDim != 0 ? kDim : anyDim;
  const auto block = [=](int i, int j) {
    return out + ((uOrder + std::ptrdiff_t{1}) * j + i) * (dim + 1);
  };
  const Number weight = out[dim];
  // In rising order: what the sum takes from S has been divided by then.
  for (int j = 0; j <= vOrder; ++j) {
    for (int i = 0; i <= uOrder; ++i) {
      Number* const point = block(i, j);
      for (int b = 0; b <= j; ++b) {
        for (int a = b == 0 ? 1 : 0; a <= i; ++a) {
          const Number factor = binomial(j, b) * binomial(i, a) * block(a, b)[dim];
          const Number* const lower = block(i - a, j - b);
          for (int c = 0; c < dim; ++c) point[c] -= factor * lower[c];
        }
      }
      for (int c = 0; c < dim; ++c) point[c] /= weight;
    }
  }
}

}  // namespace

template <class Number>
void quotientRule(Number* out, int dim, int uOrder, int vOrder) {
  switch (dim) {
    case 2:
      return divideOut<2>(out, dim, uOrder, vOrder);
    case 3:
      return divideOut<3>(out, dim, uOrder, vOrder);
    default:
      return divideOut<0>(out, dim, uOrder, vOrder);
  }
}

template void quotientRule(double*, int, int, int);
template void quotientRule(Bounded*, int, int, int);

}  // namespace knotwork::detail
