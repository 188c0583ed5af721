// SPDX-License-Identifier: MIT
// Column-major storage, and the operations on several columns at once that the LINPACK routines
// share. Several columns go side by side to hide the time an addition takes; every sum keeps its
// own order, so the bits are those of one column after the other.
#pragma once

#include <cstddef>

#include "kernels/blas1.h"

namespace knotwork::linpack {

/// Columns that are worked on together.
inline constexpr int kGroup = 8;

/// A column-major array seen as a matrix; rows and columns count from 0 here.
template <class T>
class Columns {
 public:
  Columns(T* data, int ld) : data_(data), ld_(ld) {}

  T& operator()(int i, int j) const { return *at(i, j); }
  /// Address of element (i, j): the start of what is left of column j from row i on.
  T* at(int i, int j) const { return data_ + j * ld_ + i; }
  std::ptrdiff_t ld() const { return ld_; }

 private:
  T* data_;
  std::ptrdiff_t ld_;
};

/// y_j = y_j - v (v'y_j) / v_1 for `count` columns y_j of length q, `ld` apart: the reflection with
/// the vector v.
void reflectColumns(int q, const double* v, int count, double* y, std::ptrdiff_t ld);

/// y_j = y_j + t_j v for `count` columns y_j; those with t_j = 0 are left alone.
void addToColumns(int q, int count, const double* t, const double* v, double* y, std::ptrdiff_t ld);

/// y = y + t_j x_j for j = 0 .. count - 1, one after the other; columns with t_j = 0 are left out.
void addColumns(int q, int count, const double* t, const double* x, std::ptrdiff_t ld, double* y);

/// Columns 0 and 1 of length q turned by (c_0, s_0), then 1 and 2 by (c_1, s_1), and so on.
void rotateSweep(int q, int count, const double* c, const double* s, double* x, std::ptrdiff_t ld);

}  // namespace knotwork::linpack
