// SPDX-License-Identifier: MIT
// Matrix picks.
#include <gtest/gtest.h>

#include <random>

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

// The element that a pick names, by its number in the matrix' vector; -1 for none.
int placeOf(const IntGenMat& m, int row, int col) {
  const long long k = static_cast<long long>(col) * m.rows() + row;
  return 0 <= k && k < static_cast<long long>(m.dataVec().length()) ? static_cast<int>(k) : -1;
}

TEST(GenMatPick, FollowsTheModelOverAnyStorageAndLists) {
  std::mt19937 random(77);
  const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  for (int trial = 0; trial < 4000; ++trial) {
    RecordedErrors errors;
    const int rows = 1 + below(5), cols = 1 + below(5);
    const bool backwards = below(2) == 1, shorter = below(8) == 0;
    IntVec storage(64, 0, 1);
    IntVec elements =
        storage.slice(backwards ? 60 : 2, unsigned(rows * cols - shorter), backwards ? -2 : 1);
    IntGenMat m(elements, unsigned(rows), unsigned(cols));
    const int wrong = below(4) == 0;  // some lists name rows and columns that do not exist
    IntVec rowList(unsigned(below(6)), 0), colList(unsigned(below(6)), 0);
    for (int i = 0; i < int(rowList.length()); ++i) rowList(i) = below(rows + 2 * wrong) - wrong;
    for (int j = 0; j < int(colList.length()); ++j) colList(j) = below(cols + 2 * wrong) - wrong;
    // Now and then a list lies in what is written: it counts as it then stands.
    if (below(4) == 0) rowList.reference(storage.slice(below(4), 3, 1));
    if (below(4) == 0) colList.reference(storage.slice(below(4), 3, 1));
    IntGenMat source(rowList.length(), colList.length(), 0), read(source.copy());
    for (int k = 0; k < int(source.dataVec().length()); ++k) source.data()[k] = below(9);
    const bool fills = below(2) == 1;

    const IntVec before = storage.copy();
    IntGenMatPick pick = m(rowList, colList);
    read = pick;
    fills ? pick = 3 : pick = source;
    const IntVec written = storage.copy();
    storage = before;
    for (const bool reading : {true, false}) {
      for (int j = 0; j < int(colList.length()); ++j) {
        for (int i = 0; i < int(rowList.length()); ++i) {
          const int k = placeOf(m, rowList(i), colList(j));
          EXPECT_TRUE(!reading || read(i, j) == (k < 0 ? 0 : elements(k)));
          if (!reading && k >= 0) elements(k) = fills ? 3 : source(i, j);
        }
      }
    }
    ASSERT_TRUE(written == storage) << trial;
  }
}

}  // namespace
