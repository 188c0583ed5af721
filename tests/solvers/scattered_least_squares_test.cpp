// SPDX-License-Identifier: MIT
// The solver for scattered points against the dense one, and what it promises about rows, threads
// and ranks.
#include "knotwork/solvers/scattered_least_squares.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdarg>
#include <numeric>
#include <vector>

#include "knotwork/vector/math_error.h"
#include "solvers/sparse_system.h"
#include "support/failing_new.h"

namespace knotwork::test {
namespace {

std::size_t at(int i) { return static_cast<std::size_t>(i); }

int cellsOf(const TensorDirection& d) { return d.periodic ? d.unknowns : d.unknowns - d.order + 1; }

/// Each row of A lies in a cell: the first ones, penalties, with entries of any kind, the others
/// with products of a row of U and one of V.
struct Problem : SparseSystem {
  TensorDirection u, v;
  std::vector<std::pair<int, int>> cells;
  int penalties = 0;
  DoubleGenMat U, V;

  /// The rows as the solver takes them.
  struct Flat {
    std::vector<int> firstU, firstV;
    Values penalties, U, V, sides;
  };

  int column(int row, int a, int b) const {
    const auto [i, j] = cells[at(row)];
    return (i + a) % u.unknowns * v.unknowns + (j + b) % v.unknowns;
  }
  Flat flat() const {
    Flat rows{{}, {}, {}, valuesOf(transpose(U)), valuesOf(transpose(V)), valuesOf(transpose(B))};
    for (int k = 0; k < this->rows(); ++k) {
      if (k >= penalties) {
        rows.firstU.push_back(cells[at(k)].first);
        rows.firstV.push_back(cells[at(k)].second);
        continue;
      }
      for (int a = 0; a < u.order; ++a)
        for (int b = 0; b < v.order; ++b) rows.penalties.push_back(A(k, column(k, a, b)));
    }
    return rows;
  }
  int add(const Flat& rows, ScatteredLeastSquares& solver) const {
    for (int k = 0; k < penalties; ++k) {
      const int code = solver.addCellRows(cells[at(k)].first, cells[at(k)].second, 1,
                                          &rows.penalties[at(k * u.order * v.order)],
                                          &rows.sides[at(k * dimension())]);
      if (code != 0) return code;
    }
    return solver.addRows(rows.firstU.size(), rows.firstU.data(), rows.firstV.data(), rows.U.data(),
                          rows.V.data(), rows.sides.data() + penalties * dimension());
  }
  ScatteredLeastSquares solver() const { return ScatteredLeastSquares(u, v, dimension()); }
  void fill(ScatteredLeastSquares& solver) const {
    prescribe(*this, solver);
    ASSERT_EQ(add(flat(), solver), 0);
    constrain(*this, solver);
  }
};

/// Makes up the rows of a problem's cells.
void makeRows(Random& random, Problem& p, int dimension) {
  const auto rows = unsigned(p.cells.size()), points = rows - unsigned(p.penalties);
  p.A.reference(DoubleGenMat(rows, unsigned(p.u.unknowns * p.v.unknowns), 0.0));
  p.B.reference(random.matrix(rows, unsigned(dimension)));
  p.U.reference(0.55 + 0.45 * random.matrix(points, unsigned(p.u.order)));
  p.V.reference(random.matrix(points, unsigned(p.v.order)));
  for (int k = 0; k < p.rows(); ++k)
    for (int a = 0; a < p.u.order; ++a)
      for (int b = 0; b < p.v.order; ++b)
        p.A(k, p.column(k, a, b)) =
            k >= p.penalties
                ? p.U(k - p.penalties, a) * p.V(k - p.penalties, b)
                : 0.1 * random.number() + (a * p.v.order + b == k % (p.u.order * p.v.order));
}

/// `perCell` points in each cell on average, and penalties that determine every unknown.
Problem problem(Random& random, TensorDirection u, TensorDirection v, int dimension,
                double perCell) {
  Problem p{{}, u, v, {}, 0, {}, {}};
  for (int i = 0; i < cellsOf(u); ++i)
    for (int j = 0; j < cellsOf(v); ++j)
      p.cells.insert(p.cells.end(), at(u.order * v.order), {i, j});
  p.penalties = static_cast<int>(p.cells.size());
  for (int n = static_cast<int>(perCell * cellsOf(u) * cellsOf(v)); n > 0; --n)
    p.cells.emplace_back(random.below(cellsOf(u)), random.below(cellsOf(v)));
  makeRows(random, p, dimension);
  return p;
}

/// Sets constraints on about a quarter of all unknowns, or on two of a cell.
void setConstraints(Random& random, Problem& p, int count, bool isWide) {
  p.C.reference(DoubleGenMat(unsigned(count), p.A.cols(), 0.0));
  p.D.reference(random.matrix(count, p.dimension()));
  for (int k = 0; k < count; ++k) {
    const int row = random.below(p.rows());
    p.C(k, p.column(row, 0, 0)) = random.uniform(0.5, 2);
    p.C(k, p.column(row, p.u.order - 1, p.v.order - 1)) = random.uniform(0.5, 2);
    for (int j = 0; isWide && j < p.unknowns(); ++j)
      if (random.below(4) == 0) p.C(k, j) = random.uniform(0.5, 2);
  }
}

TEST(ScatteredLeastSquares, AgreesWithTheDenseSolverOnEveryKindOfSystem) {
  Random random(20261122);
  const auto direction = [&] {
    const int order = random.within(1, 4);
    return TensorDirection{random.within(order, 9), order, random.below(3) == 0};
  };
  int compared = 0;
  for (int trial = 0; trial < 200; ++trial) {
    SCOPED_TRACE(trial);
    const TensorDirection u = direction(), v = direction();
    Problem p =
        problem(random, u, v, random.within(1, 3), random.uniform(0, trial % 10 == 0 ? 60 : 5));
    if (random.below(2)) p.known[random.below(p.unknowns())] = 0.5;
    setConstraints(random, p, random.within(0, std::min(4, p.unknowns() / 3)), random.below(2));
    const DoubleGenMat x = solved(p), expected = dense(p);
    ASSERT_EQ(x.rows(), expected.rows());
    if (x.rows() == 0) continue;
    ++compared;
    EXPECT_LT(difference(x, expected), 1e-11);
    EXPECT_LT(constraintMiss(p, x), 1e-12);
    for (const auto& [unknown, value] : p.known) EXPECT_EQ(x(unknown, 0), value);
  }
  EXPECT_GT(compared, 170);
}

// Many cells: panels of every width, fronts that go on from fronts.
TEST(ScatteredLeastSquares, LeavesResidualsThatAreOrthogonalToEveryColumn) {
  Random random(5);
  for (const bool isPeriodic : {false, true}) {
    const Problem p = problem(random, {20, 4, isPeriodic}, {18, 3, false}, 2, 2);
    ScatteredLeastSquares solver = p.solver();
    p.fill(solver);
    TtupleVector x;
    ASSERT_EQ(solver.solve(&x), 0);
    EXPECT_LT(slope(p, matrixOf(x)), 1e-13);
    const DoubleVec missed = (product(p.A, matrixOf(x)) - p.B).col(1);
    EXPECT_NEAR(solver.residualSquares()(1) / dot(missed, missed), 1, 1e-12);
  }
}

TEST(ScatteredLeastSquares, RowsInAnyOrderAndOnAnyThreads) {
  Random random(11);
  Problem p = problem(random, {12, 4}, {9, 3, true}, 2, 6);
  setConstraints(random, p, 3, true);
  const DoubleGenMat x = solved(p);
  for (const int threads : {2, 3, 8, 100}) EXPECT_TRUE(solved(p, threads) == x) << threads;

  // Cells in another order, each with its own rows in theirs: the same bits. All points backwards:
  // the same to rounding.
  std::vector<int> order(p.cells.size());
  std::iota(order.begin(), order.end(), 0);
  const auto permuted = [&] {
    Problem q = p;
    const std::vector<int> points(order.begin() + p.penalties, order.end());
    q.A.reference(rowsOf(p.A, order));
    q.B.reference(rowsOf(p.B, order));
    for (std::size_t i = 0; i < order.size(); ++i) q.cells[i] = p.cells[at(order[i])];
    std::vector<int> factors;
    for (const int k : points) factors.push_back(k - p.penalties);
    q.U.reference(rowsOf(p.U, factors));
    q.V.reference(rowsOf(p.V, factors));
    return solved(q);
  };
  std::stable_sort(order.begin() + p.penalties, order.end(), [&](int a, int b) {
    const auto place = [&](int k) {
      return (p.cells[at(k)].first * 9 + p.cells[at(k)].second) * 29 % 83;
    };
    return place(a) < place(b);
  });
  EXPECT_TRUE(permuted() == x);
  std::reverse(order.begin() + p.penalties, order.end());
  EXPECT_LT(difference(permuted(), x), 1e-13);
}

// Unknowns without data are named, no others, and determined once they are prescribed.
TEST(ScatteredLeastSquares, NamesWhatIsUndetermined) {
  Random random(13);
  for (int trial = 0; trial < 40; ++trial) {
    SCOPED_TRACE(trial);
    Problem p{{}, {random.within(8, 14), 3}, {random.within(8, 14), 4, trial % 2 == 0}, {}, 0, {},
              {}};
    const int hole = random.below(6);
    for (int i = 0; i < cellsOf(p.u); ++i)
      for (int j = 0; j < cellsOf(p.v); ++j)
        if (i < hole || i >= hole + 4 || j < hole || j >= hole + 5)
          p.cells.insert(p.cells.end(), 14, {i, j});
    makeRows(random, p, 1);
    Values unseen;
    for (int j = 0; j < p.unknowns(); ++j)
      if (sum(abs(p.A.col(j))) == 0) unseen.push_back(j);
    ASSERT_FALSE(unseen.empty());
    ScatteredLeastSquares solver = p.solver();
    p.fill(solver);
    TtupleVector x(1, 3, 42.0);
    EXPECT_EQ(solver.solve(&x), 5);
    EXPECT_EQ(valuesOf(x.data()), Values(3, 42.0));
    EXPECT_EQ(valuesOf(solver.undetermined()), unseen);
    for (const double j : unseen) p.known[static_cast<int>(j)] = 0.5;
    EXPECT_LT(difference(solved(p), dense(p)), 1e-9);
  }
}

TEST(ScatteredLeastSquares, TellsWhichConstraintsContradict) {
  Random random(19);
  Problem p = problem(random, {5, 2}, {6, 3}, 1, 4);
  p.C.reference(DoubleGenMat(3, 30, 0.0));
  p.C(0, 3) = 2, p.C(1, 0) = p.C(1, 29) = 1, p.C(2, 3) = 4;
  p.D.reference(DoubleGenMat(vectorOf({1, 4, 2}), 3, 1));
  EXPECT_EQ(solved(p).rows(), 30u);  // the third says what the first does
  p.D(2, 0) = 3;
  ScatteredLeastSquares solver = p.solver();
  p.fill(solver);
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
  EXPECT_EQ(solver.addConstraint(indices({20}), vectorOf({1}), vectorOf({1})), 4);
  EXPECT_EQ(solver.prescribe(20, vectorOf({1})), 4);
  EXPECT_EQ(solver.rows(), 0u);
  EXPECT_EQ(solver.addRows(1, &two, &four, ones, ones, ones), 0);
  EXPECT_EQ(solver.prescribe(0, vectorOf({1})), 4);  // rows are there
  EXPECT_EQ(solver.solve(nullptr), 4);
  TtupleVector x;
  for (const TensorDirection& bad : {TensorDirection{1, 2}, {3, 0}, {1 << 30, 1}}) {
    ScatteredLeastSquares refused({4, 2}, bad, 1);
    EXPECT_EQ(refused.addRows(1, &zero, &zero, ones, ones, ones), 4);
    EXPECT_TRUE(refused.solve(&x) == 4 && refused.unknowns() == 0);
  }
}

TEST(ScatteredLeastSquares, EveryFailingAllocationIsACode) {
  if (!canObserveAllocation()) GTEST_SKIP() << "allocations are the DLL's own";
  Random random(29);
  const Problem p = problem(random, {4, 2}, {3, 2, true}, 2, 9);
  const Problem::Flat rows = p.flat();
  const DoubleVec half(2, 0.5), entries(3, 1.0);
  const IntVec wide = indices({3, 8, 11});
  const MathErrorHandler before = setMathErrorHandler([](MathErrorRecord, va_list) {});
  for (const int threads : {1, kThreadsWithoutMemory}) {
    int code = 0;
    Values first;
    TtupleVector x;
    failEveryAllocation(
        [&] {
          ScatteredLeastSquares solver(p.u, p.v, 2);
          solver.threads() = threads;
          code = solver.prescribe(7, half);
          if (code == 0) code = p.add(rows, solver);
          if (code == 0) code = solver.addConstraint(wide, entries, half);
          if (code == 0) code = solver.solve(&x);
        },
        [&] {
          EXPECT_TRUE(code == 0 || code == -1) << code;
          EXPECT_EQ(x.points(), code == 0 ? 12 : 0);
          if (first.empty()) first = valuesOf(x.data());
          EXPECT_TRUE(code != 0 || valuesOf(x.data()) == first);
          TtupleVector none;
          x.reference(none);
        });
  }
  setMathErrorHandler(before);
}

}  // namespace
}  // namespace knotwork::test
