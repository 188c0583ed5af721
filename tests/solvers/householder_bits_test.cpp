// SPDX-License-Identifier: MIT
// The Householder solver against its definition, bit for bit: whatever is passed over, put
// together or reordered for speed must not show.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

#include "solvers/open_solver.h"
#include "solvers/slow_householder.h"
#include "solvers/systems.h"
#include "support/values.h"

namespace knotwork::test {
namespace {

// Whether `got` starts with these very bits; one NaN is as good as another.
bool startsWith(const DoubleVec& got, const Values& want) {
  const auto same = [](double x, double y) {
    return std::bit_cast<std::uint64_t>(x) == std::bit_cast<std::uint64_t>(y) ||
           (std::isnan(x) && std::isnan(y));
  };
  const Values all = valuesOf(got);
  return want.size() <= all.size() && std::equal(want.begin(), want.end(), all.begin(), same);
}

void expectSameBits(const DoubleGenMat& a, int constraints, double tolerance, Random& random,
                    int dimension = 3) {
  Thouseholder fast(tolerance, 0, false);
  const int code = fast.setMatrix(a, constraints, false, false, false);
  const SlowHouseholder slow(a, fast.*Open::constraintRows, tolerance);
  EXPECT_EQ(code, slow.solvable ? 0 : -1);
  EXPECT_TRUE(startsWith((fast.*Open::factorMatrix).dataVec(), slow.F));
  EXPECT_TRUE(startsWith(fast.*Open::sigma, slow.sigma));
  EXPECT_TRUE(startsWith(fast.*Open::beta, slow.beta));
  EXPECT_TRUE(startsWith(fast.*Open::norms, slow.norms));
  EXPECT_TRUE(indices(slow.rowPerm) == fast.*Open::rowPerm);
  EXPECT_TRUE(indices(slow.colPerm) == fast.*Open::colPerm);
  if (code != 0) return;
  TtupleVector rhs = random.points(dimension, static_cast<int>(a.rows()));
  if (a.rows() > 2) rhs.component(0)(1) = -0.0;
  TtupleVector x(dimension, static_cast<int>(a.cols()), 7.0);
  std::vector<Values> expected;
  bool isNumber = true;
  for (int c = 0; c < dimension; ++c) {
    expected.push_back(slow.solve(valuesOf(rhs.component(c))));
    for (const double value : expected.back()) isNumber &= !std::isnan(value);
  }
  EXPECT_EQ(fast.solve(rhs, &x, false), isNumber ? 0 : 5);
  for (int c = 0; const Values& component : expected) {
    EXPECT_TRUE(startsWith(x.component(c++), isNumber ? component : Values(a.cols(), 7.0)));
  }
}

TEST(HouseholderBits, RandomSystemsOfEveryShape) {
  Random random(1);
  for (int turn = 0; turn < 300; ++turn) {
    const int rows = random.below(24), cols = random.below(16), k = random.below(rows + 2);
    SCOPED_TRACE(testing::Message() << rows << "x" << cols << ", " << k << " constraints");
    DoubleGenMat a = random.matrix(rows, cols);
    const int zeros = turn % 3 == 0 ? 0 : rows * cols * (turn % 3) / 3;
    for (int z = 0; z < zeros; ++z) a(random.below(rows), random.below(cols)) = 0;
    if (turn % 4 == 1) {  // norms fade, slowly and fast
      for (int i = 0; i < rows; ++i) a.row(i) *= std::pow(10.0, -random.below(4));
      for (int j = 0; j < cols; ++j) a.col(j) *= std::pow(2.0, -random.below(12));
    }
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

TEST(HouseholderBits, SignedZerosTinyHugeAndNoNumbers) {
  Random random(3);
  for (const double input :
       {-0.0, 1e-160, 1e-310, 1e120, 1e200, -1e308, HUGE_VAL, -HUGE_VAL, std::nan("")}) {
    SCOPED_TRACE(input);
    for (const double tolerance : {0.0, 1e-10}) {
      for (const int row : {3, 151}) {
        DoubleGenMat a = splineSystem(random, 150, 4, 30);
        a(row, 6) = input;
        expectSameBits(a, 4, tolerance, random);
        a.row(row) = input;
        expectSameBits(a, 4, tolerance, random);
        for (int turn = 0; turn < 90; ++turn) a(random.below(154), random.below(30)) = input;
        expectSameBits(a, 4, tolerance, random);
        a *= input;  // all of them
        expectSameBits(a, 4, tolerance, random);
      }
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
