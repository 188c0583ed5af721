// SPDX-License-Identifier: MIT
// DCHDC: Cholesky factorisation with diagonal pivoting, in the upper triangle.
#include <cmath>
#include <utility>

#include "decomp/linpack/columns.h"
#include "decomp/linpack/linpack.h"

namespace knotwork::linpack {
namespace {

/// A factorisation on its way.
struct Cholesky {
  Columns<double> A;
  int p;
  double* work;
  int* jpvt;
  int freeBegin = 0, freeEnd = 0;

  void interchange(int i, int q);
  void sortPlaces();
  int placeOfLargest(int k) const;
  void eliminate(int k);
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
    if (!(A(q, q) <= A(place, place))) place = q;
  return place;
}

// row k = A(k, k..) / sqrt(A(k, k)), then A(i, j) -= R(k, i) R(k, j) for i <= j
void Cholesky::eliminate(int k) {
  work[k] = std::sqrt(A(k, k));
  A(k, k) = work[k];
  for (int j = k + 1; j < p; ++j) {
    A(k, j) = A(k, j) / work[k];
    work[j] = A(k, j);
    blas1::daxpy(j - k, -A(k, j), work + k + 1, A.at(k + 1, j));
  }
}

}  // namespace

int dchdc(double* a, int lda, int p, double* work, int* jpvt, Pivoting job) {
  Cholesky cholesky{Columns(a, lda), p, work, jpvt};
  if (job == Pivoting::kOn) cholesky.sortPlaces();
  for (int k = 0; k < p; ++k) {
    const int place = cholesky.placeOfLargest(k);
    if (!(cholesky.A(place, place) > 0.0)) return k;
    if (place != k) {
      cholesky.interchange(k, place);
      std::swap(jpvt[place], jpvt[k]);
    }
    cholesky.eliminate(k);
  }
  return p;
}

}  // namespace knotwork::linpack
