// SPDX-License-Identifier: MIT
// Point lists against the formula of their layout, over all small requests.
#include "knotwork/geometry/tuple_vector.h"

#include <gtest/gtest.h>

#include <utility>

#include "geometry/transforms.h"
#include "support/recorded_errors.h"
#include "support/values.h"

namespace {

using Shape = std::vector<int>;

Shape shape(const TtupleVector& tv) { return {tv.size(), tv.points(), int(tv.length())}; }

// Four points whose component c of point i is 10 i + c, on a view that walks backwards, with a
// remainder that is no point.
TtupleVector numbered(int dim) {
  const int length = 5 * dim - 1;
  DoubleVec view = DoubleVec(unsigned(2 * length)).slice(2 * length - 1, unsigned(length), -2);
  TtupleVector tv(dim, view);
  for (int i = 0; i < 4; ++i) tv(i) = DoubleVec(unsigned(dim), 10.0 * i, 1.0);
  return tv;
}

// A request for `count` of something from `start` on.
struct Request {
  int start, count;
  int last() const { return start + count - 1; }
  bool ends(int n) const { return 0 <= start && start < n && 0 <= last() && last() < n; }
  bool existsOf(int n) const { return count > 0 && ends(n); }
  bool holds(int i) const { return start <= i && i <= last(); }
  IntVec indices() const { return IntVec(static_cast<unsigned>(count < 0 ? 0 : count), start, 1); }
};

void checkSelections(int dim, Request r) {
  TtupleVector tv = numbered(dim);
  const bool points = r.existsOf(4), components = r.existsOf(dim);
  const auto length = static_cast<unsigned>(points ? r.count * dim : 0);
  const Values selected = valuesOf(tv.data().slice(points ? r.start * dim : 0, length, 1));
  for (const TtupleVector& same : {tv.lPoints(r.start, r.count), tv.rPoints(r.start, r.count)}) {
    EXPECT_TRUE(valuesOf(same) == selected && same.size() == dim);
  }
  const TtupleVector picked = tv.rPoints(r.indices());
  EXPECT_TRUE(valuesOf(picked) == selected && picked.size() == (points || r.count < 1 ? dim : 1));
  for (const TtupleVector& some : {tv.components(r.start, r.count), tv.components(r.indices())}) {
    EXPECT_EQ(shape(some), components ? (Shape{r.count, 4, 4 * r.count}) : (Shape{1, 0, 0}));
    for (int k = 0; k < 4 * r.count && components; ++k) {
      EXPECT_EQ(some(k / r.count)(k % r.count), 10 * (k / r.count) + r.start + k % r.count);
    }
  }
}

void checkWrites(int dim, Request r) {
  TtupleVector tv = numbered(dim);
  const TtupleVector kept = tv.copy();
  tv.lPoints(r.start, r.count).data() = -1.0;
  tv.rPoints(r.start, r.count).data() = -3.0;
  tv.component(r.start) = -2.0;
  const TtupleVector before = tv.copy();
  EXPECT_EQ(tv.setPoints(r.start, r.count, kept), r.count == 0 || r.ends(4));
  for (int i = 0; i < 4; ++i) {
    const bool written = r.existsOf(4) && r.holds(i);
    EXPECT_EQ(valuesOf(tv[i]), valuesOf(written ? kept[i - r.start] : before[i]));
    EXPECT_EQ(tv.vecLen()(i), tv(i).vecLen());
    for (int c = 0; c < dim; ++c) {
      EXPECT_EQ(before.point(i)(c), c == r.start ? -2 : written ? -1 : 10 * i + c);
    }
  }
}

}  // namespace

TEST(TupleVector, ShapesFollowTheSignsOfTheCounts) {
  const double flat[] = {1, 2, 3, 4, 5, 6};
  const double* const points[] = {flat, flat + 3};
  DoubleVec seven(7, 0.0);
  EXPECT_EQ(shape(TtupleVector()), (Shape{1, 0, 0}));
  EXPECT_EQ(shape(TtupleVector(0, 4, 1.0)), (Shape{1, 0, 0}));
  EXPECT_EQ(shape(TtupleVector(3, -2, flat)), (Shape{1, 6, 6}));
  EXPECT_EQ(shape(TtupleVector(-5, seven)), (Shape{1, 7, 7}));
  EXPECT_EQ(shape(TtupleVector(-1, 2, points)), (Shape{-1, 0, 2}));
  // From pointers, each point's last component lands in one flat element.
  EXPECT_EQ(valuesOf(TtupleVector(3, 2, points)), (Values{3, 6, 0, 0, 0, 0}));
  EXPECT_EQ(valuesOf(TtupleVector(-2, 2, points)), (Values{1, 4, 0, 0}));
  EXPECT_EQ(valuesOf(TtupleVector(-2, -2, points)), Values(4));
  DoubleVec strided = seven.slice(0, 3, 2);
  // No points, of a stride that cannot be had.
  EXPECT_EQ(TtupleVector(2147483647, strided).component(0).length(), 0u);
  RecordedErrors errors;
  EXPECT_EQ(TtupleVector(1 << 30, 1 << 30, 0.0).points(), 0);
  TtupleVector(2, 2, 0.0).resize(-1);
  EXPECT_EQ(errors.takeTexts(),
            "[NOMEM: RWBlock]: Out of memory\n[NOMEM: RWBlock]: Out of memory\n");
}

TEST(TupleVector, EverySelectionFollowsTheLayout) {
  for (int dim = 1; dim <= 4; ++dim) {
    for (int request = 0; request < 56; ++request) {
      SCOPED_TRACE(testing::Message() << dim << ": " << request);
      checkSelections(dim, {request / 8 - 1, request % 8 - 2});
      checkWrites(dim, {request / 8 - 1, request % 8 - 2});
    }
  }
  EXPECT_EQ(valuesOf(numbered(2).rPoints(indices({3, 0, 3}))), (Values{30, 31, 0, 1, 30, 31}));
  EXPECT_EQ(valuesOf(numbered(3).components(indices({2, 0})).lPoints(1, 1)), (Values{12, 10}));
}

TEST(TupleVector, AssignsOnlyBetweenEqualShapes) {
  TtupleVector a(3, 2, 0.0), shared(a), other;
  const TtupleVector& constant = a;
  for (DoubleVec copy : {constant(0), constant[0], constant.point(0), constant.data()}) copy = 9.0;
  a = TtupleVector(2, 3, 1.0);
  a = TtupleVector(3, 3, 1.0);
  EXPECT_EQ(valuesOf(a), Values(6, 0.0));
  a = TtupleVector(3, 2, 1.0);
  other.reference(a).deepenShallowCopy();
  shared.resize(3);
  a.data() = 2.0;
  EXPECT_TRUE(other.size() == 3 && valuesOf(other) == Values(6, 1.0));
  EXPECT_EQ(valuesOf(shared), (Values{1, 1, 1, 1, 1, 1, 0, 0, 0}));
}

TEST(TupleVector, ReportsPointsOutsideAndWritesNothingThere) {
  RecordedErrors errors;
  TtupleVector tv(2, 3, 0.0);
  tv(3) = 1.0;
  EXPECT_EQ(std::as_const(tv)[-1].length(), 0u);
  EXPECT_EQ(errors.takeTexts(),
            "[SLICE: DoubleVec]: slice (6, 2, 1) cannot be made from vector (6)\n"
            "[SLICE: DoubleVec]: slice (-2, 2, 1) cannot be made from vector (6)\n");
  // A narrower source, and one that runs out: what there is, is written.
  EXPECT_TRUE(tv.setPoints(0, 1, TtupleVector(1, 1, 7.0)));
  EXPECT_TRUE(tv.setPoints(1, 2, TtupleVector(2, 1, 8.0)));
  EXPECT_EQ(valuesOf(tv), (Values{7, 0, 8, 8, 0, 0}));
  EXPECT_EQ(errors.takeTexts(),
            "[VNMATCH: DoubleVec]: Vector lengths do not match (2 vs 1)\n"
            "[SLICE: DoubleVec]: slice (2, 2, 1) cannot be made from vector (2)\n"
            "[VNMATCH: DoubleVec]: Vector lengths do not match (2 vs 0)\n");
  // In order, from the list itself, until an index is no point.
  EXPECT_FALSE(tv.setPoints(indices({1, 2, 9, 0}), tv));
  EXPECT_EQ(valuesOf(tv), (Values{7, 0, 7, 0, 7, 0}));
  const TtupleVector wider(3, 1, 1.0);
  EXPECT_TRUE(tv.setPoints(IntVec(), tv) && tv.setPoints(0, 0, wider));
  EXPECT_FALSE(tv.setPoints(0, 1, wider) || tv.setPoints(IntVec(), wider));
  EXPECT_EQ(errors.takeTexts(), "");
}

TEST(TupleVector, TransformsHomogeneously) {
  const auto transformed = [](int dim, const Values& flat) {
    TtupleVector tv(dim, static_cast<int>(flat.size()) / dim, flat.data());
    tv.applyTransformation(ShearAndShift());
    return valuesOf(tv);
  };
  EXPECT_EQ(transformed(3, {2, 2, 3, 0, 0, 1}), (Values{12, 23, 33, 10, 20, 31}));
  EXPECT_EQ(transformed(5, {2, 2, 3, 2, 9}), (Values{22, 43, 63, 8, 9}));
  // Below dimension 3 the next points take part, and nothing behind the last one.
  EXPECT_EQ(transformed(2, {0, 0, 0, 0}), (Values{10, 20, 40, 35}));
  EXPECT_EQ(transformed(1, {0}), (Values{10}));
}
