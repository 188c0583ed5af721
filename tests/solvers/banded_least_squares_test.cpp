// SPDX-License-Identifier: MIT
// The banded solver against dense ones, and what it promises about rows, threads and ranks.
#include "knotwork/solvers/banded_least_squares.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include "knotwork/decomp/double_sv_decomp.h"
#include "solvers/sparse_rows.h"

namespace {

using knotwork::BandedLeastSquares;

using knotwork::test::at;
using knotwork::test::columns;
using knotwork::test::difference;
using knotwork::test::largestMiss;
using knotwork::test::Row;
using knotwork::test::sameBits;
using knotwork::test::vec;

/// A random banded problem, kept in plain rows for both solvers and for the oracle.
struct Problem {
  int unknowns, order, dimension;
  bool periodic = false;
  std::vector<int> first;
  std::vector<double> values, rhs;
  std::vector<Row> constraints;
  std::vector<int> prescribed;
  std::vector<double> known;

  std::size_t rows() const { return first.size(); }
  int column(std::size_t row, int j) const { return (first[row] + j) % unknowns; }
  double value(std::size_t row, int j) const {
    return values[row * static_cast<std::size_t>(order) + static_cast<std::size_t>(j)];
  }
  double side(std::size_t row, int c) const {
    return rhs[row * static_cast<std::size_t>(dimension) + static_cast<std::size_t>(c)];
  }
};

class Maker {
 public:
  explicit Maker(unsigned seed) : random_(seed) {}

  int whole(int from, int to) { return std::uniform_int_distribution<int>(from, to)(random_); }
  double real(double from, double to) {
    return std::uniform_real_distribution<double>(from, to)(random_);
  }

  /// Rows in clusters and with weights over `decades` powers of ten; every span has some.
  Problem problem(int unknowns, int order, int dimension, bool periodic, double decades) {
    Problem p{unknowns, order, dimension, periodic, {}, {}, {}, {}, {}, {}};
    const int spans = periodic ? unknowns : unknowns - order + 1;
    for (int span = 0; span < spans; ++span) addRows(p, span, order + whole(0, 3), decades);
    for (int i = 0; i < 5; ++i) addRows(p, whole(0, spans - 1), whole(0, 6), decades);
    return p;
  }

  void constrain(Problem& p, int count, bool wide) {
    for (int k = 0; k < count; ++k) {
      Row row;
      const int start = whole(0, p.unknowns - p.order);
      for (int j = 0; j < p.unknowns; ++j) {
        const bool isUsed = wide ? whole(0, 2) == 0 : j >= start && j < start + p.order;
        if (!isUsed) continue;
        row.columns.push_back(j);
        row.values.push_back(real(0.5, 2) * (whole(0, 1) ? 1 : -1));
      }
      if (row.columns.empty()) continue;
      for (int c = 0; c < p.dimension; ++c) row.rhs.push_back(real(-1, 1));
      p.constraints.push_back(row);
    }
  }

 private:
  void addRows(Problem& p, int span, int count, double decades) {
    for (int i = 0; i < count; ++i) {
      const double weight = std::pow(10, real(-decades / 2, decades / 2));
      p.first.push_back(span);
      for (int j = 0; j < p.order; ++j) p.values.push_back(weight * real(0, 1));
      for (int c = 0; c < p.dimension; ++c) p.rhs.push_back(weight * real(-1, 1));
    }
  }

  std::mt19937 random_;
};

/// Fills a solver with all of the problem. @return the first code that is not 0.
int fill(const Problem& p, BandedLeastSquares& solver) {
  for (std::size_t i = 0; i < p.prescribed.size(); ++i) {
    const DoubleVec value(static_cast<unsigned>(p.dimension), p.known[i]);
    if (const int code = solver.prescribe(p.prescribed[i], value)) return code;
  }
  const int code = solver.addRows(p.rows(), p.first.data(), p.values.data(), p.rhs.data());
  if (code != 0) return code;
  for (const Row& row : p.constraints) {
    if (const int c = solver.addConstraint(columns(row.columns), vec(row.values), vec(row.rhs)))
      return c;
  }
  return 0;
}

/// The banded solution; empty if there is none.
TtupleVector solved(const Problem& p, int threads = 1) {
  BandedLeastSquares solver(p.unknowns, p.order, p.dimension, p.periodic);
  solver.threads() = threads;
  EXPECT_EQ(fill(p, solver), 0);
  TtupleVector x;
  const int code = solver.solve(&x);
  EXPECT_TRUE(code == 0 || (code == 5 && x.points() == 0)) << code;
  EXPECT_EQ(code == 0, solver.undetermined().length() + solver.conflicting().length() == 0);
  return x;
}

/// The dense solution, prescribed unknowns as constraints.
TtupleVector dense(const Problem& p) {
  std::vector<Row> rows(p.rows()), constraints = p.constraints;
  for (std::size_t r = 0; r < p.rows(); ++r) {
    for (int j = 0; j < p.order; ++j) {
      rows[r].columns.push_back(p.column(r, j));
      rows[r].values.push_back(p.value(r, j));
    }
    for (int c = 0; c < p.dimension; ++c) rows[r].rhs.push_back(p.side(r, c));
  }
  for (std::size_t k = 0; k < p.prescribed.size(); ++k) {
    const std::vector<double> known(static_cast<std::size_t>(p.dimension), p.known[k]);
    constraints.push_back({{p.prescribed[k]}, {1}, known});
  }
  return knotwork::test::denseSolution(p.unknowns, p.dimension, rows, constraints);
}

TEST(BandedLeastSquares, AgreesWithTheDenseSolverOnEveryKindOfSystem) {
  Maker make(20261121);
  double worst = 0, worstMiss = 0;
  int compared = 0;
  for (int trial = 0; trial < 300; ++trial) {
    const int order = make.whole(1, 6), unknowns = make.whole(order + 1, 40);
    Problem p = make.problem(unknowns, order, make.whole(1, 3), make.whole(0, 1) == 1, 0);
    if (make.whole(0, 1)) {
      const int column = make.whole(0, unknowns - 1);
      p.prescribed = {column};
      p.known = {make.real(-2, 2)};
    }
    make.constrain(p, make.whole(0, std::min(4, unknowns / 3)), make.whole(0, 1) == 1);
    SCOPED_TRACE(trial);
    const TtupleVector x = solved(p);
    const TtupleVector expected = dense(p);
    ASSERT_EQ(x.length(), expected.length());
    if (x.points() == 0) continue;
    ++compared;
    worst = std::max(worst, difference(x, expected));
    worstMiss = std::max(worstMiss, largestMiss(p.constraints, x));
    for (std::size_t k = 0; k < p.prescribed.size(); ++k)
      EXPECT_EQ(at(x, p.prescribed[k], 0), p.known[k]);
  }
  EXPECT_GT(compared, 250);
  EXPECT_LT(worst, 1e-12);
  EXPECT_LT(worstMiss, 1e-12);
}

// At the minimum the residual is orthogonal to every column; in long double, against the sizes of
// the terms of the row of largest weight.
TEST(BandedLeastSquares, IsOptimalForWeightsOverTwelveDecades) {
  Maker make(7);
  double worst = 0;
  for (int trial = 0; trial < 100; ++trial) {
    const Problem p = make.problem(make.whole(6, 60), make.whole(2, 5), 2, trial % 2 == 1, 12);
    const TtupleVector x = solved(p);
    ASSERT_EQ(x.points(), p.unknowns);
    std::vector<long double> gradient(static_cast<std::size_t>(p.unknowns)), size = gradient;
    for (std::size_t r = 0; r < p.rows(); ++r) {
      long double residual = -static_cast<long double>(p.side(r, 0)), terms = std::abs(residual);
      for (int j = 0; j < p.order; ++j) {
        const long double term = static_cast<long double>(p.value(r, j)) * at(x, p.column(r, j), 0);
        residual += term;
        terms += std::abs(term);
      }
      for (int j = 0; j < p.order; ++j) {
        gradient[static_cast<std::size_t>(p.column(r, j))] += p.value(r, j) * residual;
        size[static_cast<std::size_t>(p.column(r, j))] += std::abs(p.value(r, j)) * terms;
      }
    }
    for (std::size_t j = 0; j < size.size(); ++j)
      worst = std::max(worst, static_cast<double>(std::abs(gradient[j]) / size[j]));
  }
  EXPECT_LT(worst, 1e-11);
}

TEST(BandedLeastSquares, RowsInAnyOrderAndOnAnyThreads) {
  Maker make(11);
  Problem p = make.problem(50, 4, 3, false, 2);
  make.constrain(p, 3, true);
  const TtupleVector x = solved(p);
  for (const int threads : {2, 3, 8, 100}) {
    EXPECT_TRUE(sameBits(solved(p, threads), x)) << threads;
  }

  // Spans in another order, each with its own rows in theirs: the same bits. All rows backwards:
  // the same to rounding.
  std::vector<std::size_t> order(p.rows());
  std::iota(order.begin(), order.end(), 0u);
  const auto permuted = [&] {
    Problem q = p;
    for (std::size_t i = 0; i < order.size(); ++i) {
      q.first[i] = p.first[order[i]];
      for (int j = 0; j < 4; ++j)
        q.values[i * 4 + static_cast<std::size_t>(j)] = p.value(order[i], j);
      for (int c = 0; c < 3; ++c) q.rhs[i * 3 + static_cast<std::size_t>(c)] = p.side(order[i], c);
    }
    return solved(q);
  };
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    return p.first[a] * 29 % 47 < p.first[b] * 29 % 47;
  });
  EXPECT_TRUE(sameBits(permuted(), x));
  std::reverse(order.begin(), order.end());
  EXPECT_LT(difference(permuted(), x), 1e-13);
}

TEST(BandedLeastSquares, NamesWhatIsUndeterminedAndSolvesOnceThatIsPrescribed) {
  Maker make(13);
  int found = 0;
  for (int trial = 0; trial < 100; ++trial) {
    Problem p = make.problem(make.whole(8, 40), make.whole(2, 5), 1, trial % 2 == 1, 0);
    // A gap: a few neighbouring spans keep but one or two rows between them.
    const int gap = make.whole(0, p.unknowns - p.order), length = make.whole(p.order, 3 * p.order);
    Problem q{p.unknowns, p.order, 1, p.periodic, {}, {}, {}, {}, {}, {}};
    int kept = make.whole(0, 2);
    for (std::size_t r = 0; r < p.rows(); ++r) {
      const bool isInGap = p.first[r] >= gap && p.first[r] < gap + length;
      if (isInGap && kept-- <= 0) continue;
      q.first.push_back(p.first[r]);
      for (int j = 0; j < p.order; ++j) q.values.push_back(p.value(r, j));
      q.rhs.push_back(p.side(r, 0));
    }
    BandedLeastSquares solver(q.unknowns, q.order, 1, q.periodic);
    ASSERT_EQ(fill(q, solver), 0);
    DoubleVec x(3, 42.0);
    const int code = solver.solve(&x);
    DoubleGenMat a(static_cast<unsigned>(q.rows()), static_cast<unsigned>(q.unknowns), 0.0);
    for (std::size_t r = 0; r < q.rows(); ++r) {
      for (int j = 0; j < q.order; ++j) a(static_cast<int>(r), q.column(r, j)) += q.value(r, j);
    }
    const DoubleVec singular = DoubleSVDecomp(a).singularValues();
    int rank = 0;
    for (int i = 0; i < static_cast<int>(singular.length()); ++i) rank += singular(i) > 1e-12;
    EXPECT_EQ(static_cast<int>(solver.undetermined().length()), q.unknowns - rank) << trial;
    if (code == 0) continue;
    ++found;
    EXPECT_EQ(code, 5);
    EXPECT_TRUE(x.length() == 3 && x(0) == 42.0);
    for (int i = 0; i < static_cast<int>(solver.undetermined().length()); ++i) {
      q.prescribed.push_back(solver.undetermined()(i));
      q.known.push_back(0.5);
    }
    EXPECT_EQ(solved(q).points(), q.unknowns) << trial;
  }
  EXPECT_GT(found, 50);
}

TEST(BandedLeastSquares, ConstraintsOverManyColumnsDetermineWhatRowsDoNot) {
  Maker make(17);
  for (int trial = 0; trial < 50; ++trial) {
    Problem p{12, 3, 2, false, {}, {}, {}, {}, {}, {}};
    const Problem full = make.problem(12, 3, 2, false, 0);
    for (std::size_t r = 0; r < full.rows(); ++r) {  // columns 5 and 6 have no rows
      if (full.first[r] > 2 && full.first[r] < 7) continue;
      p.first.push_back(full.first[r]);
      for (int j = 0; j < 3; ++j) p.values.push_back(full.value(r, j));
      for (int c = 0; c < 2; ++c) p.rhs.push_back(full.side(r, c));
    }
    BandedLeastSquares open(12, 3, 2);
    ASSERT_EQ(fill(p, open), 0);
    TtupleVector x;
    EXPECT_EQ(open.solve(&x), 5);
    ASSERT_EQ(open.undetermined().length(), 2u);
    EXPECT_TRUE(open.undetermined()(0) == 5 && open.undetermined()(1) == 6);
    for (int k = 0; k < 2; ++k) {
      Row row;
      for (int j = 0; j < 12; ++j) {
        row.columns.push_back(j);
        row.values.push_back(make.real(0.1, 1));
      }
      row.rhs = {make.real(-1, 1), make.real(-1, 1)};
      p.constraints.push_back(row);
    }
    const TtupleVector y = solved(p);
    ASSERT_EQ(y.points(), 12);
    EXPECT_LT(difference(y, dense(p)), 1e-10);
    EXPECT_LT(largestMiss(p.constraints, y), 1e-12);
  }
}

TEST(BandedLeastSquares, TellsWhichConstraintsContradict) {
  Maker make(19);
  Problem p = make.problem(20, 4, 1, false, 0);
  p.constraints = {{{3}, {2}, {1}}, {{0, 19}, {1, 1}, {4}}, {{3}, {4}, {2}}};
  EXPECT_EQ(solved(p).points(), 20);  // the third says what the first does
  p.constraints[2].rhs = {3};
  BandedLeastSquares solver(20, 4, 1);
  ASSERT_EQ(fill(p, solver), 0);
  DoubleVec x;
  EXPECT_EQ(solver.solve(&x), 5);
  ASSERT_EQ(solver.conflicting().length(), 1u);
  EXPECT_TRUE(solver.conflicting()(0) == 0 || solver.conflicting()(0) == 2);
  EXPECT_EQ(solver.undetermined().length(), 0u);
}

TEST(BandedLeastSquares, ResidualsAreThoseOfTheRowsAndMoreRowsMayFollow) {
  Maker make(23);
  Problem p = make.problem(15, 4, 2, true, 1);
  make.constrain(p, 2, false);
  BandedLeastSquares solver(15, 4, 2, true);
  ASSERT_EQ(fill(p, solver), 0);
  TtupleVector x;
  ASSERT_EQ(solver.solve(&x), 0);
  for (int c = 0; c < 2; ++c) {
    double squares = 0;
    for (std::size_t r = 0; r < p.rows(); ++r) {
      double residual = -p.side(r, c);
      for (int j = 0; j < 4; ++j) residual += p.value(r, j) * at(x, p.column(r, j), c);
      squares += residual * residual;
    }
    EXPECT_NEAR(solver.residualSquares()(c), squares, 1e-12 * squares);
  }
  const double row[] = {1, 2, 3, 4}, side[] = {5, 6};
  const int first = 13;
  ASSERT_EQ(solver.addRows(1, &first, row, side), 0);
  p.first.push_back(first);
  p.values.insert(p.values.end(), row, row + 4);
  p.rhs.insert(p.rhs.end(), side, side + 2);
  ASSERT_EQ(solver.solve(&x), 0);
  EXPECT_LT(difference(x, dense(p)), 1e-12);
}

TEST(BandedLeastSquares, RefusesWhatDoesNotFit) {
  BandedLeastSquares solver(6, 3, 1);
  const DoubleVec three(3, 1.0), two(2, 1.0), one(1, 1.0);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(solver.addRow(4, three, one), 4);  // beyond the last span
  EXPECT_EQ(solver.addRow(-1, three, one), 4);
  EXPECT_EQ(solver.addRow(0, two, one), 4);
  EXPECT_EQ(solver.addRow(0, three, two), 4);
  EXPECT_EQ(solver.addRow(0, DoubleVec(3, nan), one), 4);
  EXPECT_EQ(solver.addConstraint(columns({0, 0}), two, one), 4);
  EXPECT_EQ(solver.addConstraint(columns({6}), one, one), 4);
  EXPECT_EQ(solver.addConstraint(columns({1}), DoubleVec(1, 0.0), one), 4);
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
