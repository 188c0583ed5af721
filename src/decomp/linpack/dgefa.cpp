// SPDX-License-Identifier: MIT
// DGEFA: Gaussian elimination with partial pivoting, by columns.
//
// A few steps at a time are made on their own columns first; the columns to the right then take
// them all in one pass. Every element still meets the steps one by one in their order.
#include <algorithm>
#include <utility>

#include "decomp/linpack/columns.h"
#include "decomp/linpack/linpack.h"

namespace knotwork::linpack {
namespace {

/// Steps first .. end - 1 of an elimination.
struct Panel {
  Columns<double> A;
  int n, first, end;
  int* ipvt;

  int factor();
  void alignMultipliers();
  void restoreMultipliers();
  void update(int j);

 private:
  int pivotRow(int k) const { return ipvt[k] - 1; }
};

// The steps on the panel's own columns. Returns the last one with a zero pivot, from 1, or 0.
int Panel::factor() {
  int info = 0;
  for (int k = first; k < end; ++k) {
    const int l = k - 1 + blas1::idamax(n - k, A.at(k, k));
    ipvt[k] = l + 1;
    if (A(l, k) == 0.0) {  // nothing to eliminate
      info = k + 1;
      continue;
    }
    std::swap(A(l, k), A(k, k));

    // multipliers m = -A(k+1.., k) / A(k, k), by the rounded reciprocal
    blas1::dscal(n - k - 1, -1.0 / A(k, k), A.at(k + 1, k));

    // A(k+1.., j) += m A(k, j)
    for (int j = k + 1; j < end; ++j) {
      std::swap(A(l, j), A(k, j));
      blas1::daxpy(n - k - 1, A(k, j), A.at(k + 1, k), A.at(k + 1, j));
    }
  }
  return info;
}

// Multipliers stay where they were made. For the time of the update they follow the interchanges of
// the later steps, so that each stands in the row of the elements that it is meant for.
void Panel::alignMultipliers() {
  for (int k = first + 1; k < end; ++k)
    for (int j = first; j < k; ++j) std::swap(A(k, j), A(pivotRow(k), j));
}

void Panel::restoreMultipliers() {
  for (int k = end - 1; k > first; --k)
    for (int j = first; j < k; ++j) std::swap(A(k, j), A(pivotRow(k), j));
}

// All steps on column j to the right of the panel.
void Panel::update(int j) {
  double t[kGroup];
  for (int k = first; k < end; ++k) std::swap(A(k, j), A(pivotRow(k), j));
  for (int k = first; k < end; ++k) {
    const bool skipped = A(k, k) == 0.0;
    t[k - first] = skipped ? 0.0 : A(k, j);
    blas1::daxpy(end - k - 1, t[k - first], A.at(k + 1, k), A.at(k + 1, j));
  }
  addColumns(n - end, end - first, t, A.at(end, first), A.ld(), A.at(end, j));
}

}  // namespace

int dgefa(double* a, int lda, int n, int* ipvt) {
  const Columns A(a, lda);
  int info = 0;
  for (int first = 0; first < n - 1; first += kGroup) {
    Panel panel{A, n, first, std::min(first + kGroup, n - 1), ipvt};
    info = std::max(info, panel.factor());
    panel.alignMultipliers();
    for (int j = panel.end; j < n; ++j) panel.update(j);
    panel.restoreMultipliers();
  }
  if (n < 1) return 0;
  ipvt[n - 1] = n;
  return A(n - 1, n - 1) == 0.0 ? n : info;
}

}  // namespace knotwork::linpack
