// SPDX-License-Identifier: MIT
// The loops behind each set of column kernels; vectors of elements of one column.
#include "decomp/linpack/column_kernels.h"

namespace {

using knotwork::linpack::ColumnKernels;

void addToColumn(int q, double t, const double* __restrict v, double* __restrict y) {
  for (int i = 0; i < q; ++i) y[i] += t * v[i];
}

void addGroup(int q, const double* t, const double* x, std::ptrdiff_t ld, double* __restrict y) {
  const double t0 = t[0], t1 = t[1], t2 = t[2], t3 = t[3];
  const double t4 = t[4], t5 = t[5], t6 = t[6], t7 = t[7];
  for (int i = 0; i < q; ++i) {
    const double* const xi = x + i;
    double sum = y[i] + t0 * xi[0];
    sum += t1 * xi[ld];
    sum += t2 * xi[2 * ld];
    sum += t3 * xi[3 * ld];
    sum += t4 * xi[4 * ld];
    sum += t5 * xi[5 * ld];
    sum += t6 * xi[6 * ld];
    sum += t7 * xi[7 * ld];
    y[i] = sum;
  }
}

constexpr ColumnKernels kThisSet = {addToColumn, addGroup};

}  // namespace
