// SPDX-License-Identifier: MIT
// Singular value decomposition: what holds for every matrix, and what is deliberate.
#include "knotwork/decomp/double_sv_decomp.h"

#include <gtest/gtest.h>

#include "support/matrices.h"

namespace {

using namespace knotwork::test;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

DoubleGenMat rebuilt(const DoubleSVDecomp& sv, unsigned rows, unsigned cols) {
  DoubleGenMat US(rows, cols, 0.0);
  for (int j = 0; j < static_cast<int>(sv.singularValues().length()); ++j)
    US.col(j) = sv.leftVecs().col(j) * sv.singularValues()(j);
  return transProduct(US, sv.rightVecs());
}

// Many small values of even ratio make the published iteration creep: thirty sweeps do not get it
// to the first value.
const char kTooManySweeps[] = "condition 1e12 90x70";

TEST(SvDecomp, GivesUpAfterThirtySweepsAndSaysSo) {
  const DoubleSVDecomp sv(withSpectrum(90, 70, geometric(70, 1e-12), 2));
  EXPECT_TRUE(sv.fail());
  EXPECT_EQ(sv.numSVsFound(), 0);
  EXPECT_EQ(sv.singularValues().length(), 70u);
  EXPECT_LT(lossOfOrthogonality(sv.leftVecs()), 20);
}

TEST(SvDecomp, ReproducesEveryShapeAndSpectrum) {
  for (const TestMatrix& m : allShapesAndSpectra()) {
    SCOPED_TRACE(m.name);
    const DoubleSVDecomp sv(m.a);
    if (m.name == kTooManySweeps) continue;
    ASSERT_TRUE(sv.good());
    EXPECT_EQ(sv.numSVsFound(), static_cast<int>(std::min(m.a.rows(), m.a.cols())));
    EXPECT_EQ(sv.leftVecs().cols(), m.a.rows());
    EXPECT_EQ(sv.rightVecs().cols(), m.a.cols());
    EXPECT_LT(lossOfOrthogonality(sv.leftVecs()), 20);
    EXPECT_LT(lossOfOrthogonality(sv.rightVecs()), 20);
    EXPECT_LT(relativeDifference(m.a, rebuilt(sv, m.a.rows(), m.a.cols())), 10);
    const DoubleVec s = sv.singularValues();
    for (int i = 1; i < static_cast<int>(s.length()); ++i) EXPECT_LE(s(i), s(i - 1));
    EXPECT_GE(minValue(s), 0.0);
  }
}

TEST(SvDecomp, FindsPrescribedValues) {
  for (const double last : {0.1, 1e-8, 1e-14}) {
    for (const auto& [rows, cols] : {std::pair{20u, 20u}, {35u, 12u}, {12u, 35u}}) {
      const Values values = geometric(static_cast<int>(std::min(rows, cols)), last);
      const DoubleSVDecomp sv(withSpectrum(rows, cols, values, 11));
      EXPECT_LT(norm(sv.singularValues() - vectorOf(values)), 20 * kEps);
    }
  }
}

TEST(SvDecomp, TheChoiceOfVectorsChangesNoBitOfTheRest) {
  for (const auto& [rows, cols] : {std::pair{9u, 6u}, {6u, 9u}, {70u, 41u}, {1u, 5u}}) {
    const DoubleGenMat a = Random(12).matrix(rows, cols);
    const DoubleSVDecomp all(a);
    for (const int left : {0, 1, 2})
      for (const int right : {0, 1}) {
        DoubleSVDecomp sv;
        if (left == 0) sv.computeLeftVecs(0);
        if (left == 2) sv.computeAllLeftVecs(0);
        sv.computeRightVecs(right);
        sv.factor(a);
        EXPECT_TRUE(sv.singularValues() == all.singularValues());
        EXPECT_TRUE(sv.eValues() == all.eValues());
        const unsigned columns = left == 0 ? 0 : left == 1 ? rows : std::min(rows, cols);
        ASSERT_EQ(sv.leftVecs().cols(), columns);
        for (int j = 0; j < static_cast<int>(std::min(columns, cols)); ++j)
          EXPECT_TRUE(sv.leftVecs().col(j) == all.leftVecs().col(j));
        EXPECT_EQ(sv.rightVecs().rows(), right ? cols : 0);
        EXPECT_TRUE(!right || sv.rightVecs() == all.rightVecs());
      }
  }
}

TEST(SvDecomp, SwitchesTellWhatWasOnBefore) {
  DoubleSVDecomp sv;
  EXPECT_EQ(sv.computeAllLeftVecs(0), 1);
  EXPECT_EQ(sv.computeAllLeftVecs(0), 0);
  EXPECT_EQ(sv.computeLeftVecs(1), 1);  // and keeps to the first vectors
  sv.factor(DoubleGenMat(3, 2, 1.0));
  EXPECT_EQ(sv.leftVecs().cols(), 2u);
  EXPECT_EQ(sv.computeLeftVecs(0), 1);
  EXPECT_EQ(sv.computeAllLeftVecs(1), 0);  // does nothing
  EXPECT_EQ(sv.computeLeftVecs(1), 0);     // all again
  EXPECT_EQ(sv.computeRightVecs(0), 1);
  EXPECT_EQ(sv.computeRightVecs(1), 0);
  sv.factor(DoubleGenMat(3, 2, 1.0));
  EXPECT_EQ(sv.leftVecs().cols(), 3u);
}

TEST(SvDecomp, AnEmptyMatrixHasNoValuesAndKeepsTheStatus) {
  DoubleSVDecomp sv(DoubleGenMat(0, 4));
  EXPECT_TRUE(sv.fail());
  EXPECT_EQ(sv.numSVsFound(), 0);
  EXPECT_EQ(sv.eValues().length(), 4u);
  sv.factor(DoubleGenMat(2, 2, kNaN));
  const int status = 2 - sv.numSVsFound();
  EXPECT_GT(status, 0);
  sv.factor(DoubleGenMat(3, 0));
  EXPECT_EQ(sv.numSVsFound(), -status);
}

TEST(SvDecomp, VectorsThatAreSwitchedOffStayAndViewsFollowTheNextFactorisation) {
  DoubleSVDecomp sv(identity(2));
  const DoubleVec values = sv.singularValues();
  const DoubleGenMat right = sv.rightVecs().copy();
  sv.computeRightVecs(0);
  sv.factor(3.0 * hilbert(2));
  EXPECT_TRUE(sv.rightVecs() == right);
  EXPECT_TRUE(values == sv.singularValues());
}

TEST(SvDecomp, LeftoversStandBehindTheSuperdiagonalOfAWideMatrix) {
  const DoubleSVDecomp sv(Random(13).matrix(3, 7));
  const DoubleVec e = sv.eValues();
  EXPECT_TRUE(e.slice(0, 4, 1) == DoubleVec(4, 0.0));
  EXPECT_EQ(e.slice(4, 3, 1).countZero(0.0), 0);
}

TEST(SvDecomp, EndsWithNumbersThatAreNotFinite) {
  for (const double bad : {kNaN, kInfinity, -kInfinity})
    for (const auto& [rows, cols] : {std::pair{1u, 1u}, {1u, 2u}, {2u, 1u}, {4u, 4u}, {3u, 6u}})
      for (unsigned place = 0; place < rows * cols; ++place) {
        DoubleGenMat a(rows, cols, 0.0);
        a.dataVec()(static_cast<int>(place)) = bad;
        const DoubleSVDecomp sv(a);
        EXPECT_LE(sv.numSVsFound(), static_cast<int>(std::min(rows, cols)));
        a += 1.0;
        EXPECT_TRUE(DoubleSVDecomp(a).fail() || a.rows() * a.cols() <= 2);
      }
}

}  // namespace
