// SPDX-License-Identifier: MIT
// LU factorisation: ranges, reports, and what is deliberate.
#include "knotwork/decomp/double_gen_fact.h"

#include <gtest/gtest.h>

#include "support/matrices.h"
#include "support/recorded_errors.h"

namespace {

using namespace knotwork::test;

TEST(GenFact, DeterminantsHoldAsFarAsTheirRangeGoes) {
  const double scales[] = {-1e-200, 1e300, 1e-100};
  DoubleGenMat a = columnsOf(identity(3), indices({1, 2, 0}));  // an even permutation
  for (int j = 0; j < 3; ++j) a.col(j) *= scales[j];
  EXPECT_NEAR(DoubleGenFact(a).determinant(), -1.0, 1e-12);
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
  const DoubleGenFact singular(DoubleGenMat(2, 2, 1.0), 0);
  EXPECT_TRUE(singular.isSingular() && singular.fail() && !singular.good());
  EXPECT_EQ(singular.condition(), 0.0);
  EXPECT_EQ(errors.takeText(), "");
  EXPECT_EQ(singular.solve(DoubleVec(2, 1.0)).length() + singular.inverse().rows(), 4u);
  EXPECT_EQ(errors.takeText(), kNotFactored + "\n" + kNotFactored);
}

TEST(GenFact, ACopyKeepsFactorsAndPivotsWhenTheOtherIsFactored) {
  const DoubleGenMat backwards = columnsOf(identity(3), indices({2, 1, 0}));
  DoubleGenFact lu(backwards);
  const DoubleGenFact copy(lu);
  EXPECT_EQ(copy.factors().data(), lu.factors().data());
  lu.factor(identity(3));
  EXPECT_TRUE(copy.inverse() == backwards);
}

TEST(GenFact, AnEmptyMatrixLeavesTheConditionAsItWas) {
  DoubleGenFact lu(2.0 * identity(2));
  lu.factor(DoubleGenMat());
  EXPECT_EQ(lu.condition(), 1.0);
  EXPECT_TRUE(lu.fail() && !lu.isSingular());
}

TEST(GenFact, WhatItCannotDoIsReportedAndNotHandedOut) {
  RecordedErrors errors;
  const DoubleGenFact large(columnsOf(identity(7), indices({6, 5, 4, 3, 2, 1, 0})));
  DoubleGenFact small(identity(2));
  small = large;  // pivots of seven rows
  errors.take();
  EXPECT_EQ(small.inverse().rows() + small.solve(DoubleVec(2, 1.0)).length(), 0u);
  EXPECT_TRUE(std::isnan(small.determinant()));
  EXPECT_EQ(errors.takeText(), kNotFactored + "\n" + kNotFactored + "\n" + kNotFactored);
}

TEST(GenFact, ReportsAndGoesOn) {
  RecordedErrors errors;
  EXPECT_EQ(std::string(DoubleGenFact::className), "DoubleGenFact");
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
