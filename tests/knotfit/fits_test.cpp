// SPDX-License-Identifier: MIT
// Properties of fits, on data of fixed seeds.
#include <cmath>
#include <random>

#include "fit/basis.h"
#include "fit/curve_fit.h"
#include "fit/nearest.h"
#include "io/fit_json.h"
#include "run.h"

namespace knotfit::test {
namespace {

PointSet wave(std::size_t n, int dim, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> noise(-0.02, 0.02);
  PointSet points;
  points.dim = dim;
  for (std::size_t i = 0; i < n; ++i) {
    const double t = 6.0 * static_cast<double>(i) / static_cast<double>(n);
    const double full[] = {std::cos(t) + noise(random), std::sin(t) + noise(random), 0.3 * t};
    points.coords.insert(points.coords.end(), full, full + dim);
  }
  return points;
}

double apart(const std::array<double, 3>& a, const double* b, int dim) {
  double sum = 0;
  for (int c = 0; c < dim; ++c) sum += std::pow(a[static_cast<std::size_t>(c)] - b[c], 2);
  return std::sqrt(sum);
}

TEST(Basis, SumsToOneAndDerivesItself) {
  const std::vector<double> knots = {0, 0, 0, 0, 0.2, 0.5, 0.5, 0.9, 1, 1, 1, 1};
  for (double u = 0; u <= 1; u += 0.0625) {
    for (int order = 0; order <= 4; ++order) {
      double sum = 0;
      for (const double v : basisRow(knots, 3, u, order).values) sum += v;
      EXPECT_NEAR(sum, order == 0 ? 1 : 0, order == 0 ? 1e-15 : 1e-9) << u;
    }
    const double h = 1e-6;
    const BasisRow d = basisRow(knots, 3, u, 1), a = basisRow(knots, 3, u),
                   b = basisRow(knots, 3, u + h);
    for (std::size_t k = 0; k < 4 && a.first == b.first && u < 1; ++k) {
      EXPECT_NEAR(d.values[k], (b.values[k] - a.values[k]) / h, 1e-3);
    }
  }
}

TEST(Fits, AsManyControlPointsAsDataInterpolate) {
  for (const int degree : {1, 2, 3, 5}) {
    const PointSet points = wave(30, 3, 7);
    FitOptions o;
    o.degree[0] = degree;
    o.controls[0] = 30;
    const CurveFit fit = fitCurve(points, o);
    EXPECT_LT(summaryOf(distancesAt(fit.spline, points, fit.parameters)).max, 1e-13);
  }
}

TEST(Fits, ConstraintsHoldExactly) {
  for (const int dim : {2, 3}) {
    const PointSet points = wave(60, dim, 11);
    FitOptions o;
    o.controls[0] = 14;
    o.pass = {20, 41};
    o.tangents = {{0, {0, 1, 0.3}}, {30, {-0.3, -1, 0.1}}};
    const CurveFit fit = fitCurve(points, o);
    const CurveShape shape(fit.spline);
    EXPECT_LT(fit.miss, 1e-14);
    for (const std::size_t i : {0, 20, 41, 59}) {
      EXPECT_LT(apart(shape.point(fit.parameters[i]), points[i], dim), i % 59 ? 1e-14 : 1e-300);
    }
    for (const Tangent& t : o.tangents) {
      double d[6], along = 0, across = 0;
      shape.eval(fit.parameters[t.point], 1, d);
      for (int c = 0; c < dim; ++c) along += d[3 + c] * t.direction[static_cast<std::size_t>(c)];
      for (int c = 0; c < dim; ++c) {
        for (int k = 0; k < c; ++k) {
          across += std::abs(d[3 + c] * t.direction[static_cast<std::size_t>(k)] -
                             d[3 + k] * t.direction[static_cast<std::size_t>(c)]);
        }
      }
      EXPECT_GT(along, 0);
      EXPECT_LT(across, 1e-12 * along);
    }
    FitOptions freed = o;  // no other length of the tangents fits better
    freed.tangents.clear();
    EXPECT_GE(summaryOf(distancesAt(fit.spline, points, fit.parameters)).rms,
              summaryOf(distancesAt(fitCurve(points, freed).spline, points, fit.parameters)).rms);
  }
}

TEST(Fits, ClosedCurvesAreSmoothAtTheSeam) {
  for (const bool repeats : {false, true}) {
    PointSet points = wave(50, 2, 3);
    if (repeats) points.coords.insert(points.coords.end(), {points[0][0], points[0][1]});
    FitOptions o;
    o.controls[0] = 16;
    o.closed = true;
    o.endsExact = repeats;
    const CurveFit fit = fitCurve(points, o);
    const CurveShape shape(fit.spline);
    double a[9], b[9];
    shape.eval(0, 2, a);
    shape.eval(1, 2, b);
    for (int k = 0; k < 9; ++k) EXPECT_NEAR(a[k], b[k], 1e-12 * std::pow(50, k / 3));
    EXPECT_LT(apart(shape.point(0), points[0], 2), repeats ? 1e-14 : 0.1);
    EXPECT_LT(summaryOf(distancesAt(fit.spline, points, fit.parameters)).max, 0.1);
  }
}

TEST(Fits, CornersBreakTheTangentAndSmoothingKeepsStraightLines) {
  PointSet corner;
  corner.dim = 2;
  for (int i = 0; i <= 40; ++i) {
    corner.coords.insert(corner.coords.end(), {i * 0.1, std::abs(i - 20) * 0.1});
  }
  FitOptions o;
  o.controls[0] = 12;
  o.corners = {20};
  EXPECT_LT(
      summaryOf(distancesAt(fitCurve(corner, o).spline, corner, fitCurve(corner, o).parameters))
          .max,
      1e-13);
  PointSet straight;
  straight.dim = 2;
  for (int i = 0; i < 25; ++i)
    straight.coords.insert(straight.coords.end(), {i * i * 0.1, i * i * 0.2});
  FitOptions s;
  s.controls[0] = 40;  // more than there are data
  s.smooth = 1e3;
  const CurveFit fit = fitCurve(straight, s);
  EXPECT_LT(summaryOf(distancesAt(fit.spline, straight, fit.parameters)).max, 1e-9);
}

TEST(Fits, WeightsPullAndZeroWeightsLeaveOut) {
  PointSet points = wave(40, 2, 5);
  points.coords[2 * 17] += 5;  // an outlier
  points.weights.assign(40, 1.0);
  FitOptions o;
  o.controls[0] = 10;
  const double with = summaryOf(distancesAt(fitCurve(points, o).spline, points,
                                            parametersOf(points, Spacing::kChord, false)))
                          .rms;
  points.weights[17] = 0;
  const CurveFit without = fitCurve(points, o);
  std::vector<double> d = distancesAt(without.spline, points, without.parameters);
  d.erase(d.begin() + 17);
  EXPECT_LT(summaryOf(d).rms, with / 2);
}

TEST(Fits, RefinedParametersNeverFitWorse) {
  const PointSet points = wave(80, 3, 9);
  FitOptions o;
  o.controls[0] = 9;
  const CurveFit plain = fitCurve(points, o);
  o.refine = 10;
  const CurveFit refined = fitCurve(points, o);
  EXPECT_LT(summaryOf(distancesAt(refined.spline, points, refined.parameters)).rms,
            summaryOf(distancesAt(plain.spline, points, plain.parameters)).rms);
}

TEST(Nearest, AgreesWithDenseSampling) {
  const PointSet points = wave(50, 2, 13);
  FitOptions o;
  o.controls[0] = 12;
  const Spline curve = fitCurve(points, o).spline;
  const CurveProjector projector(curve);
  std::mt19937 random(1);
  std::uniform_real_distribution<double> place(-1.5, 1.5);
  for (int trial = 0; trial < 50; ++trial) {
    const double p[] = {place(random), place(random)};
    double sampled = 1e9;
    for (int i = 0; i <= 20000; ++i) {
      sampled = std::min(sampled, apart(projector.shape().point(i / 20000.0), p, 2));
    }
    const double found = projector.nearest(p, NAN).distance;
    EXPECT_LE(found, sampled + 1e-12);
    EXPECT_GT(found, sampled - 1e-4);
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

TEST(Insertion, KeepsTheShapeOfCurvesAndSurfaces) {
  const Folder folder;
  ASSERT_EQ(knotfit({"demo", "."}).code, 0);
  ASSERT_EQ(knotfit({"curve", "spring.csv", "-o", "c.json"}).code, 0);
  ASSERT_EQ(
      knotfit({"insert", "c.json", "--knot", "0.5:3", "--knot", "0.25", "-o", "c2.json"}).code, 0);
  const Spline c = readFit("c.json"), c2 = readFit("c2.json");
  EXPECT_EQ(c2.size[0], c.size[0] + 4);
  ASSERT_EQ(knotfit({"surface", "hill.csv", "--height", "-o", "s.json"}).code, 0);
  ASSERT_EQ(knotfit({"insert", "s.json", "--knot", "0.3:2", "--dir", "v", "-o", "s2.json"}).code,
            0);
  const Spline s = readFit("s.json"), s2 = readFit("s2.json");
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

TEST(Commands, EvalCheckAndInfoSpeakOfTheSameFit) {
  const Folder folder;
  ASSERT_EQ(knotfit({"demo", "."}).code, 0);
  ASSERT_EQ(knotfit({"curve", "egg.csv", "--ends", "exact", "-o", "egg.json"}).code, 0);
  EXPECT_EQ(knotfit({"eval", "egg.json", "--at", "0"}).out, "u,x,y\n0,34,0\n");
  EXPECT_EQ(knotfit({"eval", "egg.json", "--at", "1.5"}).err,
            "--at 1.5 is outside the domain 0 to 1\n");
  const Json r = report({"curve", "egg.csv"});
  const Outcome o = knotfit({"check", "egg.json", "egg.csv", "--tol", "1e-9", "-o", "d.csv"});
  EXPECT_EQ(o.code, 1);
  EXPECT_EQ(contents("d.csv").find("point,u,distance\n1,0,0\n"), 0u);
  EXPECT_EQ(knotfit({"check", "egg.json", "egg.csv", "--nearest", "--tol", "9"}).code, 0);
  EXPECT_NE(knotfit({"info", "egg.json"}).out.find("degree 3, 15 control points"),
            std::string::npos);
  EXPECT_NE(knotfit({"info", "egg.csv"}).out.find("60 points (2 columns)"), std::string::npos);
  EXPECT_EQ(knotfit({}).out.find("knotfit fits B-spline"), 0u);
  for (const char* c :
       {"curve", "surface", "eval", "check", "insert", "convert", "info", "lsq", "demo"}) {
    EXPECT_NE(knotfit({c, "--help"}).out.find("Example: knotfit "), std::string::npos) << c;
  }
}

}  // namespace
}  // namespace knotfit::test
