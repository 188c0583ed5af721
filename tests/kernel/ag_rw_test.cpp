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

constexpr int kOpen = 0, kPeriodic = 2;

template <class Record, void (*release)(Record*)>
struct Releaser {
  void operator()(Record* record) const { release(record); }
};
template <class Record, void (*release)(Record*)>
using Owned = std::unique_ptr<Record, Releaser<Record, release>>;
using Curve = Owned<ag_spline, ag_rel_bs>;
using Surface = Owned<ag_surface, ag_rel_srf>;
using List = Owned<ag_cp_list, ag_rel_cp_list>;
using Array = Owned<ag_sp_array, ag_rel_sp_array>;

Values counted(int n, double first = 0.0) {
  return valuesOf(DoubleVec(static_cast<unsigned>(std::max(n, 0)), first, 1.0));
}

// Control points 0, 1, 2, ... and knots 0, 1, 2, ..., none of which shares its value.
Curve curveOf(int dim, int degree, int spans, int rational = 0, int form = kOpen) {
  const Values points = counted((degree + spans) * (dim + std::abs(rational)));
  const Values knots = counted(spans + 2 * degree - 1);
  return Curve(ag_bld_bs(dim, points.data(), knots.data(), 0, degree, spans, rational, form));
}

// Bilinear in u (3 spans) and cubic in v (2 spans): 4 x 5 points, periodic in v.
Surface surfaceOf(int dim, int uRational, int vRational) {
  const Values points = counted(20 * (dim + (uRational || vRational)));
  Values knots = counted(4);
  for (const double v : {5.0, 5.5, 6.0, 7.0, 8.0, 9.0, 10.0}) knots.push_back(v);
  return Surface(ag_bld_srf(dim, points.data(), knots.data(), 0, 1, 3, 3, 2, uRational, vRational,
                            kOpen, kPeriodic));
}

}  // namespace

TEST(AgRw, CurvePointsGoThereAndBack) {
  for (const int rational : {0, 1, -1}) {
    for (const int dim : {1, 2, 3, 4, 5}) {
      const Curve curve = curveOf(3, 3, 4, rational);
      const int stored = 3 + std::abs(rational);
      TtupleVector read(dim, 7, -1.0);
      ASSERT_TRUE(TagRw::cvsToTv(curve.get(), read));
      for (int c = 0; c < dim; ++c) EXPECT_EQ(read(6)(c), c < stored ? 6 * stored + c : -1.0);
      for (const bool fill : {false, true}) {
        const TtupleVector written(dim, 7, 0.5);
        TtupleVector after(stored, 7, 0.0);
        ASSERT_TRUE(TagRw::tvToCvs(written, curve.get(), fill));
        ASSERT_TRUE(TagRw::cvsToTv(curve.get(), after));
        for (int c = 0; c < stored; ++c) {
          EXPECT_EQ(after(6)(c), c < dim ? 0.5 : fill ? 1.0 : 6 * stored + c);
        }
      }
    }
  }
}

TEST(AgRw, SurfaceRowsRunAlongU) {
  for (const int dim : {2, 3, 4}) {
    const Surface surface = surfaceOf(3, 0, dim == 4);
    const int stored = dim == 4 ? 4 : 3;
    TtupleMatrix tm(dim, 4, 5, -1.0), wrong(dim, 5, 4, 0.0);
    ASSERT_TRUE(TagRw::cvsToTm(surface.get(), tm));
    for (int k = 0; k < 20; ++k) EXPECT_EQ(tm(k / 5, k % 5)(1), k * stored + 1);
    TtupleMatrix negated = tm.copy(), back = tm.copy();
    negated *= -1.0;
    ASSERT_TRUE(TagRw::tmToCvs(negated, surface.get(), dim == 2));
    ASSERT_TRUE(TagRw::cvsToTm(surface.get(), back));
    EXPECT_TRUE(back == negated);
    EXPECT_EQ(surface->first->nextV->p[2], dim == 2 ? 1.0 : -(stored + 2));
    DoubleVec few(11, 0.0);
    TtupleMatrix tooShort(dim, 4, 5, few);
    EXPECT_FALSE(TagRw::cvsToTm(surface.get(), tooShort) || TagRw::cvsToTm(surface.get(), wrong));
    EXPECT_FALSE(TagRw::tmToCvs(tooShort, surface.get(), false));
    EXPECT_FALSE(TagRw::tmToCvs(wrong, surface.get(), false));
  }
}

TEST(AgRw, KnotsGainAndLoseTheirEnds) {
  for (const int form : {kOpen, 1, kPeriodic}) {
    const Curve curve = curveOf(2, 3, 4, 0, form);
    DoubleVec knots(11, -9.0, 0.25), read(12, 100.0), tooShort(10, 0.0);
    EXPECT_TRUE(TagRw::dvToKnots(knots, curve.get()));
    EXPECT_FALSE(TagRw::dvToKnots(read, curve.get()) || TagRw::dvToKnots(tooShort, curve.get()));
    EXPECT_FALSE(TagRw::knotsToDv(curve.get(), tooShort));
    EXPECT_TRUE(TagRw::knotsToDv(curve.get(), read));
    const double beyond = form == kPeriodic ? 1.0 : 0.0;
    knots(0) = knots(1) - beyond;
    knots(10) = knots(9) + beyond;
    knots.resize(12);
    knots(11) = 100.0;
    EXPECT_EQ(valuesOf(read), valuesOf(knots));
  }
}

TEST(AgRw, SurfaceKnotsGoDirectionByDirection) {
  const Surface surface = surfaceOf(3, 0, 0);
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
  ASSERT_TRUE(TagRw::knotsToDvOne(surface.get(), TsurfaceDirection::u, again));
  EXPECT_EQ(again(5), -6.0);
}

TEST(AgRw, ListsAndArraysGoThereAndBack) {
  const Values points = counted(24);
  const List list(ag_bld_cp_list(3, 4, points.data()));
  EXPECT_EQ(valuesOf(TagRw::cpListToTv(2, list.get())), (Values{0, 1, 3, 4, 6, 7, 9, 10}));
  EXPECT_EQ(valuesOf(TagRw::cpListToDv(list.get())), (Values{0, 3, 6, 9}));
  EXPECT_EQ(TagRw::cpListToTv(4, list.get()).length() + TagRw::cpListToTv(0, list.get()).length(),
            0u);
  EXPECT_TRUE(TagRw::tvToCpList(TtupleVector(2, 4, -1.0), list.get()));
  EXPECT_TRUE(TagRw::dvToCpList(1, vectorOf({6, 7, 8, 9}), list.get()));
  EXPECT_EQ(valuesOf(TagRw::cpListToTv(3, list.get())),
            (Values{-1, 6, 2, -1, 7, 5, -1, 8, 8, -1, 9, 11}));
  EXPECT_FALSE(TagRw::dvToCpList(3, DoubleVec(4, 0.0), list.get()));
  EXPECT_FALSE(TagRw::dvToCpList(-1, DoubleVec(4, 0.0), list.get()));
  EXPECT_FALSE(TagRw::dvToCpList(0, DoubleVec(3, 0.0), list.get()));
  EXPECT_FALSE(TagRw::tvToCpList(TtupleVector(4, 4, 0.0), list.get()));
  EXPECT_FALSE(TagRw::tvToCpList(TtupleVector(3, 5, 0.0), list.get()));
  // Lists of numbers are written, not read.
  const List numbers(ag_bld_cp_list(1, 4, points.data()));
  EXPECT_TRUE(TagRw::dvToCpList(0, vectorOf({6, 7, 8, 9}), numbers.get()));
  EXPECT_EQ(numbers->first->next->p[0], 7.0);
  EXPECT_EQ(TagRw::cpListToDv(numbers.get()).length(), 0u);
  ag_cp_list none{2, 0, nullptr};
  EXPECT_TRUE(TagRw::dvToCpList(0, DoubleVec(), &none));
  EXPECT_EQ(TagRw::cpListToTv(2, &none).size(), 2);
  const Array array(ag_bld_sp_array(3, 2, 4, points.data()));
  const TtupleMatrix tm = TagRw::spArrayToTm(2, array.get());
  ASSERT_EQ(tm.size() * 100 + tm.rows() * 10 + tm.cols(), 224);
  EXPECT_EQ(valuesOf(tm.row(1)), (Values{12, 13, 15, 16, 18, 19, 21, 22}));
  EXPECT_EQ(TagRw::spArrayToTm(4, array.get()).rows() + TagRw::spArrayToTm(0, array.get()).rows(),
            0);
}

TEST(AgRw, BrokenRecordsFailAndKeepWhatWasWritten) {
  for (const bool cut : {false, true}) {  // a list that ends, or an array that is missing
    for (int at = 0; at < 3; ++at) {
      double p[3][2] = {{1, 1}, {2, 2}, {3, 3}};
      ag_cnode nodes[] = {{&nodes[1], p[0]}, {&nodes[2], p[1]}, {nullptr, p[2]}};
      ag_knode knots[] = {{&knots[1], p[0]}, {&knots[2], p[1]}, {nullptr, p[2]}};
      if (cut && at > 0) nodes[at - 1].next = nullptr, knots[at - 1].next = nullptr;
      if (!cut || at == 0) nodes[at].p = nullptr, knots[at].t = nullptr;
      ag_spline curve{2, 1, 2, 0, nodes, knots, kOpen, 0};
      ag_cp_list list{2, 3, nodes};
      TtupleVector tv(2, 3, 0.0);
      DoubleVec dv(5, 0.0);
      EXPECT_FALSE(TagRw::cvsToTv(&curve, tv));
      EXPECT_EQ(tv(0)(0) + tv(1)(0) + tv(2)(0), at * (at + 1) / 2);
      EXPECT_EQ(TagRw::cpListToTv(2, &list).length() + TagRw::cpListToDv(&list).length(), 0u);
      EXPECT_FALSE(TagRw::knotsToDv(&curve, dv));
      EXPECT_EQ(sum(dv.slice(1, 4, 1)), at * (at + 1) / 2);
      EXPECT_FALSE(TagRw::dvToKnots(DoubleVec(5, 8.0), &curve));
      EXPECT_FALSE(TagRw::dvToCpList(1, DoubleVec(3, 9.0), &list));
      EXPECT_FALSE(TagRw::tvToCpList(TtupleVector(1, 3, 7.0), &list));
      for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(p[i][0], i < at ? 7.0 : i + 1.0);
        EXPECT_EQ(p[i][1], i < at ? 9.0 : i + 1.0);
      }
    }
  }
  double p[1] = {4.0};
  ag_snode corner{nullptr, nullptr, p};
  ag_sp_array array{1, 2, 1, &corner};
  ag_sknode knot{nullptr, nullptr, p, nullptr};
  ag_surface surface{1, 1, 1, 1, 1, 0, 0, 0, 0, &corner, &knot, 0};
  TtupleMatrix tm(1, 2, 2, 0.0);
  DoubleVec u(4, 0.0), v(4, 0.0);
  EXPECT_EQ(TagRw::spArrayToTm(1, &array).rows(), 0);
  EXPECT_FALSE(TagRw::cvsToTm(&surface, tm));
  EXPECT_FALSE(TagRw::tmToCvs(tm, &surface, true));
  EXPECT_FALSE(TagRw::knotsToDv(&surface, u, v));
}

TEST(AgRw, NullAndNonsenseRecordsFail) {
  TtupleVector tv(1, 2, 0.0);
  TtupleMatrix tm(1, 2, 2, 0.0);
  DoubleVec dv(4, 0.0);
  constexpr int kHuge = 2147483647;
  for (const int n : {-kHuge - 1, -1, 0, kHuge}) {
    ag_spline curve{n, n, n, n, nullptr, nullptr, n, n};
    ag_surface surface{n, n, n, n, n, n, n, n, n, nullptr, nullptr, n};
    ag_cp_list list{2, n, nullptr};
    ag_sp_array array{2, n, n, nullptr};
    for (const bool given : {false, true}) {
      ag_spline* s = given ? &curve : nullptr;
      ag_surface* f = given ? &surface : nullptr;
      EXPECT_FALSE(TagRw::cvsToTv(s, tv) || TagRw::tvToCvs(tv, s, true));
      EXPECT_FALSE(TagRw::cvsToTm(f, tm) || TagRw::tmToCvs(tm, f, true));
      EXPECT_FALSE(TagRw::knotsToDv(s, dv) || TagRw::dvToKnots(dv, s));
      EXPECT_FALSE(TagRw::knotsToDv(f, dv, dv) || TagRw::dvToKnots(dv, dv, f));
      EXPECT_FALSE(TagRw::dvToCpList(0, dv, given ? &list : nullptr));
      EXPECT_FALSE(TagRw::tvToCpList(tv, given ? &list : nullptr));
      EXPECT_EQ(TagRw::cpListToTv(2, given ? &list : nullptr).length(), 0u);
      EXPECT_EQ(TagRw::spArrayToTm(2, given ? &array : nullptr).length(), 0u);
    }
  }
}

TEST(AgRw, CopiesStayWithinBothSides) {
  const double four[] = {1, 2, 3, 4};
  for (const int count : {-1, 0, 2, 9}) {
    const int copied = count < 0 ? 3 : std::min(count, 3);
    DoubleVec v(3, -1.0);
    double p[4] = {-1, -1, -1, -1};
    TagRw::vToDv(four, v, count);
    TagRw::dvToV(DoubleVec(four, 3), p, count);
    for (int k = 0; k < 4; ++k) EXPECT_EQ(p[k], k < copied ? four[k] : -1);
    for (int k = 0; k < 3; ++k) EXPECT_EQ(v(k), p[k]);
  }
}

TEST(AgRw, PointsTakeTheWeightBehindTheCoordinates) {
  for (int dim = -1; dim <= 4; ++dim) {
    for (const int rational : {0, 1}) {
      double a[] = {1, 2, 3, 4, 5}, b[5] = {};
      T4dDblPoint p(9, 9, 9, 9);
      TagRw::agToT4dDblPoint(a, p, dim, rational);
      DoubleVec v(5, -1.0);
      TagRw::p4ToDv(p, v);
      const double w = rational ? a[std::max(dim, 0)] : 1;
      EXPECT_EQ(valuesOf(v),
                (Values{dim > 0 ? 1.0 : 0, dim > 1 ? 2.0 : 0, dim > 2 ? 3.0 : 0, w, -1}));
      TagRw::T4dDblPointToAg(p, b, dim, rational);
      EXPECT_TRUE(std::equal(b, b + std::clamp(dim, 0, 3), a));
      EXPECT_EQ(b[std::max(dim, 0)], rational ? w : 0);
    }
  }
  T4dDblPoint p;
  DoubleVec v(4u);
  TagRw::dvToP4(DoubleVec(2, 2.0), p);
  TagRw::p4ToDv(p, v);
  EXPECT_EQ(valuesOf(v), (Values{2, 2, 0, 1}));
}

TEST(AgRw, PolynomialProductsAccumulate) {
  const DoubleVec a = vectorOf({1, 1}), b = vectorOf({1, -1});
  DoubleVec zeros(3, 0.0), ones(3, 1.0), empty, self = a.copy();
  EXPECT_FALSE(TagRw::polyMultiply(a, b, zeros));
  EXPECT_EQ(valuesOf(zeros), (Values{1, 0, -1}));
  EXPECT_FALSE(TagRw::polyMultiply(a, b, ones));
  EXPECT_EQ(valuesOf(ones), (Values{2, 1, 0}));
  EXPECT_TRUE(TagRw::polyMultiply(a, b, empty));
  EXPECT_EQ(valuesOf(empty), (Values{1, 0, -1}));
  EXPECT_TRUE(TagRw::polyMultiply(self, b, self));
  EXPECT_EQ(valuesOf(self), (Values{2, 1, -1}));
  DoubleVec none;
  EXPECT_FALSE(TagRw::polyMultiply(DoubleVec(), DoubleVec(), none));
  EXPECT_TRUE(TagRw::polyMultiply(a, DoubleVec(), none));
  EXPECT_EQ(valuesOf(none), Values{0});
}
