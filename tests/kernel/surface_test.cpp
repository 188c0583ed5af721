// SPDX-License-Identifier: MIT
// Surfaces against the long-double model, spheres with their poles, insertion, layouts and records.
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "kernel/reference.h"
#include "knotwork/platform/kernel/accessors.h"
#include "knotwork/platform/kernel/builders.h"
#include "support/failing_new.h"

using namespace knotwork::test;

namespace {

constexpr double kEps = std::numeric_limits<double>::epsilon();

// An eighth of the unit sphere: u around the axis, v from the equator to the pole.
AP_SURFACE sphereOctant() {
  AP_SURFACE s(3, 2, 2, 1, 1, 1, 1);
  const double w = std::sqrt(0.5);
  const double arc[3][3] = {{1, 0, 1}, {w, w, w}, {0, 1, 1}};  // weighted x, y and the weight
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      const double radius = arc[i][0], height = arc[i][1], weight = arc[i][2];
      const double point[] = {radius * arc[j][0], radius * arc[j][1], height * arc[j][2],
                              weight * arc[j][2]};
      s.set(i, j, point, 4);
    }
  }
  return s;
}

bool isEmpty(const AP_SURFACE& s) { return s.uCount() == 0 && s.vCount() == 0 && !s.AGLIB(); }

bool sameNumbers(const AP_SURFACE& a, const AP_SURFACE& b) {
  const auto same = [](const knotwork::KnotRecord& x, const knotwork::KnotRecord& y) {
    if (x.degree() != y.degree() || x.spans() != y.spans()) return false;
    for (int k = x.first(); k <= x.last(); ++k) {
      if (x(k) != y(k) || x.repeats(k) != y.repeats(k)) return false;
    }
    return true;
  };
  return same(a.uKnots(), b.uKnots()) && same(a.vKnots(), b.vKnots()) && a.Coords() == b.Coords() &&
         std::equal(a.CV(), a.CV() + a.uCount() * a.vCount() * a.Coords(), b.CV());
}

AP_SURFACE anySurface(Maker& make, int rational) {
  return make.surface(1 + make.upTo(3), make.upTo(4), make.upTo(4), 1 + make.upTo(4),
                      1 + make.upTo(4), rational);
}

}  // namespace

TEST(SurfaceEval, PartialsStayWithin64UlpOfTheLargestTerm) {
  Maker make(21);
  for (int n = 0; n < 150; ++n) {
    const AP_SURFACE s = anySurface(make, 0);
    const int k = make.upTo(5);
    std::vector<double> out(at(s.WorkspaceSize(k)));
    const double u = make.parameter(s.uKnots()), v = make.parameter(s.vKnots());
    s.eval(out.data(), u, v, k);
    for (int j = 0; j <= k; ++j) {
      for (int i = 0; i <= k; ++i) {
        for (int c = 0; c < s.Dim(); ++c) {
          const Sum model = partial(s, u, v, i, j, c);
          const double value = out[at(((k + 1) * j + i) * s.Coords() + c)];
          ASSERT_LT(ulps(value, model.value, model.largest), 64) << n << " " << i << " " << j;
          if (i > s.uDegree() || j > s.vDegree()) {
            ASSERT_EQ(value, 0.0);
          }
        }
      }
    }
  }
}

// The product rule puts the pieces together again: A_ij = sum C(i,a) C(j,b) w_ab S_(i-a)(j-b).
TEST(SurfaceEval, RationalPartialsTimesTheWeightAreTheHomogeneousOnes) {
  Maker make(22);
  const double binomial[4][4] = {{1, 0, 0, 0}, {1, 1, 0, 0}, {1, 2, 1, 0}, {1, 3, 3, 1}};
  for (int n = 0; n < 100; ++n) {
    const AP_SURFACE s = anySurface(make, 1 + make.upTo(2));
    const int k = make.upTo(3);
    std::vector<double> out(at(s.WorkspaceSize(k)));
    const double u = make.parameter(s.uKnots()), v = make.parameter(s.vKnots());
    s.eval(out.data(), u, v, k);
    for (int j = 0; j <= k; ++j) {
      for (int i = 0; i <= k; ++i) {
        const Sum model = partial(s, u, v, i, j, 0);
        Sum sum = model;
        sum.value = 0;
        for (int b = 0; b <= j; ++b) {
          for (int a = 0; a <= i; ++a) {
            const Sum w = partial(s, u, v, a, b, s.Dim());
            const Real factor =
                binomial[i][a] * binomial[j][b] * out[at(((k + 1) * (j - b) + i - a) * s.Coords())];
            sum.value += factor * w.value;
            sum.largest = std::max(sum.largest, std::fabs(factor) * w.largest);
          }
        }
        ASSERT_LT(ulps(static_cast<double>(model.value), sum.value, sum.largest), 64)
            << n << " " << i << " " << j;
      }
    }
  }
}

TEST(SurfaceNormal, OnASphereItIsThePointAlsoAtThePole) {
  const AP_SURFACE s = sphereOctant();
  double p[3], n[3];
  for (int i = 0; i <= 20; ++i) {
    for (int j = 0; j <= 20; ++j) {
      s.normal(i / 20.0, j / 20.0, p, n);
      EXPECT_NEAR(p[0] * p[0] + p[1] * p[1] + p[2] * p[2], 1, 16 * kEps);
      for (int c = 0; c < 3; ++c)
        EXPECT_NEAR(p[c], n[c], j < 20 ? 1e-13 / (1.01 - j / 20.0) : 1e-13);
    }
  }
}

TEST(SurfaceNormal, ScaleDoesNotMatterAndParallelPartialsGiveZero) {
  for (const double scale : {1e-150, 1.0, 1e150}) {
    AP_SURFACE s = sphereOctant();
    for (int i = 0; i < 9; ++i) {
      for (int c = 0; c < 3; ++c) s.CV()[4 * i + c] *= scale;
    }
    double p[3], n[3];
    s.normal(0.3, 1, p, n);
    EXPECT_NEAR(n[2], 1, 1e-13);
    s.normal(0.3, 0.2, p, n);
    EXPECT_NEAR(n[0] * p[0] + n[1] * p[1] + n[2] * p[2], scale, 1e-13 * scale);
  }
  AP_SURFACE line(3, 1, 1, 1, 1, 0, 0), flat(2, 1, 1, 1, 1, 0, 0);
  const double points[] = {0, 0, 0, 1, 1, 1, 2, 2, 2, 5, 5, 5};
  line.set(points, 12);
  flat.set(points, 8);
  double p[3], n[3] = {1, 1, 1};
  line.normal(0.5, 0.5, p, n);
  EXPECT_TRUE(n[0] == 0 && n[1] == 0 && n[2] == 0 && p[0] == 2);
  n[1] = n[2] = 1;
  flat.normal(0, 1, p, n);
  EXPECT_TRUE(n[0] == 0 && n[1] == 0 && n[2] == 1 && p[0] == 1 && p[1] == 1);
}

// Partials of a surface whose first two rows fall together: the first useful term is of second
// order.
TEST(SurfaceNormal, PolesOfHigherOrderUseLaterTerms) {
  AP_SURFACE s(3, 1, 3, 1, 1, 0, 0);
  const double rows[4][6] = {
      {0, 0, 0, 0, 0, 0}, {0, 0, 1, 0, 0, 1}, {0, 0, 2, 0, 0, 2}, {1, 0, 3, 0, 1, 3}};
  for (int i = 0; i < 4; ++i) s.set(i, 0, rows[i], 6);
  double p[3], near[3], pole[3];
  s.normal(0.5, 1e-4, p, near);
  s.normal(0.5, 0, p, pole);
  for (int c = 0; c < 3; ++c) EXPECT_NEAR(near[c], pole[c], 1e-6);
  EXPECT_NEAR(std::hypot(pole[0], pole[1], pole[2]), 1, 4 * kEps);
}

TEST(Surface, InsertedKnotsLeaveTheSurfaceAsItWas) {
  Maker make(23);
  for (int n = 0; n < 150; ++n) {
    const AP_SURFACE before = anySurface(make, make.upTo(3));
    AP_SURFACE after(before);
    const bool inU = make.upTo(1);
    const auto& knots = inU ? before.uKnots() : before.vKnots();
    double t = make.parameter(knots);
    if (!knots.contains(t)) t = 0.5 * (knots(0) + knots(knots.spans()));
    const int mult = 1 + make.upTo(2);
    const int s = inU ? after.uinsert(t, mult) : after.vinsert(t, mult);
    ASSERT_EQ((inU ? after.uKnots() : after.vKnots())(s + mult - 1), t);
    std::vector<double> a(at(before.WorkspaceSize(0))), b(at(after.WorkspaceSize(0)));
    for (int i = 0; i < 8; ++i) {
      const double u = make.parameter(before.uKnots()), v = make.parameter(before.vKnots());
      if (!before.uKnots().contains(u) || !before.vKnots().contains(v)) continue;
      before.eval(a.data(), u, v, 0);
      after.eval(b.data(), u, v, 0);
      for (int c = 0; c < before.Dim(); ++c) ASSERT_NEAR(a[at(c)], b[at(c)], 4e-14);
    }
  }
}

TEST(Surface, CapacityGrowsBySixtyFour) {
  Maker make(24);
  AP_SURFACE s = make.surface(3, 3, 3, 1, 1, 0);
  const double u = 0.5 * (s.uKnots()(0) + s.uKnots()(1)), v = 0.5 * (s.vKnots()(0) + s.vKnots()(1));
  std::vector<int> steps{s.Capacity()};
  for (int i = 0; i < 5; ++i) {
    s.uinsert(u, 1);
    s.vinsert(v, 1);
    if (s.Capacity() != steps.back()) steps.push_back(s.Capacity());
  }
  EXPECT_EQ(steps, (std::vector<int>{16, 80, 144}));
  const AP_SURFACE copy(s);
  EXPECT_EQ(copy.Capacity(), 81);
  EXPECT_TRUE(s.uinsert(NAN, 1) == -1 && s.vinsert(1e9, 1) == -1 && s.uinsert(u, 0x7FFFFFFF) == -1);
  const FailingNew failing(0);
  EXPECT_EQ(s.vinsert(v, 100), -1);
  EXPECT_TRUE(sameNumbers(s, copy));
}

TEST(Surface, PrintsKnotsWithStarsThenCoordinateLines) {
  AP_SURFACE s(1, 2, 1, 1, 1, 0, 1);
  const double points[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  s.set(points, 12);
  std::FILE* const file = std::tmpfile();
  s.print(file);
  std::string text(static_cast<std::size_t>(std::ftell(file)), ' ');
  std::rewind(file);
  ASSERT_EQ(std::fread(text.data(), 1, text.size(), file), text.size());
  std::fclose(file);
  EXPECT_EQ(text,
            "U:   0.000e+00   0.000e+00*  1.000e+00   1.000e+00*\n"
            "V:   0.000e+00   1.000e+00 \n\n"
            "  1.000e+00  3.000e+00  5.000e+00\n  2.000e+00  4.000e+00  6.000e+00\n\n"
            "  7.000e+00  9.000e+00  1.100e+01\n  8.000e+00  1.000e+01  1.200e+01\n\n\n");
}

TEST(Surface, RecordsGoThereAndBackWithRowsAlongU) {
  Maker make(25);
  for (int n = 0; n < 60; ++n) {
    AP_SURFACE s = anySurface(make, make.upTo(3));
    s.SetForm(AP_FORM_CLOSED, AP_FORM_PERIODIC);
    s.SetForm(static_cast<AP_TYPE>(3));
    ag_surface* const record = s.AGLIB();
    const AP_SURFACE back(record, 99);
    EXPECT_TRUE(sameNumbers(s, back) && back.uForm() == 1 && back.vForm() == 2 && back.Type() == 3);
    EXPECT_EQ(record->first->nextV ? record->first->nextV->p[0] : s.CV()[0],
              s.vCount() > 1 ? s.index(1, 0)[0] : s.CV()[0]);
    ag_rel_srf(record);
  }
}

TEST(Surface, IncompleteRecordsGiveTheEmptySurface) {
  for (int fault = 0; fault < 9; ++fault) {
    ag_surface* const s = AP_SURFACE(2, 1, 2, 3, 2, 0, 0).AGLIB();
    const ag_surface kept = *s;
    double* const cell = s->knots->nextV->v;
    ag_snode* const tail = s->first->nextU->nextV;
    ag_snode* const cut = tail->nextV;
    if (fault == 0) s->knots->nextV->v = nullptr;
    if (fault == 1) tail->nextV = nullptr;
    if (fault == 2) s->uSpans = 4;
    if (fault == 3) s->vSpans = 0x7FFFFFFF;
    if (fault == 4) s->first = nullptr;
    if (fault == 5) s->knots = nullptr;
    if (fault == 6) s->dim = -1;
    if (fault == 7) s->vDegree = 0x7FFFFFFF;
    EXPECT_EQ(isEmpty(AP_SURFACE(s, 0)), fault < 8) << fault;
    *s = kept;
    s->knots->nextV->v = cell;
    tail->nextV = cut;
    ag_rel_srf(s);
  }
  EXPECT_TRUE(isEmpty(AP_SURFACE(static_cast<ag_surface*>(nullptr), 0)));
  AP_SURFACE none(3, 2, -1, 4, 1, 0, 0);
  double out[3] = {1, 1, 1}, n[3];
  none.eval(out, 0, 0, 0);
  none.normal(0, 0, out, n);
  EXPECT_TRUE(isEmpty(none) && out[2] == 0 && none.uinsert(0, 1) == -1 && !none.node0());
}

TEST(Surface, EveryFailingAllocationGivesAWholeOrAnEmptySurface) {
  Maker make(26);
  const AP_SURFACE s = make.surface(3, 2, 3, 2, 2, 1);
  ag_surface* const record = s.AGLIB();
  int whole = 0;
  for (int n = 0; n < 20; ++n) {
    const FailingNew failing(n);
    AP_SURFACE copy(s), read(record, 0);
    ASSERT_TRUE(sameNumbers(copy, s) || isEmpty(copy));
    ASSERT_TRUE(sameNumbers(read, s) || isEmpty(read));
    whole += sameNumbers(read, s);
    copy.node0();
    copy.Box(1);
  }
  EXPECT_GT(whole, 0);
  ag_rel_srf(record);
}

TEST(Surface, LayoutOfGridWorkspaceListAndStaticEvaluation) {
  const AP_SURFACE b(3, 3, 3, 2, 3, 0, 0), w(3, 3, 2, 1, 1, 0, 0);
  EXPECT_TRUE(b.uCount() == 5 && b.vCount() == 6 && b.Coords() == 3 &&
              b.index(1, 2) == b.CV() + 21);
  EXPECT_TRUE(AP_SURFACE(3, 1, 1, 1, 1, 0, 1).Coords() == 4 && w.WorkspaceSize(0) == 48 &&
              w.WorkspaceSize(-1) == 0);
  Maker make(27);
  AP_SURFACE s = make.surface(2, 2, 3, 2, 2, 3);
  int i = 0;
  for (AP_SNODE* node = s->node0(); node; node = node->next, ++i)
    EXPECT_EQ(node->cv, s.CV() + 3 * i);
  EXPECT_TRUE(i == 20 && s.noden()->cv == s.index(4, 3) && s.noden()->prev->next == s.noden());
  std::vector<double> out(at(s.WorkspaceSize(2)));
  s.eval(out.data(), 0.5, 0.25, 2);
  const double* const area = AP_SURFACE::eval(0.5, 0.25, 2);
  for (int k = 0; k < 27; ++k) EXPECT_EQ(area[k], out[at(k)]);
}
