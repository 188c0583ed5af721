// SPDX-License-Identifier: MIT
// DGECO: elimination with an estimate of the condition.
// Source of the estimate: Cline, Moler, Stewart, Wilkinson (1979), An Estimate for the Condition
// Number of a Matrix.
#include <algorithm>
#include <cmath>

#include "decomp/linpack/columns.h"
#include "decomp/linpack/linpack.h"

namespace knotwork::linpack {
namespace {

// The factors, the vector that is driven to grow, and the length of its image.
struct Estimate {
  Columns<double> A;
  int n;
  const int* ipvt;
  double* z;
  double ynorm = 1.0;

  void solveTransposedU();
  void solveTransposedL();
  void solveL();
  void solveU();

  // z = factor z, all of it.
  void scale(double factor) { blas1::dscal(n, factor, z); }
  // The same, followed by ynorm.
  void scaleBoth(double factor) {
    scale(factor);
    ynorm = factor * ynorm;
  }
  double toUnitSum() const { return 1.0 / blas1::dasum(n, z); }

 private:
  void eliminateRow(int k, double wk, double wkm);
};

// U' w = e, with the signs of e chosen for growth
void Estimate::solveTransposedU() {
  double ek = 1.0;
  std::fill(z, z + n, 0.0);
  for (int k = 0; k < n; ++k) {
    const double pivot = A(k, k);
    if (z[k] != 0.0) ek = std::copysign(ek, -z[k]);
    if (!(std::abs(ek - z[k]) <= std::abs(pivot))) {
      const double shrink = std::abs(pivot) / std::abs(ek - z[k]);
      scale(shrink);
      ek = shrink * ek;
    }
    eliminateRow(k, ek - z[k], -ek - z[k]);
  }
}

// Tries both right-hand sides for row k and keeps the one that makes the rest larger. The sums
// start before the division by the pivot.
void Estimate::eliminateRow(int k, double wk, double wkm) {
  double sum = std::abs(wk);
  double sumOfOther = std::abs(wkm);
  const double pivot = A(k, k);
  wk = pivot != 0.0 ? wk / pivot : 1.0;
  wkm = pivot != 0.0 ? wkm / pivot : 1.0;
  for (int j = k + 1; j < n; ++j) {
    sumOfOther = sumOfOther + std::abs(z[j] + wkm * A(k, j));
    z[j] = z[j] + wk * A(k, j);
    sum = sum + std::abs(z[j]);
  }
  if (k + 1 < n && sum < sumOfOther) {  // go over by a correction
    const double t = wkm - wk;
    wk = wkm;
    for (int j = k + 1; j < n; ++j) z[j] = z[j] + t * A(k, j);
  }
  z[k] = wk;
}

// L' y = w
void Estimate::solveTransposedL() {
  for (int k = n - 1; k >= 0; --k) {
    if (k < n - 1) z[k] = z[k] + blas1::ddot(n - k - 1, A.at(k + 1, k), z + k + 1);
    if (std::abs(z[k]) > 1.0) scale(1.0 / std::abs(z[k]));
    std::swap(z[k], z[ipvt[k] - 1]);
  }
}

// L v = y
void Estimate::solveL() {
  for (int k = 0; k < n; ++k) {
    std::swap(z[k], z[ipvt[k] - 1]);
    if (k < n - 1) blas1::daxpy(n - k - 1, z[k], A.at(k + 1, k), z + k + 1);
    if (std::abs(z[k]) > 1.0) scaleBoth(1.0 / std::abs(z[k]));
  }
}

// U z = v
void Estimate::solveU() {
  for (int k = n - 1; k >= 0; --k) {
    const double pivot = A(k, k);
    if (!(std::abs(z[k]) <= std::abs(pivot))) scaleBoth(std::abs(pivot) / std::abs(z[k]));
    z[k] = pivot != 0.0 ? z[k] / pivot : 1.0;
    blas1::daxpy(k, -z[k], A.at(0, k), z);
  }
}

double largestColumnSum(const Columns<double>& A, int n) {
  double largest = 0.0;
  for (int j = 0; j < n; ++j) largest = std::max(largest, blas1::dasum(n, A.at(0, j)));
  return largest;
}

}  // namespace

double dgeco(double* a, int lda, int n, int* ipvt, double* z) {
  Estimate estimate{Columns(a, lda), n, ipvt, z};
  const double anorm = largestColumnSum(estimate.A, n);
  dgefa(a, lda, n, ipvt);

  estimate.solveTransposedU();
  estimate.scale(estimate.toUnitSum());
  estimate.solveTransposedL();
  estimate.scale(estimate.toUnitSum());
  estimate.solveL();
  estimate.scaleBoth(estimate.toUnitSum());
  estimate.solveU();
  estimate.scaleBoth(estimate.toUnitSum());
  return anorm != 0.0 ? estimate.ynorm / anorm : 0.0;
}

}  // namespace knotwork::linpack
