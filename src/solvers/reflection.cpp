// SPDX-License-Identifier: MIT
// Forms Householder reflections.
#include "solvers/reflection.h"

namespace knotwork::detail {

double largestMagnitude(const double* v, std::ptrdiff_t count) {
  double largest = -1;
  for (std::ptrdiff_t t = 0; t < count; ++t) {
    const double magnitude = std::abs(v[t]);
    if (magnitude > largest) largest = magnitude;
  }
  return largest;
}

namespace {

// The length of v, its entries scaled by their largest magnitude so that no square overflows.
double scaledLength(const double* v, std::ptrdiff_t count, double largest) {
  const double scale = 1 / largest;
  double sum = 0;
  for (std::ptrdiff_t t = 0; t < count; ++t) {
    const double scaled = v[t] * scale;
    sum += scaled * scaled;
  }
  return std::sqrt(sum) * largest;
}

}  // namespace

Pivot formReflection(double* v, std::ptrdiff_t count, std::ptrdiff_t pivot, double skip) {
  const double largest = largestMagnitude(v, count);
  if (largest < 0 || largest <= skip) return {};
  const double length = scaledLength(v, count, largest);
  const double sigma = v[pivot] > 0 ? -length : length;
  v[pivot] -= sigma;
  return {sigma, 1 / (sigma * v[pivot]), true};
}

}  // namespace knotwork::detail
