// SPDX-License-Identifier: MIT
// Point lists against a plain model: a dimension and a flat std::vector.
#include "knotwork/geometry/tuple_vector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>

#include "geometry/transforms.h"
#include "support/recorded_errors.h"
#include "support/values.h"

namespace {

DoubleVec ramp(unsigned n) { return DoubleVec(n, 0.0, 1.0); }

TtupleVector rampOf(int dim, int n) {
  DoubleVec flat = ramp(static_cast<unsigned>(dim * n));
  return TtupleVector(dim, flat);
}

// The components `which` of the points `points`, taken from a flat model.
Values selected(const Values& flat, int dim, const std::vector<int>& points,
                const std::vector<int>& which) {
  Values result;
  for (const int i : points) {
    for (const int c : which) result.push_back(flat[static_cast<unsigned>(i * dim + c)]);
  }
  return result;
}

std::vector<int> rangeOf(int first, int count) {
  std::vector<int> range;
  for (int k = 0; k < count; ++k) range.push_back(first + k);
  return range;
}

}  // namespace

TEST(TupleVector, ShapesFollowTheSignsOfTheCounts) {
  const auto shape = [](const TtupleVector& tv) {
    return std::vector<int>{tv.size(), tv.points(), static_cast<int>(tv.length())};
  };
  const double flat[] = {1, 2, 3, 4, 5, 6};
  const double* const points[] = {flat, flat + 3};
  EXPECT_EQ(shape(TtupleVector()), (std::vector<int>{1, 0, 0}));
  EXPECT_EQ(shape(TtupleVector(3, 4, 0.0)), (std::vector<int>{3, 4, 12}));
  EXPECT_EQ(shape(TtupleVector(0, 4, 1.0)), (std::vector<int>{1, 0, 0}));
  EXPECT_EQ(shape(TtupleVector(3, -2, flat)), (std::vector<int>{1, 6, 6}));
  EXPECT_EQ(shape(TtupleVector(-1, 2, points)), (std::vector<int>{-1, 0, 2}));
  DoubleVec seven = ramp(7);
  EXPECT_EQ(shape(TtupleVector(2, seven)), (std::vector<int>{2, 3, 7}));
  EXPECT_EQ(shape(TtupleVector(-5, seven)), (std::vector<int>{1, 7, 7}));
  // From pointers, each point's last component lands in one flat element.
  EXPECT_EQ(valuesOf(TtupleVector(3, 2, points)), (Values{3, 6, 0, 0, 0, 0}));
  EXPECT_EQ(valuesOf(TtupleVector(-2, 2, points)), (Values{1, 4, 0, 0}));
  EXPECT_EQ(valuesOf(TtupleVector(-2, -2, points)), Values(4));
  RecordedErrors errors;
  EXPECT_EQ(TtupleVector(1 << 30, 1 << 30, 0.0).points(), 0);
  TtupleVector(2, 2, 0.0).resize(-1);
  ASSERT_EQ(errors.all().size(), 2u);
  EXPECT_EQ(errors.all()[0].code, 0x3008u);
  EXPECT_EQ(errors.all()[1].code, 0x3008u);
}

TEST(TupleVector, FollowsTheModelThroughRandomOperations) {
  std::mt19937 random(4711);
  const auto upTo = [&](int n) {
    return static_cast<int>(random() % static_cast<unsigned>(n + 1));
  };
  for (int run = 0; run < 300; ++run) {
    const int dim = 1 + upTo(4), stride = upTo(1) ? 1 : -2;
    int n = upTo(7);
    // A strided view, with a remainder that is no point.
    const unsigned length = static_cast<unsigned>(dim * n + upTo(dim - 1));
    const DoubleVec storage(2 * length + 1, 0.0, 1.0);
    DoubleVec view = storage.slice(stride < 0 ? static_cast<int>(2 * length) : 0, length, stride);
    TtupleVector tv(dim, view);
    Values model = valuesOf(view);
    for (int step = 0; step < 40; ++step) {
      const int start = upTo(9) - 1, count = upTo(9);
      const std::vector<int> allComponents = rangeOf(0, dim);
      const bool inRange = start >= 0 && start < n && count > 0 && start + count <= n;
      std::vector<int> which(static_cast<unsigned>(upTo(4)));
      for (int& i : which) i = upTo(9) - 1;
      const auto existing = std::ranges::find_if(which, [&](int i) { return i < 0 || i >= n; });
      switch (upTo(5)) {
        case 0: {  // a range of points from another list, of this dimension or not
          const int sourceDim = upTo(1) ? dim : dim + 1;
          const TtupleVector source = rampOf(sourceDim, 9);
          const bool done = count == 0 || (inRange && sourceDim == dim);
          EXPECT_EQ(tv.setPoints(start, count, source), done);
          for (int e = 0; done && e < count * dim; ++e) {
            model[static_cast<unsigned>(start * dim + e)] = e;
          }
          break;
        }
        case 1: {  // listed points from the list itself, in order, until one does not exist
          if (static_cast<int>(which.size()) > n) break;
          EXPECT_EQ(tv.setPoints(indices(which), tv), existing == which.end());
          for (auto at = which.begin(); at != existing; ++at) {
            const auto from = (at - which.begin()) * dim;
            const Values point(model.begin() + from, model.begin() + from + dim);
            std::ranges::copy(point, model.begin() + *at * dim);
          }
          break;
        }
        case 2: {  // ranges, shared and copied
          const TtupleVector shared = tv.lPoints(start, count), copied = tv.rPoints(start, count);
          const Values expected =
              inRange ? selected(model, dim, rangeOf(start, count), allComponents) : Values();
          EXPECT_EQ(valuesOf(shared), expected);
          EXPECT_EQ(valuesOf(copied), expected);
          EXPECT_EQ(shared.size(), dim);
          EXPECT_EQ(copied.size(), dim);
          tv.lPoints(start, count).data() = -step;
          for (int e = 0; inRange && e < count * dim; ++e) {
            model[static_cast<unsigned>(start * dim + e)] = -step;
          }
          EXPECT_EQ(valuesOf(copied), expected);
          break;
        }
        case 3: {  // lists of points and of components
          const TtupleVector points = tv.rPoints(indices(which));
          const bool all = existing == which.end();
          EXPECT_EQ(valuesOf(points), all ? selected(model, dim, which, allComponents) : Values());
          EXPECT_EQ(points.size(), all ? dim : 1);
          const bool some = !which.empty() &&
                            std::ranges::all_of(which, [&](int c) { return c >= 0 && c < dim; });
          const TtupleVector components = tv.components(indices(which));
          EXPECT_EQ(valuesOf(components),
                    some ? selected(model, dim, rangeOf(0, n), which) : Values());
          EXPECT_EQ(components.size(), some ? static_cast<int>(which.size()) : 1);
          const bool run0 = start >= 0 && count > 0 && start + count <= dim;
          EXPECT_EQ(valuesOf(tv.components(start, count)),
                    run0 ? selected(model, dim, rangeOf(0, n), rangeOf(start, count)) : Values());
          break;
        }
        case 4: {  // one component of every point
          const bool exists = start >= 0 && start < dim;
          EXPECT_EQ(tv.component(start).length(), exists ? static_cast<unsigned>(n) : 0u);
          tv.component(start) = 0.5 * step;
          for (int i = 0; exists && i < n; ++i)
            model[static_cast<unsigned>(i * dim + start)] = 0.5 * step;
          break;
        }
        default: {
          if (upTo(4) > 0) break;
          tv.resize(n = upTo(7));
          model.resize(static_cast<unsigned>(n * dim));
        }
      }
      ASSERT_EQ(valuesOf(tv), model) << "run " << run << ", step " << step;
      ASSERT_EQ(tv.points(), n);
    }
    const TtupleVector& constant = tv;
    const DoubleVec lengths = tv.vecLen();
    for (int i = 0; i < n; ++i) {
      EXPECT_EQ(lengths(i), tv(i).vecLen());
      tv[i](dim - 1) += 1.0;
      constant.point(i)(0) = constant(i)(0) = constant[i](0) = 1e9;
      EXPECT_EQ(tv.point(i)(dim - 1), model[static_cast<unsigned>(i * dim + dim - 1)] + 1.0);
    }
  }
}

TEST(TupleVector, AssignsOnlyBetweenEqualShapes) {
  TtupleVector a(3, 2, 0.0), shared(a);
  const TtupleVector kept = a.copy();
  a = TtupleVector(2, 3, 1.0);
  a = TtupleVector(3, 3, 1.0);
  EXPECT_EQ(valuesOf(a), Values(6, 0.0));
  a = TtupleVector(3, 2, 1.0);
  EXPECT_EQ(valuesOf(shared), Values(6, 1.0));
  EXPECT_EQ(valuesOf(kept), Values(6, 0.0));
  TtupleVector other;
  other.reference(a).deepenShallowCopy();
  a.data() = 2.0;
  EXPECT_EQ(other.size(), 3);
  EXPECT_EQ(valuesOf(other), Values(6, 1.0));
}

TEST(TupleVector, ReportsPointsOutsideAndWritesNothingThere) {
  RecordedErrors errors;
  TtupleVector tv(2, 3, 0.0);
  tv(3) = 1.0;
  const TtupleVector& constant = tv;
  EXPECT_EQ(constant[-1].length(), 0u);
  EXPECT_EQ(errors.takeTexts(),
            "[SLICE: DoubleVec]: slice (6, 2, 1) cannot be made from vector (6)\n"
            "[SLICE: DoubleVec]: slice (-2, 2, 1) cannot be made from vector (6)\n");
  EXPECT_EQ(errors.all().size(), 0u);
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
  EXPECT_FALSE(tv.setPoints(IntVec(), TtupleVector(3, 1, 1.0)));
  EXPECT_TRUE(tv.setPoints(2, -1, TtupleVector(2, 1, 1.0)));
  EXPECT_EQ(tv.lPoints(2, -1).points() + tv.rPoints(2, -1).points() + tv.rPoints(1, 0).points(), 0);
  EXPECT_EQ(tv.components(1, 0).size(), 1);
  EXPECT_EQ(errors.takeTexts(), "");
}

TEST(TupleVector, TransformsHomogeneously) {
  const auto transformed = [](int dim, Values flat) {
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
  EXPECT_EQ(stream.tellg(), 0);
  std::ostringstream out;
  tv.printOn(out);
  tv.printRaw(out);
  EXPECT_EQ(out.str(), "");
}
