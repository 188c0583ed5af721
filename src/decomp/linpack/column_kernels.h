// SPDX-License-Identifier: MIT
// The innermost loops over columns, one table for each instruction set; all give equal bits.
#pragma once

#include <cstddef>

namespace knotwork::linpack {

/// Columns that are worked on together.
inline constexpr int kGroup = 8;

/// Loops over columns of length q, `ld` apart. No factor t is 0 here.
struct ColumnKernels {
  /// sums_j = v'y_j for kGroup columns, each sum in index order from 0.
  void (*dotGroup)(int q, const double* v, const double* y, std::ptrdiff_t ld, double* sums);
  /// y = y + t v.
  void (*addToColumn)(int q, double t, const double* v, double* y);
  /// y = (((y + t_0 x_0) + t_1 x_1) + ...) for kGroup columns.
  void (*addGroup)(int q, const double* t, const double* x, std::ptrdiff_t ld, double* y);
  /// Columns 0 and 1 turned by (c_0, s_0), then 1 and 2 by (c_1, s_1), ...: `count` rotations.
  void (*rotateSweep)(int q, int count, const double* c, const double* s, double* x,
                      std::ptrdiff_t ld);
};

extern const ColumnKernels baselineColumnKernels;
#if defined(KNOTWORK_HAVE_AVX2)
extern const ColumnKernels avx2ColumnKernels;
#endif

}  // namespace knotwork::linpack
