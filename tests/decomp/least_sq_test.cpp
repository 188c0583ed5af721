// SPDX-License-Identifier: MIT
// The three least-squares classes: tolerances, reports, and what is deliberate.
#include <gtest/gtest.h>

#include "knotwork/decomp/double_least_sq_ch.h"
#include "knotwork/decomp/double_least_sq_inc.h"
#include "knotwork/decomp/double_least_sq_qr.h"
#include "support/matrices.h"
#include "support/recorded_errors.h"

namespace {

using namespace knotwork::test;

/// All rows of (A, y) added one by one.
DoubleLeastSqInc accumulated(const DoubleGenMat& a, const DoubleVec& y) {
  DoubleLeastSqInc lsq(a.cols(), 1);
  for (int i = 0; i < static_cast<int>(a.rows()); ++i) {
    DoubleVec row = a.row(i).copy();
    lsq.addEquation(row, y(i));
  }
  return lsq;
}

TEST(LeastSqQR, ToleranceFreesUnknownsAndIsResetByFactor) {
  DoubleGenMat a = Random(53).matrix(4, 3);
  a.col(2) = a.col(0);
  DoubleLeastSqQR lsq;
  lsq.setTolerance(1e-10);
  lsq.factor(a);
  EXPECT_EQ(lsq.setTolerance(1e-10), 0.0);
  EXPECT_EQ(lsq.numFreeCols(), 1u);
  const DoubleVec b = Random(54).vector(4);
  EXPECT_EQ(lsq.solve(b)(lsq.pivots()(2)), 0.0);  // in the column order of A
  EXPECT_LT(norm(product(lsq.residual(b), a)), 20 * kEps);
  lsq.setTolerance(5.0);
  EXPECT_TRUE(lsq.isUnderDetermined());
  EXPECT_EQ(valuesOf(lsq.solve(b)), (Values{0, 0, 0}));
  EXPECT_TRUE(lsq.residual(b) == b);
  DoubleLeastSqQR notANumber(DoubleGenMat(3, 3, std::nan("")));
  notANumber.setTolerance(1e300);
  EXPECT_FALSE(notANumber.isUnderDetermined());
}

TEST(LeastSqQR, ReportsTheLengthOnceItselfAndOnceFromTheDecomposition) {
  RecordedErrors errors;
  const std::string wrongLength = "5002 b vector length wrong (2!=3)";
  const DoubleLeastSqQR lsq(identity(3));
  EXPECT_EQ(lsq.solve(DoubleVec(2, 1.0)).length(), 3u);
  EXPECT_EQ(errors.takeText(), wrongLength + "\n" + wrongLength);
  EXPECT_EQ(lsq.residual(DoubleVec(2, 1.0)).length(), 3u);
  EXPECT_EQ(errors.takeText(), wrongLength + "\n" + wrongLength);
  EXPECT_EQ(DoubleLeastSqQR().solve(DoubleVec()).length(), 0u);
  EXPECT_EQ(DoubleLeastSqQR().residual(DoubleVec()).length(), 0u);
  EXPECT_EQ(errors.takeText(), kNotFactored + "\n" + kNotFactored);
}

TEST(LeastSqCh, ToleranceTakesNoAbsoluteValueAndOutlivesFactor) {
  DoubleLeastSqCh lsq(identity(2));
  EXPECT_EQ(lsq.setTolerance(2.0), 0.0);
  EXPECT_TRUE(lsq.isUnderDetermined());
  EXPECT_EQ(valuesOf(lsq.solve(DoubleVec(2, 1.0))), (Values{0, 0}));
  lsq.factor(identity(3));
  EXPECT_EQ(lsq.setTolerance(-2.0), 2.0);
  EXPECT_EQ(lsq.numFreeCols(), 0u);
  EXPECT_EQ(DoubleLeastSqCh().solve(DoubleVec(3)).length(), 0u);
  RecordedErrors errors;
  EXPECT_EQ(lsq.solve(DoubleVec(2, 1.0)).length(), 3u);
  EXPECT_EQ(errors.all().at(0).text, "b vector length wrong (2!=3)");
}

TEST(LeastSqCh, MayFactorItsOwnFactor) {
  DoubleLeastSqCh lsq(4.0 * identity(2));
  lsq.factor(lsq.factors());
  lsq.doPivoting(0);
  EXPECT_EQ(valuesOf(lsq.solve(DoubleVec(2, 8.0))), (Values{2, 2}));
}

TEST(LeastSqInc, EquationsComeAndGo) {
  RecordedErrors errors;
  const DoubleGenMat a = Random(58).matrix(3, 3);
  const DoubleVec x = Random(59).vector(3);
  DoubleLeastSqInc lsq = accumulated(a, product(a, x));
  EXPECT_TRUE(lsq.good() && DoubleLeastSqInc(3, 1).fail());
  EXPECT_LT(norm(lsq.solve(0) - x), 100 * kEps);
  EXPECT_EQ(lsq.residualNorm(0), 0.0);  // fresh rows leave exact zeros
  DoubleVec extra(3, 1.0);
  lsq.addEquation(extra, 100.0);
  EXPECT_GT(lsq.residualNorm(0), 1.0);
  EXPECT_EQ(lsq.deleteEquation(extra, 100.0), 0);
  EXPECT_LT(norm(lsq.solve(0) - x), 1e-11);
  EXPECT_EQ(errors.takeText(), "");
  EXPECT_EQ(lsq.residualNorm(1), 0.0);
  EXPECT_EQ(lsq.solve(-1).length(), 0u);
  EXPECT_EQ(errors.takeText(),
            "500b Data 1 doesn't exist, only 1 data columns\n"
            "500b Data -1 doesn't exist, only 1 data columns");
}

TEST(LeastSqInc, RemovingZeroFromAZeroResidualLeavesZero) {
  DoubleVec x(1, 3.0), same(1, 4.0);
  DoubleLeastSqInc lsq(1, 1);
  lsq.addEquation(x, 0.0);
  lsq.addEquation(same, 0.0);
  EXPECT_EQ(lsq.deleteEquation(same, 0.0), 0);
  EXPECT_EQ(lsq.residualNorm(0), 0.0);
  EXPECT_DOUBLE_EQ(lsq.factors()(0, 0), 3.0);
}

TEST(LeastSqInc, CopiesShareTheFactorForGoodAndSeparateTheData) {
  DoubleLeastSqInc lsq(1, 1);
  DoubleVec x(1, 3.0);
  lsq.addEquation(x, 6.0);
  DoubleLeastSqInc copy = lsq.copy();
  x(0) = 4.0;
  copy.addEquation(x, 8.0);
  EXPECT_EQ(lsq.factors()(0, 0), copy.factors()(0, 0));
  EXPECT_DOUBLE_EQ(copy.solve(0)(0), 2.0);
  EXPECT_DOUBLE_EQ(lsq.solve(0)(0), 6.0 / 5.0);  // its data, the other's factor
  DoubleLeastSqInc shallow(lsq);
  shallow.addEquation(x, 1.0);
  EXPECT_EQ(shallow.residualNorm(0), lsq.residualNorm(0));
}

TEST(LeastSqInc, AnUnderdeterminedSystemIsReportedTwice) {
  RecordedErrors errors;
  const DoubleLeastSqInc lsq(2, 1);
  EXPECT_EQ(valuesOf(lsq.solve(0)), (Values{0, 0}));
  EXPECT_EQ(errors.takeText(), kNotFactored + "\n" + kNotFactored);
  const DoubleLeastSqInc none(0, 1);
  EXPECT_FALSE(none.isUnderDetermined());
  EXPECT_EQ(none.solve(0).length(), 0u);
  EXPECT_EQ(errors.takeText(), kNotFactored);
}

}  // namespace
