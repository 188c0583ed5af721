// SPDX-License-Identifier: MIT
// Collocation matrices of cubic splines.
#pragma once

#include <algorithm>
#include <vector>

#include "knotwork/geometry/bspline_basis.h"
#include "support/random.h"

namespace knotwork::test {

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
