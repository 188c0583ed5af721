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
      if (sigma[at(i)] == 0 || std::abs(sigma[at(i)]) < 1e-13 * N) sigma[at(i)] = 0;
      solvable &= sigma[at(i)] != 0 && !std::isnan(sigma[at(i)]);
    }
  }

  // rhs is used up; entry i of the result belongs to column i
  std::vector<double> solve(std::vector<double> rhs) const {
    std::vector<double> x(at(c), 0.0);
    const int m0 = r < c ? 0 : r - c, n = r < c ? 0 : c - k;
    for (int j = 0; j < n; ++j) {
      reflect(
          rowsFrom(m0 + j), m0 + j, [&](int i) -> double& { return rhs[at(rowPerm[at(i)])]; },
          [&](int i) { return f(i, j); });
    }
    for (int q = r - 1, u = c - 1; q >= m0; --q, --u) {
      double sum = 0;
      for (int j = u + 1; j < c; ++j) sum += x[at(colPerm[at(j)])] * f(q, j);
      double v = rhs[at(rowPerm[at(q)])] - sum;
      if (std::abs(sigma[at(q)]) > skip) v /= sigma[at(q)];
      x[at(colPerm[at(u)])] = v;
    }
    for (int s = r - k; s < r; ++s) {
      reflect(
          upTo(c - r + s + 1), s, [&](int j) -> double& { return x[at(j)]; },
          [&](int j) { return f(s, j); });
    }
    return x;
  }

 private:
  static std::size_t at(int i) { return static_cast<std::size_t>(i); }
  double& f(int i, int j) { return F[at(j) * at(r) + at(i)]; }
  double f(int i, int j) const { return F[at(j) * at(r) + at(i)]; }

  static std::vector<int> upTo(int end) {
    std::vector<int> all;
    for (int i = 0; i < end; ++i) all.push_back(i);
    return all;
  }

  // The rows that take part in the least-squares step whose pivot row is p.
  std::vector<int> rowsFrom(int p) const {
    std::vector<int> rows;
    for (int i : upTo(r - k))
      if (i < r - c || i >= p) rows.push_back(i);
    return rows;
  }

  template <class W>
  static double squares(const std::vector<int>& over, W w) {
    double sum = 0;
    for (int i : over) sum += w(i) * w(i);
    return sum;
  }

  // x += (x . w) beta[p] w over these indices, unless the product is within the threshold.
  template <class X, class W>
  void reflect(const std::vector<int>& over, int p, X x, W w) const {
    double d = 0;
    for (int i : over) d += x(i) * w(i);
    if (!(std::abs(d) > skip)) return;
    d *= beta[at(p)];
    for (int i : over) x(i) += d * w(i);
  }

  int largest(int first, int end) const {
    int best = first;
    for (int i = first + 1; i < end; ++i)
      if (norms[at(i)] > norms[at(best)]) best = i;
    return best;
  }

  // Forms the reflection of the entries w. @return whether there is one.
  template <class W>
  bool form(const std::vector<int>& over, int p, double& pivot, W w) {
    double m = -1;
    for (int i : over) m = std::max(m, std::abs(w(i)));
    if (m < 0 || m <= skip) return false;
    double s = std::sqrt(squares(over, [&](int i) { return w(i) * (1 / m); })) * m;
    if (pivot > 0) s = -s;
    pivot -= s;
    sigma[at(p)] = s;
    beta[at(p)] = 1 / (s * pivot);
    return true;
  }

  void constraintPhase() {
    const int first = r - k;
    const auto row = [this](int i) { return [this, i](int j) -> double& { return f(i, j); }; };
    for (int i = first; i < r; ++i) norms[at(i)] = squares(upTo(c), row(i));
    double reference = N = norms[at(largest(first, r))];
    for (int p = r - 1, q = c - 1; p >= first; --p, --q) {
      const int from = largest(first, p + 1);
      for (int j = 0; j < c; ++j) std::swap(f(from, j), f(p, j));
      std::swap(norms[at(from)], norms[at(p)]);
      std::swap(rowPerm[at(from)], rowPerm[at(p)]);
      const std::vector<int> columns = upTo(q + 1);
      if (form(columns, p, f(p, q), row(p)))
        for (int i = 0; i < p; ++i) reflect(columns, p, row(i), row(p));
      for (int i = first; i < p; ++i) norms[at(i)] -= f(i, q) * f(i, q);
      if (first < p && norms[at(largest(first, p))] * 100 < reference) {
        for (int i = first; i < p; ++i) norms[at(i)] = squares(upTo(q), row(i));
        reference = norms[at(largest(first, p))];
      }
    }
  }

  void leastSquaresPhase() {
    const int m0 = r - c, n = c - k;
    const auto column = [this](int j) { return [this, j](int i) -> double& { return f(i, j); }; };
    for (int j = 0; j < n; ++j) norms[at(j)] = squares(rowsFrom(0), column(j));
    double reference = norms[at(largest(0, n))];
    if (k == 0 || reference > N) N = reference;
    for (int j = 0; j < n; ++j) {
      const int p = m0 + j, from = largest(j, n);
      for (int i = 0; i < r - k; ++i) std::swap(f(i, from), f(i, j));
      std::swap(norms[at(from)], norms[at(j)]);
      std::swap(colPerm[at(from)], colPerm[at(j)]);
      const std::vector<int> rows = rowsFrom(p);
      if (form(rows, p, f(p, j), column(j)))
        for (int other = j + 1; other < c; ++other) reflect(rows, p, column(other), column(j));
      for (int other = j + 1; other < n; ++other) norms[at(other)] -= f(p, other) * f(p, other);
      if (j + 1 < n && norms[at(largest(j + 1, n))] * 100 < reference) {
        for (int other = j + 1; other < n; ++other)
          norms[at(other)] = squares(rowsFrom(p + 1), column(other));
        reference = norms[at(largest(j + 1, n))];
      }
    }
  }
};

}  // namespace knotwork::test
