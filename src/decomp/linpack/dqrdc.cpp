// SPDX-License-Identifier: MIT
// DQRDC: Householder QR with column pivoting.
// Source also: Businger, Golub (1965), Linear Least Squares Solutions by Householder
// Transformations.
#include <algorithm>
#include <cmath>
#include <utility>

#include "decomp/linpack/columns.h"
#include "decomp/linpack/linpack.h"
#include "kernels/square_root.h"

namespace knotwork::linpack {

using detail::squareRoot;

namespace {

// A factorisation on its way.
struct Qr {
  Columns<double> X;
  int n, p;
  double* qraux;  // for columns not yet reached: their current norms, while they are free
  int* jpvt;
  double* work;  // norms as last computed in full
  int freeBegin = 0, freeEnd = 0;

  void sortColumns();
  void startNorms();
  void pivot(int l);
  void reflectColumn(int l);
  void lowerNorm(int l, int j);
};

// Initial columns to the front, in their order; final ones to the back.
void Qr::sortColumns() {
  for (int j = 0; j < p; ++j) {
    const bool initial = jpvt[j] > 0;
    jpvt[j] = jpvt[j] < 0 ? -(j + 1) : j + 1;
    if (!initial) continue;
    if (j != freeBegin) blas1::dswap(n, X.at(0, freeBegin), X.at(0, j));
    jpvt[j] = jpvt[freeBegin];
    jpvt[freeBegin++] = j + 1;
  }
  freeEnd = p;
  for (int j = p - 1; j >= 0; --j) {
    if (jpvt[j] >= 0) continue;
    jpvt[j] = -jpvt[j];
    const int last = --freeEnd;
    if (j == last) continue;
    blas1::dswap(n, X.at(0, last), X.at(0, j));
    std::swap(jpvt[last], jpvt[j]);
  }
}

void Qr::startNorms() {
  for (int j = freeBegin; j < freeEnd; ++j) work[j] = qraux[j] = blas1::dnrm2(n, X.at(0, j));
}

// Brings the free column of largest norm to place l. A NaN counts as larger than what was before.
void Qr::pivot(int l) {
  double largest = 0.0;
  int place = l;
  for (int j = l; j < freeEnd; ++j) {
    if (qraux[j] <= largest) continue;
    largest = qraux[j];
    place = j;
  }
  if (place == l) return;
  blas1::dswap(n, X.at(0, l), X.at(0, place));
  qraux[place] = qraux[l];
  work[place] = work[l];
  std::swap(jpvt[place], jpvt[l]);
}

// qraux(j) tracks ||X(l.., j)||: take out row l; recompute once that has lost its digits.
void Qr::lowerNorm(int l, int j) {
  if (qraux[j] == 0.0) return;
  const double removed = std::abs(X(l, j)) / qraux[j];
  const double kept = std::max(1.0 - removed * removed, 0.0);
  const double shrunk = qraux[j] / work[j];
  const double test = 1.0 + 0.05 * kept * (shrunk * shrunk);  // grouping as published
  if (test != 1.0) {
    qraux[j] = qraux[j] * squareRoot(kept);
  } else {
    work[j] = qraux[j] = blas1::dnrm2(n - l - 1, X.at(l + 1, j));
  }
}

void Qr::reflectColumn(int l) {
  qraux[l] = 0.0;
  if (l == n - 1) return;  // no reflection for the last row
  double norm = blas1::dnrm2(n - l, X.at(l, l));
  if (norm == 0.0) return;

  // v = x / norm + e_1, by the rounded reciprocal; the sign avoids cancellation
  if (X(l, l) != 0.0) norm = std::copysign(norm, X(l, l));
  blas1::dscal(n - l, 1.0 / norm, X.at(l, l));
  X(l, l) = 1.0 + X(l, l);

  reflectColumns(n - l, X.at(l, l), p - l - 1, X.at(l, l + 1), X.ld());
  for (int j = std::max(l + 1, freeBegin); j < freeEnd; ++j) lowerNorm(l, j);
  qraux[l] = X(l, l);
  X(l, l) = -norm;
}

}  // namespace

void dqrdc(double* x, int ldx, int n, int p, double* qraux, int* jpvt, double* work, Pivoting job) {
  Qr qr{Columns(x, ldx), n, p, qraux, jpvt, work};
  if (job == Pivoting::kOn) qr.sortColumns();
  qr.startNorms();
  for (int l = 0; l < std::min(n, p); ++l) {
    if (qr.freeBegin <= l && l < qr.freeEnd - 1) qr.pivot(l);
    qr.reflectColumn(l);
  }
}

}  // namespace knotwork::linpack
