// SPDX-License-Identifier: MIT
// The inner loops over right-hand sides, which read an element of a factor once for all of them.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>

namespace knotwork::detail {

/// The reflection I + beta v v' of places 0 .. head - 1 and first .. end - 1, where place i has the
/// entry v[i * step]. Products with v of at most `skip` are not applied.
struct PlacedReflector {
  const double* v;
  std::ptrdiff_t step, head, first, end;
  double beta, skip;
};

/// Sides next to each other: number i of side w is x[i * width + w].
struct Sides {
  double* x;
  int width;
};

struct SideKernels {
  /// The widths that the kernels take are the powers of two up to this one, which fill registers.
  static constexpr int kMost = 8;
  /// The width that holds that many sides, or kMost.
  static int widthFor(int sides) {
    return static_cast<int>(std::bit_ceil(static_cast<unsigned>(std::min(sides, kMost))));
  }

  /// x_w += (beta x_w'v) v for each side, where the sum x_w'v, in index order from 0, exceeds the
  /// threshold in magnitude.
  void (*reflect)(const PlacedReflector& h, const Sides& sides);

  /// sums[w] = sum over k < count of x_w[places[k]] v[k * step], in index order from 0.
  void (*sumProducts)(const int* places, std::ptrdiff_t count, const double* v, std::ptrdiff_t step,
                      const Sides& sides, double* sums);
};

}  // namespace knotwork::detail
