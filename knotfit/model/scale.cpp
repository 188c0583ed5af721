// SPDX-License-Identifier: MIT
// Scaling by powers of two.
#include "model/scale.h"

#include <algorithm>
#include <cmath>

namespace knotfit {
namespace {

double largest(const double* values, std::size_t n) {
  double most = 0;
  for (std::size_t i = 0; i < n; ++i) most = std::max(most, std::abs(values[i]));
  return most;
}

}  // namespace

int evenExponent(const std::vector<double>& values) {
  const double most = largest(values.data(), values.size());
  if (!(most > 0)) return 0;
  const int e = std::ilogb(most);
  return e - (e & 1);
}

void scaleBy(std::vector<double>& values, int exponent) {
  if (exponent == 0) return;
  for (double& x : values) x = std::ldexp(x, exponent);
}

double solverScale(const double* values, std::size_t n) {
  constexpr int kSize = 40, kMost = 1000;  // 2^1000: the scaled numbers and the scale are finite
  const double most = largest(values, n);
  return most > 0 ? std::ldexp(1.0, std::min(kSize - std::ilogb(most), kMost)) : 1.0;
}

}  // namespace knotfit
