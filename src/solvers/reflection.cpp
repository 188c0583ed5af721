// SPDX-License-Identifier: MIT
// Forms Householder reflections.
#include "solvers/reflection.h"

#include "kernels/kernels.h"

namespace knotwork::detail {

Pivot formReflection(double* v, std::ptrdiff_t count, std::ptrdiff_t pivot, double skip) {
  const double largest = reflectionKernels().largestMagnitude(v, count);
  if (largest < 0 || largest <= skip) return {};
  const double length = reflectionKernels().scaledLength(v, count, largest);
  const double sigma = v[pivot] > 0 ? -length : length;
  v[pivot] -= sigma;
  return {sigma, 1 / (sigma * v[pivot]), true};
}

}  // namespace knotwork::detail
