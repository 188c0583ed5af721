// SPDX-License-Identifier: MIT
// Curves: knot insertion, layouts, records, lists, boxes and what makes the empty curve.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "kernel/reference.h"
#include "knotwork/platform/kernel/accessors.h"
#include "knotwork/platform/kernel/builders.h"
#include "support/failing_new.h"

using namespace knotwork::test;

namespace {

std::string printed(const std::function<void(std::FILE*)>& print) {
  std::FILE* const file = std::tmpfile();
  print(file);
  std::string text(static_cast<std::size_t>(std::ftell(file)), ' ');
  std::rewind(file);
  EXPECT_EQ(std::fread(text.data(), 1, text.size(), file), text.size());
  std::fclose(file);
  return text;
}

bool isEmpty(const AP_SPLINE& s) {
  return s.Count() == 0 && s.Spans() == 0 && s.AGLIB() == nullptr;
}

bool sameNumbers(const AP_SPLINE& a, const AP_SPLINE& b) {
  if (a.Count() != b.Count() || a.Degree() != b.Degree() || a.Coords() != b.Coords()) return false;
  for (int k = a.Knots().first(); k <= a.Knots().last(); ++k) {
    if (a.Knots()(k) != b.Knots()(k) || a.Knots().repeats(k) != b.Knots().repeats(k)) return false;
  }
  return std::equal(a.CV(), a.CV() + a.Count() * a.Coords(), b.CV());
}

}  // namespace

TEST(Spline, InsertedKnotsLeaveTheCurveAsItWas) {
  Maker make(11);
  for (int n = 0; n < 300; ++n) {
    const int rational = make.upTo(1);
    const AP_SPLINE before = make.curve(2, make.upTo(5), 1 + make.upTo(6), rational);
    AP_SPLINE after(before);
    const auto& knots = before.Knots();
    double t = make.parameter(knots);
    if (!knots.contains(t)) t = 0.5 * (knots(0) + knots(knots.spans()));
    const int mult = 1 + make.upTo(2);
    const int s = after.insert(t, mult);
    ASSERT_EQ(after.Spans(), before.Spans() + mult);
    for (int k = 0; k < mult; ++k) ASSERT_EQ(after.Knots()(s + k), t);
    for (int k = after.Knots().first() + 1; k <= after.Knots().last(); ++k) {
      ASSERT_LE(after.Knots()(k - 1), after.Knots()(k));
      ASSERT_EQ(after.Knots().repeats(k), after.Knots()(k - 1) == after.Knots()(k));
    }
    double a[40], b[40];
    for (int i = 0; i < 8; ++i) {
      const double x = make.parameter(knots);
      if (!knots.contains(x)) continue;
      before.eval(a, x, 0);
      after.eval(b, x, 0);
      for (int c = 0; c < 2; ++c) ASSERT_NEAR(a[c], b[c], 2e-14) << n << " t " << t << " x " << x;
    }
  }
}

TEST(Spline, InsertionAtTheEndKeepsTheLastPointToTheBit) {
  Maker make(12);
  AP_SPLINE s(3, 3, 4, 0);
  make.fill(s.CV(), s.Count(), 3, false);
  const std::vector<double> last(s[6], s[6] + 3);
  EXPECT_EQ(s.insert(4.0, 2), 4);
  double out[12];
  s.eval(out, 4.0, 0);
  EXPECT_TRUE(std::equal(last.begin(), last.end(), out));
  EXPECT_TRUE(std::equal(last.begin(), last.end(), s[8]));
}

TEST(Spline, CapacityGrowsByEightAndRefusedInsertionsChangeNothing) {
  Maker make(13);
  AP_SPLINE s = make.curve(3, 3, 1, 0);
  const double low = s.Knots()(0), high = s.Knots()(1);
  std::vector<int> steps{s.Capacity()};
  for (int i = 0; i < 20; ++i) {
    s.insert(low + (high - low) * make.real(0.1, 0.9), 1);
    if (s.Capacity() != steps.back()) steps.push_back(s.Capacity());
  }
  EXPECT_EQ(steps, (std::vector<int>{4, 12, 20, 28}));
  const AP_SPLINE copy(s);
  EXPECT_EQ(copy.Capacity(), 24);
  EXPECT_TRUE(s.insert(low - 1, 1) == -1 && s.insert(NAN, 1) == -1 && s.insert(high, 0) > 0);
  EXPECT_EQ(s.insert(high, 0x7FFFFFFF), -1);
  EXPECT_TRUE(sameNumbers(s, copy));
  const knotwork::test::FailingNew failing(0);
  EXPECT_EQ(s.insert(low, 5), -1);
  EXPECT_TRUE(sameNumbers(s, copy));
}

TEST(Spline, PrintsKnotsWithRepeatMarksThenPoints) {
  AP_SPLINE s(2, 2, 2, 1);
  const double knots[] = {0, 0, 0.5, 1, 1};
  const double points[] = {0, 1, 1, -2.5, 1e10, 0.5, 3, 4, 5, 6, 7, 8};
  s.Knots().assign(knots, 5);
  s.set(points, 12);
  EXPECT_EQ(printed([&](std::FILE* f) { s.print(f); }),
            "Knots:  0.00  0.00= 0.50  1.00  1.00=\n"
            "  0.000e+00  1.000e+00  1.000e+00\n"
            " -2.500e+00  1.000e+10  5.000e-01\n"
            "  3.000e+00  4.000e+00  5.000e+00\n"
            "  6.000e+00  7.000e+00  8.000e+00\n"
            "\n");
  s.print(nullptr);
}

TEST(Spline, RecordsGoThereAndBack) {
  Maker make(14);
  for (int n = 0; n < 100; ++n) {
    AP_SPLINE s = make.curve(1 + make.upTo(3), make.upTo(4), 1 + make.upTo(5), make.upTo(2) - 1);
    s.SetForm(AP_FORM_PERIODIC);
    s.SetForm(static_cast<AP_TYPE>(7));
    ag_spline* const record = s.AGLIB();
    const AP_SPLINE back(record);
    EXPECT_TRUE(sameNumbers(s, back) && !s.EqualTo(s));
    EXPECT_TRUE(back.Form() == 2 && back.Type() == 7 && back.Rationality() == s.Rationality());
    const ag_knode* previous = nullptr;
    int k = s.Knots().first();
    for (const ag_knode* node = AGI_getFirstNode(record); node;
         previous = node, node = node->next) {
      EXPECT_EQ(previous && previous->t == node->t, s.Knots().repeats(k++));
    }
    ag_rel_bs(record);
  }
}

TEST(Spline, IncompleteRecordsGiveTheEmptyCurve) {
  double x[] = {1, 2, 3};
  ag_cnode points[3] = {{&points[1], x}, {&points[2], x}, {nullptr, x}};
  ag_knode knots[3] = {{&knots[1], x}, {&knots[2], x + 1}, {nullptr, x + 2}};
  const ag_spline whole{3, 1, 2, 0, points, knots, 0, 0};
  EXPECT_FALSE(AP_SPLINE(&whole).Count() != 3);
  EXPECT_TRUE(isEmpty(AP_SPLINE(static_cast<ag_spline*>(nullptr))));
  for (int fault = 0; fault < 9; ++fault) {
    ag_spline broken = whole;
    points[1].p = fault == 0 ? nullptr : x;
    knots[1].t = fault == 1 ? nullptr : x + 1;
    if (fault == 2) broken.spans = 3;
    if (fault == 3) broken.spans = 0x7FFFFFFF;
    if (fault == 4) broken.degree = -1;
    if (fault == 5) broken.dim = -3;
    if (fault == 6) broken.first = nullptr;
    if (fault == 7) broken.knots = nullptr;
    if (fault == 8) broken.degree = 0x7FFFFFFF;
    const AP_SPLINE s(&broken);
    EXPECT_TRUE(isEmpty(s)) << fault;
  }
}

TEST(Spline, TheEmptyCurveIsSafe) {
  for (AP_SPLINE s : {AP_SPLINE(3, -1, 4, 0), AP_SPLINE(-3, 3, 1, 0),
                      AP_SPLINE(3, 0x7FFFFFFF, 0x7FFFFFFF, 1), AP_SPLINE(0x7FFFFFFF, 3, 3, 1)}) {
    EXPECT_TRUE(isEmpty(s) && !s.node0() && !s.noden() && s.insert(0, 1) == -1);
    if (s.Dim() > 3) continue;
    double out[4] = {1, 1, 1, 1};
    s.eval(out, 0.0, 0);
    s.set(0, out, 4);
    EXPECT_EQ(out[0], s.Dim() ? 0.0 : 1.0);
    EXPECT_EQ(printed([&](std::FILE* f) { s.print(f); }), "Knots: \n\n");
  }
}

TEST(Spline, EveryFailingAllocationGivesAWholeOrAnEmptyCurve) {
  Maker make(15);
  const AP_SPLINE s = make.curve(2, 3, 4, 1);
  ag_spline* const record = s.AGLIB();
  int whole = 0;
  for (int n = 0; n < 12; ++n) {
    const FailingNew failing(n);
    AP_SPLINE copy(s), read(record);
    ASSERT_TRUE(sameNumbers(copy, s) || isEmpty(copy));
    ASSERT_TRUE(sameNumbers(read, s) || isEmpty(read));
    whole += sameNumbers(read, s);
    copy.node0();
    copy.Box(1);
    AP_SPLINE::eval(0.1, 12);
  }
  EXPECT_GT(whole, 0);
  ag_rel_bs(record);
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

TEST(Spline, ListAndBoxFollowTheControlPoints) {
  AP_SPLINE s(2, 1, 2, 1);
  const double points[] = {1, -4, 2, 3, 3, 1, 0, 5, 5};
  s.set(points, 9);
  const AP_MMBOX& box = s.Box(0);
  EXPECT_TRUE(box.min[0] == 0 && box.min[1] == -2 && box.max[0] == 3 && box.max[1] == 3);
  s[0][0] = 100;
  EXPECT_EQ(s.Box(0).max[0], 3);
  EXPECT_EQ(s.Box(1).max[0], 50);
  EXPECT_EQ(AP_SPLINE(s).Box(0).max[0], 50);
  s.node0();
  s.insert(0.5, 1);
  int i = 0;
  for (AP_CNODE* node = s->node0(); node; node = node->next, ++i) {
    EXPECT_EQ(node->cv, s[i]);
    EXPECT_TRUE(node->prev ? node->prev->next == node : i == 0);
    EXPECT_EQ(!node->next, node == s.noden());
  }
  EXPECT_EQ(i, 4);
}

TEST(Spline, WorkspaceTakesNegativeOrdersAsHuge) {
  const AP_SPLINE s(3, 3, 2, 1);
  EXPECT_TRUE(s.Coords() == 4 && s.WorkspaceSize(2) == 16 && s.WorkspaceSize(5) == 24);
  EXPECT_EQ(s.WorkspaceSize(-1), 0);
  EXPECT_EQ(s.WorkspaceSize(-3), -8);
}
