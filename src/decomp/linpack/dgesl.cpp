// SPDX-License-Identifier: MIT
// DGESL: solution with the factors of DGEFA.
#include <utility>

#include "decomp/linpack/columns.h"
#include "decomp/linpack/linpack.h"

namespace knotwork::linpack {

void dgesl(const double* a, int lda, int n, const int* ipvt, double* b) {
  const Columns A(a, lda);
  // L y = b, interchanges and eliminations in turn
  for (int k = 0; k < n - 1; ++k) {
    std::swap(b[k], b[ipvt[k] - 1]);
    blas1::daxpy(n - k - 1, b[k], A.at(k + 1, k), b + k + 1);
  }
  // U x = y
  for (int k = n - 1; k >= 0; --k) {
    b[k] = b[k] / A(k, k);
    blas1::daxpy(k, -b[k], A.at(0, k), b);
  }
}

}  // namespace knotwork::linpack
