// SPDX-License-Identifier: MIT
// B-spline bases against the recursion of their definition, in long double, and against the rank of
// their matrices.
#include "knotwork/geometry/bspline_basis.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "knotwork/decomp/double_sv_decomp.h"
#include "support/bspline_model.h"
#include "support/random.h"
#include "support/recorded_errors.h"
#include "support/values.h"

namespace knotwork {
namespace {

using Real = long double;
using test::at;
using test::Random;

// Knots that are multiples of a quarter, each standing up to p + 1 times; clamped or not.
Values someKnots(Random& random, int p) {
  const std::size_t order = at(p + 1), spans = at(1 + random.below(6));
  const bool clamped = random.below(3) > 0;
  Values t(clamped ? order : 1, 0.0);
  while (t.size() < order + spans || !(t[order - 1] < t[t.size() - order])) {
    const int times = random.below(3) > 0 ? 1 : 1 + random.below(p + 1);
    t.insert(t.end(), at(times), t.back() + 0.25 * (1 + random.below(4)));
  }
  if (clamped) t.insert(t.end(), order, t.back() + 0.5);
  return t;
}

// Up to `n` ascending multiples of 1/16 in [from, to]: knots are among them.
Values somePlaces(Random& random, double from, double to, int n, bool distinct) {
  Values u;
  for (int i = 0; i < n; ++i) {
    u.push_back(from + random.below(static_cast<int>(16 * (to - from)) + 1) / 16.0);
  }
  std::ranges::sort(u);
  if (distinct) u.erase(std::unique(u.begin(), u.end()), u.end());
  return u;
}

// The singular values that are not rounding noise, once every row has its largest entry 1.
int rankOf(const DoubleGenMat& matrix) {
  DoubleGenMat a = matrix.copy();
  for (int i = 0; i < static_cast<int>(a.rows()); ++i) {
    const double size = maxValue(abs(a.row(i)));
    if (size > 0) a.row(i) /= size;
  }
  const DoubleVec values = DoubleSVDecomp(a).singularValues();
  int rank = 0;
  for (int k = 0; k < static_cast<int>(values.length()); ++k) rank += values(k) > 1e-14;
  return rank;
}

TEST(BsplineBasis, RowsAreThoseOfTheRecursion) {
  Random random(31);
  for (int trial = 0; trial < 140; ++trial) {
    const int p = trial % 7;
    const Values t = someKnots(random, p);
    const BsplineBasis basis(p, vectorOf(t));
    const test::BsplineModel<Real> model{p, {t.begin(), t.end()}};
    const int n = static_cast<int>(t.size()) - p - 1;
    ASSERT_EQ(basis.count(), n);
    EXPECT_EQ(valuesOf(basis.knots()), t);
    for (const double u : somePlaces(random, t[at(p)] - 0.25, t[at(n)] + 0.25, 12, false)) {
      const int span = model.span(u);
      ASSERT_EQ(basis.span(u), span) << u;
      for (int q = 0; q <= p + 1; ++q) {
        Values row(unsigned(p) + 2, 99.0);
        ASSERT_EQ(basis.row(u, q, row.data()), span - p);
        EXPECT_EQ(row.back(), 99.0);
        Real largest = 1, sum = 0;
        for (int k = 0; k <= p; ++k) {
          largest = std::max(largest, std::fabs(model.value(span - p + k, p, q, span, u)));
          sum += row[at(k)];
        }
        const double scale = 1e-15 * (p + 1) * static_cast<double>(largest);
        EXPECT_NEAR(static_cast<double>(sum), q == 0 ? 1 : 0, 4 * scale);
        for (int k = 0; k <= p; ++k) {
          EXPECT_NEAR(row[at(k)], double(model.value(span - p + k, p, q, span, u)), scale);
        }
      }
    }
  }
}

TEST(BsplineBasis, ClampedEndsAreExact) {
  const BsplineBasis basis(3, vectorOf({0.1, 0.1, 0.1, 0.1, 0.3, 0.7, 0.7, 0.7, 0.7}));
  double row[4];
  EXPECT_EQ(basis.row(0.1, 0, row), 0);
  EXPECT_EQ(Values(row, row + 4), (Values{1, 0, 0, 0}));
  EXPECT_EQ(basis.row(0.7, 0, row), 1);
  EXPECT_EQ(Values(row, row + 4), (Values{0, 0, 0, 1}));
}

TEST(BsplineBasis, MatricesHoldTheRows) {
  const BsplineBasis basis(2, vectorOf({0, 0, 0, 1, 2, 2, 4, 4, 4}));
  const DoubleVec u = vectorOf({4, 9, 2.5, 9, 0}).slice(0, 3, 2);
  const IntVec orders = indices({1, 0, 2});
  const DoubleGenMat mixed = basis.collocation(u, orders);
  ASSERT_TRUE(mixed.rows() == 3 && mixed.cols() == 6);
  for (int i = 0; i < 3; ++i) {
    Values expected(6, 0.0);
    const int first = basis.row(u(i), orders(i), expected.data() + 3);
    std::rotate(expected.begin() + first, expected.begin() + 3, expected.end());
    EXPECT_EQ(valuesOf(mixed.row(i)), expected);
    EXPECT_EQ(valuesOf(basis.collocation(u, orders(i)).row(i)), expected);
  }
  // Linear precision: the control points at the Greville abscissae give the identity.
  const DoubleVec g = basis.greville();
  const DoubleVec same = product(basis.collocation(u), g);
  for (int i = 0; i < 3; ++i) EXPECT_NEAR(same(i), u(i), 1e-15);
  EXPECT_EQ(valuesOf(BsplineBasis(0, vectorOf({0, 1, 3})).greville()), (Values{0.5, 2}));
}

TEST(BsplineBasis, PeriodicMatricesMeetAtTheSeam) {
  for (int p = 0; p <= 5; ++p) {
    const BsplineBasis basis(p, periodicKnots(p, p + 3, -1.0, 2.5));
    ASSERT_EQ(basis.count(), 2 * p + 3);
    const DoubleVec u = vectorOf({-1.0, 2.5, 0.3});
    for (int q = 0; q < p; ++q) {
      const DoubleGenMat a = basis.periodicCollocation(u, q);
      ASSERT_TRUE(a.rows() == 3 && a.cols() == unsigned(p) + 3);
      for (int j = 0; j < p + 3; ++j) EXPECT_NEAR(a(0, j), a(1, j), 1e-12);
      EXPECT_NEAR(sum(a.row(2)), q == 0, 1e-13);
    }
  }
}

TEST(BsplineBasis, FirstUndeterminedTellsTheRank) {
  Random random(32);
  int determined = 0, all = 0;
  for (int trial = 0; trial < 4000; ++trial) {
    const int p = trial % 5;
    const Values t = someKnots(random, p);
    const BsplineBasis basis(p, vectorOf(t));
    const double from = t[at(p)], to = t[at(basis.count())];
    const bool distinct = trial % 4 != 0;
    const int n = basis.count() + random.below(basis.count());
    const DoubleVec u = vectorOf(somePlaces(random, from, to, n, distinct));
    IntVec orders(u.length(), 0);
    for (int i = 1; i < int(u.length()); ++i) {
      if (u(i) == u(i - 1)) orders(i) = orders(i - 1) + 1;
    }
    // With the functions up to the first that finds no datum there is one too many.
    const int first = basis.firstUndetermined(u);
    const DoubleGenMat a = basis.collocation(u, orders);
    DoubleGenMat leading(a.rows(), unsigned(std::min(first + 1, basis.count())));
    for (int j = 0; j < int(leading.cols()); ++j) leading.col(j) = a.col(j);
    EXPECT_TRUE(rankOf(leading) == first || (!distinct && first < basis.count())) << trial;
    all += distinct;
    determined += distinct && first == basis.count();
  }
  EXPECT_TRUE(all / 4 < determined && determined < all * 3 / 4) << determined << " of " << all;
}

TEST(BsplineBasis, DataOutsideTheDomainDetermineNothing) {
  const BsplineBasis basis(1, vectorOf({0, 1, 2, 3, 4}));
  EXPECT_EQ(basis.firstUndetermined(vectorOf({0.5, 1.5, 2.5})), 2);
  EXPECT_EQ(basis.firstUndetermined(vectorOf({1, 2, 3})), 3);
  EXPECT_EQ(basis.firstUndetermined(vectorOf({1.5, 2.5, 3.5})), 2);
  EXPECT_EQ(basis.firstUndetermined(vectorOf({2, 1, 3})), -1);
}

TEST(Knots, AreThoseOfTheBook) {
  // Example 9.1: chord lengths 5, 4, 5, 3.
  const DoubleVec u = vectorOf({0, 5. / 17, 9. / 17, 14. / 17, 1});
  const Values t = valuesOf(averagedKnots(u, 3, 5));
  ASSERT_EQ(t.size(), 9U);
  EXPECT_DOUBLE_EQ(t[4], 28. / 51);
  // 9.68 and 9.69 with d = 10 / 3.
  const DoubleVec squares = DoubleVec(10, 0.0, 1.0) * DoubleVec(10, 0.0, 1.0);
  const Values fit = valuesOf(averagedKnots(squares, 3, 6));
  ASSERT_EQ(fit.size(), 10U);
  EXPECT_DOUBLE_EQ(fit[4], 4 + 5 * (1. / 3));
  EXPECT_DOUBLE_EQ(fit[5], 25 + 11 * (2. / 3));
  EXPECT_EQ(Values(fit.begin() + 6, fit.end()), Values(4, 81.0));
  EXPECT_EQ(valuesOf(uniformKnots(2, 5, 1, 7)), (Values{1, 1, 1, 3, 5, 7, 7, 7}));
  EXPECT_EQ(valuesOf(clampedKnots(1, vectorOf({4, 5}), 3, 6)), (Values{3, 3, 4, 5, 6, 6}));
  EXPECT_EQ(valuesOf(periodicKnots(1, 2)), (Values{-0.5, 0, 0.5, 1, 1.5}));
  // Ends are exact where adding the length to the begin is not.
  EXPECT_TRUE(uniformKnots(1, 3, -1, 1e-17)(4) == 1e-17 &&
              periodicKnots(1, 2, -1, 1e-17)(3) == 1e-17);
}

TEST(Knots, AveragedOnesAreDeterminedByTheirData) {
  Random random(33);
  for (int trial = 0; trial < 2000; ++trial) {
    const int p = 1 + trial % 5;
    const Values u = somePlaces(random, 0, 4, 60, true);
    const int data = static_cast<int>(u.size());
    std::vector<int> corners;
    for (int i = 1; trial % 2 && i + 1 < data; ++i) {
      if (random.below(12) == 0) corners.push_back(i);
    }
    const int least = p + 1 + p * static_cast<int>(corners.size());
    const int count = least + random.below(60);
    const DoubleVec knots = averagedKnots(vectorOf(u), p, count, indices(corners));
    ASSERT_EQ(knots.length(), count > data ? 0U : unsigned(count + p + 1));
    if (count > data) continue;
    const BsplineBasis basis(p, knots);
    ASSERT_EQ(basis.count(), count);
    for (const int corner : corners) {
      const Values t = valuesOf(knots);
      EXPECT_EQ(std::ranges::count(t, u[at(corner)]), p) << trial;
    }
    EXPECT_TRUE(!corners.empty() || basis.firstUndetermined(vectorOf(u)) == count) << trial;
  }
}

TEST(BsplineBasis, RefusesWhatIsNoBasis) {
  RecordedErrors errors;
  const DoubleVec u = vectorOf({0, 0.5, 1});
  for (const Values& t : {Values{}, Values{0, 0, 1}, Values{0, 0, 1, 0.5}, Values{0, 1, 1, 2},
                          Values{0, std::nan(""), 1, 2}, Values{0, 0, 1, HUGE_VAL}}) {
    const BsplineBasis basis(1, vectorOf(t));
    double none = 7;
    EXPECT_TRUE(basis.count() == 0 && basis.span(0.5) == -1 && basis.row(0.5, 0, &none) == -1);
    EXPECT_TRUE(basis.collocation(u).rows() == 0 && none == 7);
    EXPECT_TRUE(basis.firstUndetermined(u) == -1 && basis.greville().length() == 0);
  }
  for (const int degree : {-1, 2147483647})
    EXPECT_EQ(BsplineBasis(degree, vectorOf({0, 1})).count(), 0);
  const BsplineBasis line(1, uniformKnots(1, 2));
  for (const DoubleGenMat& none :
       {line.collocation(u, -1), line.collocation(u, indices({0, 0})),
        line.collocation(u, indices({0, -1, 0})), line.periodicCollocation(u)}) {
    EXPECT_EQ(none.rows(), 0U);
  }
  for (const DoubleVec& none :
       {averagedKnots(u, 1, 3, indices({0})), averagedKnots(u, 1, 3, indices({2})),
        averagedKnots(u, 1, 3, indices({1, 1})), averagedKnots(u, 0, 2), averagedKnots(u, 2, 2),
        averagedKnots(vectorOf({0, 2, 1}), 1, 2), uniformKnots(3, 3), periodicKnots(2, 2),
        clampedKnots(-1, u)}) {
    EXPECT_EQ(none.length(), 0U);
  }
  EXPECT_EQ(errors.takeTexts(), "");
  EXPECT_EQ(periodicKnots(2147483646, 2147483647).length(), 0U);
  EXPECT_EQ(errors.takeTexts(), "[NOMEM: RWBlock]: Out of memory\n");
  BsplineBasis other(0, vectorOf({0, 1}));
  other = line;
  EXPECT_EQ(valuesOf(other.knots()), (Values{0, 0, 1, 1}));
  EXPECT_EQ(errors.takeTexts(), "");
}

}  // namespace
}  // namespace knotwork
