// SPDX-License-Identifier: MIT
// Systems for the solver tests: random ones and collocation matrices of cubic splines.
#pragma once

#include <algorithm>
#include <random>
#include <vector>

#include "knotwork/geometry/bspline_basis.h"
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

inline DoubleVec randomVector(Random& random, int n) {
  DoubleVec v(static_cast<unsigned>(n));
  for (int i = 0; i < n; ++i) v(i) = random.uniform(-1, 1);
  return v;
}

inline DoubleGenMat randomMatrix(Random& random, int rows, int cols) {
  return DoubleGenMat(randomVector(random, rows * cols), unsigned(rows), unsigned(cols));
}

inline TtupleVector randomPoints(Random& random, int dimension, int n) {
  DoubleVec flat = randomVector(random, dimension * n);
  return TtupleVector(dimension, flat);
}

/// The values of `cols` cubic B-splines on equal intervals of [0, 1] at `data` random parameters
/// and, below them, at `constraints` equally spaced ones.
inline DoubleGenMat splineSystem(Random& random, int data, int constraints, int cols) {
  std::vector<double> u;
  for (int i = 0; i < data; ++i) u.push_back(random.uniform(0, 1));
  std::sort(u.begin(), u.end());
  for (int i = 0; i < constraints; ++i)
    u.push_back(constraints == 1 ? 0.5 : i / (constraints - 1.));
  return BsplineBasis(3, uniformKnots(3, cols))
      .collocation(DoubleVec(u.data(), unsigned(u.size())));
}

}  // namespace knotwork::test
