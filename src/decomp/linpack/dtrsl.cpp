// SPDX-License-Identifier: MIT
// DTRSL: solution of an upper triangular system.
#include "decomp/linpack/columns.h"
#include "decomp/linpack/linpack.h"

namespace knotwork::linpack {

int dtrsl(const double* t, int ldt, int n, double* b) {
  const Columns T(t, ldt);
  for (int i = 0; i < n; ++i)
    if (T(i, i) == 0.0) return i + 1;
  for (int j = n - 1; j >= 0; --j) {
    b[j] = b[j] / T(j, j);
    blas1::daxpy(j, -b[j], T.at(0, j), b);
  }
  return 0;
}

}  // namespace knotwork::linpack
