// SPDX-License-Identifier: MIT
// Matrix picks.
#include <gtest/gtest.h>

#include "knotwork/knotwork.h"
#include "support/recorded_errors.h"

namespace {

IntVec list(std::initializer_list<int> indices) {
  return IntVec(indices.begin(), static_cast<unsigned>(indices.size()));
}

// 0 3
// 1 4
// 2 5
DoubleGenMat threeByTwo() { return DoubleGenMat(DoubleVec(6, 0.0, 1.0), 3, 2); }

TEST(GenMatPick, ReadsInTheOrderOfTheLists) {
  DoubleGenMat m = threeByTwo();
  const DoubleGenMat picked(m.matPick(list({2, 0}), list({1})));
  EXPECT_EQ(picked.rows(), 2u);
  EXPECT_TRUE(picked.dataVec() == DoubleVec(2, 5.0, -2.0));
  IntGenMat whole(2, 2, 3);
  EXPECT_TRUE(IntGenMat(whole(list({1, 1, 1}), list({0, 1}))) == IntGenMat(3, 2, 3));
}

TEST(GenMatPick, WritesThroughToEveryViewAndSharesItsLists) {
  DoubleVec storage(12, 0.0);
  DoubleGenMat m(storage.slice(11, 6, -2), 3, 2);
  IntVec rows = list({2, 2});
  DoubleGenMatPick pick = m(rows, list({1}));
  pick = 7.0;
  EXPECT_EQ(m(2, 1), 7.0);
  EXPECT_EQ(storage(1), 7.0);
  rows(1) = 0;
  pick = DoubleGenMat(2, 1, 8.0);
  EXPECT_EQ(m(0, 1), 8.0);
  pick.zero();
  EXPECT_TRUE(storage == DoubleVec(12, 0.0));
}

TEST(GenMatPick, OverlappingCopiesSeeEarlierWrites) {
  DoubleGenMat m = threeByTwo();
  m(list({1, 2}), list({0, 1})) = m(list({0, 1}), list({0, 1}));
  const double expected[] = {0, 0, 0, 3, 3, 3};
  EXPECT_TRUE(m.dataVec() == DoubleVec(expected, 6));
  m = m(list({2, 1, 0}), list({1, 0}));
  EXPECT_EQ(m(0, 0), 3.0);
  EXPECT_EQ(m(0, 1), 3.0);
}

TEST(GenMatPick, IndicesAreCheckedFromTheLastOneBackRowsFirst) {
  RecordedErrors errors;
  DoubleGenMat m = threeByTwo();
  DoubleGenMatPick pick = m(list({3, 0, -1}), list({0, 2}));
  EXPECT_EQ(errors.takeText(),
            "4001 Matrix pick out of range: index -1 not in 0->2\n"
            "4001 Matrix pick out of range: index 3 not in 0->2\n"
            "4001 Matrix pick out of range: index 2 not in 0->1");
  pick = 9.0;  // column 2 is beyond the storage but for (-1, 2), which is (2, 1)
  const double expected[] = {9, 1, 2, 9, 4, 9};
  EXPECT_TRUE(m.dataVec() == DoubleVec(expected, 6));
  EXPECT_EQ(DoubleGenMat(pick)(1, 1), 0.0);
  EXPECT_EQ(errors.takeText(), "");
}

TEST(GenMatPick, ShapesAreReportedSourceFirstAndTheTargetsIsCopied) {
  RecordedErrors errors;
  DoubleGenMat m = threeByTwo();
  const double source[] = {10, 11, 12, 13};
  m(list({2, 0}), list({1})) = DoubleGenMat(source, 2, 2);
  EXPECT_EQ(errors.takeText(), "4004 Matrix sizes don't match (2x2) vs (2x1)");
  EXPECT_EQ(m(2, 1), 10.0);
  EXPECT_EQ(m(0, 1), 11.0);
  DoubleGenMat large(3, 3, -1.0);
  large = m(list({1}), list({0}));
  EXPECT_EQ(errors.takeText(), "4004 Matrix sizes don't match (1x1) vs (3x3)");
  EXPECT_EQ(large(0, 0), 1.0);
  EXPECT_EQ(large(2, 2), -1.0);
  m(list({0}), list({0, 1})) = m(list({0, 1, 2}), list({1}));
  EXPECT_EQ(errors.takeText(), "4004 Matrix sizes don't match (3x1) vs (1x2)");
  EXPECT_EQ(m(0, 0), 11.0);
}

}  // namespace
