// SPDX-License-Identifier: MIT
// Sparse systems in plain rows, and their solution by the dense solver: the oracle of those that do
// not form them.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "knotwork/solvers/householder.h"

namespace knotwork::test {

/// One equation, of a least-squares fit or to be met exactly.
struct Row {
  std::vector<int> columns;
  std::vector<double> values, rhs;
};

inline DoubleVec vec(const std::vector<double>& v) {
  DoubleVec result(static_cast<unsigned>(v.size()), 0.0);
  std::copy(v.begin(), v.end(), result.data());
  return result;
}

inline IntVec columns(const std::vector<int>& v) {
  IntVec result(static_cast<unsigned>(v.size()), 0);
  std::copy(v.begin(), v.end(), result.data());
  return result;
}

inline double at(const TtupleVector& x, int point, int c) {
  return static_cast<const DoubleVec&>(x)(point * x.size() + c);
}

/// The solution by the reflections of `Thouseholder`; empty if there is none.
inline TtupleVector denseSolution(int unknowns, int dimension, const std::vector<Row>& rows,
                                  const std::vector<Row>& constraints) {
  std::vector<Row> all = rows;
  all.insert(all.end(), constraints.begin(), constraints.end());
  DoubleGenMat a(static_cast<unsigned>(all.size()), static_cast<unsigned>(unknowns), 0.0);
  TtupleVector b(dimension, static_cast<int>(all.size()), 0.0);
  for (int i = 0; i < static_cast<int>(all.size()); ++i) {
    const Row& row = all[static_cast<std::size_t>(i)];
    for (std::size_t t = 0; t < row.columns.size(); ++t) a(i, row.columns[t]) += row.values[t];
    for (int c = 0; c < dimension; ++c)
      b.data()(i * dimension + c) = row.rhs[static_cast<std::size_t>(c)];
  }
  Thouseholder solver(1e-15, 0, false);
  const int code = solver.setMatrix(a, static_cast<int>(constraints.size()), false, false, false);
  return code == 0 ? solver.solve(b) : TtupleVector();
}

/// What the rows miss, as equations, against the size of their terms.
inline double largestMiss(const std::vector<Row>& rows, const TtupleVector& x) {
  double worst = 0;
  for (const Row& row : rows) {
    for (int c = 0; c < x.size(); ++c) {
      long double sum = -static_cast<long double>(row.rhs[static_cast<std::size_t>(c)]), size = 1;
      for (std::size_t t = 0; t < row.columns.size(); ++t) {
        const long double term = static_cast<long double>(row.values[t]) * at(x, row.columns[t], c);
        sum += term;
        size += std::abs(term);
      }
      worst = std::max(worst, static_cast<double>(std::abs(sum) / size));
    }
  }
  return worst;
}

inline bool sameBits(const TtupleVector& x, const TtupleVector& y) {
  const DoubleVec a = x.data(), b = y.data();
  return a.length() == b.length() && std::equal(a.data(), a.data() + a.length(), b.data());
}

inline double difference(const TtupleVector& x, const TtupleVector& y) {
  double worst = 0, size = 0;
  EXPECT_EQ(x.length(), y.length());
  for (int i = 0; i < static_cast<int>(x.length()); ++i) {
    worst = std::max(worst, std::abs(x.data()(i) - y.data()(i)));
    size = std::max(size, std::abs(y.data()(i)));
  }
  return worst / size;
}

}  // namespace knotwork::test
