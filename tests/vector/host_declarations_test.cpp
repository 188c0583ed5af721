// SPDX-License-Identifier: MIT
// A host may declare classes and functions itself before it includes the headers.
class DoubleVec;
class IntVec;
class SCharVecPick;
double sum(const DoubleVec&);
DoubleVec operator+(const DoubleVec&, const DoubleVec&);
int maxIndex(const IntVec&);

int lengthOf(const DoubleVec& v);

#include <gtest/gtest.h>

#include "knotwork/knotwork.h"

int lengthOf(const DoubleVec& v) { return static_cast<int>(v.length()); }

TEST(HostDeclarations, MayStandBeforeTheHeaders) {
  EXPECT_EQ(sum(DoubleVec(3, 1.0) + DoubleVec(3, 0.5)), 4.5);
  EXPECT_EQ(lengthOf(DoubleVec(3, 1.0)), 3);
  EXPECT_EQ(maxIndex(IntVec(3, 1, 1)), 2);
}
