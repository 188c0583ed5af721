// SPDX-License-Identifier: MIT
// The solver for scattered points against the dense one, and what it promises about rows, threads
// and ranks.
#include "knotwork/solvers/scattered_least_squares.h"

#include <gtest/gtest.h>

#include <numeric>
#include <random>

#include "knotwork/vector/math_error.h"

#include "solvers/sparse_rows.h"
#include "support/failing_new.h"

namespace {

using knotwork::ScatteredLeastSquares;
using knotwork::TensorDirection;
using knotwork::test::columns;
using knotwork::test::difference;
using knotwork::test::largestMiss;
using knotwork::test::Row;
using knotwork::test::sameBits;
using knotwork::test::vec;

std::size_t at(int i) { return static_cast<std::size_t>(i); }

/// A random problem: the factors of its rows, and the rows that they make.
struct Problem {
  TensorDirection u, v;
  int dimension;
  std::vector<int> firstU, firstV;
  std::vector<double> valuesU, valuesV, rhs;
  std::vector<Row> penalties;  // each within a cell, given by its first unknowns
  std::vector<std::pair<int, int>> penaltyCells;
  std::vector<Row> constraints;
  std::vector<int> prescribed;

  std::size_t rows() const { return firstU.size(); }
  int unknowns() const { return u.unknowns * v.unknowns; }
  int column(int first, int second, int a, int b) const {
    return (first + a) % u.unknowns * v.unknowns + (second + b) % v.unknowns;
  }
  Row row(std::size_t k) const {
    Row row;
    for (int a = 0; a < u.order; ++a) {
      for (int b = 0; b < v.order; ++b) {
        row.columns.push_back(column(firstU[k], firstV[k], a, b));
        row.values.push_back(valuesU[k * at(u.order) + at(a)] * valuesV[k * at(v.order) + at(b)]);
      }
    }
    for (std::size_t c = 0; c < at(dimension); ++c) row.rhs.push_back(rhs[k * at(dimension) + c]);
    return row;
  }
  std::vector<Row> allRows() const {
    std::vector<Row> all = penalties;
    for (std::size_t k = 0; k < rows(); ++k) all.push_back(row(k));
    return all;
  }
  std::vector<Row> exactRows() const {
    std::vector<Row> all = constraints;
    for (const int j : prescribed)
      all.push_back({{j}, {1}, std::vector<double>(at(dimension), 0.5)});
    return all;
  }
};

class Maker {
 public:
  explicit Maker(unsigned seed) : random_(seed) {}
  int whole(int from, int to) { return std::uniform_int_distribution<int>(from, to)(random_); }
  double real(double from, double to) {
    return std::uniform_real_distribution<double>(from, to)(random_);
  }
  TensorDirection direction(int most) {
    const int order = whole(1, 4);
    return {whole(order, most), order, whole(0, 2) == 0};
  }
  static int cells(const TensorDirection& d) {
    return d.periodic ? d.unknowns : d.unknowns - d.order + 1;
  }
  void addPoint(Problem& p, int firstU, int firstV) {
    p.firstU.push_back(firstU);
    p.firstV.push_back(firstV);
    for (int a = 0; a < p.u.order; ++a) p.valuesU.push_back(real(0.1, 1));
    for (int b = 0; b < p.v.order; ++b) p.valuesV.push_back(real(-1, 1));
    for (int c = 0; c < p.dimension; ++c) p.rhs.push_back(real(-1, 1));
  }
  /// `perCell` points in each cell on average, and penalties that determine every unknown.
  Problem problem(TensorDirection u, TensorDirection v, int dimension, double perCell) {
    Problem p{u, v, dimension, {}, {}, {}, {}, {}, {}, {}, {}, {}};
    const int points = static_cast<int>(perCell * cells(u) * cells(v));
    for (int i = 0; i < points; ++i) addPoint(p, whole(0, cells(u) - 1), whole(0, cells(v) - 1));
    for (int i = 0; i < cells(u); ++i) {
      for (int j = 0; j < cells(v); ++j) {
        Row row;
        for (int a = 0; a < u.order; ++a) {
          for (int b = 0; b < v.order; ++b) {
            row.columns.push_back(p.column(i, j, a, b));
            row.values.push_back(real(-0.1, 0.1));
          }
        }
        for (int k = 0; k < u.order * v.order; ++k) {
          row.values[at(k)] += 1;
          row.rhs.assign(at(dimension), real(-1, 1));
          p.penalties.push_back(row);
          p.penaltyCells.emplace_back(i, j);
          row.values[at(k)] -= 1;
        }
      }
    }
    return p;
  }
  void constrain(Problem& p, int count, bool isWide) {
    for (int k = 0; k < count; ++k) {
      Row row;
      for (int j = 0; j < p.unknowns(); ++j) {
        if (whole(0, 3) == 0) row.columns.push_back(j);
      }
      if (!isWide) {
        const int i = whole(0, cells(p.u) - 1), j = whole(0, cells(p.v) - 1);
        row.columns = {p.column(i, j, 0, 0)};
        const int last = p.column(i, j, p.u.order - 1, p.v.order - 1);
        if (last != row.columns[0]) row.columns.push_back(last);
      }
      if (row.columns.empty()) continue;
      for (std::size_t t = 0; t < row.columns.size(); ++t) row.values.push_back(real(0.5, 2));
      for (int c = 0; c < p.dimension; ++c) row.rhs.push_back(real(-1, 1));
      p.constraints.push_back(row);
    }
  }

 private:
  std::mt19937 random_;
};

/// Fills a solver with all of the problem. @return the first code that is not 0.
int fill(const Problem& p, ScatteredLeastSquares& solver) {
  for (const int j : p.prescribed) {
    if (const int code = solver.prescribe(j, DoubleVec(static_cast<unsigned>(p.dimension), 0.5)))
      return code;
  }
  for (std::size_t k = 0; k < p.penalties.size(); ++k) {
    const auto [i, j] = p.penaltyCells[k];
    const Row& row = p.penalties[k];
    if (const int code = solver.addCellRows(i, j, 1, row.values.data(), row.rhs.data()))
      return code;
  }
  if (const int code = solver.addRows(p.rows(), p.firstU.data(), p.firstV.data(), p.valuesU.data(),
                                      p.valuesV.data(), p.rhs.data())) {
    return code;
  }
  for (const Row& row : p.constraints) {
    if (const int code = solver.addConstraint(columns(row.columns), vec(row.values), vec(row.rhs)))
      return code;
  }
  return 0;
}

TtupleVector solved(const Problem& p, int threads = 1) {
  ScatteredLeastSquares solver(p.u, p.v, p.dimension);
  solver.threads() = threads;
  EXPECT_EQ(fill(p, solver), 0);
  TtupleVector x;
  const int code = solver.solve(&x);
  EXPECT_TRUE(code == 0 || (code == 5 && x.points() == 0)) << code;
  EXPECT_EQ(code == 0, solver.undetermined().length() + solver.conflicting().length() == 0);
  return x;
}

TtupleVector dense(const Problem& p) {
  return knotwork::test::denseSolution(p.unknowns(), p.dimension, p.allRows(), p.exactRows());
}

TEST(ScatteredLeastSquares, AgreesWithTheDenseSolverOnEveryKindOfSystem) {
  Maker make(20261122);
  double worst = 0, worstMiss = 0;
  int compared = 0;
  for (int trial = 0; trial < 200; ++trial) {
    SCOPED_TRACE(trial);
    Problem p = make.problem(make.direction(9), make.direction(9), make.whole(1, 3),
                             make.real(0, trial % 10 == 0 ? 60 : 5));
    if (make.whole(0, 1)) p.prescribed = {make.whole(0, p.unknowns() - 1)};
    make.constrain(p, make.whole(0, std::min(4, p.unknowns() / 3)), make.whole(0, 1) == 1);
    const TtupleVector x = solved(p), expected = dense(p);
    ASSERT_EQ(x.length(), expected.length());
    if (x.points() == 0) continue;
    ++compared;
    worst = std::max(worst, difference(x, expected));
    worstMiss = std::max(worstMiss, largestMiss(p.exactRows(), x));
    for (const int j : p.prescribed) EXPECT_EQ(knotwork::test::at(x, j, 0), 0.5);
  }
  EXPECT_GT(compared, 180);
  EXPECT_LT(worst, 1e-11);
  EXPECT_LT(worstMiss, 1e-12);
}

// Many cells: panels of every width, fronts that go on from fronts.
TEST(ScatteredLeastSquares, LeavesResidualsThatAreOrthogonalToEveryColumn) {
  Maker make(5);
  for (const bool isPeriodic : {false, true}) {
    const Problem p = make.problem({30, 4, isPeriodic}, {26, 3, false}, 2, 2);
    ScatteredLeastSquares solver(p.u, p.v, 2);
    ASSERT_EQ(fill(p, solver), 0);
    TtupleVector x;
    ASSERT_EQ(solver.solve(&x), 0);
    std::vector<long double> gradient(at(p.unknowns())), size = gradient;
    long double squares = 0;
    for (const Row& row : p.allRows()) {
      long double residual = -static_cast<long double>(row.rhs[1]);
      for (std::size_t t = 0; t < row.columns.size(); ++t)
        residual +=
            static_cast<long double>(row.values[t]) * knotwork::test::at(x, row.columns[t], 1);
      squares += residual * residual;
      for (std::size_t t = 0; t < row.columns.size(); ++t) {
        gradient[at(row.columns[t])] += row.values[t] * residual;
        size[at(row.columns[t])] += std::abs(row.values[t] * residual);
      }
    }
    for (std::size_t j = 0; j < size.size(); ++j) EXPECT_LT(std::abs(gradient[j]), 1e-12 * size[j]);
    EXPECT_NEAR(solver.residualSquares()(1), static_cast<double>(squares),
                1e-12 * static_cast<double>(squares));
  }
}

TEST(ScatteredLeastSquares, RowsInAnyOrderAndOnAnyThreads) {
  Maker make(11);
  Problem p = make.problem({12, 4}, {9, 3, true}, 2, 6);
  make.constrain(p, 3, true);
  const TtupleVector x = solved(p);
  for (const int threads : {2, 3, 8, 100}) EXPECT_TRUE(sameBits(solved(p, threads), x)) << threads;

  // Cells in another order, each with its own rows in theirs: the same bits. All rows backwards:
  // the same to rounding.
  std::vector<std::size_t> order(p.rows());
  std::iota(order.begin(), order.end(), 0u);
  const auto permuted = [&] {
    Problem q = p;
    for (std::size_t i = 0; i < order.size(); ++i) {
      const std::size_t k = order[i];
      q.firstU[i] = p.firstU[k];
      q.firstV[i] = p.firstV[k];
      std::copy_n(&p.valuesU[k * 4], 4, &q.valuesU[i * 4]);
      std::copy_n(&p.valuesV[k * 3], 3, &q.valuesV[i * 3]);
      std::copy_n(&p.rhs[k * 2], 2, &q.rhs[i * 2]);
    }
    return solved(q);
  };
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    return (p.firstU[a] * 9 + p.firstV[a]) * 29 % 83 < (p.firstU[b] * 9 + p.firstV[b]) * 29 % 83;
  });
  EXPECT_TRUE(sameBits(permuted(), x));
  std::reverse(order.begin(), order.end());
  EXPECT_LT(difference(permuted(), x), 1e-13);
}

// Unknowns without data are named, no others, and determined once they are prescribed.
TEST(ScatteredLeastSquares, NamesWhatIsUndetermined) {
  Maker make(13);
  for (int trial = 0; trial < 40; ++trial) {
    SCOPED_TRACE(trial);
    Problem p = make.problem({make.whole(8, 14), 3}, {make.whole(8, 14), 4, trial % 2 == 0}, 1, 0);
    const int hole = make.whole(0, 5);
    p.penalties.clear();
    p.penaltyCells.clear();
    std::vector<bool> isSeen(at(p.unknowns()));
    for (int i = 0; i < Maker::cells(p.u); ++i) {
      for (int j = 0; j < Maker::cells(p.v); ++j) {
        if (i >= hole && i < hole + 4 && j >= hole && j < hole + 5) continue;
        for (int k = 0; k < 14; ++k) make.addPoint(p, i, j);
        for (const int column : p.row(p.rows() - 1).columns) isSeen[at(column)] = true;
      }
    }
    std::vector<int> unseen;
    for (int j = 0; j < p.unknowns(); ++j) {
      if (!isSeen[at(j)]) unseen.push_back(j);
    }
    ASSERT_FALSE(unseen.empty());
    ScatteredLeastSquares solver(p.u, p.v, 1);
    ASSERT_EQ(fill(p, solver), 0);
    TtupleVector x(1, 3, 42.0);
    EXPECT_EQ(solver.solve(&x), 5);
    EXPECT_TRUE(x.points() == 3 && knotwork::test::at(x, 2, 0) == 42.0);
    const IntVec& named = solver.undetermined();
    EXPECT_EQ(std::vector<int>(named.data(), named.data() + named.length()), unseen);
    p.prescribed = unseen;
    EXPECT_LT(difference(solved(p), dense(p)), 1e-9);
  }
}

TEST(ScatteredLeastSquares, TellsWhichConstraintsContradict) {
  Maker make(19);
  Problem p = make.problem({5, 2}, {6, 3}, 1, 4);
  p.constraints = {{{3}, {2}, {1}}, {{0, 29}, {1, 1}, {4}}, {{3}, {4}, {2}}};
  EXPECT_EQ(solved(p).points(), 30);  // the third says what the first does
  p.constraints[2].rhs = {3};
  ScatteredLeastSquares solver(p.u, p.v, 1);
  ASSERT_EQ(fill(p, solver), 0);
  TtupleVector x;
  EXPECT_EQ(solver.solve(&x), 5);
  ASSERT_EQ(solver.conflicting().length(), 1u);
  EXPECT_TRUE(solver.conflicting()(0) == 0 || solver.conflicting()(0) == 2);
}

TEST(ScatteredLeastSquares, RefusesWhatDoesNotFit) {
  ScatteredLeastSquares solver({4, 2}, {5, 3, true}, 1);
  const double ones[] = {1, 1, 1, 1, 1, 1}, nan = std::nan(""), infinite[] = {1, INFINITY, 1};
  const int zero = 0, two = 2, three = 3, four = 4, five = 5, minus = -1;
  EXPECT_EQ(solver.addRows(1, &three, &zero, ones, ones, ones), 4);  // beyond the last cell
  EXPECT_EQ(solver.addRows(1, &minus, &zero, ones, ones, ones), 4);
  EXPECT_EQ(solver.addRows(1, &two, &five, ones, ones, ones), 4);
  EXPECT_EQ(solver.addRows(1, &two, &four, ones, infinite, ones), 4);
  EXPECT_EQ(solver.addRows(1, &two, &four, ones, ones, &nan), 4);
  EXPECT_EQ(solver.addCellRows(3, 0, 1, ones, ones), 4);
  EXPECT_EQ(solver.addConstraint(columns({20}), vec({1}), vec({1})), 4);
  EXPECT_EQ(solver.prescribe(20, vec({1})), 4);
  EXPECT_EQ(solver.rows(), 0u);
  EXPECT_EQ(solver.addRows(1, &two, &four, ones, ones, ones), 0);
  EXPECT_EQ(solver.prescribe(0, vec({1})), 4);  // rows are there
  EXPECT_EQ(solver.solve(nullptr), 4);
  TtupleVector x;
  for (const TensorDirection& bad : {TensorDirection{1, 2}, {3, 0}, {1 << 30, 1}}) {
    ScatteredLeastSquares refused({4, 2}, bad, 1);
    EXPECT_EQ(refused.addRows(1, &zero, &zero, ones, ones, ones), 4);
    EXPECT_TRUE(refused.solve(&x) == 4 && refused.unknowns() == 0);
  }
}

TEST(ScatteredLeastSquares, EveryFailingAllocationIsACode) {
  if (!knotwork::test::canObserveAllocation()) GTEST_SKIP() << "allocations are the DLL's own";
  Maker make(29);
  const Problem p = make.problem({4, 2}, {3, 2, true}, 2, 9);
  const DoubleVec half(2, 0.5), entries(3, 1.0);
  const IntVec wide = columns({3, 8, 11});
  const MathErrorHandler before = setMathErrorHandler([](MathErrorRecord, va_list) {});
  for (const int threads : {1, 2}) {
    int code = 0;
    TtupleVector first, x;
    knotwork::test::failEveryAllocation(
        [&] {
          ScatteredLeastSquares solver(p.u, p.v, 2);
          solver.threads() = threads;
          code = solver.prescribe(7, half);
          if (code == 0) code = fill(p, solver);
          if (code == 0) code = solver.addConstraint(wide, entries, half);
          if (code == 0) code = solver.solve(&x);
        },
        [&] {
          EXPECT_TRUE(code == 0 || code == -1) << code;
          EXPECT_EQ(x.points(), code == 0 ? 12 : 0);
          if (first.points() == 0) first.reference(x);
          EXPECT_TRUE(code != 0 || sameBits(x, first));
          TtupleVector none;
          x.reference(none);
        });
  }
  setMathErrorHandler(before);
}

}  // namespace
