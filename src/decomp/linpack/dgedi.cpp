// SPDX-License-Identifier: MIT
// DGEDI: determinant and inverse from the factors of DGEFA.
#include <cmath>

#include "decomp/linpack/columns.h"
#include "decomp/linpack/linpack.h"

namespace knotwork::linpack {
namespace {

// One power of ten at a time: every step rounds. Infinities and NaN have no power of ten.
void normalise(double* det) {
  if (!std::isfinite(det[0])) return;
  while (std::abs(det[0]) < 1.0) {
    det[0] = 10.0 * det[0];
    det[1] = det[1] - 1.0;
  }
  while (std::abs(det[0]) >= 10.0) {
    det[0] = det[0] / 10.0;
    det[1] = det[1] + 1.0;
  }
}

void determinant(const Columns<double>& A, int n, const int* ipvt, double* det) {
  det[0] = 1.0;
  det[1] = 0.0;
  for (int i = 0; i < n; ++i) {
    if (ipvt[i] != i + 1) det[0] = -det[0];
    det[0] = A(i, i) * det[0];
    if (det[0] == 0.0) return;
    normalise(det);
  }
}

// A = U^-1, column by column: the k-th is final once the earlier ones have been combined into it
void invertU(const Columns<double>& A, int n) {
  for (int k = 0; k < n; ++k) {
    A(k, k) = 1.0 / A(k, k);
    blas1::dscal(k, -A(k, k), A.at(0, k));
    for (int j = k + 1; j < n; ++j) {
      const double t = A(k, j);
      A(k, j) = 0.0;
      blas1::daxpy(k + 1, t, A.at(0, k), A.at(0, j));
    }
  }
}

// A = A L^-1, undoing the eliminations from the last to the first; row interchanges of the factor
// are column interchanges of the inverse
void timesInverseL(const Columns<double>& A, int n, const int* ipvt, double* work) {
  for (int k = n - 2; k >= 0; --k) {
    for (int i = k + 1; i < n; ++i) {
      work[i] = A(i, k);
      A(i, k) = 0.0;
    }
    addColumns(n, n - k - 1, work + k + 1, A.at(0, k + 1), A.ld(), A.at(0, k));
    const int l = ipvt[k] - 1;
    if (l != k) blas1::dswap(n, A.at(0, k), A.at(0, l));
  }
}

}  // namespace

void dgedi(double* a, int lda, int n, const int* ipvt, double* det, double* work, GediJob job) {
  const Columns A(a, lda);
  if (static_cast<int>(job) / 10 != 0) determinant(A, n, ipvt, det);
  if (static_cast<int>(job) % 10 == 0) return;
  invertU(A, n);
  timesInverseL(A, n, ipvt, work);
}

}  // namespace knotwork::linpack
