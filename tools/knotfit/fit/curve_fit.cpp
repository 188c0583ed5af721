// SPDX-License-Identifier: MIT
// Fits of curves: the solution of the system, re-projection of the parameters.
#include "fit/curve_fit.h"

#include <algorithm>
#include <cmath>

#include "base/fault.h"
#include "base/text.h"
#include "fit/curve_system.h"
#include "fit/nearest.h"

namespace knotfit {
namespace {

void checkControls(const PointSet& points, const FitOptions& options,
                   const std::vector<double>& parameters, const std::vector<double>& knots) {
  if (options.smooth > 0 || options.closed) return;
  std::vector<double> all;
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    if (points.weights.empty() || points.weights[i] > 0) all.push_back(parameters[i]);
  }
  for (const Tangent& t : options.tangents) all.push_back(parameters[t.point]);
  std::sort(all.begin(), all.end());
  checkDetermined(knots, options.degree[0], all);
}

CurveFit fitOnce(const PointSet& points, const FitOptions& options,
                 const std::vector<double>& parameters, const std::vector<double>& knots) {
  checkControls(points, options, parameters, knots);
  const CurveSystem c = curveSystem(points, options, parameters, knots);
  const FactoredSystem factored(c.system, options.solver);
  CurveFit fit;
  Spline& s = fit.spline;
  s.dim = points.dim;
  s.degree = {options.degree[0], 0};
  s.knots[0] = knots;
  s.size = {c.system.unknowns, 1};
  s.closed = options.closed;
  s.units = options.units;
  s.controls = factored.solve(c.system.rhs, points.dim);
  addTangents(c, factored, options, s.controls);
  if (options.solver.method == Method::kHouseholder) meetPlainRows(c.system, s.controls);
  fit.parameters = parameters;
  fit.rows = c.system.rows.size();
  fit.constraints = c.system.constraints;
  fit.miss = largestMiss(c, s.controls);
  return fit;
}

// Moves every inner parameter to the foot of its point, as far as its neighbours leave room.
std::vector<double> reprojected(const CurveFit& fit, const PointSet& points) {
  const CurveProjector projector(fit.spline);
  std::vector<double> u = fit.parameters;
  for (std::size_t i = 1; i + 1 < u.size(); ++i) {
    const double foot = projector.downhill(points[i], u[i], u[i - 1], fit.parameters[i + 1]).u;
    if (foot > u[i - 1] && foot < fit.parameters[i + 1]) u[i] = foot;
  }
  return u;
}

}  // namespace

std::size_t controlCount(std::size_t asked, int degree, std::size_t points, bool smoothed,
                         const char* what) {
  const auto least = static_cast<std::size_t>(degree) + 1;
  const std::size_t n = asked ? asked : std::min(points, std::max(least, points / 4));
  if (asked && asked < least) {
    throw Fault(kUsage, cat("degree ", degree, " takes at least ", least, " control points; use ",
                            "--controls ", least, " or a lower --degree"));
  }
  if (points < 2 || (points < least && !(smoothed && asked))) {
    throw Fault(kNoSolution, cat("degree ", degree, " needs at least ", least, " data points, the ",
                                 what, " has ", points, "; use a lower --degree"));
  }
  if (n > points && !smoothed) {
    throw Fault(kNoSolution, cat(n, " control points need at least ", n, " data points, the ", what,
                                 " has ", points, "; use --controls ", points, " or fewer"));
  }
  return n;
}

std::vector<double> knotsFor(const FitOptions& options, const std::vector<double>& parameters,
                             std::size_t n) {
  if (options.knots == KnotChoice::kGiven) return options.knotValues;
  if (options.knots == KnotChoice::kUniform || n > parameters.size()) {
    return uniformKnots(options.degree[0], n);
  }
  std::vector<double> u = parameters;
  if (options.closed && u.back() < 1.0) u.push_back(1.0);
  return averagedKnots(u, options.degree[0], n, options.corners);
}

CurveFit fitWithKnots(const PointSet& points, const FitOptions& options,
                      const std::vector<double>& parameters, const std::vector<double>& knots) {
  CurveFit fit = fitOnce(points, options, parameters, knots);
  double rms = summaryOf(distancesAt(fit.spline, points, fit.parameters)).rms;
  for (int k = 0; k < options.refine; ++k) {
    try {
      CurveFit next = fitOnce(points, options, reprojected(fit, points), knots);
      const double nextRms = summaryOf(distancesAt(next.spline, points, next.parameters)).rms;
      if (!(nextRms < rms)) break;
      fit = std::move(next);
      rms = nextRms;
    } catch (const Fault&) {
      break;  // the moved parameters leave a control point undetermined: keep the fit before
    }
  }
  return fit;
}

CurveFit fitCurve(const PointSet& points, const FitOptions& options) {
  const std::vector<double> u = options.parameters.empty()
                                    ? parametersOf(points, options.spacing, options.closed)
                                    : options.parameters;
  CurveFit fit;
  if (options.tolerance > 0) {
    fit = fitWithin(points, options, u);
  } else {
    const std::size_t n =
        options.knots == KnotChoice::kGiven
            ? options.knotValues.size() - static_cast<std::size_t>(options.degree[0]) - 1
            : options.controls[0];
    const std::size_t count =
        controlCount(n, options.degree[0], points.count(), options.smooth > 0, "file");
    fit = fitWithKnots(points, options, u, knotsFor(options, u, count));
  }
  fit.condition =
      conditionOf(curveSystem(points, options, fit.parameters, fit.spline.knots[0]).system);
  return fit;
}

std::vector<double> distancesAt(const Spline& spline, const PointSet& points,
                                const std::vector<double>& parameters) {
  const CurveShape shape(spline);
  std::vector<double> out;
  for (std::size_t i = 0; i < points.count(); ++i) {
    const std::array<double, 3> at = shape.point(parameters[i]);
    double sum = 0;
    for (int c = 0; c < points.dim; ++c) {
      const double d = at[static_cast<std::size_t>(c)] - points[i][c];
      sum += d * d;
    }
    out.push_back(std::sqrt(sum));
  }
  return out;
}

std::vector<double> nearestDistances(const Spline& spline, const PointSet& points,
                                     const std::vector<double>& parameters) {
  const CurveProjector projector(spline);
  std::vector<double> out;
  for (std::size_t i = 0; i < points.count(); ++i) {
    out.push_back(projector.nearest(points[i], parameters[i]).distance);
  }
  return out;
}

}  // namespace knotfit
