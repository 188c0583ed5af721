// SPDX-License-Identifier: MIT
// Matrices that show what a decomposition is worth, and their norms; all from fixed seeds.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "knotwork/matrix/double_gen_mat.h"
#include "support/random.h"
#include "support/values.h"

namespace knotwork::test {

inline constexpr double kEps = std::numeric_limits<double>::epsilon();

inline DoubleGenMat identity(unsigned n) {
  DoubleGenMat m(n, n, 0.0);
  m.diagonal() = 1.0;
  return m;
}

/// Frobenius norm; neither over- nor underflows.
inline double norm(const DoubleGenMat& m) { return m.dataVec().vecLen(); }
inline double norm(const DoubleVec& v) { return v.vecLen(); }

/// m = (I - 2 v v' / v'v) m for a random v.
inline void reflectRows(DoubleGenMat& m, Random& random) {
  const DoubleVec v = random.vector(m.rows());
  const double scale = 2.0 / dot(v, v);
  for (int j = 0; j < static_cast<int>(m.cols()); ++j) {
    DoubleVec column = m.col(j);
    column -= v * (scale * dot(v, column));
  }
}

/// A rows x cols matrix with the given singular values, the rest 0.
inline DoubleGenMat withSpectrum(unsigned rows, unsigned cols, const Values& values,
                                 unsigned seed) {
  Random random(seed);
  DoubleGenMat m(cols, rows, 0.0);
  for (int i = 0; i < static_cast<int>(values.size()); ++i)
    m(i, i) = values[static_cast<std::size_t>(i)];
  for (int i = 0; i < 3; ++i) reflectRows(m, random);
  m.reference(transpose(m));
  for (int i = 0; i < 3; ++i) reflectRows(m, random);
  return m;
}

/// count values from 1 down to `last`, in equal ratios.
inline Values geometric(int count, double last) {
  Values values;
  for (int i = 0; i < count; ++i)
    values.push_back(count > 1 ? std::pow(last, double(i) / (count - 1)) : 1.0);
  return values;
}

inline DoubleGenMat hilbert(unsigned n) {
  DoubleGenMat m(n, n);
  for (int i = 0; i < static_cast<int>(n); ++i)
    for (int j = 0; j < static_cast<int>(n); ++j) m(i, j) = 1.0 / (i + j + 1);
  return m;
}

/// Column j, then row i, scaled down by 10^-2j and 10^-i.
inline DoubleGenMat graded(unsigned rows, unsigned cols, unsigned seed) {
  DoubleGenMat m = Random(seed).matrix(rows, cols);
  for (int j = 0; j < static_cast<int>(cols); ++j) m.col(j) *= std::pow(10.0, -2.0 * j);
  for (int i = 0; i < static_cast<int>(rows); ++i) m.row(i) *= std::pow(10.0, -i);
  return m;
}

struct TestMatrix {
  std::string name;
  DoubleGenMat a;
  int rank;  // that of the matrix before rounding; -1: unclear
};

/// Square, tall, wide, single rows and columns; full and deficient rank; graded, nearly dependent,
/// tiny and huge.
inline std::vector<TestMatrix> allShapesAndSpectra() {
  std::vector<TestMatrix> all;
  const std::pair<unsigned, unsigned> shapes[] = {{1, 1}, {1, 7},   {7, 1},   {2, 2},   {9, 9},
                                                  {5, 9}, {30, 11}, {11, 30}, {40, 40}, {90, 70}};
  for (const auto& [rows, cols] : shapes) {
    const int least = static_cast<int>(std::min(rows, cols));
    const std::string shape = std::to_string(rows) + "x" + std::to_string(cols);
    for (const double scale : {1.0, 1e150, 1e-150})
      all.push_back({"well conditioned " + shape + " times " + std::to_string(std::log10(scale)),
                     scale * withSpectrum(rows, cols, geometric(least, 0.1), 1), least});
    all.push_back(
        {"condition 1e12 " + shape, withSpectrum(rows, cols, geometric(least, 1e-12), 2), least});
    const int half = (least + 1) / 2;
    all.push_back({"half rank " + shape, withSpectrum(rows, cols, geometric(half, 0.1), 3), half});
    all.push_back({"equal values " + shape,
                   withSpectrum(rows, cols, Values(static_cast<std::size_t>(least), 1.0), 4),
                   least});
    all.push_back({"zero " + shape, DoubleGenMat(rows, cols, 0.0), 0});
  }
  all.push_back({"Hilbert 12", hilbert(12), -1});
  all.push_back({"graded 20x12", graded(20, 12, 5), -1});
  all.push_back({"graded 8x8", graded(8, 8, 6), -1});
  all.push_back({"integers 6x6", DoubleGenMat(6, 6, 2.0) + identity(6), 6});
  return all;
}

/// A new decomposition of a, with pivoting or without.
template <class Decomposition>
Decomposition factored(const DoubleGenMat& a, int pivoting) {
  Decomposition decomposition;
  decomposition.doPivoting(pivoting);
  decomposition.factor(a);
  return decomposition;
}

/// ||Q'Q - I|| in units of eps for each column.
inline double lossOfOrthogonality(const DoubleGenMat& Q) {
  return norm(transposeProduct(Q, Q) - identity(Q.cols())) / (kEps * std::max(Q.cols(), 1u));
}

/// ||a - b|| in units of eps ||a|| times the larger dimension.
inline double relativeDifference(const DoubleGenMat& a, const DoubleGenMat& b) {
  const double unit = kEps * norm(a) * std::max({a.rows(), a.cols(), 1u});
  const double difference = norm(a - b);
  return difference == 0.0 ? 0.0 : difference / unit;
}

/// The columns of m that `columns` lists.
inline DoubleGenMat columnsOf(const DoubleGenMat& m, const IntVec& columns) {
  DoubleGenMat chosen(m.rows(), columns.length());
  for (int j = 0; j < static_cast<int>(columns.length()); ++j) chosen.col(j) = m.col(columns(j));
  return chosen;
}

/// The upper triangle of the first `rows` rows.
inline DoubleGenMat upperTriangle(const DoubleGenMat& m, unsigned rows) {
  DoubleGenMat R(rows, m.cols(), 0.0);
  for (int j = 0; j < static_cast<int>(m.cols()); ++j)
    for (int i = 0; i <= j && i < static_cast<int>(rows); ++i) R(i, j) = m(i, j);
  return R;
}

}  // namespace knotwork::test
