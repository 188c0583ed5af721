// SPDX-License-Identifier: MIT
// Givens rotations of rows.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "kernels/square_root.h"

namespace knotwork::detail {

/// Turns (a, b) into (length, 0).
struct Rotation {
  double cosine, sine, length;
};

/// The rotation for b != 0; squares neither overflow nor vanish.
inline Rotation rotationOf(double a, double b) {
  /// Between these limits the square of the larger is a normal number, and so is the sum.
  constexpr double kSmall = 0x1p-500, kLarge = 0x1p500;
  const double larger = std::max(std::abs(a), std::abs(b));
  double length;
  if (larger > kSmall && larger < kLarge) {
    length = squareRoot(a * a + b * b);
  } else {
    const double p = a / larger, q = b / larger;
    length = larger * squareRoot(p * p + q * q);
  }
  return {a / length, b / length, length};
}

/// Rows r and x become c r + s x and c x - s r.
inline void rotate(const Rotation& g, std::ptrdiff_t count, double* __restrict r,
                   double* __restrict x) {
  for (std::ptrdiff_t k = 0; k < count; ++k) {
    const double turned = g.cosine * r[k] + g.sine * x[k];
    x[k] = g.cosine * x[k] - g.sine * r[k];
    r[k] = turned;
  }
}

}  // namespace knotwork::detail
