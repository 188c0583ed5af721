// SPDX-License-Identifier: MIT
// The loop of the product kernels.
#pragma once

#include "kernels/generic/lanes.h"
#include "kernels/product_kernels.h"

namespace {

using knotwork::detail::kMostCopies;
using knotwork::detail::kMostTileCols;
using knotwork::detail::kMostTileRows;
using knotwork::detail::ProductKernels;

template <class T>
struct ProductLoops {
  using Register = Lanes<T>;
  static constexpr std::size_t kCount = kLanes<T>;

  // Two registers of rows and four columns keep sixteen registers busy; half the columns fit where
  // there are but eight.
  static constexpr std::size_t kTileRows = 2 * kCount;
  static constexpr std::size_t kTileCols = sizeof(void*) == 8 ? 4 : 2;

  // AVX2 broadcasts as fast as it loads; before it, elements are best broadcast in memory.
  static constexpr std::size_t kCopies = kRegisterBytes > 16 ? 1 : kCount;

  static void addTile(std::size_t depth, const T* a, const T* b, T* c, std::ptrdiff_t step) {
    Register upper[kTileCols];
    Register lower[kTileCols];
    for (std::size_t j = 0; j < kTileCols; ++j) {
      const T* column = c + static_cast<std::ptrdiff_t>(j) * step;
      upper[j] = load(column);
      lower[j] = load(column + kCount);
    }
    for (std::size_t p = 0; p < depth; ++p) {
      const Register aUpper = load(a);
      const Register aLower = load(a + kCount);
      for (std::size_t j = 0; j < kTileCols; ++j) {
        const Register factor = kCopies == 1 ? broadcast(b[j]) : load(b + j * kCopies);
        upper[j] += aUpper * factor;
        lower[j] += aLower * factor;
      }
      a += kTileRows;
      b += kTileCols * kCopies;
    }
    for (std::size_t j = 0; j < kTileCols; ++j) {
      T* column = c + static_cast<std::ptrdiff_t>(j) * step;
      store(column, upper[j]);
      store(column + kCount, lower[j]);
    }
  }

  static_assert(kTileRows <= kMostTileRows && kTileCols <= kMostTileCols && kCopies <= kMostCopies);
  static constexpr ProductKernels<T> kTable = {kTileRows, kTileCols, kCopies, addTile};
};

}  // namespace
