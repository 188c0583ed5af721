// SPDX-License-Identifier: MIT
// QR decomposition: what holds for every matrix, and what is deliberate.
#include "knotwork/decomp/double_qr_decomp.h"

#include <gtest/gtest.h>

#include "support/matrices.h"
#include "support/recorded_errors.h"

namespace {

using namespace knotwork::test;

std::vector<int> pivotsOf(const DoubleQRDecomp& qr) {
  std::vector<int> pivots;
  for (int i = 0; i < static_cast<int>(qr.pivots().length()); ++i) pivots.push_back(qr.pivots()(i));
  return pivots;
}

/// f of each column of m.
template <class F>
DoubleGenMat ofColumns(const DoubleGenMat& m, F f) {
  DoubleGenMat result(m.rows(), m.cols());
  for (int j = 0; j < static_cast<int>(m.cols()); ++j) result.col(j) = f(m.col(j));
  return result;
}

DoubleQRDecomp factored(const DoubleGenMat& a, int pivoting) {
  DoubleQRDecomp qr;
  qr.doPivoting(pivoting);
  qr.factor(a);
  return qr;
}

TEST(QrDecomp, ReproducesEveryShapeAndSpectrum) {
  for (const TestMatrix& m : allShapesAndSpectra()) {
    for (const int pivoting : {0, 1}) {
      SCOPED_TRACE(m.name + (pivoting ? " pivoted" : ""));
      const DoubleQRDecomp qr = factored(m.a, pivoting);
      const auto times = [&](const DoubleVec& v) { return qr.computeQy(v, -1); };
      const DoubleGenMat Q = ofColumns(identity(m.a.rows()), times);
      EXPECT_LT(lossOfOrthogonality(Q), 10);
      const DoubleGenMat AP = pivoting ? columnsOf(m.a, qr.pivots()) : m.a;
      const DoubleGenMat R = upperTriangle(qr.factors(), m.a.rows());
      EXPECT_LT(relativeDifference(AP, ofColumns(R, times)), 10);
      const auto timesTransposed = [&](const DoubleVec& v) { return qr.computeQTy(v, -1); };
      EXPECT_LT(relativeDifference(R, ofColumns(AP, timesTransposed)), 10);
    }
  }
}

TEST(QrDecomp, FitAndResidualAreOrthogonalPartsOfTheRightHandSide) {
  Random random(7);
  for (const TestMatrix& m : allShapesAndSpectra()) {
    SCOPED_TRACE(m.name);
    const DoubleQRDecomp qr(m.a);
    const DoubleVec b = random.vector(m.a.rows());
    for (int k = 1; k <= static_cast<int>(std::min(m.a.rows(), m.a.cols())); k += 4) {
      const DoubleVec fit = qr.computeXb(b, k), residual = qr.computeResidualVec(b, k);
      const double unit = kEps * norm(b) * m.a.rows();
      EXPECT_LT(norm(fit + residual - b), 10 * unit);
      EXPECT_LT(std::abs(dot(fit, residual)), 10 * unit * norm(b));
    }
  }
}

TEST(QrDecomp, SolutionsLeaveAResidualOrthogonalToTheColumns) {
  Random random(8);
  for (const TestMatrix& m : allShapesAndSpectra()) {
    if (m.rank != static_cast<int>(std::min(m.a.rows(), m.a.cols()))) continue;
    SCOPED_TRACE(m.name);
    const DoubleVec b = random.vector(m.a.rows()) * norm(m.a);
    const DoubleVec strided = reverse(reverse(b).copy());
    for (const int pivoting : {0, 1}) {
      const DoubleVec x = factored(m.a, pivoting).solve(strided);
      ASSERT_EQ(x.length(), m.a.cols());
      const DoubleVec residual = b - product(m.a, x);
      const double size = norm(m.a) * (norm(b) + norm(m.a) * norm(x));
      EXPECT_LT(norm(product(residual, m.a)), 10 * kEps * m.a.rows() * size);
      // a basic solution: no more unknowns than rows take part
      EXPECT_LE(x.length() - static_cast<unsigned>(x.countZero(0.0)), m.a.rows());
    }
  }
}

TEST(QrDecomp, PivotsDecreaseOnTheDiagonalAndShowTheRank) {
  for (const TestMatrix& m : allShapesAndSpectra()) {
    SCOPED_TRACE(m.name);
    const DoubleVec d = abs(DoubleQRDecomp(m.a).factors().diagonal());
    // Norms that are lowered step by step lose digits before they are computed afresh.
    for (int i = 1; i < static_cast<int>(d.length()); ++i) EXPECT_LE(d(i), 2 * d(i - 1));
    const int beyond = m.rank >= 0 ? m.rank : static_cast<int>(d.length());
    for (int i = beyond; i < static_cast<int>(d.length()); ++i)
      EXPECT_LE(d(i), 100 * kEps * norm(m.a));
  }
}

TEST(QrDecomp, RankCountsExactZerosAlone) {
  DoubleGenMat a = identity(3);
  a(1, 1) = 1e-300;
  EXPECT_EQ(DoubleQRDecomp(a).rank(), 3u);
  EXPECT_FALSE(DoubleQRDecomp(a).isSingular());
  a(1, 1) = 0.0;
  const DoubleQRDecomp qr(a);
  EXPECT_EQ(qr.rank(), 2u);
  EXPECT_TRUE(qr.isSingular());
  EXPECT_EQ(qr.pivots()(2), 1);  // the zero column goes last
  EXPECT_EQ(DoubleQRDecomp(DoubleGenMat(3, 2, 0.0)).rank(), 0u);
  EXPECT_TRUE(DoubleQRDecomp(DoubleGenMat(3, 2, 0.0)).isSingular());
  EXPECT_FALSE(DoubleQRDecomp(DoubleGenMat(0, 4)).isSingular());
}

TEST(QrDecomp, SecondFactorKeepsTheFirstPivotsAndMovesTheFreeColumnBack) {
  DoubleGenMat a(4, 4, 0.0);
  a.diagonal() = DoubleVec(4, 1.0, 1.0);
  DoubleQRDecomp qr(a);
  EXPECT_EQ(pivotsOf(qr), (std::vector<int>{3, 2, 1, 0}));
  qr.factor(a);  // 3, 2, 1 are initial now, and 0 is free: column 3
  EXPECT_EQ(pivotsOf(qr), (std::vector<int>{0, 1, 2, 3}));
  qr.factor(a);  // column 0 is free
  EXPECT_EQ(pivotsOf(qr), (std::vector<int>{1, 2, 3, 0}));
}

TEST(QrDecomp, PivotsDropByOneAtEveryFactorisationAlsoWithPivotingOff) {
  const DoubleGenMat a = identity(3);
  DoubleQRDecomp qr(a);
  EXPECT_EQ(pivotsOf(qr), (std::vector<int>{0, 1, 2}));
  EXPECT_EQ(qr.doPivoting(0), 1);
  qr.factor(a);
  EXPECT_EQ(pivotsOf(qr), (std::vector<int>{-1, 0, 1}));
  qr.factor(a);
  EXPECT_EQ(pivotsOf(qr), (std::vector<int>{-2, -1, 0}));
  EXPECT_EQ(qr.doPivoting(1), 0);
  qr.factor(a);  // two final columns, one free
  EXPECT_EQ(pivotsOf(qr), (std::vector<int>{2, 0, 1}));
}

TEST(QrDecomp, ChangedColumnCountKeepsLeadingPivotsAndFreesNewColumns) {
  DoubleQRDecomp qr(identity(3));
  DoubleGenMat a(5, 5, 0.0);
  a.diagonal() = DoubleVec(5, 1.0, 1.0);
  qr.factor(a);  // 0 1 2 0 0: columns 1 and 2 initial, the largest of 0, 3, 4 follows
  EXPECT_EQ(pivotsOf(qr), (std::vector<int>{1, 2, 4, 3, 0}));
}

TEST(QrDecomp, ACopySharesItsFactorsAndRefactoringLeavesThemBe) {
  DoubleQRDecomp qr(identity(2));
  const DoubleQRDecomp copy(qr);
  EXPECT_EQ(copy.factors().data(), qr.factors().data());
  EXPECT_EQ(copy.pivots().data(), qr.pivots().data());
  const DoubleGenMat before = copy.factors().copy();
  const DoubleGenMat a(2, 2, 3.0);
  qr.factor(a);
  EXPECT_TRUE(copy.factors() == before);
  EXPECT_TRUE(a == DoubleGenMat(2, 2, 3.0));
}

TEST(QrDecomp, PermutingThereAndBackGivesTheVector) {
  Random random(9);
  DoubleQRDecomp qr(random.matrix(6, 9));
  const DoubleVec v = random.vector(9);
  EXPECT_TRUE(qr.unpermute(qr.permute(v)) == v);
  EXPECT_EQ(qr.permute(v)(2), v(qr.pivots()(2)));
  qr.doPivoting(0);
  EXPECT_EQ(qr.permute(v).data(), v.data());  // v itself
}

TEST(QrDecomp, ReportsAndGoesOn) {
  RecordedErrors errors;
  const DoubleQRDecomp qr(2.0 * identity(3));
  EXPECT_EQ(valuesOf(qr.solve(DoubleVec(2, 4.0))), (Values{2, 2, 0}));
  EXPECT_EQ(errors.takeText(), "5002 b vector length wrong (2!=3)");
  EXPECT_EQ(valuesOf(qr.computeXb(DoubleVec(4, 1.0), 9)), (Values{1, 1, 1}));
  EXPECT_EQ(errors.takeText(), "5002 b vector length wrong (4!=3)");
  EXPECT_EQ(qr.permute(DoubleVec(2, 5.0)).length(), 2u);
  EXPECT_EQ(qr.unpermute(DoubleVec(4, 5.0)).length(), 4u);
  EXPECT_EQ(errors.takeText(),
            "5004 vector wrong length to permute (2!=3)\n"
            "5004 vector wrong length to permute (4!=3)");
  EXPECT_EQ(DoubleQRDecomp(DoubleGenMat(3, 2, 0.0)).solve(DoubleVec(3, 1.0)).length(), 2u);
  EXPECT_EQ(errors.takeText(),
            "5011 Can't solve system of equations, matrix not successfully factorized");
}

TEST(QrDecomp, NoColumnsMeanNoCoefficientsAndNoFit) {
  RecordedErrors errors;
  const DoubleQRDecomp qr(hilbert(3));
  const DoubleVec y(3, 1.0, 1.0);
  EXPECT_EQ(qr.partialSolve(y, 0).length(), 0u);
  EXPECT_TRUE(qr.computeQy(y, 0) == y && qr.computeQTy(y, 0) == y);
  EXPECT_TRUE(qr.computeResidualVec(y, 0) == y);
  EXPECT_TRUE(qr.computeXb(y, 0) == DoubleVec(3, 0.0));
  EXPECT_EQ(valuesOf(DoubleQRDecomp(DoubleGenMat(0, 2)).solve(DoubleVec())), (Values{0, 0}));
  EXPECT_EQ(DoubleQRDecomp(DoubleGenMat(2, 0)).computeResidualVec(DoubleVec(2, 1.0), 5).length(),
            2u);
  EXPECT_EQ(errors.takeText(), "");
}

}  // namespace
