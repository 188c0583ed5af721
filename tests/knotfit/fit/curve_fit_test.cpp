// SPDX-License-Identifier: MIT
// Properties of curve fits, on data of fixed seeds.
#include "fit/curve_fit.h"

#include <cmath>
#include <optional>
#include <random>

#include <gtest/gtest.h>

#include "base/fault.h"
#include "fit/nearest.h"
#include "model/deviation.h"
#include "model/scale.h"
#include "model/shape.h"
#include "points.h"

namespace knotfit::test {
namespace {

TEST(Fits, AsManyControlPointsAsDataInterpolate) {
  for (const int degree : {1, 2, 3, 5}) {
    const PointSet points = wave(30, 3, 7);
    FitOptions o;
    o.degree[0] = degree;
    o.controls[0] = 30;
    const CurveFit fit = fitCurve(points, o);
    EXPECT_LT(summaryOf(fit.distances).max, 1e-13);
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
    EXPECT_GE(summaryOf(fit.distances).rms, summaryOf(fitCurve(points, freed).distances).rms);
  }
}

// Whatever is asked of a fit: all bits of --closed, --ends, --pass, --tangent, --smooth, --corner
// and weights, at every small degree.
TEST(Fits, BandedAndDenseSolversAgree) {
  std::mt19937 random(41);
  std::uniform_real_distribution<double> weight(0, 2);
  for (int asked = 0; asked < 1024; ++asked) {
    PointSet points = wave(40, 2 + asked % 2, static_cast<unsigned>(asked));
    FitOptions o;
    o.degree[0] = 1 + asked / 128 % 4;
    o.controls[0] = 18;
    o.closed = asked & 1;
    o.endsExact = asked & 2;
    if (asked & 4) o.pass = {10, 29};
    if (asked & 8) o.tangents = {{5, {-0.6, 1, 0.1}}};
    if (asked & 16) o.smooth = 0.01;
    if (asked & 32) o.corners = {20};
    for (std::size_t i = 0; (asked & 64) && i < 40; ++i) points.weights.push_back(weight(random));
    const auto fitted = [&](Method method) -> std::optional<CurveFit> {
      o.solver.method = method;
      try {
        return fitCurve(points, o);
      } catch (const Fault& fault) {
        EXPECT_EQ(fault.code(), kNoSolution);
        return std::nullopt;
      }
    };
    SCOPED_TRACE(asked);
    const auto dense = fitted(Method::kHouseholder), banded = fitted(Method::kBanded);
    if (!dense) continue;  // tangents that point backwards, constraints that say a thing twice
    ASSERT_TRUE(banded);
    EXPECT_EQ(dense->rows, banded->rows);
    EXPECT_LT(banded->miss, 1e-13);
    EXPECT_EQ(banded->met, dense->met);
    for (std::size_t i = 0; i < dense->spline.controls.size(); ++i) {
      ASSERT_NEAR(dense->spline.controls[i], banded->spline.controls[i], 1e-9);
    }
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
    EXPECT_LT(summaryOf(fit.distances).max, 0.1);
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
  EXPECT_LT(summaryOf(fitCurve(corner, o).distances).max, 1e-13);
  PointSet straight;
  straight.dim = 2;
  for (int i = 0; i < 25; ++i)
    straight.coords.insert(straight.coords.end(), {i * i * 0.1, i * i * 0.2});
  FitOptions s;
  s.controls[0] = 40;  // more than there are data
  s.smooth = 1e3;
  const CurveFit fit = fitCurve(straight, s);
  EXPECT_LT(summaryOf(fit.distances).max, 1e-9);
}

TEST(Fits, WeightsPullAndZeroWeightsLeaveOut) {
  PointSet points = wave(40, 2, 5);
  points.coords[2 * 17] += 5;  // an outlier
  points.weights.assign(40, 1.0);
  FitOptions o;
  o.controls[0] = 10;
  const double with = summaryOf(fitCurve(points, o).distances).rms;
  points.weights[17] = 0;
  const CurveFit without = fitCurve(points, o);
  std::vector<double> d = without.distances;
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
  EXPECT_LT(summaryOf(refined.distances).rms, summaryOf(plain.distances).rms);
}

// Coordinates of any size: squares of the first leave the range of numbers above, of the second
// below.
TEST(Fits, SizeOfTheCoordinatesChangesNoDigit) {
  const PointSet points = wave(40, 2, 17);
  FitOptions o;
  o.controls[0] = 9;
  o.spacing = Spacing::kCentripetal;
  o.refine = 2;
  o.tangents = {{0, {0, 1, 0}}};
  const CurveFit fit = fitCurve(points, o);
  const std::vector<double> near = nearestDistances(fit.spline, points, fit.parameters);
  for (const int e : {1000, -960}) {
    PointSet sized = points;
    scaleBy(sized.coords, e);
    CurveFit other = fitCurve(sized, o);
    std::vector<double> otherNear = nearestDistances(other.spline, sized, other.parameters);
    for (std::vector<double>* v : {&other.spline.controls, &other.distances, &otherNear}) {
      scaleBy(*v, -e);
    }
    EXPECT_EQ(other.parameters, fit.parameters);
    EXPECT_EQ(other.spline.controls, fit.spline.controls);
    EXPECT_EQ(other.distances, fit.distances);
    EXPECT_EQ(otherNear, near);
  }
}

TEST(Fits, LeavingTheRangeOfNumbersIsSaid) {
  PointSet points;
  points.dim = 2;
  for (int i = 0; i < 12; ++i) {
    points.coords.insert(points.coords.end(), {i * 1e307, i % 2 ? 1.7e308 : -1.7e308});
  }
  FitOptions o;
  o.controls[0] = 12;
  EXPECT_THROW(fitCurve(points, o), Fault);
}

TEST(Nearest, DescendsFromAnywhereWithASlope) {
  const PointSet points = wave(50, 2, 13);
  FitOptions o;
  o.controls[0] = 12;
  const CurveProjector projector(fitCurve(points, o).spline);
  std::mt19937 random(4);
  std::uniform_real_distribution<double> place(0.05, 0.95), off(-0.4, 0.4);
  for (int trial = 0; trial < 200; ++trial) {
    // Beyond the centre of curvature the distance has a peak at the foot of the normal.
    const double p[] = {off(random), off(random)};
    const double start = place(random), before = projector.at(p, start).distance;
    const double h = 1e-4, slope = (projector.at(p, start + h).distance - before) / h;
    if (std::abs(slope) < 0.05) continue;  // already low, or on the peak
    EXPECT_LT(projector.nearestWithin(p, start, 0, 1).distance, before - h) << start;
  }
}

}  // namespace
}  // namespace knotfit::test
