// SPDX-License-Identifier: MIT
// DCHDC: Cholesky factorisation with diagonal pivoting, in the upper triangle.
//
// The rows of a panel are made first, each with what the panel's earlier ones take from it; what is
// below, but for the diagonal, which the pivoting looks at, then takes them all in one pass. Every
// element still meets the rows one by one in their order.
//
// The published routine leaves out what a zero takes from a column. To take it makes a difference
// to a -0, and where a number is not finite. A -0 is never made below, so it can but stand in the
// matrix: then, and for a row that is not finite, rows are taken at once.
#include <algorithm>
#include <cmath>
#include <utility>

#include "decomp/linpack/columns.h"
#include "decomp/linpack/linpack.h"
#include "kernels/kernels.h"
#include "kernels/square_root.h"

namespace knotwork::linpack {

using detail::squareRoot;

namespace {

constexpr int kPanel = kChdcWork - 2;  // rows
// From this order on the rows of a panel leave the first-level cache: panels are single groups.
constexpr int kLargeOrder = 256;

// A factorisation on its way.
struct Cholesky {
  Columns<double> A;
  int p;
  double* diagonal;  // of what is not factored yet, up to date
  double* row;       // the one that is made
  double* negated;   // the rows of the panel with their signs changed, side by side
  int* jpvt;
  int freeBegin = 0, freeEnd = 0;

  void interchange(int i, int q);
  void sortPlaces();
  bool hasNegativeZero() const;
  int placeOfLargest(int k) const;
  void bringForward(int place, int k, int first);
  bool makeRow(int k, int first);
  int panelRows() const;
  void takeRows(int first, int end);
  int run();

 private:
  double* negatedRow(int r) const { return negated + r * std::ptrdiff_t{p}; }
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
  for (int q = k + 1; q < freeEnd; ++q) {
    if (!(diagonal[q] <= diagonal[place])) place = q;
  }
  return place;
}

bool Cholesky::hasNegativeZero() const {
  for (int j = 0; j < p; ++j) {
    for (int i = 0; i <= j; ++i) {
      if (A(i, j) == 0.0 && std::signbit(A(i, j))) return true;
    }
  }
  return false;
}

// Brings the pivot at `place` to place k; first .. k - 1 are the panel's rows.
void Cholesky::bringForward(int place, int k, int first) {
  interchange(k, place);
  for (int r = 0; r < k - first; ++r) std::swap(negatedRow(r)[k], negatedRow(r)[place]);
  std::swap(diagonal[k], diagonal[place]);
  std::swap(jpvt[place], jpvt[k]);
}

// R(k, j) = (A(k, j) - sum of R(r, k) R(r, j)) / R(k, k), where rows before `first` have been taken
// already; then the diagonal takes row k. Returns whether the row is finite.
bool Cholesky::makeRow(int k, int first) {
  const double pivot = squareRoot(diagonal[k]);
  diagonal[k] = pivot;
  for (int j = k + 1; j < p; ++j) row[j] = A(k, j);
  detail::columnKernels<double>().addColumns(static_cast<std::size_t>(p - k - 1),
                                             static_cast<std::size_t>(k - first), negated + k + 1,
                                             p, A.at(first, k), row + k + 1);
  double* const taken = negatedRow(k - first);
  bool finite = true;
  for (int j = k + 1; j < p; ++j) {
    const double value = row[j] / pivot;
    finite = finite && std::isfinite(value);
    diagonal[j] += -value * value;
    taken[j] = -value;
    A(k, j) = value;
  }
  return finite;
}

// A(i, j) -= R(r, i) R(r, j) for r = first .. end - 1 and all i < j from `end` on
void Cholesky::takeRows(int first, int end) {
  for (int j = end + 1; j < p; ++j)
    addColumns(j - end, end - first, A.at(first, j), negated + end, p, A.at(end, j));
}

int Cholesky::panelRows() const {
  if (hasNegativeZero()) return 1;
  return p < kLargeOrder ? kPanel : kGroup;
}

int Cholesky::run() {
  const int panel = panelRows();
  int first = 0;
  for (int k = 0; k < p; ++k) {
    const int place = placeOfLargest(k);
    if (!(diagonal[place] > 0.0)) {
      takeRows(first, k);
      return k;
    }
    if (place != k) bringForward(place, k, first);
    if (makeRow(k, first) && k + 1 < first + panel) continue;
    takeRows(first, k + 1);
    first = k + 1;
  }
  return p;
}

}  // namespace

int dchdc(double* a, int lda, int p, double* work, int* jpvt, Pivoting job) {
  const std::ptrdiff_t length = p;
  Cholesky cholesky{Columns(a, lda), p, work, work + length, work + 2 * length, jpvt};
  if (job == Pivoting::kOn) cholesky.sortPlaces();
  for (int j = 0; j < p; ++j) work[j] = cholesky.A(j, j);
  const int info = cholesky.run();
  for (int j = 0; j < p; ++j) cholesky.A(j, j) = work[j];
  return info;
}

}  // namespace knotwork::linpack
