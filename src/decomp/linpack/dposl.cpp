// SPDX-License-Identifier: MIT
// DPOSL: solution with a Cholesky factor.
#include "decomp/linpack/columns.h"
#include "decomp/linpack/linpack.h"

namespace knotwork::linpack {

void dposl(const double* a, int lda, int n, double* b) {
  const Columns A(a, lda);
  // R' y = b, by inner products
  for (int k = 0; k < n; ++k) b[k] = (b[k] - blas1::ddot(k, A.at(0, k), b)) / A(k, k);
  // R x = y, by columns
  for (int k = n - 1; k >= 0; --k) {
    b[k] = b[k] / A(k, k);
    blas1::daxpy(k, -b[k], A.at(0, k), b);
  }
}

}  // namespace knotwork::linpack
