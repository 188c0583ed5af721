// SPDX-License-Identifier: MIT
// Conversions to records and back, against the numbers that the records were built from.
#include "knotwork/kernel/ag_rw.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "knotwork/platform/foundation/4d_dbl_point.h"
#include "knotwork/platform/kernel/builders.h"
#include "support/values.h"

namespace {

constexpr int kPeriodic = 2;

template <class Record>
using Owned = std::unique_ptr<Record, void (*)(Record*)>;

Values counted(int n) { return valuesOf(DoubleVec(static_cast<unsigned>(n), 0.0, 1.0)); }

// Cubic with 7 control points in space, numbers 0, 1, 2, ..., and 9 knots.
Owned<ag_spline> curveOf(int rational, int form) {
  const Values numbers = counted(28);
  return {ag_bld_bs(3, numbers.data(), numbers.data(), 0, 3, 4, rational, form), ag_rel_bs};
}

// Linear in u and cubic in v, where it is periodic: 4 x 5 points in space.
Owned<ag_surface> surfaceOf(int uRational, int vRational) {
  const Values knots{0, 1, 2, 3, 5, 5.5, 6, 7, 8, 9, 10};
  return {ag_bld_srf(3, counted(80).data(), knots.data(), 0, 1, 3, 3, 2, uRational, vRational, 0,
                     kPeriodic),
          ag_rel_srf};
}

}  // namespace

TEST(AgRw, CurvePointsGoThereAndBack) {
  for (const int rational : {0, 1, -1}) {
    for (const int dim : {1, 2, 3, 4, 5}) {
      for (const bool fill : {false, true}) {
        const auto curve = curveOf(rational, 0);
        const int stored = 3 + std::abs(rational);
        TtupleVector read(dim, 7, -1.0), after(stored, 7, 0.0), longer(dim, 8, 0.0);
        ASSERT_TRUE(TagRw::cvsToTv(curve.get(), read));
        ASSERT_TRUE(TagRw::tvToCvs(TtupleVector(dim, 7, 0.5), curve.get(), fill));
        ASSERT_TRUE(TagRw::cvsToTv(curve.get(), after));
        for (int c = 0; c < dim; ++c) EXPECT_EQ(read(6)(c), c < stored ? 6 * stored + c : -1);
        for (int c = 0; c < stored; ++c) {
          EXPECT_EQ(after(6)(c), c < dim ? 0.5 : fill ? 1.0 : 6 * stored + c);
        }
        EXPECT_FALSE(TagRw::cvsToTv(curve.get(), longer));
        EXPECT_FALSE(TagRw::tvToCvs(longer, curve.get(), fill));
      }
    }
  }
}

TEST(AgRw, SurfaceRowsRunAlongU) {
  for (const int dim : {2, 3, 4}) {
    const int stored = dim == 3 ? 3 : 4;
    const auto surface = surfaceOf(dim == 2, dim == 4);
    TtupleMatrix tm(dim, 4, 5, -1.0), wrong(dim, 5, 4, 0.0), back(dim, 4, 5, 0.0);
    ASSERT_TRUE(TagRw::cvsToTm(surface.get(), tm));
    for (int k = 0; k < 20; ++k) EXPECT_EQ(tm(k / 5, k % 5)(1), k * stored + 1);
    tm *= -1.0;
    ASSERT_TRUE(TagRw::tmToCvs(tm, surface.get(), true));
    ASSERT_TRUE(TagRw::cvsToTm(surface.get(), back));
    EXPECT_TRUE(back == tm);
    EXPECT_EQ(surface->first->nextV->p[2], dim == 2 ? 1.0 : -(stored + 2));
    EXPECT_TRUE(dim != 2 || surface->first->p[3] == 1.0);
    DoubleVec few(11, 0.0);
    TtupleMatrix tooShort(dim, 4, 5, few);
    for (TtupleMatrix bad : {wrong, tooShort}) {
      EXPECT_FALSE(TagRw::cvsToTm(surface.get(), bad) || TagRw::tmToCvs(bad, surface.get(), false));
    }
  }
}

TEST(AgRw, KnotsGainAndLoseTheirEnds) {
  for (const int form : {0, 1, kPeriodic}) {
    const auto curve = curveOf(0, form);
    const double beyond = form == kPeriodic ? 1.0 : 0.0;
    DoubleVec knots(11, -9.0, 0.25), read(12, 100.0), tooShort(10, 0.0);
    EXPECT_TRUE(TagRw::dvToKnots(knots, curve.get()) && TagRw::knotsToDv(curve.get(), read));
    knots(0) = knots(1) - beyond;
    knots(10) = knots(9) + beyond;
    EXPECT_TRUE(read.slice(0, 11, 1) == knots && read(11) == 100.0);
    EXPECT_FALSE(TagRw::dvToKnots(read, curve.get()) || TagRw::dvToKnots(tooShort, curve.get()));
    EXPECT_FALSE(TagRw::knotsToDv(curve.get(), tooShort));
  }
}

TEST(AgRw, SurfaceKnotsGoDirectionByDirection) {
  const auto surface = surfaceOf(0, 0);
  DoubleVec u(6u), v(9u), fewer(5, -1.0), again(9, -1.0);
  ASSERT_TRUE(TagRw::knotsToDv(surface.get(), u, v));
  EXPECT_EQ(valuesOf(u), (Values{0, 0, 1, 2, 3, 3}));
  EXPECT_EQ(valuesOf(v), (Values{4, 5, 5.5, 6, 7, 8, 9, 10, 11}));
  ASSERT_TRUE(TagRw::dvToKnots(u *= 2.0, ++v, surface.get()));
  // A direction that fails leaves the one after it alone, and keeps the one before.
  EXPECT_FALSE(TagRw::dvToKnots(fewer, -v, surface.get()));
  EXPECT_FALSE(TagRw::dvToKnots(-u, fewer, surface.get()));
  EXPECT_FALSE(TagRw::knotsToDv(surface.get(), fewer, again));
  EXPECT_EQ(again(0), -1.0);
  ASSERT_TRUE(TagRw::knotsToDv(surface.get(), u, again));
  EXPECT_EQ(valuesOf(u), (Values{0, 0, -2, -4, -6, -6}));
  EXPECT_EQ(valuesOf(again), valuesOf(v));
}

TEST(AgRw, ListsAndArraysGoThereAndBack) {
  const Values points = counted(24);
  const Owned<ag_cp_list> list(ag_bld_cp_list(3, 4, points.data()), ag_rel_cp_list),
      numbers(ag_bld_cp_list(1, 4, points.data()), ag_rel_cp_list);
  EXPECT_EQ(valuesOf(TagRw::cpListToTv(2, list.get())), (Values{0, 1, 3, 4, 6, 7, 9, 10}));
  EXPECT_EQ(valuesOf(TagRw::cpListToDv(list.get())), (Values{0, 3, 6, 9}));
  EXPECT_TRUE(TagRw::tvToCpList(TtupleVector(2, 4, -1.0), list.get()));
  EXPECT_TRUE(TagRw::dvToCpList(1, vectorOf({6, 7, 8, 9}), list.get()));
  EXPECT_EQ(valuesOf(TagRw::cpListToTv(3, list.get())),
            (Values{-1, 6, 2, -1, 7, 5, -1, 8, 8, -1, 9, 11}));
  for (const int c : {-1, 3}) EXPECT_FALSE(TagRw::dvToCpList(c, DoubleVec(4, 0.0), list.get()));
  EXPECT_FALSE(TagRw::dvToCpList(0, DoubleVec(3, 0.0), list.get()));
  EXPECT_FALSE(TagRw::tvToCpList(TtupleVector(4, 4, 0.0), list.get()));
  EXPECT_FALSE(TagRw::tvToCpList(TtupleVector(3, 5, 0.0), list.get()));
  // Lists of numbers are written, not read.
  EXPECT_TRUE(TagRw::dvToCpList(0, vectorOf({6, 7, 8, 9}), numbers.get()));
  EXPECT_EQ(numbers->first->next->p[0], 7.0);
  EXPECT_EQ(TagRw::cpListToDv(numbers.get()).length(), 0u);
  ag_cp_list none{2, 0, nullptr};
  EXPECT_TRUE(TagRw::dvToCpList(0, DoubleVec(), &none) && TagRw::cpListToTv(2, &none).size() == 2);
  const Owned<ag_sp_array> array(ag_bld_sp_array(3, 2, 4, points.data()), ag_rel_sp_array);
  const TtupleMatrix tm = TagRw::spArrayToTm(2, array.get());
  ASSERT_TRUE(tm.size() == 2 && tm.rows() == 2 && tm.cols() == 4);
  EXPECT_EQ(valuesOf(tm.row(1)), (Values{12, 13, 15, 16, 18, 19, 21, 22}));
  for (const int dim : {0, 4}) {
    EXPECT_EQ(TagRw::cpListToTv(dim, list.get()).points(), 0);
    EXPECT_EQ(TagRw::spArrayToTm(dim, array.get()).rows(), 0);
  }
}

TEST(AgRw, BrokenRecordsFailAndKeepWhatWasWritten) {
  for (int fault = 0; fault < 5; ++fault) {  // an array that is missing, or a list that ends
    const int whole = fault < 3 ? fault : fault - 2;
    double p[3][2] = {{1, 1}, {2, 2}, {3, 3}};
    ag_cnode nodes[] = {{&nodes[1], p[0]}, {&nodes[2], p[1]}, {nullptr, p[2]}};
    ag_knode knots[] = {{&knots[1], p[0]}, {&knots[2], p[1]}, {nullptr, p[2]}};
    if (fault < 3) nodes[whole].p = nullptr, knots[whole].t = nullptr;
    if (fault >= 3) nodes[whole - 1].next = nullptr, knots[whole - 1].next = nullptr;
    ag_spline curve{2, 1, 2, 0, nodes, knots, 0, 0};
    ag_cp_list list{2, 3, nodes};
    TtupleVector tv(2, 3, 0.0);
    DoubleVec dv(5, 0.0);
    EXPECT_FALSE(TagRw::cvsToTv(&curve, tv) || TagRw::knotsToDv(&curve, dv));
    EXPECT_EQ(sum(tv.component(0)), whole * (whole + 1) / 2);
    EXPECT_EQ(sum(dv.slice(1, 4, 1)), whole * (whole + 1) / 2);
    EXPECT_EQ(TagRw::cpListToTv(2, &list).length() + TagRw::cpListToDv(&list).length(), 0u);
    EXPECT_FALSE(TagRw::dvToKnots(DoubleVec(5, 8.0), &curve));
    EXPECT_FALSE(TagRw::dvToCpList(1, DoubleVec(3, 9.0), &list));
    EXPECT_FALSE(TagRw::tvToCpList(TtupleVector(1, 3, 7.0), &list));
    for (int i = 0; i < 3; ++i) {
      EXPECT_EQ(p[i][0], i < whole ? 7.0 : i + 1.0);
      EXPECT_EQ(p[i][1], i < whole ? 9.0 : i + 1.0);
    }
  }
}

TEST(AgRw, NullAndNonsenseRecordsFail) {
  TtupleVector tv(1, 2, 0.0);
  TtupleMatrix tm(1, 2, 2, 0.0);
  DoubleVec dv(4, 0.0);
  double p[2] = {4.0, 5.0};
  ag_snode corner{nullptr, nullptr, p};
  ag_sknode knot{nullptr, nullptr, p, nullptr};
  constexpr int kHuge = 2147483647;
  const ag_spline step{1, 0, 1, 0, nullptr, nullptr, 0, 0};  // keeps no knots
  EXPECT_FALSE(TagRw::knotsToDv(&step, dv));
  for (const int n : {-kHuge - 1, -1, 0, 1, 2, kHuge}) {
    ag_spline curve{n, n, n, n, nullptr, nullptr, n, n};
    ag_surface surface{n, n, n, n, n, n, n, n, n, &corner, &knot, n};
    ag_cp_list list{2, n, nullptr};
    ag_sp_array array{2, n, n, n > 1 ? &corner : nullptr};
    for (const bool given : {false, true}) {
      ag_spline* s = given ? &curve : nullptr;
      ag_surface* f = given ? &surface : nullptr;
      EXPECT_FALSE(TagRw::cvsToTv(s, tv) || TagRw::tvToCvs(tv, s, true));
      EXPECT_FALSE(TagRw::cvsToTm(f, tm) || TagRw::tmToCvs(tm, f, true));
      EXPECT_FALSE(TagRw::knotsToDv(s, dv) || TagRw::dvToKnots(dv, s));
      EXPECT_FALSE(TagRw::knotsToDv(f, dv, dv) || TagRw::dvToKnots(dv, dv, f));
      ag_cp_list* l = given ? &list : nullptr;
      EXPECT_FALSE(TagRw::dvToCpList(0, dv, l) || TagRw::tvToCpList(tv, l));
      EXPECT_EQ(TagRw::cpListToTv(2, l).length(), 0u);
      EXPECT_EQ(TagRw::spArrayToTm(2, given ? &array : nullptr).length(), 0u);
    }
  }
}

TEST(AgRw, CopiesStayWithinBothSidesAndTheWeightIsBehindTheCoordinates) {
  const double four[] = {1, 2, 3, 4};
  for (const int count : {-1, 0, 2, 9}) {
    const int copied = count < 0 ? 3 : std::min(count, 3);
    DoubleVec v(3, -1.0);
    double p[4] = {-1, -1, -1, -1};
    TagRw::vToDv(four, v, count);
    TagRw::dvToV(DoubleVec(four, 3), p, count);
    for (int k = 0; k < 4; ++k) EXPECT_EQ(p[k], k < copied ? four[k] : -1);
    EXPECT_EQ(valuesOf(v), Values(p, p + 3));
  }
  for (int dim = -1; dim <= 4; ++dim) {
    for (const int rational : {0, 1}) {
      const int spatial = std::clamp(dim, 0, 3);
      double a[] = {1, 2, 3, 4, 5}, b[5] = {};
      T4dDblPoint p(9, 9, 9, 9);
      DoubleVec v(5, -1.0);
      TagRw::agToT4dDblPoint(a, p, dim, rational);
      TagRw::p4ToDv(p, v);
      Values want{0, 0, 0, rational ? a[std::max(dim, 0)] : 1, -1};
      std::copy_n(a, spatial, want.begin());
      EXPECT_EQ(valuesOf(v), want);
      TagRw::T4dDblPointToAg(p, b, dim, rational);
      EXPECT_TRUE(std::equal(b, b + spatial, a));
      EXPECT_EQ(b[std::max(dim, 0)], rational ? p.w : 0);
    }
  }
  for (const unsigned length : {2u, 4u}) {
    T4dDblPoint p;
    TagRw::dvToP4(DoubleVec(length, 2.0), p);
    EXPECT_TRUE(p.x == 2 && p.y == 2 && p.z == (length > 2 ? 2 : 0) && p.w == (length > 3 ? 2 : 1));
  }
}

TEST(AgRw, PolynomialProductsAccumulate) {
  const DoubleVec a = vectorOf({1, 1}), b = vectorOf({1, -1}), none;
  const auto product = [](const DoubleVec& p, const DoubleVec& q, DoubleVec c, bool resized) {
    EXPECT_EQ(TagRw::polyMultiply(p, q, c), resized);
    return valuesOf(c);
  };
  EXPECT_EQ(product(a, b, DoubleVec(3, 0.0), false), (Values{1, 0, -1}));
  EXPECT_EQ(product(a, b, DoubleVec(3, 1.0), false), (Values{2, 1, 0}));
  EXPECT_EQ(product(a, b, DoubleVec(), true), (Values{1, 0, -1}));
  EXPECT_EQ(product(none, none, DoubleVec(), false), Values{});
  EXPECT_EQ(product(a, none, DoubleVec(), true), Values{0});
  DoubleVec self = a.copy();
  EXPECT_TRUE(TagRw::polyMultiply(self, b, self));
  EXPECT_EQ(valuesOf(self), (Values{2, 1, -1}));
}
