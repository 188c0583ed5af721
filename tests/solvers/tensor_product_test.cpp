// SPDX-License-Identifier: MIT
// Least squares on grids: known control nets come back, prescribed unknowns stay, shapes are told.
#include "knotwork/solvers/solve_tensor_product_lsq.h"

#include <gtest/gtest.h>

#include "knotwork/geometry/tuple_matrix.h"
#include "knotwork/matrix/int_gen_mat.h"
#include "knotwork/solvers/solve_constrained_lsq_qr.h"
#include "solvers/open_solver.h"
#include "solvers/systems.h"
#include "support/values.h"

namespace knotwork::test {
namespace {

struct Directions {
  explicit Directions(double tolerance = 1e-13)
      : u(tolerance, 0, false), v(tolerance, false), grid(u, v) {}
  Thouseholder u;
  TsolveConstrainedLsqQR v;
  TsolveTensorProductLsq grid;
};

double largestDifference(const DoubleGenMat& a, const DoubleGenMat& b) {
  const DoubleGenMat difference = abs(a - b);
  return maxValue(difference.dataVec());
}

IntGenMat randomMask(Random& random, int rows, int cols, int outOf) {
  IntGenMat mask(static_cast<unsigned>(rows), static_cast<unsigned>(cols), 0);
  for (int j = 0; j < cols; ++j)
    for (int i = 0; i < rows; ++i) mask(i, j) = random.below(outOf) == 0 ? 1 : 2 * random.below(2);
  return mask;
}

TEST(TensorProduct, RecoversAControlNetFromItsSamples) {
  Random random(40);
  const DoubleGenMat u = splineSystem(random, 40, 2, 9), v = splineSystem(random, 30, 2, 7);
  Directions d;
  ASSERT_EQ(d.grid.setMatrix(u, v, 2, 0, false, true, true, false, false, false), 0);
  TtupleMatrix net(3, 9, 7, 0.0), samples(3, 42, 32, 0.0), found(3, 9, 7, 0.0);
  for (int c = 0; c < 3; ++c) {
    const DoubleGenMat component = randomMatrix(random, 9, 7);
    net.setComponent(c, component);
    samples.setComponent(c, transProduct(product(u, component), v));
  }
  ASSERT_EQ(d.grid.solve(samples, &found), 0);
  for (int c = 0; c < 3; ++c) {
    EXPECT_LE(largestDifference(found.component(c), net.component(c)), 1e-11);
  }
}

TEST(TensorProduct, SolvesEveryRowAndColumnAsIfAlone) {
  Random random(41);
  const DoubleGenMat u = randomMatrix(random, 9, 4), v = randomMatrix(random, 8, 5),
                     b = randomMatrix(random, 9, 8);
  Directions d;
  ASSERT_EQ(d.grid.setMatrix(u, v, 1, 0, true, false, false, false, false, false), 0);
  DoubleGenMat x(4, 5), between(9, 5), expected(4, 5);
  ASSERT_EQ(d.grid.solve(b, &x), 0);
  for (int i = 0; i < 9; ++i) between.row(i) = d.v.solve(b.row(i));
  for (int j = 0; j < 5; ++j) expected.col(j) = d.u.solve(between.col(j));
  EXPECT_EQ(valuesOf(x.dataVec()), valuesOf(expected.dataVec()));
}

TEST(TensorProduct, KeepsPrescribedUnknownsAndRecoversTheOthers) {
  Random random(42);
  const DoubleGenMat u = splineSystem(random, 40, 2, 9), v = splineSystem(random, 30, 2, 7);
  for (const int outOf : {1, 2, 5, 1000}) {
    for (const double tolerance : {1e-13, 1e-4}) {
      const DoubleGenMat net = randomMatrix(random, 9, 7);
      const IntGenMat mask = randomMask(random, 9, 7, outOf);
      Directions d(tolerance);
      DoubleGenMat x(9, 7, 100.0);
      for (int j = 0; j < 7; ++j)
        for (int i = 0; i < 9; ++i)
          if (mask(i, j) == 1) x(i, j) = net(i, j);
      const DoubleGenMat given = x.copy();
      ASSERT_EQ(d.grid.solveFixed(u, v, mask, transProduct(product(u, net), v), &x), 0);
      EXPECT_LE(largestDifference(x, net), tolerance == 1e-4 ? 1e-3 : 1e-10);
      for (int i = 0; i < 63; ++i) {
        if (mask.dataVec()(i) != 1) continue;
        EXPECT_EQ(x.dataVec()(i), given.dataVec()(i));
      }
    }
  }
}

TEST(TensorProduct, WithTheSameRowsPrescribedEverywhereFindsTheJointMinimum) {
  Random random(44);
  const DoubleGenMat v = randomMatrix(random, 9, 4), b = randomMatrix(random, 12, 9);
  const DoubleGenMat anyU = randomMatrix(random, 12, 5);
  IntGenMat mask(5, 4, 0);
  mask.row(1) = 1;
  mask.row(3) = 1;
  // Without a positive entry cleaning cannot take columns out: the free ones are handed over.
  for (const DoubleGenMat& u : {anyU, -abs(anyU)}) {
    Directions d;
    DoubleGenMat x = randomMatrix(random, 5, 4);
    ASSERT_EQ(d.grid.solveFixed(u, v, mask, b, &x), 0);
    // The gradient U' (U X V' - B) V vanishes in the free rows.
    const DoubleGenMat misfit = transProduct(product(u, x), v) - b;
    const DoubleGenMat gradient = product(transposeProduct(u, misfit), v);
    for (const int i : {0, 2, 4}) EXPECT_LE(maxValue(abs(gradient.row(i))), 1e-12);
    EXPECT_GT(maxValue(abs(gradient.row(1))), 1e-3);
  }
}

TEST(TensorProduct, PointsArePrescribedComponentByComponent) {
  Random random(45);
  const DoubleGenMat u = randomMatrix(random, 8, 4), v = randomMatrix(random, 7, 3);
  const IntGenMat mask = randomMask(random, 4, 3, 3);
  TtupleMatrix b(2, 8, 7, 0.0), x(2, 4, 3, 0.0);
  DoubleGenMat expected[2];
  Thouseholder first(1e-13, 0, false), second(1e-13, 0, false);
  TsolveTensorProductLsq grid(first, second);
  for (int c = 0; c < 2; ++c) {
    b.setComponent(c, randomMatrix(random, 8, 7));
    x.setComponent(c, randomMatrix(random, 4, 3));
    expected[c].reference(x.component(c).copy());
    ASSERT_EQ(grid.solveFixed(u, v, mask, b.component(c), &expected[c]), 0);
  }
  ASSERT_EQ(grid.solveFixed(u, v, mask, b, &x), 0);
  for (int c = 0; c < 2; ++c) {
    EXPECT_EQ(valuesOf(x.component(c).dataVec()), valuesOf(expected[c].dataVec()));
  }
}

TEST(TensorProduct, ShapesThatDoNotFitGiveCodesAndChangeNothing) {
  Random random(46);
  const DoubleGenMat u = randomMatrix(random, 6, 3), v = randomMatrix(random, 5, 2);
  const DoubleGenMat singular(5, 2, 0.0);
  Directions d;
  DoubleGenMat x(3, 2, 7.0), wide(3, 4, 7.0), none(3, 0);
  EXPECT_EQ(d.grid.solve(DoubleGenMat(6, 5, 1.0), &x), 5);  // nothing set yet
  EXPECT_EQ(d.grid.setMatrix(u, singular, 0, 0, 0, 0, 0, 0, 0, 0), -1);
  ASSERT_EQ(d.grid.setMatrix(u, v, 0, 0, 0, 0, 0, 0, 0, 0), 0);
  EXPECT_EQ(d.grid.solve(DoubleGenMat(6, 5), nullptr), 4);
  EXPECT_EQ(d.grid.solve(DoubleGenMat(0, 5), &none), -1);
  EXPECT_EQ(d.grid.solve(DoubleGenMat(0, 5), &x), 4);
  EXPECT_EQ(d.grid.solve(DoubleGenMat(6, 5, 1.0), &wide), 4);
  EXPECT_EQ(d.grid.solve(DoubleGenMat(6, 4, 1.0), &x), 4);
  EXPECT_EQ(d.grid.solve(DoubleGenMat(4, 5, 1.0), &x), 4);
  TtupleMatrix points(2, 6, 5, 1.0), line(1, 3, 2, 7.0);
  EXPECT_EQ(d.grid.solve(points, &line), 4);
  EXPECT_EQ(d.grid.solve(points, nullptr), 4);
  EXPECT_EQ(d.grid.solveFixed(u, v, IntGenMat(3, 2, 1), points, &line), 4);
  for (const int entry : {0, 1}) {
    const DoubleGenMat b(6, 5, 1.0);
    const IntGenMat mask(3, 2, entry);
    EXPECT_EQ(d.grid.solveFixed(u, v, mask, b, static_cast<DoubleGenMat*>(nullptr)), 4);
    EXPECT_EQ(d.grid.solveFixed(u, v, IntGenMat(2, 2, entry), b, &x), 4);
    EXPECT_EQ(d.grid.solveFixed(v, v, mask, b, &x), 4);
    EXPECT_EQ(d.grid.solveFixed(u, u, mask, b, &x), 4);
    EXPECT_EQ(d.grid.solveFixed(u, v, mask, DoubleGenMat(6, 4, 1.0), &x), 4);
    EXPECT_EQ(d.grid.solveFixed(u, singular, mask, b, &x), -1);
  }
  EXPECT_EQ(valuesOf(x.dataVec()), Values(6, 7.0));
}

}  // namespace
}  // namespace knotwork::test
