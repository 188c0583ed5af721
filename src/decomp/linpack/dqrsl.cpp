// SPDX-License-Identifier: MIT
// DQRSL: application of the reflections of DQRDC.
#include <algorithm>

#include "decomp/linpack/columns.h"
#include "decomp/linpack/linpack.h"

namespace knotwork::linpack {
namespace {

using Factor = Columns<const double>;

// y = y - v (v'y) / v_1 for the j-th reflection. The first element of v stands in qraux: the
// product starts with it, then goes down the column.
void applyReflection(const Factor& X, int n, const double* qraux, int j, double* y) {
  const double head = qraux[j];
  if (head == 0.0) return;
  double product = head * y[j];
  for (int i = j + 1; i < n; ++i) product += X(i, j) * y[i];
  const double t = -product / head;
  if (t == 0.0) return;
  y[j] += t * head;
  blas1::daxpy(n - j - 1, t, X.at(j + 1, j), y + j + 1);
}

void applyBackwards(const Factor& X, int n, int count, const double* qraux, double* y) {
  for (int j = count - 1; j >= 0; --j) applyReflection(X, n, qraux, j, y);
}

void applyForwards(const Factor& X, int n, int count, const double* qraux, double* y) {
  for (int j = 0; j < count; ++j) applyReflection(X, n, qraux, j, y);
}

// R b = y in the place of y, leaving off at the first zero from below
int backSubstitute(const Factor& X, int k, double* y) {
  for (int j = k - 1; j >= 0; --j) {
    if (X(j, j) == 0.0) return j + 1;
    y[j] = y[j] / X(j, j);
    blas1::daxpy(j, -y[j], X.at(0, j), y);
  }
  return 0;
}

// A single row has no reflection: y is Q'y, and all of it is fit. The published routine does not
// touch the coefficient of a zero; here that is 0, not what stood in its place.
int singleRow(const Factor& X, double* y, QrslJob job) {
  if (job == QrslJob::kResidual) y[0] = 0.0;
  if (job != QrslJob::kSolve) return 0;
  const bool zero = X(0, 0) == 0.0;
  y[0] = zero ? 0.0 : y[0] / X(0, 0);
  return zero ? 1 : 0;
}

}  // namespace

int dqrsl(const double* x, int ldx, int n, int k, const double* qraux, double* y, QrslJob job) {
  const Factor X(x, ldx);
  const int count = std::min(k, n - 1);
  if (count < 1) return singleRow(X, y, job);
  if (job == QrslJob::kQy) {
    applyBackwards(X, n, count, qraux, y);
    return 0;
  }
  applyForwards(X, n, count, qraux, y);
  if (job == QrslJob::kSolve) return backSubstitute(X, k, y);
  if (job == QrslJob::kQty) return 0;
  // Fit and residual are the two parts of Q'y, turned back: the residual is no difference.
  if (job == QrslJob::kFit) {
    std::fill(y + k, y + n, 0.0);
  } else {
    std::fill(y, y + k, 0.0);
  }
  applyBackwards(X, n, count, qraux, y);
  return 0;
}

}  // namespace knotwork::linpack
