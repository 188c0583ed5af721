// SPDX-License-Identifier: MIT
// Cholesky decomposition: reports, and what is deliberate.
#include "knotwork/decomp/double_ch_decomp.h"

#include <gtest/gtest.h>

#include <climits>

#include "support/matrices.h"
#include "support/recorded_errors.h"

namespace {

using namespace knotwork::test;

DoubleGenMat gram(const DoubleGenMat& m) { return transposeProduct(m, m); }
DoubleChDecomp unpivoted(const DoubleGenMat& a) { return factored<DoubleChDecomp>(a, 0); }

TEST(ChDecomp, ReportsWhatItWasNotAskedRightly) {
  RecordedErrors errors;
  DoubleChDecomp ch(4.0 * identity(3));
  EXPECT_EQ(ch.setPivoting(3, 2), 0);
  EXPECT_EQ(ch.setPivoting(3, DoubleChDecomp::FINAL), 2);  // stored all the same
  ch.doPivoting(0);
  EXPECT_EQ(ch.condition(), -1.0);
  EXPECT_EQ(ch.setPivoting(-1, 0), 0);
  EXPECT_EQ(errors.takeText(),
            "5012 Pivoting position specifier must be INITIAL,FREE, or FINAL, not 2\n"
            "5001 Condition number not calculated\n"
            "3005 [INDEX: IntVec]: Index (-1) out of range [0->3]");
}

TEST(ChDecomp, SolvesAndReportsAsFarAsTheFactorGoes) {
  RecordedErrors errors;
  DoubleGenMat a = 4.0 * identity(3);
  a(2, 2) = -4.0;
  const DoubleChDecomp ch = unpivoted(a);
  EXPECT_EQ(valuesOf(ch.partialSolve(DoubleVec(2, 8.0), 2)), (Values{2, 2}));
  EXPECT_EQ(errors.takeText(), "");
  EXPECT_EQ(ch.partialSolve(DoubleVec(5, 8.0), 5)(0), 2.0);
  EXPECT_EQ(valuesOf(ch.partialSolve(DoubleVec(1, 8.0), 2)), (Values{2}));
  EXPECT_EQ(ch.partialSolve(DoubleVec(), -1).length(), 0u);
  const DoubleChDecomp wide(DoubleGenMat(2, 3, 1.0));
  EXPECT_EQ(errors.takeText(),
            kNotFactored +
                "\n5002 b vector length wrong (1!=2)"
                "\n5002 b vector length wrong (0!=4294967295)"
                "\n5010 Matrix must have more rows than cols to be factorizable, but 2<3");
  EXPECT_EQ(wide.solve(DoubleVec(3, 1.0)).length(), 3u);
  DoubleGenMat tall(3, 2, 0.0);
  tall.diagonal() = 4.0;
  EXPECT_EQ(valuesOf(DoubleChDecomp(tall).solve(DoubleVec(2, 8.0))), (Values{2, 2}));
  EXPECT_FALSE(DoubleChDecomp(tall).isPD());  // k is 2, the number of rows 3
}

TEST(ChDecomp, ShiftReportsInOrderAndMovesWhereItCan) {
  RecordedErrors errors;
  const DoubleGenMat a = gram(Random(39).matrix(8, 4));
  DoubleChDecomp ch = unpivoted(a), other = unpivoted(a);
  for (const auto& [l, k] : {std::pair{2, 1}, {-1, 2}, {0, 4}})
    ch.shift(l, k, 0, nullptr, nullptr, nullptr);
  EXPECT_EQ(errors.takeText(),
            "5006 Invalid Cholesky shift columns (2,1)\n"
            "5006 Invalid Cholesky shift columns (-1,2)\n"
            "5006 Invalid Cholesky shift columns (0,4)");
  EXPECT_TRUE(ch.factors() == other.factors());
  DoubleGenMat Z(2, 1, 1.0);
  DoubleVec c(1), s(5, 7.0);
  ch.shift(0, 2, 2, &Z, &c, &s);
  EXPECT_EQ(errors.takeText(),
            "5005 Invalid Cholesky shift direction\n"
            "5007 Data matrix wrong height (2!=4)\n"
            "5008 Vector to hold sines or cosines wrong length (1!=2)\n"
            "5008 Vector to hold sines or cosines wrong length (5!=2)");
  EXPECT_TRUE(Z == DoubleGenMat(2, 1, 1.0) && s(2) == 7.0);
  other.shift(0, 2, 1, nullptr, nullptr, nullptr);
  EXPECT_TRUE(ch.factors() == other.factors());
}

TEST(ChDecomp, RowChangesReportInOrderAndTakeTheDataThatIsThere) {
  RecordedErrors errors;
  DoubleChDecomp ch = unpivoted(identity(2)), same = unpivoted(identity(2));
  DoubleGenMat Z(3, 2, 1.0);
  DoubleVec rho(3, 1.0), c(1), s(2);
  const DoubleVec y(1, 1.0), x(6, 1.0);
  ch.update(x.slice(0, 3, 2), &Z, &y, &rho, &c, &s);
  EXPECT_EQ(errors.takeText(),
            "5007 Data matrix wrong height (3!=2)\n"
            "5008 Vector to hold sines or cosines wrong length (1!=2)\n"
            "500c vec pointers must have stride == 1\n"
            "5009 Different number of residuals than data columns (1!=2)\n"
            "5009 Different number of residuals than data columns (3!=2)\n"
            "300f [VNMATCH: DoubleVec]: Vector lengths do not match (3 vs 2)");
  EXPECT_NE(Z(0, 0), 1.0);
  EXPECT_TRUE(Z(2, 0) == 1.0 && Z.col(1) == DoubleVec(3, 1.0) && rho(1) == 1.0);
  same.update(DoubleVec(2, 1.0), nullptr, nullptr, nullptr, nullptr, nullptr);
  EXPECT_TRUE(same.factors() == ch.factors());
  EXPECT_EQ(errors.takeText(), "");
}

TEST(ChDecomp, DataColumnsAndNormsMayBeStrided) {
  const DoubleGenMat a = gram(Random(40).matrix(9, 4));
  DoubleChDecomp plain = unpivoted(a), strided = unpivoted(a);
  DoubleGenMat Z = Random(41).matrix(4, 2);
  DoubleVec twice(16), norms(4, 1.0), rho(2, 1.0), y(2, 3.0);
  DoubleGenMat view(twice.slice(15, 8, -2), 4, 2);
  view = Z;
  DoubleVec normsView = norms.slice(0, 2, 2);
  plain.shift(0, 3, 1, &Z, nullptr, nullptr);
  strided.shift(0, 3, 1, &view, nullptr, nullptr);
  RecordedErrors errors;
  plain.update(DoubleVec(4, 1.0), &Z, &y, &rho, nullptr, nullptr);
  strided.update(DoubleVec(4, 1.0), &view, &y, &normsView, nullptr, nullptr);
  EXPECT_EQ(errors.takeText(), "500c vec pointers must have stride == 1");
  EXPECT_TRUE(view == Z && normsView == rho && strided.factors() == plain.factors());
}

}  // namespace
