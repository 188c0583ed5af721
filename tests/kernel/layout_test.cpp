// SPDX-License-Identifier: MIT
// What curves and surfaces do each in their way: printing, growth, exact ends, normals, records.
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "kernel/reference.h"
#include "knotwork/platform/kernel/accessors.h"
#include "knotwork/platform/kernel/builders.h"

using namespace knotwork::test;

namespace {

constexpr double kEps = std::numeric_limits<double>::epsilon();

template <class Object>
std::string printed(const Object& s) {
  std::FILE* const file = std::tmpfile();
  s.print(file);
  std::string text(static_cast<std::size_t>(std::ftell(file)), ' ');
  std::rewind(file);
  EXPECT_EQ(std::fread(text.data(), 1, text.size(), file), text.size());
  std::fclose(file);
  return text;
}

// An eighth of a sphere: u around the axis, v from the equator to the pole, or from there.
AP_SURFACE sphereOctant(double scale, bool fromPole) {
  AP_SURFACE s(3, 2, 2, 1, 1, 1, 1);
  const double w = std::sqrt(0.5);
  const double arc[3][3] = {{1, 0, 1}, {w, w, w}, {0, 1, 1}};  // weighted x, y and the weight
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      const double radius = scale * arc[i][0], height = scale * arc[i][1], weight = arc[i][2];
      const double point[] = {radius * arc[j][0], radius * arc[j][1], height * arc[j][2],
                              weight * arc[j][2]};
      s.set(fromPole ? 2 - i : i, j, point, 4);
    }
  }
  return s;
}

struct Normal {
  Normal(const AP_SURFACE& s, double u, double v) { s.normal(u, v, p, n); }
  double p[3], n[3] = {1, 1, 1};
};

}  // namespace

TEST(Spline, ClampedEndsAreTheControlPointsToTheBitAlsoAfterInsertion) {
  Maker make(13);
  for (int n = 0; n < 100; ++n) {
    AP_SPLINE s(3, 1 + make.upTo(5), 1 + make.upTo(6), 0);
    make.fill(s.CV(), s.Count(), 3, false);
    s[0][0] = s[s.Count() - 1][2] = -0.0;
    s[0][1] = 1e308;
    s[1][1] = -1e308;
    const std::vector<double> first(s[0], s[1]), last(s[s.Count() - 1], s[s.Count()]);
    const int end = s.Spans();
    if (n % 2) {
      EXPECT_EQ(s.insert(end, 2), end);
    }
    for (const auto& [t, p] : {std::pair{0.0, first}, {end, last}}) {
      double out[30];
      s.eval(out, t, 0);
      for (std::size_t c = 0; c < 3; ++c) {
        EXPECT_TRUE(out[c] == p[c] && std::signbit(out[c]) == std::signbit(p[c])) << n;
      }
    }
  }
}

// Both ends of a span serve alike: what runs the other way is evaluated by the same steps.
TEST(Spline, ACurveRunBackwardsHasTheSamePointsToTheBit) {
  Maker make(14);
  for (int n = 0; n < 200; ++n) {
    const int m = 1 + make.upTo(6), spans = 1 + make.upTo(4);
    AP_SPLINE s(1, m, spans, 0), back(1, m, spans, 0);
    make.fill(s.CV(), s.Count(), 1, false);
    std::reverse_copy(s.CV(), s.CV() + s.Count(), back.CV());
    const double t = (2 * make.upTo(32 * spans - 1) + 1) / 64.0;
    double a[8], b[8];
    s.eval(a, t, 1);
    back.eval(b, spans - t, 1);
    EXPECT_TRUE(t == 0.5 + static_cast<int>(t) || (a[0] == b[0] && a[1] == -b[1])) << t;
  }
}

TEST(KnotRecord, SpansAreFoundAsTheyAreDefined) {
  Maker make(15);
  for (int n = 0; n < 50; ++n) {
    knotwork::KnotRecord knots(make.upTo(3), 2 + make.upTo(80));
    make.fill(knots);
    const Basis model(knots);
    for (int k = knots.first(); k <= knots.last(); ++k) {
      EXPECT_EQ(knots.span(knots(k)), model.span(knots(k)));
      EXPECT_EQ(knots.span(knots(k) + 0.05), model.span(knots(k) + 0.05));
    }
  }
}

TEST(Spline, QuarterCircleIsRoundAndItsTangentsPerpendicular) {
  AP_SPLINE arc(2, 2, 1, 1);
  const double w = std::sqrt(0.5);
  const double points[] = {1, 0, 1, w, w, w, 0, 1, 1};
  arc.set(points, 9);
  double d[9];
  for (int i = 0; i <= 1000; ++i) {
    arc.eval(d, i / 1000.0, 2);
    EXPECT_NEAR(d[0] * d[0] + d[1] * d[1], 1, 6 * kEps);
    EXPECT_NEAR(d[0] * d[3] + d[1] * d[4], 0, 16 * kEps);  // x . x' = 0, and so x . x'' = -x' . x'
    EXPECT_NEAR(d[0] * d[6] + d[1] * d[7], -d[3] * d[3] - d[4] * d[4], 100 * kEps);
  }
}

TEST(Spline, CapacityGrowsByEightForCurvesAndBySixtyFourForSurfaces) {
  AP_SPLINE s(3, 3, 1, 0);
  AP_SURFACE f(3, 3, 3, 1, 1, 0, 0);
  std::fill_n(s.CV(), 12, 0.0);
  std::fill_n(f.CV(), 48, 0.0);
  std::vector<int> curve{s.Capacity()}, surface{f.Capacity()};
  for (int i = 0; i < 20; ++i) {
    s.insert(0.04 * i + 0.1, 1);
    if (i < 5) f.uinsert(0.5, 1), f.vinsert(0.5, 1);
    if (s.Capacity() != curve.back()) curve.push_back(s.Capacity());
    if (f.Capacity() != surface.back()) surface.push_back(f.Capacity());
  }
  EXPECT_EQ(curve, (std::vector<int>{4, 12, 20, 28}));
  EXPECT_EQ(surface, (std::vector<int>{16, 80, 144}));
  EXPECT_TRUE(AP_SPLINE(s).Capacity() == 24 && AP_SURFACE(f).Capacity() == 81);
  EXPECT_TRUE(s.insert(1, 0) > 0 && s.Count() == 24 && f.vinsert(0.5, -1) > 0 && !s.EqualTo(s));
}

TEST(Spline, PrintsKnotsWithRepeatMarksThenPoints) {
  AP_SPLINE s(2, 2, 2, 1);
  const double knots[] = {0, 0, 0.5, 1, 1};
  const double points[] = {0, 1, 1, -2.5, 1e10, 0.5, 3, 4, 5, 6, 7, 8};
  s.Knots().assign(knots, 5);
  s.set(points, 12);
  EXPECT_EQ(printed(s),
            "Knots:  0.00  0.00= 0.50  1.00  1.00=\n"
            "  0.000e+00  1.000e+00  1.000e+00\n -2.500e+00  1.000e+10  5.000e-01\n"
            "  3.000e+00  4.000e+00  5.000e+00\n  6.000e+00  7.000e+00  8.000e+00\n\n");
  EXPECT_EQ(printed(AP_SPLINE(2, -1, 1, 0)), "Knots: \n\n");
}

TEST(Surface, PrintsKnotsWithStarsThenCoordinateLines) {
  AP_SURFACE s(1, 2, 1, 1, 1, 0, 1);
  const double points[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  s.set(points, 12);
  EXPECT_EQ(printed(s),
            "U:   0.000e+00   0.000e+00*  1.000e+00   1.000e+00*\n"
            "V:   0.000e+00   1.000e+00 \n\n"
            "  1.000e+00  3.000e+00  5.000e+00\n  2.000e+00  4.000e+00  6.000e+00\n\n"
            "  7.000e+00  9.000e+00  1.100e+01\n  8.000e+00  1.000e+01  1.200e+01\n\n\n");
}

TEST(Spline, SettingStaysInsideTheControlPoints) {
  AP_SPLINE s(2, 1, 2, 0);
  s.insert(0.5, 1);  // spare capacity behind the points
  const double values[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  std::fill_n(s.CV(), 2 * s.Capacity(), 0.0);
  s.set(2, values, 12);
  s.set(4, values, 12);
  s.set(-1, values, 12);
  s.set(values, -1);
  s.set(nullptr, 3);
  EXPECT_EQ(std::vector<double>(s.CV(), s.CV() + 10),
            (std::vector<double>{0, 0, 0, 0, 1, 2, 3, 4, 0, 0}));
}

TEST(Spline, WorkspaceFormulasTakeNegativeOrdersAsHuge) {
  const AP_SPLINE s(3, 3, 2, 1);
  EXPECT_TRUE(s.Coords() == 4 && s.WorkspaceSize(2) == 16 && s.WorkspaceSize(5) == 24);
  EXPECT_TRUE(s.WorkspaceSize(-1) == 0 && s.WorkspaceSize(-3) == -8);
  const AP_SURFACE b(3, 3, 3, 2, 3, 0, 0), w(3, 3, 2, 1, 1, 0, 0);
  EXPECT_TRUE(b.uCount() == 5 && b.vCount() == 6 && b.Coords() == 3);
  EXPECT_EQ(b.index(1, 2), b.CV() + 21);
  EXPECT_TRUE(w.WorkspaceSize(0) == 48 && w.WorkspaceSize(3) == 96 && w.WorkspaceSize(-1) == 0);
}

TEST(Spline, RecordsShareTheValueOfRepeatedKnotsAndFaultyOnesAreRefused) {
  for (int fault = 0; fault < 9; ++fault) {
    ag_spline* const s = AP_SPLINE(3, 2, 2, 0).AGLIB();
    ag_knode* knot = AGI_getFirstNode(s);
    EXPECT_TRUE(knot->t == knot->next->t && knot->t != knot->next->next->t);
    while (knot->next) knot = knot->next;
    const ag_spline kept = *s;
    double* const cell = std::exchange(knot->t, fault == 0 ? nullptr : knot->t);
    double* const point = std::exchange(s->first->p, fault == 1 ? nullptr : s->first->p);
    if (fault == 2) s->spans = 3;
    if (fault == 4) s->degree = -1;
    if (fault == 5) s->dim = -3;
    if (fault == 6) s->first = nullptr;
    if (fault == 7) s->knots = nullptr;
    if (fault == 3) s->degree = 0x7FFFFFFF;
    EXPECT_EQ(AP_SPLINE(s).Count(), fault < 8 ? 0 : 4) << fault;
    *s = kept;
    knot->t = cell;
    s->first->p = point;
    ag_rel_bs(s);
  }
  EXPECT_EQ(AP_SPLINE(static_cast<ag_spline*>(nullptr)).Count(), 0);
}

TEST(Surface, RecordRowsRunAlongUAndFaultyRecordsAreRefused) {
  AP_SURFACE grid(2, 1, 2, 3, 2, 0, 0);
  Maker(25).fill(grid.CV(), 16, 2, false);
  for (int fault = 0; fault < 9; ++fault) {
    ag_surface* const s = grid.AGLIB();
    EXPECT_EQ(s->first->nextV->p[0], grid.index(1, 0)[0]);
    EXPECT_EQ(s->first->nextU->p[1], grid.index(0, 1)[1]);
    const ag_surface kept = *s;
    ag_sknode *u = s->knots, *v = s->knots;
    while (u->nextU) u = u->nextU;
    while (v->nextV) v = v->nextV;
    ag_snode* const tail = s->first->nextU->nextV;
    double* const uCell = std::exchange(u->u, fault == 0 ? nullptr : u->u);
    double* const vCell = std::exchange(v->v, fault == 4 ? nullptr : v->v);
    ag_snode* const cut = std::exchange(tail->nextV, fault == 1 ? nullptr : tail->nextV);
    if (fault == 2) s->uSpans = 4;
    if (fault == 3) s->vSpans = 0x7FFFFFFF;
    if (fault == 5) s->knots = nullptr;
    if (fault == 6) s->dim = -1;
    if (fault == 7) s->vDegree = 0x7FFFFFFF;
    EXPECT_EQ(AP_SURFACE(s, 0).uCount(), fault < 8 ? 0 : 4) << fault;
    *s = kept;
    u->u = uCell;
    v->v = vCell;
    tail->nextV = cut;
    ag_rel_srf(s);
  }
  EXPECT_EQ(AP_SURFACE(static_cast<ag_surface*>(nullptr), 0).uCount(), 0);
}

TEST(SurfaceNormal, OnASphereOfAnySizeItIsThePointAlsoAtThePole) {
  for (const double scale : {1e-150, 1.0, 1e150}) {
    const AP_SURFACE s = sphereOctant(scale, false), turned = sphereOctant(scale, true);
    for (int i = 0; i <= 20; ++i) {
      for (const double v : {0.0, 0.1, 0.5, 0.9, 1 - 1e-6, 1 - 1e-13, 1 - 1e-15, 1.0}) {
        const Normal at(s, i / 20.0, v), opposite(turned, i / 20.0, 1 - v);
        const double blur = 1 - v > 1e-14 ? 4e-16 / (1 - v) : 0;  // of the shrinking partial
        double length = 0;
        for (int c = 0; c < 3; ++c) {
          const double x = at.p[c] / scale;
          length += x * x;
          EXPECT_NEAR(at.n[c], x, 4 * kEps + blur) << v;
          EXPECT_NEAR(opposite.n[c], -x, 4 * kEps + blur) << v;
        }
        EXPECT_NEAR(length, 1, 16 * kEps);
      }
    }
  }
  AP_SURFACE away = sphereOctant(1, false);
  for (double* p = away.CV(); p < away.index(3, 0); p += 4) p[0] += 1e4 * p[3], p[1] -= 1e4 * p[3];
  EXPECT_NEAR(Normal(away, 0.3, 1).n[2], 1, 1e-9);
}

TEST(SurfaceNormal, PartialsOfUnlikeSizesAreBothSeen) {
  for (const auto& [x, y] : {std::pair{1e9, 1e-14}, {1e9, 1e-150}, {1e-14, 1.0}, {1e-150, 1e150}}) {
    AP_SURFACE s(3, 1, 1, 1, 1, 0, 0);
    const double points[] = {0, 0, 5, x, 0, 5, 0, y, 5, x, y, 5};
    s.set(points, 12);
    EXPECT_EQ(Normal(s, 0.5, 0.5).n[2], 1);
  }
  AP_SURFACE rays(3, 1, 1, 1, 1, 1, 0);  // moved by their weights alone
  const double points[] = {1, 0, 0, 1, 1, 0, 0, 0.5, 1, 0, 1, 1, 1, 0, 1, 0.5};
  rays.set(points, 16);
  EXPECT_NEAR(Normal(rays, 0.25, 0.5).n[1], -1, 4 * kEps);
}

TEST(SurfaceNormal, ParallelPartialsAndOtherDimensionsGiveZero) {
  AP_SURFACE line(3, 1, 1, 1, 1, 0, 0), flat(2, 1, 1, 1, 1, 0, 0);
  const double points[] = {0, 0, 0, 1, 1, 1, 2, 2, 2, 5, 5, 5};
  line.set(points, 12);
  flat.set(points, 8);
  const Normal a(line, 0.5, 0.5), b(flat, 0, 1);
  EXPECT_TRUE(a.n[0] == 0 && a.n[1] == 0 && a.n[2] == 0 && a.p[0] == 2);
  EXPECT_TRUE(b.n[0] == 0 && b.n[1] == 0 && b.n[2] == 1 && b.p[0] == 1 && b.p[1] == 1);
}

// The first two rows fall together: the first useful term is of second order.
TEST(SurfaceNormal, PolesOfHigherOrderUseLaterTerms) {
  AP_SURFACE s(3, 1, 3, 1, 1, 0, 0);
  const double points[] = {0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 1, 0, 0, 2, 0, 0, 2, 1, 0, 3, 0, 1, 3};
  s.set(points, 24);
  const Normal near(s, 0.5, 1e-4), pole(s, 0.5, 0);
  for (int c = 0; c < 3; ++c) EXPECT_NEAR(near.n[c], pole.n[c], 1e-6);
  EXPECT_NEAR(std::hypot(pole.n[0], pole.n[1], pole.n[2]), 1, 4 * kEps);
}
