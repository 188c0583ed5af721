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

// Bits of tools/order_of_sums.py, from exact arithmetic rounded once an operation; it also makes
// sure that lanes, fused operations and the other direction would give others.
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

// The table of tools/order_of_sums.py: special values, and a vector to tell each other cut, scaling
// or left out phase from the published ones.
TEST(VectorLength, FollowsThePublishedFourPhases) {
  constexpr double kInf = std::numeric_limits<double>::infinity();
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  const struct {
    std::vector<double> elements;
    double length;
  } cases[] = {
      {{0.0, -0.0}, 0.0},
      {{}, 0.0},
      {{kNan}, kNan},
      {{1.0, kNan}, kNan},
      {{1e+200, kNan, 1e+300}, kNan},
      {{kInf}, kNan},
      {{1e-300, -kInf, 1.0}, kNan},
      {{6e-11, -8.232e-11, 3e-10, -2e-11}, 3.1745327593206534e-10},
      {{8.2325e-11, -0.0, 0.0, -8.2325e-11}, 1.1642513152236504e-10},
      {{8.2315e-11, -2e-11, -2e-11, 8.232e-11}, 1.198012588623342e-10},
      {{8e-11, 3e-11, 9e-11, -9e-11}, 1.532970971675589e-10},
      {{4e-160, -3e-12, 2.1000000000000002e-11, 3e-320}, 2.121320343559643e-11},
      {{1e+18, 1e+18, -3.259e+18, 1e+19}, 1.0612307995907394e+19},
      {{-1e+18, 3.259e+18, -3.26e+18, -1e+18}, 4.821688604628052e+18},
      {{-1e+18, 1e+18, 3e+18, 3.259e+18}, 4.64984741685144e+18},
      {{3.259e+18, 9.78e+18, 9.78e+18, 1e+18}, 1.4244924745325963e+19},
      {{2.1e+154, 6e+150, -7e+153, 1.8e+151}, 2.2135951752748287e+154},
      {{3.26e+18, 3.259e+18, -3.259e+18, 1e+18}, 5.733215677087336e+18},
      {{1.2e+19, 6e+150, -1e+300, 1.2e+19}, 1e+300},
      {{3e-11, 7e-11, -3e-11, 9e-11}, 1.216552506059644e-10},
      {{3.259e+18, 3e+18, 3.259e+18, 9.78e+18}, 1.1220096345397398e+19},
      {{1e+18, 3.259e+18, 3.26e+18, 1e+19}, 1.1056612546345286e+19},
  };
  for (const auto& [elements, length] : cases) {
    const DoubleVec backwards = vectorOf<DoubleVec>({elements.rbegin(), elements.rend()});
    EXPECT_TRUE(sameBits(reverse(backwards).vecLen(), length)) << reverse(backwards);
  }
}

TEST(VectorLength, NormalisesThroughTheReciprocal) {
  const double sides[] = {3.0, 4.0}, bad[] = {1.0, std::nan("")};
  DoubleVec v(sides, 2), zero(2, 0.0), broken(bad, 2), empty;
  EXPECT_EQ(v.normalise(), 1);
  EXPECT_TRUE(holds(v, {0.6000000000000001, 0.8}));
  for (DoubleVec* refused : {&zero, &broken, &empty}) {
    const DoubleVec before = refused->copy();
    EXPECT_EQ(refused->normalise(), 0);
    EXPECT_TRUE(holds(*refused, {before.data(), before.data() + before.length()}));
  }
}

}  // namespace
