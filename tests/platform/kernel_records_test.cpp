// SPDX-License-Identifier: MIT
// The kernel stand-in: what builders lay out, and sizes they refuse. Leaks are the sanitizers'
// affair.
#include <gtest/gtest.h>

#include <vector>

#include "knotwork/platform/kernel/accessors.h"
#include "knotwork/platform/kernel/builders.h"
#include "knotwork/platform/kernel/ticks.h"

namespace {

std::vector<double> counting(int n) {
  std::vector<double> values(static_cast<unsigned>(n));
  for (int k = 0; k < n; ++k) values[static_cast<unsigned>(k)] = k;
  return values;
}

}  // namespace

TEST(KernelRecords, CurveSharesTheValueOfRepeatedKnots) {
  const double knots[] = {0, 0, 0, 1, 2, 2, 2};
  ag_spline* const s = ag_bld_bs(2, counting(15).data(), knots, 4, 3, 2, -1, 2);
  int cells = 0, k = 0;
  const double* last = nullptr;
  for (const ag_knode* n = AGI_getFirstNode(s); n; last = n->t, n = n->next) {
    EXPECT_EQ(*n->t, knots[k++]);
    cells += n->t != last;
  }
  EXPECT_TRUE(k == 7 && cells == 3);
  double expected = 0;
  for (const ag_cnode* n = s->first; n; n = n->next) {
    for (int c = 0; c < 3; ++c) EXPECT_EQ(n->p[c], expected++);
  }
  EXPECT_TRUE(expected == 15 && ag_get_form_bs(s) == 2 && s->type == 4 && s->rational == -1);
  ag_rel_bs(s);
}

TEST(KernelRecords, SurfaceChainsShareTheirFirstNode) {
  ag_surface* const s =
      ag_bld_srf(3, counting(5 * 4 * 4).data(), counting(7 + 5).data(), 1, 3, 2, 2, 2, 0, 1, 0, 2);
  const ag_sknode* u = AGI_getFirstSurfaceNode(s);
  const ag_sknode* v = u;
  for (int k = 0; k < 7; ++k, u = u->nextU) EXPECT_EQ(*u->u, k);
  for (int k = 0; k < 5; ++k, v = v->nextV) EXPECT_EQ(*v->v, 7 + k);
  EXPECT_TRUE(!u && !v);
  double expected = 0;
  for (const ag_snode* row = s->first; row; row = row->nextU) {
    for (const ag_snode* n = row; n; n = n->nextV, expected += 4) {
      EXPECT_EQ(n->p[0], expected);
      EXPECT_EQ(n->nextU, row->nextU);
    }
  }
  EXPECT_EQ(expected, 80);
  ag_rel_srf(s);
}

TEST(KernelRecords, RefusedSizesAndEmptyPieces) {
  EXPECT_EQ(ag_bld_bs(-1, nullptr, nullptr, 0, 3, 1, 0, 0), nullptr);
  EXPECT_EQ(ag_bld_bs(3, nullptr, nullptr, 0, 0, 0, 0, 0), nullptr);
  EXPECT_EQ(ag_bld_bs(3, nullptr, nullptr, 0, 2147483647, 2147483647, 0, 0), nullptr);
  EXPECT_EQ(ag_bld_bs(3, nullptr, nullptr, 0, 1, 1, -2147483647 - 1, 0), nullptr);
  EXPECT_EQ(ag_bld_srf(2147483647, nullptr, nullptr, 0, 1, 1, 1, 1, 0, 0, 0, 0), nullptr);
  ag_spline* const constant = ag_bld_bs(1, nullptr, nullptr, 0, 0, 1, 0, 0);
  EXPECT_EQ(AGI_getFirstNode(constant), nullptr);
  ag_rel_bs(constant);
  ag_surface* const oneWay = ag_bld_srf(1, nullptr, nullptr, 0, 0, 2, 1, 1, 0, 0, 0, 0);
  EXPECT_TRUE(oneWay->knots->nextV && !oneWay->knots->nextU);
  ag_rel_srf(oneWay);
  ag_cp_list* const list = ag_bld_cp_list(2, 0, nullptr);
  EXPECT_EQ(list->first, nullptr);
  ag_rel_cp_list(list);
  ag_sp_array* const array = ag_bld_sp_array(1, 2, 3, counting(6).data());
  EXPECT_EQ(array->first->nextU->nextV->p[0], 4);
  ag_rel_sp_array(array);
  EXPECT_EQ(AGI_getFirstNode(nullptr), nullptr);
  EXPECT_EQ(ag_al_dbl(0), nullptr);
}

TEST(KernelRecords, TicksReachTheRegisteredFunction) {
  EXPECT_EQ(ag_tick(1, 2), 0);
  ag_register_tick_function([](int step, int maximum) { return 10 * step + maximum; });
  EXPECT_EQ(ag_tick(1, 2), 12);
  ag_register_tick_function(nullptr);
  EXPECT_EQ(ag_tick(1, 2), 0);
}
