// SPDX-License-Identifier: MIT
// The inner loops of matrix products: many independent sums at once, each in index order.
//
// Part of every kernel set, see kernels.h. Products are rounded before they are added; a sum goes
// on from the value it finds, so that long ones can be worked off in blocks.
#pragma once

#include <cstddef>

namespace knotwork::detail {

template <class T>
struct ProductKernels {
  // A tile of the result, at most kMostTileRows x kMostTileCols.
  std::size_t tileRows, tileCols;
  // How often each element stands in a packed b, one copy beside the other; at most kMostCopies.
  std::size_t copies;

  // c(i, j) += sum over p < depth of a[p * tileRows + i] b[(p * tileCols + j) * copies] for all of
  // one tile; c(i, j) is c[i + j * step].
  void (*addTile)(std::size_t depth, const T* a, const T* b, T* c, std::ptrdiff_t step);

  // y[i] += sum over j < count of columns[i + j * step] x[j] for i < rows: the product of a block
  // of columns and a vector.
  void (*addColumns)(std::size_t rows, std::size_t count, const T* columns, std::ptrdiff_t step,
                     const T* x, T* y);

  // y[j] += sum over i < depth of x[i] columns[i + j * step] for j < count: the dot products of one
  // vector with a block of columns.
  void (*addColumnDots)(std::size_t depth, std::size_t count, const T* x, const T* columns,
                        std::ptrdiff_t step, T* y);
};

inline constexpr std::size_t kMostTileRows = 16;
inline constexpr std::size_t kMostTileCols = 4;
inline constexpr std::size_t kMostCopies = 4;

template <class T>
const ProductKernels<T>& productKernels();

}  // namespace knotwork::detail
