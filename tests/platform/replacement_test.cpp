// SPDX-License-Identifier: MIT
// The library on another kernel: the same libknotwork, loaded with a libknotwork_kernel of
// different make.
#include <gtest/gtest.h>

#include <algorithm>

#include "knotwork/kernel/spline.h"
#include "knotwork/kernel/surface.h"
#include "platform/host/arena_kernel.h"

TEST(SecondKernel, CurvesGoThereAndBack) {
  AP_SPLINE s(3, 3, 5, 1);
  for (int i = 0; i < 32; ++i) s.CV()[i] = i + 1;
  s.insert(2.0, 2);
  const unsigned before = arena_bytes();
  ag_spline* const record = s.AGLIB();
  EXPECT_TRUE(arena_records() == 1 && arena_bytes() > before);
  const AP_SPLINE back(record);
  EXPECT_EQ(back.Count(), 10);
  EXPECT_TRUE(std::equal(s.CV(), s.CV() + 40, back.CV()));
  for (int k = -2; k <= 9; ++k) {
    EXPECT_TRUE(back.Knots()(k) == s.Knots()(k) && back.Knots().repeats(k) == s.Knots().repeats(k));
  }
  ag_rel_bs(record);
  EXPECT_EQ(arena_records(), 0);
}
