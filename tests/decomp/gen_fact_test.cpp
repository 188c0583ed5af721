// SPDX-License-Identifier: MIT
// LU factorisation: what holds for every matrix, and what is deliberate.
#include "knotwork/decomp/double_gen_fact.h"

#include <gtest/gtest.h>

#include "support/matrices.h"
#include "support/recorded_errors.h"

namespace {

using namespace knotwork::test;

std::vector<TestMatrix> squareMatricesOfFullRank() {
  std::vector<TestMatrix> some;
  for (const TestMatrix& m : allShapesAndSpectra())
    if (m.a.rows() == m.a.cols() && m.rank != 0 && m.name.find("half") == std::string::npos)
      some.push_back(m);
  for (const unsigned n : {8u, 9u, 16u, 17u, 100u})  // around the panel's width
    some.push_back({"random " + std::to_string(n), Random(n).matrix(n, n), static_cast<int>(n)});
  return some;
}

double oneNorm(const DoubleGenMat& m) {
  double largest = 0.0;
  for (int j = 0; j < static_cast<int>(m.cols()); ++j)
    largest = std::max(largest, sum(abs(m.col(j))));
  return largest;
}

TEST(GenFact, SolvesEverySpectrumWithASmallBackwardError) {
  for (const TestMatrix& m : squareMatricesOfFullRank()) {
    SCOPED_TRACE(m.name);
    const DoubleGenFact lu(m.a);
    const DoubleVec b = Random(21).vector(m.a.rows()) * norm(m.a);
    RecordedErrors errors;  // Hilbert matrices and their like count as singular
    const DoubleVec x = lu.solve(reverse(reverse(b).copy()));
    const double unit = kEps * m.a.rows() * (norm(m.a) * norm(x) + norm(b));
    EXPECT_LT(norm(product(m.a, x) - b), 10 * unit);
    const DoubleGenMat inverse = lu.inverse();
    const double residual = norm(product(inverse, m.a) - identity(m.a.rows()));
    EXPECT_LT(residual, 10 * kEps * m.a.rows() * norm(inverse) * norm(m.a));
  }
}

TEST(GenFact, EstimateIsNoLessThanTheReciprocalConditionAndNear) {
  for (const TestMatrix& m : squareMatricesOfFullRank()) {
    const DoubleGenFact lu(m.a);
    if (lu.fail() || lu.condition() < 1e-10) continue;
    SCOPED_TRACE(m.name);
    const double exact = 1.0 / (oneNorm(m.a) * oneNorm(lu.inverse()));
    EXPECT_GE(lu.condition(), exact * (1 - 1e-4));
    EXPECT_LE(lu.condition(), exact * 10);
  }
  EXPECT_EQ(DoubleGenFact(identity(3)).condition(), 1.0);
}

TEST(GenFact, DeterminantIsTheSignedProductOfThePivots) {
  DoubleGenMat a(3, 3, 0.0);
  a(1, 0) = 2.0;
  a(2, 1) = 3.0;
  a(0, 2) = 5.0;  // an even permutation
  EXPECT_EQ(DoubleGenFact(a).determinant(), 30.0);
  a.col(0) *= -1e-200;
  a.col(1) *= 1e300;
  a.col(2) *= 1e-100;
  EXPECT_NEAR(DoubleGenFact(a).determinant() / -30.0, 1.0, 1e-12);
  EXPECT_EQ(DoubleGenFact(1e200 * identity(3)).determinant(),
            std::numeric_limits<double>::infinity());
  EXPECT_EQ(DoubleGenFact(DoubleGenMat(4, 4, 1.0)).determinant(), 0.0);
  EXPECT_EQ(DoubleGenFact().determinant(), 0.0);
}

TEST(GenFact, WithoutTheEstimateOnlyAZeroPivotIsSingular) {
  RecordedErrors errors;
  const DoubleGenFact bad(1e-16 * hilbert(12), 0);
  EXPECT_FALSE(bad.isSingular());
  EXPECT_EQ(bad.condition(), -1.0);
  EXPECT_EQ(errors.takeText(), "5001 Condition number not calculated");
  EXPECT_TRUE(DoubleGenFact(hilbert(13)).isSingular());

  const DoubleGenFact singular(DoubleGenMat(2, 2, 1.0), 0);
  EXPECT_TRUE(singular.isSingular() && singular.fail() && !singular.good());
  EXPECT_EQ(singular.condition(), 0.0);
  EXPECT_EQ(errors.takeText(), "");
  EXPECT_EQ(singular.solve(DoubleVec(2, 1.0)).length(), 2u);
  EXPECT_EQ(singular.inverse().rows(), 2u);
  const std::string report =
      "5011 Can't solve system of equations, matrix not successfully factorized";
  EXPECT_EQ(errors.takeText(), report + "\n" + report);
}

TEST(GenFact, PivotsCountFromOne) {
  DoubleGenMat a = identity(3);
  a(2, 0) = 7.0;
  const IntVec pivots = DoubleGenFact(a).pivots();
  EXPECT_EQ(pivots(0), 3);
  EXPECT_EQ(pivots(2), 3);
}

TEST(GenFact, ReportsAndGoesOn) {
  RecordedErrors errors;
  EXPECT_TRUE(DoubleGenFact().fail());
  EXPECT_EQ(DoubleGenFact(identity(3)).solve(DoubleVec(2, 1.0)).length(), 0u);
  EXPECT_EQ(errors.takeText(), "5002 b vector length wrong (2!=3)");
  EXPECT_EQ(DoubleGenFact().solve(DoubleVec()).length(), 0u);
  EXPECT_EQ(errors.takeText(),
            "5011 Can't solve system of equations, matrix not successfully factorized");
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
