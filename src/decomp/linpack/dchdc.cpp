// SPDX-License-Identifier: MIT
// DCHDC: Cholesky factorisation with diagonal pivoting, in the upper triangle.
//
// A few rows are made first; the rows below, but for their diagonal, which the pivoting looks at,
// then take them all in one pass. Every element still meets the rows one by one in their order.
#include <algorithm>
#include <cmath>
#include <utility>

#include "decomp/linpack/columns.h"
#include "decomp/linpack/linpack.h"

namespace knotwork::linpack {
namespace {

static_assert(kChdcWork == kGroup + 1);

/// A factorisation on its way.
struct Cholesky {
  Columns<double> A;
  int p;
  double* diagonal;  // of what is not factored yet, up to date
  double* rows;      // kGroup rows of R side by side
  int* jpvt;
  int freeBegin = 0, freeEnd = 0;

  void interchange(int i, int q);
  void sortPlaces();
  int placeOfLargest(int k) const;
  bool makeRow(int k, int first);
  void takeRows(int first, int end);
  int run();
};

// Places i < q of the symmetric matrix change, rows and columns together; A(i, q) maps to itself.
void Cholesky::interchange(int i, int q) {
  blas1::dswap(i, A.at(0, i), A.at(0, q));
  std::swap(A(i, i), A(q, q));
  for (int j = i + 1; j < q; ++j) std::swap(A(i, j), A(j, q));
  for (int j = q + 1; j < p; ++j) std::swap(A(i, j), A(q, j));
}

// Initial columns to the front, in their order; final ones to the back.
void Cholesky::sortPlaces() {
  for (int k = 0; k < p; ++k) {
    const bool initial = jpvt[k] > 0;
    jpvt[k] = jpvt[k] < 0 ? -(k + 1) : k + 1;
    if (!initial) continue;
    if (k != freeBegin) interchange(freeBegin, k);
    jpvt[k] = jpvt[freeBegin];
    jpvt[freeBegin++] = k + 1;
  }
  freeEnd = p;
  for (int k = p - 1; k >= freeBegin; --k) {
    if (jpvt[k] >= 0) continue;
    jpvt[k] = -jpvt[k];
    const int last = --freeEnd;
    if (k == last) continue;
    interchange(k, last);
    std::swap(jpvt[k], jpvt[last]);
  }
}

// The largest value, not magnitude, of the free diagonal; the first of equals.
int Cholesky::placeOfLargest(int k) const {
  int place = k;
  if (k < freeBegin) return place;
  for (int q = k + 1; q < freeEnd; ++q)
    if (!(diagonal[q] <= diagonal[place])) place = q;
  return place;
}

// R(k, j) = (A(k, j) - sum of R(r, k) R(r, j)) / R(k, k), where rows before `first` have been taken
// already; then the diagonal takes row k. Returns whether the row is finite.
bool Cholesky::makeRow(int k, int first) {
  const double* const above = A.at(0, k);
  const double pivot = std::sqrt(diagonal[k]);
  diagonal[k] = pivot;
  bool finite = true;
  for (int j = k + 1; j < p; ++j) {
    double* const column = A.at(0, j);
    double value = column[k];
    for (int r = first; r < k; ++r)
      if (column[r] != 0.0) value += -column[r] * above[r];
    value = value / pivot;
    column[k] = value;
    if (value != 0.0) diagonal[j] += -value * value;
    finite = finite && std::isfinite(value);
  }
  return finite;
}

// A(i, j) -= R(r, i) R(r, j) for r = first .. end - 1 and all i < j from `end` on
void Cholesky::takeRows(int first, int end) {
  const int count = end - first;
  for (int j = end; j < p; ++j)
    for (int r = 0; r < count; ++r) rows[r * std::ptrdiff_t{p} + j] = A(first + r, j);
  for (int j = end + 1; j < p; ++j) {
    double t[kGroup];
    for (int r = 0; r < count; ++r) t[r] = -A(first + r, j);
    addColumns(j - end, count, t, rows + end, p, A.at(end, j));
  }
}

// Rows with a number that is not finite are taken at once, as infinity times zero depends on which
// of two places comes first.
int Cholesky::run() {
  int first = 0;
  for (int k = 0; k < p; ++k) {
    const int place = placeOfLargest(k);
    if (!(diagonal[place] > 0.0)) {
      takeRows(first, k);
      return k;
    }
    if (place != k) {
      interchange(k, place);
      std::swap(diagonal[k], diagonal[place]);
      std::swap(jpvt[place], jpvt[k]);
    }
    if (makeRow(k, first) && k + 1 < first + kGroup) continue;
    takeRows(first, k + 1);
    first = k + 1;
  }
  return p;
}

}  // namespace

int dchdc(double* a, int lda, int p, double* work, int* jpvt, Pivoting job) {
  Cholesky cholesky{Columns(a, lda), p, work, work + p, jpvt};
  if (job == Pivoting::kOn) cholesky.sortPlaces();
  for (int j = 0; j < p; ++j) work[j] = cholesky.A(j, j);
  const int info = cholesky.run();
  for (int j = 0; j < p; ++j) cholesky.A(j, j) = work[j];
  return info;
}

}  // namespace knotwork::linpack
