// SPDX-License-Identifier: MIT
// What curves and surfaces do each in their way: printing, growth, exact ends, normals, records.
#include <gtest/gtest.h>

#include <clocale>
#include <cstring>
#include <string>
#include <vector>

#include "kernel/reference.h"
#include "knotwork/platform/kernel/accessors.h"
#include "knotwork/platform/kernel/builders.h"

using namespace knotwork::test;

namespace {

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
      EXPECT_EQ(std::memcmp(out, p.data(), 3 * sizeof *out), 0) << n;
    }
  }
}

// Weights of both signs cancel there (within a weight too, where knots go on beyond the ends), and
// control points of very unlike sizes take part.
TEST(Spline, BeyondTheEndsOnlyWhatTheTermsRoundIsLost) {
  Maker make(16);
  for (int n = 0; n < 6000; ++n) {
    AP_SPLINE s(1, 1 + make.upTo(6), 1 + make.upTo(4), 0);
    std::vector<double> knots;
    double t = 0;
    const bool clamped = n % 2 == 0;
    for (int k = s.Knots().first(); k <= s.Knots().last(); ++k) {
      if (!clamped || (k > 0 && k <= s.Spans())) t += std::pow(10, make.real(-3, 0));
      knots.push_back(t);
    }
    s.Knots().assign(knots.data(), static_cast<int>(knots.size()));
    const double low = s.Knots()(0), high = s.Knots()(s.Spans());
    for (int i = 0; i < s.Count(); ++i) s[i][0] = make.real(-1, 1) * std::pow(10, make.real(-4, 4));
    const double beyond = (high - low) * std::pow(10, make.real(-2, 0.7));
    const double x = make.upTo(1) ? high + beyond : low - beyond;
    double out[8];
    s.eval(out, x, 0);
    const Sum want = partial(net(s), x, 0, 0, 0, 0);
    ASSERT_LT(ulps(out[0], want.value, want.largest), 32) << n;
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

TEST(Spline, PrintsKnotsWithMarksThenPoints) {
  AP_SPLINE s(2, 2, 2, 1);
  AP_SURFACE f(1, 2, 1, 1, 1, 0, 1);
  const double knots[] = {0, 0, 0.5, 1, 1};
  const double points[] = {0, 1, 1, -2.5, 1e10, 0.5, 3, 4, 5, 6, 7, 8};
  s.Knots().assign(knots, 5);
  s.set(points, 12);
  f.set(points, 12);
  EXPECT_EQ(printed(AP_SPLINE(2, -1, 1, 0)), "Knots: \n\n");
  EXPECT_EQ(printed(s),
            "Knots:  0.00  0.00= 0.50  1.00  1.00=\n"
            "  0.000e+00  1.000e+00  1.000e+00\n -2.500e+00  1.000e+10  5.000e-01\n"
            "  3.000e+00  4.000e+00  5.000e+00\n  6.000e+00  7.000e+00  8.000e+00\n\n");
  EXPECT_EQ(printed(f),
            "U:   0.000e+00   0.000e+00*  1.000e+00   1.000e+00*\n"
            "V:   0.000e+00   1.000e+00 \n\n"
            "  0.000e+00  1.000e+00  1.000e+10\n  1.000e+00 -2.500e+00  5.000e-01\n\n"
            "  3.000e+00  5.000e+00  7.000e+00\n  4.000e+00  6.000e+00  8.000e+00\n\n\n");
}

TEST(Spline, PrintsThePointOfTheCLocaleInEveryOther) {
  AP_SPLINE s(1, 1, 3, 0);
  const double knots[] = {-0.0, 1e300, INFINITY, NAN};
  const double points[] = {-0.5, 9.9995, 5e-324, -INFINITY};
  s.Knots().assign(knots, 4);
  s.set(points, 4);
  char inC[500] = "Knots: ";
  int n = 7;
  for (const double k : knots) n += std::snprintf(inC + n, at(500 - n), " %4.2f ", k);
  for (const double p : points) n += std::snprintf(inC + n, at(500 - n), "\n %10.3e", p);
  std::strcpy(inC + n, "\n\n");
  EXPECT_EQ(printed(s), inC);
  for (const char* comma : {"de_DE.UTF-8", "fr_FR.UTF-8", "de_DE", "German"}) {
    if (!std::setlocale(LC_NUMERIC, comma)) continue;
    EXPECT_EQ(printed(s), inC);
    AP_SURFACE f(1, 1, 1, 1, 1, 0, 0);
    std::fill_n(f.CV(), 4, 0.5);
    EXPECT_EQ(printed(f).find(','), std::string::npos);
    std::setlocale(LC_NUMERIC, "C");
    return;
  }
  GTEST_SKIP() << "no locale with a decimal comma is installed";
}

TEST(Spline, SettingStaysInsideTheControlPoints) {
  AP_SPLINE s(2, 1, 2, 0);
  AP_SURFACE f(1, 1, 1, 2, 1, 0, 0);
  s.insert(0.5, 1);  // spare capacity behind the points
  const double values[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  std::fill_n(s.CV(), 2 * s.Capacity(), 0.0);
  std::fill_n(f.CV(), 6, 0.0);
  for (const int i : {2, 4, -1}) s.set(i, values, 12);
  s.set(values, -1);
  s.set(nullptr, 3);
  for (const auto& [i, j] : {std::pair{-1, 0}, {0, -1}, {2, 0}, {0, 3}, {1, 3}, {1, 1}})
    f.set(i, j, values, 7);
  const double behind[] = {0, 0, 0, 0, 1, 2, 3, 4, 0, 0};
  EXPECT_TRUE(std::equal(behind, behind + 10, s.CV()));
  EXPECT_TRUE(std::equal(behind, behind + 6, f.CV()));
}

TEST(Spline, WorkspaceFormulasTakeNegativeOrdersAsHuge) {
  const AP_SPLINE s(3, 3, 2, 1);
  EXPECT_TRUE(s.WorkspaceSize(2) == 16 && s.WorkspaceSize(5) == 24);
  EXPECT_TRUE(s.WorkspaceSize(-1) == 0 && s.WorkspaceSize(-3) == -8);
  const AP_SURFACE w(3, 3, 2, 1, 1, 0, 0);
  EXPECT_TRUE(w.WorkspaceSize(0) == 48 && w.WorkspaceSize(3) == 96 && w.WorkspaceSize(-1) == 0);
}

TEST(Records, OfRepeatedKnotsShareTheirValueAndRowsRunAlongUAndFaultyOnesAreRefused) {
  constexpr int kHuge = 0x7FFFFFFF;
  AP_SURFACE grid(2, 1, 2, 3, 2, 0, 0);
  Maker(25).fill(grid.CV(), 16, 2, false);
  ag_spline* const s = AP_SPLINE(3, 2, 2, 0).AGLIB();
  ag_surface* const f = grid.AGLIB();
  const auto curve = [&] { return AP_SPLINE(s).Count(); };
  const auto surface = [&] { return AP_SURFACE(f, 0).uCount(); };
  const auto refused = [](auto count, auto& field, auto bad) {
    const auto kept = std::exchange(field, bad);
    EXPECT_EQ(count(), 0);
    field = kept;
    EXPECT_EQ(count(), 4);
  };
  ag_knode* knot = AGI_getFirstNode(s);
  EXPECT_TRUE(knot->t == knot->next->t && knot->t != knot->next->next->t);
  while (knot->next) knot = knot->next;
  refused(curve, knot->t, nullptr);
  refused(curve, s->first->p, nullptr);
  refused(curve, s->first, nullptr);
  refused(curve, s->knots, nullptr);
  for (const auto& [field, bad] : {std::pair{&s->spans, 3}, {&s->degree, kHuge}, {&s->degree, -1}})
    refused(curve, *field, bad);
  refused(curve, s->dim, -3);
  EXPECT_EQ(f->first->nextV->p[0], grid.index(1, 0)[0]);
  EXPECT_EQ(f->first->nextU->p[1], grid.index(0, 1)[1]);
  ag_sknode *u = f->knots, *v = f->knots;
  while (u->nextU) u = u->nextU;
  while (v->nextV) v = v->nextV;
  refused(surface, u->u, nullptr);
  refused(surface, v->v, nullptr);
  refused(surface, f->first->nextU->nextV->nextV, nullptr);
  refused(surface, f->knots, nullptr);
  for (const auto& [field, bad] : {std::pair{&f->uSpans, 4}, {&f->vSpans, kHuge}, {&f->dim, -1}})
    refused(surface, *field, bad);
  refused(surface, f->vDegree, kHuge);
  ag_rel_bs(s);
  ag_rel_srf(f);
  EXPECT_EQ(AP_SPLINE(static_cast<ag_spline*>(nullptr)).Count(), 0);
  EXPECT_EQ(AP_SURFACE(static_cast<ag_surface*>(nullptr), 0).uCount(), 0);
}
