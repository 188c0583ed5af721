// SPDX-License-Identifier: MIT
// Properties of surface fits.
#include "fit/surface_fit.h"

#include <cmath>
#include <random>

#include "base/text.h"
#include "fit/curve_fit.h"
#include "fit/nearest.h"
#include "io/fit_json.h"
#include "model/deviation.h"
#include "model/scale.h"
#include "model/shape.h"
#include "points.h"
#include "run.h"

namespace knotfit::test {
namespace {

PointGrid plane(std::size_t rows, std::size_t columns) {
  PointGrid grid;
  grid.rows = rows;
  grid.columns = columns;
  for (std::size_t i = 0; i < rows; ++i) {
    for (std::size_t j = 0; j < columns; ++j) {
      const double x = static_cast<double>(i), y = 0.5 * static_cast<double>(j);
      grid.coords.insert(grid.coords.end(), {x, y, 3 + 2 * x - y + 0.1 * x * y});
    }
  }
  return grid;
}

TEST(Surfaces, ReproduceWhatTheirSpaceHolds) {
  const PointGrid grid = plane(14, 11);
  for (const Edges edges : {Edges::kFree, Edges::kExact, Edges::kCorners}) {
    for (const Method method : {Method::kHouseholder, Method::kQr}) {
      FitOptions o;
      o.degree = {2, 3};
      o.controls = {6, 5};
      o.spacing = Spacing::kUniform;
      o.edges = edges;
      o.solver.method = method;
      if (edges == Edges::kExact && method == Method::kQr) continue;
      const SurfaceFit fit = fitSurface(grid, o);
      EXPECT_LT(summaryOf(fit.distances).max, 1e-12);
      EXPECT_LT(summaryOf(nearestDistances(fit, grid)).max, 1e-12);
    }
  }
}

TEST(Surfaces, SizeOfTheCoordinatesChangesNoDigit) {
  PointGrid grid = plane(12, 9);
  for (std::size_t i = 2; i < grid.coords.size(); i += 3) {
    grid.coords[i] += std::sin(static_cast<double>(i));
  }
  FitOptions o;
  o.controls = {6, 5};
  const SurfaceFit fit = fitSurface(grid, o);
  for (const int e : {1000, -960}) {
    PointGrid sized = grid;
    scaleBy(sized.coords, e);
    SurfaceFit other = fitSurface(sized, o);
    std::vector<double> near = nearestDistances(other, sized);
    for (std::vector<double>* v : {&other.spline.controls, &other.distances, &near}) {
      scaleBy(*v, -e);
    }
    EXPECT_EQ(other.spline.controls, fit.spline.controls);
    EXPECT_EQ(other.distances, fit.distances);
    EXPECT_EQ(near, nearestDistances(fit, grid));
  }
}

// Height grids give x and y back to the bit, beside heights of any size, in each form of the fit.
TEST(Surfaces, HeightsAreUniformAndKeepTheirPlaces) {
  const Folder folder;
  ASSERT_EQ(knotfit({"demo", "."}).code, 0);
  std::string huge;
  for (int i = 0; i < 25; ++i) {
    for (int j = 0; j < 20; ++j) huge += cat(j ? "," : "", 1e300 * std::sin(i + j * j));
    huge += "\n";
  }
  write("huge.csv", huge);
  for (const char* file : {"hill.csv", "huge.csv"}) {
    const Outcome o = knotfit({"surface", file, "--height", "--spacing", "0.1,0.05", "--controls",
                               "9,8", "--order", "columns", "-o", "hill.json", "--force"});
    EXPECT_NE(o.out.find(", uniform parameters,"), std::string::npos) << o.out;
    ASSERT_EQ(
        knotfit({"insert", "hill.json", "--knot", "0.3:2", "-o", "more.json", "--force"}).code, 0);
    for (const char* fit : {"hill.json", "more.json"}) {
      const Spline s = readFit(fit).spline;
      const SurfaceShape shape(s);
      for (int i = 0; i < 20; ++i) {  // columns run along u
        for (int j = 0; j < 25; ++j) {
          const auto at = shape.point(i / 19.0, j / 24.0);
          EXPECT_EQ(at[0], 0.1 * j);
          EXPECT_EQ(at[1], 0.05 * i);
        }
      }
      Spline net = s;  // another reader knows the net alone
      net.heights.reset();
      for (int i = 0; i < 20; ++i) {
        EXPECT_NEAR(SurfaceShape(net).point(i / 19.0, 0.5)[1], 0.05 * i, 3e-16);
      }
    }
  }
  const Outcome table = knotfit({"eval", "more.json", "--at", "1,0.25", "--deriv", "1"});
  EXPECT_NE(table.out.find("\n1,0.25,0.6000000000000001,0.9500000000000001,"), std::string::npos);
  // A file whose parts are at odds is refused.
  const std::pair<const char*, Json> changes[] = {
      {"/heights/spacing/1", 0.06}, {"/heights/steps/0", 25}, {"/heights/along/0", "x"}};
  for (const auto& [place, value] : changes) {
    Json fit = Json::parse(contents("hill.json"));
    fit[Json::json_pointer(place)] = value;
    write("moved.json", fit.dump());
    EXPECT_EQ(
        knotfit({"info", "moved.json"}).err,
        "moved.json: its control points are not those of its \"heights\" (write the fit anew)\n");
  }
  Json fit = Json::parse(contents("hill.json"));
  fit["domain"][1] = {0, 2};
  write("moved.json", fit.dump());
  EXPECT_EQ(knotfit({"info", "moved.json"}).err,
            "moved.json: its domain is not from its first knot to its last (write the fit anew)\n");
}

// A column of small numbers keeps its digits beside one of large ones.
TEST(Surfaces, ColumnsOfAnySizeKeepTheirDigits) {
  PointGrid grid = plane(12, 9), sized = grid;
  for (std::size_t i = 2; i < grid.coords.size(); i += 3) {
    sized.coords[i] = std::ldexp(grid.coords[i], 900);
  }
  FitOptions o;
  o.spacing = Spacing::kUniform;
  o.controls = {6, 5};
  const SurfaceFit fit = fitSurface(grid, o), other = fitSurface(sized, o);
  for (std::size_t i = 0; i < fit.spline.controls.size(); ++i) {
    EXPECT_EQ(other.spline.controls[i], std::ldexp(fit.spline.controls[i], i % 3 == 2 ? 900 : 0));
  }
  PointSet points = wave(40, 2, 3), tall = points;
  for (std::size_t i = 1; i < points.coords.size(); i += 2) {
    tall.coords[i] = std::ldexp(points.coords[i], 900);
  }
  o.controls = {12, 0};
  const Spline curve = fitCurve(points, o).spline, tallCurve = fitCurve(tall, o).spline;
  for (std::size_t i = 0; i < curve.controls.size(); ++i) {
    EXPECT_EQ(tallCurve.controls[i], std::ldexp(curve.controls[i], i % 2 == 1 ? 900 : 0));
  }
}

TEST(Surfaces, EdgesAreMetAsAsked) {
  const Folder folder;
  ASSERT_EQ(knotfit({"demo", "."}).code, 0);
  for (const char* edges : {"exact", "corners"}) {
    const Json r =
        report({"surface", "hill.csv", "--height", "--controls", "9,8", "--edges", edges});
    EXPECT_LT(r["edges"]["miss"].get<double>(), 1e-12);
  }
  const Json free = report({"surface", "hill.csv", "--height", "--controls", "9,8"});
  const Json corners =
      report({"surface", "hill.csv", "--height", "--controls", "9,8", "--edges", "corners"});
  EXPECT_LE(free["error"]["rms"].get<double>(), corners["error"]["rms"].get<double>());
  const Json tolerance = report({"surface", "hill.csv", "--height", "--tol", "0.2"});
  EXPECT_LE(tolerance["nearest"]["max"].get<double>(), 0.2);
  EXPECT_LT(tolerance["controls"][0].get<int>(), 25);
}

}  // namespace
}  // namespace knotfit::test
