// SPDX-License-Identifier: MIT
// Which rows and columns take part, prescribed unknowns, and what bad input gets.
#include <gtest/gtest.h>

#include <cstdarg>
#include <limits>

#include "knotwork/matrix/int_gen_mat.h"
#include "knotwork/solvers/solve_constrained_lsq_qr.h"
#include "knotwork/solvers/solve_tensor_product_lsq.h"
#include "solvers/open_solver.h"
#include "solvers/systems.h"
#include "support/failing_new.h"
#include "support/recorded_errors.h"
#include "support/values.h"

namespace knotwork::test {
namespace {

const double kNan = std::numeric_limits<double>::quiet_NaN();

TEST(Preparation, LeavesTheMatrixGivenAloneAndAcceptsTheSolversOwn) {
  Random random(20);
  DoubleGenMat a = randomMatrix(random, 6, 3);
  a(2, 1) = 1e-5;
  const Values before = valuesOf(a.dataVec());
  Thouseholder solver(1e-3, 2, true);
  ASSERT_EQ(solver.setMatrix(a, 1, true, true, true), 0);
  EXPECT_EQ(valuesOf(a.dataVec()), before);
  const Values prepared = valuesOf((solver.*Open::matrix).dataVec());
  ASSERT_EQ(solver.setMatrix(solver.*Open::matrix, 1, false, false, false), 0);
  EXPECT_EQ(valuesOf((solver.*Open::matrix).dataVec()), prepared);
  ASSERT_EQ(solver.setMatrix(solver.*Open::keptMatrix, 1, false, false, false), 0);
  EXPECT_EQ(valuesOf((solver.*Open::keptMatrix).dataVec()), prepared);
}

TEST(Preparation, TheSameSystemTwiceGivesTheSameBits) {
  Random random(21);
  const DoubleGenMat a = splineSystem(random, 80, 3, 15);
  const DoubleVec rhs = randomVector(random, 83);
  const Values before = valuesOf(rhs);
  Thouseholder solver(1e-10, 0, false);
  solver.setMatrix(a, 3, true, true, false);
  const DoubleVec x = solver.solve(rhs), again = solver.solve(rhs);
  solver.setMatrix(a, 3, true, true, false);
  EXPECT_EQ(valuesOf(x), valuesOf(again));
  EXPECT_EQ(valuesOf(x), valuesOf(solver.solve(rhs)));
  EXPECT_EQ(valuesOf(rhs), before);
}

TEST(Preparation, NormalisedRowsHaveUnitLength) {
  Random random(22);
  DoubleGenMat a = randomMatrix(random, 70, 5);
  a.row(40) = 0.0;
  const DoubleGenMat given = a.copy();
  Thouseholder solver(1e-10, 0, true);
  solver.setMatrix(a, 0, true, false, false);
  EXPECT_EQ(valuesOf((solver.*Open::keptMatrix).dataVec()), valuesOf(given.dataVec()));
  for (int i = 0; i < 70; ++i) {
    const double length = given.row(i).vecLen();
    EXPECT_EQ(solver.rhsMult()(i), i == 40 ? 0.0 : 1 / length);
    EXPECT_NEAR((solver.*Open::matrix).row(i).vecLen(), i == 40 ? 0.0 : 1.0, 1e-15);
  }
}

TEST(Preparation, KeepsLeadingEntriesAndALargerDiagonal) {
  const double rows[] = {5, 1, 2, 3, 0.5, 4, 7, 7, 1, 2, 6, 7, 3, 1, 1, 1, kNan, 1, 1, 9};
  const DoubleGenMat a = transpose(DoubleGenMat(rows, 4, 5));
  struct Limited : Thouseholder {
    explicit Limited(int n) : Thouseholder(1e-10, n, false) {}
    Values kept(const DoubleGenMat& m) {
      matrix_.reference(m.copy());
      zeroOutCount();
      return valuesOf(transpose(matrix_).dataVec());
    }
  };
  // A larger diagonal takes one place after the other; the fifth row has none.
  const Values two{5, 0, 0, 0, 0, 4, 0, 0, 0, 0, 6, 0, 3, 1, 0, 0, 0, 1, 0, 0};
  Values got = Limited(2).kept(a);
  EXPECT_TRUE(std::isnan(got[16]));
  got[16] = 0;
  EXPECT_EQ(got, two);
  for (const int unlimited : {-1, 0, 4, 9}) {
    Values all = Limited(unlimited).kept(a);
    EXPECT_EQ(Values(all.begin(), all.begin() + 16), Values(rows, rows + 16));
  }
}

TEST(Prescribed, ValuesComeBackBitForBitAndTheRestSolvesWithoutThem) {
  Random random(23);
  for (int turn = 0; turn < 30; ++turn) {
    const int cols = 8, rows = 30;
    DoubleGenMat a = randomMatrix(random, rows, cols);
    if (turn % 2 == 0) a.row(4) = 0.0;
    const IntVec fixed = indices({1, 6});
    Thouseholder solver(1e-12, 0, true);
    ASSERT_EQ(solver.setMatrix(a, fixed, 2, turn % 3 == 0, true, false), 0);
    const TtupleVector rhs = randomPoints(random, 2, rows);
    TtupleVector x = randomPoints(random, 2, cols);
    const TtupleVector given = x.copy();
    ASSERT_EQ(solver.solve(rhs, &x, true), 0);

    DoubleGenMat prescribed(2, 2);
    DoubleVec left = rhs.component(1);
    for (int j : {1, 6}) {
      EXPECT_EQ(valuesOf(x.point(j)), valuesOf(given.point(j)));
      left -= a.col(j) * given.point(j)(1);
    }
    DoubleVec y(static_cast<unsigned>(cols), 0.0);
    ASSERT_EQ(solver.solve(left, &y, false), 0);
    for (int j : {0, 2, 3, 4, 5, 7}) EXPECT_EQ(y(j), x.point(j)(1));
    EXPECT_EQ(y(1), 0.0);
  }
}

TEST(Prescribed, IsIgnoredForAnotherSizeOrWithAllColumnsInUseAndRefusedWithoutTheMatrix) {
  Random random(24);
  const DoubleGenMat a = randomMatrix(random, 9, 4);
  const DoubleVec rhs = randomVector(random, 9);
  for (const bool keepOriginal : {true, false}) {
    Thouseholder solver(1e-12, 0, keepOriginal);
    solver.setMatrix(a, indices({2}), 0, false, true, false);
    DoubleVec shorter(3, 5.0), right(4, 5.0);
    EXPECT_EQ(solver.solve(rhs, &shorter, true), 0);
    EXPECT_EQ(shorter(2), 0.0);
    EXPECT_EQ(solver.solve(rhs, &right, true), keepOriginal ? 0 : 4);
    EXPECT_EQ(right(2), 5.0);
    EXPECT_EQ(solver.solve(DoubleVec(10, 1.0), &right, true), 4);  // longer than the system
    TtupleVector flat(1, 4, 5.0);
    EXPECT_EQ(solver.solve(randomPoints(random, 2, 9), &flat, true), 0);
    EXPECT_EQ(flat.size(), 2);
    EXPECT_EQ(flat.point(2)(0), 0.0);
    solver.setMatrix(a, 0, false, true, false);
    EXPECT_EQ(solver.solve(rhs, &right, true), 0);
    EXPECT_NE(right(2), 5.0);
  }
}

TEST(Solve, WritesTheResultOnlyWhenItIsOneAndMayWriteOverTheRightHandSide) {
  Random random(25);
  const DoubleGenMat a = randomMatrix(random, 5, 5);
  Thouseholder solver(1e-12, 0, false);
  DoubleVec x(2, 7.0);
  EXPECT_EQ(solver.solve(DoubleVec(5, 1.0), &x, false), 5);  // nothing set yet
  ASSERT_EQ(solver.setMatrix(a, 0, false, false, false), 0);
  EXPECT_EQ(solver.solve(DoubleVec(4, 1.0), &x, false), 4);
  EXPECT_EQ(solver.solve(DoubleVec(5, 1.0), nullptr, false), 4);
  EXPECT_EQ(valuesOf(x), Values(2, 7.0));
  DoubleVec b = randomVector(random, 5);
  const DoubleVec view(b);
  solver.solve(b, &x, false);
  EXPECT_EQ(solver.solve(b, &b, false), 0);
  EXPECT_EQ(valuesOf(b), valuesOf(x));
  EXPECT_EQ(valuesOf(view), valuesOf(x));  // its storage was not replaced
  EXPECT_EQ(valuesOf(solver.solve(DoubleVec(4, 1.0))), Values(5, 0.0));
}

TEST(Solve, WorksOnTheCallersRightHandSideIfToldToUnlessValuesArePrescribed) {
  Random random(26);
  Thouseholder solver(1e-12, 0, true);
  const DoubleGenMat a = randomMatrix(random, 6, 3);
  solver.setMatrix(a, 1, false, false, false);
  const DoubleVec rhs = randomVector(random, 6);
  const DoubleVec x = solver.solve(rhs);
  solver.*Open::copyRhs = false;
  DoubleVec used = rhs.copy();
  EXPECT_EQ(valuesOf(solver.solve(used)), valuesOf(x));
  EXPECT_NE(valuesOf(used), valuesOf(rhs));
  used = rhs;
  solver.setMatrix(a, indices({1}), 0, false, true, false);
  DoubleVec prescribed(3, 1.0);
  EXPECT_EQ(solver.solve(used, &prescribed, true), 0);
  EXPECT_EQ(valuesOf(used), valuesOf(rhs));
}

TEST(BadInput, NothingUsableLeavesOldListsThatNothingReadsPast) {
  Random random(27);
  for (const bool keep : {false, true}) {
    Thouseholder solver(1e-12, 0, keep);
    ASSERT_EQ(solver.setMatrix(randomMatrix(random, 30, 20), indices({3}), 0, false, true, false),
              0);
    for (const int cols : {2, 5, 19, 25}) {
      const DoubleGenMat a = randomMatrix(random, cols + 3, cols);
      IntVec all(static_cast<unsigned>(cols), 0, 1);
      solver.setMatrix(a, all, 0, false, true, false);
      DoubleVec x(static_cast<unsigned>(cols), 1.0);
      EXPECT_EQ(solver.solve(DoubleVec(40, 1.0), &x, true), 4);
      EXPECT_EQ(solver.solve(DoubleVec(40, 1.0), &x, false), 4);
      EXPECT_EQ(solver.solve(DoubleVec(a.rows(), 1.0), &x, true), 4);
    }
  }
}

TEST(BadInput, EmptySystemsAndNotANumberGiveCodes) {
  for (const bool flags : {false, true}) {
    Thouseholder solver(1e-12, 1, true);
    for (const unsigned rows : {0u, 3u}) {
      const DoubleGenMat none(rows, 0);
      EXPECT_EQ(solver.setMatrix(none, indices({0}), 2, flags, flags, flags), 0);
      EXPECT_EQ(solver.solve(DoubleVec(rows, 1.0)).length(), 0u);
    }
    EXPECT_EQ(solver.setMatrix(DoubleGenMat(0, 3), 0, flags, flags, flags), 0);
    EXPECT_EQ(valuesOf(solver.solve(DoubleVec())), Values(3, 0.0));
    TsolveConstrainedLsqQR qr(1e-12, true);
    EXPECT_EQ(qr.setMatrix(DoubleGenMat(0, 3), 0, flags, flags, flags), 0);
    EXPECT_EQ(valuesOf(qr.solve(DoubleVec())), Values(3, 0.0));
    EXPECT_EQ(qr.setMatrix(DoubleGenMat(3, 0), 0, flags, flags, flags), 0);
    EXPECT_EQ(qr.solve(DoubleVec(3, 1.0)).length(), 0u);
    for (TsolveConstrainedLsq* s :
         {static_cast<TsolveConstrainedLsq*>(&solver), static_cast<TsolveConstrainedLsq*>(&qr)}) {
      s->setMatrix(DoubleGenMat(6, 4, kNan), indices({9, 2, 1}), 3, flags, flags, flags);
      s->solve(DoubleVec(6, kNan));
      s->solve(TtupleVector(2, 6, 1.0));
    }
  }
}

TEST(BadInput, MatricesOnVectorsThatAreTooShortAreNotReadPast) {
  RecordedErrors errors;
  const DoubleGenMat torn(DoubleVec(5, 1.0), 4, 3);
  Thouseholder solver(1e-12, 0, true);
  solver.setMatrix(torn, 1, true, true, true);
  solver.solve(DoubleVec(4, 1.0));
  solver.altMatrix();
  IntVec rows, cols;
  EXPECT_TRUE(TsolveSystems::findZero(torn, IntVec(), rows, cols, 0.5));
  EXPECT_EQ(rows.length() + cols.length(), 4u + 2u);
  TsolveTensorProductLsq grid(solver, solver);
  const DoubleGenMat whole(4, 3, 1.0);
  DoubleGenMat x(3, 3, 7.0), tornResult(DoubleVec(5, 1.0), 3, 3);
  const IntGenMat mask(3, 3, 1), tornMask(IntVec(5, 1), 3, 3);
  const DoubleGenMat b(4, 4, 1.0), tornData(DoubleVec(5, 1.0), 4, 4);
  EXPECT_EQ(grid.solveFixed(torn, whole, mask, b, &x), 4);
  EXPECT_EQ(grid.solveFixed(whole, torn, mask, b, &x), 4);
  EXPECT_EQ(grid.solveFixed(whole, whole, tornMask, b, &x), 4);
  EXPECT_EQ(grid.solveFixed(whole, whole, mask, tornData, &x), 4);
  EXPECT_EQ(grid.solveFixed(whole, whole, mask, b, &tornResult), 4);
  EXPECT_NE(grid.solve(tornData, &x), 0);
  EXPECT_NE(grid.solve(b, &tornResult), 0);
}

TEST(Qr, LengthsMustBeRightAndFreeUnknownsAreZero) {
  Random random(28);
  TsolveConstrainedLsqQR solver(1e-9, false);
  DoubleGenMat a = randomMatrix(random, 7, 3);
  ASSERT_EQ(solver.setMatrix(a, 0, true, false, false), 0);
  DoubleVec b = randomVector(random, 7), x(3), tooLong(4);
  EXPECT_EQ(solver.solveInPlace(b, nullptr), 4);
  EXPECT_EQ(solver.solveInPlace(b, &tooLong), 4);
  EXPECT_EQ(solver.solveInPlace(tooLong, &x), 4);
  EXPECT_EQ(solver.rwSolve().numFreeCols(), 0u);
  solver.tolerance() = 1e9;
  ASSERT_EQ(solver.setMatrix(a, 0, false, false, false), 0);
  EXPECT_EQ(valuesOf(solver.solve(b)), Values(3, 0.0));
}

TEST(Qr, CopiesKeepTheirFactorisationWhenTheOriginalTakesAnotherSystem) {
  Random random(29);
  TsolveConstrainedLsqQR original(1e-12, false);
  original.setMatrix(randomMatrix(random, 9, 4), 0, true, false, false);
  const DoubleVec rhs = randomVector(random, 9);
  const DoubleVec x = original.solve(rhs);
  TsolveConstrainedLsqQR copy(original), referring(1e-3, false);
  referring.reference(original);
  original.setMatrix(randomMatrix(random, 9, 4), 0, false, false, false);
  EXPECT_EQ(valuesOf(copy.solve(rhs)), valuesOf(x));
  EXPECT_EQ(valuesOf(referring.solve(rhs)), valuesOf(x));
}

TEST(ExhaustedMemory, GivesACodeAndNoResult) {
  if (!canObserveAllocation()) GTEST_SKIP() << "operator new is the library's own";
  Random random(30);
  const DoubleGenMat a = randomMatrix(random, 9, 4);
  const IntVec fixed = indices({2});
  const TtupleVector rhs = randomPoints(random, 2, 9);
  const TtupleVector start = randomPoints(random, 2, 4);
  const MathErrorHandler before = setMathErrorHandler([](MathErrorRecord, va_list) {});
  Values solution;
  int failures = 0;
  for (long allowed = 400; allowed >= 0; --allowed) {
    Thouseholder solver(1e-12, 2, true);
    TtupleVector x = start.copy();
    int code;
    {
      const FailingNew failing(allowed);
      solver.setMatrix(a, fixed, 1, true, true, false);
      code = solver.solve(rhs, &x, true);
    }
    if (allowed == 400) solution = valuesOf(x.data());
    EXPECT_EQ(valuesOf(x.data()), code == 0 ? solution : valuesOf(start.data()));
    failures += code != 0;
  }
  setMathErrorHandler(before);
  EXPECT_GT(failures, 20);
  EXPECT_NE(solution, valuesOf(start.data()));
}

}  // namespace
}  // namespace knotwork::test
