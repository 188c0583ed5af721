// SPDX-License-Identifier: MIT
// Packs blocks of the operands for the product kernels.
//
// Source of the scheme: K. Goto, R. van de Geijn, Anatomy of High-Performance Matrix Multiplication
// (2008), with the order of each sum kept.
#include "matrix/blocked_product.h"

#include <algorithm>
#include <cstring>

namespace knotwork::detail {
namespace {

constexpr std::size_t kBlockDepth = 128;
constexpr std::size_t kBlockRows = 128;
constexpr std::size_t kChunk = 4;  // elements that are moved at once where they lie side by side

// The panels of up to `width` rows of a block, one behind the other: element (i, p) of a panel is
// panel[p * width + i]. Rows that the block has not are 0.
template <class T>
void packRows(std::size_t rows, std::size_t depth, Grid<const T> block, std::size_t width,
              T* panel) {
  for (std::size_t first = 0; first < rows; first += width) {
    const std::size_t present = std::min(width, rows - first);
    for (std::size_t p = 0; p < depth; ++p) {
      T* column = panel + p * width;
      if (present == width && block.rowStep == 1 && width % kChunk == 0) {
        const T* from = &block(first, p);
        for (std::size_t i = 0; i < width; i += kChunk)
          std::memcpy(column + i, from + i, kChunk * sizeof(T));
        continue;
      }
      for (std::size_t i = 0; i < present; ++i) column[i] = block(first + i, p);
      std::fill(column + present, column + width, T{});
    }
    panel += depth * width;
  }
}

// The panel of `cols` columns of a block, at most `width`: element (p, j) is
// panel[(p * width + j) * copies] and so are its copies. Columns that the block has not are 0.
template <class T>
void packColumns(std::size_t cols, std::size_t depth, Grid<const T> block, std::size_t width,
                 std::size_t copies, T* panel) {
  for (std::size_t p = 0; p < depth; ++p) {
    for (std::size_t j = 0; j < cols; ++j) {
      const T element = block(p, j);
      *panel++ = element;
      for (std::size_t c = 1; c < copies; ++c) *panel++ = element;
    }
    panel = std::fill_n(panel, (width - cols) * copies, T{});
  }
}

// One tile of c; where c ends within it, through a buffer.
template <class T>
void addTile(std::size_t depth, const T* a, const T* b, Grid<T> c, std::size_t rows,
             std::size_t cols) {
  const ProductKernels<T>& kernel = productKernels<T>();
  if (rows == kernel.tileRows && cols == kernel.tileCols) {
    kernel.addTile(depth, a, b, c.start, c.colStep);
    return;
  }
  T buffer[kMostTileRows * kMostTileCols];
  std::fill_n(buffer, kernel.tileRows * kernel.tileCols, T{});
  const Grid<T> tile{buffer, 1, static_cast<std::ptrdiff_t>(kernel.tileRows)};
  for (std::size_t j = 0; j < cols; ++j) std::copy_n(&c(0, j), rows, &tile(0, j));
  kernel.addTile(depth, a, b, buffer, tile.colStep);
  for (std::size_t j = 0; j < cols; ++j) std::copy_n(&tile(0, j), rows, &c(0, j));
}

// c += a b for a packed block of a and all columns of b, whose panels are packed one by one.
template <class T>
void addBlock(std::size_t rows, std::size_t cols, std::size_t depth, const T* packedA,
              Grid<const T> b, Grid<T> c) {
  const std::size_t tileRows = productKernels<T>().tileRows;
  const std::size_t tileCols = productKernels<T>().tileCols;
  const std::size_t copies = productKernels<T>().copies;
  alignas(64) T packedB[kBlockDepth * kMostTileCols * kMostCopies];
  for (std::size_t j = 0; j < cols; j += tileCols) {
    const std::size_t width = std::min(tileCols, cols - j);
    packColumns(width, depth, b.from(0, j), tileCols, copies, packedB);
    for (std::size_t i = 0; i < rows; i += tileRows) {
      addTile(depth, packedA + i * depth, packedB, c.from(i, j), std::min(tileRows, rows - i),
              width);
    }
  }
}

}  // namespace

template <class T>
void blockedProduct(std::size_t rows, std::size_t cols, std::size_t depth, Grid<const T> a,
                    Grid<const T> b, T* c) {
  blockedProduct(rows, cols, depth, a, b, Grid<T>{c, 1, static_cast<std::ptrdiff_t>(rows)});
}

template <class T>
void blockedProduct(std::size_t rows, std::size_t cols, std::size_t depth, Grid<const T> a,
                    Grid<const T> b, Grid<T> c) {
  static_assert(kBlockRows % kMostTileRows == 0);
  if (cols == 0) return;
  alignas(64) T packedA[kBlockRows * kBlockDepth];
  for (std::size_t p = 0; p < depth; p += kBlockDepth) {
    const std::size_t deep = std::min(kBlockDepth, depth - p);
    for (std::size_t i = 0; i < rows; i += kBlockRows) {
      const std::size_t high = std::min(kBlockRows, rows - i);
      packRows(high, deep, a.from(i, p), productKernels<T>().tileRows, packedA);
      addBlock(high, cols, deep, packedA, b.from(p, 0), c.from(i, 0));
    }
  }
}

// Any strides: as a product of matrices.
template <class T>
void addColumns(std::size_t rows, std::size_t depth, Grid<const T> a, Run<const T> x, T* y) {
  if (a.rowStep == 1 && x.stride == 1) {
    columnKernels<T>().addColumns(rows, depth, a.start, a.colStep, x.start, y);
  } else {
    blockedProduct(rows, std::size_t{1}, depth, a, Grid<const T>{x.start, x.stride, 0}, y);
  }
}

template <class T>
void addColumnDots(std::size_t depth, std::size_t cols, Run<const T> x, Grid<const T> a, T* y) {
  if (a.rowStep == 1 && x.stride == 1) {
    columnKernels<T>().addColumnDots(depth, cols, x.start, a.start, a.colStep, y);
  } else {
    blockedProduct(cols, std::size_t{1}, depth, a.transposed(), Grid<const T>{x.start, x.stride, 0},
                   y);
  }
}

template void blockedProduct(std::size_t, std::size_t, std::size_t, Grid<const double>,
                             Grid<const double>, double*);
template void blockedProduct(std::size_t, std::size_t, std::size_t, Grid<const double>,
                             Grid<const double>, Grid<double>);
template void blockedProduct(std::size_t, std::size_t, std::size_t, Grid<const int>,
                             Grid<const int>, int*);
template void addColumns(std::size_t, std::size_t, Grid<const double>, Run<const double>, double*);
template void addColumns(std::size_t, std::size_t, Grid<const int>, Run<const int>, int*);
template void addColumnDots(std::size_t, std::size_t, Run<const double>, Grid<const double>,
                            double*);
template void addColumnDots(std::size_t, std::size_t, Run<const int>, Grid<const int>, int*);

}  // namespace knotwork::detail
