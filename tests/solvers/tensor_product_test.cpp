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

// u by Householder, v by QR.
struct Grid {
  explicit Grid(double tolerance = 1e-13) : u(tolerance, 0, false), v(tolerance, false) {}
  Thouseholder u;
  TsolveConstrainedLsqQR v;
  TsolveTensorProductLsq grid{u, v};
};

double largest(const DoubleGenMat& m) { return maxValue(abs(m).dataVec()); }

IntGenMat randomMask(Random& random, int rows, int cols, int outOf) {
  IntGenMat mask(unsigned(rows), unsigned(cols), 0);
  for (int j = 0; j < cols; ++j)
    for (int i = 0; i < rows; ++i) mask(i, j) = random.below(outOf) == 0 ? 1 : 2 * random.below(2);
  return mask;
}

TEST(TensorProduct, KeepsPrescribedUnknownsAndRecoversTheOthers) {
  Random random(42);
  const DoubleGenMat u = splineSystem(random, 40, 2, 9), v = splineSystem(random, 30, 2, 7);
  for (const int outOf : {1, 2, 5, 1000}) {
    for (const double tolerance : {1e-13, 1e-4}) {
      const DoubleGenMat net = random.matrix(9, 7);
      const IntGenMat mask = randomMask(random, 9, 7, outOf);
      DoubleGenMat x = net.copy();
      for (int i = 0; i < 63; ++i)
        if (mask.dataVec()(i) != 1) x.dataVec()(i) = 100.0;
      const DoubleGenMat b = transProduct(product(u, net), v);
      TtupleMatrix points(2, 42, 32, 0.0), found(2, 9, 7, 0.0);
      for (int c : {0, 1}) {
        points.setComponent(c, (1.0 - 2 * c) * b);
        found.setComponent(c, (1.0 - 2 * c) * x);
      }
      // Of their own: QR keeps its order of columns.
      ASSERT_EQ(Grid(tolerance).grid.solveFixed(u, v, mask, points, &found), 0);
      ASSERT_EQ(Grid(tolerance).grid.solveFixed(u, v, mask, b, &x), 0);
      EXPECT_TRUE(found.component(0) == x && found.component(1) == -x);
      EXPECT_LE(largest(x - net), tolerance == 1e-4 ? 1e-3 : 1e-10);
      for (int i = 0; i < 63; ++i)
        EXPECT_TRUE(mask.dataVec()(i) != 1 || x.dataVec()(i) == net.dataVec()(i));
    }
  }
}

TEST(TensorProduct, WithTheSameRowsPrescribedEverywhereFindsTheJointMinimum) {
  Random random(44);
  const DoubleGenMat v = random.matrix(9, 4), b = random.matrix(12, 9), anyU = random.matrix(12, 5);
  IntGenMat mask(5, 4, 0);
  mask.row(1) = mask.row(3) = 1;
  // Without a positive entry cleaning cannot take columns out: the free ones are handed over.
  for (const DoubleGenMat& u : {anyU, -abs(anyU)}) {
    DoubleGenMat x = random.matrix(5, 4);
    ASSERT_EQ(Grid().grid.solveFixed(u, v, mask, b, &x), 0);
    // The gradient U' (U X V' - B) V vanishes in the free rows.
    const DoubleGenMat misfit = transProduct(product(u, x), v) - b;
    const DoubleGenMat gradient = product(transposeProduct(u, misfit), v);
    for (const int i : {0, 2, 4}) EXPECT_LE(maxValue(abs(gradient.row(i))), 1e-12);
    EXPECT_GT(maxValue(abs(gradient.row(1))), 1e-3);
  }
}

TEST(TensorProduct, ShapesThatDoNotFitGiveCodesAndChangeNothing) {
  Random random(46);
  const DoubleGenMat u = random.matrix(6, 3), v = random.matrix(5, 2), singular(5, 2, 0.0),
                     b(6, 5, 1.0);
  Grid g;
  const TsolveTensorProductLsq& grid = g.grid;
  DoubleGenMat x(3, 2, 7.0), wide(3, 4, 7.0), none(3, 0);
  EXPECT_EQ(grid.solve(b, &x), 5);  // nothing set yet
  EXPECT_EQ(g.grid.setMatrix(u, singular, 0, 0, 0, 0, 0, 0, 0, 0), -1);
  ASSERT_EQ(g.grid.setMatrix(u, v, 0, 0, 0, 0, 0, 0, 0, 0), 0);
  EXPECT_EQ(grid.solve(b, nullptr), 4);
  EXPECT_EQ(grid.solve(b, &wide), 4);
  EXPECT_EQ(grid.solve(DoubleGenMat(0, 5), &none), -1);
  for (const auto& [rows, cols] : {std::pair(0u, 5u), {6u, 4u}, {4u, 5u}})
    EXPECT_EQ(grid.solve(DoubleGenMat(rows, cols, 1.0), &x), 4);
  TtupleMatrix points(2, 6, 5, 1.0), line(1, 3, 2, 7.0);
  EXPECT_EQ(grid.solve(points, &line), 4);
  EXPECT_EQ(grid.solve(points, nullptr), 4);
  EXPECT_EQ(g.grid.solveFixed(u, v, IntGenMat(3, 2, 1), points, &line), 4);
  for (const int entry : {0, 1}) {
    const IntGenMat mask(3, 2, entry);
    DoubleGenMat* const nothing = nullptr;
    EXPECT_EQ(g.grid.solveFixed(u, v, mask, b, nothing), 4);
    EXPECT_EQ(g.grid.solveFixed(u, v, IntGenMat(2, 2, entry), b, &x), 4);
    EXPECT_EQ(g.grid.solveFixed(v, v, mask, b, &x), 4);
    EXPECT_EQ(g.grid.solveFixed(u, u, mask, b, &x), 4);
    EXPECT_EQ(g.grid.solveFixed(u, v, mask, DoubleGenMat(6, 4, 1.0), &x), 4);
    EXPECT_EQ(g.grid.solveFixed(u, singular, mask, b, &x), -1);
  }
  EXPECT_EQ(valuesOf(x.dataVec()), Values(6, 7.0));
}

}  // namespace
}  // namespace knotwork::test
