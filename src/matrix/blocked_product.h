// SPDX-License-Identifier: MIT
// Matrix products at the speed of the vector unit, with each element's sum in index order from 0.
//
// Lanes of the vector unit hold different elements of the result, never parts of one sum. The
// inner dimension is worked off block by block: a block's kernel goes on from the partial sums that
// the blocks before it left, so blocking changes no order and no bit.
#pragma once

#include <cstddef>

#include "kernels/kernels.h"

namespace knotwork::detail {

/// Element (i, j) is start[i * rowStep + j * colStep].
template <class T>
struct Grid {
  T* start;
  std::ptrdiff_t rowStep;
  std::ptrdiff_t colStep;

  T& operator()(std::size_t i, std::size_t j) const {
    return start[static_cast<std::ptrdiff_t>(i) * rowStep +
                 static_cast<std::ptrdiff_t>(j) * colStep];
  }
  Grid from(std::size_t i, std::size_t j) const { return {&(*this)(i, j), rowStep, colStep}; }
  Grid transposed() const { return {start, colStep, rowStep}; }
};

/// c += a b, where a is rows x depth, b depth x cols and c rows x cols, contiguous by columns and
/// apart from both. Takes no memory but stack.
template <class T>
void blockedProduct(std::size_t rows, std::size_t cols, std::size_t depth, Grid<const T> a,
                    Grid<const T> b, T* c);

/// The same for a c whose columns, each contiguous, are apart from each other.
template <class T>
void blockedProduct(std::size_t rows, std::size_t cols, std::size_t depth, Grid<const T> a,
                    Grid<const T> b, Grid<T> c);

/// y += a x, where a is rows x depth, x has `depth` elements and y, contiguous, is apart from both.
template <class T>
void addColumns(std::size_t rows, std::size_t depth, Grid<const T> a, Run<const T> x, T* y);

/// y += x' a, where a is depth x cols, x has `depth` elements and y, contiguous, is apart from
/// both.
template <class T>
void addColumnDots(std::size_t depth, std::size_t cols, Run<const T> x, Grid<const T> a, T* y);

}  // namespace knotwork::detail
