// SPDX-License-Identifier: MIT
// The banded solver against dense ones, and what it promises about rows, threads and ranks.
#include "knotwork/solvers/banded_least_squares.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "knotwork/decomp/double_sv_decomp.h"
#include "solvers/sparse_system.h"

namespace knotwork::test {
namespace {

/// Row i of A touches the columns from first[i] on.
struct Problem : SparseSystem {
  int order;
  bool periodic;
  std::vector<int> first;

  BandedLeastSquares solver() const {
    return BandedLeastSquares(unknowns(), order, dimension(), periodic);
  }
  void fill(BandedLeastSquares& solver) const {
    prescribe(*this, solver);
    Values values, rhs;
    for (int i = 0; i < rows(); ++i) {
      for (int j = 0; j < order; ++j)
        values.push_back(A(i, (first[std::size_t(i)] + j) % unknowns()));
      for (int c = 0; c < dimension(); ++c) rhs.push_back(B(i, c));
    }
    ASSERT_EQ(solver.addRows(first.size(), first.data(), values.data(), rhs.data()), 0);
    constrain(*this, solver);
  }
};

/// Rows in clusters and with weights over `decades` powers of ten; every span has some.
Problem problem(Random& random, int n, int order, int dimension, bool periodic, double decades) {
  Problem p{{}, order, periodic, {}};
  const int spans = periodic ? n : n - order + 1;
  for (int span = 0; span < spans; ++span)
    p.first.insert(p.first.end(), std::size_t(order + random.below(4)), span);
  for (int i = 0; i < 5; ++i)
    p.first.insert(p.first.end(), std::size_t(random.below(7)), random.below(spans));
  p.A.resize(unsigned(p.first.size()), unsigned(n));
  p.B.reference(random.matrix(p.A.rows(), unsigned(dimension)));
  for (int i = 0; i < p.rows(); ++i) {
    const double weight = std::pow(10, random.uniform(-decades / 2, decades / 2));
    for (int j = 0; j < order; ++j)
      p.A(i, (p.first[std::size_t(i)] + j) % n) = weight * random.uniform(0, 1);
    p.B.row(i) *= weight;
  }
  return p;
}

/// Sets constraints over `order` neighbours, or over about a third of all unknowns.
void setConstraints(Random& random, Problem& p, int count, bool wide) {
  p.C.reference(DoubleGenMat(unsigned(count), unsigned(p.unknowns()), 0.0));
  p.D.reference(random.matrix(count, p.dimension()));
  for (int k = 0; k < count; ++k) {
    const int start = random.within(0, p.unknowns() - p.order);
    p.C(k, start) = 1;
    for (int j = 0; j < p.unknowns(); ++j)
      if (wide ? random.below(3) == 0 : j >= start && j < start + p.order)
        p.C(k, j) = random.uniform(0.5, 2) * (random.below(2) ? 1 : -1);
  }
}

/// The rows of that list alone, in its order.
Problem partOf(const Problem& p, const std::vector<int>& list) {
  Problem q = p;
  q.A.reference(rowsOf(p.A, list));
  q.B.reference(rowsOf(p.B, list));
  q.first.clear();
  for (const int row : list) q.first.push_back(p.first[std::size_t(row)]);
  return q;
}

TEST(BandedLeastSquares, AgreesWithTheDenseSolverOnEveryKindOfSystem) {
  Random random(20261121);
  int compared = 0;
  for (int trial = 0; trial < 300; ++trial) {
    const int order = random.within(1, 6), n = random.within(order + 1, 40);
    Problem p = problem(random, n, order, random.within(1, 3), random.below(2) == 1, 0);
    if (random.below(2)) p.known[random.below(n)] = random.uniform(-2, 2);
    setConstraints(random, p, random.within(0, std::min(4, n / 3)), random.below(2) == 1);
    SCOPED_TRACE(trial);
    const DoubleGenMat x = solved(p), expected = dense(p);
    ASSERT_EQ(x.rows(), expected.rows());
    if (x.rows() == 0) continue;
    ++compared;
    EXPECT_LT(difference(x, expected), 1e-12);
    EXPECT_LT(constraintMiss(p, x), 1e-12);
    for (const auto& [unknown, value] : p.known) EXPECT_EQ(x(unknown, 0), value);
  }
  EXPECT_GT(compared, 250);
}

// At the minimum the residual is orthogonal to every column, against the sizes of the terms of the
// row of largest weight.
TEST(BandedLeastSquares, IsOptimalForWeightsOverTwelveDecades) {
  Random random(7);
  for (int trial = 0; trial < 100; ++trial) {
    const Problem p = problem(random, random.within(6, 60), random.within(2, 5), 2, trial % 2, 12);
    const DoubleGenMat x = solved(p);
    ASSERT_EQ(x.rows(), p.A.cols());
    EXPECT_LT(slope(p, x), 1e-11);
  }
}

TEST(BandedLeastSquares, RowsInAnyOrderAndOnAnyThreads) {
  Random random(11);
  Problem p = problem(random, 50, 4, 3, false, 2);
  setConstraints(random, p, 3, true);
  const DoubleGenMat x = solved(p);
  for (const int threads : {2, 3, 8, 100}) EXPECT_TRUE(solved(p, threads) == x) << threads;

  // Spans in another order, each with its own rows in theirs: the same bits. All rows backwards:
  // the same to rounding.
  std::vector<int> order(p.first.size());
  std::iota(order.begin(), order.end(), 0);
  std::ranges::stable_sort(order, {}, [&](int i) { return p.first[std::size_t(i)] * 29 % 47; });
  EXPECT_TRUE(solved(partOf(p, order)) == x);
  std::ranges::reverse(order);
  EXPECT_LT(difference(solved(partOf(p, order)), x), 1e-13);
}

TEST(BandedLeastSquares, NamesWhatIsUndeterminedAndSolvesOnceThatIsPrescribed) {
  Random random(13);
  int found = 0;
  for (int trial = 0; trial < 100; ++trial) {
    const Problem p =
        problem(random, random.within(8, 40), random.within(2, 5), 1, trial % 2 == 1, 0);
    // A gap: a few neighbouring spans keep but one or two rows between them.
    const int gap = random.within(0, p.unknowns() - p.order);
    const int length = random.within(p.order, 3 * p.order);
    int kept = random.below(3);
    std::vector<int> rest;
    for (int i = 0; i < p.rows(); ++i) {
      const int first = p.first[std::size_t(i)];
      if (first < gap || first >= gap + length || kept-- > 0) rest.push_back(i);
    }
    Problem q = partOf(p, rest);
    BandedLeastSquares solver = q.solver();
    q.fill(solver);
    DoubleVec x(3, 42.0);
    const int code = solver.solve(&x);
    const DoubleVec singular = DoubleSVDecomp(q.A).singularValues();
    int rank = 0;
    for (int i = 0; i < static_cast<int>(singular.length()); ++i) rank += singular(i) > 1e-12;
    const IntVec open = solver.undetermined();
    EXPECT_EQ(static_cast<int>(open.length()), q.unknowns() - rank) << trial;
    if (code == 0) continue;
    ++found;
    EXPECT_EQ(code, 5);
    EXPECT_EQ(valuesOf(x), Values(3, 42.0));
    for (int i = 0; i < static_cast<int>(open.length()); ++i) q.known[open(i)] = 0.5;
    EXPECT_EQ(solved(q).rows(), q.A.cols()) << trial;
  }
  EXPECT_GT(found, 50);
}

TEST(BandedLeastSquares, ConstraintsOverManyColumnsDetermineWhatRowsDoNot) {
  Random random(17);
  for (int trial = 0; trial < 50; ++trial) {
    const Problem full = problem(random, 12, 3, 2, false, 0);
    std::vector<int> rest;  // columns 5 and 6 have no rows
    for (int i = 0; i < full.rows(); ++i)
      if (full.first[std::size_t(i)] < 3 || full.first[std::size_t(i)] > 6) rest.push_back(i);
    Problem p = partOf(full, rest);
    BandedLeastSquares open = p.solver();
    p.fill(open);
    TtupleVector x;
    EXPECT_EQ(open.solve(&x), 5);
    EXPECT_EQ(valuesOf(open.undetermined()), (Values{5, 6}));
    p.C.reference(random.matrix(2, 12));
    p.D.reference(random.matrix(2, 2));
    const DoubleGenMat y = solved(p);
    EXPECT_LT(difference(y, dense(p)), 1e-10);
    EXPECT_LT(constraintMiss(p, y), 1e-12);
  }
}

TEST(BandedLeastSquares, TellsWhichConstraintsContradict) {
  Random random(19);
  Problem p = problem(random, 20, 4, 1, false, 0);
  p.C.reference(DoubleGenMat(3, 20, 0.0));
  p.C(0, 3) = 2, p.C(1, 0) = p.C(1, 19) = 1, p.C(2, 3) = 4;
  p.D.reference(DoubleGenMat(vectorOf({1, 4, 2}), 3, 1));
  EXPECT_EQ(solved(p).rows(), 20u);  // the third says what the first does
  p.D(2, 0) = 3;
  BandedLeastSquares solver = p.solver();
  p.fill(solver);
  DoubleVec x;
  EXPECT_EQ(solver.solve(&x), 5);
  ASSERT_EQ(solver.conflicting().length(), 1u);
  EXPECT_TRUE(solver.conflicting()(0) == 0 || solver.conflicting()(0) == 2);
  EXPECT_EQ(solver.undetermined().length(), 0u);
}

TEST(BandedLeastSquares, ResidualsAreThoseOfTheRowsAndMoreRowsMayFollow) {
  Random random(23);
  const Problem all = problem(random, 15, 4, 2, true, 1);
  std::vector<int> most(std::size_t(all.rows() - 1));
  std::iota(most.begin(), most.end(), 0);
  Problem p = partOf(all, most);
  setConstraints(random, p, 2, false);
  BandedLeastSquares solver = p.solver();
  p.fill(solver);
  TtupleVector x;
  ASSERT_EQ(solver.solve(&x), 0);
  const DoubleGenMat missed = product(p.A, matrixOf(x)) - p.B;
  for (int c = 0; c < 2; ++c) {
    const double squares = dot(missed.col(c), missed.col(c));
    EXPECT_NEAR(solver.residualSquares()(c), squares, 1e-12 * squares);
  }
  DoubleVec last(4);
  for (int j = 0; j < 4; ++j) last(j) = all.A(all.rows() - 1, (all.first.back() + j) % 15);
  ASSERT_EQ(solver.addRow(all.first.back(), last, all.B.row(all.rows() - 1)), 0);
  ASSERT_EQ(solver.solve(&x), 0);
  most.push_back(all.rows() - 1);
  Problem whole = partOf(all, most);
  whole.C.reference(p.C);
  whole.D.reference(p.D);
  EXPECT_LT(difference(matrixOf(x), dense(whole)), 1e-12);
}

TEST(BandedLeastSquares, RefusesWhatDoesNotFit) {
  BandedLeastSquares solver(6, 3, 1);
  const DoubleVec three(3, 1.0), two(2, 1.0), one(1, 1.0);
  EXPECT_EQ(solver.addRow(4, three, one), 4);  // beyond the last span
  EXPECT_EQ(solver.addRow(-1, three, one), 4);
  EXPECT_EQ(solver.addRow(0, two, one), 4);
  EXPECT_EQ(solver.addRow(0, three, two), 4);
  EXPECT_EQ(solver.addRow(0, DoubleVec(3, std::nan("")), one), 4);
  EXPECT_EQ(solver.addConstraint(indices({0, 0}), two, one), 4);
  EXPECT_EQ(solver.addConstraint(indices({6}), one, one), 4);
  EXPECT_EQ(solver.addConstraint(indices({1}), DoubleVec(1, 0.0), one), 4);
  EXPECT_EQ(solver.rows(), 0u);
  EXPECT_EQ(solver.prescribe(6, one), 4);
  EXPECT_EQ(solver.addRow(3, three, one), 0);
  EXPECT_EQ(solver.prescribe(0, one), 4);  // rows are there
  EXPECT_EQ(solver.solve(static_cast<DoubleVec*>(nullptr)), 4);
  BandedLeastSquares narrow(2, 3, 1);
  EXPECT_EQ(narrow.addRow(0, three, one), 4);
  DoubleVec x;
  EXPECT_EQ(narrow.solve(&x), 4);
}

}  // namespace
}  // namespace knotwork::test
