// SPDX-License-Identifier: MIT
// DCHEX: a Cholesky factor with one of its columns moved.
#include <algorithm>

#include "decomp/linpack/columns.h"
#include "decomp/linpack/linpack.h"

namespace knotwork::linpack {
namespace {

// Rows i, i + 1 of one column turned by (c, s); `x` points at row i.
void rotatePair(double* x, double c, double s) {
  const double turned = c * x[0] + s * x[1];
  x[1] = c * x[1] - s * x[0];
  x[0] = turned;
}

// A factor with the columns first < last that bound the move.
struct Shift {
  Columns<double> R;
  int p, first, last;
  Columns<double> Z;
  int nz;
  double *c, *s;

  void right();
  void left();
};

// Column last goes to place first. Rotation ii turns rows last - ii - 1 and last - ii: from below.
void Shift::right() {
  for (int i = 0; i <= last; ++i) s[i] = R(last - i, last);  // the moving column, upside down
  for (int j = last - 1; j >= first; --j) {
    blas1::dcopy(j + 1, R.at(0, j), R.at(0, j + 1));
    R(j + 1, j + 1) = 0.0;
  }
  for (int i = 0; i < first; ++i) R(i, first) = s[last - i];

  // gather its tail into one element
  double length = s[0];
  for (int i = 0; i < last - first; ++i) {
    double sine;
    blas1::drotg(&s[i + 1], &length, &c[i], &sine);
    length = s[i + 1];
    s[i] = sine;
  }
  R(first, first) = length;

  for (int j = first + 1; j < p; ++j) {
    for (int ii = std::max(0, last - j); ii < last - first; ++ii)
      rotatePair(R.at(last - ii - 1, j), c[ii], s[ii]);
  }
  for (int j = 0; j < nz; ++j)
    for (int ii = 0; ii < last - first; ++ii) rotatePair(Z.at(last - ii - 1, j), c[ii], s[ii]);
}

// Column first goes to place last. Rotation q turns rows first + q and first + q + 1: from above.
void Shift::left() {
  for (int i = 0; i <= first; ++i) s[last - first + i] = R(i, first);
  for (int j = first; j < last; ++j) {
    blas1::dcopy(j + 1, R.at(0, j + 1), R.at(0, j));
    s[j - first] = R(j + 1, j + 1);  // comes to stand below the diagonal
  }
  for (int i = 0; i <= first; ++i) R(i, last) = s[last - first + i];
  for (int i = first + 1; i <= last; ++i) R(i, last) = 0.0;

  for (int j = first; j < p; ++j) {
    const int done = std::min(j, last) - first;
    for (int q = 0; q < done; ++q) rotatePair(R.at(first + q, j), c[q], s[q]);
    if (j >= last) continue;
    double sine;
    blas1::drotg(R.at(j, j), &s[j - first], &c[j - first], &sine);
    s[j - first] = sine;
  }
  for (int j = 0; j < nz; ++j)
    for (int q = 0; q < last - first; ++q) rotatePair(Z.at(first + q, j), c[q], s[q]);
}

}  // namespace

void dchex(double* r, int ldr, int p, int k, int l, double* z, int ldz, int nz, double* c,
           double* s, ChexJob job) {
  Shift shift{Columns(r, ldr), p, k - 1, l - 1, Columns(z, ldz), nz, c, s};
  if (job == ChexJob::kLeftShift) {
    shift.left();
  } else {
    shift.right();
  }
}

}  // namespace knotwork::linpack
