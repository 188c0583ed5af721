// SPDX-License-Identifier: MIT
// DGEFA: Gaussian elimination with partial pivoting, by columns.
#include <utility>

#include "decomp/linpack/columns.h"
#include "decomp/linpack/linpack.h"

namespace knotwork::linpack {

int dgefa(double* a, int lda, int n, int* ipvt) {
  if (n < 1) return 0;
  const Columns A(a, lda);
  int info = 0;
  for (int k = 0; k < n - 1; ++k) {
    const int l = k - 1 + blas1::idamax(n - k, A.at(k, k));
    ipvt[k] = l + 1;
    if (A(l, k) == 0.0) {  // a zero column below: nothing to eliminate
      info = k + 1;
      continue;
    }
    if (l != k) std::swap(A(l, k), A(k, k));

    // multipliers m = -A(k+1.., k) / A(k, k), by the rounded reciprocal
    blas1::dscal(n - k - 1, -1.0 / A(k, k), A.at(k + 1, k));

    // A(k+1.., j) += m A(k, j)
    for (int j = k + 1; j < n; ++j) {
      if (l != k) std::swap(A(l, j), A(k, j));
      blas1::daxpy(n - k - 1, A(k, j), A.at(k + 1, k), A.at(k + 1, j));
    }
  }
  ipvt[n - 1] = n;
  if (A(n - 1, n - 1) == 0.0) info = n;
  return info;
}

}  // namespace knotwork::linpack
