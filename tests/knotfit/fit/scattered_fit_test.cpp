// SPDX-License-Identifier: MIT
// Properties of fits to scattered points.
#include "fit/scattered_fit.h"

#include <algorithm>
#include <cmath>
#include <random>

#include "base/fault.h"
#include "base/text.h"
#include "fit/surface_fit.h"
#include "io/fit_json.h"
#include "model/deviation.h"
#include "model/shape.h"
#include "run.h"

namespace knotfit::test {
namespace {

double cubic(double x, double y) { return 1 + x - 0.3 * x * x * y + 0.05 * y * y * y; }

/// Points over [0, 6] x [-1, 3] but for a hole of that radius in the middle, with z = height(x, y).
template <class Height>
PointSet cloud(std::size_t count, double hole, Height height) {
  std::mt19937 random(7);
  const auto within = [&](double from, double to) {
    return from + (to - from) * (static_cast<double>(random()) / 4294967296.0);
  };
  PointSet points;
  points.dim = 3;
  while (points.count() < count) {
    const double x = within(0, 6), y = within(-1, 3);
    if (std::hypot(x - 3, y - 1) < hole) continue;
    points.coords.insert(points.coords.end(), {x, y, height(x, y)});
  }
  return points;
}

FitOptions sized(std::size_t n, std::size_t m) {
  FitOptions o;
  o.controls = {n, m};
  return o;
}

TEST(ScatteredPoints, GiveWhatTheirSpaceHoldsBackInAnyPlane) {
  PointSet points = cloud(600, 0, cubic);
  points.weights.resize(points.count());
  for (std::size_t i = 0; i < points.count(); ++i)
    points.weights[i] = 1e-6 + static_cast<double>(i % 7);
  FitOptions o = sized(9, 7);
  const ScatteredFit fit = fitScattered(points, o);
  EXPECT_LT(summaryOf(fit.distances).max, 1e-12);
  EXPECT_LT(summaryOf(nearestDistances(fit, points)).max, 1e-12);

  // A flat patch that stands upright: heights over x and y it is not.
  PointSet upright = cloud(400, 0, [](double x, double y) { return 0.01 * x * y; });
  for (std::size_t i = 0; i < upright.count(); ++i) {
    double* const p = &upright.coords[3 * i];
    const double x = p[0], y = p[1], z = p[2];
    p[0] = z + 0.5 * y;
    p[1] = z - 2 * y;
    p[2] = 3 * x + 7;
  }
  o.bestPlane = true;
  EXPECT_LT(summaryOf(fitScattered(upright, o).distances).max, 1e-9);
}

// A full raster in any order is the grid's own fit.
TEST(ScatteredPoints, OfARasterAgreeWithTheFitOfTheGrid) {
  PointGrid grid;
  grid.rows = 25;
  grid.columns = 19;
  std::vector<std::array<double, 3>> shuffled;
  for (std::size_t i = 0; i < grid.rows; ++i) {
    for (std::size_t j = 0; j < grid.columns; ++j) {
      const double x = 2 * static_cast<double>(i), y = static_cast<double>(j);
      const double z = std::sin(0.2 * x) * std::cos(0.3 * y) + 0.01 * std::sin(99 * x * y);
      grid.coords.insert(grid.coords.end(), {x, y, z});
      shuffled.push_back({x, y, z});
    }
  }
  std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937(3));
  PointSet points;
  points.dim = 3;
  for (const auto& p : shuffled) points.coords.insert(points.coords.end(), p.begin(), p.end());
  FitOptions o = sized(11, 8);
  o.spacing = Spacing::kUniform;
  o.knots = KnotChoice::kUniform;
  const SurfaceFit expected = fitSurface(grid, o);
  const ScatteredFit fit = fitScattered(points, o);
  ASSERT_EQ(fit.spline.controls.size(), expected.spline.controls.size());
  for (std::size_t k = 0; k < fit.spline.controls.size(); ++k)
    EXPECT_NEAR(fit.spline.controls[k], expected.spline.controls[k], 1e-9);
  EXPECT_NEAR(summaryOf(fit.distances).rms, summaryOf(expected.distances).rms, 1e-12);
}

TEST(ScatteredPoints, SmoothingDeterminesWhatAHoleLeavesOpen) {
  const PointSet points =
      cloud(3000, 1.2, [](double x, double y) { return 2 + 0.5 * x - 0.25 * y; });
  FitOptions o = sized(30, 20);
  try {
    fitScattered(points, o);
    ADD_FAILURE() << "the hole was fitted";
  } catch (const Fault& fault) {
    EXPECT_EQ(fault.code(), kNoSolution);
    EXPECT_NE(std::string(fault.what()).find("undetermined, the first in row 1"), std::string::npos)
        << fault.what();
  }
  o.smooth = 1e-8;
  const ScatteredFit fit = fitScattered(points, o);
  EXPECT_GT(std::count(fit.points.begin(), fit.points.end(), 0u), 20);
  std::size_t all = 0;
  for (const std::size_t n : fit.points) all += n;
  EXPECT_EQ(all, points.count());
  // A plane has no second differences: it goes on across the hole.
  const std::array<double, 3> middle = SurfaceShape(fit.spline).point(0.5, 0.5);
  EXPECT_NEAR(middle[2], 2 + 0.5 * middle[0] - 0.25 * middle[1], 1e-8);
}

TEST(ScatteredPoints, KeepATolerance) {
  const auto wave = [](double x, double y) { return std::sin(2 * x) * std::cos(y); };
  const PointSet points = cloud(2000, 0, wave);
  FitOptions o;
  o.tolerance = 0.01;
  const ScatteredFit fit = fitScattered(points, o);
  EXPECT_TRUE(fit.reached);
  EXPECT_LE(summaryOf(nearestDistances(fit, points)).max, 0.01);
  EXPECT_LT(fit.spline.count(), points.count() / 4);
  o.tolerance = 1e-14;
  EXPECT_FALSE(fitScattered(points, o).reached);
}

TEST(ScatteredPoints, AreReportedWrittenAndChecked) {
  const Folder folder;
  std::string text = "east,north,up,w\n";
  const PointSet points = cloud(500, 1, cubic);
  for (std::size_t i = 0; i < points.count(); ++i)
    text += cat(points[i][0], ",", points[i][1], ",", points[i][2], ",1\n");
  write("cloud.csv", text);
  const Outcome o = knotfit({"surface", "cloud.csv", "--scattered", "--columns", "east,north,up",
                             "--weights", "w", "--controls", "12,9", "--smooth", "1e-9", "-o",
                             "cloud.json", "-o", "cloud.igs", "--report", "report.json"});
  EXPECT_EQ(o.code, 0) << o.err;
  EXPECT_NE(o.out.find("surface  500 scattered points -> degree 3 x 3, 12 x 9 control points, "
                       "heights over x and y, uniform knots\ncells    9 x 6, up to "),
            std::string::npos)
      << o.out;
  EXPECT_NE(o.out.find(" empty: (4, 3)"), std::string::npos) << o.out;
  EXPECT_EQ(
      knotfit({"check", "cloud.json", "cloud.csv", "--columns", "1,2,3", "--tol", "1e-6"}).code, 0);

  const auto lineOf = [](std::vector<std::string> more) {
    more.insert(more.begin(), {"surface", "cloud.csv"});
    return knotfit(more).err;
  };
  EXPECT_EQ(lineOf({"--scattered", "--height"}),
            "--height: is for grids; leave it out, or leave out --scattered\n");
  EXPECT_EQ(lineOf({"--scattered", "--knots", "average"}),
            "--knots: wants uniform for scattered points, not 'average'\n");
  EXPECT_EQ(lineOf({"--plane", "fit"}),
            "--plane fit: is for points in any order; add --scattered\n");
  EXPECT_EQ(lineOf({"--scattered", "--columns", "1,2"}),
            "the points have 2 columns; a surface wants x, y and z (choose them with --columns)\n");
  write("wall.csv", "1,0,0\n1,1,0\n1,1,1\n1,2,5\n");
  EXPECT_EQ(knotfit({"surface", "wall.csv", "--scattered", "--degree", "1", "--controls", "2"}).err,
            "all points have the same x: they are no heights over x and y; use --plane fit\n");
}

}  // namespace
}  // namespace knotfit::test
