// SPDX-License-Identifier: MIT
// Shapes keep their place.
#include "model/shape.h"

#include "io/fit_json.h"
#include "points.h"
#include "run.h"

namespace knotfit::test {
namespace {

TEST(Insertion, KeepsTheShapeOfCurvesAndSurfaces) {
  const Folder folder;
  ASSERT_EQ(knotfit({"demo", "."}).code, 0);
  ASSERT_EQ(knotfit({"curve", "spring.csv", "-o", "c.json"}).code, 0);
  ASSERT_EQ(
      knotfit({"insert", "c.json", "--knot", "0.5:3", "--knot", "0.25", "-o", "c2.json"}).code, 0);
  const Spline c = readFit("c.json").spline, c2 = readFit("c2.json").spline;
  EXPECT_EQ(c2.size[0], c.size[0] + 4);
  ASSERT_EQ(knotfit({"surface", "hill.csv", "--height", "-o", "s.json"}).code, 0);
  ASSERT_EQ(knotfit({"insert", "s.json", "--knot", "0.3:2", "--dir", "v", "-o", "s2.json"}).code,
            0);
  const Spline s = readFit("s.json").spline, s2 = readFit("s2.json").spline;
  EXPECT_EQ(s2.size[1], s.size[1] + 2);
  const CurveShape before(c), after(c2);
  const SurfaceShape sBefore(s), sAfter(s2);
  for (double u = 0; u <= 1; u += 0.03125) {
    const auto at = before.point(u);
    EXPECT_LT(apart(after.point(u), at.data(), 3), 1e-13 * 40);
    const auto on = sBefore.point(u, 1 - u);
    EXPECT_LT(apart(sAfter.point(u, 1 - u), on.data(), 3), 1e-13 * 40);
  }
  EXPECT_EQ(knotfit({"insert", "c2.json", "--knot", "0.5", "-o", "c3.json"}).err,
            "--knot 0.5: 3 stand there, and degree 3 takes 3 at most; insert 1 to 0\n");
}

}  // namespace
}  // namespace knotfit::test
