// SPDX-License-Identifier: MIT
// Scaling by powers of two.
#include "model/scale.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace knotfit {
namespace {

constexpr int kSolverSize = 40;

double largest(const double* values, std::size_t n, std::size_t step = 1) {
  double most = 0;
  for (std::size_t i = 0; i < n; i += step) most = std::max(most, std::abs(values[i]));
  return most;
}

}  // namespace

int evenExponent(const std::vector<double>& values) {
  const double most = largest(values.data(), values.size());
  if (!(most > 0)) return 0;
  const int e = std::ilogb(most);
  return e - (e & 1);
}

int rangeExponent(const std::vector<double>& values) {
  constexpr int kModest = 256;
  const int e = evenExponent(values);
  return std::abs(e) <= kModest ? 0 : e;
}

void scaleBy(std::vector<double>& values, int exponent) {
  if (exponent == 0) return;
  for (double& x : values) x = std::ldexp(x, exponent);
}

void scaleBy(Spline& spline, int exponent) {
  scaleBy(spline.controls, exponent);
  if (!spline.heights) return;
  for (EvenPlaces& e : *spline.heights) e.spacing = std::ldexp(e.spacing, exponent);
}

void scaleBy(PointGrid& grid, int exponent) {
  scaleBy(grid.coords, exponent);
  if (!grid.heights) return;
  for (EvenPlaces& e : *grid.heights) e.spacing = std::ldexp(e.spacing, exponent);
}

double solverScale(const double* values, std::size_t n) {
  constexpr int kMost = 1000;  // 2^1000: the scaled numbers and the scale are finite
  const double most = largest(values, n);
  return most > 0 ? std::ldexp(1.0, std::min(kSolverSize - std::ilogb(most), kMost)) : 1.0;
}

ColumnScale::ColumnScale(const double* values, std::size_t n, std::size_t columns) {
  for (std::size_t c = 0; c < columns && c < n; ++c) {
    const double most = largest(values + c, n - c, columns);
    exponents_.push_back(most > 0 ? kSolverSize - std::ilogb(most) : 0);
  }
}

void ColumnScale::apply(double* values, std::size_t n, int sign) const {
  for (std::size_t i = 0; i < n; ++i) {
    values[i] = std::ldexp(values[i], sign * exponents_[i % exponents_.size()]);
  }
}

}  // namespace knotfit
