// SPDX-License-Identifier: MIT
// What solutions of the Householder solver show: exact constraints, optimality, least norm,
// invariance, decisions about rank.
#include "knotwork/solvers/householder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

#include "knotwork/solvers/solve_constrained_lsq_qr.h"
#include "solvers/open_solver.h"
#include "solvers/systems.h"
#include "support/values.h"

namespace knotwork::test {
namespace {

using Long = long double;
using LongVector = std::vector<Long>;

struct System {
  DoubleGenMat a;
  int constraints;
  DoubleVec b;

  int rows() const { return static_cast<int>(a.rows()); }
  int cols() const { return static_cast<int>(a.cols()); }
};

int solve(const System& s, double tolerance, DoubleVec& x, bool normalise = false) {
  Thouseholder solver(tolerance, 0, false);
  if (const int code = solver.setMatrix(s.a, s.constraints, normalise, false, false)) return code;
  x.reference(DoubleVec(static_cast<unsigned>(s.cols()), 0.0));
  return solver.solve(s.b, &x, false);
}

double largest(const DoubleVec& v) {
  double result = 0;
  for (double value : valuesOf(v)) result = std::max(result, std::abs(value));
  return result;
}

// Equations i of `first` .. `end` as A x - b, the largest against |A| |x| + |b| in max norms.
Long residual(const System& s, const DoubleVec& x, int i) {
  Long sum = -Long(s.b(i));
  for (int j = 0; j < s.cols(); ++j) sum += Long(s.a(i, j)) * x(j);
  return sum;
}

double worstResidual(const System& s, const DoubleVec& x, int first) {
  double worst = 0, rowNorm = 0;
  for (int i = first; i < s.rows(); ++i) {
    worst = std::max(worst, static_cast<double>(std::abs(residual(s, x, i))));
    rowNorm = std::max(rowNorm, sum(abs(s.a.row(i))));
  }
  return worst == 0 ? 0 : worst / (rowNorm * largest(x) + largest(s.b));
}

Long dot(const LongVector& a, const LongVector& b) {
  return std::inner_product(a.begin(), a.end(), b.begin(), Long(0));
}

// What is left of v outside the span of rows `first` and up.
LongVector outsideRows(const System& s, int first, LongVector v) {
  std::vector<LongVector> basis;
  const auto reject = [&basis](LongVector& w) {
    for (const LongVector& e : basis) {
      const Long share = dot(w, e);
      for (std::size_t j = 0; j < w.size(); ++j) w[j] -= share * e[j];
    }
  };
  for (int i = first; i < s.rows(); ++i) {
    const Values row = valuesOf(s.a.row(i));
    LongVector e(row.begin(), row.end());
    reject(e);
    reject(e);
    const Long length = std::sqrt(dot(e, e));
    for (Long& element : e) element /= length;
    basis.push_back(e);
  }
  reject(v);
  reject(v);
  return v;
}

// The gradient of |A1 x - b1|^2 / 2 along what the constraints leave free, against its terms.
double optimalityDefect(const System& s, const DoubleVec& x) {
  const int equations = s.rows() - s.constraints;
  LongVector gradient(static_cast<std::size_t>(s.cols()), 0);
  Long squares = 0;
  for (int i = 0; i < equations; ++i) {
    const Long r = residual(s, x, i);
    for (int j = 0; j < s.cols(); ++j) {
      gradient[static_cast<std::size_t>(j)] += s.a(i, j) * r;
      squares += Long(s.a(i, j)) * s.a(i, j);
    }
  }
  const LongVector rest = outsideRows(s, equations, gradient);
  const double norm = static_cast<double>(std::sqrt(squares));
  return static_cast<double>(std::sqrt(dot(rest, rest))) /
         (norm * (norm * x.vecLen() + s.b.vecLen()));
}

System randomSystem(Random& random, int turn) {
  const int cols = 2 + random.below(18), rows = cols + random.below(50);
  const int k = random.below(cols / 2 + 1);
  if (turn % 2 == 0) return {randomMatrix(random, rows, cols), k, randomVector(random, rows)};
  const int unknowns = cols + 3;
  return {splineSystem(random, 6 * unknowns, k, unknowns), k,
          randomVector(random, 6 * unknowns + k)};
}

double relativeDistance(const DoubleVec& x, const DoubleVec& y) {
  return largest(x - y) / largest(y);
}

TEST(Householder, MeetsConstraintsAndIsOptimalAmongThem) {
  Random random(10);
  for (int turn = 0; turn < 120; ++turn) {
    const System s = randomSystem(random, turn);
    SCOPED_TRACE(testing::Message() << s.rows() << "x" << s.cols() << ", " << s.constraints);
    DoubleVec x;
    ASSERT_EQ(solve(s, turn % 3 == 0 ? 1e-10 : 1e-14, x), 0);
    EXPECT_LE(worstResidual(s, x, s.rows() - s.constraints), 1e-12);
    EXPECT_LE(optimalityDefect(s, x), 1e-12);
  }
}

TEST(Householder, WithFewerRowsThanColumnsMeetsAllOfThemWithTheLeastNorm) {
  Random random(11);
  for (int turn = 0; turn < 60; ++turn) {
    const int rows = 1 + random.below(12), cols = rows + 5 + random.below(12);
    const System s{randomMatrix(random, rows, cols), 0, randomVector(random, rows)};
    DoubleVec x;
    ASSERT_EQ(solve(s, 0.0, x), 0);
    EXPECT_LE(worstResidual(s, x, 0), 1e-13);
    const Values values = valuesOf(x);
    const LongVector outside = outsideRows(s, 0, LongVector(values.begin(), values.end()));
    EXPECT_LE(std::sqrt(dot(outside, outside)), 1e-12 * x.vecLen());
  }
}

// The system with row i taken from row order[i], and multiplied by scale[i].
System rearranged(const System& s, const std::vector<int>& order, const Values& scale) {
  System r{DoubleGenMat(s.a.rows(), s.a.cols()), s.constraints, DoubleVec(s.b.length())};
  for (int i = 0; i < s.rows(); ++i) {
    const int from = order[static_cast<std::size_t>(i)];
    const double factor = scale[static_cast<std::size_t>(i)];
    r.a.row(i) = s.a.row(from) * factor;
    r.b(i) = s.b(from) * factor;
  }
  return r;
}

TEST(Householder, HangsNeitherOnTheOrderOfRowsNorOnTheScaleOfConstraints) {
  Random random(12);
  for (int turn = 0; turn < 40; ++turn) {
    const System s = randomSystem(random, turn);
    std::vector<int> order(static_cast<std::size_t>(s.rows()));
    std::iota(order.begin(), order.end(), 0);
    const auto firstConstraint = order.end() - s.constraints;
    std::reverse(order.begin(), firstConstraint);
    std::reverse(firstConstraint, order.end());
    Values scale(order.size(), 1.0);
    for (auto i = scale.end() - s.constraints; i != scale.end(); ++i) *i = random.uniform(0.2, 5);
    DoubleVec x, y;
    ASSERT_EQ(solve(s, 1e-14, x), 0);
    ASSERT_EQ(solve(rearranged(s, order, scale), 1e-14, y), 0);
    EXPECT_LE(relativeDistance(y, x), 1e-9);
  }
}

TEST(Householder, NormalisingWeightsEquationsByTheReciprocalOfTheirLength) {
  Random random(13);
  for (int turn = 0; turn < 30; ++turn) {
    const System s = randomSystem(random, turn);
    std::vector<int> order(static_cast<std::size_t>(s.rows()));
    std::iota(order.begin(), order.end(), 0);
    Values weights;
    for (int i : order) weights.push_back(1 / s.a.row(i).vecLen());
    DoubleVec x, y;
    ASSERT_EQ(solve(s, 1e-14, x, true), 0);
    ASSERT_EQ(solve(rearranged(s, order, weights), 1e-14, y), 0);
    EXPECT_LE(relativeDistance(y, x), 1e-9);
  }
}

TEST(Householder, AgreesWithQrWhereNothingIsConstrained) {
  Random random(14);
  const System s{splineSystem(random, 200, 0, 25), 0, randomVector(random, 200)};
  DoubleVec x;
  ASSERT_EQ(solve(s, 1e-14, x), 0);
  TsolveConstrainedLsqQR qr(1e-14, false);
  ASSERT_EQ(qr.setMatrix(s.a, 0, false, false, false), 0);
  EXPECT_LE(relativeDistance(qr.solve(s.b), x), 1e-10);
}

TEST(Householder, RefusesSystemsThatDoNotDetermineTheUnknowns) {
  Random random(15);
  const auto code = [](const DoubleGenMat& a, int k, double tolerance = 1e-10) {
    DoubleVec x;
    return solve({a, k, DoubleVec(a.rows(), 1.0)}, tolerance, x);
  };
  const DoubleGenMat a = randomMatrix(random, 9, 4);
  EXPECT_EQ(code(a, 2), 0);
  EXPECT_EQ(code(DoubleGenMat(5, 3, 0.0), 0), -1);
  EXPECT_EQ(code(DoubleGenMat(3, 5, 0.0), 0), -1);
  DoubleGenMat columnTwice = a.copy();
  columnTwice.col(3) = a.col(0);
  EXPECT_EQ(code(columnTwice, 0), -1);
  DoubleGenMat constraintTwice = a.copy();
  constraintTwice.row(8) = a.row(7);
  EXPECT_EQ(code(constraintTwice, 2), -1);
  EXPECT_EQ(code(constraintTwice, 1), 0);
  EXPECT_EQ(code(a * 1e13, 2), -1);   // the largest norm counts squared
  EXPECT_EQ(code(a * 1e-12, 2), -1);  // below what is applied
  EXPECT_EQ(code(a, 2, 20.0), -1);    // so is everything here
}

TEST(Householder, AcceptsFewerThan65536RowsOrColumns) {
  for (const unsigned size : {65535u, 65536u, 70000u}) {
    for (const bool wide : {false, true}) {
      const DoubleGenMat a(wide ? 1 : size, wide ? size : 1, 0.5);
      Thouseholder solver(1e-10, 0, false);
      EXPECT_EQ(solver.setMatrix(a, 0, false, true, false), size < 65536 ? 0 : -1);
      DoubleVec x(1, 7.0);
      EXPECT_EQ(solver.solve(DoubleVec(a.rows(), 1.0), &x, false), size < 65536 ? 0 : 5);
      EXPECT_EQ(x.length(), wide && size < 65536 ? size : 1);
    }
  }
}

TEST(Householder, CorrectedSolutionsAgreeWithThePlainOne) {
  Random random(16);
  DoubleGenMat a = splineSystem(random, 90, 3, 12);
  a.row(20) = 0.0;  // dropped
  a.col(5) = 0.0;
  const TtupleVector rhs = randomPoints(random, 2, 93);
  for (const bool normalise : {false, true}) {
    Thouseholder solver(1e-14, 0, false);
    EXPECT_EQ(solver.altSolve(rhs, 1).points(), 0);
    ASSERT_EQ(solver.setMatrix(a, 3, normalise, true, false), 0);
    const TtupleVector x = solver.solve(rhs);
    for (const int turns : {-1, 0, 1, 4}) {
      const TtupleVector corrected = solver.altSolve(rhs, turns);
      ASSERT_EQ(corrected.points(), 12);
      EXPECT_LE(largest(corrected.data() - x.data()), turns > 0 ? 1e-11 : 0.0);
      EXPECT_EQ(corrected.point(5)(0), 0.0);
    }
    EXPECT_EQ(largest(solver.altSolve(randomPoints(random, 2, 7), 2).data()), 0.0);
  }
}

TEST(Householder, CopiesKeepTheirFactorisationWhenTheOriginalTakesAnotherSystem) {
  Random random(17);
  const DoubleGenMat first = randomMatrix(random, 9, 4), second = randomMatrix(random, 9, 4);
  const DoubleVec rhs = randomVector(random, 9);
  Thouseholder original(1e-12, 0, false);
  original.setMatrix(first, 1, true, false, false);
  const DoubleVec x = original.solve(rhs);
  const Thouseholder copy(original);
  Thouseholder referring(1e-3, 0, false), deepened(original);
  referring.reference(original);
  deepened.deepenShallowCopy();
  original.setMatrix(second, 0, false, false, false);
  EXPECT_TRUE(copy.solve(rhs) == x);
  EXPECT_TRUE(referring.solve(rhs) == x);
  EXPECT_TRUE(deepened.solve(rhs) == x);
  EXPECT_FALSE(original.solve(rhs) == x);
}

}  // namespace
}  // namespace knotwork::test
