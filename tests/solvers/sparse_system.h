// SPDX-License-Identifier: MIT
// Sparse systems in plain matrices, and their solution by the dense solver: the oracle of those
// that do not form them.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "knotwork/solvers/householder.h"
#include "knotwork/vector/double_vec_pick.h"
#include "support/random.h"
#include "support/values.h"

namespace knotwork::test {

/// min |A X - B| where C X = D holds exactly, as does what is known of some unknowns.
struct SparseSystem {
  DoubleGenMat A, B, C, D;
  std::map<int, double> known;

  int rows() const { return static_cast<int>(A.rows()); }
  int unknowns() const { return static_cast<int>(A.cols()); }
  int dimension() const { return static_cast<int>(B.cols()); }
};

/// Hands a solver what is known, before its rows.
void prescribe(const SparseSystem& p, auto& solver) {
  for (const auto& [unknown, value] : p.known)
    ASSERT_EQ(solver.prescribe(unknown, DoubleVec(p.B.cols(), value)), 0);
}

/// Hands a solver the constraints.
void constrain(const SparseSystem& p, auto& solver) {
  for (int k = 0; k < static_cast<int>(p.C.rows()); ++k) {
    const IntVec used = p.C.row(k).nonZeroIndex(0.0);
    ASSERT_EQ(solver.addConstraint(used, DoubleVec(p.C.row(k).vecPick(used)), p.D.row(k)), 0);
  }
}

inline DoubleGenMat rowsOf(const DoubleGenMat& m, const std::vector<int>& list) {
  DoubleGenMat some(unsigned(list.size()), m.cols());
  for (int i = 0; const int row : list) some.row(i++) = m.row(row);
  return some;
}

inline DoubleGenMat matrixOf(const TtupleVector& x) {
  return transpose(DoubleGenMat(x.data(), unsigned(x.size()), unsigned(x.points())));
}

/// The solution by the problem's own solver, unknowns x dimension; empty if there is none.
template <class Problem>
DoubleGenMat solved(const Problem& p, int threads = 1) {
  auto solver = p.solver();
  solver.threads() = threads;
  p.fill(solver);
  TtupleVector x;
  const int code = solver.solve(&x);
  EXPECT_TRUE(code == 0 || (code == 5 && x.points() == 0)) << code;
  EXPECT_EQ(code == 0, solver.undetermined().length() + solver.conflicting().length() == 0);
  return matrixOf(x);
}

/// The dense solution, empty if there is none, by the reflections of `Thouseholder`, prescribed
/// unknowns as constraints.
inline DoubleGenMat dense(const SparseSystem& p) {
  const int exact = static_cast<int>(p.C.rows() + p.known.size());
  DoubleGenMat a(unsigned(p.rows() + exact), p.A.cols(), 0.0);
  TtupleVector b(p.dimension(), p.rows() + exact, 0.0);
  int i = 0;
  const auto add = [&](const DoubleGenMat& m, const DoubleGenMat& sides) {
    for (int k = 0; k < static_cast<int>(m.rows()); ++k, ++i) {
      a.row(i) = m.row(k);
      b(i) = sides.row(k);
    }
  };
  add(p.A, p.B);
  add(p.C, p.D);
  for (const auto& [unknown, value] : p.known) {
    a(i, unknown) = 1;
    b(i++) = value;
  }
  Thouseholder solver(1e-15, 0, false);
  if (solver.setMatrix(a, exact, false, false, false) != 0) return DoubleGenMat();
  return matrixOf(solver.solve(b));
}

inline double largest(const DoubleGenMat& m) { return maxValue(abs(m).dataVec()); }
inline double difference(const DoubleGenMat& x, const DoubleGenMat& y) {
  return x.rows() == y.rows() ? largest(x - y) / largest(y) : HUGE_VAL;
}

/// How far the residual is from being orthogonal to every column, as it is at the minimum, against
/// the sizes of the terms.
inline double slope(const SparseSystem& p, const DoubleGenMat& x) {
  const DoubleGenMat gradient = transposeProduct(p.A, product(p.A, x) - p.B);
  const DoubleGenMat terms = product(abs(p.A), abs(x)) + abs(p.B);
  return largest(gradient / transposeProduct(abs(p.A), terms));
}

/// What the constraints miss, against the size of their terms.
inline double constraintMiss(const SparseSystem& p, const DoubleGenMat& x) {
  if (p.C.rows() == 0) return 0;
  return largest((product(p.C, x) - p.D) / (product(abs(p.C), abs(x)) + abs(p.D)));
}

}  // namespace knotwork::test
