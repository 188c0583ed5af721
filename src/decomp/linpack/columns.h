// SPDX-License-Identifier: MIT
// Column-major storage and the Householder reflection shared by the LINPACK routines.
#pragma once

#include <cstddef>

#include "platform/blas1.h"

namespace knotwork::linpack {

/// A column-major array seen as a matrix; rows and columns count from 0 here.
template <class T>
class Columns {
 public:
  Columns(T* data, int ld) : data_(data), ld_(ld) {}

  T& operator()(int i, int j) const { return *at(i, j); }
  /// Address of element (i, j): the start of what is left of column j from row i on.
  T* at(int i, int j) const { return data_ + static_cast<std::ptrdiff_t>(j) * ld_ + i; }

 private:
  T* data_;
  std::ptrdiff_t ld_;
};

template <class T>
Columns(T*, int) -> Columns<T>;

/// y = y - v (v'y) / v_1, the reflection with the vector v of length q.
inline void reflect(int q, const double* v, double* y) {
  const double t = -blas1::ddot(q, v, y) / v[0];
  blas1::daxpy(q, t, v, y);
}

}  // namespace knotwork::linpack
