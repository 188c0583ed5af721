// SPDX-License-Identifier: MIT
// Points and parameters of fixed seeds.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <vector>

#include "model/points.h"

namespace knotfit::test {

inline PointSet wave(std::size_t n, int dim, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> noise(-0.02, 0.02);
  PointSet points;
  points.dim = dim;
  for (std::size_t i = 0; i < n; ++i) {
    const double t = 6.0 * static_cast<double>(i) / static_cast<double>(n);
    const double full[] = {std::cos(t) + noise(random), std::sin(t) + noise(random), 0.3 * t};
    points.coords.insert(points.coords.end(), full, full + dim);
  }
  return points;
}

inline double apart(const std::array<double, 3>& a, const double* b, int dim) {
  double sum = 0;
  for (int c = 0; c < dim; ++c) sum += std::pow(a[static_cast<std::size_t>(c)] - b[c], 2);
  return std::sqrt(sum);
}

inline std::vector<double> ascending(std::mt19937& random, std::size_t n) {
  std::uniform_real_distribution<double> place(0, 1);
  std::vector<double> u(n);
  for (double& x : u) x = std::pow(place(random), 2);
  std::sort(u.begin(), u.end());
  u.front() = 0;
  u.back() = 1;
  return u;
}

}  // namespace knotfit::test
