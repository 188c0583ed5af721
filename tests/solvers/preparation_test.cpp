// SPDX-License-Identifier: MIT
// Prescribed unknowns, what systems and right-hand sides are left alone, and what bad input gets.
#include <gtest/gtest.h>

#include <cmath>

#include "knotwork/matrix/int_gen_mat.h"
#include "knotwork/solvers/solve_tensor_product_lsq.h"
#include "solvers/open_solver.h"
#include "solvers/systems.h"
#include "support/recorded_errors.h"
#include "support/values.h"

namespace knotwork::test {
namespace {

TEST(Preparation, LeavesTheMatrixGivenAloneAndAcceptsTheSolversOwn) {
  Random random(20);
  DoubleGenMat a = random.matrix(6, 3);
  a(2, 1) = 1e-5;
  const DoubleGenMat before = a.copy();
  Thouseholder solver(1e-3, 2, true);
  ASSERT_EQ(solver.setMatrix(a, 1, true, true, true), 0);
  EXPECT_TRUE(a == before);
  const DoubleGenMat prepared = (solver.*Open::matrix).copy();
  for (const auto own : {Open::matrix, Open::keptMatrix}) {
    ASSERT_EQ(solver.setMatrix(solver.*own, 1, false, false, false), 0);
    EXPECT_TRUE(solver.*own == prepared);
  }
}

// The estimate is strict: a gap of 20 below the first value under 1, or of 2, is none.
TEST(Preparation, FindsAGapOnlyBeyondItsFactors) {
  const auto estimate = [](double second, double third) {
    DoubleGenMat a(3, 3, 0.0);
    a.diagonal() = vectorOf({0.625, second, third});
    return Open::estimate(a);
  };
  EXPECT_EQ(estimate(0.125, 0.03125) + estimate(0.03125, 0.015625), 0.0);
  EXPECT_GT(estimate(0.125, 0.03124), 0.0);
  EXPECT_GT(estimate(0.03125, 0.015624), 0.0);
}

TEST(Prescribed, ValuesComeBackBitForBitAndTheRestSolvesWithoutThem) {
  Random random(23);
  for (const bool drops : {false, true}) {
    for (const bool normalises : {false, true}) {
      DoubleGenMat a = random.matrix(30, 8);
      if (drops) a.row(4) = 0.0;
      Thouseholder solver(1e-12, 0, true);
      ASSERT_EQ(solver.setMatrix(a, indices({1, 6}), 2, normalises, true, false), 0);
      const TtupleVector rhs = random.points(2, 30), given = random.points(2, 8);
      TtupleVector x = given.copy();
      ASSERT_EQ(solver.solve(rhs, &x, true), 0);
      const DoubleVec prescribed = given.component(1), found = x.component(1);
      const DoubleVec y =
          solver.solve(rhs.component(1) - a.col(1) * prescribed(1) - a.col(6) * prescribed(6));
      for (int j = 0; j < 8; ++j) {
        const bool isFixed = j == 1 || j == 6;
        EXPECT_EQ(found(j), isFixed ? prescribed(j) : y(j));
        EXPECT_TRUE(!isFixed || y(j) == 0.0);
      }
      // Without dropped rows, data beyond the system leave open what is subtracted where.
      EXPECT_EQ(solver.solve(random.points(2, 31), &x, true), drops ? 0 : 4);
    }
  }
}

TEST(Solve, WritesTheResultOnlyWhenItIsOneAndMayWriteOverTheRightHandSide) {
  Random random(25);
  Thouseholder solver(1e-12, 0, false);
  DoubleVec x(2, 7.0), b = random.vector(5);
  const DoubleVec view(b);
  EXPECT_EQ(solver.solve(b, &x, false), 5);  // nothing set yet
  ASSERT_EQ(solver.setMatrix(random.matrix(5, 5), 0, false, false, false), 0);
  EXPECT_EQ(solver.solve(DoubleVec(4, 1.0), &x, false), 4);
  EXPECT_EQ(valuesOf(x), Values(2, 7.0));
  EXPECT_EQ(solver.solve(b, &x, false), 0);
  EXPECT_EQ(solver.solve(b, &b, false), 0);
  EXPECT_EQ(valuesOf(view), valuesOf(x));  // its storage was not replaced
  EXPECT_EQ(valuesOf(solver.solve(DoubleVec(4, 1.0))), Values(5, 0.0));
}

TEST(Solve, WorksOnTheCallersRightHandSideIfToldToUnlessValuesArePrescribed) {
  Random random(26);
  Thouseholder solver(1e-12, 0, true);
  const DoubleGenMat a = random.matrix(6, 3);
  ASSERT_EQ(solver.setMatrix(a, 1, false, false, false), 0);
  const DoubleVec rhs = random.vector(6), x = solver.solve(rhs);
  solver.*Open::copyRhs = false;
  DoubleVec used = rhs.copy(), prescribed(3, 1.0);
  EXPECT_TRUE(solver.solve(used) == x && used != rhs);
  used = rhs;
  ASSERT_EQ(solver.setMatrix(a, indices({1}), 0, false, true, false), 0);
  EXPECT_EQ(solver.solve(used, &prescribed, true), 0);
  EXPECT_TRUE(used == rhs);
}

TEST(BadInput, NothingUsableLeavesOldListsThatNothingReadsPast) {
  Random random(27);
  for (const int cols : {2, 5, 19, 25}) {
    Thouseholder solver(1e-12, 0, true);
    const IntVec all(static_cast<unsigned>(cols), 0, 1);
    ASSERT_EQ(solver.setMatrix(random.matrix(30, 20), indices({3}), 0, 0, true, 0), 0);
    EXPECT_EQ(solver.setMatrix(random.matrix(cols + 3, cols), all, 0, false, true, false), 0);
    DoubleVec x(all.length(), 1.0);
    for (const bool keep : {false, true}) EXPECT_EQ(solver.solve(DoubleVec(40), &x, keep), 4);
    EXPECT_EQ(solver.solve(DoubleVec(all.length() + 3), &x, true), 4);
  }
}

TEST(BadInput, EmptySystemsAreSolved) {
  BothSolvers both;
  for (TsolveConstrainedLsq* s : both.all) {
    for (const auto& [rows, cols] : {std::pair(0u, 0u), {3u, 0u}, {0u, 3u}}) {
      for (const bool flags : {false, true}) {
        const DoubleGenMat none(rows, cols);
        EXPECT_EQ(s->setMatrix(none, indices({0}), 2, flags, flags, flags), 0);
        EXPECT_EQ(valuesOf(s->solve(DoubleVec(rows, 1.0))), Values(cols, 0.0));
        EXPECT_EQ(s->solve(TtupleVector(20, int(rows), 1.0)).points(), int(cols));
      }
    }
  }
}

TEST(BadInput, MatricesOnVectorsThatAreTooShortAreNotReadPast) {
  RecordedErrors errors;
  const DoubleVec five(5, 1.0);
  const DoubleGenMat torn(five, 4, 3), whole(4, 3, 1.0), b(4, 4, 1.0), tornData(five, 4, 4);
  Thouseholder solver(1e-12, 0, true);
  EXPECT_EQ(solver.setMatrix(torn, 1, true, true, true), 0);
  EXPECT_EQ(solver.solve(DoubleVec(4, 1.0)).length() + solver.altMatrix().cols(), 3u + 2u);
  IntVec rows, cols;
  EXPECT_TRUE(TsolveSystems::findZero(torn, IntVec(), rows, cols, 0.5));
  EXPECT_EQ(rows.length() + cols.length(), 4u + 2u);
  TsolveTensorProductLsq grid(solver, solver);
  DoubleGenMat x(3, 3, 7.0), tornResult(five, 3, 3);
  const IntGenMat mask(3, 3, 1), tornMask(IntVec(5, 1), 3, 3);
  EXPECT_EQ(grid.solveFixed(torn, whole, mask, b, &x), 4);
  EXPECT_EQ(grid.solveFixed(whole, torn, mask, b, &x), 4);
  EXPECT_EQ(grid.solveFixed(whole, whole, tornMask, b, &x), 4);
  EXPECT_EQ(grid.solveFixed(whole, whole, mask, tornData, &x), 4);
  EXPECT_EQ(grid.solveFixed(whole, whole, mask, b, &tornResult), 4);
  EXPECT_NE(grid.solve(tornData, &x), 0);
  EXPECT_NE(grid.solve(b, &tornResult), 0);
}

TEST(Qr, LengthsMustBeRightAndFreeUnknownsAreZero) {
  TsolveConstrainedLsqQR solver(1e-9, false);
  const DoubleGenMat a(7, 1, 3.0);
  DoubleVec b(7, 1.0), x(1), tooLong(2);
  ASSERT_EQ(solver.setMatrix(a, 0, true, false, false), 0);
  EXPECT_EQ(solver.solveInPlace(b, nullptr), 4);
  EXPECT_EQ(solver.solveInPlace(b, &tooLong), 4);
  EXPECT_EQ(solver.solveInPlace(tooLong, &x), 4);
  EXPECT_EQ(solver.rwSolve().numFreeCols(), 0u);
  solver.tolerance() = 1e9;
  ASSERT_EQ(solver.setMatrix(a, 0, false, false, false), 0);
  EXPECT_EQ(valuesOf(solver.solve(b)), Values{0.0});
}

TEST(NotANumber, IsNoSolutionWhereverItCameFrom) {
  Random random(31);
  const DoubleGenMat a = random.matrix(7, 4);
  DoubleGenMat broken = a.copy();
  broken(2, 3) = std::nan("");
  TtupleVector rhs = random.points(2, 7);
  rhs.point(6)(1) = std::nan("");
  BothSolvers both;
  for (TsolveConstrainedLsq* s : both.all) {
    TtupleVector x(2, 4, 7.0);
    DoubleVec one(4, 7.0);
    ASSERT_EQ(s->setMatrix(a, 0, false, false, false), 0);
    EXPECT_EQ(s->solve(rhs, &x, false), 5);
    EXPECT_EQ(s->solve(rhs.component(0), &one, false), 0);
    EXPECT_EQ(s->setMatrix(broken, 0, true, true, true), -1);
    EXPECT_EQ(s->solve(rhs.component(0), &one, false), 5);
    EXPECT_EQ(valuesOf(x), Values(8, 7.0));
  }
  ASSERT_EQ(both.householder.setMatrix(a, 0, false, false, false), 0);
  EXPECT_EQ(sum(abs(both.householder.altSolve(rhs, 3))), 0.0);
}

}  // namespace
}  // namespace knotwork::test
