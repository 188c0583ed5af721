// SPDX-License-Identifier: MIT
// Surfaces of heights: x and y are known, z alone is fitted.
#include "model/heights.h"

#include <cmath>

#include "base/doubled.h"
#include "model/spline.h"

namespace knotfit {
namespace {

// spacing steps (t(i + 1) + ... + t(i + p)) / p, with one rounding at the end.
double atGreville(const EvenPlaces& e, const std::vector<double>& t, std::size_t i, int degree) {
  Doubled sum;
  for (int k = 1; k <= degree; ++k) sum += t[i + static_cast<std::size_t>(k)];
  const Doubled x = sum * static_cast<double>(e.steps) * e.spacing;
  const double share = x.value() / degree;
  return share + (std::fma(-share, degree, x.high) + x.low) / degree;
}

}  // namespace

double EvenPlaces::at(double u) const {
  const double n = static_cast<double>(steps), k = std::round(u * n);
  return spacing * (k / n == u ? k : u * n);
}

void placeHeights(Spline& s) {
  if (!s.heights) return;
  for (std::size_t d = 0; d < 2; ++d) {
    const EvenPlaces& e = (*s.heights)[d];
    for (std::size_t i = 0; i < s.size[d]; ++i) {
      const double x = atGreville(e, s.knots[d], i, s.degree[d]);
      for (std::size_t j = 0; j < s.size[1 - d]; ++j) {
        s.controls[3 * (d == 0 ? i * s.size[1] + j : j * s.size[1] + i) + e.coordinate] = x;
      }
    }
  }
}

}  // namespace knotfit
