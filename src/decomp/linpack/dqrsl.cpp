// SPDX-License-Identifier: MIT
// DQRSL: application of the reflections of DQRDC.
#include <algorithm>

#include "decomp/linpack/columns.h"
#include "decomp/linpack/linpack.h"

namespace knotwork::linpack {
namespace {

using Factor = Columns<const double>;

/// y = y - v (v'y) / v_1 for the j-th reflection. The first element of v stands in qraux: the
/// product starts with it, then goes down the column.
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

// R b = b, leaving off at the first zero from below
int backSubstitute(const Factor& X, int k, double* b) {
  for (int j = k - 1; j >= 0; --j) {
    if (X(j, j) == 0.0) return j + 1;
    b[j] = b[j] / X(j, j);
    if (j > 0) blas1::daxpy(j, -b[j], X.at(0, j), b);
  }
  return 0;
}

// A single row has no reflection.
int singleRow(const Factor& X, const double* y, double* qy, double* qty, double* b, double* rsd,
              double* xb, QrslJob job) {
  switch (job) {
    case QrslJob::kQy:
      qy[0] = y[0];
      break;
    case QrslJob::kQty:
      qty[0] = y[0];
      break;
    case QrslJob::kFit:
      xb[0] = y[0];
      break;
    case QrslJob::kResidual:
      rsd[0] = 0.0;
      break;
    case QrslJob::kSolve:
      if (X(0, 0) == 0.0) return 1;
      b[0] = y[0] / X(0, 0);
  }
  return 0;
}

}  // namespace

int dqrsl(const double* x, int ldx, int n, int k, const double* qraux, const double* y, double* qy,
          double* qty, double* b, double* rsd, double* xb, QrslJob job) {
  const Factor X(x, ldx);
  const int count = std::min(k, n - 1);
  if (count < 1) return singleRow(X, y, qy, qty, b, rsd, xb, job);

  if (job == QrslJob::kQy) {
    blas1::dcopy(n, y, qy);
    applyBackwards(X, n, count, qraux, qy);
    return 0;
  }

  blas1::dcopy(n, y, qty);
  applyForwards(X, n, count, qraux, qty);
  if (job == QrslJob::kSolve) {
    blas1::dcopy(k, qty, b);
    return backSubstitute(X, k, b);
  }
  // Fit and residual are the two parts of Q'y, turned back: the residual is no difference.
  if (job == QrslJob::kFit) {
    if (xb != qty) blas1::dcopy(k, qty, xb);
    std::fill(xb + k, xb + n, 0.0);
    applyBackwards(X, n, count, qraux, xb);
  }
  if (job == QrslJob::kResidual) {
    if (rsd != qty) blas1::dcopy(n - k, qty + k, rsd + k);
    std::fill(rsd, rsd + k, 0.0);
    applyBackwards(X, n, count, qraux, rsd);
  }
  return 0;
}

}  // namespace knotwork::linpack
