// SPDX-License-Identifier: MIT
// DGEFA: Gaussian elimination with partial pivoting, by columns.
//
// The steps of a panel of columns are made on its own columns first; the columns to the right then
// take them all in one pass, as a matrix product. Within a panel, groups of fewer steps do the
// same. Every element still meets the steps one by one in their order. The published routine leaves
// out steps whose factor is 0, and there alone the product would differ: it would add 0 to a -0, or
// 0 times what is not finite. So columns that meet such a factor take their steps by themselves.
#include <algorithm>
#include <utility>

#include "decomp/linpack/columns.h"
#include "decomp/linpack/linpack.h"
#include "matrix/blocked_product.h"

namespace knotwork::linpack {
namespace {

using Grid = detail::Grid<double>;
using ConstGrid = detail::Grid<const double>;

constexpr int kPanel = 32;
// Below this order what is right of a panel stays in the second-level cache: a product would only
// cost the packing of its operands, and panels are single groups.
constexpr int kLeastOrder = 256;

// Steps first .. end - 1 of an elimination.
struct Panel {
  Columns<double> A;
  int n, first, end;
  int* ipvt;

  int factor();
  int factorByGroups();
  void alignMultipliers();
  void restoreMultipliers();
  void updateByColumn(int last);
  void updateByProducts();

 private:
  int pivotRow(int k) const { return ipvt[k] - 1; }
  Panel group(int start) const { return {A, n, start, std::min(start + kGroup, end), ipvt}; }
  void interchange(int j);
  void eliminateHead(int j, int rowEnd, double* t);
  bool eliminateHeadByGroups(int j, double* t);
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

// The same, a group of columns after the other.
int Panel::factorByGroups() {
  if (end - first <= kGroup) return factor();
  int info = 0;
  for (int start = first; start < end; start += kGroup) {
    Panel g = group(start);
    info = std::max(info, g.factor());
    g.alignMultipliers();
    g.updateByColumn(end);
    g.restoreMultipliers();
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

void Panel::interchange(int j) {
  for (int k = first; k < end; ++k) std::swap(A(k, j), A(pivotRow(k), j));
}

// The steps on rows first .. rowEnd - 1 of column j, to the right of the panel; t receives their
// factors, 0 where the step was skipped.
void Panel::eliminateHead(int j, int rowEnd, double* t) {
  for (int k = first; k < end; ++k) {
    t[k - first] = A(k, k) == 0.0 ? 0.0 : A(k, j);
    blas1::daxpy(end - k - 1, t[k - first], A.at(k + 1, k), A.at(k + 1, j));
  }
  addColumns(rowEnd - end, end - first, t, A.at(end, first), A.ld(), A.at(end, j));
}

// The steps on the panel's rows of column j. Returns whether none of them was left out.
bool Panel::eliminateHeadByGroups(int j, double* t) {
  for (int start = first; start < end; start += kGroup)
    group(start).eliminateHead(j, end, t + (start - first));
  return std::find(t, t + (end - first), 0.0) == t + (end - first);
}

// All steps on the columns to the right of the panel, up to column `last`.
void Panel::updateByColumn(int last) {
  double t[kGroup];
  for (int j = end; j < last; ++j) {
    interchange(j);
    eliminateHead(j, n, t);
  }
}

// The same up to the last column: A(end.., j) += M(end.., panel) T(panel, j), with the aligned
// multipliers M and the panel's rows T; neighbouring columns in one product.
void Panel::updateByProducts() {
  const int rows = n - end, depth = end - first;
  int firstOfRun = end;
  const auto makeProduct = [&](int endOfRun) {
    if (endOfRun <= firstOfRun) return;
    detail::blockedProduct(
        static_cast<std::size_t>(rows), static_cast<std::size_t>(endOfRun - firstOfRun),
        static_cast<std::size_t>(depth), ConstGrid{A.at(end, first), 1, A.ld()},
        ConstGrid{A.at(first, firstOfRun), 1, A.ld()}, Grid{A.at(end, firstOfRun), 1, A.ld()});
  };
  for (int j = end; j < n; ++j) {
    double t[kPanel];
    interchange(j);
    if (eliminateHeadByGroups(j, t)) continue;
    makeProduct(j);
    firstOfRun = j + 1;
    addColumns(rows, depth, t, A.at(end, first), A.ld(), A.at(end, j));
  }
  makeProduct(n);
}

}  // namespace

int dgefa(double* a, int lda, int n, int* ipvt) {
  const Columns A(a, lda);
  const int width = n < kLeastOrder ? kGroup : kPanel;
  int info = 0;
  for (int first = 0; first < n - 1; first += width) {
    Panel panel{A, n, first, std::min(first + width, n - 1), ipvt};
    info = std::max(info, panel.factorByGroups());
    panel.alignMultipliers();
    if (width == kGroup) {
      panel.updateByColumn(n);
    } else {
      panel.updateByProducts();
    }
    panel.restoreMultipliers();
  }
  if (n < 1) return 0;
  ipvt[n - 1] = n;
  return A(n - 1, n - 1) == 0.0 ? n : info;
}

}  // namespace knotwork::linpack
