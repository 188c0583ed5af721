// SPDX-License-Identifier: MIT
// The inner loop of matrix products: many independent sums at once, each in index order.
#pragma once

#include <cstddef>

namespace knotwork::detail {

/// Products are rounded before they are added; a sum goes on from the value it finds, so that long
/// ones can be worked off in blocks.
template <class T>
struct ProductKernels {
  /// A tile of the result, at most kMostTileRows x kMostTileCols.
  std::size_t tileRows, tileCols;
  /// How often each element stands in a packed b, one copy beside the other; at most kMostCopies.
  std::size_t copies;

  /// c(i, j) += sum over p < depth of a[p * tileRows + i] b[(p * tileCols + j) * copies] for all of
  /// one tile; c(i, j) is c[i + j * step].
  void (*addTile)(std::size_t depth, const T* a, const T* b, T* c, std::ptrdiff_t step);
};

/// Room enough for the tiles of every set: two 64-byte registers of 32-bit integers are 32 rows.
inline constexpr std::size_t kMostTileRows = 32;
inline constexpr std::size_t kMostTileCols = 4;
inline constexpr std::size_t kMostCopies = 4;

}  // namespace knotwork::detail
