// SPDX-License-Identifier: MIT
// Fits of curves: the solution of the system, re-projection of the parameters.
//
// Points of an extreme size are brought to a size near 1 first, so that squares of their distances
// stay in the range of numbers, and the fit is scaled back in the end. Both are powers of two:
// nothing is rounded, and all other points need no copy.
#include "fit/curve_fit.h"

#include <algorithm>
#include <cmath>

#include "base/fault.h"
#include "base/text.h"
#include "fit/curve_search.h"
#include "fit/curve_system.h"
#include "fit/nearest.h"
#include "model/bezier.h"
#include "model/deviation.h"
#include "model/scale.h"
#include "model/vec3.h"

namespace knotfit {
namespace {

// Constraints and smoothing determine control points in ways that the conditions on the data do
// not see: then the solver decides.
void checkControls(const PointSet& points, const FitOptions& options,
                   const std::vector<double>& parameters, const std::vector<double>& knots) {
  if (options.smooth > 0 || options.closed) return;
  if (points.weights.empty() && options.tangents.empty()) {
    return checkDetermined(knots, options.degree[0], parameters);
  }
  std::vector<double> all;
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    if (points.weights.empty() || points.weights[i] > 0) all.push_back(parameters[i]);
  }
  for (const Tangent& t : options.tangents) all.push_back(parameters[t.point]);
  std::sort(all.begin(), all.end());
  checkDetermined(knots, options.degree[0], all);
}

CurveFit fitOnce(const PointSet& points, const FitOptions& options, std::vector<double> parameters,
                 const std::vector<double>& knots) {
  checkControls(points, options, parameters, knots);
  const std::size_t unknowns = knots.size() - static_cast<std::size_t>(options.degree[0]) - 1;
  CurveFit fit;
  fit.method = methodFor(options.solver.method, points.count(), unknowns);
  const bool banded = fit.method == Method::kBanded;
  CurveSystem system = curveSystem(points, options, parameters, knots, !banded);
  CurveSolution solution = banded ? solvedBanded(system, options.degree[0], options.solver)
                                  : solvedDense(system, options.solver);
  addTangents(system, options, solution);
  Spline& s = fit.spline;
  s.dim = points.dim;
  s.degree = {options.degree[0], 0};
  s.knots[0] = knots;
  s.size = {unknowns, 1};
  s.closed = options.closed;
  s.units = options.units;
  s.controls = std::move(solution.controls);
  meetPlainRows(system, s.controls);
  fit.miss = largestMiss(system, s.controls);
  fit.rows = system.dataRows() + system.matrix.rows.size();
  fit.constraints = system.matrix.constraints;
  fit.distances = distancesAt(s, points, parameters);
  fit.parameters = std::move(parameters);
  if (!banded) fit.matrix = std::make_shared<const RowMatrix>(std::move(system.matrix));
  return fit;
}

// Moves every inner parameter to the foot of its point, as far as its neighbours leave room.
std::vector<double> reprojected(const CurveFit& fit, const PointSet& points) {
  const CurveProjector projector(fit.spline);
  std::vector<double> u = fit.parameters;
  for (std::size_t i = 1; i + 1 < u.size(); ++i) {
    const double before = u[i - 1], after = u[i + 1];
    const double foot = projector.nearestWithin(points[i], u[i], before, after).u;
    if (foot > before && foot < after) u[i] = foot;
  }
  return u;
}

std::size_t controlsAsked(const FitOptions& options) {
  if (options.knots != KnotChoice::kGiven) return options.controls[0];
  return options.knotValues.size() - static_cast<std::size_t>(options.degree[0]) - 1;
}

// The solver of data alone takes constraints for data and misses them.
void checkConstraints(const FitOptions& o) {
  if (o.solver.method != Method::kQr) return;
  const auto refuse = [](const char* what) {
    throw Fault(kUsage, cat("--solver qr cannot meet ", what,
                            "; use --solver householder, or leave it out"));
  };
  if (o.closed) refuse("--closed");
  if (!o.pass.empty()) refuse("--pass");
  if (!o.tangents.empty()) refuse("--tangent");
  if (o.endsExact) refuse("--ends exact");
}

CurveFit fitScaled(const PointSet& points, const FitOptions& options) {
  const std::size_t asked = options.tolerance > 0 ? 0 : controlsAsked(options);
  const std::size_t count =
      controlCount(asked, options.degree[0], points.count(), options.smooth > 0, "file");
  const std::vector<double> u = options.parameters.empty()
                                    ? parametersOf(points, options.spacing, options.closed)
                                    : options.parameters;
  if (options.tolerance > 0) return fitWithin(points, options, u);
  return fitWithKnots(points, options, u, knotsFor(options, u, count));
}

// A solver without a matrix has found every pivot above its tolerance.
std::optional<Spectrum> spectrumOf(const CurveFit& fit) {
  if (fit.matrix) return spectrumOf(*fit.matrix);
  return Spectrum{fit.spline.size[0], std::nullopt};
}

}  // namespace

std::size_t controlCount(std::size_t asked, int degree, std::size_t points, bool smoothed,
                         const char* what) {
  const auto least = static_cast<std::size_t>(degree) + 1;
  const std::size_t n = asked ? asked : std::min(points, std::max(least, points / 4));
  if (points < 2) {
    throw Fault(kNoSolution, cat("a fit needs at least 2 data points, the ", what, " has ", points,
                                 "; add points, or see --columns, --thin and --merge"));
  }
  if (asked && asked < least) {
    throw Fault(kUsage, cat("degree ", degree, " takes at least ", least, " control points; use ",
                            "--controls ", least, " or a lower --degree"));
  }
  if (points < least && !(smoothed && asked)) {
    throw Fault(kNoSolution, cat("degree ", degree, " needs at least ", least, " data points, the ",
                                 what, " has ", points, "; use --degree ", points - 1));
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
  if (!options.corners.empty() && n > parameters.size()) {
    throw Fault(kUsage, cat("--corner takes a datum for every control point; use --controls ",
                            parameters.size(), " or fewer"));
  }
  if (options.knots == KnotChoice::kUniform || n > parameters.size()) {
    return uniformKnots(options.degree[0], n);
  }
  if (!options.closed || parameters.back() == 1.0) {
    return averagedKnots(parameters, options.degree[0], n, options.corners);
  }
  std::vector<double> u = parameters;
  u.push_back(1.0);
  return averagedKnots(u, options.degree[0], n, options.corners);
}

CurveFit fitWithKnots(const PointSet& points, const FitOptions& options,
                      const std::vector<double>& parameters, const std::vector<double>& knots) {
  CurveFit fit = fitOnce(points, options, parameters, knots);
  for (int k = 0; k < options.refine; ++k) {
    try {
      CurveFit next = fitOnce(points, options, reprojected(fit, points), knots);
      if (!(summaryOf(next.distances).rms < summaryOf(fit.distances).rms)) break;
      fit = std::move(next);
    } catch (const Fault&) {
      break;  // the moved parameters leave a control point undetermined: keep the fit before
    }
  }
  return fit;
}

CurveFit fitCurve(const PointSet& points, const FitOptions& options) {
  checkConstraints(options);
  const int exponent = rangeExponent(points.coords);
  CurveFit fit;
  if (exponent == 0) {
    fit = fitScaled(points, options);
  } else {
    PointSet scaled = points;
    scaleBy(scaled.coords, -exponent);
    FitOptions scaledOptions = options;
    scaledOptions.tolerance = std::ldexp(options.tolerance, -exponent);
    fit = fitScaled(scaled, scaledOptions);
  }
  fit.met = std::ldexp(fit.miss, exponent - evenExponent(points.coords)) <= kMissRounding;
  fit.spectrum = spectrumOf(fit);
  checkSmoothing(options.smooth, fit.spectrum, fit.spline.size[0]);
  scaleBy(fit.spline.controls, exponent);
  scaleBy(fit.distances, exponent);
  fit.miss = std::ldexp(fit.miss, exponent);
  checkRange(fit.spline, fit.distances);
  return fit;
}

void checkSmoothing(double smooth, const std::optional<Spectrum>& spectrum, std::size_t unknowns) {
  if (!(smooth > 0) || !spectrum || spectrum->rank >= unknowns) return;
  throw Fault(
      kNoSolution,
      "no unique solution: the smoothing leaves nothing of the data; use a smaller --smooth");
}

void checkRange(const Spline& spline, const std::vector<double>& distances) {
  const auto isFinite = [](double x) { return std::isfinite(x); };
  if (std::all_of(spline.controls.begin(), spline.controls.end(), isFinite) &&
      std::all_of(distances.begin(), distances.end(), isFinite)) {
    return;
  }
  throw Fault(kNoSolution, "the fit leaves the range of numbers; measure in larger units");
}

std::vector<double> distancesAt(const Spline& spline, const PointSet& points,
                                const std::vector<double>& parameters) {
  const CurvePieces pieces(spline);
  std::vector<double> out;
  out.reserve(points.count());
  std::size_t span = 0;
  for (std::size_t i = 0; i < points.count(); ++i) {
    const Vec3 at = pieces.point(parameters[i], span);
    out.push_back(norm(minus(at, vec3(points[i], points.dim))));
  }
  return out;
}

std::vector<double> nearestDistances(const Spline& spline, const PointSet& points,
                                     const std::vector<double>& parameters, Watcher* watcher) {
  const CurveProjector projector(spline);
  const Stage stage(watcher, "nearest distances", points.count());
  std::vector<double> out;
  out.reserve(points.count());
  constexpr std::size_t kPart = 8192;
  for (std::size_t i = 0; i < points.count(); i += kPart) {
    stage.at(i);
    const std::size_t n = std::min(kPart, points.count() - i);
    projector.appendNearest(points[i], n, parameters.data() + i, out);
  }
  return out;
}

}  // namespace knotfit
