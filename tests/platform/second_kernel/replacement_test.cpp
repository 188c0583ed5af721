// SPDX-License-Identifier: MIT
// The library on another kernel: the same libknotwork, loaded with a libknotwork_kernel of
// different make.
#include <gtest/gtest.h>

#include <algorithm>

#include "arena_kernel.h"
#include "knotwork/kernel/spline.h"
#include "knotwork/kernel/surface.h"
#include "knotwork/platform/kernel/builders.h"

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

TEST(SecondKernel, SurfacesGoThereAndBack) {
  AP_SURFACE s(3, 2, 3, 4, 2, 0, 0);
  for (int i = 0; i < 90; ++i) s.CV()[i] = i + 1;
  ag_surface* const record = s.AGLIB();
  EXPECT_EQ(arena_records(), 1);
  const AP_SURFACE back(record, 0);
  EXPECT_EQ(back.vCount(), 5);
  EXPECT_TRUE(std::equal(s.CV(), s.CV() + 90, back.CV()));
  ag_rel_srf(record);
}

TEST(SecondKernel, AFullArenaGivesNull) {
  const AP_SURFACE s(3, 3, 3, 200, 200, 0, 0);
  EXPECT_EQ(s.AGLIB(), nullptr);
}
