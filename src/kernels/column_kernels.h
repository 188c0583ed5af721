// SPDX-License-Identifier: MIT
// The inner loops over several columns of one matrix at once: products of matrix and vector, and
// what the decompositions and the solvers do to groups of columns.
#pragma once

#include <cstddef>

namespace knotwork::detail {

/// Column j starts at columns + j * step. Products are rounded before they are added; a sum goes on
/// from the value it finds, so that long ones can be worked off in blocks. x and y are apart from
/// the columns and from each other.
template <class T>
struct ColumnKernels {
  /// y[i] = ((y[i] + columns[i] x[0]) + columns[i + step] x[1]) + ... for i < rows: the product of
  /// `count` columns and a vector.
  void (*addColumns)(std::size_t rows, std::size_t count, const T* columns, std::ptrdiff_t step,
                     const T* x, T* y);

  /// y[j] += sum over i < depth of x[i] columns[i + j * step] for j < count, in order of i: the dot
  /// products of one vector with a block of columns.
  void (*addColumnDots)(std::size_t depth, std::size_t count, const T* x, const T* columns,
                        std::ptrdiff_t step, T* y);
};

/// Columns 0 and 1 turned by (c_0, s_0), then 1 and 2 by (c_1, s_1), ...: `count` rotations of
/// columns of length q. (x, y) becomes (c x + s y, c y - s x).
using RotateSweep = void (*)(int q, int count, const double* c, const double* s, double* columns,
                             std::ptrdiff_t step);

}  // namespace knotwork::detail
