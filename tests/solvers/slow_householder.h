// SPDX-License-Identifier: MIT
// The Householder solver's definition, element by element in index order, without thought for speed
// or storage: what the library's bits are measured against.
#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

#include "knotwork/matrix/double_gen_mat.h"

namespace knotwork::test {

struct SlowHouseholder {
  int r, c, k;
  double skip;
  std::vector<double> F, beta, sigma, norms;
  std::vector<int> rowPerm, colPerm;
  double N = 0;
  bool solvable = false;

  SlowHouseholder(const DoubleGenMat& a, int constraints, double tolerance)
      : r(static_cast<int>(a.rows())),
        c(static_cast<int>(a.cols())),
        k(r < c ? r : constraints),
        skip(tolerance * 0.1) {
    const auto n = static_cast<std::size_t>(std::max(r, c));
    for (int j = 0; j < c; ++j)
      for (int i = 0; i < r; ++i) F.push_back(a(i, j));
    beta.assign(n, 0.0), sigma.assign(n, 0.0), norms.assign(n, 0.0);
    for (int i = 0; i < r; ++i) rowPerm.push_back(i);
    for (int j = 0; j < c; ++j) colPerm.push_back(j);
    if (k > 0) constraintPhase();
    if (r >= c && c > k) leastSquaresPhase();
    solvable = true;
    for (int i = std::max(r - c, 0); i < r; ++i) {
      if (sigma[at(i)] == 0 || std::abs(sigma[at(i)]) < 1e-13 * N) {
        sigma[at(i)] = 0;
        solvable = false;
      }
    }
  }

  // rhs is used up; entry i of the result belongs to column i
  std::vector<double> solve(std::vector<double> rhs) const {
    std::vector<double> x(at(c), 0.0);
    const int L = r < c ? 0 : r - k, m0 = r < c ? 0 : r - c, n = r < c ? 0 : c - k;
    for (int j = 0; j < n; ++j) {
      const int p = m0 + j;
      double d = 0;
      for (int i = 0; i < L; ++i)
        if (i < m0 || i >= p) d += rhs[at(rowPerm[at(i)])] * f(i, j);
      if (!(std::abs(d) > skip)) continue;
      d *= beta[at(p)];
      for (int i = 0; i < L; ++i)
        if (i < m0 || i >= p) rhs[at(rowPerm[at(i)])] += d * f(i, j);
    }
    for (int q = r - 1, u = c - 1; q >= m0; --q, --u) {
      double sum = 0;
      for (int j = u + 1; j < c; ++j) sum += x[at(colPerm[at(j)])] * f(q, j);
      double v = rhs[at(rowPerm[at(q)])] - sum;
      if (std::abs(sigma[at(q)]) > skip) v /= sigma[at(q)];
      x[at(colPerm[at(u)])] = v;
    }
    for (int s = r - k; s < r; ++s) {
      double d = 0;
      for (int j = 0; j <= c - r + s; ++j) d += x[at(j)] * f(s, j);
      if (!(std::abs(d) > skip)) continue;
      d *= beta[at(s)];
      for (int j = 0; j <= c - r + s; ++j) x[at(j)] += d * f(s, j);
    }
    return x;
  }

 private:
  static std::size_t at(int i) { return static_cast<std::size_t>(i); }
  double& f(int i, int j) { return F[at(j) * at(r) + at(i)]; }
  double f(int i, int j) const { return F[at(j) * at(r) + at(i)]; }

  int largest(int first, int end) const {
    int best = first;
    for (int i = first + 1; i < end; ++i)
      if (norms[at(i)] > norms[at(best)]) best = i;
    return best;
  }

  // Entries one by one through the addresses given. @return whether there is a reflection.
  bool form(const std::vector<double*>& entries, double& pivot, int p) {
    double m = -1;
    for (const double* e : entries)
      if (std::abs(*e) > m) m = std::abs(*e);
    if (m < 0 || m <= skip) return false;
    double squares = 0;
    for (const double* e : entries) squares += (*e * (1 / m)) * (*e * (1 / m));
    double s = std::sqrt(squares) * m;
    if (pivot > 0) s = -s;
    pivot -= s;
    sigma[at(p)] = s;
    beta[at(p)] = 1 / (s * pivot);
    return true;
  }

  void constraintPhase() {
    const int first = r - k;
    const auto rowSquares = [&](int i, int columns) {
      double sum = 0;
      for (int j = 0; j < columns; ++j) sum += f(i, j) * f(i, j);
      return sum;
    };
    for (int i = first; i < r; ++i) norms[at(i)] = rowSquares(i, c);
    double reference = N = norms[at(largest(first, r))];
    for (int p = r - 1, q = c - 1; p >= first; --p, --q) {
      const int from = largest(first, p + 1);
      for (int j = 0; j < c; ++j)
        if (from != p) std::swap(f(from, j), f(p, j));
      std::swap(norms[at(from)], norms[at(p)]);
      std::swap(rowPerm[at(from)], rowPerm[at(p)]);
      std::vector<double*> row;
      for (int j = 0; j <= q; ++j) row.push_back(&f(p, j));
      if (form(row, f(p, q), p)) {
        for (int i = 0; i < p; ++i) {
          double d = 0;
          for (int j = 0; j <= q; ++j) d += f(i, j) * f(p, j);
          if (!(std::abs(d) > skip)) continue;
          d *= beta[at(p)];
          for (int j = 0; j <= q; ++j) f(i, j) += d * f(p, j);
        }
      }
      for (int i = first; i < p; ++i) norms[at(i)] -= f(i, q) * f(i, q);
      if (first < p && norms[at(largest(first, p))] * 100 < reference) {
        for (int i = first; i < p; ++i) norms[at(i)] = rowSquares(i, q);
        reference = norms[at(largest(first, p))];
      }
    }
  }

  void leastSquaresPhase() {
    const int L = r - k, m0 = r - c, n = c - k;
    const auto columnSquares = [&](int j, int from) {
      double sum = 0;
      for (int i = 0; i < L; ++i)
        if (i < m0 || i >= from) sum += f(i, j) * f(i, j);
      return sum;
    };
    for (int j = 0; j < n; ++j) norms[at(j)] = columnSquares(j, 0);
    double reference = norms[at(largest(0, n))];
    if (k == 0 || reference > N) N = reference;
    for (int j = 0; j < n; ++j) {
      const int p = m0 + j, from = largest(j, n);
      for (int i = 0; i < L; ++i)
        if (from != j) std::swap(f(i, from), f(i, j));
      std::swap(norms[at(from)], norms[at(j)]);
      std::swap(colPerm[at(from)], colPerm[at(j)]);
      std::vector<double*> column;
      for (int i = 0; i < L; ++i)
        if (i < m0 || i >= p) column.push_back(&f(i, j));
      if (form(column, f(p, j), p)) {
        for (int other = j + 1; other < c; ++other) {
          double d = 0;
          for (int i = 0; i < L; ++i)
            if (i < m0 || i >= p) d += f(i, other) * f(i, j);
          if (!(std::abs(d) > skip)) continue;
          d *= beta[at(p)];
          for (int i = 0; i < L; ++i)
            if (i < m0 || i >= p) f(i, other) += d * f(i, j);
        }
      }
      for (int other = j + 1; other < n; ++other) norms[at(other)] -= f(p, other) * f(p, other);
      if (j + 1 < n && norms[at(largest(j + 1, n))] * 100 < reference) {
        for (int other = j + 1; other < n; ++other) norms[at(other)] = columnSquares(other, p + 1);
        reference = norms[at(largest(j + 1, n))];
      }
    }
  }
};

}  // namespace knotwork::test
