// SPDX-License-Identifier: MIT
// Point lists against a plain model: a dimension and a flat std::vector.
#include "knotwork/geometry/tuple_vector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>
#include <utility>

#include "geometry/transforms.h"
#include "support/recorded_errors.h"
#include "support/values.h"

namespace {

using Indices = std::vector<int>;

Indices range(int first, int count) {
  Indices result;
  for (int k = 0; k < count; ++k) result.push_back(first + k);
  return result;
}

bool allBelow(const Indices& which, int n) {
  return std::ranges::all_of(which, [n](int i) { return 0 <= i && i < n; });
}

// A point list and its model, which is built from the flat elements alone.
struct Modelled {
  TtupleVector tv;
  int dim;
  Values flat;

  explicit Modelled(const TtupleVector& list)
      : tv(list), dim(list.size()), flat(valuesOf(list.data())) {}

  int points() const { return static_cast<int>(flat.size()) / dim; }
  double& at(int i, int c) { return flat[static_cast<unsigned>(i * dim + c)]; }

  // The components `which` of `points`, or nothing where the request cannot be met.
  Values selected(const Indices& wanted, const Indices& which) {
    Values result;
    if (!allBelow(wanted, points()) || !allBelow(which, dim)) return result;
    for (const int i : wanted) {
      for (const int c : which) result.push_back(at(i, c));
    }
    return result;
  }

  void checkSelections(const Indices& which, int start, int count) {
    const Indices some = range(start, count), all = range(0, points()), whole = range(0, dim);
    EXPECT_EQ(valuesOf(tv.lPoints(start, count)), selected(some, whole));
    EXPECT_EQ(valuesOf(tv.rPoints(start, count)), selected(some, whole));
    EXPECT_EQ(valuesOf(tv.rPoints(indices(which))), selected(which, whole));
    EXPECT_EQ(tv.rPoints(start, count).size(), dim);
    EXPECT_EQ(tv.rPoints(indices(which)).size(), allBelow(which, points()) ? dim : 1);
    EXPECT_EQ(valuesOf(tv.components(start, count)), selected(all, some));
    EXPECT_EQ(valuesOf(tv.components(indices(which))), selected(all, which));
    const bool exist = !which.empty() && allBelow(which, dim);
    EXPECT_EQ(tv.components(indices(which)).size(), exist ? static_cast<int>(which.size()) : 1);
  }

  void setThrough(int start, int count, double x) {
    tv.lPoints(start, count).data() = x;
    if (count > 0 && allBelow(range(start, count), points())) {
      std::fill_n(flat.begin() + start * dim, count * dim, x);
    }
    tv.component(start) = -x;
    for (int i = 0; start >= 0 && start < dim && i < points(); ++i) at(i, start) = -x;
  }

  // From the list itself, in order, until an index is no point.
  void setFromItself(const Indices& which) {
    EXPECT_EQ(tv.setPoints(indices(which), tv), allBelow(which, points()));
    for (int k = 0; k < static_cast<int>(which.size()); ++k) {
      const int to = which[static_cast<unsigned>(k)];
      if (!allBelow({to}, points())) return;
      for (int c = 0; c < dim; ++c) at(to, c) = at(k, c);
    }
  }
};

}  // namespace

TEST(TupleVector, ShapesFollowTheSignsOfTheCounts) {
  const double flat[] = {1, 2, 3, 4, 5, 6};
  const double* const points[] = {flat, flat + 3};
  DoubleVec seven(7, 0.0);
  const auto shape = [](const TtupleVector& tv) {
    return Indices{tv.size(), tv.points(), static_cast<int>(tv.length())};
  };
  EXPECT_EQ(shape(TtupleVector()), (Indices{1, 0, 0}));
  EXPECT_EQ(shape(TtupleVector(0, 4, 1.0)), (Indices{1, 0, 0}));
  EXPECT_EQ(shape(TtupleVector(3, -2, flat)), (Indices{1, 6, 6}));
  EXPECT_EQ(shape(TtupleVector(2, seven)), (Indices{2, 3, 7}));
  EXPECT_EQ(shape(TtupleVector(-5, seven)), (Indices{1, 7, 7}));
  EXPECT_EQ(shape(TtupleVector(-1, 2, points)), (Indices{-1, 0, 2}));
  // From pointers, each point's last component lands in one flat element.
  EXPECT_EQ(valuesOf(TtupleVector(3, 2, points)), (Values{3, 6, 0, 0, 0, 0}));
  EXPECT_EQ(valuesOf(TtupleVector(-2, 2, points)), (Values{1, 4, 0, 0}));
  EXPECT_EQ(valuesOf(TtupleVector(-2, -2, points)), Values(4));
  RecordedErrors errors;
  EXPECT_EQ(TtupleVector(1 << 30, 1 << 30, 0.0).points(), 0);
  TtupleVector(2, 2, 0.0).resize(-1);
  EXPECT_EQ(errors.all().size(), 2u);
  for (const RecordedError& error : errors.all()) EXPECT_EQ(error.code, 0x3008u);
}

TEST(TupleVector, FollowsTheModelThroughRandomOperations) {
  std::mt19937 random(4711);
  const auto upTo = [&](unsigned n) { return static_cast<int>(random() % (n + 1)); };
  for (int run = 0; run < 300; ++run) {
    // Points on a view that walks backwards, with a remainder that is no point.
    DoubleVec view;
    view.reference(DoubleVec(60, 0.0, 1.0).slice(59, static_cast<unsigned>(upTo(30)), -2));
    Modelled list(TtupleVector(1 + upTo(4), view));
    for (int step = 0; step < 20; ++step) {
      Indices which(static_cast<unsigned>(upTo(4)));
      for (int& i : which) i = upTo(9) - 1;
      const int start = upTo(8) - 1, count = upTo(6);
      list.setThrough(start, count, step);
      if (static_cast<int>(which.size()) <= list.points()) list.setFromItself(which);
      const TtupleVector source(list.dim, 6, 0.5 * step);
      const bool exist = count == 0 || allBelow(range(start, count), list.points());
      EXPECT_EQ(list.tv.setPoints(start, count, source), exist);
      if (exist && count > 0) {
        std::fill_n(list.flat.begin() + start * list.dim, count * list.dim, 0.5 * step);
      }
      if (step == 15) {
        const int n = upTo(7);
        list.tv.resize(n);
        list.flat.resize(static_cast<unsigned>(n * list.dim));
      }
      list.checkSelections(which, start, count);
      ASSERT_EQ(valuesOf(list.tv), list.flat) << "run " << run << ", step " << step;
    }
    const TtupleVector& constant = list.tv;
    for (int i = 0; i < list.points(); ++i) {
      EXPECT_EQ(list.tv.vecLen()(i), list.tv(i).vecLen());
      list.tv[i](list.dim - 1) += 1.0;
      for (DoubleVec copied : {constant.point(i), constant(i), constant[i]}) copied = 1e9;
      EXPECT_EQ(list.tv.point(i)(list.dim - 1), list.at(i, list.dim - 1) + 1.0);
    }
  }
}

TEST(TupleVector, AssignsOnlyBetweenEqualShapes) {
  TtupleVector a(3, 2, 0.0), shared(a), other;
  const TtupleVector kept = a.copy();
  a = TtupleVector(2, 3, 1.0);
  a = TtupleVector(3, 3, 1.0);
  EXPECT_EQ(valuesOf(a), Values(6, 0.0));
  a = TtupleVector(3, 2, 1.0);
  EXPECT_EQ(valuesOf(shared), Values(6, 1.0));
  EXPECT_EQ(valuesOf(kept), Values(6, 0.0));
  other.reference(a).deepenShallowCopy();
  a.data() = 2.0;
  EXPECT_EQ(other.size(), 3);
  EXPECT_EQ(valuesOf(other), Values(6, 1.0));
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
  EXPECT_EQ(errors.takeTexts(),
            "[VNMATCH: DoubleVec]: Vector lengths do not match (2 vs 1)\n"
            "[SLICE: DoubleVec]: slice (2, 2, 1) cannot be made from vector (2)\n"
            "[VNMATCH: DoubleVec]: Vector lengths do not match (2 vs 0)\n");
  EXPECT_FALSE(tv.setPoints(indices({2, 9, 1}), TtupleVector(2, 3, 9.0)));
  EXPECT_EQ(valuesOf(tv), (Values{7, 0, 8, 8, 9, 9}));
  EXPECT_TRUE(tv.setPoints(0, 0, TtupleVector(3, 1, 1.0)));
  EXPECT_FALSE(tv.setPoints(0, 1, TtupleVector(3, 1, 1.0)));
  EXPECT_FALSE(tv.setPoints(IntVec(), TtupleVector(3, 1, 1.0)));
  EXPECT_TRUE(tv.setPoints(2, -1, TtupleVector(2, 1, 1.0)));
  EXPECT_FALSE(tv.setPoints(1, -2, TtupleVector(2, 1, 1.0)));
  EXPECT_EQ(tv.lPoints(2, -1).points() + tv.rPoints(2, -1).points(), 0);
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

TEST(TupleVector, HasNoText) {
  std::stringstream stream("[ 1 2 ]");
  TtupleVector tv(2, 1, 3.0);
  EXPECT_FALSE(tv.readRaw(stream));
  tv.printOn(stream);
  tv.printRaw(stream);
  EXPECT_EQ(stream.str() + std::to_string(stream.tellg()), "[ 1 2 ]0");
}
