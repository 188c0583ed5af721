// SPDX-License-Identifier: MIT
// Picks beyond what the view model covers: the shared list, and the checks for derived classes.
#include <gtest/gtest.h>

#include "knotwork/vector/double_vec_pick.h"
#include "knotwork/vector/int_vec_pick.h"
#include "knotwork/vector/schar_vec_pick.h"
#include "support/recorded_errors.h"
#include "vector/vector_oracle.h"

namespace {

template <class Vec>
class VectorPick : public testing::Test {};
TYPED_TEST_SUITE(VectorPick, AllVectors);

TYPED_TEST(VectorPick, SharesVectorAndList) {
  TypeParam v(5, 0, 1);
  const TypeParam view(v);
  IntVec list(3, 0, 1);
  auto pick = v.vecPick(list);
  list(2) = 4;  // the pick shares the list
  pick = 9;
  EXPECT_TRUE(holds(view, {9, 9, 2, 3, 9}));
  const auto another(pick);
  EXPECT_EQ(another.length(), 3u);
  v(4) = 6;
  EXPECT_EQ(another(2), 6);
}

template <class Pick>
struct CheckedPick : Pick {
  explicit CheckedPick(const Pick& pick) : Pick(pick) {}
  void check(unsigned n) const {
    this->assertElements();
    this->lengthCheck(n);
  }
};

TYPED_TEST(VectorPick, ChecksForDerivedClassesReportEveryBadIndex) {
  TypeParam v(3, 1), none;
  const int indices[] = {0, -1, 2, 3};
  CheckedPick checked(v.vecPick(IntVec(indices, 4)));
  CheckedPick ofNone(none.vecPick(IntVec(1, 0)));
  RecordedErrors errors;
  checked.check(4);
  ofNone.check(2);
  EXPECT_EQ(errors.all().front().origin, checked.origin);
  EXPECT_EQ(errors.takeTexts(),
            messages(checked.className, {{"INDEX", "Index (-1) out of range [0->2]"},
                                         {"INDEX", "Index (3) out of range [0->2]"},
                                         {"INDEX", "Index (0) out of range [0->4294967295]"},
                                         {"VNMATCH", lengthsDiffer(1, 2)}}));
}

}  // namespace
