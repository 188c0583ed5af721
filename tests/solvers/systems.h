// SPDX-License-Identifier: MIT
// Systems for the solver tests: random ones and collocation matrices of cubic splines.
#pragma once

#include <algorithm>
#include <random>
#include <vector>

#include "knotwork/geometry/tuple_vector.h"
#include "knotwork/matrix/double_gen_mat.h"

namespace knotwork::test {

/// The same numbers on every platform.
class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}
  double uniform(double from, double to) {
    return from + (to - from) * (static_cast<double>(engine_()) / 4294967296.0);
  }
  int below(int n) { return static_cast<int>(engine_() % static_cast<unsigned>(n)); }

 private:
  std::mt19937 engine_;
};

inline DoubleGenMat randomMatrix(Random& random, int rows, int cols) {
  DoubleGenMat a(static_cast<unsigned>(rows), static_cast<unsigned>(cols));
  for (int j = 0; j < cols; ++j)
    for (int i = 0; i < rows; ++i) a(i, j) = random.uniform(-1, 1);
  return a;
}

inline DoubleVec randomVector(Random& random, int n) {
  DoubleVec v(static_cast<unsigned>(n));
  for (int i = 0; i < n; ++i) v(i) = random.uniform(-1, 1);
  return v;
}

inline TtupleVector randomPoints(Random& random, int dimension, int n) {
  DoubleVec flat = randomVector(random, dimension * n);
  return TtupleVector(dimension, flat);
}

/// Values at t in [0, 1] of the cubic B-splines on `cols` - 3 equal intervals with clamped ends:
/// a row per parameter, by the de Boor-Cox recurrence.
inline DoubleGenMat splineMatrix(const std::vector<double>& parameters, int cols) {
  const auto knot = [cols](int i) { return std::clamp(i - 3, 0, cols - 3) / double(cols - 3); };
  DoubleGenMat a(static_cast<unsigned>(parameters.size()), static_cast<unsigned>(cols), 0.0);
  for (int row = 0; row < static_cast<int>(parameters.size()); ++row) {
    const double t = parameters[static_cast<std::size_t>(row)];
    int span = 3;
    while (span < cols - 1 && t >= knot(span + 1)) ++span;
    double values[4] = {1, 0, 0, 0};
    for (int degree = 1; degree <= 3; ++degree) {
      double saved = 0;
      for (int q = 0; q < degree; ++q) {
        const double right = knot(span + q + 1) - t, left = t - knot(span + 1 + q - degree);
        const double share = values[q] / (right + left);
        values[q] = saved + right * share;
        saved = left * share;
      }
      values[degree] = saved;
    }
    for (int q = 0; q <= 3; ++q) a(row, span - 3 + q) = values[q];
  }
  return a;
}

/// The spline matrix of `data` random parameters and, below it, `constraints` equally spaced ones.
inline DoubleGenMat splineSystem(Random& random, int data, int constraints, int cols) {
  std::vector<double> parameters;
  for (int i = 0; i < data; ++i) parameters.push_back(random.uniform(0, 1));
  std::sort(parameters.begin(), parameters.end());
  for (int i = 0; i < constraints; ++i) {
    parameters.push_back(constraints == 1 ? 0.5 : i / (constraints - 1.0));
  }
  return splineMatrix(parameters, cols);
}

}  // namespace knotwork::test
