// SPDX-License-Identifier: MIT
// LU factorisation: what holds for every matrix, and what is deliberate.
#include "knotwork/decomp/double_gen_fact.h"

#include <gtest/gtest.h>

#include "support/matrices.h"
#include "support/recorded_errors.h"

namespace {

using namespace knotwork::test;

const std::string kNotFactored =
    "5011 Can't solve system of equations, matrix not successfully factorized";

TEST(GenFact, SolvesAndInvertsEverySpectrum) {
  std::vector<TestMatrix> matrices = allShapesAndSpectra();
  matrices.push_back({"random 100", Random(100).matrix(100, 100), 100});
  for (const TestMatrix& m : matrices) {
    const unsigned n = m.a.rows();
    if (n != m.a.cols() || (m.rank >= 0 && m.rank != static_cast<int>(n))) continue;
    SCOPED_TRACE(m.name);
    const DoubleGenFact lu(m.a);
    const DoubleVec b = Random(21).vector(n) * norm(m.a);
    RecordedErrors errors;  // Hilbert matrices and their like count as singular
    const DoubleVec x = lu.solve(reverse(reverse(b).copy()));
    EXPECT_LT(norm(product(m.a, x) - b), 10 * kEps * n * (norm(m.a) * norm(x) + norm(b)));
    const DoubleGenMat inverse = lu.inverse();
    EXPECT_LT(norm(product(inverse, m.a) - identity(n)), 10 * kEps * n * norm(inverse) * norm(m.a));
  }
}

/// The elimination as published, one step after the other.
void eliminateStepByStep(DoubleGenMat& a) {
  const int n = static_cast<int>(a.rows());
  for (int k = 0; k < n - 1; ++k) {
    int l = k;
    for (int i = k + 1; i < n; ++i)
      if (std::abs(a(i, k)) > std::abs(a(l, k))) l = i;
    if (a(l, k) == 0.0) continue;
    std::swap(a(l, k), a(k, k));
    const double t = -1.0 / a(k, k);
    for (int i = k + 1; i < n; ++i) a(i, k) *= t;
    for (int j = k + 1; j < n; ++j) {
      std::swap(a(l, j), a(k, j));
      for (int i = k + 1; i < n && a(k, j) != 0.0; ++i) a(i, j) += a(k, j) * a(i, k);
    }
  }
}

TEST(GenFact, PanelsOfColumnsGiveTheBitsOfOneStepAfterTheOther) {
  for (const unsigned n : {8u, 9u, 10u, 17u, 26u}) {
    const int last = static_cast<int>(n) - 1;
    DoubleGenMat sparse = Random(n).matrix(n, n), infinite = sparse.copy(), huge(n, n, 3.0);
    for (int i = 0; i <= last; ++i) sparse(i, (5 * i + 1) % (last + 1)) = sparse(i, last / 2) = 0.0;
    infinite(last / 2, 2) = -HUGE_VAL;
    infinite(1, last) = std::nan("");
    for (const DoubleGenMat& a : {Random(n).matrix(n, n), sparse, infinite, huge}) {
      DoubleGenMat want = a.copy();
      eliminateStepByStep(want);
      const DoubleGenFact lu(a, 0);
      for (int i = 0; i < static_cast<int>(n * n); ++i) {
        const double got = lu.factors().dataVec()(i), wanted = want.dataVec()(i);
        ASSERT_TRUE(got == wanted || (std::isnan(got) && std::isnan(wanted))) << n << ' ' << i;
      }
    }
  }
}

TEST(GenFact, DeterminantIsTheSignedProductOfThePivots) {
  DoubleGenMat a(3, 3, 0.0);
  a(1, 0) = 2.0;
  a(2, 1) = 3.0;
  a(0, 2) = 5.0;  // an even permutation
  EXPECT_EQ(DoubleGenFact(a).determinant(), 30.0);
  EXPECT_EQ(valuesOf(DoubleGenFact(a).pivots()), (Values{2, 3, 3}));  // from 1
  a.col(0) *= -1e-200;
  a.col(1) *= 1e300;
  a.col(2) *= 1e-100;
  EXPECT_NEAR(DoubleGenFact(a).determinant() / -30.0, 1.0, 1e-12);
  EXPECT_EQ(DoubleGenFact(1e200 * identity(3)).determinant(), HUGE_VAL);
  EXPECT_EQ(DoubleGenFact().determinant(), 0.0);
}

TEST(GenFact, WithoutTheEstimateOnlyAZeroPivotIsSingular) {
  RecordedErrors errors;
  const DoubleGenFact bad(1e-16 * hilbert(12), 0);
  EXPECT_FALSE(bad.isSingular());
  EXPECT_EQ(bad.condition(), -1.0);
  EXPECT_EQ(errors.takeText(), "5001 Condition number not calculated");
  EXPECT_TRUE(DoubleGenFact(hilbert(13)).isSingular());
  EXPECT_EQ(DoubleGenFact(identity(3)).condition(), 1.0);

  const DoubleGenFact singular(DoubleGenMat(2, 2, 1.0), 0);
  EXPECT_TRUE(singular.isSingular() && singular.fail() && !singular.good());
  EXPECT_EQ(singular.condition() + singular.determinant(), 0.0);
  EXPECT_EQ(errors.takeText(), "");
  EXPECT_EQ(singular.solve(DoubleVec(2, 1.0)).length(), 2u);
  EXPECT_EQ(singular.inverse().rows(), 2u);
  EXPECT_EQ(errors.takeText(), kNotFactored + "\n" + kNotFactored);
}

TEST(GenFact, ACopyKeepsItsFactorsWhenTheOtherIsFactored) {
  DoubleGenFact lu(hilbert(3));
  const DoubleGenFact copy(lu);
  EXPECT_EQ(copy.factors().data(), lu.factors().data());
  lu.factor(withSpectrum(3, 3, {3.0, 2.0, 1.0}, 22));
  EXPECT_NEAR(copy.determinant() * 2160, 1.0, 1e-12);
}

TEST(GenFact, ReportsAndGoesOn) {
  RecordedErrors errors;
  EXPECT_EQ(std::string(DoubleGenFact::className), "DoubleGenFact");
  EXPECT_TRUE(DoubleGenFact().fail());
  EXPECT_EQ(DoubleGenFact(identity(3)).solve(DoubleVec(2, 1.0)).length(), 0u);
  EXPECT_EQ(DoubleGenFact().solve(DoubleVec()).length(), 0u);
  EXPECT_EQ(errors.takeText(), "5002 b vector length wrong (2!=3)\n" + kNotFactored);
  // The leading square block stands for a matrix that is not square.
  for (const auto& [rows, cols] : {std::pair{2u, 3u}, {3u, 2u}}) {
    DoubleGenMat a(rows, cols, 9.0);
    a(0, 1) = a(1, 0) = 0.0;
    const DoubleGenFact lu(a);
    EXPECT_EQ(errors.takeText(), "500d Can't factorize, " + std::to_string(rows) + "x" +
                                     std::to_string(cols) + " matrix not square");
    EXPECT_EQ(valuesOf(lu.solve(DoubleVec(2, 18.0))), (Values{2, 2}));
    EXPECT_EQ(lu.determinant(), 81.0);
  }
}

}  // namespace
