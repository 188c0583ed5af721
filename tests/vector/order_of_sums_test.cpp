// SPDX-License-Identifier: MIT
// Sums run in index order, rounded after every operation: a contract to the last bit.
#include <cmath>
#include <cstdint>
#include <limits>

#include "vector/vector_oracle.h"

namespace {

constexpr int kCount = 1003;

// As elements() of tools/order_of_sums.py.
std::vector<double> elements(std::uint64_t state) {
  std::vector<double> all;
  for (int i = 0; i < kCount; ++i) {
    state = state * 6364136223846793005u + 1442695040888963407u;
    const auto digits = static_cast<std::int64_t>(state >> 11) - (std::int64_t{1} << 52);
    all.push_back(std::ldexp(static_cast<double>(digits), static_cast<int>(state >> 7 & 15) - 60));
  }
  return all;
}

// Sum of x[i] y[i] in `lanes` partial sums, optionally fused: what must not happen.
double dotInLanes(const std::vector<double>& x, const std::vector<double>& y, std::size_t lanes,
                  bool fused) {
  std::vector<double> partial(lanes, 0.0);
  for (std::size_t i = 0; i < x.size(); ++i) {
    volatile double product = x[i] * y[i];
    volatile double& total = partial[i % lanes];
    if (fused) {
      total = std::fma(x[i], y[i], total);
    } else {
      total = total + product;
    }
  }
  volatile double total = 0.0;
  for (const double p : partial) total = total + p;
  return total;
}

// Bits of tools/order_of_sums.py, from exact arithmetic rounded once an operation.
TEST(OrderOfSums, IsThatOfTheIndex) {
  const DoubleVec x = vectorOf<DoubleVec>(elements(1)), y = vectorOf<DoubleVec>(elements(3));
  DoubleVec wide(3 * kCount, 7.0);
  DoubleVec strided = wide.slice(3 * kCount - 1, kCount, -3);
  strided = x;
  for (const DoubleVec& v : {x, strided}) {
    EXPECT_EQ(sum(v), 0x1.39d97b1987b25p+9);
    EXPECT_EQ(dot(v, y), 0x1.50f38cfba5eb7p+8);
    EXPECT_EQ(mean(v), 0x1.406bb077fda5fp-1);
    EXPECT_EQ(variance(v), 0x1.d5b2cc610e633p+8);
    EXPECT_EQ(v.vecLen(), 0x1.575454aa53e53p+9);
    EXPECT_EQ(dot(cumsum(v), y), -0x1.90d09915e4c65p+15);
  }
}

TEST(OrderOfSums, WouldShowInTheseData) {
  const std::vector<double> x = elements(1), y = elements(3), ones(kCount, 1.0);
  const double inOrder = dotInLanes(x, y, 1, false), sumInOrder = dotInLanes(x, ones, 1, false);
  EXPECT_EQ(inOrder, dot(vectorOf<DoubleVec>(x), vectorOf<DoubleVec>(y)));
  EXPECT_NE(inOrder, dotInLanes(x, y, 1, true));
  EXPECT_NE(inOrder, dotInLanes({x.rbegin(), x.rend()}, {y.rbegin(), y.rend()}, 1, false));
  for (const std::size_t lanes : {2, 3, 4, 8, 16, 32}) {
    EXPECT_NE(inOrder, dotInLanes(x, y, lanes, false)) << lanes;
    EXPECT_NE(inOrder, dotInLanes(x, y, lanes, true)) << lanes;
    EXPECT_NE(sumInOrder, dotInLanes(x, ones, lanes, false)) << lanes;
    EXPECT_NE(dotInLanes(x, x, 1, false), dotInLanes(x, x, lanes, false)) << lanes;
  }
}

TEST(OrderOfSums, RampsAreRunningSums) {
  volatile double element = 1.0;
  const DoubleVec ramp(1000, 1.0, 0.1);
  int differsFromProduct = 0;
  for (int i = 0; i < 1000; ++i) {
    EXPECT_EQ(ramp(i), element);
    differsFromProduct += ramp(i) != 1.0 + i * 0.1;
    element = element + 0.1;
  }
  EXPECT_GT(differsFromProduct, 500);
}

// ---- Euclidean length
// ----------------------------------------------------------------------------

// The published four-phase form, in its own states: C. L. Lawson et al. (1979), DNRM2.
double publishedLength(const std::vector<double>& dx) {
  const double cutlo = 8.232e-11, cuthi = 1.304e19;
  const std::size_t nn = dx.size();
  if (nn == 0) return 0.0;
  int next = 30;
  volatile double sum = 0.0, xmax = 0.0, ratio;
  std::size_t i = 0, j;
  double hitest;
l20:
  switch (next) {
    case 30:
      goto l30;
    case 50:
      goto l50;
    case 70:
      goto l70;
    default:
      goto l110;
  }
l30:
  if (std::fabs(dx[i]) > cutlo) goto l85;
  next = 50;
  xmax = 0.0;
l50:  // phase 1: the sum is zero
  if (dx[i] == 0.0) goto l200;
  if (std::fabs(dx[i]) > cutlo) goto l85;
  next = 70;
  goto l105;
l100:  // prepare for phase 4
  i = j;
  next = 110;
  sum = sum / dx[i];
  sum = sum / dx[i];
l105:
  xmax = std::fabs(dx[i]);
  goto l115;
l70:  // phase 2: small
  if (std::fabs(dx[i]) > cutlo) goto l75;
l110:  // phases 2 and 4
  if (std::fabs(dx[i]) <= xmax) goto l115;
  ratio = xmax / dx[i];
  ratio = ratio * ratio;
  ratio = sum * ratio;
  sum = 1.0 + ratio;
  xmax = std::fabs(dx[i]);
  goto l200;
l115:
  ratio = dx[i] / xmax;
  ratio = ratio * ratio;
  sum = sum + ratio;
  goto l200;
l75:
  sum = sum * xmax;
  sum = sum * xmax;
l85:
  hitest = cuthi / static_cast<double>(nn);
  for (j = i; j < nn; ++j) {  // phase 3: mid-range
    if (std::fabs(dx[j]) >= hitest) goto l100;
    ratio = dx[j] * dx[j];
    sum = sum + ratio;
  }
  return std::sqrt(sum);
l200:
  if (++i < nn) goto l20;
  return xmax * std::sqrt(sum);
}

TEST(VectorLength, FollowsThePublishedFourPhases) {
  constexpr double kInf = std::numeric_limits<double>::infinity();
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  // Exponents of ten around the cuts, and the special values; runs that visit the phases in turn.
  const std::vector<std::vector<double>> kinds = {{0.0, -0.0},
                                                  {-1e-320, 5e-324},
                                                  {1e-200, -3e-160},
                                                  {8.232e-11, 8.3e-11, -1e-11},
                                                  {1.0, -3.0},
                                                  {1e15, 4e18},
                                                  {1.304e19, -1e19},
                                                  {1e150, -1e155},
                                                  {1.7e308, -1e300},
                                                  {kInf},
                                                  {kNan},
                                                  {-kInf}};
  Random random(7);
  for (int run = 0; run < 20000; ++run) {
    std::vector<double> x;
    for (int phase = numberIn(random, 0, 4); phase > 0; --phase) {
      const auto& kind = kinds[random() % (random() % 4 == 0 ? kinds.size() : kinds.size() - 3)];
      for (int i = numberIn(random, 1, 5); i > 0; --i) {
        x.push_back(kind[random() % kind.size()] * (1 + numberIn(random, 0, 3)));
      }
    }
    ASSERT_TRUE(sameBits(vectorOf<DoubleVec>(x).vecLen(), publishedLength(x))) << "run " << run;
  }
  for (const auto& x : {elements(2), elements(4)}) {
    EXPECT_EQ(vectorOf<DoubleVec>(x).vecLen(), publishedLength(x));
  }
  EXPECT_EQ(DoubleVec().vecLen(), 0.0);
}

TEST(VectorLength, NormalisesThroughTheReciprocal) {
  const double sides[] = {3.0, 4.0}, bad[] = {1.0, std::nan("")};
  DoubleVec v(sides, 2), zero(2, 0.0), broken(bad, 2), empty;
  EXPECT_EQ(v.normalise(), 1);
  EXPECT_TRUE(holds(v, {0.6000000000000001, 0.8}));
  for (DoubleVec* refused : {&zero, &broken, &empty}) {
    const DoubleVec before = refused->copy();
    EXPECT_EQ(refused->normalise(), 0);
    for (int i = 0; i < static_cast<int>(before.length()); ++i) {
      EXPECT_TRUE(sameBits((*refused)(i), before(i)));
    }
  }
}

}  // namespace
