// SPDX-License-Identifier: MIT
// What curves and surfaces promise alike: evaluation, insertion, records, lists, boxes, failure.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <new>
#include <optional>
#include <tuple>
#include <vector>

#include "kernel/reference.h"
#include "knotwork/platform/kernel/builders.h"
#include "support/failing_new.h"

using namespace knotwork::test;

namespace {

void eval(const AP_SPLINE& s, double* out, double u, double, int k) { s.eval(out, u, k); }
void eval(const AP_SURFACE& s, double* out, double u, double v, int k) { s.eval(out, u, v, k); }

template <class Object>
std::vector<double> evaluated(const Object& s, double u, double v, int k) {
  std::vector<double> out(at(s.WorkspaceSize(k)));
  eval(s, out.data(), u, v, k);
  return out;
}

auto* evalStatic(const AP_SPLINE&, double u, double, int k) { return AP_SPLINE::eval(u, k); }
auto* evalStatic(const AP_SURFACE&, double u, double v, int k) { return AP_SURFACE::eval(u, v, k); }

int insert(AP_SPLINE& s, bool, double t, int mult) { return s.insert(t, mult); }
int insert(AP_SURFACE& s, bool inV, double t, int mult) {
  return inV ? s.vinsert(t, mult) : s.uinsert(t, mult);
}

int count(const AP_SPLINE& s) { return s.Count(); }
int count(const AP_SURFACE& s) { return s.uCount() * s.vCount(); }

AP_SPLINE read(const ag_spline* record) { return AP_SPLINE(record); }
AP_SURFACE read(const ag_surface* record) { return AP_SURFACE(record, 99); }

void release(ag_spline* record) { ag_rel_bs(record); }
void release(ag_surface* record) { ag_rel_srf(record); }

void setForms(AP_SPLINE& s) { s.SetForm(AP_FORM_PERIODIC); }
void setForms(AP_SURFACE& s) { s.SetForm(AP_FORM_CLOSED, AP_FORM_PERIODIC); }
auto forms(const AP_SPLINE& s) { return std::tuple(s.Form(), s.Rationality()); }
auto forms(const AP_SURFACE& s) {
  return std::tuple(s.uForm(), s.vForm(), s.uRationality(), s.vRationality());
}

// The normal there, and at a pole.
void useNormals(const AP_SPLINE&, double) {}
void useNormals(const AP_SURFACE& s, double t) {
  double n[3];
  s.normal(t, 0, nullptr, n);
  AP_SURFACE pole(s);
  for (int j = 0; j < s.uCount(); ++j) pole.set(0, j, s.CV(), s.Coords());
  pole.normal(t, pole.vKnots().degree() ? pole.vKnots()(0) : 0, nullptr, n);
}

// Whether two records hold the same knots, which rise, and mark those that repeat their
// predecessor.
bool same(const knotwork::KnotRecord& a, const knotwork::KnotRecord& b) {
  if (a.degree() != b.degree() || a.spans() != b.spans()) return false;
  for (int k = a.first(); k <= a.last(); ++k) {
    if (a(k) != b(k) || a.repeats(k) != b.repeats(k)) return false;
    if (a.repeats(k) != (k > a.first() && !(a(k - 1) < a(k)))) return false;
  }
  return true;
}

template <class Object>
bool same(const Object& a, const Object& b) {
  const Net x = net(a), y = net(b);
  return same(x.u, y.u) && same(x.v, y.v) && x.coords == y.coords &&
         std::equal(x.points, x.points + count(a) * x.coords, y.points);
}

// The empty object takes every operation.
template <class Object>
void expectEmptyAndSafe(Object s) {
  EXPECT_TRUE(count(s) == 0 && !s.AGLIB() && !s.node0() && !s.noden() && !s.CV() &&
              s.Capacity() == 0);
  EXPECT_TRUE(insert(s, false, 0, 1) == -1 && insert(s, true, 0, 1) == -1 && same(s, Object(s)));
  double out[] = {1, 1, 1, 1};
  eval(s, out, 0, 0, 0);
  s.set(out, 4);
  s.print(nullptr);
  EXPECT_EQ(out[0], s.Coords() > 0 ? 0.0 : 1.0);
  s.Box(1);
}

}  // namespace

template <class Object>
class SplineObjects : public testing::Test {};
using Kinds = testing::Types<AP_SPLINE, AP_SURFACE>;
TYPED_TEST_SUITE(SplineObjects, Kinds);

// Where weights divide, the product rule puts the pieces together again:
// A_ij = sum C(i,a) C(j,b) w_ab S_(i-a)(j-b).
TYPED_TEST(SplineObjects, PartialsStayWithin64UlpOfTheLargestTerm) {
  Maker make(1);
  const auto binomial = [](int n, int k) {
    return 1 / ((n + 1) * std::beta(n - k + 1.0L, k + 1.0L));
  };
  for (int n = 0; n < 300; ++n) {
    const auto s = make.any<TypeParam>(1 + make.upTo(3), std::max(make.upTo(6) - 3, 0));
    const Net model = net(s);
    const double u = make.parameter(model.u), v = make.parameter(model.v);
    const int k = make.upTo(5), kv = std::is_same_v<TypeParam, AP_SPLINE> ? 0 : k;
    const std::vector<double> out = evaluated(s, u, v, k);
    const auto block = [&](int i, int j) { return out.data() + ((k + 1) * j + i) * model.coords; };
    const bool rational = model.coords > model.dim;
    for (int j = 0; j <= kv; ++j) {
      for (int i = 0; i <= k; ++i) {
        for (int c = 0; c < model.dim; ++c) {
          const Sum want = partial(model, u, v, i, j, c);
          Sum sum{rational ? 0 : block(i, j)[c], want.largest};
          for (int b = 0; rational && b <= j; ++b) {
            for (int a = 0; a <= i; ++a) {
              const Sum w = partial(model, u, v, a, b, model.dim);
              const Real factor = binomial(i, a) * binomial(j, b) * block(i - a, j - b)[c];
              sum.add(factor * w.value, factor * w.largest);
            }
          }
          ASSERT_LT(ulps(want.value, sum.value, sum.largest), 64) << n << " " << i << " " << j;
          if (!rational && (i > model.u.degree() || (j > 0 && j > model.v.degree()))) {
            ASSERT_EQ(block(i, j)[c], 0.0);
          }
        }
      }
    }
  }
}

TYPED_TEST(SplineObjects, InsertedKnotsLeaveTheShapeAsItWas) {
  Maker make(2);
  for (int n = 0; n < 300; ++n) {
    const auto before = make.any<TypeParam>(1 + make.upTo(2), make.upTo(3));
    const bool inV = std::is_same_v<TypeParam, AP_SURFACE> && make.upTo(1);
    TypeParam after(before), twice(before);
    const Net a = net(before), b = net(after);
    const auto& knots = inV ? a.v : a.u;
    const auto& more = inV ? b.v : b.u;
    double t = make.parameter(knots);
    if (!knots.contains(t)) t = 0.5 * (knots(0) + knots(knots.spans()));
    const int mult = 1 + make.upTo(2);
    after.node0();
    const int s = insert(after, inV, t, mult);
    for (int k = 0; k < mult; ++k) insert(twice, inV, t, 1);
    ASSERT_TRUE(same(after, twice) && more.spans() == knots.spans() + mult) << n;
    ASSERT_TRUE(more(s) == t && more(s + mult - 1) == t && after.node0()->cv == after.CV());
    for (int i = 0; i < 8; ++i) {
      const double u = make.parameter(a.u), v = make.parameter(a.v);
      if (!a.u.contains(u) || !a.v.contains(v)) continue;
      const std::vector<double> x = evaluated(before, u, v, 0), y = evaluated(after, u, v, 0);
      for (int c = 0; c < a.dim; ++c) ASSERT_NEAR(x[at(c)], y[at(c)], 4e-14) << n << " t " << t;
    }
  }
}

TYPED_TEST(SplineObjects, RecordsGoThereAndBack) {
  Maker make(3);
  for (int n = 0; n < 100; ++n) {
    auto s = make.any<TypeParam>(1 + make.upTo(3), make.upTo(3));
    setForms(s);
    s.SetForm(static_cast<AP_TYPE>(7));
    auto* const record = s.AGLIB();
    const TypeParam back = read(record), copy(back);
    EXPECT_TRUE(same(s, copy) && forms(s) == forms(copy) && copy.Type() == 7);
    release(record);
  }
}

TYPED_TEST(SplineObjects, ListAndBoxFollowThePointsInTheirOrder) {
  Maker make(4);
  auto s = make.any<TypeParam>(2, 1);
  int n = 0;
  double high = -INFINITY;
  for (auto* node = s->node0(); node; node = node->next, ++n) {
    EXPECT_EQ(node->cv, s.CV() + 3 * n);
    EXPECT_TRUE(node->prev ? node->prev->next == node : n == 0);
    EXPECT_EQ(!node->next, node == s.noden());
    high = std::max(high, node->cv[1] / node->cv[2]);
  }
  EXPECT_EQ(n, count(s));
  EXPECT_TRUE(s.Box(0).max[1] == high && s.Box(0).min[1] < high && s.Box(0).dim == 2);
  s.noden()->cv[1] = 100 * s.noden()->cv[2];
  EXPECT_EQ(s.Box(0).max[1], high);
  EXPECT_EQ(TypeParam(s).Box(0).max[1], 100);
  EXPECT_EQ(s.Box(1).max[1], 100);
  s.noden()->cv[1] = 200 * s.noden()->cv[2];
  EXPECT_EQ(s.Box(0).max[1], 100);  // a forced box is kept as well
}

TYPED_TEST(SplineObjects, StaticEvaluationFollowsTheObjectEvaluatedLast) {
  Maker make(5);
  const auto first = make.any<TypeParam>(2, 0);
  const std::vector<double> expected = evaluated(first, 0.7, 0.4, 0);
  {
    const auto second = make.any<TypeParam>(3, 1);
    const std::vector<double> out = evaluated(second, 0.25, 0.1, 3);
    const double* const area = evalStatic(second, 0.25, 0.1, 3);
    EXPECT_TRUE(std::equal(area, area + 16, out.data()));
    EXPECT_EQ(evalStatic(second, 0.25, 0.1, -1), nullptr);
  }
  EXPECT_EQ(evalStatic(first, 0.7, 0.4, 0), nullptr);
  evaluated(first, 0, 0, 0);
  EXPECT_EQ(evalStatic(first, 0.7, 0.4, 0)[1], expected[1]);
}

TYPED_TEST(SplineObjects, ParametersAndKnotsThatAreNoNumbersStayInBounds) {
  const double bad[] = {NAN, INFINITY, -INFINITY, 3, 1, 2, 2, -1e308, 1e308, NAN, 0};
  Maker make(6);
  for (int n = 0; n < 100; ++n) {
    auto s = make.any<TypeParam>(3, make.upTo(1));
    const Net own = net(s);
    if (n % 4) const_cast<knotwork::KnotRecord&>(own.u).assign(bad + n % 4 - 1, 9);
    for (const double t : {0.5, double{NAN}, double{INFINITY}, -1e300}) {
      evaluated(s, t, 0.5, 3);  // the sanitizers judge
      insert(s, n % 2, t, 2);
      useNormals(s, t);
    }
  }
}

// At every allocation, of the library and of the kernel, that one or all from it on:
// std::bad_alloc, and the object is as it was. (The sanitizers look for leaks.)
TYPED_TEST(SplineObjects, MemoryThatRunsOutIsThrownAndChangesNothing) {
  if (!canObserveAllocation()) GTEST_SKIP() << "the library's allocations are out of reach";
  Maker make(7);
  const auto kept = make.any<TypeParam>(3, 1);
  auto* const record = kept.AGLIB();
  const double t = net(kept).u(net(kept).u.degree() ? 0 : 1);
  const std::function<void(TypeParam&)> uses[] = {
      [&](TypeParam&) { read(record).CV(); },
      [&](TypeParam& s) {
        auto* const other = s.AGLIB();
        if (!other) throw std::bad_alloc();  // the kernel's answer
        release(other);
      },
      [&](TypeParam& s) { s.node0(); },
      [&](TypeParam& s) { insert(s, false, t, 1000); },
      [&](TypeParam& s) { insert(s, true, t, 1000); },
      [&](TypeParam& s) { evalStatic(s, t, t, 12); },
      [&](TypeParam& s) { useNormals(s, t); },
  };
  int failures = 0;
  std::optional<TypeParam> used;
  for (const auto& use : uses) {
    bool thrown = false;
    const auto attempt = [&] {
      thrown = false;
      used.reset();
      try {
        used.emplace(kept);
        evaluated(*used, t, t, 0);  // what the static evaluation goes by
        use(*used);
      } catch (const std::bad_alloc&) {
        thrown = true;
      }
    };
    failEveryAllocation(attempt, [&] {
      EXPECT_EQ(thrown, FailingNew::reached());
      EXPECT_TRUE(!thrown || !used || same(*used, kept));
      failures += thrown;
    });
  }
  release(record);
  EXPECT_GT(failures, 100);
  TypeParam s(kept);
  EXPECT_EQ(insert(s, false, NAN, 1), -1);
  EXPECT_THROW(insert(s, false, t, 0x7FFFFFFF), std::bad_alloc);
  EXPECT_TRUE(same(s, kept));
  std::vector<double> out(at(s.WorkspaceSize(4)));
  const long calls = newCalls();
  eval(s, out.data(), t, t, 4);
  EXPECT_EQ(newCalls(), calls);
}

TEST(SplineObjects, SizesAndRecordsThatMakeNoneGiveTheEmptyObject) {
  constexpr int kHuge = 0x7FFFFFFF;
  const int bad[][3] = {{3, -1, 4}, {-3, 3, 1}, {3, kHuge, kHuge}, {3, 0, 0}, {3, 2, -1}};
  for (const auto& c : bad) {
    expectEmptyAndSafe(AP_SPLINE(c[0], c[1], c[2], 1));
    expectEmptyAndSafe(AP_SURFACE(c[0], c[1], 1, c[2], kHuge - 1, 0, 1));
    expectEmptyAndSafe(AP_SURFACE(c[0], 1, c[1], kHuge - 1, c[2], 1, 0));
  }
}
