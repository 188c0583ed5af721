// SPDX-License-Identifier: MIT
// DSVDC: singular values and vectors.
// Source also: Golub, Reinsch (1970), Singular Value Decomposition and Least Squares Solutions.
#include <algorithm>
#include <cmath>
#include <utility>

#include "decomp/linpack/columns.h"
#include "decomp/linpack/linpack.h"
#include "kernels/square_root.h"

namespace knotwork::linpack {

using detail::squareRoot;

namespace {

constexpr int kSweepLimit = 30;

double sign(double size, double of) { return std::copysign(size, of); }

void makeUnit(double* column, int length, int place) {
  std::fill(column, column + length, 0.0);
  column[place] = 1.0;
}

// Part one: X becomes bidiagonal by reflections from both sides, which U and V collect.
struct Reduction {
  Columns<double> X;
  int n, p;
  double *s, *e;
  Columns<double> U, V;
  double* work;
  bool wantu, wantv;
  int ncu;
  int nct = std::min(n - 1, p);               // column reflections
  int nrt = std::max(0, std::min(p - 2, n));  // row reflections

  void reduce();
  int bidiagonal();
  void generateU();
  void generateV();

 private:
  void makeColumnReflection(int l);
  void makeRowReflection(int l);
  void applyRowReflection(int l);
};

void Reduction::reduce() {
  for (int l = 0; l < std::max(nct, nrt); ++l) {
    if (l < nct) makeColumnReflection(l);
    if (l < nct && s[l] != 0.0)
      reflectColumns(n - l, X.at(l, l), p - l - 1, X.at(l, l + 1), X.ld());
    for (int j = l + 1; j < p; ++j) e[j] = X(l, j);
    if (wantu && l < nct) blas1::dcopy(n - l, X.at(l, l), U.at(l, l));
    if (l >= nrt) continue;
    makeRowReflection(l);
    if (l + 1 < n && e[l] != 0.0) applyRowReflection(l);
    if (wantv) std::copy(e + l + 1, e + p, V.at(l + 1, l));
  }
}

// s(l) = -||x||, v = x / ||x|| + e_1, in place of x = X(l.., l)
void Reduction::makeColumnReflection(int l) {
  s[l] = blas1::dnrm2(n - l, X.at(l, l));
  if (s[l] != 0.0) {
    if (X(l, l) != 0.0) s[l] = sign(s[l], X(l, l));
    blas1::dscal(n - l, 1.0 / s[l], X.at(l, l));
    X(l, l) = 1.0 + X(l, l);
  }
  s[l] = -s[l];
}

// the same for the row, which stands in e(l+1..)
void Reduction::makeRowReflection(int l) {
  e[l] = blas1::dnrm2(p - l - 1, e + l + 1);
  if (e[l] != 0.0) {
    if (e[l + 1] != 0.0) e[l] = sign(e[l], e[l + 1]);
    blas1::dscal(p - l - 1, 1.0 / e[l], e + l + 1);
    e[l + 1] = 1.0 + e[l + 1];
  }
  e[l] = -e[l];
}

// X = X - (X v) v' / v_1, with X v summed up column by column
void Reduction::applyRowReflection(int l) {
  double* const below = work + l + 1;
  const int rows = n - l - 1;
  std::fill(below, below + rows, 0.0);
  addColumns(rows, p - l - 1, e + l + 1, X.at(l + 1, l + 1), X.ld(), below);
  for (int j = l + 1; j < p; ++j) {
    const double t = -e[j] / e[l + 1];
    addToColumns(rows, 1, &t, below, X.at(l + 1, j), X.ld());
  }
}

// The last elements of s and e; returns the order m of the bidiagonal matrix. With more columns
// than rows it has one row of zeros more; e behind m keeps what the reflections left there.
int Reduction::bidiagonal() {
  const int m = std::min(p, n + 1);
  if (nct < p) s[nct] = X(nct, nct);
  if (n < m) s[m - 1] = 0.0;
  if (nrt + 1 < m) e[nrt] = X(nrt, m - 1);
  e[m - 1] = 0.0;
  return m;
}

void Reduction::generateU() {
  for (int j = nct; j < ncu; ++j) makeUnit(U.at(0, j), n, j);
  for (int l = nct - 1; l >= 0; --l) {
    if (s[l] == 0.0) {
      makeUnit(U.at(0, l), n, l);
      continue;
    }
    reflectColumns(n - l, U.at(l, l), ncu - l - 1, U.at(l, l + 1), U.ld());
    blas1::dscal(n - l, -1.0, U.at(l, l));
    U(l, l) = 1.0 + U(l, l);
    std::fill(U.at(0, l), U.at(l, l), 0.0);
  }
}

void Reduction::generateV() {
  for (int l = p - 1; l >= 0; --l) {
    if (l < nrt && e[l] != 0.0)
      reflectColumns(p - l - 1, V.at(l + 1, l), p - l - 1, V.at(l + 1, l + 1), V.ld());
    makeUnit(V.at(0, l), p, l);
  }
}

// Rotations of neighbouring columns of a matrix, one after the other to the right, saved up and
// then made in few passes: every element meets them in their order.
class Sweep {
 public:
  Sweep(const Columns<double>& matrix, int rows, int first, bool wanted)
      : matrix_(matrix), rows_(rows), first_(first), wanted_(wanted) {}
  ~Sweep() { make(); }
  Sweep(const Sweep&) = delete;
  Sweep& operator=(const Sweep&) = delete;

  void turnNext(double cosine, double sine) {
    if (!wanted_) return;
    c_[count_] = cosine;
    s_[count_++] = sine;
    if (count_ == kMost) make();
  }

 private:
  static constexpr int kMost = 64;

  void make() {
    if (count_ == 0) return;
    rotateSweep(rows_, count_, c_, s_, matrix_.at(0, first_), matrix_.ld());
    first_ += count_;
    count_ = 0;
  }

  Columns<double> matrix_;
  int rows_, first_;
  bool wanted_;
  int count_ = 0;
  double c_[kMost], s_[kMost];
};

// Part two: implicit QR on the bidiagonal matrix, diagonal s, superdiagonal e.
struct Iteration {
  int n, p;
  double *s, *e;
  Columns<double> U, V;
  bool wantu, wantv;
  int m;       // order of the part that has not converged
  int mm = m;  // order at the start

  int run();

 private:
  int negligibleE() const;
  int negligibleS(int l) const;
  bool isFinite(int l) const;
  void clearLastE(int l);
  void clearFirstE(int l);
  double shift(double scale) const;
  void sweep(int l);
  void converge();
  void rotateV(int j, int k, double c, double sine) const {
    if (wantv) blas1::drot(p, V.at(0, j), V.at(0, k), c, sine);
  }
  void rotateU(int j, int k, double c, double sine) const {
    if (wantu) blas1::drot(n, U.at(0, j), U.at(0, k), c, sine);
  }
};

int Iteration::run() {
  int sweeps = 0;
  while (m > 0) {
    if (sweeps >= kSweepLimit) return m;
    int l = negligibleE();
    if (l >= 0) e[l] = 0.0;
    if (l == m - 2) {
      converge();
      sweeps = 0;
      continue;
    }
    const int zero = negligibleS(l);
    if (zero == l) {
      sweep(l + 1);
      ++sweeps;
      continue;
    }
    // A zero on the diagonal splits the matrix. Where a NaN stands beside it no pass would ever
    // end.
    s[zero] = 0.0;
    if (zero == m - 1) {
      if (!isFinite(l + 1)) return m;
      clearLastE(l + 1);
    } else {
      if (!isFinite(zero + 1)) return m;
      clearFirstE(zero + 1);
    }
  }
  return 0;
}

// The last e that vanishes beside its neighbours on the diagonal: compared as rounded sums. -1:
// none.
int Iteration::negligibleE() const {
  for (int l = m - 2; l >= 0; --l) {
    const double test = std::abs(s[l]) + std::abs(s[l + 1]);
    if (test + std::abs(e[l]) == test) return l;
  }
  return -1;
}

// The last s behind l that vanishes beside the e next to it; l if none does.
int Iteration::negligibleS(int l) const {
  for (int ls = m - 1; ls > l; --ls) {
    double test = 0.0;
    if (ls != m - 1) test = test + std::abs(e[ls]);
    if (ls != l + 1) test = test + std::abs(e[ls - 1]);
    if (test + std::abs(s[ls]) == test) return ls;
  }
  return l;
}

bool Iteration::isFinite(int l) const {
  const auto finite = [](double value) { return std::isfinite(value); };
  return std::all_of(s + l, s + m, finite) &&
         std::all_of(e + std::max(l - 1, 0), e + m - 1, finite);
}

// s(m-1) is zero: chase e(m-2) upwards out of the last column
void Iteration::clearLastE(int l) {
  double f = std::exchange(e[m - 2], 0.0);
  for (int k = m - 2; k >= l; --k) {
    double c, sine;
    blas1::drotg(&s[k], &f, &c, &sine);
    if (k != l) {
      f = -sine * e[k - 1];
      e[k - 1] = c * e[k - 1];
    }
    rotateV(k, m - 1, c, sine);
  }
}

// s(l-1) is zero: chase e(l-1) to the right out of its row
void Iteration::clearFirstE(int l) {
  double f = std::exchange(e[l - 1], 0.0);
  for (int k = l; k < m; ++k) {
    double c, sine;
    blas1::drotg(&s[k], &f, &c, &sine);
    f = -sine * e[k];
    e[k] = c * e[k];
    rotateU(k, l - 1, c, sine);
  }
}

// the eigenvalue of the last 2 x 2 block nearer to its last element, as a shift
double Iteration::shift(double scale) const {
  const double sm = s[m - 1] / scale;
  const double smm1 = s[m - 2] / scale;
  const double emm1 = e[m - 2] / scale;
  const double b = ((smm1 + sm) * (smm1 - sm) + emm1 * emm1) / 2.0;
  const double c = (sm * emm1) * (sm * emm1);
  if (b == 0.0 && c == 0.0) return 0.0;
  double root = squareRoot(b * b + c);
  if (b < 0.0) root = -root;
  return c / (b + root);
}

// one QR sweep on rows and columns l to m - 1
void Iteration::sweep(int l) {
  const double scale = std::max(
      {std::abs(s[m - 1]), std::abs(s[m - 2]), std::abs(e[m - 2]), std::abs(s[l]), std::abs(e[l])});
  const double sm = s[m - 1] / scale;
  const double sl = s[l] / scale;
  const double el = e[l] / scale;
  double f = (sl + sm) * (sl - sm) + shift(scale);
  double g = sl * el;
  Sweep turnV(V, p, l, wantv), turnU(U, n, l, wantu);
  for (int k = l; k < m - 1; ++k) {
    double c, sine;
    blas1::drotg(&f, &g, &c, &sine);
    if (k != l) e[k - 1] = f;
    f = c * s[k] + sine * e[k];
    e[k] = c * e[k] - sine * s[k];
    g = sine * s[k + 1];
    s[k + 1] = c * s[k + 1];
    turnV.turnNext(c, sine);

    blas1::drotg(&f, &g, &c, &sine);
    s[k] = f;
    f = c * e[k] + sine * s[k + 1];
    s[k + 1] = -sine * e[k] + c * s[k + 1];
    g = sine * e[k + 1];
    e[k + 1] = c * e[k + 1];
    if (k + 1 < n) turnU.turnNext(c, sine);
  }
  e[m - 2] = f;
}

// s(m-1) is final: make it positive by the sign of V, then move it to its place
void Iteration::converge() {
  int l = m - 1;
  if (!(s[l] >= 0.0)) {
    s[l] = -s[l];
    if (wantv) blas1::dscal(p, -1.0, V.at(0, l));
  }
  for (; l != mm - 1 && s[l] < s[l + 1]; ++l) {
    std::swap(s[l], s[l + 1]);
    if (wantv && l + 1 < p) blas1::dswap(p, V.at(0, l), V.at(0, l + 1));
    if (wantu && l + 1 < n) blas1::dswap(n, U.at(0, l), U.at(0, l + 1));
  }
  --m;
}

}  // namespace

int dsvdc(double* x, int ldx, int n, int p, double* s, double* e, double* u, int ldu, double* v,
          int ldv, double* work, SvdcJob job) {
  if (n < 1 || p < 1) return 0;
  const int tens = static_cast<int>(job) % 100 / 10;
  const bool wantu = tens != 0;
  const bool wantv = static_cast<int>(job) % 10 != 0;
  const int ncu = tens > 1 ? std::min(n, p) : n;
  const Columns U(u, ldu);
  const Columns V(v, ldv);

  Reduction reduction{Columns(x, ldx), n, p, s, e, U, V, work, wantu, wantv, ncu};
  reduction.reduce();
  const int m = reduction.bidiagonal();
  if (wantu) reduction.generateU();
  if (wantv) reduction.generateV();
  return Iteration{n, p, s, e, U, V, wantu, wantv, m}.run();
}

}  // namespace knotwork::linpack
