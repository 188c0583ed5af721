// SPDX-License-Identifier: MIT
// Rows of a matrix that is stored by columns, without a walk across the columns for each of them.
#pragma once

#include <algorithm>

#include "knotwork/matrix/double_gen_mat.h"

namespace knotwork::detail {

/// Calls change(i, row) for every row i and stores what it leaves in `row`, a contiguous copy. Rows
/// come in slabs, which are copied in and out column by column. @return false, with nothing done,
/// if there is no memory for a slab.
template <class Change>
bool changeRows(DoubleGenMat& a, Change change) {
  constexpr int kSlab = 32;
  const int rows = static_cast<int>(a.rows());
  const int cols = static_cast<int>(a.cols());
  DoubleGenMat slab(a.cols(), kSlab);  // row t of the slab is column t here
  if (slab.cols() != kSlab) return false;
  for (int first = 0; first < rows; first += kSlab) {
    const int count = std::min(kSlab, rows - first);
    for (int j = 0; j < cols; ++j) {
      const double* column = &a.ref(first, j);
      for (int t = 0; t < count; ++t) slab.ref(j, t) = column[t];
    }
    for (int t = 0; t < count; ++t) {
      DoubleVec row = slab.col(t);
      change(first + t, row);
    }
    for (int j = 0; j < cols; ++j) {
      double* column = &a.ref(first, j);
      for (int t = 0; t < count; ++t) column[t] = slab.ref(j, t);
    }
  }
  return true;
}

}  // namespace knotwork::detail
