// SPDX-License-Identifier: MIT
// What the writers tell of a shape.
#include "io/writers.h"

#include <array>
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

namespace knotfit::test {
namespace {

TEST(Flags, PlanarAndClosedAreToldTruthfully) {
  Spline s;
  s.size[0] = 5;
  s.controls = {0, 0, 0, 1, 0, 1, 2, 1, 3, 3, 0, 3, 0, 0, 0};  // in the plane z = x + y
  ASSERT_TRUE(planeNormal(s));
  EXPECT_NEAR(std::abs((*planeNormal(s))[2]), 1 / std::sqrt(3.0), 1e-15);
  EXPECT_TRUE(meetsItself(s, 0));
  s.controls[5] += 1e-6;
  EXPECT_FALSE(planeNormal(s));
  s.controls[12] += 1e-15;
  EXPECT_FALSE(meetsItself(s, 0));
  s.controls = {0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4};
  ASSERT_TRUE(planeNormal(s));
  const auto n = *planeNormal(s);
  EXPECT_NEAR(n[0] + n[1] + n[2], 0, 1e-15);
}

// A surface of degree 1 whose control point (i, j) is given, 3 x 3.
template <class Point>
Spline surfaceOf(Point point) {
  Spline s;
  s.directions = 2;
  s.degree = {1, 1};
  s.size = {3, 3};
  s.knots = {std::vector<double>{0, 0, 0.5, 1, 1}, {0, 0, 0.5, 1, 1}};
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      for (const double x : point(i, j)) s.controls.push_back(x);
    }
  }
  return s;
}

TEST(Flags, SurfacesAreClosedInTheDirectionThatIs) {
  using Point = std::array<double, 3>;
  const Spline u = surfaceOf([](int i, int j) { return Point{double(i % 2), double(j), 0}; });
  const Spline v = surfaceOf([](int i, int j) { return Point{double(i), double(j % 2), 0}; });
  EXPECT_NE(igesText(u).find("128,2,2,1,1,1,0,1,0,0,"), std::string::npos);
  EXPECT_NE(igesText(v).find("128,2,2,1,1,0,1,1,0,0,"), std::string::npos);
  EXPECT_NE(stepText(u).find(".UNSPECIFIED.,.T.,.F.,.F.,"), std::string::npos);
  EXPECT_NE(stepText(v).find(".UNSPECIFIED.,.F.,.T.,.F.,"), std::string::npos);
}

}  // namespace
}  // namespace knotfit::test
