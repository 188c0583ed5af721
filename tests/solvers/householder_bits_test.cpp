// SPDX-License-Identifier: MIT
// The Householder solver against its definition, bit for bit: whatever is passed over, put
// together or reordered for speed must not show.
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>

#include "solvers/open_solver.h"
#include "solvers/slow_householder.h"
#include "solvers/systems.h"
#include "support/values.h"

namespace knotwork::test {
namespace {

// Index of the first number whose bits differ, -1 for none; one NaN is as good as another.
int firstDifference(const double* a, const double* b, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) {
    if (std::isnan(a[i]) && std::isnan(b[i])) continue;
    if (std::bit_cast<std::uint64_t>(a[i]) != std::bit_cast<std::uint64_t>(b[i])) {
      return static_cast<int>(i);
    }
  }
  return -1;
}

int firstDifference(const Values& a, const DoubleVec& b) {
  if (a.size() > b.length()) return 0;
  return firstDifference(a.data(), valuesOf(b).data(), a.size());
}

// Component c of a list of points.
Values componentOf(const TtupleVector& list, int c) { return valuesOf(list.component(c)); }

void expectSameBits(const DoubleGenMat& a, int constraints, double tolerance, Random& random,
                    int dimension = 3) {
  Thouseholder fast(tolerance, 0, false);
  const int code = fast.setMatrix(a, constraints, false, false, false);
  const int k = fast.*Open::constraintRows;
  const SlowHouseholder slow(a, k, tolerance);
  EXPECT_EQ(code, slow.solvable ? 0 : -1);
  EXPECT_EQ(firstDifference(slow.F, (fast.*Open::factorMatrix).dataVec()), -1);
  EXPECT_EQ(firstDifference(slow.sigma, fast.*Open::sigma), -1);
  EXPECT_EQ(firstDifference(slow.beta, fast.*Open::beta), -1);
  EXPECT_TRUE(indices(slow.rowPerm) == fast.*Open::rowPerm);
  EXPECT_TRUE(indices(slow.colPerm) == fast.*Open::colPerm);
  if (code != 0) return;
  const int rows = static_cast<int>(a.rows()), cols = static_cast<int>(a.cols());
  TtupleVector rhs = randomPoints(random, dimension, rows);
  if (rows > 2) rhs.component(0)(1) = -0.0;
  TtupleVector x(dimension, cols, 0.0);
  ASSERT_EQ(fast.solve(rhs, &x, false), 0);
  for (int c = 0; c < dimension; ++c) {
    EXPECT_EQ(firstDifference(slow.solve(componentOf(rhs, c)), vectorOf(componentOf(x, c))), -1);
  }
}

TEST(HouseholderBits, RandomSystemsOfEveryShape) {
  Random random(1);
  for (int turn = 0; turn < 300; ++turn) {
    const int rows = random.below(24), cols = random.below(16), k = random.below(rows + 2);
    SCOPED_TRACE(testing::Message() << rows << "x" << cols << ", " << k << " constraints");
    DoubleGenMat a = randomMatrix(random, rows, cols);
    const int zeros = turn % 3 == 0 ? 0 : rows * cols * (turn % 3) / 3;
    for (int z = 0; z < zeros; ++z) a(random.below(rows), random.below(cols)) = 0;
    const double tolerances[] = {1e-10, 0, 1e-3, 0.3};
    expectSameBits(a, k, tolerances[turn % 4], random, 1 + turn % 9);
  }
}

TEST(HouseholderBits, SplineSystemsWhoseZerosFillUp) {
  Random random(2);
  for (const double tolerance : {1e-10, 1e-4, 0.0}) {
    for (const int constraints : {0, 2, 9}) {
      expectSameBits(splineSystem(random, 400, constraints, 60), constraints, tolerance, random);
    }
  }
  expectSameBits(splineSystem(random, 10, 11, 60), 0, 1e-10, random);  // fewer rows than columns
}

TEST(HouseholderBits, SignedZerosAndTinyAndHugeEntries) {
  Random random(3);
  const double inputs[] = {-0.0, 1e-160, 1e-310, 1e120, 1e200, -1e308};
  for (const double input : inputs) {
    for (const double tolerance : {0.0, 1e-10}) {
      DoubleGenMat a = splineSystem(random, 150, 4, 30);
      for (int turn = 0; turn < 90; ++turn) a(random.below(154), random.below(30)) = input;
      SCOPED_TRACE(input);
      expectSameBits(a, 4, tolerance, random);
      a *= input;  // all of them
      expectSameBits(a, 4, tolerance, random);
    }
  }
}

TEST(HouseholderBits, EntriesThatAreNotFiniteSpreadAlike) {
  Random random(4);
  const double inf = std::numeric_limits<double>::infinity();
  for (const double input : {inf, -inf, std::numeric_limits<double>::quiet_NaN()}) {
    for (const int row : {3, 41}) {
      DoubleGenMat a = splineSystem(random, 40, 4, 12);
      a(row, 6) = input;
      expectSameBits(a, 4, 1e-10, random);
      a.row(row) = input;
      expectSameBits(a, 4, 1e-10, random);
    }
  }
}

TEST(HouseholderBits, ATinyPivotEndsThePassingOverOfZeros) {
  // Its reflection's factor overflows, and 0 times infinity is not 0.
  Random random(5);
  DoubleGenMat a(8, 3, 0.0);
  a(0, 0) = 1e-170;
  a(5, 0) = 1e-169;
  a(1, 1) = 1;
  a(0, 2) = 1e90;
  a(6, 2) = 1e-170;
  expectSameBits(a, 0, 0.0, random);
  expectSameBits(transpose(a), 0, 0.0, random);
}

}  // namespace
}  // namespace knotwork::test
