// SPDX-License-Identifier: MIT
// Operations on several columns at once: groups through the kernels, the rest one by one.
#include "decomp/linpack/columns.h"

#include <algorithm>

#include "vector/kernels/kernels.h"

namespace knotwork::linpack {
namespace {

/// The set that goes with the element kernels in use.
const ColumnKernels& kernels() {
#if defined(KNOTWORK_HAVE_AVX2)
  if (detail::activeKernels == &detail::avx2Kernels) return avx2ColumnKernels;
#endif
  return baselineColumnKernels;
}

/// sums[j] = v'y_j for `count` <= kGroup columns; each sum in index order.
void dots(int q, const double* v, int count, const double* y, std::ptrdiff_t ld, double* sums) {
  if (count == kGroup) return kernels().dotGroup(q, v, y, ld, sums);
  for (int j = 0; j < count; ++j) sums[j] = blas1::ddot(q, v, y + j * ld);
}

}  // namespace

void reflectColumns(int q, const double* v, int count, double* y, std::ptrdiff_t ld) {
  for (; count > 0; count -= kGroup, y += kGroup * ld) {
    const int columns = std::min(count, kGroup);
    double t[kGroup];
    dots(q, v, columns, y, ld, t);
    for (int j = 0; j < columns; ++j) t[j] = -t[j] / v[0];
    addToColumns(q, columns, t, v, y, ld);
  }
}

void addToColumns(int q, int count, const double* t, const double* v, double* y,
                  std::ptrdiff_t ld) {
  const ColumnKernels& set = kernels();
  for (int j = 0; j < count; ++j)
    if (t[j] != 0.0) set.addToColumn(q, t[j], v, y + j * ld);
}

void addColumns(int q, int count, const double* t, const double* x, std::ptrdiff_t ld, double* y) {
  const ColumnKernels& set = kernels();
  for (; count > 0; count -= kGroup, t += kGroup, x += kGroup * ld) {
    const int columns = std::min(count, kGroup);
    const bool anyZero = std::find(t, t + columns, 0.0) != t + columns;
    if (columns == kGroup && !anyZero) {
      set.addGroup(q, t, x, ld, y);
    } else {
      for (int j = 0; j < columns; ++j) blas1::daxpy(q, t[j], x + j * ld, y);
    }
  }
}

void rotateSweep(int q, int count, const double* c, const double* s, double* x, std::ptrdiff_t ld) {
  kernels().rotateSweep(q, count, c, s, x, ld);
}

}  // namespace knotwork::linpack
