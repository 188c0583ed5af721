// SPDX-License-Identifier: MIT
// What the evaluation benchmarks share: seeded curves, surfaces and parameters.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <random>
#include <vector>

namespace knotwork::bench {

using Doubles = std::vector<double>;

/// 1024 parameters over [0, spans), as a host meets them that projects points: in no order.
inline Doubles parameters(int spans) {
  std::mt19937 random(42);
  std::uniform_real_distribution<double> anywhere(0.0, spans);
  Doubles t(1024);
  for (double& x : t) x = anywhere(random);
  return t;
}

/// Full clamped knot vector over [0, spans]: spans + 2 degree + 1 knots.
inline Doubles clampedKnots(int degree, int spans) {
  Doubles knots;
  for (int k = -degree; k <= spans + degree; ++k) knots.push_back(std::clamp(k, 0, spans));
  return knots;
}

/// `count` homogeneous control points (x w, y w, z w, w), or with all weights 1 and left out.
inline Doubles controlPoints(int count, bool rational) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> place(-10.0, 10.0), weight(0.5, 2.0);
  Doubles points;
  for (int i = 0; i < count; ++i) {
    const double w = rational ? weight(random) : 1.0;
    for (int c = 0; c < 3; ++c) points.push_back(w * place(random));
    if (rational) points.push_back(w);
  }
  return points;
}

/// Whether two libraries give the same point.
inline bool agree(const double* a, const double* b) {
  return std::abs(a[0] - b[0]) + std::abs(a[1] - b[1]) + std::abs(a[2] - b[2]) < 1e-10;
}

/// Rate of evaluations beside the time of one.
inline void countEvaluations(benchmark::State& state) {
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
}

}  // namespace knotwork::bench
