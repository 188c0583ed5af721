// SPDX-License-Identifier: MIT
// The box of a shape against dense sampling.
#include "model/bounds.h"

#include <gtest/gtest.h>

#include <random>

#include "model/shape.h"

namespace knotfit::test {
namespace {

TEST(Bounds, AreThoseOfTheShapeAndNotOfItsControlPoints) {
  std::mt19937 random(6);
  std::uniform_real_distribution<double> place(-3, 5);
  for (int trial = 0; trial < 20; ++trial) {
    Spline s;
    s.directions = 1 + trial % 2;
    s.degree = {1 + trial % 4, 2};
    s.knots = {std::vector<double>(static_cast<std::size_t>(s.degree[0]) + 1, 0.0),
               {0, 0, 0, 0.5, 0.5, 1, 1, 1}};
    for (const double t : {0.2, 0.7}) s.knots[0].push_back(t);
    s.knots[0].insert(s.knots[0].end(), static_cast<std::size_t>(s.degree[0]) + 1, 1.0);
    s.size = {static_cast<std::size_t>(s.degree[0]) + 3, s.isCurve() ? 1u : 5u};
    if (s.isCurve()) s.knots[1].clear();
    for (std::size_t i = 0; i < 3 * s.count(); ++i) s.controls.push_back(place(random));
    ASSERT_EQ(faultOf(s), "");
    const Bounds bounds = boundsOf(s);
    Vec3 low{9, 9, 9}, high{-9, -9, -9};
    const auto take = [&](const Vec3& p) {
      for (std::size_t c = 0; c < 3; ++c) {
        low[c] = std::min(low[c], p[c]);
        high[c] = std::max(high[c], p[c]);
      }
    };
    for (int i = 0; i <= 400; ++i) {
      if (s.isCurve()) take(CurveShape(s).point(i / 400.0));
    }
    for (int i = 0; i <= 100 && !s.isCurve(); ++i) {
      const SurfaceShape shape(s);
      for (int j = 0; j <= 100; ++j) take(shape.point(i / 100.0, j / 100.0));
    }
    for (std::size_t c = 0; c < 3; ++c) {
      EXPECT_LE(bounds.low[c], low[c] + 1e-7);
      EXPECT_GT(bounds.low[c], low[c] - 0.02);
      EXPECT_GE(bounds.high[c], high[c] - 1e-7);
      EXPECT_LT(bounds.high[c], high[c] + 0.02);
    }
  }
}

}  // namespace
}  // namespace knotfit::test
