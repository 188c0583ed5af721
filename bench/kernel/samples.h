// SPDX-License-Identifier: MIT
// What the evaluation benchmarks share: seeded curves, surfaces and parameters.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <random>
#include <vector>

#include "knotwork/kernel/knot_record.h"

namespace knotwork::bench {

using Doubles = std::vector<double>;

constexpr std::size_t kParameters = 65536;

/// 65536 parameters over [0, spans), as a host meets them that projects points: in no order,
/// and too many for a processor to learn the way each search takes.
inline Doubles parameters(int spans) {
  std::mt19937 random(42);
  std::uniform_real_distribution<double> anywhere(0.0, spans);
  Doubles t(kParameters);
  for (double& x : t) x = anywhere(random);
  return t;
}

/// Full clamped knot vector over [0, spans]: spans + 2 degree + 1 knots, even or in steps of 1
/// to 9.
inline Doubles clampedKnots(int degree, int spans, bool uneven) {
  std::mt19937 random(5);
  Doubles breaks{0.0};
  for (int k = 0; k < spans; ++k)
    breaks.push_back(breaks.back() + (uneven ? 1.0 + static_cast<double>(random() % 9) : 1.0));
  Doubles knots(static_cast<std::size_t>(degree), 0.0);
  for (const double t : breaks) knots.push_back(t / breaks.back() * spans);
  knots.insert(knots.end(), static_cast<std::size_t>(degree), spans);
  return knots;
}

/// Sets knots from a full vector, whose first and last one an object does not keep.
inline void setKnots(knotwork::KnotRecord& record, const Doubles& full) {
  record.assign(full.data() + 1, static_cast<int>(full.size()) - 2);
}

/// Degrees, orders, and whether weights and uneven knots are used.
inline void cases(benchmark::internal::Benchmark* b) {
  b->ArgNames({"degree", "nderiv", "rational", "uneven"})
      ->ArgsProduct({{3, 5}, {0, 1, 2}, {0, 1}, {0, 1}});
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
