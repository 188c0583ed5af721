// SPDX-License-Identifier: MIT
// QR decomposition: what holds for every matrix, and what is deliberate.
#include "knotwork/decomp/double_qr_decomp.h"

#include <gtest/gtest.h>

#include "support/matrices.h"
#include "support/recorded_errors.h"

namespace {

using namespace knotwork::test;

/// diag(1, 2, ..., n).
DoubleGenMat ascending(unsigned n) {
  DoubleGenMat a(n, n, 0.0);
  a.diagonal() = DoubleVec(n, 1.0, 1.0);
  return a;
}

TEST(QrDecomp, ReproducesEveryShapeAndSpectrum) {
  for (const TestMatrix& m : allShapesAndSpectra()) {
    const unsigned rows = m.a.rows(), cols = m.a.cols();
    const DoubleVec b = Random(7).vector(rows) * std::max(norm(m.a), 1e-150);
    const DoubleVec strided = reverse(reverse(b).copy());
    for (const int pivoting : {0, 1}) {
      SCOPED_TRACE(m.name + (pivoting ? " pivoted" : ""));
      const auto qr = factored<DoubleQRDecomp>(m.a, pivoting);
      DoubleGenMat Q = identity(rows), QR = upperTriangle(qr.factors(), rows);
      for (DoubleGenMat* const turned : {&Q, &QR})
        for (int j = 0; j < static_cast<int>(turned->cols()); ++j)
          turned->col(j) = qr.computeQy(turned->col(j), -1);
      EXPECT_LT(lossOfOrthogonality(Q), 10);
      EXPECT_LT(relativeDifference(pivoting ? columnsOf(m.a, qr.pivots()) : m.a, QR), 10);
      EXPECT_LT(norm(qr.computeQTy(b, -1) - product(b, Q)), 10 * kEps * rows * norm(b));
      if (m.rank != static_cast<int>(std::min(rows, cols))) continue;
      const DoubleVec x = qr.solve(strided);
      ASSERT_EQ(x.length(), cols);
      const double size = norm(m.a) * (norm(b) + norm(m.a) * norm(x));
      EXPECT_LT(norm(product(b - product(m.a, x), m.a)), 10 * kEps * rows * size);
      // a basic solution: no more unknowns than rows take part
      EXPECT_LE(x.length() - static_cast<unsigned>(x.countZero(0.0)), rows);
    }
  }
}

TEST(QrDecomp, RankCountsExactZerosAlone) {
  DoubleGenMat a = identity(3);
  a(1, 1) = 1e-300;
  EXPECT_FALSE(DoubleQRDecomp(a).isSingular());
  a(1, 1) = 0.0;
  const DoubleQRDecomp qr(a);
  EXPECT_EQ(qr.rank(), 2u);
  EXPECT_TRUE(qr.isSingular());
  EXPECT_EQ(qr.pivots()(2), 1);  // the zero column goes last
  EXPECT_EQ(DoubleQRDecomp(DoubleGenMat(3, 3, std::nan(""))).rank(), 3u);
  EXPECT_TRUE(DoubleQRDecomp(DoubleGenMat(3, 2, 0.0)).isSingular());
  EXPECT_FALSE(DoubleQRDecomp(DoubleGenMat(0, 4)).isSingular());
}

TEST(QrDecomp, ACopySharesAllAndARefactoringTakesNewFactorsAlone) {
  DoubleQRDecomp qr(identity(2));
  const DoubleQRDecomp copy(qr);
  EXPECT_EQ(copy.factors().data(), qr.factors().data());
  const DoubleGenMat before = copy.factors().copy();
  qr.factor(ascending(2));
  EXPECT_TRUE(copy.factors() == before);
  EXPECT_EQ(valuesOf(copy.pivots()), (Values{1, 0}));  // written through
  qr.deepenShallowCopy();
  qr.factor(ascending(2));
  EXPECT_EQ(valuesOf(copy.pivots()), (Values{1, 0}));
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
  EXPECT_EQ(valuesOf(qr.computeXb(DoubleVec(4, 1.0), 9)), (Values{1, 1, 1}));
  EXPECT_EQ(qr.permute(DoubleVec(2, 5.0)).length(), 2u);
  EXPECT_EQ(qr.unpermute(DoubleVec(4, 5.0)).length(), 4u);
  EXPECT_EQ(DoubleQRDecomp(DoubleGenMat(3, 2, 0.0)).solve(DoubleVec(3, 1.0)).length(), 2u);
  EXPECT_EQ(valuesOf(DoubleQRDecomp(DoubleGenMat(1, 2, 0.0)).solve(DoubleVec(1, 5.0))),
            (Values{0, 0}));
  EXPECT_EQ(errors.takeText(),
            "5002 b vector length wrong (2!=3)\n"
            "5002 b vector length wrong (4!=3)\n"
            "5004 vector wrong length to permute (2!=3)\n"
            "5004 vector wrong length to permute (4!=3)\n"
            "5011 Can't solve system of equations, matrix not successfully factorized\n"
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
  EXPECT_EQ(errors.takeText(), "");
}

}  // namespace
